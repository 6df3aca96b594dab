// What belongs to one thread: its exchange with its connections, and the text of its last failure.
#ifndef MORVENN_PROXY_THREADCONTEXT_H
#define MORVENN_PROXY_THREADCONTEXT_H

#include <cstdint>
#include <string>

#include "Exchange.h"
#include "Process.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

class ThreadContext {
public:
    // The calling thread's; nullptr once its thread-local objects have been destroyed.
    static ThreadContext* current();

    // Takes over the settings of the present start; ends what ran under another one.
    void join(const Process& process);
    void leave();

    Exchange& exchange() { return m_exchange; }
    const Trace* trace() const { return m_shared.trace.get(); }

    // A failure outside of any exchange.
    void setError(std::string text) { m_error = std::move(text); }
    void clearError() { m_error.clear(); }
    const std::string& error() const { return m_error.empty() ? m_exchange.lastError() : m_error; }

private:
    Shared m_shared;
    Exchange m_exchange;
    std::string m_error;
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
