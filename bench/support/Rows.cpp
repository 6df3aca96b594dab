#include "support/Rows.h"

#include <stdexcept>

namespace Morvenn::Bench {

namespace {

std::string resultOf(const Row& row) {
    std::string kept;
    Sink sink(&kept);
    row.run(sink);
    if (row.cleanUp) {
        row.cleanUp();
    }
    return kept;
}

void compare(const std::string& work, const std::vector<Row>& rows) {
    const std::string expected = resultOf(rows.front());
    for (const Row& row : rows) {
        const std::string actual = resultOf(row);
        if (actual != expected) {
            throw std::runtime_error(
                work + ": the row '" + row.name + "' gives " + std::to_string(actual.size()) +
                " bytes that differ from the " + std::to_string(expected.size()) + " bytes of '" +
                rows.front().name + "'. Timing it would compare other work.");
        }
    }
}

void timed(const Row& row, double units, benchmark::State& state) {
    Sink sink;
    for (auto unused : state) {
        static_cast<void>(unused);
        row.run(sink);
        if (row.cleanUp) {
            state.PauseTiming();
            row.cleanUp();
            state.ResumeTiming();
        }
    }
    state.counters["units"] = units;
}

}  // namespace

void registerRows(const std::string& work, double units, const std::vector<Row>& rows) {
    compare(work, rows);
    for (const Row& row : rows) {
        benchmark::RegisterBenchmark(
            (work + "/" + row.name).c_str(),
            [row, units](benchmark::State& state) { timed(row, units, state); });
    }
}

}  // namespace Morvenn::Bench
