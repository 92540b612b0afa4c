#include "vnquery/sources/OdbcReader.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/sources/OdbcConnection.h"
#include "vnquery/sources/OdbcText.h"
#include "vnquery/tasks/Failure.h"

namespace vnquery {

Value::Type OdbcReader::TypeOf(int sqlType) {
    switch (sqlType) {
    case SQL_BINARY:
    case SQL_VARBINARY:
    case SQL_LONGVARBINARY:
        return Value::Type::Binary;
    case SQL_DECIMAL:
    case SQL_NUMERIC:
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
    case SQL_BIGINT:
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE:
    case SQL_BIT:
        return Value::Type::Number;
    default:
        return Value::Type::Text;
    }
}

ULONGLONG OdbcReader::Read(std::size_t column, const std::string& name, Value::Type type,
                           ValueSink& sink) {
    return type == Value::Type::Binary ? ReadBinary(column, name, sink)
                                       : ReadText(column, name, type, sink);
}

OdbcReader::Piece OdbcReader::ReadPiece(std::size_t column, const std::string& name,
                                        SQLSMALLINT type, std::size_t terminator) {
    Piece piece;
    SQLLEN indicator = 0;
    const std::size_t room = m_buffer.size() - terminator;
    const SQLRETURN result =
        SQLGetData(m_statement, static_cast<SQLUSMALLINT>(column + 1), type, m_buffer.data(),
                   static_cast<SQLLEN>(m_buffer.size()), &indicator);
    if (result == SQL_NO_DATA) {
        piece.isLast = true;
        return piece;
    }
    if (!SQL_SUCCEEDED(result))
        OdbcFail(Text(IDS_VQ_CANNOT_READ_COLUMN, {name}), SQL_HANDLE_STMT, m_statement);
    piece.isNull = indicator == SQL_NULL_DATA;
    const bool isFull = indicator == SQL_NO_TOTAL || static_cast<std::size_t>(indicator) > room;
    piece.isLast = piece.isNull || (result == SQL_SUCCESS ? indicator != SQL_NO_TOTAL : !isFull);
    if (!piece.isNull)
        piece.bytes = isFull ? room : static_cast<std::size_t>(indicator);
    piece.remaining = indicator;
    return piece;
}

ULONGLONG OdbcReader::ReadBinary(std::size_t column, const std::string& name, ValueSink& sink) {
    ULONGLONG arrived = 0;
    for (bool isFirst = true;; isFirst = false) {
        const Piece piece = ReadPiece(column, name, SQL_C_BINARY, 0);
        if (piece.isNull)
            return sink.Null(), 0;
        if (isFirst) {
            const bool isKnown = piece.remaining >= 0 && piece.remaining != SQL_NO_TOTAL;
            const bool isAsked = sink.Begin(
                Value::Type::Binary,
                isKnown ? std::optional(static_cast<ULONGLONG>(piece.remaining)) : std::nullopt);
            if (!isAsked && isKnown)
                break;
        }
        sink.Append(m_buffer.data(), piece.bytes);
        arrived += piece.bytes;
        if (piece.isLast)
            break;
    }
    sink.End();
    return arrived;
}

ULONGLONG OdbcReader::ReadText(std::size_t column, const std::string& name, Value::Type type,
                               ValueSink& sink) {
    WideTextDecoder decoder;
    ULONGLONG announced = 0;
    ULONGLONG arrived = 0;
    for (bool isFirst = true;; isFirst = false) {
        const Piece piece = ReadPiece(column, name, SQL_C_WCHAR, sizeof(SQLWCHAR));
        if (piece.isNull)
            return sink.Null(), 0;
        if (isFirst) {
            sink.Begin(type);
            announced = piece.remaining >= 0 ? static_cast<ULONGLONG>(piece.remaining) : 0;
        }
        arrived += piece.bytes;
        const std::string_view text =
            decoder.Decode(reinterpret_cast<const SQLWCHAR*>(m_buffer.data()),
                           piece.bytes / sizeof(SQLWCHAR), piece.isLast);
        sink.Append(text.data(), text.size());
        if (piece.isLast)
            break;
    }
    if (arrived < announced)
        throw Failure(kQueryFailed, Text(IDS_VQ_SHORT_COLUMN, {std::to_string(announced), name,
                                                               std::to_string(arrived)}));
    sink.End();
    return arrived;
}

} // namespace vnquery
