// What the threads of a process share: whether the proxy library is started, with which settings,
// what it knows about forward proxies, and where it traces.
#ifndef MORVENN_PROXY_PROCESS_H
#define MORVENN_PROXY_PROCESS_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "Config.h"
#include "CredentialStore.h"
#include "ForkMark.h"
#include "Trace.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

struct Shared {
    std::uint64_t run = 0;  // which start it belongs to; 0: not started
    std::shared_ptr<const Config> config;
    std::shared_ptr<CredentialStore> store;
    std::shared_ptr<const Trace> trace;  // null: no trace
};

class Process {
public:
    // Lives until the process ends: objects of the application that are destroyed at exit may still
    // call. Never released.
    static Process& instance();

    // Nothing when started already. Throws Failure (-1003).
    void start();
    void stop();

    // The number of the present start; 0 when stopped.
    std::uint64_t run() const { return m_run.load(std::memory_order_acquire); }
    Shared shared() const;

    // True in a child of the process that started the library. Connections and locks are the
    // parent's there, so nothing may be touched.
    bool isForkedChild() const { return m_forkMark.isChild(); }

private:
    mutable std::mutex m_mutex;
    std::atomic<std::uint64_t> m_run{0};
    ForkMark m_forkMark;
    std::uint64_t m_starts = 0;
    Shared m_shared;
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
