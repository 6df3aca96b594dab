// The eight functions, played from a tape.
#include <algorithm>
#include <cstring>

#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"
#include "tests/torture/Heap.h"
#include "tests/torture/Tape.h"

namespace Torture {
namespace {

TapeProxy* s_current = nullptr;

}  // namespace

TapeProxy::TapeProxy(const Tape& tape) : m_tape(tape) {
    s_current = this;
}

TapeProxy::~TapeProxy() {
    s_current = nullptr;
}

TapeProxy& TapeProxy::current() {
    return *s_current;
}

Answer TapeProxy::call(Function function, const char* text) {
    std::fill(m_message.begin(), m_message.end(), '#');  // valid until this call, and no longer
    m_calls.add({function, text});
    return m_tape.next(function);
}

Answer TapeProxy::giveLastError(char** message) {
    Answer answer = call(Function::GetLastError);
    const LastError& lastError = m_tape.lastError();
    if (lastError.message) {
        m_message = *lastError.message;
        *message = m_message.data();
    }
    return answer;
}

}  // namespace Torture

using Torture::Function;
using Torture::TapeProxy;

namespace {

struct Result {
    int value;
    bool escapes;
};

// Apart from finish(), since an exception is the caller's memory.
Result answerTo(Function function, const char* text = "", char* buffer = nullptr) {
    const Torture::HeapPause pause;
    const Torture::Answer answer = TapeProxy::current().call(function, text);
    if (buffer != nullptr) {
        const std::string block = answer.block();
        std::memcpy(buffer, block.data(), block.size());
    }
    return {answer.result, answer.escapes};
}

Result lastError(char** message) {
    const Torture::HeapPause pause;
    const Torture::Answer answer = TapeProxy::current().giveLastError(message);
    return {answer.result, answer.escapes};
}

int finish(const Result& result) {
    if (result.escapes) {
        throw Torture::ProxyEscape{};
    }
    return result.value;
}

}  // namespace

int MvServerProxy_Init(void* (*)(size_t), void (*)(void*)) {
    return finish(answerTo(Function::Init));
}

int MvServerProxy_Term(void) {
    return finish(answerTo(Function::Term));
}

int MvServerProxy_Send(const char* text) {
    return finish(answerTo(Function::Send, text));
}

int MvServerProxy_SendNoAck(const char* text) {
    return finish(answerTo(Function::SendNoAck, text));
}

int MvServerProxy_SendEOF(void) {
    return finish(answerTo(Function::SendEOF));
}

int MvServerProxy_Receive(char* buffer) {
    return finish(answerTo(Function::Receive, "", buffer));
}

int MvServerProxy_Complete(void) {
    return answerTo(Function::Complete).value;
}

int MvServerProxy_GetLastError(char** message) {
    return finish(lastError(message));
}
