// Contests: ours and its peers do the same work in turns, in one process, so that whatever else the
// machine does hits all alike; medians and their ratios are printed at the end. VNBYTSTR_BENCH_TABLE in
// the environment names a file that gets the figures for scripts/measure: a line for each contest, with
// tabs between its name, unit, goals, and each contender with its value by elapsed time and by the
// processor's time, which other programs change less.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace vnbytstr::bench {

/// One who does the work; the first of a contest is ours.
struct Contender {
    std::string name;
    std::function<void()> work;         ///< the timed part
    std::function<void()> prepare = {}; ///< before each round, not timed
    std::vector<double> seconds = {};
    std::vector<double> processorSeconds = {}; ///< of all threads
};

struct Contest {
    std::string name;
    double amount = 1; ///< what the result is divided by or divides: bytes, or operations
    enum Unit { GigabytesPerSecond, Nanoseconds } unit = GigabytesPerSecond;
    std::vector<Contender> contenders;
    double goal = 0; ///< least ratio to the (best of the) peers wanted; 0: none stated
    int rounds = 9;
    double leastRate = 0; ///< least GB/s wanted; 0: none stated
};

/// `work` so many times, as one piece of work.
template <class Work>
std::function<void()> Repeat(std::size_t turns, Work work) {
    return [=] {
        for (std::size_t i = 0; i < turns; ++i) {
            work();
            benchmark::ClobberMemory();
        }
    };
}

class Contests {
public:
    void Add(Contest contest) { m_contests.push_back(std::move(contest)); }

    int Run(int argc, char** argv) {
        benchmark::Initialize(&argc, argv);
        for (Contest& contest : m_contests)
            benchmark::RegisterBenchmark(contest.name.c_str(),
                                         [&contest](benchmark::State& state) {
                                             for (auto _ : state)
                                                 Round(contest);
                                         })
                ->Iterations(contest.rounds)
                ->Unit(benchmark::kMillisecond);
        benchmark::RunSpecifiedBenchmarks();
        std::printf("\n");
        for (Contest& contest : m_contests)
            Print(contest);
        const char* const table = std::getenv("VNBYTSTR_BENCH_TABLE");
        return table == nullptr || Append(table) ? 0 : 1;
    }

private:
    /// All contenders once, in turn from the first and from the last on: who comes after a release of
    /// much memory may pay for getting it again.
    static void Round(Contest& contest) {
        const std::size_t count = contest.contenders.size();
        const bool isBackwards = contest.contenders.front().seconds.size() % 2 != 0;
        for (std::size_t i = 0; i < count; ++i) {
            Contender& contender = contest.contenders[isBackwards ? count - 1 - i : i];
            if (contender.prepare)
                contender.prepare();
            const double processor = ProcessorSeconds();
            const auto start = std::chrono::steady_clock::now();
            contender.work();
            const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
            contender.seconds.push_back(taken.count());
            contender.processorSeconds.push_back(ProcessorSeconds() - processor);
        }
    }

    static double ProcessorSeconds() {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
    }

    static double Median(std::vector<double> values) {
        std::sort(values.begin(), values.end());
        return values.empty() ? 0 : values[values.size() / 2];
    }

    static const char* UnitOf(const Contest& contest) {
        return contest.unit == Contest::GigabytesPerSecond ? "GB/s" : "ns";
    }

    static double Value(const Contest& contest, double seconds) {
        return contest.unit == Contest::GigabytesPerSecond ? contest.amount / seconds / 1e9
                                                           : seconds * 1e9 / contest.amount;
    }

    bool Append(const char* file) const {
        std::ofstream table(file, std::ios::app);
        for (const Contest& contest : m_contests) {
            if (contest.contenders.front().seconds.empty())
                continue; // filtered out
            table << contest.name << '\t' << UnitOf(contest) << '\t' << contest.goal << '\t'
                  << contest.leastRate;
            for (const Contender& contender : contest.contenders)
                table << '\t' << contender.name << '\t' << Value(contest, Median(contender.seconds))
                      << '\t' << Value(contest, Median(contender.processorSeconds));
            table << '\n';
        }
        table.flush();
        if (!table)
            std::fprintf(stderr, "%s could not be written\n", file);
        return static_cast<bool>(table);
    }

    static void Print(const Contest& contest) {
        if (contest.contenders.front().seconds.empty())
            return; // filtered out
        std::printf("%-34s", contest.name.c_str());
        double ours = 0, best = 0;
        for (const Contender& contender : contest.contenders) {
            const double seconds = Median(contender.seconds);
            std::printf("  %s %.3g", contender.name.c_str(), Value(contest, seconds));
            if (&contender == &contest.contenders.front())
                ours = seconds;
            else if (best == 0 || seconds < best)
                best = seconds;
        }
        std::printf(" %s", UnitOf(contest));
        if (best > 0)
            std::printf("  ratio %.2f", best / ours);
        if (contest.goal > 0)
            std::printf(" (goal %.2f)", contest.goal);
        if (contest.leastRate > 0)
            std::printf(" (goal %.2f GB/s)", contest.leastRate);
        std::printf("\n");
    }

    std::vector<Contest> m_contests;
};

} // namespace vnbytstr::bench
