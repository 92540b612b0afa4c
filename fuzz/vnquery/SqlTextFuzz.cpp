// Which statements only read: what is run on an unknown server would be run on each known one, and
// what is taken apart gives the same statement again.
#include "examples/vnquery/sources/OneTableQuery.h"
#include "examples/vnquery/sources/QueryGuard.h"
#include "fuzz/FuzzInput.h"

using namespace vnbytstr;
using fuzz::Require;
using namespace vnquery;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string sql(data, data + size);
    if (!FindRefusal(sql, SqlServer::Other)) {
        Require(!FindRefusal(sql, SqlServer::PostgreSql));
        Require(!FindRefusal(sql, SqlServer::MySql));
    }
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
