// A forward proxy for http targets that demands credentials and answers in the target's place: the
// body of each request comes back.
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "RawServer.h"

namespace Morvenn::Net::MvServerProxy::Proxy::Test {

class ScriptedProxy {
public:
    struct Rules {
        Rules(std::string offers, std::set<std::string> lets, bool expect = true,
              std::string open = "")
            : challenges(std::move(offers)),
              accepted(std::move(lets)),
              answersExpect(expect),
              openPath(std::move(open)) {}

        std::string challenges;  // Proxy-Authenticate lines
        // The Proxy-Authorization values that are let through; a value that ends in "*" stands for
        // all that begin like it.
        std::set<std::string> accepted;
        bool answersExpect;    // false: reads the body before it looks at the credentials
        std::string openPath;  // requests for this path are let through without credentials
    };
    explicit ScriptedProxy(Rules rules, int family = AF_INET);

    RawServer& server() { return m_server; }
    std::string url() const { return "http://" + m_server.authority(); }

    // What came, one line for each request: "407" or "200", the credentials, the size of the body.
    std::vector<std::string> log() const { return m_server.notes(); }

private:
    bool accepts(const std::string& head) const;
    void serve(Connection& connection);

    Rules m_rules;
    RawServer m_server;
};

// "Basic " and the base64 of user:password.
std::string basic(const std::string& userAndPassword);

}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
