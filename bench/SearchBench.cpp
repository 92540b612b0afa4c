// Substring search against memmem of the C library, and the searcher that takes the data in pages.
#include "bytestore/ByteSearch.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

using namespace vnbytstr;
using namespace vnbytstr::detail;

namespace {

using Bytes = std::vector<BYTE>;

constexpr std::size_t kHaystack = std::size_t{1} << 20;
constexpr std::size_t kPage = 32768;

struct Case {
    std::string name;
    Bytes haystack;
    Bytes pattern;
    std::vector<double> ours, paged, peer; // GB/s of each run
};

Bytes Of(const std::string& text) { return {text.begin(), text.end()}; }

Bytes Repeat(const Bytes& unit, std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = unit[i % unit.size()];
    return bytes;
}

Bytes RandomText(std::size_t size) {
    static const char* const kWords[] = {
        "the",     "of",    "and",   "in",    "customer", "order",  "invoice", "is",
        "to",      "total", "date",  "value", "address",  "street", "account", "with",
        "from",    "that",  "this",  "were",  "not",      "there",  "number",  "name",
        "shipped", "which", "price", "a",     "for",      "item"};
    std::mt19937 random{3};
    std::string text;
    while (text.size() < size) {
        text += kWords[random() % std::size(kWords)];
        text += random() % 12 == 0 ? ".\n" : " ";
    }
    text.resize(size);
    return Of(text);
}

std::vector<Case> MakeCases() {
    std::vector<Case> cases;
    std::mt19937 random{1};
    Bytes noise(kHaystack);
    for (BYTE& byte : noise)
        byte = static_cast<BYTE>(random());
    const Bytes text = RandomText(kHaystack);
    const auto add = [&](const char* name, const Bytes& haystack, const Bytes& pattern) {
        cases.push_back({name, haystack, pattern, {}, {}, {}});
    };
    add("random/16", noise, Of("0123456789abcdef"));
    add("random/4", noise, {0x7E, 0x11, 0xC3, 0x5A});
    add("random/1024", noise, Repeat(Of("0123456789abcdef!"), 1024));
    add("text/17", text, Of("address of totals"));
    add("text/8", text, Of("shipping"));
    add("text/64", text, Of("the customer and the order and the invoice and the total and then"));
    for (const std::size_t size : {std::size_t{16}, std::size_t{1024}}) {
        const std::string suffix = "/" + std::to_string(size);
        const Bytes as = Repeat(Of("a"), size);
        Bytes end = as;
        end.back() = 'b';
        Bytes begin = as;
        begin.front() = 'b';
        Bytes middle = as;
        middle[size / 2] = 'b';
        const Bytes all = Repeat(Of("a"), kHaystack);
        Bytes unit = as;
        unit.back() = 'b';
        // Data in which every stretch begins, or ends, like the pattern.
        add(("a..ab in a..a" + suffix).c_str(), all, end);
        add(("ba..a in a..a" + suffix).c_str(), all, begin);
        add(("a..aba..a in a..a" + suffix).c_str(), all, middle);
        add(("a..a in a..ab" + suffix).c_str(), Repeat(unit, kHaystack), as);
        unit.erase(unit.begin());
        add(("a..ab in (a..b)" + suffix).c_str(), Repeat(unit, kHaystack), end);
        unit = middle;
        unit.back() = 'c';
        add(("a..aba..a in near ones" + suffix).c_str(), Repeat(unit, kHaystack), middle);
        unit = Repeat(Of("a"), size / 2);
        unit.back() = 'b';
        add(("a..aba..a in shorter" + suffix).c_str(), Repeat(unit, kHaystack), middle);
    }
    return cases;
}

double Seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

template <class Search>
double Rate(const Search& search) {
    const double start = Seconds();
    if (search())
        std::abort(); // no pattern occurs in its data
    return static_cast<double>(kHaystack) / (Seconds() - start) * 1e-9;
}

bool SearchPaged(const Case& item) {
    ByteSearcher searcher(item.pattern);
    for (std::size_t at = 0; at < item.haystack.size(); at += kPage) {
        if (searcher.Feed(std::span(item.haystack).subspan(at, kPage)))
            return true;
    }
    return false;
}

// One turn measures the three ways one after the other, so that the machine's mood hits all alike.
void Run(benchmark::State& state, Case& item) {
    for (auto _ : state) {
        item.ours.push_back(
            Rate([&] { return FindBytes(item.haystack, item.pattern).has_value(); }));
        item.paged.push_back(Rate([&] { return SearchPaged(item); }));
        item.peer.push_back(Rate([&] {
            return memmem(item.haystack.data(), item.haystack.size(), item.pattern.data(),
                          item.pattern.size()) != nullptr;
        }));
    }
}

double Median(std::vector<double>& values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    std::vector<Case> cases = MakeCases();
    for (Case& item : cases)
        benchmark::RegisterBenchmark(item.name.c_str(), [&item](benchmark::State& state) {
            Run(state, item);
        })->Iterations(15);
    benchmark::RunSpecifiedBenchmarks();
    std::printf("\n%-30s %10s %10s %10s %8s\n", "GB/s, medians", "ours", "in pages", "memmem",
                "ratio");
    for (Case& item : cases) {
        const double ours = Median(item.ours);
        const double peer = Median(item.peer);
        std::printf("%-30s %10.2f %10.2f %10.2f %8.2f\n", item.name.c_str(), ours,
                    Median(item.paged), peer, ours / peer);
    }
}
