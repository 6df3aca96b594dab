// An application as others write it: one exchange with the hub, one environment list.
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

using namespace Morvenn::Net::MvServerProxy;

int main(int argc, char** argv) {
    const std::string hub = argc > 1 ? argv[1] : "http://127.0.0.1:16064";
    try {
        Client::MSPSession session;
        Client::MvServerRequest request(&session);
        request.setHeader(Client::HeaderKeys::kServerUrl, hub + "/echo");
        request.setHeader(Client::HeaderKeys::kUseCompression, "true");
        std::istringstream body(std::string(100000, 'x'));
        request.setBody(&body);
        const std::string answer = request.execute();
        const bool same = answer == body.str() && request.getResponseCode() == "200";

        Admin::EnvironmentInfo directory;
        const bool listed = !directory.getEnvironments().empty();

        std::cout << "c++ " << __cplusplus << ": echo " << (same ? "equal" : "DIFFERENT")
                  << ", environments " << (listed ? "listed" : "MISSING") << '\n';
        return same && listed ? 0 : 1;
    } catch (const Client::Exception& e) {
        std::cerr << e.getMessage() << '\n';
        return 2;
    }
}
