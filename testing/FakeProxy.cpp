#include "testing/FakeProxy.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::TestKit {
namespace {

thread_local FakeProxy* s_current = nullptr;

std::string inWords(const Step& step) {
    std::ostringstream out;
    out << step;
    return out.str();
}

int successOf(Function function) {
    const bool accepts = function == Function::Send || function == Function::SendNoAck;
    return accepts ? 1 : 0;
}

FakeProxy& currentFor(Function function) {
    if (s_current == nullptr) {
        throw UnscriptedCall(std::string("MvServerProxy_") + nameOf(function) +
                             " was called on a thread that has no FakeProxy");
    }
    return *s_current;
}

}  // namespace

FakeProxy::FakeProxy()
    : m_previous(s_current), m_lastError(lastError(std::nullopt)), m_counters(kFunctionCount) {
    s_current = this;
}

FakeProxy::~FakeProxy() {
    s_current = m_previous;
}

FakeProxy* FakeProxy::current() {
    return s_current;
}

void FakeProxy::answers(const Script& script) {
    m_script.insert(m_script.end(), script.steps().begin(), script.steps().end());
}

void FakeProxy::setLastError(std::optional<std::string> message, int status) {
    m_lastError = lastError(std::move(message), status);
}

void FakeProxy::failCall(std::size_t number, int result) {
    m_failures[number] = result;
}

Calls FakeProxy::takeCalls() {
    return std::exchange(m_calls, {});
}

std::uint64_t FakeProxy::count(Function function) const {
    return m_counters.value(static_cast<std::size_t>(function));
}

std::string FakeProxy::leftOver() const {
    std::string lines;
    for (const Step& step : m_script) {
        if (step.repeat != Step::kForever) {
            lines += inWords(step) + "\n";
        }
    }
    return lines;
}

int FakeProxy::call(Function function) {
    return next(function, {}).result;
}

int FakeProxy::init(Allocate allocate, Release release) {
    m_allocate = allocate;
    m_release = release;
    return call(Function::Init);
}

int FakeProxy::send(Function function, const char* text) {
    return next(function, text == nullptr ? "" : text).result;
}

int FakeProxy::receive(char* buffer) {
    const Step step = next(Function::Receive, {});
    char* behind = std::copy(step.bytes.begin(), step.bytes.end(), buffer);
    if (step.terminator) {
        *behind = *step.terminator;
    }
    return step.result;
}

int FakeProxy::getLastError(char** message) {
    const Step step = next(Function::GetLastError, {});
    if (step.message) {
        m_handedOut = *step.message;
        *message = m_handedOut.data();
    }
    return step.result;
}

// Everything that can be seen from a hook is in its final state before the hook runs, since it may
// make calls of its own or leave by an exception.
Step FakeProxy::next(Function function, const std::string& text) {
    std::fill(m_handedOut.begin(), m_handedOut.end(), '#');
    m_calls.add({function, text});
    m_counters.add(static_cast<std::size_t>(function));
    ++m_number;

    const auto failing = m_failures.find(m_number);
    Step step = failing == m_failures.end() ? scripted(function) : gives(function, failing->second);
    if (step.hook) {
        step.hook();
    }
    if (step.generator) {
        step.bytes = block(step.generator()).bytes;
        step.result = static_cast<int>(step.bytes.size());
    }
    return step;
}

Step FakeProxy::scripted(Function function) {
    if (m_strict) {
        if (m_script.empty() || m_script.front().function != function) {
            complain(function, m_script.empty() ? "no more calls" : inWords(m_script.front()));
            return gives(function, successOf(function));
        }
        return take(m_script.begin());
    }
    const auto step = std::find_if(m_script.begin(), m_script.end(),
                                   [function](const Step& s) { return s.function == function; });
    return step == m_script.end() ? unanswered(function) : take(step);
}

Step FakeProxy::take(std::deque<Step>::iterator step) {
    if (step->repeat == Step::kForever) {
        return *step;
    }
    if (step->repeat > 1) {
        --step->repeat;
        return *step;
    }
    Step taken = std::move(*step);
    m_script.erase(step);
    return taken;
}

Step FakeProxy::unanswered(Function function) {
    if (function == Function::GetLastError) {
        return m_lastError;
    }
    if (function == Function::Receive) {
        complain(function, m_script.empty() ? "the script is at its end"
                                            : "next in the script: " + inWords(m_script.front()));
    }
    return gives(function, successOf(function));
}

void FakeProxy::complain(Function function, const std::string& expected) {
    std::ostringstream text;
    text << "unscripted call " << m_number << ", " << nameOf(function) << "; expected: " << expected
         << "; calls so far:" << m_calls;
    m_complaints += text.str() + "\n";
    if (function != Function::Complete) {
        throw UnscriptedCall(text.str());
    }
}

}  // namespace Morvenn::Net::MvServerProxy::TestKit

// --- the eight functions ------------------------------------------------------------------------

using Morvenn::Net::MvServerProxy::TestKit::currentFor;
using Morvenn::Net::MvServerProxy::TestKit::FakeProxy;
using Morvenn::Net::MvServerProxy::TestKit::Function;

int MvServerProxy_Init(void* (*allocate)(size_t), void (*release)(void*)) {
    return currentFor(Function::Init).init(allocate, release);
}

int MvServerProxy_Term(void) {
    return currentFor(Function::Term).call(Function::Term);
}

int MvServerProxy_Send(const char* text) {
    return currentFor(Function::Send).send(Function::Send, text);
}

int MvServerProxy_SendNoAck(const char* text) {
    return currentFor(Function::SendNoAck).send(Function::SendNoAck, text);
}

int MvServerProxy_SendEOF(void) {
    return currentFor(Function::SendEOF).call(Function::SendEOF);
}

int MvServerProxy_Receive(char* buffer) {
    return currentFor(Function::Receive).receive(buffer);
}

// Comes from destructors, also from those of objects that outlive every FakeProxy.
int MvServerProxy_Complete(void) {
    FakeProxy* proxy = FakeProxy::current();
    return proxy == nullptr ? 0 : proxy->call(Function::Complete);
}

int MvServerProxy_GetLastError(char** message) {
    return currentFor(Function::GetLastError).getLastError(message);
}
