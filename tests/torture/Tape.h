// What the proxy answers in one run, faults included. The library (through TapeProxy) and the model
// each play a copy of the same tape.
#ifndef MORVENN_TESTS_TORTURE_TAPE_H
#define MORVENN_TESTS_TORTURE_TAPE_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "testing/Calls.h"

namespace Torture {

using Morvenn::Net::MvServerProxy::TestKit::Calls;
using Morvenn::Net::MvServerProxy::TestKit::Function;

constexpr int kBlockSize = 16384;
/// Stands wherever a result claims more bytes than were given.
constexpr char kPad = '~';

/// Leaves a proxy function instead of a result.
struct ProxyEscape {};

struct Answer {
    int result = 0;
    std::string bytes;  ///< Receive: the beginning of the block
    bool escapes = false;

    /// The block as it lies in the buffer: the bytes, and padding up to what the result claims or
    /// the buffer holds.
    std::string block() const;
};

/// What GetLastError says.
struct LastError {
    std::optional<std::string> message;
    int status = 0;
};

/// An answer instead of the scheduled one.
struct Fault {
    std::size_t call = 0;  ///< number of the call, counted from 1 over all functions
    Answer answer;
    std::size_t repeat = 1;
    bool shortens = false;  ///< takes the scheduled block and claims one byte less
};

class Tape {
public:
    explicit Tape(std::vector<Answer> receives);

    void inject(const Fault& fault) { m_faults.push_back(fault); }
    void setLastError(LastError lastError) { m_lastError = std::move(lastError); }
    const LastError& lastError() const { return m_lastError; }

    /// The answer to the next call. Outside faults Init, Term, SendEOF, Complete and GetLastError
    /// succeed with 0, Send and SendNoAck with 1. The answer escapes when nothing is left to
    /// receive.
    Answer next(Function function);

private:
    Answer scheduled(Function function);

    std::shared_ptr<const std::vector<Answer>> m_receives;
    std::size_t m_received = 0;
    std::size_t m_number = 0;
    std::vector<Fault> m_faults;
    LastError m_lastError{"the proxy's text", 0};
};

/// Lets the eight functions play @p tape and write down the calls, until it is destroyed.
class TapeProxy {
public:
    explicit TapeProxy(const Tape& tape);
    ~TapeProxy();
    TapeProxy(const TapeProxy&) = delete;
    TapeProxy& operator=(const TapeProxy&) = delete;

    const Calls& calls() const { return m_calls; }
    Tape& tape() { return m_tape; }
    Answer call(Function function, const char* text = "");
    Answer giveLastError(char** message);

    static TapeProxy& current();

private:
    Tape m_tape;
    Calls m_calls;
    std::string m_message;
};

}  // namespace Torture

#endif
