// vnquery's main job in its own process: SQLite's rows to a file, and to the rows of a result.
//
// The peer steps through the same query and writes the same bytes with plain buffered output.

#include "bench/Rounds.h"

#include "vnbytstr/Ccsid.h"
#include "vnquery/files/FileExport.h"
#include "vnquery/result/ResultSet.h"
#include "vnquery/sources/Connection.h"
#include "vnquery/tasks/Progress.h"

#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <sqlite3.h>

namespace {

using namespace vnquery;
using vnbytstr::bench::Contest;
using vnbytstr::bench::Contests;

constexpr int kRows = 300'000;
constexpr char kQuery[] = "select * from t";

class NoProgress : public Progress {
public:
    void AddRow() override {}
    void AddBytes(std::uint64_t) override {}
};

[[noreturn]] void Fail(const std::string& what) {
    std::fprintf(stderr, "bench_query: %s\n", what.c_str());
    std::exit(1);
}

/// A folder for the database and the exports, removed in the end.
class Folder {
public:
    Folder() : m_path(std::filesystem::temp_directory_path() / "vnbytstr-bench-query") {
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directories(m_path);
    }
    ~Folder() { std::filesystem::remove_all(m_path); }
    std::string File(const char* name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

struct CloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;

Database Open(const std::string& file) {
    sqlite3* database = nullptr;
    if (sqlite3_open(file.c_str(), &database) != SQLITE_OK)
        Fail("cannot open " + file);
    return Database(database);
}

void MakeTable(const std::string& file) {
    const Database database = Open(file);
    const std::string sql =
        "create table t(id integer primary key, name text, city text, price real, note text, "
        "size integer);"
        "with recursive n(i) as (select 1 union all select i + 1 from n where i < " +
        std::to_string(kRows) +
        ") insert into t select i, 'customer number ' || i, 'city ' || (i * 7919 % 5000), "
        "(i * 37 % 100000) / 100.0, 'ordered ' || (i % 17) || ' pieces of item ' || "
        "(i * 31 % 9973) || ', delivered', i * 7 from n";
    if (sqlite3_exec(database.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        Fail(sqlite3_errmsg(database.get()));
}

// --- the peer ------------------------------------------------------------------------------------

template <class TakeRow>
void Step(const std::string& file, TakeRow takeRow) {
    const Database database = Open(file);
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database.get(), kQuery, -1, &statement, nullptr);
    while (sqlite3_step(statement) == SQLITE_ROW)
        takeRow(statement);
    sqlite3_finalize(statement);
}

std::string_view TextOf(sqlite3_stmt* statement, int column, std::span<char> digits) {
    char* const end = digits.data() + digits.size();
    switch (sqlite3_column_type(statement, column)) {
    case SQLITE_INTEGER:
        return {digits.data(),
                std::to_chars(digits.data(), end, sqlite3_column_int64(statement, column)).ptr};
    case SQLITE_FLOAT: {
        char* last =
            std::to_chars(digits.data(), end, sqlite3_column_double(statement, column)).ptr;
        if (std::find(digits.data(), last, '.') == last)
            last = std::copy_n(".0", 2, last);
        return {digits.data(), last};
    }
    default:
        return {reinterpret_cast<const char*>(sqlite3_column_text(statement, column)),
                static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
    }
}

/// `ccsid` 0 for UTF-8; lines filled to `record` bytes unless that is 0.
void ExportPlainly(const std::string& file, const std::string& to, WORD ccsid, std::size_t record) {
    std::FILE* const out = std::fopen(to.c_str(), "wb");
    std::vector<char> buffer(1 << 18);
    std::setvbuf(out, buffer.data(), _IOFBF, buffer.size());
    BYTE table[256];
    for (unsigned i = 0; ccsid != 0 && i < 128; ++i) { // the texts are ASCII
        const auto byte = static_cast<BYTE>(i);
        DWORD length = 1;
        TranslateCCSID(1208, ccsid, &byte, 1, &table[i], &length);
    }
    std::string line;
    Step(file, [&](sqlite3_stmt* statement) {
        line.clear();
        char digits[40];
        for (int column = 0; column < 6; ++column) {
            if (column > 0)
                line += '\t';
            for (const char ch : TextOf(statement, column, digits)) {
                if (ch == '\t' || ch == '\n' || ch == '\r' || ch == '\\' || ch == '\0')
                    line += '\\';
                line += ch;
            }
        }
        if (record > 0)
            line.resize((line.size() + record - 1) / record * record, ' ');
        line += '\n';
        if (ccsid != 0)
            for (char& ch : line)
                ch = static_cast<char>(table[static_cast<unsigned char>(ch) & 127]);
        std::fwrite(line.data(), 1, line.size(), out);
    });
    std::fclose(out);
}

// --- ours ----------------------------------------------------------------------------------------

void ExportOurs(const std::string& file, const std::string& to, const ExportFormat& format) {
    NoProgress progress;
    const auto source = OpenSource({file, ""}, kQuery, SourceUse::ReadOnly);
    FileExport target(to, format, source->GetColumns());
    ReadRows(*source, target.GetWriter(), progress);
    target.Commit();
}

std::string Content(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void AddExport(Contests& contests, const Folder& folder, const char* name, WORD ccsid, int record) {
    const std::string database = folder.File("bench.sqlite");
    const std::string ours = folder.File("ours");
    const std::string plain = folder.File("plain");
    ExportFormat format;
    format.ccsid = ccsid;
    format.recordLength = record;
    const auto peer = [=] {
        ExportPlainly(database, plain, ccsid, static_cast<std::size_t>(record));
    };
    ExportOurs(database, ours, format);
    peer();
    if (Content(ours) != Content(plain))
        Fail(std::string(name) + ": the two wrote different bytes");
    contests.Add(
        {name,
         kRows,
         Contest::Nanoseconds,
         {{"ours", [=] { ExportOurs(database, ours, format); }}, {"stepping and fwrite", peer}}});
}

void AddLoad(Contests& contests, const Folder& folder) {
    const std::string database = folder.File("bench.sqlite");
    contests.Add({"rows of a result, a row",
                  kRows,
                  Contest::Nanoseconds,
                  {{"ours",
                    [=] {
                        NoProgress progress;
                        const auto source = OpenSource({database, ""}, kQuery, SourceUse::Editing);
                        ResultSet result(*source);
                        result.Fetch(*source, progress);
                        if (result.GetRowCount() != kRows)
                            Fail("rows are missing");
                    }},
                   {"stepping",
                    [=] {
                        ULONGLONG bytes = 0;
                        Step(database, [&](sqlite3_stmt* statement) {
                            char digits[40];
                            for (int column = 0; column < 6; ++column)
                                bytes += TextOf(statement, column, digits).size();
                        });
                        benchmark::DoNotOptimize(bytes);
                    }}},
                  0.67});
}

} // namespace

int main(int argc, char** argv) {
    setenv("VNBYTSTR_CODEPAGE", "65001", 1);
    const Folder folder;
    MakeTable(folder.File("bench.sqlite"));
    Contests contests;
    AddExport(contests, folder, "export, UTF-8, a row", 0, 0);
    AddExport(contests, folder, "export, CCSID 37, records, a row", 37, 80);
    AddLoad(contests, folder);
    return contests.Run(argc, argv);
}
