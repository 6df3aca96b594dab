// Plays every file of the given folders through a fuzz target once: the corpus as an ordinary test,
// with any compiler.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "fuzz/Fuzz.h"

namespace {

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

}  // namespace

int main(int argc, char** argv) {
    constexpr int kFewestFiles = 20;
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            const std::string content = contentOf(entry.path());
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()),
                                   content.size());
            ++count;
        }
    }
    std::cout << count << " inputs replayed\n";
    return count >= kFewestFiles ? 0 : 1;
}
