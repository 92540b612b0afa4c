// Sorting the rows of a large result by one column: integers, decimal numbers, texts that differ early,
// texts that differ late. Prints the peak memory that the sort itself took: run one case at a time for
// that (--benchmark_filter), since a peak never goes down.
#include "vnbytstr/RowSort.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <random>
#include <string>

namespace {

double PeakMiB() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:"))
            return std::stod(line.substr(6)) / 1024;
    }
    return 0;
}

enum Column { Integers, Decimals, Names, Paths };

void Fill(CRowStore& store, DWORD rows) {
    std::mt19937 random(1);
    const char* syllables[] = {"ka", "mer", "sto", "lin", "dor", "wen", "bas", "tri"};
    for (DWORD row = 0; row < rows; ++row) {
        std::string name;
        for (int i = 0; i < 6; ++i)
            name += syllables[random() % 8];
        store.BeginRow();
        store.AppendInteger(random());
        store.AppendDecimal(std::to_string(random() % 100000) + '.' +
                            std::to_string(random() % 90 + 10));
        store.AppendText(name);
        store.AppendText("/var/lib/customers/archive/" + std::to_string(random()));
        store.EndRow();
    }
}

void SortBy(benchmark::State& state) {
    const auto rows = static_cast<DWORD>(state.range(1));
    CRowStore store(4);
    Fill(store, rows);
    CRowStoreColumn column(store, static_cast<int>(state.range(0)));
    const double before = PeakMiB();
    for (auto _ : state) {
        std::vector<DWORD> order;
        CRowSort::Sort(column, order);
        benchmark::DoNotOptimize(order.data());
    }
    state.counters["MiB"] = PeakMiB() - before;
    state.counters["bytes/row"] = (PeakMiB() - before) * 1048576 / rows;
}

void Cases(benchmark::internal::Benchmark* bench) {
    for (const int rows : {1'000'000, 10'000'000})
        for (const int column : {Integers, Decimals, Names, Paths})
            bench->Args({column, rows});
}

BENCHMARK(SortBy)
    ->Apply(Cases)
    ->ArgNames({"column", "rows"})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

} // namespace

BENCHMARK_MAIN();
