// mvhub as the server at the end of the way, with a record of what arrived there.
#pragma once

#include <string>
#include <vector>

#include "HubProcess.h"

namespace Morvenn::Net::MvServerProxy::Integration {

class Origin {
public:
    enum class Scheme { Http, Https };
    explicit Origin(Scheme scheme);

    std::string url(const std::string& path) const { return m_hub.url() + path; }
    // To be trusted for https.
    std::string caFile() const { return m_hub.caFile(); }

    // The exchanges since the last call, one text for each: "POST /echo 200, 100 bytes in". Waits
    // until there are `count` of them.
    std::vector<std::string> arrived(std::size_t count);

private:
    Testing::HubProcess m_hub;
    std::size_t m_reported = 0;
};

}  // namespace Morvenn::Net::MvServerProxy::Integration
