#include "testing/SharedCounters.h"

#include <sys/mman.h>

#include <new>

namespace Morvenn::Net::MvServerProxy::TestKit {

SharedCounters::SharedCounters(std::size_t size) : m_size(size), m_counters(nullptr) {
    void* memory = mmap(nullptr, size * sizeof(*m_counters), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::bad_alloc();
    }
    // The mapping starts as zero bytes, which is what a counter of 0 looks like.
    m_counters = static_cast<std::atomic<std::uint64_t>*>(memory);
}

SharedCounters::~SharedCounters() {
    munmap(m_counters, m_size * sizeof(*m_counters));
}

}  // namespace Morvenn::Net::MvServerProxy::TestKit
