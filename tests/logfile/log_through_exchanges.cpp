// Exchanges with a log at debug level, for full_disk.sh: writes what came back, and nothing else.
#include <cstdlib>
#include <iostream>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"
#include "testing/FakeProxy.h"

using namespace Morvenn::Net::MvServerProxy;
using namespace Morvenn::Net::MvServerProxy::TestKit;

int main() {
    Util::MvServerCppBindingLogger::getInstance();
    Client::MSPSession session;
    for (int i = 0; i < 3; ++i) {
        FakeProxy proxy;
        proxy.answers({block("ResponseHeaderResponseCode=200\n\nanswer"), end()});
        Client::MvServerRequest request(&session);
        request.setBody("text");
        std::cout << request.execute() << std::endl;
    }
    return 0;
}
