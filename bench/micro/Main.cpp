#include <benchmark/benchmark.h>

#include <malloc.h>

#include <exception>
#include <iostream>

#include "micro/Works.h"
#include "morvenn/net/mvserverproxy/client/Exceptions.h"

namespace {

constexpr int kKept = 32 << 20;  // the most that malloc allows for the first

// Freed memory stays with the process, as in an application that has run for a while: the rows then
// differ in their own work and not in the page faults of new memory.
void keepFreedMemory() {
    mallopt(M_MMAP_THRESHOLD, kKept);
    mallopt(M_TRIM_THRESHOLD, 16 * kKept);
}

int run(int argc, char** argv) {
    using namespace Morvenn::Bench;
    keepFreedMemory();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    registerStreaming();
    registerInflation();
    registerExecution();
    registerConversion();
    registerDirectory();
    registerBase64();
    registerLog();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& e) {
        std::cerr << "mv_bench: " << e.what() << "\n";
    } catch (const Morvenn::Net::MvServerProxy::Client::Exception& e) {
        std::cerr << "mv_bench: " << e.getMessage() << "\n";
    }
    return 1;
}
