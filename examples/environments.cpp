// The directory: which environments there are, and the services of each.
#include <iostream>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "morvenn/net/mvserverproxy/client/Exceptions.h"

using namespace Morvenn::Net::MvServerProxy;

int main() {
    try {
        Admin::EnvironmentInfo directory;
        for (const Admin::Environment* environment : directory.getEnvironments()) {
            std::cout << environment->getIndex() << ' ' << environment->getName() << '\n';
        }
        // The answer comes from the list that is there: no second exchange.
        if (const Admin::Environment* found = directory.getEnvironment("Production")) {
            // Looking up changes the object, so look into a copy.
            Admin::Environment environment = *found;
            Admin::Service orders = environment.getService("orders");
            std::cout << "orders of Production: " << orders.getProperty("url") << '\n';
        }
        // Another selection takes another EnvironmentInfo.
        Admin::EnvironmentInfo version;
        std::cout << version.getEnvsForVersion("1.1").size() << " environment of version 1.1\n";
    } catch (const Client::MSPException& e) {
        std::cerr << e.getMessage() << '\n';
        return 1;
    }
}
