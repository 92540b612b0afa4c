// Values of the current row of an ODBC statement, in pieces.
#pragma once

#include "vnquery/result/RowSource.h"
#include "vnquery/sources/Odbc.h"

#include <string>
#include <vector>

namespace vnquery {

class OdbcReader {
public:
    explicit OdbcReader(SQLHANDLE statement) : m_statement(statement), m_buffer(kPieceSize) {}

    /// The values' type in a column of that SQL type; dates, times and what only the driver knows
    /// come as text.
    static Value::Type TypeOf(int sqlType);
    /// Reads a column's value; columns in their order, from 0. Throws Failure and Interrupted.
    void Read(std::size_t column, const std::string& name, Value::Type type, ValueSink& sink);

private:
    /// A piece of a value in the buffer.
    struct Piece {
        std::size_t bytes = 0;
        bool isLast = false;
        bool isNull = false;
        SQLLEN remaining =
            SQL_NO_TOTAL; ///< bytes still to come with this piece, when the driver knows
    };
    Piece ReadPiece(std::size_t column, const std::string& name, SQLSMALLINT type,
                    std::size_t terminator);
    void ReadBinary(std::size_t column, const std::string& name, ValueSink& sink);
    void ReadText(std::size_t column, const std::string& name, Value::Type type, ValueSink& sink);

    SQLHANDLE m_statement;
    std::vector<BYTE> m_buffer;
};

} // namespace vnquery
