// Counts every allocation of the process, those of other libraries too.
#ifndef MORVENN_BENCH_SUPPORT_ALLOCATIONCOUNT_H
#define MORVENN_BENCH_SUPPORT_ALLOCATIONCOUNT_H

namespace Morvenn::Bench {

/// Calls of malloc, calloc and realloc (and so of operator new) since the process started.
unsigned long allocationCount();

}  // namespace Morvenn::Bench

#endif  // MORVENN_BENCH_SUPPORT_ALLOCATIONCOUNT_H
