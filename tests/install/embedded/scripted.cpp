// An application's test: the kit answers in the place of a server.
#include <iostream>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/testkit/FakeProxy.h"

using namespace Morvenn::Net::MvServerProxy;

int main() {
    TestKit::FakeProxy proxy;
    proxy.answers({TestKit::block("A=1\n\nscripted"), TestKit::end()});
    Client::MSPSession session;
    Client::MvServerRequest request(&session);
    request.setBody("<order/>");
    const std::string answer = request.execute();
    std::cout << answer << '\n' << proxy.calls() << '\n';
    return answer == "scripted" ? 0 : 1;
}
