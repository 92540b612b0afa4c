// Saving values, exporting results, translating files.
#include "tests/vnquery/ProgramRun.h"

namespace vnquery::test {
namespace {

using namespace std::string_literals;
using Files = ProgramTest;

TEST_F(Files, ValuesAreSavedByteForByte) {
    for (const std::size_t size : {0u, 1u, 1024u, 1025u, 65536u, 262144u, 262145u, 5000001u}) {
        std::remove(Database().c_str());
        const std::string bytes = SomeBytes(size, static_cast<unsigned>(size));
        MakeDatabase("blob", bytes, false);
        // The first save copies, the last one moves.
        const RunResult run = Query(
            "select v from t", {"--quiet", "--save", "1:1", File("a"), "--save", "1:1", File("b")});
        EXPECT_EQ(run.code, 0) << run.error;
        EXPECT_TRUE(m_files.Read("a") == bytes) << size;
        EXPECT_TRUE(m_files.Read("b") == bytes) << size;
        EXPECT_EQ(run.out + run.error, "");
    }
}

TEST_F(Files, SavingReplacesAFileAndFollowsALink) {
    MakeDatabase("text", "new", true);
    m_files.Write("old", "something longer");
    std::filesystem::create_symlink(File("old"), File("link"));
    EXPECT_EQ(Query("select v from t", {"--save", "1:1", File("link"), "--ccsid", "1208"}).code, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(File("link")));
    EXPECT_EQ(m_files.Read("old"), "new");
}

TEST_F(Files, TextIsSavedInACodedCharacterSet) {
    std::string text;
    while (text.size() < 400000) // into the swap file, and characters across every edge
        text += "Stra\xC3\x9F"
                "e und \xC3\x9C"
                "bung <&>\n";
    MakeDatabase("text", text, true);
    EXPECT_EQ(Query("select v from t", {"--save", "1:1", File("a"), "--ccsid", "37"}).code, 0);
    EXPECT_TRUE(m_files.Read("a") == Convert(text, "UTF-8", "IBM037"));
    EXPECT_EQ(Run({"--translate", "37:1208", File("a"), File("b")}).code, 0);
    EXPECT_TRUE(m_files.Read("b") == text);
    EXPECT_TRUE(m_files.Read("a") == Convert(text, "UTF-8", "IBM037")) << "the input was changed";
    EXPECT_EQ(Run({"--translate", "37:1208", File("a"), File("a")}).code, 0);
    EXPECT_TRUE(m_files.Read("a") == text) << "in place";
}

TEST_F(Files, ExportWritesRowsAsLines) {
    MakeDatabase(
        "create table t(n, v);"
        "insert into t values (1, 'a<b & \"c\"'), (2, 'x' || char(9, 10, 13, 10, 92, 0) || 'y'),"
        "(3, null), (4, ''), (5, x'00ff'), (6, '\\N')");
    const auto exported = [&](std::vector<std::string> options) {
        options.insert(options.end(), {"--quiet", "--export", File("e")});
        EXPECT_EQ(Query("select n, v from t", options).code, 0);
        return m_files.Read("e");
    };
    EXPECT_EQ(exported({}), "1\ta<b & \"c\"\n2\tx\\t\\n\\r\\n\\\\\\0y\n3\t\\N\n4\t\n"
                            "5\t<BLOB 2 B>\n6\t\\\\N\n");
    EXPECT_EQ(exported({"--entities", "--line-ends", "records", "--line-break", "cr", "--headings",
                        "--blobs", "hex", "--null", "NULL", "--separator", "; "}),
              "n; v\r1; a&lt;b &amp; &quot;c&quot;\r2; x\t\r\r\\\0y\r3; NULL\r4; \r5; 00FF\r"
              "6; \\N\r"s);
    EXPECT_EQ(exported({"--line-ends", "space", "--line-break", "none", "--separator", "|"}),
              "1|a<b & \"c\"2|x\t  \\\0y3|-4|5|<BLOB 2 B>6|\\N"s);
    EXPECT_EQ(exported({"--separator", "<"}).substr(0, 14), "1<a\\<b & \"c\"\n2");
}

TEST_F(Files, RecordsAreFilledWithTheBlanksOfTheTarget) {
    MakeDatabase(
        "create table t(v); insert into t values ('abc'), ('1234567890'), (''), ('12345678901'),"
        "('a' || char(10) || 'b')");
    EXPECT_EQ(Query("select v from t",
                    {"--quiet", "--export", File("e"), "--ccsid", "37", "--record-length", "10",
                     "--line-break", "crlf", "--line-ends", "records"})
                  .code,
              0);
    const std::string expected = "abc       \r\n1234567890\r\n\r\n12345678901         \r\n"
                                 "a         \r\nb         \r\n";
    EXPECT_EQ(m_files.Read("e"), Convert(expected, "UTF-8", "IBM037"));
}

TEST_F(Files, LostCharactersAreReportedWithTheirPlace) {
    MakeDatabase(
        "create table t(n, v); insert into t values (1, 'abc'), (2, 'x\xE2\x82\xAC\xE6\x97\xA5')");
    const std::vector<std::string> options = {"--quiet", "--export", File("e"), "--ccsid", "37"};
    const RunResult run = Query("select n, v from t", options);
    EXPECT_EQ(run.code, 0);
    EXPECT_NE(
        run.error.find("2 characters that CCSID 37 does not hold; the first is byte 2 of row 2, "
                       "column 2"),
        std::string::npos)
        << run.error;
    std::remove(File("e").c_str());
    std::vector<std::string> strict = options;
    strict.push_back("--strict");
    const RunResult refused = Query("select n, v from t", strict);
    EXPECT_EQ(refused.code, 3);
    EXPECT_NE(refused.error.find("byte 2 of row 2, column 2"), std::string::npos) << refused.error;
    EXPECT_EQ(refused.error.find("Exported"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(File("e")));
}

TEST_F(Files, DesGoesThereAndBackForPeers) {
    const std::vector<std::string> key = {"--des-key", "133457799BBCDFF1"};
    const auto run = [&](const char* way, const char* in, const char* out,
                         std::vector<std::string> more) {
        std::vector<std::string> arguments = {"--des", way, File(in), File(out)};
        arguments.insert(arguments.end(), key.begin(), key.end());
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Run(arguments);
    };
    m_files.Write("block", "\x01\x23\x45\x67\x89\xAB\xCD\xEF");
    EXPECT_EQ(run("encrypt", "block", "e", {}).code, 0);
    EXPECT_EQ(m_files.Read("e"), "\x85\xE8\x13\x54\x0F\x0A\xB4\x05");
    m_files.Write("long", SomeBytes(3000000, 3));
    EXPECT_EQ(run("encrypt", "long", "e", {"--des-mode", "cbc"}).code, 0);
    EXPECT_EQ(run("decrypt", "e", "d", {"--des-mode", "cbc"}).code, 0);
    EXPECT_TRUE(m_files.Read("d") == m_files.Read("long"));
    m_files.Write("odd", "12345");
    EXPECT_EQ(run("encrypt", "odd", "e", {}).code, 2);
    EXPECT_EQ(run("encrypt", "odd", "e", {"--des-pad"}).code, 0);
    EXPECT_EQ(run("decrypt", "e", "d", {"--des-pad"}).code, 0);
    EXPECT_EQ(m_files.Read("d"), "12345");
    EXPECT_EQ(run("encrypt", "long", "e", {"--des-pad"}).code, 2); // too long to pad
    EXPECT_EQ(run("encrypt", "none", "e", {}).code, 3);
    EXPECT_EQ(run("both", "odd", "e", {}).code, 2);
}

} // namespace
} // namespace vnquery::test
