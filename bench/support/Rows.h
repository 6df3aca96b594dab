// One piece of work, done by several rows: the library, its peers, and the limit.
#ifndef MORVENN_BENCH_SUPPORT_ROWS_H
#define MORVENN_BENCH_SUPPORT_ROWS_H

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace Morvenn::Bench {

/// Takes what a row produces. Keeps it while rows are compared; looks at nothing while they are
/// timed.
class Sink : public std::streambuf {
public:
    explicit Sink(std::string* kept = nullptr) : m_kept(kept) {}

    void take(std::string_view piece) {
        if (m_kept != nullptr) {
            m_kept->append(piece);
        }
        benchmark::DoNotOptimize(piece.data());
    }

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        take({text, static_cast<std::size_t>(size)});
        return size;
    }
    int_type overflow(int_type c) override {
        const char byte = traits_type::to_char_type(c);
        take({&byte, 1});
        return c;
    }

private:
    std::string* m_kept;
};

/// What rows copy blocks from and to begins here: how fast a copy is depends on how its two ends
/// lie to each other (by a third, and by a factor of thirty when the target begins a few bytes
/// above the source in its page), and otherwise the start of the stack would decide that anew in
/// each run.
inline constexpr std::size_t kCacheLine = 64;

struct Row {
    std::string name;
    std::function<void(Sink&)> run;
    std::function<void()> cleanUp = {};  // not timed
};

/// Runs every row once and compares what they give; throws std::runtime_error when one differs from
/// the first. Then registers them as "<work>/<row>", timed per @p units (bytes, blocks, calls).
void registerRows(const std::string& work, double units, const std::vector<Row>& rows);

}  // namespace Morvenn::Bench

#endif  // MORVENN_BENCH_SUPPORT_ROWS_H
