#include "tests/torture/Heap.h"

#include <malloc.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define MV_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define MV_SANITIZED 1
#endif
#endif

#ifndef MV_SANITIZED
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void __libc_free(void* memory);
}
#endif

namespace Torture {

#ifdef MV_SANITIZED
const bool kIsSanitized = true;
#else
const bool kIsSanitized = false;
#endif

namespace {

struct State {
    bool watched;
    FailMode mode;
    std::size_t failAt;
    std::size_t allocations;
    std::size_t failures;
    long live;
    std::size_t residues;
};

__thread State s_state;
char s_secret[64];
char s_wideSecret[128];
std::size_t s_secretSize = 0;

bool holdsSecret(const void* memory) {
    if (s_secretSize == 0) {
        return false;
    }
    const std::size_t size = malloc_usable_size(const_cast<void*>(memory));
    return memmem(memory, size, s_secret, s_secretSize) != nullptr ||
           memmem(memory, size, s_wideSecret, 2 * s_secretSize) != nullptr;
}

// Whether this allocation is to fail; counts it.
bool fails() {
    if (!s_state.watched) {
        return false;
    }
    ++s_state.allocations;
    const bool isReached = s_state.mode == FailMode::Once ? s_state.allocations == s_state.failAt
                                                          : s_state.allocations >= s_state.failAt;
    if (s_state.mode == FailMode::Never || !isReached) {
        ++s_state.live;
        return false;
    }
    ++s_state.failures;
    return true;
}

// What others left in a block is not the library's; and nothing may rely on what is in it.
void* soiled(void* memory) {
    constexpr int kSoil = 0xA5;
    if (s_state.watched && memory != nullptr) {
        std::memset(memory, kSoil, malloc_usable_size(memory));
    }
    return memory;
}

void releasing(const void* memory) {
    if (s_state.watched && memory != nullptr) {
        --s_state.live;
        s_state.residues += holdsSecret(memory) ? 1 : 0;
    }
}

#ifdef MV_SANITIZED
void* rawAllocate(std::size_t size) {
    return std::malloc(size);
}
void rawRelease(void* memory) {
    std::free(memory);
}
#else
void* rawAllocate(std::size_t size) {
    return __libc_malloc(size);
}
void rawRelease(void* memory) {
    __libc_free(memory);
}
#endif

void* allocate(std::size_t size) noexcept {
    return fails() ? nullptr : soiled(rawAllocate(size == 0 ? 1 : size));
}

void* allocateOrThrow(std::size_t size) {
    void* memory = allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void release(void* memory) noexcept {
    releasing(memory);
    rawRelease(memory);
}

}  // namespace

HeapWatch::HeapWatch(FailMode mode, std::size_t failAt) {
    s_state = {true, mode, failAt, 0, 0, 0, 0};
}

HeapWatch::~HeapWatch() {
    s_state.watched = false;
}

std::size_t HeapWatch::allocations() {
    return s_state.allocations;
}

std::size_t HeapWatch::failures() {
    return s_state.failures;
}

long HeapWatch::live() {
    return s_state.live;
}

std::size_t HeapWatch::residues() {
    return s_state.residues;
}

HeapPause::HeapPause() : m_wasWatched(s_state.watched) {
    s_state.watched = false;
}

HeapPause::~HeapPause() {
    s_state.watched = m_wasWatched;
}

void setSecret(const char* secret) {
    s_secretSize = std::strlen(secret);
    for (std::size_t i = 0; i < s_secretSize; ++i) {
        s_secret[i] = secret[i];
        s_wideSecret[2 * i] = secret[i];
    }
}

}  // namespace Torture

#ifdef MV_SANITIZED
// clang's sanitizer forbids to read the number of elements in front of an array; the tests do.
extern "C" const char* __asan_default_options() {  // NOLINT(bugprone-reserved-identifier)
    return "poison_array_cookie=0";
}
#endif

void* operator new(std::size_t size) {
    return Torture::allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return Torture::allocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return Torture::allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return Torture::allocate(size);
}
void operator delete(void* memory) noexcept {
    Torture::release(memory);
}
void operator delete[](void* memory) noexcept {
    Torture::release(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    Torture::release(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    Torture::release(memory);
}

#ifndef MV_SANITIZED
extern "C" {

void* malloc(std::size_t size) {
    if (Torture::fails()) {
        errno = ENOMEM;
        return nullptr;
    }
    return Torture::soiled(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) {
    if (Torture::fails()) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
    if (memory == nullptr) {
        return malloc(size);
    }
    if (Torture::fails()) {
        errno = ENOMEM;
        return nullptr;
    }
    Torture::releasing(memory);
    return __libc_realloc(memory, size);
}

void free(void* memory) {
    Torture::releasing(memory);
    __libc_free(memory);
}

}  // extern "C"
#endif
