// A server proxy for tests: the eight MvServerProxy_... functions, defined in the test program,
// that answer from a script and write down every call.
//
//   FakeProxy proxy;
//   proxy.answers({instruction(16), instruction(18), block("A=1\n\nbody"), end()});
//
//   MSPSession session;
//   MvServerRequest request(&session);
//   std::istringstream document("<order/>");
//   request.setBody(&document);
//   EXPECT_EQ(request.execute(), "body");
//
//   EXPECT_EQ(proxy.calls(), (Calls{init(), sendNoAck("\r\n"), sendEof(), receive(),
//                                   sendNoAck("<order/>"), sendEof(), receive(3), complete()}));
//
// Linking the kit is all it takes: the functions in the program come before those of any proxy
// library, for the static as well as for the shared client library.
//
// Receive answers only what the script says. A call the script has no answer for throws
// UnscriptedCall at once, with what was expected and what came, so that no test can hang in one of
// the loops that ask the proxy without limit. The other functions succeed unless a step says
// otherwise.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTKIT_FAKEPROXY_H
#define MORVENN_NET_MVSERVERPROXY_TESTKIT_FAKEPROXY_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>

#include "Calls.h"
#include "Script.h"
#include "SharedCounters.h"

namespace Morvenn::Net::MvServerProxy::TestKit {

/// Thrown out of a proxy function that the script has no answer for.
class UnscriptedCall : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

/// Answers the proxy calls of the thread that constructed it, until it is destroyed; the one
/// constructed before it on that thread then answers again. Each thread has its own.
class FakeProxy {
public:
    using Allocate = void* (*)(std::size_t);
    using Release = void (*)(void*);

    FakeProxy();
    ~FakeProxy();
    FakeProxy(const FakeProxy&) = delete;
    FakeProxy& operator=(const FakeProxy&) = delete;

    /// Appends to the script. A call takes the first step that is left for its function.
    /// Without one: Init, Term, SendEOF and Complete give 0, Send and SendNoAck 1, GetLastError the
    /// message of setLastError, and Receive throws UnscriptedCall.
    void answers(const Script& script);

    /// What GetLastError gives when no step answers it. At the start: no message, status 0.
    /// The memory of a message handed out is overwritten at the next call of any proxy function.
    void setLastError(std::optional<std::string> message, int status = 0);

    /// From now on every call must match the very next step of the script, of whatever function.
    /// A Complete out of order cannot throw, as it comes from destructors: see complaints().
    void strict() { m_strict = true; }

    /// The call with this number, counted from 1 over all functions, gives @p result instead of
    /// what the script has for it; the script's step stays for the call after it. In a loop over
    /// the numbers up to calls().size() this makes every single call fail once.
    void failCall(std::size_t number, int result);

    /// Every call so far with a copy of what was sent.
    const Calls& calls() const { return m_calls; }

    /// The calls so far, which are then forgotten.
    Calls takeCalls();

    /// Number of calls of one function, those of forked children included.
    std::uint64_t count(Function function) const;

    /// What the script still holds, a line for each step; empty when it was played to its end.
    /// Steps that answer for ever do not count.
    std::string leftOver() const;

    /// The text of every UnscriptedCall, a line each, also of those that were swallowed on their
    /// way out, as the standard streams do; empty when all went as scripted.
    const std::string& complaints() const { return m_complaints; }

    /// The memory functions that the last Init was given; null before it.
    Allocate allocateGiven() const { return m_allocate; }
    Release releaseGiven() const { return m_release; }

    /// The one that answers on this thread, or null.
    static FakeProxy* current();

    /// @name What the eight functions do
    /// @{
    int call(Function function);
    int init(Allocate allocate, Release release);
    int send(Function function, const char* text);
    int receive(char* buffer);
    int getLastError(char** message);
    /// @}

private:
    Step next(Function function, const std::string& text);
    Step scripted(Function function);
    Step take(std::deque<Step>::iterator step);
    Step unanswered(Function function);
    void complain(Function function, const std::string& expected);

    FakeProxy* m_previous;
    std::deque<Step> m_script;
    Step m_lastError;
    std::map<std::size_t, int> m_failures;
    bool m_strict = false;
    Calls m_calls;
    std::size_t m_number = 0;
    SharedCounters m_counters;
    Allocate m_allocate = nullptr;
    Release m_release = nullptr;
    std::string m_handedOut;
    std::string m_complaints;
};

}  // namespace Morvenn::Net::MvServerProxy::TestKit

#endif
