#include "Lines.h"

#include "Daemon.h"

namespace Morvenn::Net::MvServerProxy::Integration {

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t begin = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos;
         end = text.find('\n', begin)) {
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

std::vector<std::string> awaitLines(const TempFolder& folder, const std::string& file,
                                    std::size_t count) {
    std::vector<std::string> lines;
    waitUntil([&] {
        lines = linesOf(folder.read(file));
        return lines.size() >= count;
    });
    return lines;
}

}  // namespace Morvenn::Net::MvServerProxy::Integration
