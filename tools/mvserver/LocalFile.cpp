#include "LocalFile.h"

#include "Failure.h"

#include <cstdio>
#include <memory>

namespace Morvenn::Net::MvServerProxy::Tools {

std::string readFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"),
                                                               std::fclose);
    if (!file) {
        throwFileFailure("cannot read", path);
    }
    std::string bytes;
    char block[65536];
    for (std::size_t count = 0; (count = std::fread(block, 1, sizeof block, file.get())) > 0;) {
        bytes.append(block, count);
    }
    if (std::ferror(file.get()) != 0) {
        throwFileFailure("cannot read", path);
    }
    return bytes;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
