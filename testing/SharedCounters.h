// Counters that a process shares with the children it forks: what a child counts, the parent reads.
#ifndef MORVENN_NET_MVSERVERPROXY_TESTKIT_SHAREDCOUNTERS_H
#define MORVENN_NET_MVSERVERPROXY_TESTKIT_SHAREDCOUNTERS_H

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace Morvenn::Net::MvServerProxy::TestKit {

/// A fixed number of counters, all 0 at the start. Not copyable; any thread and any forked child
/// may add and read.
class SharedCounters {
public:
    /// @throws std::bad_alloc when the system gives no shared memory.
    explicit SharedCounters(std::size_t size);
    ~SharedCounters();
    SharedCounters(const SharedCounters&) = delete;
    SharedCounters& operator=(const SharedCounters&) = delete;

    /// Adds one. Requires: @p index is below the size.
    void add(std::size_t index) { m_counters[index].fetch_add(1, std::memory_order_relaxed); }
    std::uint64_t value(std::size_t index) const { return m_counters[index].load(); }

private:
    std::size_t m_size;
    std::atomic<std::uint64_t>* m_counters;
};

}  // namespace Morvenn::Net::MvServerProxy::TestKit

#endif
