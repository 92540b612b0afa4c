// Invariants:
// 1. m_row < m_fetched between a successful Next and the following one; m_fetched <= m_rows.
// 2. m_rows <= m_capacity, and m_capacity <= m_maxRows unless that is 0; then m_capacity is 1.
// 3. A column is bound exactly if its width is not 0; its buffers and those of all others lie one
//    after the other in m_buffer, without overlapping.
#include "vnquery/sources/OdbcBlock.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/sources/OdbcConnection.h"
#include "vnquery/tasks/Failure.h"

#include <algorithm>
#include <cassert>
#include <numeric>

namespace vnquery {

namespace {

constexpr std::size_t kUsualUnits = 255;      ///< for texts whose columns tell no length
constexpr std::size_t kMaxUnits = 1024;       ///< longer texts are read with SQLGetData
constexpr std::size_t kMinUnits = 32;         ///< where there are very many columns
constexpr std::size_t kNumberBytes = 48;      ///< digits of most decimal numbers
constexpr std::size_t kUsualRowBytes = 16384; ///< 64 rows in kBufferBytes

std::size_t RoundUp(std::size_t bytes) {
    constexpr std::size_t kAlignment = 8;
    return (bytes + kAlignment - 1) / kAlignment * kAlignment;
}

} // namespace

OdbcBlock::OdbcBlock(SQLHANDLE statement, std::vector<OdbcColumn> columns, std::size_t maxRows)
    : m_statement(statement), m_columns(std::move(columns)), m_maxRows(std::min(maxRows, kMaxRows)),
      m_reader(statement), m_bound(m_columns.size()), m_status(kMaxRows) {
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        Bound& bound = m_bound[i];
        bound.type = OdbcReader::TypeOf(m_columns[i].sqlType);
        const int type = m_columns[i].sqlType;
        // An unsigned number may be too large for Integer, and may have zeros in front.
        const bool isInteger = type == SQL_TINYINT || type == SQL_SMALLINT || type == SQL_INTEGER ||
                               type == SQL_BIGINT;
        bound.kind = bound.type == Value::Type::Binary       ? Kind::Bytes
                     : m_columns[i].isUtf8                   ? Kind::Utf8
                     : bound.type == Value::Type::Text       ? Kind::Text
                     : isInteger && !m_columns[i].isUnsigned ? Kind::Integer
                                                             : Kind::Number;
    }
    if (m_maxRows == 0)
        return;
    SQLSetStmtAttr(m_statement, SQL_ATTR_ROWS_FETCHED_PTR, &m_fetched, 0);
    SQLSetStmtAttr(m_statement, SQL_ATTR_ROW_STATUS_PTR, m_status.data(), 0);
    ChooseWidths();
    Bind();
    CheckInvariants();
}

/// Nothing of the driver points into the buffers afterwards.
OdbcBlock::~OdbcBlock() {
    if (m_maxRows == 0)
        return;
    SQLFreeStmt(m_statement, SQL_UNBIND);
    SQLSetStmtAttr(m_statement, SQL_ATTR_ROWS_FETCHED_PTR, nullptr, 0);
    SQLSetStmtAttr(m_statement, SQL_ATTR_ROW_STATUS_PTR, nullptr, 0);
}

void OdbcBlock::CheckInvariants() const {
    assert(m_fetched <= m_rows && m_rows <= m_capacity);
    assert(m_capacity <= std::max<std::size_t>(m_maxRows, 1));
    assert(RowBytes() * m_capacity <= m_buffer.size());
}

// --- buffers -------------------------------------------------------------------------------------

/// By the columns' sizes where these are small. Narrower where a row would leave no room for
/// others.
void OdbcBlock::ChooseWidths() {
    const std::size_t share = kUsualRowBytes / sizeof(SQLWCHAR) / m_columns.size();
    const std::size_t most = std::max(share, kMinUnits);
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const std::size_t size = m_columns[i].size;
        const std::size_t units =
            std::min(size == 0 || size > kMaxUnits ? kUsualUnits : size, most);
        Bound& bound = m_bound[i];
        switch (bound.kind) {
        case Kind::Integer:
            bound.width = sizeof(SQLBIGINT);
            break;
        case Kind::Number:
            bound.width = kNumberBytes;
            break;
        case Kind::Text:
        case Kind::Utf8:
            bound.width = RoundUp((units + 1) * sizeof(SQLWCHAR));
            break;
        case Kind::Bytes:
            bound.width = RoundUp(units);
            break;
        }
    }
}

std::size_t OdbcBlock::RowBytes() const {
    return std::accumulate(m_bound.begin(), m_bound.end(), std::size_t{0},
                           [](std::size_t sum, const Bound& bound) { return sum + bound.width; });
}

void OdbcBlock::Bind() {
    m_capacity = std::clamp<std::size_t>(kBufferBytes / std::max<std::size_t>(RowBytes(), 1), 1,
                                         std::max<std::size_t>(m_maxRows, 1));
    SQLFreeStmt(m_statement, SQL_UNBIND);
    m_buffer.resize(RowBytes() * m_capacity);
    m_indicators.assign(m_columns.size() * m_capacity, 0);
    std::size_t offset = 0;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        Bound& bound = m_bound[i];
        bound.offset = offset;
        offset += bound.width * m_capacity;
        if (bound.width == 0)
            continue;
        constexpr SQLSMALLINT kTypes[] = {SQL_C_SBIGINT, SQL_C_CHAR, SQL_C_WCHAR, SQL_C_BINARY,
                                          SQL_C_BINARY};
        if (!SQL_SUCCEEDED(
                SQLBindCol(m_statement, static_cast<SQLUSMALLINT>(i + 1),
                           kTypes[static_cast<int>(bound.kind)], m_buffer.data() + bound.offset,
                           static_cast<SQLLEN>(bound.width), m_indicators.data() + i * m_capacity)))
            bound.width = 0; // read with SQLGetData
    }
    m_rows = std::min(m_rows, m_capacity);
}

/// What the present block says about the lengths of values.
void OdbcBlock::Measure() {
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        Bound& bound = m_bound[i];
        bound.tooLong = 0;
        bound.longest = 0;
        const std::size_t end = bound.GetEnd();
        for (std::size_t row = 0; bound.width > 0 && row < m_fetched; ++row) {
            const SQLLEN length = m_indicators[i * m_capacity + row];
            const bool isUnknown = length == SQL_NO_TOTAL;
            const std::size_t bytes = length < 0 ? 0 : static_cast<std::size_t>(length) + end;
            bound.tooLong += isUnknown || bytes > bound.width;
            bound.longest = std::max(bound.longest, isUnknown ? kBlockBytes : bytes);
        }
    }
}

/// Where most values of a column are too long for its buffers, they get wider ones or none.
void OdbcBlock::AdaptWidths() {
    bool isChanged = false;
    for (Bound& bound : m_bound) {
        if (bound.tooLong * 2 <= m_fetched)
            continue;
        bound.width = bound.longest <= kMaxUnits * sizeof(SQLWCHAR) ? RoundUp(bound.longest) : 0;
        isChanged = true;
    }
    if (isChanged)
        Bind();
}

void OdbcBlock::ChooseRows() {
    ULONGLONG bytes = m_bytesRead;
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        for (std::size_t row = 0; m_bound[i].width > 0 && row < m_fetched; ++row)
            bytes +=
                static_cast<ULONGLONG>(std::max<SQLLEN>(m_indicators[i * m_capacity + row], 0));
    const ULONGLONG fitting = kBlockBytes * m_fetched / std::max<ULONGLONG>(bytes, 1);
    const std::size_t before = m_rows;
    m_rows = std::clamp<std::size_t>(std::min<ULONGLONG>(fitting, m_rows * 2), 1, m_capacity);
    if (m_rows != before &&
        !SQL_SUCCEEDED(
            SQLSetStmtAttr(m_statement, SQL_ATTR_ROW_ARRAY_SIZE,
                           reinterpret_cast<SQLPOINTER>(static_cast<std::uintptr_t>(m_rows)), 0)))
        m_rows = before;
}

// --- blocks --------------------------------------------------------------------------------------

bool OdbcBlock::Next() {
    m_isPositioned = false;
    if (++m_row >= m_fetched)
        FetchBlock();
    if (m_fetched == 0)
        return false;
    if (m_failure && m_status[m_row] == SQL_ROW_ERROR)
        throw Failure(kQueryFailed, *m_failure);
    CheckInvariants();
    return true;
}

void OdbcBlock::FetchBlock() {
    if (m_maxRows > 0 && m_fetched > 0) {
        ChooseRows();
        AdaptWidths();
    }
    m_row = 0;
    m_fetched = 0;
    m_bytesRead = 0;
    std::fill_n(m_status.begin(), m_rows, static_cast<SQLUSMALLINT>(SQL_ROW_SUCCESS));
    const SQLRETURN result = SQLFetch(m_statement);
    if (result == SQL_NO_DATA) {
        m_fetched = 0;
        return;
    }
    if (!SQL_SUCCEEDED(result))
        OdbcFail(Text(IDS_VQ_CANNOT_READ_ROW), SQL_HANDLE_STMT, m_statement);
    if (m_maxRows == 0)
        m_fetched = 1;
    KeepFailure();
    Measure();
}

/// Rows before the one that failed are given first.
void OdbcBlock::KeepFailure() {
    const auto end = m_status.begin() + static_cast<std::ptrdiff_t>(m_fetched);
    if (std::find(m_status.begin(), end, SQL_ROW_ERROR) == end)
        return;
    try {
        OdbcFail(Text(IDS_VQ_CANNOT_READ_ROW), SQL_HANDLE_STMT, m_statement);
    } catch (const Failure& failure) {
        m_failure = failure.what();
    }
}

// --- values --------------------------------------------------------------------------------------

void OdbcBlock::ReadAgain(std::size_t column, ValueSink& sink) {
    if (m_rows > 1 && !m_isPositioned &&
        !SQL_SUCCEEDED(SQLSetPos(m_statement, m_row + 1, SQL_POSITION, SQL_LOCK_NO_CHANGE)))
        OdbcFail(Text(IDS_VQ_CANNOT_READ_COLUMN, {m_columns[column].name}), SQL_HANDLE_STMT,
                 m_statement);
    m_isPositioned = true;
    m_bytesRead += m_reader.Read(column, m_columns[column].name, m_bound[column].type, sink);
}

void OdbcBlock::Read(std::size_t column, ValueSink& sink) {
    const Bound& bound = m_bound[column];
    if (bound.width == 0)
        return ReadAgain(column, sink);
    const SQLLEN length = Indicator(column);
    if (length == SQL_NULL_DATA)
        return sink.Null();
    const BYTE* bytes = m_buffer.data() + bound.offset + m_row * bound.width;
    if (bound.kind == Kind::Integer)
        return sink.Integer(*reinterpret_cast<const SQLBIGINT*>(bytes));
    if (length < 0 || static_cast<std::size_t>(length) + bound.GetEnd() > bound.width)
        return ReadAgain(column, sink);
    const auto count = static_cast<std::size_t>(length);
    if (bound.kind == Kind::Text)
        sink.Whole(bound.type, m_text.Convert(reinterpret_cast<const SQLWCHAR*>(bytes),
                                              count / sizeof(SQLWCHAR)));
    else
        sink.Whole(bound.type, {reinterpret_cast<const char*>(bytes), count});
}

} // namespace vnquery
