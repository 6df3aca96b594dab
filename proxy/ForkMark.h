// Tells a forked child from its parent without a system call.
#ifndef MORVENN_PROXY_FORKMARK_H
#define MORVENN_PROXY_FORKMARK_H

#include <sys/types.h>

#include <atomic>

namespace Morvenn::Net::MvServerProxy::Proxy {

// A word in a page that the kernel clears in a child, however the child is made. On a kernel that
// does not know how to, process numbers are compared.
class ForkMark {
public:
    ForkMark();
    ForkMark(const ForkMark&) = delete;
    ForkMark& operator=(const ForkMark&) = delete;
    ~ForkMark();

    // Marks the present process.
    void set();
    // True in a child of a marked process.
    bool isChild() const;

private:
    std::atomic<bool>* m_page = nullptr;  // nullptr: the kernel clears no pages
    std::atomic<pid_t> m_owner{0};        // 0: not marked
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
