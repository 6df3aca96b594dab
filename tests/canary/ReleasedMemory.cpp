#include "tests/canary/ReleasedMemory.h"

#include <execinfo.h>
#include <malloc.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define MV_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define MV_SANITIZED 1
#endif
#endif

namespace Morvenn::Net::MvServerProxy::Tests::ReleasedMemory {
namespace {

// No containers and no allocation here: this runs inside free.
struct Bytes {
    const char* data;
    std::size_t size;
};

std::array<Bytes, 16> s_wanted;
std::size_t s_wantedCount = 0;
bool s_isOn = false;
std::size_t s_seen = 0;
std::size_t s_found = 0;
std::size_t s_firstSize = 0;
std::array<void*, 32> s_firstStack;
int s_firstDepth = 0;

bool holdsAny(const void* block, std::size_t size) {
    for (std::size_t i = 0; i < s_wantedCount; ++i) {
        if (memmem(block, size, s_wanted[i].data, s_wanted[i].size) != nullptr) {
            return true;
        }
    }
    return false;
}

void inspect(void* block) {
    if (!s_isOn || block == nullptr) {
        return;
    }
    ++s_seen;
    const std::size_t size = malloc_usable_size(block);
    if (!holdsAny(block, size)) {
        return;
    }
    if (s_found++ == 0) {
        s_isOn = false;  // describing may release memory of its own
        s_firstSize = size;
        s_firstDepth = backtrace(s_firstStack.data(), static_cast<int>(s_firstStack.size()));
        s_isOn = true;
    }
}

}  // namespace

void lookFor(std::string_view bytes) {
    if (s_wantedCount == s_wanted.size()) {
        std::abort();
    }
    s_wanted[s_wantedCount++] = {bytes.data(), bytes.size()};
}

std::size_t seen() {
    return s_seen;
}

std::size_t found() {
    return s_found;
}

void describeFirst() {
    std::fprintf(stderr, "a released block of %zu bytes\n", s_firstSize);
    backtrace_symbols_fd(s_firstStack.data(), s_firstDepth, STDERR_FILENO);
}

}  // namespace Morvenn::Net::MvServerProxy::Tests::ReleasedMemory

namespace ReleasedMemory = Morvenn::Net::MvServerProxy::Tests::ReleasedMemory;

#ifdef MV_SANITIZED

// The sanitizers have a heap of their own, and a place to hook into it.
extern "C" int __sanitizer_install_malloc_and_free_hooks(  // NOLINT(bugprone-reserved-identifier)
    void (*onMalloc)(const volatile void*, std::size_t), void (*onFree)(const volatile void*));

// clang's sanitizer forbids to read the number of elements in front of an array; the tests do.
extern "C" const char* __asan_default_options() {  // NOLINT(bugprone-reserved-identifier)
    return "poison_array_cookie=0";
}

void ReleasedMemory::look(bool isOn) {
    static const int installed = __sanitizer_install_malloc_and_free_hooks(
        [](const volatile void*, std::size_t) {},
        [](const volatile void* block) { inspect(const_cast<void*>(block)); });
    s_isOn = isOn && installed > 0;
}

#else

void ReleasedMemory::look(bool isOn) {
    s_isOn = isOn;
}

// The program's own definitions come before those of the C library, for all that is loaded.
extern "C" {

void __libc_free(void* block);                        // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* block, std::size_t size);  // NOLINT(bugprone-reserved-identifier)

void free(void* block) {
    ReleasedMemory::inspect(block);
    __libc_free(block);
}

// A block that is enlarged may be copied elsewhere and its old place released unseen.
void* realloc(void* block, std::size_t size) {
    ReleasedMemory::inspect(block);
    return __libc_realloc(block, size);
}
}

#endif
