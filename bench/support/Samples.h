// The data that benchmarks work on: the same bytes in every run.
#ifndef MORVENN_BENCH_SUPPORT_SAMPLES_H
#define MORVENN_BENCH_SUPPORT_SAMPLES_H

#include <cstddef>
#include <string>
#include <string_view>

namespace Morvenn::Bench {

/// Records of an application's answer, cut at @p size bytes.
std::string xmlSample(std::size_t size);
std::string jsonSample(std::size_t size);

/// Bytes without structure.
std::string binarySample(std::size_t size);

/// One gzip member, level 6.
std::string gzip(std::string_view data);

/// An answer of the directory: each environment has two services of four properties.
std::string directorySample(std::size_t environments);

}  // namespace Morvenn::Bench

#endif  // MORVENN_BENCH_SUPPORT_SAMPLES_H
