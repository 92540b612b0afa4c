// The tables of an SQLite file.
#pragma once

#include "vnquery/sources/Catalog.h"
#include "vnquery/sources/SqliteDatabase.h"

namespace vnquery {

/// See Catalog.h.
class SqliteCatalog {
public:
    explicit SqliteCatalog(const std::string& file)
        : m_database(file, SqliteDatabase::Access::Read) {}

    Catalog Read() const;
    void ReadColumns(std::span<CatalogTable> tables) const;
    void ReadTable(CatalogTable& table) const;
    std::string ReadDdl(const CatalogTable& table) const;

private:
    void ReadColumns(CatalogTable& table) const;
    template <class TakeRow>
    void ForEachRow(const char* sql, const std::string& name, TakeRow&& takeRow) const;

    SqliteDatabase m_database;
};

} // namespace vnquery
