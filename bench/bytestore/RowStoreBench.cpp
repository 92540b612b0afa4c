// A result of 1,000,000 rows of 6 columns, about 90 bytes each: appended, read whole, read at random,
// with a cache that holds it and with the ordinary one. Beside it the rows as strings in memory.
#include "vnbytstr/RowStore.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr DWORD kRows = 1'000'000;
constexpr int kColumns = 6;

/// The texts of some rows, so that making them is not what is measured.
struct Samples {
    Samples() {
        for (std::size_t i = 0; i < 1024; ++i) {
            names.push_back("Customer number " + std::to_string(i * 7919));
            cities.push_back(i % 3 == 0 ? "Klagenfurt am Woerthersee" : "Graz");
            amounts.push_back(std::to_string(i * 31 % 100000) + ".50");
            notes.push_back(std::string(20 + i % 24, 'n'));
        }
    }
    std::vector<std::string> names, cities, amounts, notes;
};

const Samples& Texts() {
    static const Samples samples;
    return samples;
}

void AppendRow(CRowStore& store, DWORD row) {
    const Samples& texts = Texts();
    const std::size_t sample = row % 1024;
    store.BeginRow();
    store.AppendInteger(row);
    store.AppendText(texts.names[sample]);
    store.AppendText(texts.cities[sample]);
    store.AppendDecimal(texts.amounts[sample]);
    if (row % 5 == 0)
        store.AppendNull();
    else
        store.AppendReal(row * 0.25);
    store.AppendText(texts.notes[sample]);
    store.EndRow();
}

/// What a program does that keeps rows as strings: fields with a separator, one block per row.
std::string RowAsString(DWORD row) {
    const Samples& texts = Texts();
    const std::size_t sample = row % 1024;
    std::string line = std::to_string(row);
    for (const std::string* text : {&texts.names[sample], &texts.cities[sample],
                                    &texts.amounts[sample], &texts.notes[sample]}) {
        line += '\t';
        line += *text;
    }
    return line;
}

void Fill(CRowStore& store) {
    for (DWORD row = 0; row < kRows; ++row)
        AppendRow(store, row);
}

std::size_t ReadRow(CRowStore& store, DWORD row) {
    std::size_t sum = 0;
    for (int column = 0; column < kColumns; ++column) {
        const CRowValue value = store.GetValue(row, column);
        sum += value.GetLength();
        if (const std::string_view text = value.GetText(); !text.empty())
            sum += static_cast<BYTE>(text.front());
    }
    return sum;
}

void PerRow(benchmark::State& state, DWORD rows) {
    state.counters["rows"] =
        benchmark::Counter(static_cast<double>(rows) * static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate);
    state.counters["ns/row"] = benchmark::Counter(
        static_cast<double>(rows) * static_cast<double>(state.iterations()) / 1e9,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Append(benchmark::State& state) {
    for (auto _ : state) {
        CRowStore store(kColumns, static_cast<DWORD>(state.range(0)));
        Fill(store);
        benchmark::DoNotOptimize(store.GetRowCount());
    }
    PerRow(state, kRows);
}

void ReadAll(benchmark::State& state) {
    CRowStore store(kColumns, static_cast<DWORD>(state.range(0)));
    Fill(store);
    for (auto _ : state) {
        for (DWORD row = 0; row < kRows; ++row)
            benchmark::DoNotOptimize(ReadRow(store, row));
    }
    PerRow(state, kRows);
}

void ReadAtRandom(benchmark::State& state) {
    CRowStore store(kColumns, static_cast<DWORD>(state.range(0)));
    Fill(store);
    std::minstd_rand random(1);
    constexpr DWORD kReads = 100'000;
    for (auto _ : state) {
        for (DWORD i = 0; i < kReads; ++i)
            benchmark::DoNotOptimize(ReadRow(store, static_cast<DWORD>(random() % kRows)));
    }
    PerRow(state, kReads);
}

void AppendStrings(benchmark::State& state) {
    for (auto _ : state) {
        std::vector<std::string> rows;
        for (DWORD row = 0; row < kRows; ++row)
            rows.push_back(RowAsString(row));
        benchmark::DoNotOptimize(rows.data());
    }
    PerRow(state, kRows);
}

constexpr int kHoldsAll = 4096; // pages: 128 MiB

BENCHMARK(Append)->Arg(kHoldsAll)->Arg(64)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadAll)->Arg(kHoldsAll)->Arg(64)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadAtRandom)->Arg(kHoldsAll)->Arg(64)->Unit(benchmark::kMillisecond);
BENCHMARK(AppendStrings)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
