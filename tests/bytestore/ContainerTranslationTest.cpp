// Translation between coded character sets by stores and streams, and the messages of their errors.
#include "tests/bytestore/StoreFixture.h"

#include "src/charset/CodePage.h"
#include "vnbytstr/Ccsid.h"

namespace vnbytstr::test {
namespace {

constexpr WORD kUtf8 = 1208, kUtf16 = 1200, kUtf32 = 1232, kEbcdic = 37;

class ContainerTranslationTest : public StoreFixture {
protected:
    ContainerTranslationTest() {
        // Three-byte characters, so that some lie across every slice and page.
        while (m_text.size() < 11 * kPage)
            m_text += "a\xE2\x82\xAC\xC3\xA4" + std::string(m_text.size() % 5, 'x');
        m_inMemory.Concat(Data(), 600);
        m_spilled.Concat(Data(), Length());
        m_store.Concat(Data(), Length());
    }
    const BYTE* Data() const { return reinterpret_cast<const BYTE*>(m_text.data()); }
    DWORD Length() const { return static_cast<DWORD>(m_text.size()); }
    /// The whole text at once.
    static Bytes Whole(const BYTE* data, DWORD length, WORD from, WORD to,
                       STranslationReport* report = nullptr) {
        Bytes out(length * 4 + 16);
        auto room = static_cast<DWORD>(out.size());
        EXPECT_TRUE(::TranslateCCSID(from, to, data, length, out.data(), &room, nullptr,
                                     translateSubstitute, report));
        out.resize(room);
        return out;
    }

    std::string m_text;
    CByteStream m_inMemory, m_spilled;
    CByteStore m_store;
};

TEST_F(ContainerTranslationTest, StopsWhereAskedTo) {
    const auto check = [&](auto& value) {
        const Bytes before = Content(value);
        STranslationReport report;
        std::remove_reference_t<decltype(value)> target("0102");
        EXPECT_EQ(value.TranslateCCSID(kUtf8, kEbcdic, target, &report, translateStop), 0);
        EXPECT_EQ(report.ullFirstUntranslatable, 1u);
        EXPECT_TRUE(target.IsEmpty());
        EXPECT_EQ(value.TranslateCCSID(kUtf8, kEbcdic, value, nullptr, translateStop), 0);
        EXPECT_TRUE(Content(value) == before);
        BYTE out[16];
        DWORD room = sizeof out;
        EXPECT_EQ(value.TranslateCCSID(0, 4, out, &room, kUtf8, kEbcdic, nullptr, translateStop),
                  0);
        room = sizeof out;
        EXPECT_EQ(value.TranslateCCSID(0, 1, out, &room, kUtf8, kEbcdic, nullptr, translateStop),
                  1);
        EXPECT_EQ(value.TranslateCCSID(kUtf8, kUtf16, value, nullptr, translateStop), 1);
        const ScopedCodePage page(1252);
        CString text("kept");
        EXPECT_EQ(value.TranslateCCSID(kUtf16, text, nullptr, translateStop), 1); // has a euro
    };
    check(m_inMemory);
    check(m_spilled);
    check(m_store);
}

TEST_F(ContainerTranslationTest, EveryFormAgreesWithTheWholeText) {
    ASSERT_FALSE(m_spilled.IsAllInBuffer());
    const auto check = [&](auto& value) {
        const Bytes source = Content(value);
        const auto length = static_cast<DWORD>(source.size());
        for (const WORD to : {kUtf16, kUtf32, kEbcdic}) {
            STranslationReport whole, report;
            const Bytes expected = Whole(source.data(), length, kUtf8, to, &whole);
            // Into another container, with what it held before dropped.
            std::remove_reference_t<decltype(value)> target("0102");
            ASSERT_EQ(value.TranslateCCSID(kUtf8, to, target, &report), 1);
            EXPECT_TRUE(Content(target) == expected);
            EXPECT_EQ(report.ullProduced, whole.ullProduced);
            EXPECT_EQ(report.ullUntranslatable, whole.ullUntranslatable);
            EXPECT_EQ(report.ullFirstUntranslatable, whole.ullFirstUntranslatable);
            // Into a buffer: too small by one, by far, just enough.
            Bytes out(expected.size());
            auto room = static_cast<DWORD>(out.size() - 1);
            EXPECT_EQ(value.TranslateCCSID(out.data(), &room, kUtf8, to), 0);
            EXPECT_EQ(room, expected.size());
            room = 10;
            EXPECT_EQ(value.TranslateCCSID(out.data(), &room, kUtf8, to), 0);
            EXPECT_EQ(room, expected.size());
            EXPECT_EQ(value.TranslateCCSID(out.data(), &room, kUtf8, to), 1);
            EXPECT_TRUE(out == expected);
            // A range of it; too long means up to the end.
            const Bytes part = Whole(source.data() + 1, 500 - 1, kUtf8, to);
            room = static_cast<DWORD>(out.size());
            EXPECT_EQ(value.TranslateCCSID(1, 499, out.data(), &room, kUtf8, to), 1);
            EXPECT_EQ(Bytes(out.begin(), out.begin() + room), part);
            for (const DWORD count : {0u, 0xFFFFFFFFu}) {
                room = static_cast<DWORD>(out.size());
                EXPECT_EQ(value.TranslateCCSID(length - 9, count, out.data(), &room, kUtf8, to), 1);
                EXPECT_EQ(Bytes(out.begin(), out.begin() + room),
                          Whole(source.data() + length - 9, 9, kUtf8, to));
            }
            EXPECT_EQ(
                CauseOf([&] { value.TranslateCCSID(length + 1, 0, out.data(), &room, kUtf8, to); }),
                0);
        }
        CString text;
        EXPECT_EQ(value.TranslateCCSID(kUtf8, text), 1);
        const Bytes native = Whole(source.data(), length, kUtf8, GetNativeCCSID());
        EXPECT_TRUE(std::string(text, static_cast<std::size_t>(text.GetLength())) ==
                    AsText(native));
        // An unknown pair: 0, nothing in the target, the source as it was.
        std::remove_reference_t<decltype(value)> target("0102");
        DWORD room = 5;
        EXPECT_EQ(value.TranslateCCSID(kUtf8, 9, target), 0);
        EXPECT_TRUE(target.IsEmpty());
        EXPECT_EQ(value.TranslateCCSID(Bytes(5).data(), &room, kUtf8, 9), 0);
        EXPECT_EQ(room, 0u);
        EXPECT_EQ(value.TranslateCCSID(9, text), 0);
        EXPECT_EQ(std::remove_reference_t<decltype(value)>().TranslateCCSID(kUtf8, text), 1);
        EXPECT_TRUE(text.IsEmpty());
        EXPECT_EQ(value.TranslateCCSID(kUtf8, 9, value), 0);
        EXPECT_TRUE(Content(value) == source);
        // Onto itself, from a raised start.
        value.DiscardUpTo(1);
        value.SetCurrentOffset(7);
        EXPECT_EQ(value.TranslateCCSID(kUtf8, kUtf16, value), 1);
        EXPECT_TRUE(Content(value) == Whole(source.data() + 1, length - 1, kUtf8, kUtf16));
        EXPECT_EQ(value.GetCO(), 0u);
    };
    check(m_inMemory);
    check(m_spilled);
    check(m_store);
    EXPECT_FALSE(m_spilled.IsAllInBuffer());
}

TEST_F(ContainerTranslationTest, ATextStaysWhenThePagesOfItsTranslationCannotBeRead) {
    const ScopedCodePage page(1252);
    Bytes bytes(20 * kPage, 'a');
    CByteStore store(bytes.data(), static_cast<DWORD>(bytes.size()));
    for (unsigned at = 1; at < 200; ++at) {
        CString text("kept");
        m_system.Inject(Fault{.call = Call::Read, .at = at, .fromThenOn = true});
        const int cause = CauseOf([&] { store.TranslateCCSID(kEbcdic, text); });
        const bool hit = m_system.Hits() > 0;
        m_system.Inject(std::nullopt);
        ASSERT_EQ(cause, hit ? 2 : -1) << at;
        ASSERT_EQ(text.GetLength(), hit ? 4 : static_cast<int>(bytes.size()));
        ASSERT_TRUE(!hit || text == "kept");
        if (!hit)
            return;
    }
}

TEST_F(ContainerTranslationTest, InPlaceKeepsWhereTheBytesAreAndTheFlags) {
    Bytes buffer(64);
    CByteStream stream;
    stream.SetWritableBuffer(buffer.data(), 0, 10);
    stream.CopyFromHex(0, "4142434445");
    EXPECT_EQ(stream.TranslateCCSID(kUtf8, kUtf16), 1); // just fits
    EXPECT_EQ(buffer[9], 0x45);
    EXPECT_EQ(CauseOf([&] { stream.TranslateCCSID(kUtf16, 1232); }), 3); // twice as long
    EXPECT_TRUE(stream == "00410042004300440045");
    stream.ReleaseBuffer(9);
    stream.SetReadOnlyBuffer(buffer.data(), 4);
    EXPECT_EQ(CauseOf([&] { stream.TranslateCCSID(kUtf16, kUtf8); }), 3);
    m_spilled.SetComplete(1);
    m_spilled.SetAutoDelete(0);
    EXPECT_EQ(m_spilled.TranslateCCSID(kUtf8, kUtf16), 1);
    EXPECT_TRUE(m_spilled.GetComplete() && !m_spilled.GetAutoDelete());
    m_spilled.SetAutoDelete(1);
}

TEST_F(ContainerTranslationTest, EveryCauseSaysWhatHappenedAndWhatToDo) {
    const std::pair<int, const char*> words[] = {
        {0, "outside"}, {1, "position"}, {2, "read back"},       {3, "Copy them"},
        {4, "TMPDIR"},  {6, "4 GiB"},    {5, "without a number"}};
    for (const auto& [cause, word] : words) {
        const CCacheException error(cause);
        char text[300];
        UINT help = 7;
        EXPECT_TRUE(error.GetErrorMessage(text, sizeof text, &help));
        EXPECT_NE(std::string(text).find(word), std::string::npos) << text;
        EXPECT_EQ(std::string(text).back(), '.');
        EXPECT_EQ(help, 0u);
        char cut[8];
        EXPECT_TRUE(error.GetErrorMessage(cut, sizeof cut));
        EXPECT_EQ(std::string(cut), std::string(text).substr(0, 7));
        EXPECT_TRUE(error.GetErrorMessage(nullptr, 0));
    }
    EXPECT_EQ(CCacheException().m_nCause, 0);
    EXPECT_STREQ(CCacheException().GetRuntimeClass()->m_lpszClassName, "CCacheException");
}

} // namespace
} // namespace vnbytstr::test
