#include "support/PeakMemory.h"

#include <fstream>
#include <stdexcept>
#include <string>

long Morvenn::Bench::peakKib() {
    const std::string key = "VmHWM:";
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, key.size(), key) == 0) {
            return std::stol(line.substr(key.size()));
        }
    }
    throw std::runtime_error("/proc/self/status names no peak memory");
}
