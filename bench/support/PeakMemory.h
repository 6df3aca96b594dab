// The peak of the process's own memory.
#ifndef MORVENN_BENCH_SUPPORT_PEAKMEMORY_H
#define MORVENN_BENCH_SUPPORT_PEAKMEMORY_H

namespace Morvenn::Bench {

/// In KiB. Not the figure of getrusage(), which begins with that of the process that forked.
long peakKib();

}  // namespace Morvenn::Bench

#endif  // MORVENN_BENCH_SUPPORT_PEAKMEMORY_H
