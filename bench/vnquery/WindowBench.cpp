// What vnquery's window takes for a large result: how soon rows are there, how long it does not
// answer at the longest, and how much memory it needs. Prints figures, no ratios.
//
//   bench_vnquery_window [ROWS]     by default 1,000,000

#include "vnquery/messages/Messages.h"
#include "vnquery/window/ConnectionPage.h"
#include "vnquery/window/MainWindow.h"
#include "vnquery/window/ResultView.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/window/ListBox.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <sqlite3.h>

#include <QApplication>

namespace {

using Clock = std::chrono::steady_clock;
using namespace vnquery;

double Milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

/// One of the process's figures in /proc, in megabytes; 0 where the system does not tell.
double Memory(const std::string& figure) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double kilobytes = 0;
        if (word == figure && status >> kilobytes)
            return kilobytes / 1024;
    }
    return 0;
}

void MakeTable(const std::string& file, const std::string& rows) {
    sqlite3* database = nullptr;
    const std::string sql =
        "create table t(id integer primary key, name text, city text, price real, note text, "
        "code blob);"
        "with recursive n(i) as (select 1 union all select i + 1 from n where i < " +
        rows + ") insert into t select i, 'customer number ' || (i * 7919 % " + rows +
        "), 'city ' || (i * 7919 % 5000), (i * 37 % 100000) / 100.0, 'ordered ' || (i % 17) || "
        "' pieces of item ' || (i * 31 % 9973) || ', delivered', "
        "x'000102030405060708090a0b0c0d0e0f' "
        "from n";
    if (sqlite3_open(file.c_str(), &database) != SQLITE_OK ||
        sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        std::fprintf(stderr, "the database could not be made: %s\n", sqlite3_errmsg(database));
        std::exit(1);
    }
    sqlite3_close(database);
}

class Measurement {
public:
    explicit Measurement(MainWindow& window) : m_window(window) {}

    /// Handles events while `isBusy`, with `scrolls` goes from place to place all the time, and
    /// prints how it went.
    template <class IsBusy>
    void Follow(const char* what, bool scrolls, IsBusy isBusy) {
        const Clock::time_point start = Clock::now();
        Clock::duration longest{};
        Clock::duration first{};
        ResultList& list = m_window.GetPage()->GetResult().GetList();
        while (isBusy()) {
            const Clock::time_point begin = Clock::now();
            if (first == Clock::duration() && list.GetCount() > 0)
                first = begin - start;
            if (scrolls && list.GetCount() > 0) {
                m_row = (m_row + 7919) % list.GetCount();
                list.SendMessage(LB_SETTOPINDEX, static_cast<WPARAM>(m_row));
            }
            QCoreApplication::processEvents(scrolls ? QEventLoop::AllEvents
                                                    : QEventLoop::WaitForMoreEvents);
            longest = std::max(longest, Clock::now() - begin);
        }
        std::printf("%-28s %9.0f ms, longest pause %5.1f ms, memory %6.1f MB (peak %6.1f MB)", what,
                    Milliseconds(Clock::now() - start), Milliseconds(longest), Memory("VmRSS:"),
                    Memory("VmHWM:"));
        if (first != Clock::duration())
            std::printf(", first rows after %.0f ms", Milliseconds(first));
        std::printf("\n");
    }

private:
    MainWindow& m_window;
    int m_row = 0;
};

} // namespace

int main(int argc, char** argv) {
    setenv("VNBYTSTR_CODEPAGE", "65001", 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    setenv("VNBYTSTR_PROFILE", "/dev/null", 0);
    const std::string rows = argc > 1 ? argv[1] : "1000000";
    const auto folder = std::filesystem::temp_directory_path() / "vnbytstr-bench-window";
    std::filesystem::create_directories(folder);
    const std::string file = (folder / "bench.sqlite").string();
    std::filesystem::remove(file);
    MakeTable(file, rows);
    const QApplication application(argc, argv);
    GetGlobals().Initialize();
    LoadTexts();
    {
        const Clock::time_point start = Clock::now();
        MainWindow window;
        window.show();
        QCoreApplication::processEvents();
        Measurement measurement(window);
        std::printf("%-28s %9.0f ms, memory %6.1f MB\n", "empty window",
                    Milliseconds(Clock::now() - start), Memory("VmRSS:"));
        if (!window.OpenConnection({file, ""}))
            return 1;
        ConnectionPage& page = *window.GetPage();
        ResultList& list = page.GetResult().GetList();
        for (const bool scrolls : {false, true}) {
            page.RunSql("select * from t");
            measurement.Follow(scrolls ? "loaded, scrolling" : "loaded", scrolls,
                               [&] { return page.IsBusy(); });
        }
        int column = 0;
        for (const char* name : {"id", "name", "city", "price", "note", "code"}) {
            for (const char* order : {"", " again"}) {
                list.Sort(ResultList::ListColumnOf(column));
                measurement.Follow((std::string("sorted by ") + name + order).c_str(), true,
                                   [&] { return page.IsBusy(); });
            }
            ++column;
        }
        for (int i = 0; i < 200; ++i)
            QCoreApplication::processEvents();
        int rounds = 500;
        measurement.Follow("500 pages", true, [&] { return rounds-- > 0; });
    }
    std::filesystem::remove_all(folder);
    return 0;
}
