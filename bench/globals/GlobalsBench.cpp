// The table of global variables: adding many, finding one by name.
#include "bench/Rounds.h"
#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Profile.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

using vnbytstr::bench::Contest;
using vnbytstr::bench::Contests;

namespace {

void Fill(CGlobalVars& table, const std::vector<std::string>& names) {
    table.Initialize();
    int added = 0;
    const CString value("value");
    for (const std::string& name : names) {
        const CString text(name.c_str());
        table.AddGlobalVariable(&text, &value, added);
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::string folder =
        (std::filesystem::temp_directory_path() / "vnbytstr-bench-globals").string();
    ::setenv("VNBYTSTR_PROFILE", (folder + "/profile.ini").c_str(), 1);
    constexpr std::size_t kMany = 100'000;
    std::vector<std::string> names(kMany);
    std::unordered_map<std::string, CString> peer;
    for (std::size_t i = 0; i < kMany; ++i) {
        names[i] = "VARIABLE_" + std::to_string(i);
        peer[names[i]] = "value";
    }
    const std::vector<std::string> tenth(names.begin(), names.begin() + kMany / 10);
    // One behind the other, as a caller has the name at hand that it asks for.
    struct Name {
        char text[16];
    };
    std::vector<Name> asked(kMany);
    std::mt19937 random(1);
    for (Name& name : asked)
        std::snprintf(name.text, sizeof name.text, "%s", names[random() % kMany].c_str());
    CGlobalVars& table = GetGlobals();
    Fill(table, names);

    Contests contests;
    contests.Add({"find one of 100,000 by name",
                  kMany,
                  Contest::Nanoseconds,
                  {{"ours",
                    [&] {
                        for (const Name& name : asked)
                            benchmark::DoNotOptimize(CGlobalVars::Get(name.text).GetLength());
                    }},
                   {"exact names in a hash table", [&] {
                        for (const Name& name : asked)
                            benchmark::DoNotOptimize(peer.find(name.text)->second.GetLength());
                    }}}});
    const auto add = [](const std::vector<std::string>& some) {
        return [&some] {
            CGlobalVars fresh;
            Fill(fresh, some);
        };
    };
    contests.Add({"add 10,000", kMany / 10, Contest::Nanoseconds, {{"ours", add(tenth)}}});
    contests.Add({"add 100,000", kMany, Contest::Nanoseconds, {{"ours", add(names)}}});
    contests.Add({"save 100,000",
                  kMany,
                  Contest::Nanoseconds,
                  {{"ours", [&] { table.SaveToRegistry(); }}},
                  0,
                  3});
    VNWriteProfileDWORD(3, "Options", "SaveGlobals", 1);
    const int result = contests.Run(argc, argv);
    std::filesystem::remove_all(folder);
    return result;
}
