#include "vnquery/sources/OdbcConnection.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/result/AsciiUpper.h"
#include "vnquery/sources/OdbcText.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <algorithm>
#include <iterator>

namespace vnquery {

namespace {

/// The driver's messages; "" without any.
std::string Diagnose(SQLSMALLINT type, SQLHANDLE handle) {
    std::string text;
    SQLWCHAR state[6] = {};
    SQLWCHAR message[1024] = {};
    SQLINTEGER number = 0;
    SQLSMALLINT length = 0;
    for (SQLSMALLINT record = 1; SQL_SUCCEEDED(SQLGetDiagRecW(
             type, handle, record, state, &number, message, std::size(message), &length));
         ++record)
        text += (text.empty() ? "" : "; ") + FromBuffer(message, length) + " [" +
                FromWide(state, 5) + "]";
    return text;
}

/// The keywords of a connection string, in upper case. (Braces may hide a semicolon; what is found
/// within them does no harm.)
std::vector<std::string> KeysOf(std::string_view connection) {
    std::vector<std::string> keys;
    while (!connection.empty()) {
        const std::string_view part = connection.substr(0, connection.find(';'));
        connection.remove_prefix(std::min(part.size() + 1, connection.size()));
        std::string key = ToUpper(part.substr(0, part.find('=')));
        std::erase(key, ' ');
        keys.push_back(std::move(key));
    }
    return keys;
}

// Attributes of PostgreSQL's driver; what its connection string names UseDeclareFetch (or B6) and
// Fetch (or A7).
constexpr SQLINTEGER kUseDeclareFetch = 65539;
constexpr SQLINTEGER kFetch = 65541;

bool SetAttribute(SQLHANDLE connection, SQLINTEGER attribute, std::uintptr_t value) {
    return SQL_SUCCEEDED(
        SQLSetConnectAttr(connection, attribute, reinterpret_cast<SQLPOINTER>(value), 0));
}

/// An attribute; 0 when there is no such one.
SQLINTEGER GetNumber(SQLHANDLE connection, SQLINTEGER attribute) {
    SQLINTEGER number = 0;
    return SQL_SUCCEEDED(SQLGetConnectAttr(connection, attribute, &number, sizeof number, nullptr))
               ? number
               : 0;
}

} // namespace

void OdbcFail(const std::string& what, SQLSMALLINT type, SQLHANDLE handle) {
    CheckInterrupted();
    const std::string words = Diagnose(type, handle);
    throw Failure(kQueryFailed, what + ": " + (words.empty() ? Text(IDS_VQ_NO_REASON) : words));
}

OdbcHandle::OdbcHandle(SQLSMALLINT type, SQLHANDLE parent) : m_type(type) {
    if (!SQL_SUCCEEDED(SQLAllocHandle(type, parent, &m_handle)))
        throw Failure(kQueryFailed, Text(IDS_VQ_NO_HANDLE));
    if (type == SQL_HANDLE_ENV)
        SQLSetEnvAttr(m_handle, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3),
                      0);
}

std::string OdbcState(SQLSMALLINT type, SQLHANDLE handle) {
    SQLWCHAR state[6] = {};
    SQLWCHAR message[2] = {};
    SQLINTEGER number = 0;
    SQLSMALLINT length = 0;
    return SQL_SUCCEEDED(SQLGetDiagRecW(type, handle, 1, state, &number, message,
                                        std::size(message), &length))
               ? FromWide(state, 5)
               : std::string();
}

OdbcConnection::OdbcConnection(const std::string& connection, Access access)
    : m_environment(SQL_HANDLE_ENV, SQL_NULL_HANDLE),
      m_handle(SQL_HANDLE_DBC, m_environment.Get()) {
    Connect(connection, access);
    try {
        if (!SetAttribute(m_handle.Get(), SQL_ATTR_AUTOCOMMIT, SQL_AUTOCOMMIT_OFF) &&
            access != Access::Read)
            OdbcFail(Text(IDS_VQ_CANNOT_PREPARE_TRANSACTION), SQL_HANDLE_DBC, m_handle.Get());
        if (access != Access::Write) {
            const bool isInPortions = FetchInPortions(connection);
            m_hasUtf8Bytes = HasPostgreSqlDriver() && FindOutWhetherUtf8();
            if (access == Access::Read)
                BeginReading(isInPortions);
        }
        // Where reading for a change locks no row (see OdbcWriter), as for Write.
        if (access == Access::Session && GetServer() == SqlServer::Other)
            SetAttribute(m_handle.Get(), SQL_ATTR_TXN_ISOLATION, SQL_TXN_SERIALIZABLE);
    } catch (...) {
        SQLDisconnect(m_handle.Get());
        throw;
    }
}

void OdbcConnection::Connect(const std::string& connection, Access access) {
    if (access == Access::Write)
        // So that nobody else changes a value between its comparison and its update.
        SetAttribute(m_handle.Get(), SQL_ATTR_TXN_ISOLATION, SQL_TXN_SERIALIZABLE);
    else if (access == Access::Read)
        SetAttribute(m_handle.Get(), SQL_ATTR_ACCESS_MODE, SQL_MODE_READ_ONLY); // a hint
    std::vector<SQLWCHAR> text = ToWide(connection);
    const SQLRETURN result = SQLDriverConnectW(m_handle.Get(), nullptr, text.data(), SQL_NTS,
                                               nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(result))
        OdbcFail(Text(IDS_VQ_CANNOT_CONNECT), SQL_HANDLE_DBC, m_handle.Get());
}

bool OdbcConnection::Run(const std::string& sql) const {
    std::vector<SQLWCHAR> text = ToWide(sql);
    const std::unique_ptr<OdbcHandle> statement = NewStatement();
    return SQL_SUCCEEDED(SQLExecDirectW(statement->Get(), text.data(), SQL_NTS));
}

/// For this transaction only: a connection pool may give the session to another program afterwards.
void OdbcConnection::MakeReadOnly() const {
    if (!Run("SET TRANSACTION READ ONLY"))
        SQLEndTran(SQL_HANDLE_DBC, m_handle.Get(), SQL_ROLLBACK); // no such statement there
}

void OdbcConnection::BeginReading(bool isInPortions) const {
    MakeReadOnly();
    // PostgreSQL plans a cursor for its first rows; here all of them are read.
    if (isInPortions && !Run("SET LOCAL cursor_tuple_fraction = 1")) {
        SQLEndTran(SQL_HANDLE_DBC, m_handle.Get(), SQL_ROLLBACK); // a server of that family
        MakeReadOnly();
    }
}

/// With a character beyond ASCII and a line break, since the driver may convert both.
bool OdbcConnection::FindOutWhetherUtf8() const {
    const std::string expected = "\xC3\xA4\n";
    std::vector<SQLWCHAR> text =
        ToWide("SELECT CAST('" + expected + "' AS text), CAST('" + expected + "' AS text)");
    SQLWCHAR wide[8] = {};
    char bytes[8] = {};
    SQLLEN wideLength = 0;
    SQLLEN length = 0;
    bool isSame = false;
    {
        const std::unique_ptr<OdbcHandle> statement = NewStatement();
        SQLHANDLE handle = statement->Get();
        isSame =
            SQL_SUCCEEDED(SQLExecDirectW(handle, text.data(), SQL_NTS)) &&
            SQL_SUCCEEDED(SQLFetch(handle)) &&
            SQL_SUCCEEDED(SQLGetData(handle, 1, SQL_C_WCHAR, wide, sizeof wide, &wideLength)) &&
            SQL_SUCCEEDED(SQLGetData(handle, 2, SQL_C_BINARY, bytes, sizeof bytes, &length)) &&
            length == static_cast<SQLLEN>(expected.size()) &&
            expected == std::string_view(bytes, expected.size()) &&
            expected == FromBuffer(wide, wideLength / static_cast<SQLLEN>(sizeof(SQLWCHAR)));
    }
    SQLEndTran(SQL_HANDLE_DBC, m_handle.Get(), SQL_ROLLBACK);
    return isSame;
}

bool OdbcConnection::FetchInPortions(const std::string& connection) {
    if (!HasPostgreSqlDriver())
        return false;
    // It fetches at least as many rows at once as Fetch says, or as a block has.
    const std::vector<std::string> keys = KeysOf(connection);
    const auto has = [&](const char* key) { return std::ranges::find(keys, key) != keys.end(); };
    const bool isOn = GetNumber(m_handle.Get(), kUseDeclareFetch) == 1;
    m_hasPortions = isOn;
    const bool hasFetch = has("FETCH") || has("A7");
    if (isOn || hasFetch)
        m_blockRows =
            static_cast<std::size_t>(std::max<SQLINTEGER>(GetNumber(m_handle.Get(), kFetch), 1));
    if (isOn || has("USEDECLAREFETCH") || has("B6") ||
        !SetAttribute(m_handle.Get(), kUseDeclareFetch, 1))
        return false;
    if (!hasFetch)
        SetAttribute(m_handle.Get(), kFetch, 1);
    m_hasPortions = true;
    return true;
}

void OdbcConnection::AllowPortions(bool isAllowed) const {
    if (m_hasPortions)
        SetAttribute(m_handle.Get(), kUseDeclareFetch, isAllowed ? 1 : 0);
}

OdbcConnection::~OdbcConnection() {
    SQLEndTran(SQL_HANDLE_DBC, m_handle.Get(), SQL_ROLLBACK);
    SQLDisconnect(m_handle.Get());
}

std::string OdbcConnection::GetInfo(SQLUSMALLINT what) const {
    SQLWCHAR text[64] = {};
    SQLSMALLINT bytes = 0;
    if (!SQL_SUCCEEDED(SQLGetInfoW(m_handle.Get(), what, text, sizeof text, &bytes)))
        return {};
    return FromBuffer(text, bytes / static_cast<SQLLEN>(sizeof(SQLWCHAR)));
}

SqlServer OdbcConnection::GetServer() const { return ServerOf(GetInfo(SQL_DBMS_NAME)); }

bool OdbcConnection::HasPostgreSqlDriver() const {
    return ToUpper(GetInfo(SQL_DRIVER_NAME)).starts_with("PSQLODBC");
}

std::size_t OdbcConnection::GetBlockRows() const {
    constexpr SQLUINTEGER kNeeded =
        SQL_GD_BOUND | SQL_GD_BLOCK | SQL_GD_ANY_COLUMN | SQL_GD_ANY_ORDER;
    SQLUINTEGER extensions = 0;
    const bool hasAll = SQL_SUCCEEDED(SQLGetInfoW(m_handle.Get(), SQL_GETDATA_EXTENSIONS,
                                                  &extensions, sizeof extensions, nullptr)) &&
                        (extensions & kNeeded) == kNeeded;
    return hasAll && HasPostgreSqlDriver() ? m_blockRows : 0;
}

std::unique_ptr<OdbcHandle> OdbcConnection::NewStatement() const {
    return std::make_unique<OdbcHandle>(static_cast<SQLSMALLINT>(SQL_HANDLE_STMT), m_handle.Get());
}

std::string OdbcConnection::GetNameQuote() const {
    SQLWCHAR text[8] = {};
    SQLSMALLINT bytes = 0;
    if (!SQL_SUCCEEDED(
            SQLGetInfoW(m_handle.Get(), SQL_IDENTIFIER_QUOTE_CHAR, text, sizeof text, &bytes)) ||
        bytes <= 0 || text[0] == ' ')
        return {};
    return FromWide(text, 1);
}

void OdbcConnection::EndTransaction(SQLSMALLINT how) const {
    if (!SQL_SUCCEEDED(SQLEndTran(SQL_HANDLE_DBC, m_handle.Get(), how)))
        OdbcFail(Text(IDS_VQ_CANNOT_END_TRANSACTION), SQL_HANDLE_DBC, m_handle.Get());
}

} // namespace vnquery
