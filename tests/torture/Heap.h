// The heap under control: counts what lives, lets a chosen allocation fail, and looks for a secret
// in what is released. Linking Heap.cpp replaces operator new and delete and, outside sanitizer
// builds, malloc and its family for the whole program, zlib and ICU included.
//
// Nothing counts, fails or is searched outside a HeapWatch, nor inside a HeapPause.
#ifndef MORVENN_TESTS_TORTURE_HEAP_H
#define MORVENN_TESTS_TORTURE_HEAP_H

#include <cstddef>

namespace Torture {

/// Whether this is a build with a sanitizer, which keeps malloc to itself.
extern const bool kIsSanitized;

enum class FailMode { Never, Once, FromThereOn };

/// Watches the allocations of this thread while it lives. One at a time.
class HeapWatch {
public:
    /// @param failAt number of the allocation that fails, counted from 1.
    explicit HeapWatch(FailMode mode = FailMode::Never, std::size_t failAt = 0);
    ~HeapWatch();
    HeapWatch(const HeapWatch&) = delete;
    HeapWatch& operator=(const HeapWatch&) = delete;

    static std::size_t allocations();
    static std::size_t failures();
    /// Blocks allocated less blocks released.
    static long live();
    /// Released blocks in which the secret stood.
    static std::size_t residues();
};

/// Allocations on this thread are not the library's while it lives.
class HeapPause {
public:
    HeapPause();
    ~HeapPause();
    HeapPause(const HeapPause&) = delete;
    HeapPause& operator=(const HeapPause&) = delete;

private:
    bool m_wasWatched;
};

/// The bytes to look for; borrowed. Looked for as they are and as UTF-16.
void setSecret(const char* secret);

}  // namespace Torture

#endif
