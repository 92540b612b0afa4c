// The rows of an ODBC statement, fetched in blocks.
#pragma once

#include "vnquery/sources/OdbcReader.h"
#include "vnquery/sources/OdbcText.h"

#include <optional>
#include <string>
#include <vector>

namespace vnquery {

/// What a column of the result holds.
struct OdbcColumn {
    std::string name;
    SQLSMALLINT sqlType = 0;
    SQLULEN size = 0; ///< characters or bytes as the driver says it, which may be 0 or too small
    bool isUnsigned = false;
    bool isUtf8 = false; ///< a text whose UTF-8 the driver gives as bytes
};

/// Binds a buffer to each column for values of usual lengths, and fetches as many rows at once as
/// fit kBufferBytes. A value that is longer than its buffer is read again with SQLGetData, in
/// pieces: the driver says so for each value, so nothing relies on the sizes of the columns. A
/// column whose values are mostly long loses its buffer.
///
/// The first block is one row. The next ones grow while their values stay small, since drivers hold
/// a block in memory: about kBlockBytes, or one row. (Where long values follow upon short ones, the
/// first block of these is larger; the greatest number of rows limits it.)
///
/// This takes a driver whose SQLGetData also reads what is bound, in any row of a block and in any
/// order. With others there are no buffers and each value is read with SQLGetData, row by row.
class OdbcBlock {
public:
    /// `maxRows` of a block, at most kMaxRows; 0 for a driver that is read row by row.
    OdbcBlock(SQLHANDLE statement, std::vector<OdbcColumn> columns, std::size_t maxRows);
    OdbcBlock(const OdbcBlock&) = delete;
    OdbcBlock& operator=(const OdbcBlock&) = delete;
    ~OdbcBlock();

    /// Goes to the next row; false after the last one. Throws Failure and Interrupted.
    bool Next();
    /// A value of the current row; columns are read once, from left to right. Throws Failure,
    /// Interrupted and what the sink throws.
    void Read(std::size_t column, ValueSink& sink);

    static constexpr std::size_t kBufferBytes = 1048576;
    static constexpr std::size_t kBlockBytes = 1048576;
    static constexpr std::size_t kMaxRows = 1024;

private:
    enum class Kind { Integer, Number, Text, Utf8, Bytes };

    struct Bound {
        Kind kind = Kind::Text;
        Value::Type type = Value::Type::Text;
        std::size_t width = 0;  ///< bytes of a row's buffer; 0: not bound
        std::size_t offset = 0; ///< of the first row's buffer
        // Of the present block:
        std::size_t tooLong = 0;
        std::size_t longest = 0;

        /// Bytes of the zero that the driver puts after a value.
        std::size_t GetEnd() const {
            return kind == Kind::Text ? sizeof(SQLWCHAR) : kind == Kind::Number ? 1 : 0;
        }
    };

    void ChooseWidths();
    void Bind();
    void FetchBlock();
    void KeepFailure();
    void ChooseRows();
    void AdaptWidths();
    void Measure();
    std::size_t RowBytes() const;
    void ReadAgain(std::size_t column, ValueSink& sink);
    void CheckInvariants() const;
    SQLLEN Indicator(std::size_t column) const { return m_indicators[column * m_capacity + m_row]; }

    SQLHANDLE m_statement;
    std::vector<OdbcColumn> m_columns;
    std::size_t m_maxRows; ///< 0: row by row
    OdbcReader m_reader;
    Utf8Text m_text;
    std::vector<Bound> m_bound;
    std::vector<BYTE> m_buffer;
    std::vector<SQLLEN> m_indicators; ///< column by column
    std::vector<SQLUSMALLINT> m_status;
    std::size_t m_capacity = 1; ///< rows for which there are buffers
    std::size_t m_rows = 1;     ///< asked for in a block
    SQLULEN m_fetched = 0;      ///< rows of the present block
    std::size_t m_row = 0;      ///< the current one of them
    bool m_isPositioned = false;
    ULONGLONG m_bytesRead = 0;            ///< of the present block, by SQLGetData
    std::optional<std::string> m_failure; ///< why a row of the block could not be fetched
};

} // namespace vnquery
