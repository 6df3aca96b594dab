#include "testing/Calls.h"

#include <algorithm>
#include <ostream>
#include <sstream>
#include <utility>

#include "testing/Bytes.h"

namespace Morvenn::Net::MvServerProxy::TestKit {
namespace {

constexpr const char* kNames[kFunctionCount] = {"Init",    "Term",    "Send",     "SendNoAck",
                                                "SendEOF", "Receive", "Complete", "GetLastError"};

bool sends(Function function) {
    return function == Function::Send || function == Function::SendNoAck;
}

std::string inWords(const std::vector<Call>& calls, std::size_t index) {
    if (index >= calls.size()) {
        return "nothing";
    }
    std::ostringstream out;
    out << calls[index];
    return out.str();
}

std::string textDifference(const std::string& expected, const std::string& actual) {
    const auto end =
        expected.begin() + static_cast<std::ptrdiff_t>(std::min(expected.size(), actual.size()));
    const auto at = std::mismatch(expected.begin(), end, actual.begin()).first - expected.begin();
    const auto from = static_cast<std::size_t>(at);
    return "\n  the texts differ from byte " + std::to_string(at) + " on:\n    expected " +
           escaped(std::string_view(expected).substr(from), 60) + "\n    actual   " +
           escaped(std::string_view(actual).substr(from), 60);
}

}  // namespace

const char* nameOf(Function function) {
    return kNames[static_cast<std::size_t>(function)];
}

bool operator==(const Call& a, const Call& b) {
    return a.function == b.function && a.count == b.count && a.text == b.text;
}

bool operator!=(const Call& a, const Call& b) {
    return !(a == b);
}

std::ostream& operator<<(std::ostream& out, const Call& call) {
    out << nameOf(call.function);
    if (sends(call.function)) {
        out << '(' << escaped(call.text) << ')';
    }
    if (call.count != 1) {
        out << " x " << call.count;
    }
    return out;
}

Call init(std::size_t count) {
    return {Function::Init, {}, count};
}
Call term(std::size_t count) {
    return {Function::Term, {}, count};
}
Call send(std::string text) {
    return {Function::Send, std::move(text)};
}
Call sendNoAck(std::string text) {
    return {Function::SendNoAck, std::move(text)};
}
Call sendEof(std::size_t count) {
    return {Function::SendEOF, {}, count};
}
Call receive(std::size_t count) {
    return {Function::Receive, {}, count};
}
Call complete(std::size_t count) {
    return {Function::Complete, {}, count};
}
Call getLastError(std::size_t count) {
    return {Function::GetLastError, {}, count};
}

Calls::Calls(std::initializer_list<Call> calls) {
    for (const Call& call : calls) {
        add(call);
    }
}

void Calls::add(Call call) {
    if (call.count == 0) {
        return;
    }
    if (!m_calls.empty() && m_calls.back().function == call.function &&
        m_calls.back().text == call.text) {
        m_calls.back().count += call.count;
        return;
    }
    m_calls.push_back(std::move(call));
}

std::size_t Calls::size() const {
    std::size_t sum = 0;
    for (const Call& call : m_calls) {
        sum += call.count;
    }
    return sum;
}

std::size_t Calls::count(Function function) const {
    std::size_t sum = 0;
    for (const Call& call : m_calls) {
        sum += call.function == function ? call.count : 0;
    }
    return sum;
}

bool operator==(const Calls& a, const Calls& b) {
    return a.entries() == b.entries();
}
bool operator!=(const Calls& a, const Calls& b) {
    return !(a == b);
}

std::ostream& operator<<(std::ostream& out, const Calls& calls) {
    if (calls.entries().empty()) {
        return out << "no calls";
    }
    for (const Call& call : calls.entries()) {
        out << "\n    " << call;
    }
    return out;
}

std::string difference(const Calls& expected, const Calls& actual) {
    const std::vector<Call>& wanted = expected.entries();
    const std::vector<Call>& came = actual.entries();
    std::size_t at = 0;
    while (at < wanted.size() && at < came.size() && wanted[at] == came[at]) {
        ++at;
    }
    if (at == wanted.size() && at == came.size()) {
        return {};
    }
    std::string words = "entry " + std::to_string(at + 1) + ": expected " + inWords(wanted, at) +
                        ", came " + inWords(came, at);
    if (at < wanted.size() && at < came.size() && wanted[at].function == came[at].function &&
        wanted[at].text != came[at].text) {
        words += textDifference(wanted[at].text, came[at].text);
    }
    return words;
}

}  // namespace Morvenn::Net::MvServerProxy::TestKit
