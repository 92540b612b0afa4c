#include "vnquery/sources/DataSources.h"

#include "vnquery/sources/OdbcConnection.h"
#include "vnquery/sources/OdbcText.h"
#include "vnquery/tasks/Failure.h"

#include <iterator>

namespace vnquery {

std::vector<std::string> ListDataSources() try {
    std::vector<std::string> sources;
    const OdbcHandle environment(SQL_HANDLE_ENV, SQL_NULL_HANDLE);
    SQLWCHAR name[SQL_MAX_DSN_LENGTH + 1] = {};
    SQLSMALLINT length = 0;
    SQLUSMALLINT direction = SQL_FETCH_FIRST;
    while (SQL_SUCCEEDED(SQLDataSourcesW(environment.Get(), direction, name, std::size(name),
                                         &length, nullptr, 0, nullptr))) {
        sources.push_back(FromWide(name, static_cast<std::size_t>(length)));
        direction = SQL_FETCH_NEXT;
    }
    return sources;
} catch (const Failure&) {
    return {};
}

} // namespace vnquery
