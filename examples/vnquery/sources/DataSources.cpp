#include "vnquery/sources/DataSources.h"

#include "vnquery/sources/OdbcConnection.h"
#include "vnquery/sources/OdbcText.h"
#include "vnquery/tasks/Failure.h"

namespace vnquery {

namespace {

constexpr SQLSMALLINT kMaxName = 512;

/// What `next` of the driver manager lists: it has the parameters of SQLDataSources.
template <class Next>
std::vector<std::string> ListNames(Next next) try {
    std::vector<std::string> names;
    const OdbcHandle environment(SQL_HANDLE_ENV, SQL_NULL_HANDLE);
    SQLWCHAR name[kMaxName] = {};
    SQLSMALLINT length = 0;
    SQLUSMALLINT direction = SQL_FETCH_FIRST;
    while (SQL_SUCCEEDED(
        next(environment.Get(), direction, name, kMaxName, &length, nullptr, 0, nullptr))) {
        names.push_back(FromBuffer(name, length));
        direction = SQL_FETCH_NEXT;
    }
    return names;
} catch (const Failure&) {
    return {};
}

} // namespace

std::vector<std::string> ListDataSources() { return ListNames(SQLDataSourcesW); }
std::vector<std::string> ListDrivers() { return ListNames(SQLDriversW); }

} // namespace vnquery
