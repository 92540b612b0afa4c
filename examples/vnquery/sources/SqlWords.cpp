#include "vnquery/sources/SqlWords.h"

#include <algorithm>
#include <array>

namespace vnquery {

namespace {

constexpr auto kWords = std::to_array<std::string_view>(
    {"ADD",        "ALL",          "ALTER",        "ANALYZE",      "AND",
     "ANY",        "AS",           "ASC",          "BEGIN",        "BETWEEN",
     "BY",         "CASCADE",      "CASE",         "CAST",         "CHECK",
     "COLLATE",    "COLUMN",       "COMMIT",       "CONFLICT",     "CONSTRAINT",
     "CREATE",     "CROSS",        "CURRENT_DATE", "CURRENT_TIME", "CURRENT_TIMESTAMP",
     "DATABASE",   "DEFAULT",      "DELETE",       "DESC",         "DISTINCT",
     "DROP",       "ELSE",         "END",          "EXCEPT",       "EXISTS",
     "EXPLAIN",    "FALSE",        "FETCH",        "FOR",          "FOREIGN",
     "FROM",       "FULL",         "FUNCTION",     "GRANT",        "GROUP",
     "HAVING",     "IF",           "ILIKE",        "IN",           "INDEX",
     "INNER",      "INSERT",       "INTERSECT",    "INTO",         "IS",
     "JOIN",       "KEY",          "LATERAL",      "LEFT",         "LIKE",
     "LIMIT",      "MATERIALIZED", "NATURAL",      "NOT",          "NULL",
     "OFFSET",     "ON",           "OR",           "ORDER",        "OUTER",
     "OVER",       "PARTITION",    "PRIMARY",      "PROCEDURE",    "RECURSIVE",
     "REFERENCES", "RENAME",       "REPLACE",      "RETURNING",    "REVOKE",
     "RIGHT",      "ROLLBACK",     "ROW",          "SAVEPOINT",    "SCHEMA",
     "SELECT",     "SEQUENCE",     "SET",          "SHOW",         "TABLE",
     "TEMPORARY",  "THEN",         "TO",           "TRANSACTION",  "TRIGGER",
     "TRUE",       "TRUNCATE",     "UNION",        "UNIQUE",       "UPDATE",
     "USING",      "VALUES",       "VIEW",         "WHEN",         "WHERE",
     "WINDOW",     "WITH"});
static_assert(std::ranges::is_sorted(kWords));

} // namespace

std::span<const std::string_view> SqlWords() { return kWords; }

bool IsSqlWord(std::string_view upper) { return std::ranges::binary_search(kWords, upper); }

} // namespace vnquery
