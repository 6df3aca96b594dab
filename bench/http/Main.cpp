// One job of one client in a process of its own, so that its peak memory is its own, too:
//
//     mv_bench_http <client> <url> <body size> <exchanges> [gzip]
//
// prints what it took as JSON. The first exchange, which connects, is not measured when there are
// others.
#include <sys/resource.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <istream>

#include "http/Client.h"
#include "morvenn/net/mvserverproxy/client/Exceptions.h"
#include "support/PeakMemory.h"

namespace Morvenn::Bench {

std::string authorityFile() {
    const char* file = std::getenv("MV_SERVERPROXY_CA_FILE");
    return file == nullptr ? "" : file;
}

std::uint64_t drain(std::istream& stream) {
    char block[16384];
    std::uint64_t total = 0;
    do {
        stream.read(block, sizeof block);
        total += static_cast<std::uint64_t>(stream.gcount());
    } while (stream);
    return total;
}

void fillBody(char* buffer, std::size_t size) {
    std::memset(buffer, 'x', size);
}

namespace {

struct Maker {
    const char* name;
    std::unique_ptr<HttpClient> (*make)();
};

constexpr Maker kMakers[] = {
    {"library", makeLibraryClient},
    {"curl", makeCurlClient},
    {"poco", makePocoClient},
    {"httplib", makeHttplibClient},
};

std::unique_ptr<HttpClient> makeClient(const std::string& name) {
    for (const Maker& maker : kMakers) {
        if (name == maker.name) {
            return maker.make();
        }
    }
    throw std::runtime_error("there is no client '" + name + "'");
}

struct Usage {
    double wall;
    double cpu;
    long peakKib;
};

Usage usage() {
    rusage own{};
    getrusage(RUSAGE_SELF, &own);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return {std::chrono::duration<double>(now).count(),
            seconds(own.ru_utime) + seconds(own.ru_stime), peakKib()};
}

void run(int argc, char** argv) {
    const std::unique_ptr<HttpClient> client = makeClient(argv[1]);
    const Job job{argv[2], std::stoull(argv[3]), argc == 6};
    const int exchanges = std::stoi(argv[4]);
    if (exchanges > 1) {
        client->post(job);
    }
    const Usage before = usage();
    std::uint64_t received = 0;
    for (int i = 0; i < exchanges; ++i) {
        received += client->post(job);
    }
    const Usage after = usage();
    std::cout << "{\"received\": " << received << ", \"wall\": " << after.wall - before.wall
              << ", \"cpu\": " << after.cpu - before.cpu << ", \"peak_kib\": " << after.peakKib
              << "}\n";
}

}  // namespace

}  // namespace Morvenn::Bench

int main(int argc, char** argv) {
    if (argc < 5) {
        std::cerr << "usage: mv_bench_http <client> <url> <body size> <exchanges> [gzip]\n";
        return 2;
    }
    try {
        Morvenn::Bench::run(argc, argv);
        return 0;
    } catch (const std::exception& e) {
        std::cerr << argv[1] << ": " << e.what() << "\n";
    } catch (const Morvenn::Net::MvServerProxy::Client::Exception& e) {
        std::cerr << argv[1] << ": " << e.getMessage() << "\n";
    }
    return 1;
}
