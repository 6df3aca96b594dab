// What the fake proxy answers: a script of steps, written in the words below.
//
//   proxy.answers({instruction(16), nothing(3), instruction(18), block("A=1\n\nbody"), end()});
#ifndef MORVENN_NET_MVSERVERPROXY_TESTKIT_SCRIPT_H
#define MORVENN_NET_MVSERVERPROXY_TESTKIT_SCRIPT_H

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Calls.h"

namespace Morvenn::Net::MvServerProxy::TestKit {

/// The answer to one call, or to several in a row.
struct Step {
    static constexpr std::size_t kForever = std::numeric_limits<std::size_t>::max();

    Function function = Function::Receive;
    int result = 0;

    /// Receive: what is written into the caller's buffer. May be shorter than the result claims.
    std::string bytes;
    /// Receive: a byte written behind the others and not counted in the result.
    std::optional<char> terminator;
    /// GetLastError: the message; without one the caller's pointer is left alone.
    std::optional<std::string> message;
    /// How many calls this step answers.
    std::size_t repeat = 1;
    /// Run before the call returns. It may throw (the call then never returns), make proxy calls of
    /// its own, fork, or append to the script.
    std::function<void()> hook;
    /// Receive: makes the bytes of each call anew; the result is their number.
    std::function<std::string()> generator;

    /// @name Refinements, to be chained: block("abc").claiming(10).times(3)
    /// @{
    Step times(std::size_t count) const;
    Step forever() const { return times(kForever); }
    Step claiming(int count) const;  ///< returns @p count, whatever is written
    Step terminated(char byte = '\0') const;
    Step doing(std::function<void()> action) const;
    /// @}
};

std::ostream& operator<<(std::ostream& out, const Step& step);

/// Steps in the order in which they are played. Lists nest, so that words that stand for several
/// steps mix with those that stand for one.
class Script {
public:
    Script() = default;
    Script(Step step) : m_steps{std::move(step)} {}
    Script(std::initializer_list<Script> parts);

    void append(const Script& other);
    const std::vector<Step>& steps() const { return m_steps; }

private:
    std::vector<Step> m_steps;
};

/// @name Answers to Receive
/// @{
Step instruction(int code);           ///< 16, 17, 18, or any other result without bytes
Step block(std::string bytes);        ///< one block; at most 16384 bytes
Step nothing(std::size_t times = 1);  ///< 0: nothing ready yet
Step end();                           ///< -1: the response is complete
Step status(int code);                ///< a negative status
Step endless(std::function<std::string()> makeBlock);  ///< a new block at every call, for ever
Script inBlocksOf(std::size_t size, const std::string& bytes);  ///< cut into blocks of that size
Script inSingleBytes(const std::string& bytes);                 ///< one block per byte
/// @}

/// @name Answers to the other functions
/// @{
Step gives(Function function, int result);
Step lastError(std::optional<std::string> message, int status = 0);
/// @}

/// An answer that never comes: the call throws @p exception instead of returning.
template <typename E>
Step throwing(Function function, E exception) {
    return gives(function, 0).doing([exception] { throw exception; });
}

}  // namespace Morvenn::Net::MvServerProxy::TestKit

#endif
