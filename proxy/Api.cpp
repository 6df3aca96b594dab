// The eight functions: each passes one funnel, which refuses what cannot be served, turns whatever
// is thrown into a status and a text, and writes the trace.
#include <chrono>
#include <cstring>
#include <exception>
#include <new>
#include <optional>

#include "ThreadContext.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kForked =
    "the proxy library was started before this process was forked off; start it in the process "
    "that uses it, or replace the process with exec";
constexpr const char* kNotStarted =
    "the proxy library is not started; call MvServerProxy_Init first";

// Turns the failure under way into a status; its text goes to the thread's exchange.
int failed(Exchange& exchange) {
    try {
        throw;
    } catch (const OutOfOrder& call) {
        exchange.note(call);
        return call.failure.code;
    } catch (const Failure& failure) {
        exchange.fail(failure);
        return failure.code;
    } catch (const std::bad_alloc&) {
        exchange.fail({MV_STATUS_RUNTIME, "the exchange ran out of memory; send less at once"});
    } catch (const std::exception& error) {
        exchange.fail({MV_STATUS_RUNTIME, std::string("the exchange failed: ") + error.what()});
    }
    return MV_STATUS_RUNTIME;
}

std::optional<int> refusal(ThreadContext* context) {
    const Process& process = Process::instance();
    if (context == nullptr) {
        return MV_STATUS_RUNTIME;
    }
    if (process.isForkedChild()) {
        context->setError(kForked);
        return MV_STATUS_RUNTIME;
    }
    context->join(process);
    if (process.run() == 0) {
        context->setError(kNotStarted);
        return MV_STATUS_RUNTIME;
    }
    context->clearError();
    return std::nullopt;
}

void traceBare(const ThreadContext& context, const char* call) {
    if (const Trace* trace = context.trace()) {
        TraceEntry entry;
        entry.call = call;
        trace->add(entry);
    }
}

// The text has been in the trace since the call that failed: here its size is enough.
void traceGetLastError(ThreadContext& context) {
    if (const Trace* trace = context.trace()) {
        TraceEntry entry;
        entry.call = "GetLastError";
        entry.stateBefore = entry.stateAfter = nameOf(context.exchange().state());
        entry.text = context.error();
        trace->add(entry);
    }
}

// `incoming` is the text of the call; null when it has none.
template <typename Work>
int funnel(const char* call, const char* incoming, const Work& work) {
    ThreadContext* context = ThreadContext::current();
    if (const auto status = refusal(context)) {
        return *status;
    }
    Exchange& exchange = context->exchange();
    const State before = exchange.state();
    const Trace* trace = context->trace();
    const auto begin = trace == nullptr ? Clock::time_point() : Clock::now();
    int result = 0;
    try {
        result = work(exchange);
    } catch (...) {
        result = failed(exchange);
    }
    if (trace != nullptr) {
        TraceEntry entry;
        entry.call = call;
        entry.stateBefore = nameOf(before);
        entry.stateAfter = nameOf(exchange.state());
        entry.result = result;
        entry.microseconds =
            std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin).count();
        entry.text = incoming == nullptr ? std::string_view() : std::string_view(incoming);
        entry.isHeader = incoming != nullptr && exchange.state() == State::Header;
        entry.url = exchange.shownUrl();
        entry.status = exchange.responseStatus();
        entry.failure = exchange.lastError();
        trace->add(entry);
    }
    return result;
}

[[noreturn]] void refuseNull(const char* what) {
    throw OutOfOrder{{MV_STATUS_PROTOCOL, std::string(what) + " was called with a null pointer"}};
}

}  // namespace
}  // namespace Morvenn::Net::MvServerProxy::Proxy

using namespace Morvenn::Net::MvServerProxy::Proxy;

// Nothing changes hands across this interface, so neither function is kept.
int MvServerProxy_Init(void* (*)(size_t), void (*)(void*)) {
    ThreadContext* context = ThreadContext::current();
    if (context == nullptr) {
        return MV_STATUS_RUNTIME;
    }
    Process& process = Process::instance();
    if (process.isForkedChild()) {
        context->setError(kForked);
        return MV_STATUS_RUNTIME;
    }
    try {
        process.start();
        context->join(process);
        context->clearError();
        traceBare(*context, "Init");
        return 0;
    } catch (const Failure& failure) {
        context->setError(failure.text);
        return failure.code;
    } catch (const std::exception& error) {
        context->setError(std::string("the proxy library cannot be started: ") + error.what());
        return MV_STATUS_RUNTIME;
    }
}

int MvServerProxy_Term(void) {
    Process& process = Process::instance();
    ThreadContext* context = ThreadContext::current();
    if (context == nullptr || process.isForkedChild()) {
        return 0;
    }
    traceBare(*context, "Term");
    context->leave();
    process.stop();
    return 0;
}

int MvServerProxy_Send(const char* text) {
    return funnel("Send", text, [&](Exchange& exchange) {
        return text == nullptr ? (refuseNull("MvServerProxy_Send"), 0) : exchange.send(text);
    });
}

int MvServerProxy_SendNoAck(const char* text) {
    return funnel("SendNoAck", text, [&](Exchange& exchange) {
        return text == nullptr ? (refuseNull("MvServerProxy_SendNoAck"), 0)
                               : exchange.sendNoAck(text);
    });
}

int MvServerProxy_SendEOF(void) {
    return funnel("SendEOF", nullptr, [](Exchange& exchange) { return exchange.sendEof(); });
}

int MvServerProxy_Receive(char* buffer) {
    return funnel("Receive", nullptr, [&](Exchange& exchange) {
        return buffer == nullptr ? (refuseNull("MvServerProxy_Receive"), 0)
                                 : exchange.receive(buffer);
    });
}

int MvServerProxy_Complete(void) {
    ThreadContext* context = ThreadContext::current();
    const Process& process = Process::instance();
    if (context == nullptr || process.isForkedChild() || process.run() == 0) {
        return 0;
    }
    return funnel("Complete", nullptr, [](Exchange& exchange) {
        exchange.complete();
        return 0;
    });
}

int MvServerProxy_GetLastError(char** message) {
    ThreadContext* context = ThreadContext::current();
    if (context != nullptr && !Process::instance().isForkedChild()) {
        traceGetLastError(*context);
    }
    if (message != nullptr && context != nullptr && !context->error().empty()) {
        *message = const_cast<char*>(context->error().c_str());
    }
    return 0;
}
