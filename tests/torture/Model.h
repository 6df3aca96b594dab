// What the library is expected to do, step by step, written from its description and not from its
// code: it plays a tape and writes down the calls, the log and the outcome.
//
// ModelBase holds what every exchange shares: the calls, the log, the two ways to fail.
// ModelRequest is one request; Model.cpp strings them together for each scenario.
#ifndef MORVENN_TESTS_TORTURE_MODEL_H
#define MORVENN_TESTS_TORTURE_MODEL_H

#include <functional>
#include <string>

#include "tests/reference/Headers.h"
#include "tests/torture/Run.h"

namespace Torture {

namespace Reference = Morvenn::Net::MvServerProxy::Reference;

/// The exception that the run ends with, as Run::outcome prints it.
struct Thrown {
    std::string outcome;
    std::string message;  ///< of an exception of the library's family
    bool isFamily = true;
};

/// The run waits for ever.
struct Spinning {};

class ModelBase {
public:
    ModelBase(const Tape& tape, bool logs) : m_tape(tape), m_logs(logs) {}

    /// One call of the proxy; its answer.
    Answer call(Function function, const std::string& text = {});
    /// The same, where a negative result is a failure.
    int checked(Function function, const std::string& text = {});
    Answer receive() { return call(Function::Receive); }

    void debug(const std::string& text) { line(" [DEBUG] ", text); }
    void info(const std::string& text) { line(" [INFO ] ", text); }
    void error(const std::string& text) { line(" [ERROR] ", text); }

    [[noreturn]] void failStatus(int status);
    [[noreturn]] void failLocal(const std::string& message);
    [[noreturn]] void failTooLong(int count);
    [[noreturn]] static void raise(const std::string& name, int type, const std::string& message);

    void init();
    void term();

    Run run;

private:
    void line(const char* label, const std::string& text);

    Tape m_tape;
    bool m_logs;
};

/// Local text of UTF-8 bytes that arrive in one piece: ends at a zero byte, and every byte that is
/// not ASCII is replaced. The tapes hold no well-formed sequence of more than one byte.
std::string decoded(const std::string& bytes);

/// Blocks that a string keeps on the heap.
long blocksOf(const std::string& text);

/// How the response reaches the application.
enum class Reading { Execute, Stream };

class ModelRequest {
public:
    ModelRequest(ModelBase& base, const Scenario& scenario) : m_base(base), m_scenario(scenario) {}

    Reference::HeaderMap headers;
    bool hasTextBody = false;
    std::string body;
    Reading reading = Reading::Execute;

    /// send() and the reading; gives the response. A stream that fails ends in "|bad".
    std::string run(std::string& session, bool isInitialised);

    /// The provider's scopes, as the application notes them.
    const std::string& scopes() const { return m_scopes; }
    const Reference::HeaderMap& responseHeaders() const { return m_responseHeaders; }
    /// Whether the response stream has been handed over, so that its end completes the exchange.
    bool handedOver() const { return m_handedOver; }

private:
    void sendText();
    void sendStream();
    int challenge();
    int sendBody();
    void readHead(std::string& session);
    int headByte();
    std::string nextBlock();
    void readBody(std::string& response);
    void readPlain(std::string& response);
    void readCompressed(std::string& response);

    ModelBase& m_base;
    const Scenario& m_scenario;
    Reference::HeaderMap m_responseHeaders;
    std::string m_scopes;
    std::size_t m_sent = 0;
    bool m_bodyEnded = false;
    std::string m_block;  // what is left of the block that the head was read from
    bool m_handedOver = false;
};

}  // namespace Torture

#endif
