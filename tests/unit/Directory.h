// Loads one directory answer and writes down what came of it.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTS_DIRECTORY_H
#define MORVENN_NET_MVSERVERPROXY_TESTS_DIRECTORY_H

#include <string>
#include <vector>

#include "morvenn/net/mvserverproxy/admin/EnvironmentInfo.h"
#include "testing/FakeProxy.h"

namespace Morvenn::Net::MvServerProxy::Tests {

using Names = std::vector<std::string>;

/// An answer of two environments, and one of a third.
inline constexpr char kProdAndTest[] =
    "Prod\n1\n1\ntype=web\n\n"
    "Test\n2\n1\ntype=web\n\n";
inline constexpr char kThirdAlone[] = "Third\n3\n1\ntype=web\n\n";

/// Whether a property is stored, an empty one included. Looks at a copy, as reading would insert
/// it.
inline bool has(Admin::Service service, const std::string& key) {
    service.setProperty(key, "it was not there");
    return service.getProperty(key) != "it was not there";
}

/// The same for a service.
inline bool has(Admin::Environment environment, const std::string& name) {
    Admin::Service marker;
    marker.setProperty("marker", "the environment had no such service");
    environment.setService(name, marker);
    return !has(environment.getService(name), "marker");
}

/// The value of a property, or "(none)".
inline std::string valueOf(Admin::Environment environment, const std::string& service,
                           const std::string& key) {
    if (!has(environment, service)) {
        return "(no service)";
    }
    Admin::Service copy(environment.getService(service));
    return has(copy, key) ? copy.getProperty(key) : "(none)";
}

/// "name/index" of each environment.
inline Names namesOf(const std::vector<const Admin::Environment*>& list) {
    Names names;
    for (const Admin::Environment* environment : list) {
        names.push_back(environment->getName() + "/" + std::to_string(environment->getIndex()));
    }
    return names;
}

/// The answer to one load, in one block.
inline TestKit::Script directoryAnswer(const std::string& text) {
    using namespace TestKit;
    return text.empty() ? Script{end()} : Script{inBlocksOf(16384, text), end()};
}

/// What one load calls when its answer comes in @p blocks blocks.
inline TestKit::Calls callsOfLoad(const std::string& selector, std::size_t blocks = 1) {
    using namespace TestKit;
    return {sendNoAck("getEnv:" + selector + "\r\n\r\n"), sendEof(), receive(blocks + 1),
            complete(2)};
}

}  // namespace Morvenn::Net::MvServerProxy::Tests

#endif
