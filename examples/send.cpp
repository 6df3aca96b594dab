// The answer as a stream: read as it arrives, line by line.
#include <iostream>
#include <memory>
#include <string>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

using namespace Morvenn::Net::MvServerProxy::Client;

int main() {
    MSPSession session;
    MvServerRequest request(&session);
    request.setHeader(HeaderKeys::kServiceName, "XmlSummary");
    request.setHeader(HeaderKeys::kUseCompression, "true");  // arrives inflated all the same
    request.setBody("<order id='7'><item/><item/></order>");
    try {
        // The stream is the caller's; its destruction ends the exchange.
        const std::unique_ptr<std::istream> answer(request.send());
        answer->exceptions(std::ios::badbit);  // a failure on the way is thrown, not swallowed
        std::string line;
        for (int number = 1; std::getline(*answer, line); ++number) {
            std::cout << number << ": " << line << '\n';
        }
    } catch (const MSPException& e) {
        std::cerr << e.getMessage() << '\n';
        return 1;
    }
}
