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

    /// The type of the values in a column of that SQL type. Dates, times and types that only the
    /// driver knows come as text.
    static Value::Type TypeOf(int sqlType);
    /// Reads a value and returns how many bytes the driver gave; columns count from 0. Throws
    /// Failure and Interrupted.
    ULONGLONG Read(std::size_t column, const std::string& name, Value::Type type, ValueSink& sink);

private:
    /// A piece of a value, in m_buffer.
    struct Piece {
        std::size_t bytes = 0;
        bool isLast = false;
        bool isNull = false;
        /// Bytes of this piece and those still to come, if the driver knows.
        SQLLEN remaining = SQL_NO_TOTAL;
    };
    Piece ReadPiece(std::size_t column, const std::string& name, SQLSMALLINT type,
                    std::size_t terminator);
    ULONGLONG ReadBinary(std::size_t column, const std::string& name, ValueSink& sink);
    ULONGLONG ReadText(std::size_t column, const std::string& name, Value::Type type,
                       ValueSink& sink);

    SQLHANDLE m_statement;
    std::vector<BYTE> m_buffer;
};

} // namespace vnquery
