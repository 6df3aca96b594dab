// A request with a text body; the answer as one string.
//
// The hub's service XmlReverse turns the children of every element round. Without a URL among its
// headers a request goes to the hub, which picks the service by its name.
#include <iostream>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

using namespace Morvenn::Net::MvServerProxy::Client;

int main() {
    MSPSession session;
    MvServerRequest request(&session);
    request.setHeader(HeaderKeys::kServiceName, "XmlReverse");
    request.setBody("<order><first/><second/></order>");
    try {
        const std::string answer = request.execute();
        std::cout << request.getResponseCode() << ' ' << request.getContentType() << '\n'
                  << answer << '\n';
    } catch (const MSPException& e) {
        std::cerr << e.getMessage() << '\n';
        return 1;
    }
}
