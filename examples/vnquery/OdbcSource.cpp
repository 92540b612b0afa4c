#include "OdbcSource.h"

#include "Failure.h"
#include "Process.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace vnquery {

namespace {

constexpr auto kLookInterval = std::chrono::milliseconds(50);

/// The driver's own words; "" when it has none.
std::string Diagnose(SQLSMALLINT type, SQLHANDLE handle) {
    std::string text;
    SQLWCHAR state[6] = {};
    SQLWCHAR message[1024] = {};
    SQLINTEGER number = 0;
    SQLSMALLINT length = 0;
    for (SQLSMALLINT record = 1; SQL_SUCCEEDED(SQLGetDiagRecW(
             type, handle, record, state, &number, message, std::size(message), &length));
         ++record) {
        const auto count =
            std::min<std::size_t>(static_cast<std::size_t>(length), std::size(message) - 1);
        text +=
            (text.empty() ? "" : "; ") + FromWide(message, count) + " [" + FromWide(state, 5) + "]";
    }
    return text;
}

[[noreturn]] void Fail(const std::string& what, SQLSMALLINT type, SQLHANDLE handle) {
    CheckInterrupted();
    const std::string words = Diagnose(type, handle);
    throw Failure(kQueryFailed,
                  what + ": " + (words.empty() ? "the driver gives no reason." : words));
}

Value::Type TypeOf(SQLSMALLINT sqlType) {
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
    default: // dates, times and what only the driver knows come as text
        return Value::Type::Text;
    }
}

} // namespace

OdbcSource::Handle::Handle(SQLSMALLINT type, SQLHANDLE parent) : m_type(type) {
    if (!SQL_SUCCEEDED(SQLAllocHandle(type, parent, &m_handle)))
        throw Failure(kQueryFailed, "ODBC gives no handle. Check the installation of unixODBC.");
}

/// A connection that is closed at its end.
class OdbcSource::Connection {
public:
    Connection(const Handle& environment, const std::string& connection)
        : m_handle(SQL_HANDLE_DBC, environment.Get()) {
        // A hint to the driver; vnquery is to change nothing.
        SQLSetConnectAttr(m_handle.Get(), SQL_ATTR_ACCESS_MODE,
                          reinterpret_cast<SQLPOINTER>(SQL_MODE_READ_ONLY), 0);
        std::vector<SQLWCHAR> text = ToWide(connection);
        const SQLRETURN result = SQLDriverConnectW(m_handle.Get(), nullptr, text.data(), SQL_NTS,
                                                   nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
        if (!SQL_SUCCEEDED(result))
            Fail("cannot connect to the server", SQL_HANDLE_DBC, m_handle.Get());
    }
    ~Connection() { SQLDisconnect(m_handle.Get()); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    SQLHANDLE Get() const { return m_handle.Get(); }

private:
    Handle m_handle;
};

OdbcSource::OdbcSource(const std::string& connection, const std::string& sql)
    : m_buffer(kPieceSize) {
    m_environment = std::make_unique<Handle>(static_cast<SQLSMALLINT>(SQL_HANDLE_ENV),
                                             static_cast<SQLHANDLE>(SQL_NULL_HANDLE));
    SQLSetEnvAttr(m_environment->Get(), SQL_ATTR_ODBC_VERSION,
                  reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    m_connection = std::make_unique<Connection>(*m_environment, connection);
    m_statement =
        std::make_unique<Handle>(static_cast<SQLSMALLINT>(SQL_HANDLE_STMT), m_connection->Get());
    std::vector<SQLWCHAR> text = ToWide(sql);
    m_watcher = std::jthread([this](const std::stop_token& stop) { CancelOnSignal(stop); });
    const SQLRETURN result = SQLExecDirectW(m_statement->Get(), text.data(), SQL_NTS);
    if (result != SQL_NO_DATA)
        Check(result, "cannot run the query");
    DescribeColumns();
}

OdbcSource::~OdbcSource() = default;

void OdbcSource::CancelOnSignal(const std::stop_token& stop) {
    std::mutex mutex;
    std::unique_lock lock(mutex);
    std::condition_variable_any stopped;
    while (!stopped.wait_for(lock, stop, kLookInterval, [] { return false; }) &&
           !stop.stop_requested()) {
        if (InterruptingSignal() != 0)
            SQLCancel(m_statement->Get());
    }
}

void OdbcSource::Check(SQLRETURN result, const std::string& what) const {
    if (!SQL_SUCCEEDED(result))
        Fail(what, m_statement->Type(), m_statement->Get());
}

void OdbcSource::DescribeColumns() {
    SQLSMALLINT count = 0;
    Check(SQLNumResultCols(m_statement->Get(), &count), "cannot read the columns of the result");
    if (count <= 0)
        throw Failure(kQueryFailed,
                      "the statement gives no result. vnquery runs queries; give a SELECT.");
    for (SQLUSMALLINT column = 1; column <= count; ++column) {
        SQLWCHAR name[512] = {};
        SQLSMALLINT length = 0;
        SQLSMALLINT type = 0;
        Check(SQLDescribeColW(m_statement->Get(), column, name, std::size(name), &length, &type,
                              nullptr, nullptr, nullptr),
              "cannot read the columns of the result");
        m_names.push_back(FromWide(
            name, std::min<std::size_t>(static_cast<std::size_t>(length), std::size(name) - 1)));
        m_types.push_back(TypeOf(type));
    }
}

bool OdbcSource::Next() {
    CheckInterrupted();
    const SQLRETURN result = SQLFetch(m_statement->Get());
    if (result == SQL_NO_DATA)
        return false;
    Check(result, "cannot read the next row");
    return true;
}

void OdbcSource::Read(std::size_t column, ValueSink& sink) {
    if (m_types[column] == Value::Type::Binary)
        ReadBinary(column, sink);
    else
        ReadText(column, m_types[column], sink);
}

OdbcSource::Piece OdbcSource::ReadPiece(std::size_t column, SQLSMALLINT type,
                                        std::size_t terminator) {
    Piece piece;
    SQLLEN indicator = 0;
    const std::size_t room = m_buffer.size() - terminator;
    const SQLRETURN result =
        SQLGetData(m_statement->Get(), static_cast<SQLUSMALLINT>(column + 1), type, m_buffer.data(),
                   static_cast<SQLLEN>(m_buffer.size()), &indicator);
    if (result == SQL_NO_DATA) {
        piece.isLast = true;
        return piece;
    }
    Check(result, "cannot read the column " + m_names[column]);
    piece.isNull = indicator == SQL_NULL_DATA;
    const bool isFull = indicator == SQL_NO_TOTAL || static_cast<std::size_t>(indicator) > room;
    piece.isLast = piece.isNull || (result == SQL_SUCCESS ? indicator != SQL_NO_TOTAL : !isFull);
    if (!piece.isNull)
        piece.bytes = isFull ? room : static_cast<std::size_t>(indicator);
    piece.remaining = indicator;
    return piece;
}

void OdbcSource::ReadBinary(std::size_t column, ValueSink& sink) {
    std::optional<ULONGLONG> announced;
    for (bool isFirst = true;; isFirst = false) {
        const Piece piece = ReadPiece(column, SQL_C_BINARY, 0);
        if (piece.isNull)
            return;
        if (isFirst) {
            sink.Begin(Value::Type::Binary);
            if (piece.remaining >= 0 && piece.remaining != SQL_NO_TOTAL)
                announced = static_cast<ULONGLONG>(piece.remaining);
        }
        sink.Append(m_buffer.data(), piece.bytes);
        if (piece.isLast)
            break;
    }
    sink.End(announced);
}

void OdbcSource::ReadText(std::size_t column, Value::Type type, ValueSink& sink) {
    WideTextDecoder decoder;
    ULONGLONG announced = 0;
    ULONGLONG arrived = 0;
    for (bool isFirst = true;; isFirst = false) {
        const Piece piece = ReadPiece(column, SQL_C_WCHAR, sizeof(SQLWCHAR));
        if (piece.isNull)
            return;
        if (isFirst) {
            sink.Begin(type);
            announced = piece.remaining >= 0 ? static_cast<ULONGLONG>(piece.remaining) : 0;
        }
        arrived += piece.bytes;
        const CByteStream text = decoder.Decode(reinterpret_cast<const SQLWCHAR*>(m_buffer.data()),
                                                piece.bytes / sizeof(SQLWCHAR), piece.isLast);
        ForEachPiece(text,
                     [&](std::span<const BYTE> part) { sink.Append(part.data(), part.size()); });
        if (piece.isLast)
            break;
    }
    if (arrived < announced)
        throw Failure(kQueryFailed, "the server announced " + std::to_string(announced) +
                                        " bytes for the column " + m_names[column] +
                                        " and delivered " + std::to_string(arrived) +
                                        ". Run the query again.");
    sink.End();
}

} // namespace vnquery
