// Loading a string from the resource libraries, against a bare hash table of strings that are in
// the program already.
#include "bench/Rounds.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/Messages.h"
#include "vnbytstr/ResourceLibrary.h"
#include "vnbytstr/framework/Module.h"

#include <cstdlib>
#include <string>
#include <unordered_map>

using vnbytstr::bench::Contest;
using vnbytstr::bench::Contests;

int main(int argc, char** argv) {
    constexpr UINT kId = 34588;
    constexpr int kLoads = 200000;
    ::setenv("VNBYTSTR_PROFILE", "/nonexistent/profile.ini", 1);
    ::setenv("LC_ALL", "de_DE.UTF-8", 1);
    const HINSTANCE german = LoadResourceDLL("vnurc");
    CString text;
    if (german == nullptr || LoadStringA(text, kId, nullptr) == 0) {
        std::fprintf(stderr, "the resource libraries are not beside this program\n");
        return 1;
    }
    const std::unordered_map<UINT, CString> table = {{kId, text}};
    const auto ours = [](HINSTANCE resources) {
        return [resources] {
            AfxSetResourceHandle(resources);
            CString loaded;
            for (int i = 0; i < kLoads; ++i)
                benchmark::DoNotOptimize(LoadStringA(loaded, kId, nullptr));
        };
    };
    const auto peer = [&] {
        CString loaded;
        for (int i = 0; i < kLoads; ++i) {
            loaded = table.find(kId)->second;
            benchmark::DoNotOptimize(loaded);
        }
    };
    Contests contests;
    contests.Add({"LoadStringA, current library",
                  kLoads,
                  Contest::Nanoseconds,
                  {{"ours", ours(german)}, {"hash table", peer}}});
    contests.Add({"LoadStringA, English library",
                  kLoads,
                  Contest::Nanoseconds,
                  {{"ours", ours(nullptr)}, {"hash table", peer}}});
    contests.Add({"FormatStringEx, two texts",
                  kLoads,
                  Contest::Nanoseconds,
                  {{"ours",
                    [] {
                        CString out;
                        for (int i = 0; i < kLoads; ++i)
                            benchmark::DoNotOptimize(
                                FormatStringEx(out, "%2 of %1 could not be read", "film.db", "3"));
                    }},
                   {"snprintf", [] {
                        char out[100];
                        for (int i = 0; i < kLoads; ++i) {
                            std::snprintf(out, sizeof out, "%s of %s could not be read", "3",
                                          "film.db");
                            benchmark::DoNotOptimize(out);
                        }
                    }}}});
    return contests.Run(argc, argv);
}
