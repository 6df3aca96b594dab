// Texts whose memory is wiped before it is released.
#ifndef MORVENN_UTIL_SECRET_H
#define MORVENN_UTIL_SECRET_H

#include <string.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Util::Internal {

/// Allocates as the default allocator does and overwrites with zeros before it releases.
template <class T>
struct WipingAllocator {
    using value_type = T;

    WipingAllocator() = default;
    template <class U>
    WipingAllocator(const WipingAllocator<U>& /*other*/) {}  // NOLINT(google-explicit-constructor)

    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* memory, std::size_t count) {
        ::explicit_bzero(memory, count * sizeof(T));
        std::allocator<T>().deallocate(memory, count);
    }

    friend bool operator==(const WipingAllocator&, const WipingAllocator&) { return true; }
    friend bool operator!=(const WipingAllocator&, const WipingAllocator&) { return false; }
};

/// Bytes that hold a secret. Unlike a string it keeps none of them inside the object itself.
using SecretText = std::vector<char, WipingAllocator<char>>;

inline void append(SecretText& text, std::string_view more) {
    text.insert(text.end(), more.begin(), more.end());
}

/// A string that came from elsewhere, wiped when this goes out of scope.
class WipedString {
public:
    /// Takes @p text. A short text lies within the string object, so what it leaves there is wiped.
    explicit WipedString(std::string&& text) noexcept {
        m_text.swap(text);
        ::explicit_bzero(text.data(), text.capacity());
    }
    WipedString(const WipedString&) = delete;
    WipedString& operator=(const WipedString&) = delete;
    ~WipedString() { ::explicit_bzero(m_text.data(), m_text.size()); }

    std::string_view view() const { return m_text; }

private:
    std::string m_text;
};

}  // namespace Morvenn::Net::MvServerProxy::Util::Internal

#endif  // MORVENN_UTIL_SECRET_H
