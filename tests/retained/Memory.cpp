#include "tests/retained/Memory.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>
#include <utility>

// The linker's name for malloc itself where it replaces malloc; see below.
extern "C" void* __real_malloc(std::size_t size);  // NOLINT(bugprone-reserved-identifier)

namespace Morvenn::Net::MvServerProxy::Tests::Memory {
namespace {

struct Block {
    void* address;
    std::size_t size;
};

// Not a container: those would ask operator new.
std::array<Block, 65536> s_blocks;
std::size_t s_count = 0;
bool s_isRecording = false;
std::size_t s_largest = 0;
std::size_t s_limit = std::numeric_limits<std::ptrdiff_t>::max();
std::size_t s_untilFailure = 0;
bool s_hasFailed = false;
bool s_failNextMalloc = false;
std::size_t s_lastMalloc = 0;

void remember(void* address, std::size_t size) {
    if (s_count == s_blocks.size()) {
        std::abort();
    }
    s_blocks[s_count++] = {address, size};
}

// The blocks released are mostly the latest.
void forget(void* address) {
    for (std::size_t i = s_count; i > 0; --i) {
        if (s_blocks[i - 1].address == address) {
            s_blocks[i - 1] = s_blocks[--s_count];
            return;
        }
    }
}

bool refuses(std::size_t size) {
    if (size > s_limit) {
        return true;
    }
    if (s_untilFailure > 0 && --s_untilFailure == 0) {
        s_hasFailed = true;
        return true;
    }
    return false;
}

void* allocate(std::size_t size) {
    s_largest = size > s_largest ? size : s_largest;
    void* address = refuses(size) ? nullptr : __real_malloc(size > 0 ? size : 1);
    if (address != nullptr && s_isRecording) {
        remember(address, size);
    }
    return address;
}

void release(void* address) {
    if (s_isRecording && address != nullptr) {
        forget(address);
    }
    std::free(address);
}

void* allocateOrThrow(std::size_t size) {
    void* address = allocate(size);
    if (address == nullptr) {
        throw std::bad_alloc();
    }
    return address;
}

}  // namespace

Kept keptBy(const std::function<void()>& work) {
    s_count = 0;
    s_largest = 0;
    s_isRecording = true;
    work();
    s_isRecording = false;
    Kept kept;
    for (std::size_t i = 0; i < s_count; ++i) {
        ++kept.blocks;
        kept.bytes += s_blocks[i].size;
    }
    return kept;
}

std::size_t largestRequest() {
    return s_largest;
}

void failRequest(std::size_t number) {
    s_untilFailure = number;
    s_hasFailed = false;
}

bool hasFailed() {
    return s_hasFailed;
}

void limitRequests(std::size_t bytes) {
    s_limit = bytes;
    s_largest = 0;
}

void failNextMalloc() {
    s_failNextMalloc = true;
}

std::size_t lastMalloc() {
    return s_lastMalloc;
}

}  // namespace Morvenn::Net::MvServerProxy::Tests::Memory

namespace Memory = Morvenn::Net::MvServerProxy::Tests::Memory;

void* operator new(std::size_t size) {
    return Memory::allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return Memory::allocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Memory::allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Memory::allocate(size);
}
void operator delete(void* address) noexcept {
    Memory::release(address);
}
void operator delete[](void* address) noexcept {
    Memory::release(address);
}
void operator delete(void* address, std::size_t) noexcept {
    Memory::release(address);
}
void operator delete[](void* address, std::size_t) noexcept {
    Memory::release(address);
}
void operator delete(void* address, const std::nothrow_t&) noexcept {
    Memory::release(address);
}
void operator delete[](void* address, const std::nothrow_t&) noexcept {
    Memory::release(address);
}

// The linker puts this in the place of malloc in what is linked statically, which is the library.
extern "C" void* __wrap_malloc(std::size_t size) {  // NOLINT(bugprone-reserved-identifier)
    Memory::s_lastMalloc = size;
    return std::exchange(Memory::s_failNextMalloc, false) ? nullptr : __real_malloc(size);
}
