// CRowStore against plain vectors, with a small cache and when system calls fail.
#include "tests/bytestore/StoreFixture.h"

#include "vnbytstr/RowStore.h"

#include <cstring>
#include <deque>

namespace vnbytstr::test {
namespace {

/// A value of the model.
struct Plain {
    ERowValueType type = rowNull;
    WORD ccsid = 0;
    LONGLONG integer = 0;
    double real = 0;
    std::string bytes;

    CRowValue Value() const {
        switch (type) {
        case rowInteger:
            return CRowValue::Integer(integer);
        case rowReal:
            return CRowValue::Real(real);
        case rowDecimal:
            return CRowValue::Decimal(bytes);
        case rowText:
            return CRowValue::Text(bytes, ccsid);
        case rowBytes:
            return CRowValue::Bytes({reinterpret_cast<const BYTE*>(bytes.data()), bytes.size()});
        default:
            return {};
        }
    }
};
using PlainRow = std::vector<Plain>;
using Model = std::vector<const PlainRow*>;

bool IsSame(CRowStore& store, const CRowValue& value, const Plain& plain) {
    if (value.GetType() != plain.type || value.GetCCSID() != plain.ccsid ||
        value.GetLength() != plain.bytes.size())
        return false;
    if (plain.type == rowInteger)
        return value.GetInteger() == plain.integer;
    if (plain.type == rowReal)
        return value.GetReal() == plain.real;
    for (std::size_t at = 0; at < plain.bytes.size();) {
        const auto piece = store.GetPiece(value, static_cast<DWORD>(at));
        if (piece.empty() || std::memcmp(piece.data(), plain.bytes.data() + at, piece.size()) != 0)
            return false;
        at += piece.size();
    }
    return store.GetPiece(value, value.GetLength()).empty() &&
           (value.IsLong() || value.GetText() == plain.bytes);
}

void ExpectRow(CRowStore& store, DWORD row, const PlainRow& plain) {
    for (std::size_t column = 0; column < plain.size(); ++column)
        ASSERT_TRUE(IsSame(store, store.GetValue(row, static_cast<int>(column)), plain[column]))
            << "row " << row << ", column " << column;
}

void ExpectAll(CRowStore& store, const Model& model) {
    ASSERT_EQ(store.GetRowCount(), model.size());
    for (DWORD row = 0; row < model.size(); ++row)
        ASSERT_NO_FATAL_FAILURE(ExpectRow(store, row, *model[row]));
}

class RowStoreTest : public StoreFixture {
protected:
    static constexpr int kColumns = 5;
    static constexpr DWORD kPages = 16, kSegment = 3 * kPage;

    std::size_t Random(std::size_t below) { return m_random() % below; }

    Plain RandomValue() {
        static constexpr LONGLONG kIntegers[] = {0,     -1,         -2,        46,       47,
                                                 127,   128,        -128,      -129,     32767,
                                                 32768, 0x7FFFFFFF, INT64_MAX, INT64_MIN};
        static constexpr std::size_t kLengths[] = {0,    31,   32,        127,   128,       129,
                                                   4096, 4097, kPage - 1, kPage, kPage + 1, 100000};
        Plain plain;
        plain.type = static_cast<ERowValueType>(Random(6));
        if (plain.type == rowInteger) {
            plain.integer = Random(2) ? kIntegers[Random(std::size(kIntegers))]
                                      : static_cast<LONGLONG>(m_random()) >> Random(64);
        } else if (plain.type == rowReal) {
            plain.real = static_cast<double>(m_random()) / 3;
        } else if (plain.type != rowNull) {
            const std::size_t length = Random(20)   ? Random(40)
                                       : Random(20) ? Random(200)
                                                    : kLengths[Random(std::size(kLengths))];
            plain.bytes.assign(length, static_cast<char>('a' + Random(26)));
            for (std::size_t i = 0; i < length; i += 61)
                plain.bytes[i] = static_cast<char>(m_random());
            plain.ccsid = plain.type == rowText && Random(3) == 0 ? 37 : 0;
        }
        return plain;
    }
    PlainRow RandomRow() {
        PlainRow row(kColumns);
        std::generate(row.begin(), row.end(), [this] { return RandomValue(); });
        return row;
    }

    /// As a whole or in pieces.
    void Put(CRowStore& store, const Plain& plain) {
        if (plain.type < rowDecimal || Random(3) != 0) {
            store.Append(plain.Value());
            return;
        }
        store.BeginValue(plain.type, plain.ccsid);
        const auto* bytes = reinterpret_cast<const BYTE*>(plain.bytes.data());
        for (std::size_t at = 0; at < plain.bytes.size();) {
            const std::size_t count =
                std::min(plain.bytes.size() - at, 1 + Random(plain.bytes.size()));
            store.AppendPiece({bytes + at, count});
            at += count;
        }
        store.EndValue();
    }
    void Put(CRowStore& store, const PlainRow& row) {
        store.BeginRow();
        for (const Plain& plain : row)
            Put(store, plain);
        store.EndRow();
    }

    /// One operation on both, of which the store's may throw: then neither has changed.
    void Operate(CRowStore& store, Model& model) {
        const std::size_t kind = Random(100);
        const DWORD row = static_cast<DWORD>(Random(model.empty() ? 1 : model.size()));
        if (model.empty() || kind < 50) {
            const PlainRow& added = m_rows.emplace_back(RandomRow());
            Put(store, added);
            model.push_back(&added);
        } else if (kind < 80) {
            ASSERT_NO_FATAL_FAILURE(ExpectRow(store, row, *model[row]));
        } else if (kind < 93) {
            const auto column = static_cast<int>(Random(kColumns));
            Plain value = RandomValue();
            if (Random(2)) {
                store.UpdateValue(row, column, value.Value());
            } else {
                store.BeginUpdate(row, column);
                Put(store, value);
                store.EndUpdate();
            }
            PlainRow& changed = m_rows.emplace_back(*model[row]);
            changed[static_cast<std::size_t>(column)] = std::move(value);
            model[row] = &changed;
        } else if (kind < 98) {
            store.DeleteRow(row);
            model.erase(model.begin() + row);
        } else { // a row that is given up
            store.BeginRow();
            for (std::size_t i = Random(kColumns); i > 0; --i)
                Put(store, RandomValue());
            store.CancelRow();
        }
        ASSERT_LE(store.GetResidentPageCount(), kPages);
    }

    std::mt19937_64 m_random{1};
    std::deque<PlainRow> m_rows; ///< those of all models
};

TEST_F(RowStoreTest, EqualsPlainVectors) {
    CRowStore store(kColumns, kPages, kSegment);
    Model model;
    for (int i = 0; i < 200000; ++i) {
        m_system.SetTick(m_tick += i % 7 == 0);
        ASSERT_NO_FATAL_FAILURE(Operate(store, model)) << "operation " << i;
    }
    ASSERT_NO_FATAL_FAILURE(ExpectAll(store, model));
    store.ReleasePages();
    EXPECT_LE(store.GetResidentPageCount(), 4u);
    ASSERT_NO_FATAL_FAILURE(ExpectAll(store, model));
    store.Empty();
    EXPECT_EQ(FileCount(), 0u);
    ASSERT_NO_FATAL_FAILURE(ExpectAll(store, {}));
    model.clear();
    for (int i = 0; i < 100; ++i)
        Operate(store, model);
    ExpectAll(store, model);
}

/// Any call may fail, once or from then on. The rows are those of before then; while nothing can be
/// written they can all be read; and once there is room again the operations go on.
TEST_F(RowStoreTest, FailingCallsLoseNoRow) {
    const Fault kinds[] = {{.call = Call::Any},
                           {.call = Call::Any, .fromThenOn = true},
                           {.call = Call::Write, .fromThenOn = true, .error = ENOSPC},
                           {.call = Call::Write, .error = ENOSPC, .kind = Fault::Kind::Shorten},
                           {.call = Call::Read, .kind = Fault::Kind::Shorten},
                           {.call = Call::Seek, .kind = Fault::Kind::Misplace},
                           {.call = Call::Open, .fromThenOn = true, .error = EMFILE}};
    unsigned failures = 0;
    for (Fault fault : kinds) {
        CRowStore store(kColumns, 8, kSegment);
        Model model;
        for (int round = 0; round < 60; ++round) {
            fault.at = 1 + static_cast<unsigned>(Random(20));
            m_system.SetTick(++m_tick);
            m_system.Inject(fault);
            for (int i = 0; i < 200; ++i) {
                const int cause = CauseOf([&] { Operate(store, model); });
                failures += cause != -1;
                if (cause != -1 && (fault.call == Call::Write || fault.call == Call::Open) &&
                    Random(8) == 0) {
                    ASSERT_NO_FATAL_FAILURE(ExpectAll(store, model)) << "nothing can be written";
                }
            }
            m_system.Inject(std::nullopt);
            ASSERT_NO_FATAL_FAILURE(ExpectAll(store, model)) << "round " << round;
            EXPECT_EQ(CauseOf([&] { Put(store, RandomRow()); }), -1);
            model.push_back(nullptr);
            store.DeleteRow(store.GetRowCount() - 1);
            model.pop_back();
        }
        store.Empty();
        for (const std::string& name : m_folder.Names()) // whose removal has failed
            std::filesystem::remove(m_folder.File(name.c_str()));
    }
    EXPECT_GT(failures, 100u);
}

Plain Bytes(std::size_t length, char fill) {
    return {.type = rowBytes, .bytes = std::string(length, fill)};
}

TEST_F(RowStoreTest, RowsOfAnyWidth) {
    for (const std::size_t columns : {0, 1, 2000, CRowStore::kMaxColumns}) {
        for (const std::size_t length : {0, 3, 16, 17, 40, 4096, 4097}) {
            if (columns * length > 10'000'000)
                continue;
            CRowStore store(static_cast<int>(columns), kPages, kSegment);
            Model model;
            for (char fill = 'a'; fill < 'd'; ++fill) {
                model.push_back(&m_rows.emplace_back(columns, Bytes(length, fill)));
                for (std::size_t i = 0; i < columns; i += 7)
                    m_rows.back()[i].bytes += fill;
                Put(store, m_rows.back());
            }
            ASSERT_NO_FATAL_FAILURE(ExpectAll(store, model)) << columns << ", " << length;
            if (columns == 0)
                continue;
            const auto last = static_cast<int>(columns) - 1; // and from right to left
            for (int column = last; column >= std::max(0, last - 2); --column)
                EXPECT_TRUE(IsSame(store, store.GetValue(1, column),
                                   (*model[1])[static_cast<std::size_t>(column)]));
            PlainRow& changed = m_rows.emplace_back(*model[1]);
            changed.back() = Bytes(100, 'x');
            store.UpdateValue(1, last, changed.back().Value());
            model[1] = &changed;
            ASSERT_NO_FATAL_FAILURE(ExpectAll(store, model)) << columns << ", " << length;
        }
    }
}

TEST_F(RowStoreTest, ManyLongValuesTakeFewPagesAndFiles) {
    CRowStore store(1, kPages);
    const std::string text(100'000, 'x');
    for (int i = 0; i < 1000; ++i) {
        store.BeginRow();
        store.AppendText(text);
        store.EndRow();
        ASSERT_LE(store.GetResidentPageCount(), kPages);
    }
    EXPECT_EQ(FileCount(), 1u);
    for (DWORD row = 0; row < 1000; row += 37) {
        const CRowValue value = store.GetValue(row, 0);
        EXPECT_TRUE(value.IsLong() && value.GetBytes().empty());
        std::string copy(text.size() + 1, '-');
        EXPECT_EQ(store.CopyTo(value, 0, reinterpret_cast<BYTE*>(copy.data()),
                               static_cast<DWORD>(copy.size())),
                  text.size());
        EXPECT_EQ(copy, text + '-');
        ASSERT_LE(store.GetResidentPageCount(), kPages);
    }
    EXPECT_LE(m_system.OpenHandles().size(), 3u);
}

/// What is appended may be a value of the store, whose page leaves memory meanwhile.
TEST_F(RowStoreTest, ValuesAreCopiedWithinAStore) {
    CRowStore store(1, 8, kSegment);
    Model model;
    const std::size_t lengths[] = {0, 40, 4096, 4097, kPage, 5 * kPage + 9, 100'000};
    for (std::size_t i = 0; i < 140; ++i) {
        model.push_back(&m_rows.emplace_back(1, Bytes(lengths[i % 7], static_cast<char>(i))));
        Put(store, *model.back());
    }
    for (DWORD row = 0; row < 140; ++row) {
        const CRowValue value = store.GetValue(row, 0);
        store.BeginRow();
        if (value.IsLong()) {
            store.BeginValue(rowBytes);
            for (DWORD at = 0; at < value.GetLength();) {
                const auto piece = store.GetPiece(value, at);
                store.AppendPiece(piece);
                at += static_cast<DWORD>(piece.size());
            }
            store.EndValue();
        } else {
            store.Append(value);
        }
        store.EndRow();
        model.push_back(model[row]);
    }
    ASSERT_NO_FATAL_FAILURE(ExpectAll(store, model));
    for (DWORD row = 0; row < 7; ++row)
        store.UpdateValue(row, 0, store.GetValue(2, 0));
    for (DWORD row = 0; row < 7; ++row)
        model[row] = model[2];
    ASSERT_NO_FATAL_FAILURE(ExpectAll(store, model));
}

TEST_F(RowStoreTest, CallsOutOfOrderAreRefused) {
    for (const int columns : {-1, CRowStore::kMaxColumns + 1})
        EXPECT_EQ(CauseOf([&] { CRowStore store(columns); }), 0);
    CRowStore store(2, kPages, kSegment);
    const auto refuses = [&](auto action) { EXPECT_EQ(CauseOf([&] { action(); }), 0); };
    refuses([&] { store.AppendNull(); });
    refuses([&] { store.EndRow(); });
    refuses([&] { store.EndUpdate(); });
    store.BeginRow();
    store.AppendText(std::string(5 * kPage, 'y'));
    store.CancelRow(); // the first value that was stored
    store.BeginRow();
    store.AppendInteger(7);
    store.EndRow(); // the second is NULL
    refuses([&] {
        store.BeginRow();
        for (int i = 0; i < 3; ++i)
            store.AppendNull();
    });
    refuses([&] { store.EndRow(); }); // the row was given up
    refuses([&] {
        store.BeginRow();
        store.BeginValue(rowInteger);
    });
    refuses([&] {
        store.BeginRow();
        store.BeginValue(static_cast<ERowValueType>(rowBytes + 1));
    });
    for (const bool isEnd : {false, true})
        refuses([&] {
            store.BeginRow();
            isEnd ? store.EndValue() : store.AppendPiece({});
        });
    store.BeginRow();
    store.BeginValue(rowBytes);
    const BYTE byte = 0; // which is not read
    EXPECT_EQ(CauseOf([&] { store.AppendPiece({&byte, std::size_t{1} << 32}); }), 6);
    refuses([&] {
        store.BeginRow();
        store.BeginValue(rowText);
        store.AppendNull();
    });
    refuses([&] {
        store.BeginRow();
        store.BeginValue(rowText);
        store.EndRow();
    });
    refuses([&] {
        store.BeginRow();
        store.EndUpdate();
    });
    store.BeginRow();
    refuses([&] { store.DeleteRow(0); });
    refuses([&] { store.BeginUpdate(0, 0); });
    store.AppendText(std::string(5000, 'x'));
    store.EndRow();
    const CRowValue value = store.GetValue(1, 0);
    refuses([&] {
        store.BeginRow();
        store.Append(value); // long: its bytes are the store's
    });
    refuses([&] { store.GetValue(2, 0); });
    refuses([&] { store.GetValue(0, 2); });
    refuses([&] { store.GetValue(0, -1); });
    refuses([&] { store.DeleteRow(2); });
    refuses([&] { store.UpdateValue(2, 0, {}); });
    refuses([&] { store.UpdateValue(0, 2, {}); });
    refuses([&] {
        store.BeginUpdate(0, 0);
        store.EndUpdate();
    });
    refuses([&] {
        store.BeginUpdate(0, 0);
        store.BeginValue(rowText);
        store.EndUpdate();
    });
    refuses([&] { store.BeginUpdate(0, -1); });
    std::array<BYTE, 10> part;
    EXPECT_EQ(store.CopyTo(value, 0, part.data(), 10), 10u); // of more than that
    EXPECT_EQ(part[9], 'x');
    EXPECT_EQ(store.GetRowCount(), 2u);
    EXPECT_EQ(store.GetValue(0, 0).GetInteger(), 7);
    EXPECT_TRUE(store.GetValue(0, 1).IsNull());
    store.Empty();
    refuses([&] { store.GetPiece(value, 0); });
}

} // namespace
} // namespace vnbytstr::test
