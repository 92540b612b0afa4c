// Which words may stand where the user types.
#pragma once

#include "vnquery/sources/Catalog.h"

#include <map>
#include <memory>

namespace vnquery {

/// Completes SQL text with the names of a catalog. It takes a few milliseconds with 10,000 tables.
class SqlCompletion {
public:
    /// Without a catalog only key words are known.
    explicit SqlCompletion(std::shared_ptr<const Catalog> catalog = nullptr);

    struct Answer {
        std::size_t begin = 0; ///< of the word that is typed, in bytes; `at` when there is none yet
        std::vector<std::string> words; ///< that begin with it, in quotes where they need them
        bool isAfterPoint = false;      ///< they are names of one table or schema
    };
    /// `at` is the cursor, in bytes. After "name." these are the columns of that table (which an
    /// alias may stand for) or the tables of that schema; elsewhere columns of the tables that the
    /// statement names, tables, schemas and key words. Nothing within strings and comments. At most
    /// kMost words.
    Answer Find(std::string_view sql, std::size_t at) const;

    static constexpr std::size_t kMost = 500;

private:
    using Tables = std::vector<const CatalogTable*>;

    SqlServer Server() const { return m_catalog ? m_catalog->server : SqlServer::Other; }
    /// The tables that the tokens name, under their names and aliases in upper case.
    std::map<std::string, Tables> NamedTables(std::string_view sql,
                                              std::span<const SqlToken> tokens) const;

    std::shared_ptr<const Catalog> m_catalog;
    std::map<std::string, Tables> m_byName;   ///< in upper case
    std::map<std::string, Tables> m_bySchema; ///< in upper case
};

} // namespace vnquery
