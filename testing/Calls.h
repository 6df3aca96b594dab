// What was asked of the proxy: the list of calls, comparable with one line and readable when it
// differs.
//
//   EXPECT_EQ(proxy.calls(), (Calls{sendNoAck("A=1\r\n\r\n"), sendEof(), receive(3), complete()}));
#ifndef MORVENN_NET_MVSERVERPROXY_TESTKIT_CALLS_H
#define MORVENN_NET_MVSERVERPROXY_TESTKIT_CALLS_H

#include <cstddef>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <vector>

namespace Morvenn::Net::MvServerProxy::TestKit {

/// The eight functions of a server-proxy library.
enum class Function { Init, Term, Send, SendNoAck, SendEOF, Receive, Complete, GetLastError };

constexpr std::size_t kFunctionCount = 8;

/// The name without its "MvServerProxy_" prefix.
const char* nameOf(Function function);

/// One call, or several equal ones in a row.
struct Call {
    Function function;
    std::string text;       ///< what was sent; empty for the functions that send nothing
    std::size_t count = 1;  ///< how many times in a row
};

bool operator==(const Call& a, const Call& b);
bool operator!=(const Call& a, const Call& b);
std::ostream& operator<<(std::ostream& out, const Call& call);

/// @name The words in which a test writes down the calls it expects.
/// @{
Call init(std::size_t count = 1);
Call term(std::size_t count = 1);
Call send(std::string text);
Call sendNoAck(std::string text);
Call sendEof(std::size_t count = 1);
Call receive(std::size_t count = 1);
Call complete(std::size_t count = 1);
Call getLastError(std::size_t count = 1);
/// @}

/// Calls in the order in which they came. Equal calls in a row are kept as one entry with a count,
/// so that receive(), receive() equals receive(2), and a million of them cost one entry.
class Calls {
public:
    Calls() = default;
    Calls(std::initializer_list<Call> calls);

    void add(Call call);
    void clear() { m_calls.clear(); }

    /// Number of calls, repetitions counted.
    std::size_t size() const;
    std::size_t count(Function function) const;
    const std::vector<Call>& entries() const { return m_calls; }

private:
    std::vector<Call> m_calls;
};

bool operator==(const Calls& a, const Calls& b);
bool operator!=(const Calls& a, const Calls& b);

/// One line per entry, texts quoted.
std::ostream& operator<<(std::ostream& out, const Calls& calls);

/// The first entry at which two lists part, in words; for sent texts also the first byte. Empty
/// when the lists are equal.
std::string difference(const Calls& expected, const Calls& actual);

}  // namespace Morvenn::Net::MvServerProxy::TestKit

#endif
