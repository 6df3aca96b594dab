// The eight functions as a client calls them, with everything they returned written down.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Proxy::Test {

using Settings = std::initializer_list<std::pair<const char*, std::string>>;

// Sets the variables (all other settings and *_proxy variables are cleared) and starts the library.
// Returns what MvServerProxy_Init returned.
int start(Settings settings = {});
void stop();

std::string lastError();

// The header text of a request to `url`; `more` in ascending order, before "Server-Url".
std::string headerText(const std::string& url, const std::string& more = "");

struct Reply {
    int code = 0;                   // the first negative result; 0 when there was none
    std::string error;              // the text that belongs to it
    std::vector<int> instructions;  // 16, 17, 18 in the order they came
    std::vector<std::string> challenges;
    std::string header;  // the block, with its empty line
    std::string body;
    int end = 0;  // the result that ended the body

    // The value of a line of the header block; "<none>" when it is absent.
    std::string value(const std::string& name) const;
};

// Answers for challenges, in turn; the last one is repeated.
using Answers = std::vector<std::string>;
std::string answerText(const std::string& user, const std::string& password,
                       const std::string& domain = "");

Reply sendStream(const std::string& header, const std::string& body, const Answers& answers = {});
Reply sendText(const std::string& header, const std::string& body);
Reply loadDirectory(const std::string& selector);

// Reads header block and body, then completes the exchange.
void readResponse(Reply& reply);

// A text of `size` bytes that differs from place to place and holds no zero byte.
std::string pattern(std::size_t size);

}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
