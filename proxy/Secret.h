// Text that is overwritten before its memory is given back.
//
// A std::string would leave copies behind: in its small buffer, and in each block it outgrows. The
// storage here is a vector whose allocator wipes.
#ifndef MORVENN_PROXY_SECRET_H
#define MORVENN_PROXY_SECRET_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <string_view>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Proxy {

template <typename T>
struct WipingAllocator {
    using value_type = T;
    WipingAllocator() = default;
    template <typename U>
    WipingAllocator(const WipingAllocator<U>&) {}

    T* allocate(std::size_t count) { return static_cast<T*>(::operator new(count * sizeof(T))); }
    void deallocate(T* memory, std::size_t count) {
        ::explicit_bzero(memory, count * sizeof(T));
        ::operator delete(memory);
    }
    template <typename U>
    bool operator==(const WipingAllocator<U>&) const {
        return true;
    }
    template <typename U>
    bool operator!=(const WipingAllocator<U>&) const {
        return false;
    }
};

class Secret {
public:
    Secret() : Secret(std::string_view()) {}
    explicit Secret(std::string_view text) : m_bytes(text.size() + 1) {
        std::copy(text.begin(), text.end(), m_bytes.begin());
    }

    const char* c_str() const { return m_bytes.data(); }
    std::string_view view() const { return {m_bytes.data(), m_bytes.size() - 1}; }
    bool empty() const { return m_bytes.size() == 1; }

private:
    std::vector<char, WipingAllocator<char>> m_bytes;  // ends in NUL, never empty
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
