#include "vnquery/result/ResultSet.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/result/CellText.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Progress.h"

#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>

namespace vnquery {

// --- the shared rows -----------------------------------------------------------------------------

namespace {

/// Lets the window go first: what it reads, it reads cell by cell, and a thread that takes the
/// mutex again as soon as it has released it would leave it hardly a gap.
class Turns {
public:
    /// For reading single values.
    std::unique_lock<std::mutex> Reader() {
        std::unique_lock lock(m_mutex);
        m_lastRead = Now();
        return lock;
    }
    /// For work in the background, which one or two threads do: waits for some milliseconds while
    /// values have just been read, then goes on for as many.
    std::unique_lock<std::mutex> Worker() {
        constexpr auto kPause = std::chrono::microseconds(100);
        constexpr int kMaxPauses = 30;
        constexpr std::int64_t kShare = 2000; // microseconds
        if (IsBeingRead() && Now() >= m_workerEnd) {
            for (int i = 0; i < kMaxPauses && IsBeingRead(); ++i)
                std::this_thread::sleep_for(kPause);
            m_workerEnd = Now() + kShare;
        }
        return std::unique_lock(m_mutex);
    }

private:
    static std::int64_t Now() {
        return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::microseconds(1);
    }
    bool IsBeingRead() {
        constexpr std::int64_t kRecent = 300; // microseconds
        const std::int64_t last = m_lastRead.load(std::memory_order_relaxed);
        if (last == 0)
            return false;
        if (Now() - last < kRecent)
            return true;
        m_lastRead.store(0, std::memory_order_relaxed); // no clock while nobody reads
        return false;
    }

    std::mutex m_mutex;
    std::atomic<std::int64_t> m_lastRead = 0;  ///< 0: not lately
    std::atomic<std::int64_t> m_workerEnd = 0; ///< when it waits again
};

} // namespace

/// A turn is taken for each use of the store. What the store returns is used within it.
class ResultSet::Rows {
public:
    Rows(std::size_t columns, bool hasRowIds)
        : hasRowIds(hasRowIds), seen(columns),
          store(static_cast<int>(columns + (hasRowIds ? 1 : 0))) {}

    /// What the values of a column are.
    struct Seen {
        bool integers = false;
        bool decimals = false;
        bool others = false;
    };

    const bool hasRowIds; ///< in a column of their own, after the others
    std::vector<Seen> seen;
    std::atomic<DWORD> count = 0; ///< rows of the store
    Turns turns;                  ///< for `store` and `seen`
    CRowStore store;
};

namespace {

Value::Type TypeOf(ERowValueType type) {
    switch (type) {
    case rowNull:
        return Value::Type::Null;
    case rowText:
        return Value::Type::Text;
    case rowBytes:
        return Value::Type::Binary;
    default:
        return Value::Type::Number;
    }
}

ERowValueType TypeOf(Value::Type type) {
    switch (type) {
    case Value::Type::Null:
        return rowNull;
    case Value::Type::Number:
        return rowDecimal;
    case Value::Type::Text:
        return rowText;
    default:
        return rowBytes;
    }
}

CRowValue RowValue(Value::Type type, std::string_view bytes) {
    switch (type) {
    case Value::Type::Null:
        return {};
    case Value::Type::Number:
        return CRowValue::Decimal(bytes);
    case Value::Type::Text:
        return CRowValue::Text(bytes);
    default:
        return CRowValue::Bytes({reinterpret_cast<const BYTE*>(bytes.data()), bytes.size()});
    }
}

bool IsInteger(std::string_view number) {
    return number.find_first_not_of("-0123456789") == std::string_view::npos;
}

/// The bytes of a short value as Value has them; an integer's digits are put into `digits`.
std::string_view ShortBytes(const CRowValue& value, std::span<char, 24> digits) {
    if (value.GetType() != rowInteger)
        return value.GetText();
    const auto [end, error] =
        std::to_chars(digits.data(), digits.data() + digits.size(), value.GetInteger());
    return {digits.data(), end};
}

} // namespace

/// A long value.
class ResultSet::Range : public ByteRange {
public:
    Range(std::shared_ptr<Rows> rows, const CRowValue& value)
        : m_rows(std::move(rows)), m_value(value) {}
    DWORD GetLength() const override { return m_value.GetLength(); }
    DWORD Read(DWORD offset, BYTE* to, DWORD count) const override {
        const auto turn = m_rows->turns.Reader();
        return m_rows->store.CopyTo(m_value, offset, to, count);
    }

private:
    std::shared_ptr<Rows> m_rows;
    CRowValue m_value;
};

// --- adding rows ---------------------------------------------------------------------------------

/// Gathers the short values of a row, so that the rows are locked once for each.
class ResultSet::Filler : public RowSink {
public:
    Filler(Rows& rows, const RowSource& source, Progress& progress)
        : RowSink(&progress), m_rows(rows), m_source(source) {}
    ~Filler() override {
        const auto turn = m_rows.turns.Worker();
        m_rows.store.CancelRow();
    }

protected:
    void DoNull() override { m_cells.push_back({Value::Type::Null, false, 0, m_bytes.size()}); }
    void DoInteger(long long number) override {
        m_cells.push_back({Value::Type::Number, true, number, m_bytes.size()});
    }
    void DoWhole(Value::Type type, std::string_view bytes) override {
        m_bytes += bytes;
        m_cells.push_back({type, false, 0, m_bytes.size()});
    }
    bool DoBegin(Value::Type type, std::optional<ULONGLONG>) override {
        WithStore([&](CRowStore& store) {
            AppendGathered();
            store.BeginValue(TypeOf(type));
        });
        return true;
    }
    void DoAppend(std::string_view piece) override {
        WithStore([&](CRowStore& store) {
            store.AppendPiece({reinterpret_cast<const BYTE*>(piece.data()), piece.size()});
        });
    }
    void DoEnd(ULONGLONG) override {
        WithStore([&](CRowStore& store) {
            store.EndValue();
            m_rows.seen[m_column++].others = true;
        });
    }
    void DoEndRow() override {
        WithStore([&](CRowStore& store) {
            AppendGathered();
            if (m_rows.hasRowIds) {
                const std::optional<long long> id = m_source.GetRowId();
                id ? store.AppendInteger(*id) : store.AppendNull();
            }
            store.EndRow();
            m_rows.count = store.GetRowCount();
        });
        m_isBegun = false;
        m_column = 0;
    }

private:
    struct Cell {
        Value::Type type;
        bool isInteger;
        LONGLONG number;
        std::size_t end; ///< in m_bytes
    };

    template <class Action>
    void WithStore(Action action) {
        try {
            const auto turn = m_rows.turns.Worker();
            action(m_rows.store);
        } catch (CException* error) {
            throw Failure(kFileFailed,
                          Text(IDS_VQ_CANNOT_KEEP, {CellName(m_rows.count, m_column)}) + ": " +
                              TakeMessage(error));
        }
    }

    void AppendGathered() {
        if (!m_isBegun)
            m_rows.store.BeginRow();
        m_isBegun = true;
        std::size_t begin = 0;
        for (const Cell& cell : m_cells) {
            const auto bytes = std::string_view(m_bytes).substr(begin, cell.end - begin);
            begin = cell.end;
            Rows::Seen& seen = m_rows.seen[m_column];
            if (cell.isInteger) {
                seen.integers = true;
                m_rows.store.AppendInteger(cell.number);
            } else {
                if (cell.type == Value::Type::Number)
                    (IsInteger(bytes) ? seen.integers : seen.decimals) = true;
                else if (cell.type != Value::Type::Null)
                    seen.others = true;
                m_rows.store.Append(RowValue(cell.type, bytes));
            }
            ++m_column;
        }
        m_cells.clear();
        m_bytes.clear();
    }

    Rows& m_rows;
    const RowSource& m_source;
    std::vector<Cell> m_cells; ///< of the row, not yet in the store
    std::string m_bytes;
    std::size_t m_column = 0; ///< that the store gets next
    bool m_isBegun = false;
};

void ResultSet::Fetch(RowSource& source, Progress& progress) {
    Filler filler(*m_rows, source, progress);
    ReadRows(source, filler, progress);
}

// --- the result ----------------------------------------------------------------------------------

ResultSet::ResultSet(std::vector<std::string> columns, bool hasRowIds)
    : m_columns(std::move(columns)), m_rows(std::make_shared<Rows>(m_columns.size(), hasRowIds)) {}

ResultSet::~ResultSet() = default;
ResultSet::ResultSet(const ResultSet&) = default;
ResultSet& ResultSet::operator=(const ResultSet&) = default;

std::size_t ResultSet::GetRowCount() const { return m_rows->count; }

Value ResultSet::GetValue(std::size_t row, std::size_t column) const {
    const auto turn = m_rows->turns.Reader();
    const CRowValue value =
        m_rows->store.GetValue(static_cast<DWORD>(row), static_cast<int>(column));
    const Value::Type type = TypeOf(value.GetType());
    if (value.IsLong())
        return {type, std::make_shared<Range>(m_rows, value)};
    char digits[24];
    return {type, ShortBytes(value, digits)};
}

void ResultSet::AppendCell(std::string& out, std::size_t row, std::size_t column,
                           const CellFormat& format) const {
    const auto turn = m_rows->turns.Reader();
    const CRowValue value =
        m_rows->store.GetValue(static_cast<DWORD>(row), static_cast<int>(column));
    const Value::Type type = TypeOf(value.GetType());
    char digits[24];
    if (!value.IsLong()) {
        const std::string_view bytes = ShortBytes(value, digits);
        vnquery::AppendCell(out, type, bytes, bytes.size(), format);
        return;
    }
    const bool isNeeded = type != Value::Type::Binary &&
                          (format.hasPreviews || value.GetLength() <= BytesToShow(format));
    const ULONGLONG count = std::min<ULONGLONG>(value.GetLength(), BytesToShow(format));
    std::string bytes(isNeeded ? count : 0, '\0');
    if (isNeeded)
        m_rows->store.CopyTo(value, 0, reinterpret_cast<BYTE*>(bytes.data()),
                             static_cast<DWORD>(count));
    vnquery::AppendCell(out, type, bytes, value.GetLength(), format);
}

std::optional<long long> ResultSet::GetRowId(std::size_t row) const {
    if (!m_rows->hasRowIds || row >= GetRowCount())
        return {};
    const auto turn = m_rows->turns.Reader();
    const CRowValue id =
        m_rows->store.GetValue(static_cast<DWORD>(row), static_cast<int>(m_columns.size()));
    return id.IsNull() ? std::optional<long long>() : id.GetInteger();
}

ColumnKind ResultSet::GetSeenKind(std::size_t column) const {
    const auto turn = m_rows->turns.Reader();
    const Rows::Seen& seen = m_rows->seen[column];
    if (seen.others || (!seen.integers && !seen.decimals))
        return ColumnKind::Unknown;
    return seen.decimals ? ColumnKind::Decimal : ColumnKind::Integer;
}

void ResultSet::SetValue(std::size_t row, std::size_t column, const Value& value) {
    // Piece by piece, since a long value may be one of these rows'.
    const auto store = [&]() -> CRowStore& { return m_rows->store; };
    {
        const auto turn = m_rows->turns.Reader();
        store().BeginUpdate(static_cast<DWORD>(row), static_cast<int>(column));
        if (value.IsNull())
            store().AppendNull();
        else
            store().BeginValue(TypeOf(value.GetType()));
    }
    value.ForEachPiece([&](std::span<const BYTE> piece) {
        const auto turn = m_rows->turns.Reader();
        store().AppendPiece(piece);
    });
    const auto turn = m_rows->turns.Reader();
    if (!value.IsNull())
        store().EndValue();
    store().EndUpdate();
}

std::size_t ResultSet::AppendRow() {
    const auto turn = m_rows->turns.Reader();
    m_rows->store.BeginRow();
    m_rows->store.EndRow();
    m_rows->count = m_rows->store.GetRowCount();
    return m_rows->count - 1;
}

void ResultSet::SetRowId(std::size_t row, long long id) {
    const auto turn = m_rows->turns.Reader();
    m_rows->store.UpdateValue(static_cast<DWORD>(row), static_cast<int>(m_columns.size()),
                              CRowValue::Integer(id));
}

/// A column with changed values.
class ResultSet::SortedColumn : public CRowStoreColumn {
public:
    SortedColumn(Rows& rows, std::size_t column, const std::map<std::size_t, Value>& changed)
        : CRowStoreColumn(rows.store, static_cast<int>(column)), m_rows(rows), m_changed(changed) {}

    void Lock() override { m_turn = m_rows.turns.Worker(); }
    void Unlock() noexcept override { m_turn.unlock(); }

    CRowValue GetValue(DWORD row) override {
        const auto changed = m_changed.empty() ? m_changed.end() : m_changed.find(row);
        if (changed == m_changed.end())
            return CRowStoreColumn::GetValue(row);
        m_bytes = changed->second.Read(0, CRowSort::kMaxCompared);
        return RowValue(changed->second.GetType(), m_bytes);
    }

private:
    Rows& m_rows;
    std::unique_lock<std::mutex> m_turn;
    const std::map<std::size_t, Value>& m_changed;
    std::string m_bytes;
};

bool ResultSet::Sort(std::size_t column, const std::map<std::size_t, Value>& changed,
                     bool descending, std::vector<DWORD>& order,
                     const CRowSort::Progress& goOn) const {
    SortedColumn values(*m_rows, column, changed);
    return CRowSort::Sort(values, order, descending, goOn);
}

std::string CellName(std::size_t row, std::size_t column) {
    return Text(IDS_VQ_CELL, {std::to_string(row + 1), std::to_string(column + 1)});
}

} // namespace vnquery
