// Which statements only read: what is run on an unknown server would be run on each known one, and
// what is taken apart gives the same statement again. Formatting keeps the tokens, and once is enough.
#include "examples/vnquery/result/AsciiUpper.h"
#include "examples/vnquery/sources/OneTableQuery.h"
#include "examples/vnquery/sources/QueryGuard.h"
#include "examples/vnquery/sources/SqlFormat.h"
#include "fuzz/FuzzInput.h"

using namespace vnbytstr;
using fuzz::Require;
using namespace vnquery;

namespace {

void CheckFormat(const std::string& sql, SqlServer server) {
    const std::string once = FormatSql(sql, server);
    Require(FormatSql(once, server) == once);
    const std::vector<SqlToken> before = LexSql(sql, server);
    const std::vector<SqlToken> after = LexSql(once, server);
    Require(before.size() == after.size());
    for (std::size_t at = 0; at < before.size(); ++at) {
        const bool isWord = before[at].kind == SqlTokenKind::Word;
        Require(before[at].kind == after[at].kind);
        Require(isWord ? ToUpper(before[at].In(sql)) == ToUpper(after[at].In(once))
                       : before[at].In(sql) == after[at].In(once));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string sql(data, data + size);
    if (!FindRefusal(sql, SqlServer::Other)) {
        Require(!FindRefusal(sql, SqlServer::PostgreSql));
        Require(!FindRefusal(sql, SqlServer::MySql));
    }
    for (const SqlServer server : {SqlServer::Sqlite, SqlServer::PostgreSql, SqlServer::MySql})
        CheckFormat(sql, server);
    const std::string name = QuoteName(sql);
    Require(name.size() >= size + 2 && name.front() == '"' && name.back() == '"');

    const std::string words = NormaliseSql(sql);
    Require(words.size() <= 2 * size + 1);
    if (const auto query = ParseOneTableQuery(sql)) {
        Require(!query->table.empty());
        const std::string again = NormaliseSql(query->select + "\n" + query->from);
        Require(words.compare(0, again.size(), again) == 0);
        Require(words.find_first_not_of(" ;", again.size()) == std::string::npos);
    }
    return 0;
}
