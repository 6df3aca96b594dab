#include "Origin.h"

#include "Daemon.h"
#include "Lines.h"

namespace Morvenn::Net::MvServerProxy::Integration {
namespace {

constexpr char kPrefix[] = "mvhub: ";
constexpr char kReceived[] = " bytes in";

std::vector<std::string> options(Origin::Scheme scheme) {
    std::vector<std::string> options = {"--body-limit", "0"};
    if (scheme == Origin::Scheme::Https) {
        options.emplace_back("--tls");
    }
    return options;
}

// The part of each line of the log that tells what came, for the lines that tell it.
std::vector<std::string> exchanges(const std::string& log) {
    std::vector<std::string> found;
    for (const std::string& line : linesOf(log)) {
        const std::size_t begin = sizeof(kPrefix) - 1;
        const std::size_t end = line.find(kReceived);
        if (end != std::string::npos) {
            found.push_back(line.substr(begin, end + sizeof(kReceived) - 1 - begin));
        }
    }
    return found;
}

}  // namespace

Origin::Origin(Scheme scheme) : m_hub(options(scheme)) {}

std::vector<std::string> Origin::arrived(std::size_t count) {
    std::vector<std::string> all;
    waitUntil([&] {
        all = exchanges(m_hub.log());
        return all.size() >= m_reported + count;
    });
    all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(m_reported));
    m_reported += all.size();
    return all;
}

}  // namespace Morvenn::Net::MvServerProxy::Integration
