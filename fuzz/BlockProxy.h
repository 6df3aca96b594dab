// A proxy that delivers given blocks and then the end of the response; everything else succeeds.
#ifndef MORVENN_FUZZ_BLOCKPROXY_H
#define MORVENN_FUZZ_BLOCKPROXY_H

#include <cstddef>
#include <string>
#include <vector>

namespace Fuzz {

struct BlockProxy {
    static void start(std::vector<std::string> blocks);
    static std::size_t receives();
    static std::size_t completes();
    static const std::string& sent();  ///< the last text that was sent
};

}  // namespace Fuzz

#endif
