// The works that this program times; each function compares its rows and registers them.
#ifndef MORVENN_BENCH_MICRO_WORKS_H
#define MORVENN_BENCH_MICRO_WORKS_H

namespace Morvenn::Bench {

void registerStreaming();
void registerInflation();
void registerExecution();
void registerConversion();
void registerDirectory();
void registerBase64();
void registerLog();

}  // namespace Morvenn::Bench

#endif  // MORVENN_BENCH_MICRO_WORKS_H
