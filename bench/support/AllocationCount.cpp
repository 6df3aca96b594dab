// Definitions in the program come before those of the C library, for every library it loads. The
// memory itself is the C library's, under the names it keeps for this purpose; free() stays its
// own.
#include "support/AllocationCount.h"

#include <cstddef>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
}

namespace {

unsigned long s_count = 0;  // constant-initialised: the first calls come before main()

}  // namespace

extern "C" __attribute__((visibility("default"))) void* malloc(std::size_t size) {
    ++s_count;
    return __libc_malloc(size);
}

extern "C" __attribute__((visibility("default"))) void* calloc(std::size_t count,
                                                               std::size_t size) {
    ++s_count;
    return __libc_calloc(count, size);
}

extern "C" __attribute__((visibility("default"))) void* realloc(void* memory, std::size_t size) {
    ++s_count;
    return __libc_realloc(memory, size);
}

unsigned long Morvenn::Bench::allocationCount() {
    return s_count;
}
