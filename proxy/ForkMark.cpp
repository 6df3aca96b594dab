#include "ForkMark.h"

#include <sys/mman.h>
#include <unistd.h>

#include <new>

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

constexpr std::size_t kSize = sizeof(std::atomic<bool>);  // the kernel makes a page of it

}  // namespace

ForkMark::ForkMark() {
    void* page = ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) {
        return;
    }
    if (::madvise(page, kSize, MADV_WIPEONFORK) != 0) {
        ::munmap(page, kSize);
        return;
    }
    m_page = new (page) std::atomic<bool>(false);
}

ForkMark::~ForkMark() {
    if (m_page != nullptr) {
        ::munmap(m_page, kSize);
    }
}

void ForkMark::set() {
    if (m_page != nullptr) {
        m_page->store(true, std::memory_order_relaxed);
    }
    m_owner.store(::getpid(), std::memory_order_release);  // after the page, for other threads
}

bool ForkMark::isChild() const {
    const pid_t owner = m_owner.load(std::memory_order_acquire);
    if (owner == 0) {
        return false;
    }
    return m_page != nullptr ? !m_page->load(std::memory_order_relaxed) : owner != ::getpid();
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
