// A result of 1,000,000 rows of 6 columns, about 90 bytes each: appended, read whole, read at random,
// with a cache that holds it and with the ordinary one. Beside it the rows as strings in memory.
#include "vnbytstr/RowStore.h"

#include "bench/Rounds.h"

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using vnbytstr::bench::Contest;
using vnbytstr::bench::Contests;

constexpr DWORD kRows = 1'000'000;
constexpr int kColumns = 6;
constexpr int kHoldsAll = 4096; // pages: 128 MiB

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

std::shared_ptr<CRowStore> Filled(int pages) {
    auto store = std::make_shared<CRowStore>(kColumns, static_cast<DWORD>(pages));
    Fill(*store);
    return store;
}

void AddAppending(Contests& contests) {
    const auto append = [](int pages) { return [=] { Filled(pages); }; };
    contests.Add({"append a row",
                  kRows,
                  Contest::Nanoseconds,
                  {{"CRowStore", append(kHoldsAll)},
                   {"one string a row",
                    [] {
                        std::vector<std::string> rows;
                        for (DWORD row = 0; row < kRows; ++row)
                            rows.push_back(RowAsString(row));
                        benchmark::DoNotOptimize(rows.data());
                    }}},
                  0,
                  5});
    contests.Add(
        {"append a row, 64 pages", kRows, Contest::Nanoseconds, {{"CRowStore", append(64)}}, 0, 5});
}

void AddReading(Contests& contests, int pages, const std::string& how) {
    static constexpr DWORD kReads = 100'000;
    const auto store = std::make_shared<std::shared_ptr<CRowStore>>(); // filled when it is needed
    const auto prepare = [=] {
        if (!*store)
            *store = Filled(pages);
    };
    contests.Add({"read a row in order" + how,
                  kRows,
                  Contest::Nanoseconds,
                  {{"CRowStore",
                    [=] {
                        for (DWORD row = 0; row < kRows; ++row)
                            benchmark::DoNotOptimize(ReadRow(**store, row));
                    },
                    prepare}},
                  0,
                  5});
    contests.Add({"read a row at random" + how,
                  kReads,
                  Contest::Nanoseconds,
                  {{"CRowStore",
                    [=] {
                        std::minstd_rand random(1);
                        for (DWORD i = 0; i < kReads; ++i)
                            benchmark::DoNotOptimize(
                                ReadRow(**store, static_cast<DWORD>(random() % kRows)));
                    },
                    prepare}},
                  0,
                  5});
}

} // namespace

int main(int argc, char** argv) {
    Contests contests;
    AddAppending(contests);
    AddReading(contests, kHoldsAll, "");
    AddReading(contests, 64, ", 64 pages");
    return contests.Run(argc, argv);
}
