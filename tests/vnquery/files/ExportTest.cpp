// A result with values of every kind, exported in three forms and compared, byte for byte, with a
// writer that knows the rows and the forms, and nothing of the program.
#include "tests/vnquery/ProgramRun.h"

#include <cstdlib>
#include <functional>
#include <optional>

namespace vnquery::test {
namespace {

constexpr int kRows = 70'000;
constexpr int kLongEvery = 20'000; ///< rows from one with a long text to the next

/// What a database has to be told to give the rows.
constexpr char kSqlite[] =
    "with recursive n(i) as (select 1 union all select i + 1 from n where i < 70000)"
    "select i, i * 1000000007 - 500000000000000 as big, i + 0.5 as real,"
    " printf('%.2f', i / 4.0) as dec,"
    " case when i % 7 = 0 then null when i % 5 = 0 then ''"
    " when i % 20000 = 1 then replace(hex(zeroblob(20000)), '00', '\xC3\xA4<b>' || char(13, 10))"
    " else 'Gr\xC3\xBC\xC3\x9F\x65 ' || i || char(10) || 'a<b & \"c\"' || char(9, 92) || 'end' "
    "end as text,"
    " case when i % 3 = 0 then null else cast('b' || i as blob) end as bytes from n";
constexpr char kPostgres[] =
    "select i, i::bigint * 1000000007 - 500000000000000 as big,"
    " (i + 0.5)::double precision as real, (i / 4.0)::numeric(12, 2) as dec,"
    " case when i % 7 = 0 then null when i % 5 = 0 then ''"
    " when i % 20000 = 1 then repeat('\xC3\xA4<b>' || chr(13) || chr(10), 20000)"
    " else 'Gr\xC3\xBC\xC3\x9F\x65 ' || i || chr(10) || 'a<b & \"c\"' || chr(9) || chr(92) || 'end'"
    " end as text,"
    " case when i % 3 = 0 then null else convert_to('b' || i, 'UTF8') end as bytes"
    " from generate_series(1, 70000) i";

struct Row {
    std::string numbers[4];
    std::optional<std::string> text;
    std::optional<std::string> bytes;
};

Row RowOf(int i) {
    Row row;
    row.numbers[0] = std::to_string(i);
    row.numbers[1] = std::to_string(i * 1000000007LL - 500000000000000LL);
    row.numbers[2] = row.numbers[0] + ".5";
    constexpr const char* kQuarters[] = {".00", ".25", ".50", ".75"};
    row.numbers[3] = std::to_string(i / 4) + kQuarters[i % 4];
    if (i % 7 == 0) {
    } else if (i % 5 == 0) {
        row.text = "";
    } else if (i % kLongEvery == 1) {
        row.text.emplace();
        for (int n = 0; n < 20000; ++n)
            *row.text += "\xC3\xA4<b>\r\n";
    } else {
        row.text = "Gr\xC3\xBC\xC3\x9F"
                   "e " +
                   row.numbers[0] + "\na<b & \"c\"\t\\end";
    }
    if (i % 3 != 0)
        row.bytes = "b" + row.numbers[0];
    return row;
}

std::string Replace(const std::string& text,
                    const std::function<std::optional<std::string>(char)>& form) {
    std::string out;
    for (const char ch : text)
        out += form(ch).value_or(std::string(1, ch));
    return out;
}

std::string Joined(const Row& row, const std::string& separator, const std::string& text,
                   const std::string& bytes) {
    std::string line;
    for (const std::string& number : row.numbers)
        line += number + separator;
    return line + text + separator + bytes;
}

/// UTF-8, a line for each row, with escapes.
std::string Escaped() {
    std::string out;
    for (int i = 1; i <= kRows; ++i) {
        const Row row = RowOf(i);
        const auto escape = [](char ch) -> std::optional<std::string> {
            return ch == '\n'   ? std::optional<std::string>("\\n")
                   : ch == '\r' ? "\\r"
                   : ch == '\t' ? "\\t"
                   : ch == '\\' ? "\\\\"
                                : std::optional<std::string>();
        };
        out += Joined(row, "\t", row.text ? Replace(*row.text, escape) : "\\N",
                      row.bytes ? "<BLOB " + std::to_string(row.bytes->size()) + " B>" : "\\N") +
               "\r\n";
    }
    return out;
}

/// EBCDIC: records of 40 bytes (of the UTF-8 text), lines of texts as records.
std::string Records() {
    std::string out;
    for (int i = 1; i <= kRows; ++i) {
        const Row row = RowOf(i);
        std::string text = row.text.value_or("-");
        for (std::size_t at; (at = text.find("\r\n")) != std::string::npos;)
            text.replace(at, 2, "\n");
        std::string line;
        for (const char ch :
             Joined(row, "|", text,
                    row.bytes ? "<BLOB " + std::to_string(row.bytes->size()) + " B>" : "-") +
                 "\n") {
            if (ch != '\n') {
                line += ch;
                continue;
            }
            out += line + std::string((40 - line.size() % 40) % 40, ' ') + "\r\n";
            line.clear();
        }
    }
    return Convert(out, "UTF-8", "IBM037");
}

/// UTF-16, for markup: entities, headings, bytes in hexadecimal, other separators.
std::string Markup() {
    std::string out = "i; big; real; dec; text; bytes\r";
    for (int i = 1; i <= kRows; ++i) {
        const Row row = RowOf(i);
        const auto entity = [](char ch) -> std::optional<std::string> {
            return ch == '<'   ? std::optional<std::string>("&lt;")
                   : ch == '>' ? "&gt;"
                   : ch == '&' ? "&amp;"
                   : ch == '"' ? "&quot;"
                               : std::optional<std::string>();
        };
        std::string hex;
        for (const char ch : row.bytes.value_or("")) {
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(ch));
            hex += digits;
        }
        out += Joined(row, "; ", row.text ? Replace(*row.text, entity) : "NULL",
                      row.bytes ? hex : "NULL") +
               "\r";
    }
    return Convert(out, "UTF-8", "UTF-16BE");
}

class ExportTest : public ProgramTest {
protected:
    void Check(const std::vector<std::string>& connection) {
        const auto exported = [&](std::vector<std::string> arguments) {
            arguments.insert(arguments.begin(), connection.begin(), connection.end());
            arguments.insert(arguments.end(), {"--quiet", "--export", File("e")});
            const RunResult run = Run(arguments);
            EXPECT_EQ(run.code, 0) << run.error;
            return m_files.Read("e");
        };
        static const std::string escaped = Escaped();
        static const std::string records = Records();
        static const std::string markup = Markup();
        EXPECT_TRUE(exported({"--line-break", "crlf"}) == escaped);
        EXPECT_TRUE(exported({"--ccsid", "37", "--record-length", "40", "--line-break", "crlf",
                              "--line-ends", "records", "--separator", "|"}) == records);
        EXPECT_TRUE(exported({"--ccsid", "1200", "--entities", "--line-ends", "keep",
                              "--line-break", "cr", "--headings", "--blobs", "hex", "--null",
                              "NULL", "--separator", "; "}) == markup);
    }
};

TEST_F(ExportTest, EveryByteFromSqlite) {
    MakeDatabase("create table t(v)");
    Check({"--db", Database(), "--sql", kSqlite});
    // Out of a table, too, where long texts are read in pieces.
    MakeDatabase(std::string("create table e as ") + kSqlite);
    Check({"--db", Database(), "--sql", "select * from e"});
}

TEST_F(ExportTest, EveryByteFromPostgres) {
    const char* const source = std::getenv("VNQUERY_ODBC");
    if (!source)
        GTEST_SKIP() << "VNQUERY_ODBC is not set";
    Check({"--connect", source, "--sql", kPostgres});
}

} // namespace
} // namespace vnquery::test
