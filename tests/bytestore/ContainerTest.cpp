// What stores and streams have in common, wherever the bytes lie, against a plain vector of bytes.
#include "tests/bytestore/ContainerModel.h"

#include "vnbytstr/Ccsid.h"
#include "vnbytstr/DES.h"

#include <algorithm>
#include <cstdlib>

namespace vnbytstr::test {
namespace {

/// Where the bytes lie at the beginning.
struct InMemory {
    static constexpr DWORD kLargest = 3000;
    static constexpr DWORD kLimit = 0x40000;
    CByteStream value;
};
struct SpillingStream {
    static constexpr DWORD kLargest = 24 * kPage;
    static constexpr DWORD kLimit = 0x40000;
    CByteStream value;
};
class OpenStore : public CByteStore {
public:
    using CByteStore::GetPageFromPageNum;
};
struct InStore {
    static constexpr DWORD kLargest = 24 * kPage;
    static constexpr DWORD kLimit = 0;
    OpenStore value;
};
struct OnWritableBuffer {
    static constexpr DWORD kLargest = 40000;
    static constexpr DWORD kLimit = 0;
    OnWritableBuffer() { value.SetWritableBuffer(buffer.data(), 0, kLargest); }
    Bytes buffer = Bytes(kLargest);
    CByteStream value;
};

template <class Kind>
class ContainerTest : public StoreFixture {
protected:
    using Value = decltype(Kind::value);

    DWORD Random(DWORD below) { return below ? static_cast<DWORD>(m_random() % below) : 0; }
    Bytes RandomBytes(DWORD most) {
        const DWORD size = Random(8) == 0 ? Random(most) : Random(40);
        Bytes bytes(size);
        for (BYTE& byte : bytes)
            byte = static_cast<BYTE>(Random(4)); // few values, so that patterns occur
        return bytes;
    }
    DWORD Room(const Model& model) const { return Kind::kLargest - model.Length(); }

    void Change(Model& model, Value& value);
    void Extend(Model& model, Value& value);
    void Read(const Model& model, Value& value);
    void Files(Model& model, Value& value);
    void Check(const Model& model, Value& value);
    void CopyFromOwnPage(Model& model, Value& value);
    void Convert(Model& model, Value& value);
    static Bytes Retained(Value& value) {
        DWORD start, end;
        value.GetRange(start, end);
        Bytes bytes(end - start);
        if (!bytes.empty())
            value.CopyTo(start, bytes.data(), 0, 0);
        return bytes;
    }

    std::minstd_rand m_random{42};
};

template <class Kind>
void ContainerTest<Kind>::Extend(Model& model, Value& value) {
    Bytes bytes = RandomBytes(3 * kPage);
    if (bytes.size() > Room(model))
        bytes.resize(Room(model));
    switch (Random(6)) {
    case 0:
        if (Room(model) > 0) {
            model.Allocate(model.Length() + 1);
            value.ConcatByte(9);
            model.bytes.push_back(9);
        }
        break;
    case 1:
        if (Room(model) > 1) {
            model.Allocate(model.Length() + 2);
            value.ConcatWord(0x0102);
            model.Put(model.Length(), {1, 2});
        }
        break;
    case 2: {
        std::string hex;
        for (BYTE byte : bytes) {
            hex += Random(3) ? "" : "  ";
            hex += "0123456789abcdef"[byte >> 4];
            hex += "0123456789ABCDEF"[byte & 15];
        }
        value.CopyFromHex(Random(99), (hex + (Random(2) ? "1" : "x00")).c_str());
        for (std::size_t done = 0; done < bytes.size(); done += 65536) // piece by piece
            model.Allocate(model.Length() +
                           static_cast<DWORD>(std::min<std::size_t>(done + 65536, bytes.size())));
        model.Put(model.Length(), bytes);
        break;
    }
    case 3: { // itself, or a part of itself
        const DWORD from = model.start + Random(model.Length() - model.start + 1);
        const DWORD available = model.Length() - from;
        const DWORD count = std::min(Random(available + 1), Room(model));
        if (count > 0) {
            const Bytes part(model.bytes.begin() + from, model.bytes.begin() + from + count);
            const DWORD to = from + Random(model.Length() - from + 1);
            if (to + count <= Kind::kLargest) {
                value.CopyFrom(to, value, from, count);
                model.Allocate(to + count);
                model.Put(to, part);
            }
        }
        break;
    }
    case 4: {
        CByteStream other(bytes.data(), static_cast<DWORD>(bytes.size()));
        value.Concat(other);
        model.Allocate(model.Length() + other.GetLength());
        model.Put(model.Length(), bytes);
        break;
    }
    default:
        Append(value, bytes);
        model.Allocate(model.Length() + static_cast<DWORD>(bytes.size()));
        model.Put(model.Length(), bytes);
    }
}

template <class Kind>
void ContainerTest<Kind>::Change(Model& model, Value& value) {
    // Below the start bytes are undefined, so they are left alone.
    const DWORD index = model.start + Random(model.Length() - model.start + 1);
    const ULONGLONG number = static_cast<ULONGLONG>(m_random()) << 32 | m_random();
    const auto put = [&](int width) {
        Bytes bytes;
        for (int i = width - 1; i >= 0; --i)
            bytes.push_back(static_cast<BYTE>(number >> (8 * i)));
        model.ExtendForSet(index + static_cast<DWORD>(width));
        model.Put(index, bytes);
    };
    if (Room(model) < 8)
        return;
    switch (Random(7)) {
    case 0:
        value.SetByte(index, static_cast<BYTE>(number));
        return put(1);
    case 1:
        value.SetWord(index, static_cast<WORD>(number));
        return put(2);
    case 2:
        value.SetDWord(index, static_cast<DWORD>(number));
        return put(4);
    case 3:
        value.SetInt48(index, static_cast<LONGLONG>(number));
        return put(6);
    case 4:
        value.SetInt64(index, static_cast<LONGLONG>(number));
        return put(8);
    default: {
        Bytes bytes = RandomBytes(2 * kPage);
        bytes.resize(std::min<std::size_t>(bytes.size(), Kind::kLargest - index));
        value.CopyFrom(index, bytes.data(), static_cast<DWORD>(bytes.size()));
        model.Allocate(index + static_cast<DWORD>(bytes.size()));
        model.Put(index, bytes);
    }
    }
}

template <class Kind>
void ContainerTest<Kind>::Read(const Model& model, Value& value) {
    const DWORD index = model.start + Random(model.Length() - model.start + 1);
    ASSERT_EQ(value.GetByte(index), model.Wide(index, 1));
    ASSERT_EQ(value.GetWord(index), model.Wide(index, 2));
    ASSERT_EQ(value.GetDWord(index), model.Wide(index, 4));
    ASSERT_EQ(static_cast<ULONGLONG>(value.GetInt48(index)), model.Wide(index, 6));
    ASSERT_EQ(static_cast<ULONGLONG>(value.GetInt64(index)), model.Wide(index, 8));
    ASSERT_EQ(CauseOf([&] { value.GetDWord(model.Length() + 1); }), 0);
    for (DWORD at = index; at < model.Length();) {
        const std::span<const BYTE> piece = value.GetPiece(at);
        ASSERT_FALSE(piece.empty());
        ASSERT_LE(at + piece.size(), model.bytes.size());
        ASSERT_TRUE(std::equal(piece.begin(), piece.end(), model.bytes.begin() + at));
        at += static_cast<DWORD>(piece.size());
    }
    ASSERT_TRUE(value.GetPiece(model.Length()).empty());

    const DWORD count = Random(model.Length() - index + 1);
    CByteStream slice = value.Mid(index, count);
    ASSERT_EQ(Content(slice),
              Bytes(model.bytes.begin() + index, model.bytes.begin() + index + count));
    if (count > 0) {
        Bytes out(count + 5, 0xEE);
        value.CopyTo(index, out.data(), count, static_cast<DWORD>(out.size()));
        ASSERT_TRUE(std::equal(out.begin(), out.begin() + count, model.bytes.begin() + index));
        ASSERT_EQ(Bytes(out.end() - 5, out.end()), Bytes(5, 0));
        CString hex;
        value.CopyToHex(index, hex, count);
        CByteStream back(static_cast<const char*>(hex));
        ASSERT_TRUE(back == slice);
    }
    if (model.start > 0) {
        ASSERT_EQ(CauseOf([&] { value.CopyTo(model.start - 1, Bytes(1).data(), 1, 1); }),
                  model.start - 1 < model.Length() ? 0 : -1);
        ASSERT_EQ(CauseOf([&] { value.GetPiece(model.start - 1); }), 0);
    }
    const CByteStream pattern = Random(3) ? value.Mid(index, Random(6)) : CByteStream("0102030300");
    Bytes bytes(pattern.GetLength());
    if (!bytes.empty())
        pattern.CopyTo(0, bytes.data(), 0, 0);
    const DWORD from = Random(model.Length() + 2);
    ASSERT_EQ(value.Find(pattern, from), model.Find(bytes, from));
    ASSERT_EQ(value.Find(slice, from), model.Find(Content(slice), from));
}

template <class Kind>
void ContainerTest<Kind>::Files(Model& model, Value& value) {
    const std::string name = m_folder.File("file");
    const auto check = [&] { // bytes below the start are undefined in a file too
        const std::string content = m_folder.Read("file");
        ASSERT_EQ(content.size(), model.bytes.size());
        ASSERT_TRUE(content.substr(model.start) == AsText(model.bytes).substr(model.start));
    };
    value.CopyToFile(name.c_str());
    check();
    value.Flush();
    if (Random(3) == 0) {
        value.SaveToFile(name.c_str());
        check();
        model.Empty();
    }
}

/// A page of the value's own as the source, which may have to leave memory on the way.
template <class Kind>
void ContainerTest<Kind>::CopyFromOwnPage(Model& model, Value& value) {
    if (model.start >= model.Length())
        return;
    constexpr bool anyPage = std::is_same_v<Value, OpenStore>;
    const DWORD from = model.start + Random(model.Length() - model.start);
    const DWORD page = from / kPage, position = from % kPage;
    const DWORD count =
        std::min({Random(kPage), kPage - position, model.Length() - from, Room(model)});
    const DWORD to = Random(2) ? model.Length() : from + Random(model.Length() - from + 1);
    const Bytes part(model.bytes.begin() + from, model.bytes.begin() + from + count);
    const BYTE* source = nullptr;
    if constexpr (anyPage)
        source = value.GetPageFromPageNum(page)->GetData() + position;
    else if (value.IsAllInBuffer() || page == 0)
        source = value.GetFirstPage() + from;
    if (!source || to + count > Kind::kLargest)
        return;
    if (to == model.Length())
        value.Concat(source, count);
    else
        value.CopyFrom(to, source, count);
    model.Allocate(to + count);
    model.Put(to, part);
}

/// In place: enciphers or deciphers, or translates from one set of single bytes to another.
template <class Kind>
void ContainerTest<Kind>::Convert(Model& model, Value& value) {
    const CByteStream key("3132333435363738");
    Bytes bytes(model.bytes.begin() + model.start, model.bytes.end());
    const bool encrypt = Random(2) == 0;
    const auto mode = Random(2) ? CDES::eCBC : CDES::eECB;
    if (Random(2) || bytes.size() % 8 != 0) {
        Bytes out(bytes.size());
        auto room = static_cast<DWORD>(out.size());
        ASSERT_TRUE(::TranslateCCSID(819, 37, bytes.data(), room, out.data(), &room));
        bytes = out;
        ASSERT_EQ(value.TranslateCCSID(819, 37, value), 1);
    } else {
        for (std::size_t at = 0; at < bytes.size(); at += kPage) {
            CDES cipher("12345678");
            cipher.SetInitializationVector("12345678");
            cipher.SetMode(mode);
            auto count = static_cast<int>(std::min<std::size_t>(kPage, bytes.size() - at));
            BYTE* piece = bytes.data() + at;
            encrypt ? cipher.Encrypt(piece, count, piece, count)
                    : cipher.Decrypt(piece, count, piece, count);
        }
        if constexpr (std::is_same_v<Value, OpenStore>)
            ASSERT_EQ(encrypt ? value.Encrypt(key, key, mode, false, value)
                              : value.Decrypt(key, key, mode, false, value),
                      1);
        else
            ASSERT_EQ(encrypt ? value.Encrypt(key, key, mode, false)
                              : value.Decrypt(key, key, mode, false),
                      1);
    }
    model.Empty();
    model.bytes = bytes;
    if constexpr (std::is_same_v<Value, CByteStream>) {
        // How the result grew is not prescribed: its block's size decides about the next moves.
        if (!value.IsAllInBuffer())
            model.limit = 0;
        if (model.limit != 0) {
            value.ReleaseBuffer(0xFFFFFFFF);
            model.capacity = value.GetLength();
            bytes.empty() ? value.Empty() : value.ReleaseBuffer(static_cast<DWORD>(bytes.size()));
        }
    }
    ASSERT_TRUE(Retained(value) == bytes);
}

template <class Kind>
void ContainerTest<Kind>::Check(const Model& model, Value& value) {
    ASSERT_EQ(value.GetLength(), model.Length());
    DWORD start, end;
    value.GetRange(start, end);
    ASSERT_EQ(start, model.start);
    ASSERT_EQ(end, model.Length());
    ASSERT_EQ(value.GetCO(), model.cursor);
    ASSERT_EQ(value.IsEmpty() != 0, model.start >= model.Length());
    ASSERT_EQ(value.GetRemaining(), model.Length() - model.cursor);
}

using Kinds = ::testing::Types<InMemory, SpillingStream, InStore, OnWritableBuffer>;
TYPED_TEST_SUITE(ContainerTest, Kinds);

/// VNBYTSTR_TEST_OPERATIONS sets the number of operations.
long Operations() {
    const char* wanted = std::getenv("VNBYTSTR_TEST_OPERATIONS");
    return wanted ? std::atol(wanted) : 200000;
}

TYPED_TEST(ContainerTest, RandomOperationsAgreeWithAModel) {
    TypeParam kind;
    auto& value = kind.value;
    Model model;
    model.limit = TypeParam::kLimit;
    const long operations = Operations() / 3;
    for (long step = 0; step < operations; ++step) {
        SCOPED_TRACE(step);
        if (this->Random(4) == 0)
            this->m_system.SetTick(this->m_tick += this->Random(3));
        const DWORD choice = this->Random(24);
        switch (choice < 5 ? choice : choice < 9 ? 5 : choice < 13 ? 6 : 7) {
        case 0: {
            const DWORD to = model.start + this->Random(model.Length() - model.start + 1);
            const DWORD from = to + this->Random(model.Length() - to + 1);
            if (this->Random(8) == 0) {
                value.Truncate(from + 1);
                model.Truncate(from + 1);
            }
            value.Shift(to, from);
            model.Shift(to, from);
            break;
        }
        case 1:
            if (this->Random(20) == 0) {
                const DWORD index = this->Random(model.Length() + 9);
                value.DiscardUpTo(index);
                model.start = std::max(model.start, std::min(index, model.Length()));
            }
            break;
        case 2: {
            const DWORD cursor = model.start + this->Random(model.Length() - model.start + 1);
            value.SetCurrentOffset(cursor);
            model.cursor = cursor;
            if (this->Random(4) == 0) {
                value.ShiftCurrent();
                model.Shift(model.start, model.cursor);
                model.cursor = model.start;
            }
            break;
        }
        case 3:
            if (this->Random(40) == 0)
                this->Files(model, value);
            else if (this->Random(200) == 0)
                this->Convert(model, value);
            else if (this->Random(4) == 0)
                this->CopyFromOwnPage(model, value);
            break;
        case 4:
            if (model.Length() > TypeParam::kLargest / 8 * 7 && this->Random(40) == 0) {
                value.Empty();
                model.Empty();
            }
            break;
        case 5:
            if (this->Random(model.Length() > 8 * kPage ? 20 : 2) == 0)
                this->Read(model, value);
            break;
        case 6:
            this->Extend(model, value);
            break;
        default:
            this->Change(model, value);
        }
        this->Check(model, value);
        if (step % 1000 == 0) {
            ASSERT_TRUE(this->Retained(value) ==
                        Bytes(model.bytes.begin() + model.start, model.bytes.end()));
        }
        if (::testing::Test::HasFatalFailure())
            return;
    }
}

TYPED_TEST(ContainerTest, HexTextStopsAtItsRules) {
    TypeParam kind;
    auto& value = kind.value;
    value.CopyFromHex(0, "010203");
    value.CopyFromHex(0, " 0a1B ff");
    EXPECT_EQ(Content(value), (Bytes{1, 2, 3, 0x0A, 0x1B, 0xFF}));
    for (const char* nothing :
         {"", "   ", "0x12", "1", " 1 2", "\t01", static_cast<const char*>(nullptr)})
        value.CopyFromHex(0, nothing);
    EXPECT_EQ(value.GetLength(), 6u);
    value.CopyFromHex(0, "4 4");
    value.CopyFromHex(0, "44 5");
    EXPECT_TRUE(value == "010203 0A1BFF 44");
    EXPECT_TRUE(value != "010203 0A1BFF 45");

    std::string digits(20, '*');
    value.CopyToHex(5, digits.data(), 2, 20);
    EXPECT_EQ(digits.substr(0, 6), std::string("FF44\0*", 6));
    EXPECT_EQ(CauseOf([&] { value.CopyToHex(0, digits.data(), 7, 13); }), 0);
    EXPECT_EQ(CauseOf([&] { value.CopyToHex(8, digits.data(), 0, 20); }), 0);
    EXPECT_EQ(CauseOf([&] { value.CopyToHex(0, digits.data(), 1, 0x80000000); }), 0);
}

} // namespace
} // namespace vnbytstr::test
