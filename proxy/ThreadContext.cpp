#include "ThreadContext.h"

#include <utility>

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

thread_local ThreadContext* t_context = nullptr;
thread_local bool t_over = false;

struct Owner {
    ~Owner() {
        t_over = true;
        // In a forked child the connections are the parent's: closing them would end its sessions.
        if (!Process::instance().isForkedChild()) {
            delete std::exchange(t_context, nullptr);
        }
    }
    void arm() {}
};
thread_local Owner t_owner;

}  // namespace

ThreadContext* ThreadContext::current() {
    if (t_context == nullptr && !t_over) {
        t_owner.arm();
        t_context = new ThreadContext;
    }
    return t_over ? nullptr : t_context;
}

void ThreadContext::join(const Process& process) {
    if (m_shared.run == process.run()) {
        return;
    }
    m_shared = process.shared();
    m_error.clear();
    if (m_shared.config == nullptr) {
        leave();
        return;
    }
    m_exchange.configure(m_shared.config, m_shared.store);
}

void ThreadContext::leave() {
    m_shared = {};
    m_exchange.release();
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
