#include "Process.h"

#include <cstdlib>

#include "CurlMemory.h"

namespace Morvenn::Net::MvServerProxy::Proxy {

Process& Process::instance() {
    static auto* process = new Process;
    return *process;
}

void Process::start() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (run() != 0) {
        return;
    }
    startCurl();
    Shared fresh;
    const auto config = std::make_shared<const Config>(
        readConfig([](const char* name) -> const char* { return ::secure_getenv(name); }));
    fresh.config = config;
    fresh.store = std::make_shared<CredentialStore>(config->forwardProxies);
    if (!config->traceFile.empty()) {
        fresh.trace = std::make_shared<const Trace>(config->traceFile);
    }
    fresh.run = ++m_starts;
    m_shared = fresh;
    m_forkMark.set();
    m_run.store(fresh.run, std::memory_order_release);
}

void Process::stop() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_shared.store != nullptr) {
        m_shared.store->clear();
    }
    m_shared = {};
    m_run.store(0, std::memory_order_release);
}

Shared Process::shared() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_shared;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
