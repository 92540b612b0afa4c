// Hexadecimal text against a loop with a table, in cache and in memory.
#include "platform/system/HexTextInternal.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

using namespace vnbytstr;
using namespace vnbytstr::detail;

namespace {

struct Case {
    std::string name;
    std::size_t size; // bytes
    bool decode;
    std::vector<double> ours, peer; // GB of bytes per second of each run
};

void TableEncode(const std::vector<BYTE>& bytes, char* out) {
    static const char kDigits[] = "0123456789ABCDEF";
    for (BYTE byte : bytes) {
        *out++ = kDigits[byte >> 4];
        *out++ = kDigits[byte & 15];
    }
}

std::size_t TableDecode(const std::string& text, BYTE* out) {
    static const std::array<signed char, 256> kValues = [] {
        std::array<signed char, 256> values{};
        values.fill(-1);
        for (int i = 0; i < 10; ++i)
            values[static_cast<BYTE>('0' + i)] = static_cast<signed char>(i);
        for (int i = 0; i < 6; ++i)
            values[static_cast<BYTE>('a' + i)] = values[static_cast<BYTE>('A' + i)] =
                static_cast<signed char>(10 + i);
        return values;
    }();
    std::size_t produced = 0;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        const int high = kValues[static_cast<BYTE>(text[i])];
        const int low = kValues[static_cast<BYTE>(text[i + 1])];
        if ((high | low) < 0)
            break;
        out[produced++] = static_cast<BYTE>(high << 4 | low);
    }
    return produced;
}

template <class Work>
double Rate(std::size_t size, std::size_t turns, const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < turns; ++i) {
        work();
        benchmark::ClobberMemory();
    }
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - start;
    return static_cast<double>(size * turns) / taken.count();
}

void Run(benchmark::State& state, Case& item) {
    std::vector<BYTE> bytes(item.size);
    std::mt19937 random{1};
    for (BYTE& byte : bytes)
        byte = static_cast<BYTE>(random());
    std::string text(2 * item.size, '0');
    EncodeHex(bytes, text.data());
    std::vector<BYTE> back(item.size);
    const std::size_t turns = std::max<std::size_t>(1, (std::size_t{1} << 23) / item.size);
    for (auto _ : state) {
        if (item.decode) {
            item.ours.push_back(Rate(item.size, turns, [&] {
                DecodeHex(text.data(), text.size(), back.data(), back.size());
            }));
            item.peer.push_back(Rate(item.size, turns, [&] { TableDecode(text, back.data()); }));
        } else {
            item.ours.push_back(Rate(item.size, turns, [&] { EncodeHex(bytes, text.data()); }));
            item.peer.push_back(Rate(item.size, turns, [&] { TableEncode(bytes, text.data()); }));
        }
    }
}

double Median(std::vector<double>& values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    std::vector<Case> cases;
    for (const bool decode : {false, true}) {
        cases.push_back({decode ? "decode, cache" : "encode, cache", 8192, decode, {}, {}});
        cases.push_back(
            {decode ? "decode, memory" : "encode, memory", std::size_t{64} << 20, decode, {}, {}});
    }
    for (Case& item : cases)
        benchmark::RegisterBenchmark(item.name.c_str(), [&item](benchmark::State& state) {
            Run(state, item);
        })->Iterations(15);
    benchmark::RunSpecifiedBenchmarks();
    std::printf("\n%-20s %10s %10s %8s\n", "GB/s, medians", "ours", "table", "ratio");
    for (Case& item : cases) {
        const double ours = Median(item.ours);
        const double peer = Median(item.peer);
        std::printf("%-20s %10.2f %10.2f %8.2f\n", item.name.c_str(), ours, peer, ours / peer);
    }
}
