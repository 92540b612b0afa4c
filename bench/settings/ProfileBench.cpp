// Reading a setting, which is done for every page of a store, against a bare hash table lookup; and
// saving many settings one by one and together.
#include "bench/Rounds.h"
#include "vnbytstr/Profile.h"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <unordered_map>

using vnbytstr::bench::Contest;
using vnbytstr::bench::Contests;

int main(int argc, char** argv) {
    const std::string folder =
        (std::filesystem::temp_directory_path() / "vnbytstr-bench-profile").string();
    std::filesystem::remove_all(folder);
    ::setenv("VNBYTSTR_PROFILE", (folder + "/profile.ini").c_str(), 1);
    VNWriteProfileDWORD(3, "Options", "MaxCachePages", 64);
    const std::unordered_map<std::string, std::string> table = {{"3/Options/MaxCachePages", "64"}};

    constexpr int kReads = 200000;
    Contests contests;
    contests.Add({"read a number",
                  kReads,
                  Contest::Nanoseconds,
                  {{"ours",
                    [] {
                        for (int i = 0; i < kReads; ++i)
                            benchmark::DoNotOptimize(
                                VNGetProfileDWORD(3, "Options", "MaxCachePages", 64, 0));
                    }},
                   {"hash table", [&] {
                        for (int i = 0; i < kReads; ++i)
                            benchmark::DoNotOptimize(
                                std::atoi(table.find("3/Options/MaxCachePages")->second.c_str()));
                    }}}});
    constexpr int kValues = 40;
    int round = 0;
    const auto name = [](int i) { return "VALUE" + std::to_string(i); };
    contests.Add(
        {"save 40 numbers",
         kValues,
         Contest::Nanoseconds,
         {{"together",
           [&] {
               CProfileBatch batch;
               ++round;
               for (int i = 0; i < kValues; ++i)
                   batch.WriteDWORD(3, "Batch", name(i).c_str(), static_cast<DWORD>(round));
               batch.Commit();
           }},
          {"one by one", [&] {
               ++round;
               for (int i = 0; i < kValues; ++i)
                   VNWriteProfileDWORD(3, "Batch", name(i).c_str(), static_cast<DWORD>(round));
           }}}});
    const int result = contests.Run(argc, argv);
    std::filesystem::remove_all(folder);
    return result;
}
