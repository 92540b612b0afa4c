#include "vnbytstr/framework/String.h"

#include "tests/support/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using vnbytstr::test::BytesOf;

int IndexOf(std::size_t position) {
    return position == std::string::npos ? -1 : static_cast<int>(position);
}

// One pair of strings that random operations keep equal, with a few others that share characters.
class StringAgainstModel : public ::testing::Test {
protected:
    void Step();
    void ChangeInPlace(CString& own, std::string& model);
    void Search(const CString& own, const std::string& model);
    void Rebuild(CString& own, std::string& model);

    int Number(int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(m_random);
    }
    char Letter() { return "aAbB \t\xE4z"[Number(0, 7)]; }
    std::string Word(int longest) {
        std::string word;
        for (int n = Number(0, longest); n > 0; --n)
            word += Letter();
        return word;
    }

    std::mt19937 m_random{4711};
    std::array<CString, 4> m_own;
    std::array<std::string, 4> m_models;
};

void StringAgainstModel::ChangeInPlace(CString& own, std::string& model) {
    const int length = static_cast<int>(model.size());
    const int index = Number(-1, length + 1);
    const auto at = static_cast<std::size_t>(std::clamp(index, 0, length));
    const char ch = Letter();
    const std::string word = Word(6);
    switch (Number(0, 11)) {
    case 0:
        own += word.c_str();
        model += word;
        break;
    case 1:
        own += ch;
        model += ch;
        break;
    case 2:
        if (index >= 0 && index < length) {
            own.SetAt(index, ch);
            model[at] = ch;
        }
        break;
    case 3:
        model.insert(at, word);
        EXPECT_EQ(own.Insert(index, word.c_str()), static_cast<int>(model.size()));
        break;
    case 4: {
        const int count = Number(-1, 5);
        model.erase(at, static_cast<std::size_t>(std::max(count, 0)));
        EXPECT_EQ(own.Delete(index, count), static_cast<int>(model.size()));
        break;
    }
    case 5:
        EXPECT_EQ(own.Remove(ch), static_cast<int>(std::erase(model, ch)));
        break;
    case 6:
        model.insert(at, 1, ch);
        EXPECT_EQ(own.Insert(index, ch), static_cast<int>(model.size()));
        break;
    case 7: { // text from within the string itself
        const char* inside = static_cast<const char*>(own) + at;
        const std::string copy(inside);
        const int where = Number(0, length);
        own.Insert(where, inside);
        model.insert(static_cast<std::size_t>(where), copy);
        break;
    }
    case 8:
        own += own;
        model += std::string(model);
        break;
    case 9: {
        const std::size_t first = model.find_first_not_of(" \t");
        own.TrimLeft();
        model.erase(0, std::min(first, model.size()));
        own.TrimRight("ab");
        model.erase(model.find_last_not_of("ab") + 1);
        break;
    }
    case 10: {
        const int room = Number(-1, length + 40);
        char* buffer = own.GetBuffer(room);
        EXPECT_EQ(BytesOf(own), model);
        const int kept = Number(0, std::max(room, length));
        for (int i = length; i < kept; ++i)
            buffer[i] = ch;
        own.ReleaseBuffer(kept);
        model.resize(static_cast<std::size_t>(kept), ch);
        break;
    }
    default:
        own.FreeExtra();
        break;
    }
}

void StringAgainstModel::Rebuild(CString& own, std::string& model) {
    const std::string from = Word(2);
    const std::string to = Word(4);
    const char ch = Letter();
    switch (Number(0, 6)) {
    case 0: {
        int count = 0;
        for (std::size_t at = 0; !from.empty() && (at = model.find(from, at)) != std::string::npos;
             at += to.size(), ++count)
            model.replace(at, from.size(), to);
        EXPECT_EQ(own.Replace(from.c_str(), to.c_str()), count);
        break;
    }
    case 1:
        EXPECT_EQ(own.Replace('a', ch),
                  ch == 'a' ? 0 : std::count(model.begin(), model.end(), 'a'));
        std::replace(model.begin(), model.end(), 'a', ch);
        break;
    case 2:
        own.MakeReverse();
        std::reverse(model.begin(), model.end());
        break;
    case 3:
        own = ch + own + to.c_str() + ch;
        model = ch + model + to + ch;
        break;
    case 4: {
        const int first = Number(-1, 12);
        const int count = Number(-1, 12);
        const auto at = std::min(static_cast<std::size_t>(std::max(first, 0)), model.size());
        own = own.Mid(first, count);
        model = model.substr(at, static_cast<std::size_t>(std::max(count, 0)));
        break;
    }
    case 5: {
        const int count = Number(-1, 60);
        const auto kept = std::min(static_cast<std::size_t>(std::max(count, 0)), model.size());
        const CString right = own.Right(count);
        EXPECT_EQ(BytesOf(right), model.substr(model.size() - kept));
        own = own.Left(count);
        model.resize(kept);
        break;
    }
    default: // formatted with itself as the argument
        own.Format("%s<%s|%5d>", static_cast<const char*>(own), to.c_str(), 42);
        model = model + "<" + to + "|   42>";
        break;
    }
}

void StringAgainstModel::Search(const CString& own, const std::string& model) {
    const std::string word = Word(2);
    const char ch = Letter();
    const int from = Number(-1, static_cast<int>(model.size()) + 1);
    const auto start = static_cast<std::size_t>(std::max(from, 0));
    EXPECT_EQ(own.Find(word.c_str(), from), IndexOf(model.find(word, start)));
    EXPECT_EQ(own.Find(ch, from), IndexOf(model.find(ch, start)));
    EXPECT_EQ(own.ReverseFind(ch), IndexOf(model.rfind(ch)));
    EXPECT_EQ(own.FindOneOf(word.c_str()), IndexOf(model.find_first_of(word)));
    EXPECT_EQ(BytesOf(own.SpanIncluding("aAb")), model.substr(0, model.find_first_not_of("aAb")));
    EXPECT_EQ(BytesOf(own.SpanExcluding(word.c_str())), model.substr(0, model.find_first_of(word)));
    EXPECT_EQ(own[from], start < model.size() && from >= 0 ? model[start] : '\0');
}

void StringAgainstModel::Step() {
    const auto i = static_cast<std::size_t>(Number(0, 3));
    const auto j = static_cast<std::size_t>(Number(0, 3));
    switch (Number(0, 9)) {
    case 0:
        m_own[i] = m_own[j];
        m_models[i] = m_models[j];
        break;
    case 1:
        EXPECT_EQ(m_own[i] < m_own[j], m_models[i] < m_models[j]);
        EXPECT_EQ(m_own[i] == m_own[j], m_models[i] == m_models[j]);
        EXPECT_EQ(m_models[i].c_str() >= m_own[j], m_models[i] >= m_models[j]);
        break;
    case 2:
    case 3:
        Rebuild(m_own[i], m_models[i]);
        break;
    case 4:
        Search(m_own[i], m_models[i]);
        break;
    default:
        ChangeInPlace(m_own[i], m_models[i]);
        break;
    }
    if (m_models[i].size() > 300) {
        m_own[i].Empty();
        m_models[i].clear();
    }
    for (std::size_t n = 0; n < m_own.size(); ++n) {
        ASSERT_EQ(BytesOf(m_own[n]), m_models[n]);
        ASSERT_EQ(static_cast<const char*>(m_own[n])[m_models[n].size()], '\0');
    }
}

TEST_F(StringAgainstModel, RandomOperations) {
    for (int step = 0; step < 50000 && !HasFailure(); ++step) {
        SCOPED_TRACE(step);
        Step();
    }
}

TEST(String, EmbeddedNulsSurvive) {
    const CString raw("a\0b\0c", 5);
    CString copy = raw;
    copy += 'd';
    EXPECT_EQ(BytesOf(copy), std::string("a\0b\0cd", 6));
    EXPECT_EQ(BytesOf(raw + raw), std::string("a\0b\0ca\0b\0c", 10));
    EXPECT_EQ(BytesOf(raw.Mid(1, 3)), std::string("\0b\0", 3));
    EXPECT_EQ(copy.Replace("b", "xx"), 1);
    EXPECT_EQ(BytesOf(copy), std::string("a\0xx\0cd", 7));
    EXPECT_EQ(copy.Remove('\0'), 2);
    EXPECT_EQ(copy, "axxcd");
    EXPECT_EQ(raw, "a"); // comparison reads text
}

TEST(String, SetAtOutOfRangeIsRefused) {
    CString text("abc");
    for (const int index : {-1, 3, INT_MAX}) {
        try {
            text.SetAt(index, 'x');
            ADD_FAILURE() << index;
        } catch (CInvalidArgException* error) {
            error->Delete();
        }
    }
    EXPECT_EQ(text, "abc");
}

TEST(String, NullTextIsEmpty) {
    const char* null = nullptr;
    CString text(null);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(text, null);
    text = "x";
    text += null;
    text.Insert(0, null);
    EXPECT_EQ(text.Find(null), 0);
    EXPECT_EQ(text.Replace("x", null), 1);
    EXPECT_EQ(text.CompareNoCase(null), 0);
    EXPECT_TRUE(CString(null, 5).IsEmpty());
}

TEST(String, CaseIsAsciiOnly) {
    CString text("Stra\xDF"
                 "e \xE4Z");
    EXPECT_EQ(text.CompareNoCase("sTRA\xDF"
                                 "E \xE4z"),
              0);
    EXPECT_NE(text.CompareNoCase("stra\xDF"
                                 "e \xC4z"),
              0);
    text.MakeUpper();
    EXPECT_EQ(text, "STRA\xDF"
                    "E \xE4Z");
    text.MakeLower();
    EXPECT_EQ(text, "stra\xDF"
                    "e \xE4z");
    EXPECT_LT(CString("a"), "\xE4"); // bytes compare unsigned
}

TEST(String, FormatsAnyLength) {
    const std::string filler(100000, 'f');
    for (const std::size_t length : {0u, 1u, 254u, 255u, 256u, 257u, 5000u, 100000u}) {
        CString text;
        text.Format("%s", filler.substr(0, length).c_str());
        EXPECT_EQ(BytesOf(text), filler.substr(0, length));
    }
    CString text;
    text.Format("%d %08lX %-4s| %.3f %c", -5, 0xABCDL, "ab", 1.5, 'x');
    EXPECT_EQ(text, "-5 0000ABCD ab  | 1.500 x");
    text.Format("%ls", L"\xD800"); // no character
    EXPECT_TRUE(text.IsEmpty());
}

TEST(String, BufferLengthFollowsTheTextOrTheCaller) {
    CString text("abc");
    const CString shared(text);
    std::memcpy(text.GetBuffer(20), "0123456789", 11);
    text.ReleaseBuffer();
    EXPECT_EQ(text, "0123456789");
    EXPECT_EQ(shared, "abc");
    text.GetBufferSetLength(4);
    EXPECT_EQ(text, "0123");
    text.ReleaseBuffer(1 << 30); // cut to the buffer
    EXPECT_LT(text.GetLength(), 1000);
    std::memset(text.GetBuffer(3), 'x', 3); // no NUL written anywhere in the buffer
    text.ReleaseBuffer(3);
    EXPECT_EQ(text, "xxx");
    CString empty;
    empty.GetBuffer(0)[0] = '\0';
    empty.ReleaseBuffer();
    EXPECT_TRUE(CString().IsEmpty());
}

TEST(String, TooLongThrowsAndKeepsTheString) {
    // Reserved but never touched: the pages are not there.
    CString half;
    try {
        half.GetBufferSetLength(INT_MAX / 2 + 1);
    } catch (CMemoryException* error) {
        error->Delete();
        GTEST_SKIP() << "a GiB of address space is not to be had";
    }
    const auto* before = static_cast<const char*>(half);
    EXPECT_THROW(half += half, CMemoryException*);
    EXPECT_EQ(half.GetLength(), INT_MAX / 2 + 1);
    EXPECT_EQ(static_cast<const char*>(half), before);
}

} // namespace
