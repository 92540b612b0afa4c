// Compares the library's answers with the system's own, for all characters of the Windows code pages: which
// characters a page has, case, string types, comparison. Prints every difference, as docs/windows-differences.txt
// has them.
#include "src/charset/CharacterTypes.h"
#include "src/charset/CodePage.h"
#include "src/charset/Collation.h"
#include "src/os/System.h"
#include "tests/support/windows/Substitute.h"

#include <cstdio>
#include <functional>
#include <map>
#include <set>
#include <string>

namespace vnbytstr::test {
namespace {

constexpr UINT kPages[] = {874,  932,  936,  949,  950,  1250, 1251,
                           1252, 1253, 1254, 1255, 1256, 1257, 1258};

std::string Hex(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned>(static_cast<BYTE>(c)));
        text += digits;
    }
    return text.empty() ? "none" : text;
}

std::string Unicode(std::wstring_view text) {
    std::string result;
    for (const wchar_t unit : text) {
        char digits[8];
        std::snprintf(digits, sizeof digits, "U+%04X", static_cast<unsigned>(unit));
        result += digits;
    }
    return result.empty() ? "none" : result;
}

/// Differences of one subject: the pair of answers, and for which code points or byte values.
class Differences {
public:
    Differences(std::string subject, int digits)
        : m_subject(std::move(subject)), m_digits(digits) {}

    void Compare(unsigned which, const std::string& own, const std::string& systems) {
        ++m_compared;
        if (own == systems)
            return;
        ++m_count;
        m_found["library " + own + ", system " + systems].insert(which);
    }
    void Print() const {
        std::printf("%s: %u compared, %u differ\n", m_subject.c_str(), m_compared, m_count);
        for (const auto& [answers, which] : m_found) {
            std::printf("  %s:", answers.c_str());
            for (auto at = which.begin(); at != which.end();) {
                const unsigned first = *at;
                unsigned last = first;
                while (++at != which.end() && *at == last + 1)
                    last = *at;
                std::printf(first == last ? " %0*X" : " %0*X-%0*X", m_digits, first, m_digits,
                            last);
            }
            std::printf("\n");
        }
    }

private:
    std::string m_subject;
    int m_digits;
    unsigned m_compared = 0, m_count = 0;
    std::map<std::string, std::set<unsigned>> m_found;
};

std::wstring SystemsWide(UINT page, std::string_view bytes) {
    wchar_t buffer[8];
    const int size = ::MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes.data(),
                                           static_cast<int>(bytes.size()), buffer, 8);
    return {buffer, static_cast<std::size_t>(size)};
}

std::string SystemsBytes(UINT page, std::wstring_view text) {
    char buffer[8];
    BOOL isMissing = FALSE;
    const int size =
        ::WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, text.data(),
                              static_cast<int>(text.size()), buffer, 8, nullptr, &isMissing);
    return {buffer, isMissing ? 0 : static_cast<std::size_t>(size)};
}

std::wstring SystemsCase(std::wstring_view text, DWORD map) {
    wchar_t buffer[8];
    const int size = ::LCMapStringEx(LOCALE_NAME_INVARIANT, map, text.data(),
                                     static_cast<int>(text.size()), buffer, 8, nullptr, nullptr, 0);
    return {buffer, static_cast<std::size_t>(size)};
}

std::wstring OwnWide(const CodePage& page, std::string_view bytes) {
    const std::u16string wide = page.ToWide(bytes);
    return wide.find(u'\xFFFD') == std::u16string::npos ? std::wstring(wide.begin(), wide.end())
                                                        : L"";
}

/// One page; adds its characters to `all`.
void ComparePage(UINT number, std::set<wchar_t>& all) {
    const CodePage& page = *CodePage::Find(number);
    const std::string name = "code page " + std::to_string(number);
    Differences toWide(name + ", bytes to Unicode", 2), fromWide(name + ", Unicode to bytes", 4),
        upper(name + ", upper case", 2), lower(name + ", lower case", 2);
    const auto compare = [&](const std::string& bytes) {
        const unsigned which = bytes.size() == 1
                                   ? static_cast<BYTE>(bytes[0])
                                   : static_cast<unsigned>(static_cast<BYTE>(bytes[0]) << 8 |
                                                           static_cast<BYTE>(bytes[1]));
        const std::wstring wide = OwnWide(page, bytes);
        toWide.Compare(which, Unicode(wide), Unicode(SystemsWide(number, bytes)));
        if (wide.size() != 1 || page.FromWide(page.ToWide(bytes)) != bytes)
            return;
        all.insert(wide[0]);
        std::string own = bytes, systems = SystemsBytes(number, SystemsCase(wide, LCMAP_UPPERCASE));
        page.MakeUpper(own);
        upper.Compare(which, Hex(own), systems.size() == own.size() ? Hex(systems) : Hex(bytes));
        own = bytes;
        systems = SystemsBytes(number, SystemsCase(wide, LCMAP_LOWERCASE));
        page.MakeLower(own);
        lower.Compare(which, Hex(own), systems.size() == own.size() ? Hex(systems) : Hex(bytes));
    };
    for (int first = 0; first < 256; ++first) {
        const char lead = static_cast<char>(first);
        if (!page.IsLeadByte(lead))
            compare({lead});
        for (int second = 0; page.IsLeadByte(lead) && second < 256; ++second)
            compare({lead, static_cast<char>(second)});
    }
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        if (unit >= 0xD800 && unit < 0xE000)
            continue;
        const char16_t own = static_cast<char16_t>(unit);
        std::string bytes = page.FromWide({&own, 1});
        if (bytes == "?" && unit != '?')
            bytes.clear();
        const auto wide = static_cast<wchar_t>(unit);
        fromWide.Compare(unit, Hex(bytes), Hex(SystemsBytes(number, {&wide, 1})));
    }
    for (const Differences* each : {&toWide, &fromWide, &upper, &lower})
        each->Print();
}

void CompareTypes(const std::set<wchar_t>& all) {
    struct Type {
        const char* name;
        DWORD number;
        WORD (*own)(char32_t) noexcept;
    };
    for (const Type type :
         {Type{"1", CT_CTYPE1, CharacterType1}, Type{"2", CT_CTYPE2, CharacterType2},
          Type{"3", CT_CTYPE3, CharacterType3}}) {
        Differences types(std::string("string type ") + type.name, 4);
        for (const wchar_t unit : all) {
            WORD systems = 0;
            ::GetStringTypeW(type.number, &unit, 1, &systems);
            const WORD own = type.own(unit);
            const auto hex = [](WORD value) {
                const char bytes[] = {static_cast<char>(value >> 8), static_cast<char>(value)};
                return Hex({bytes, 2});
            };
            types.Compare(unit, hex(own), hex(systems));
        }
        types.Print();
    }
}

/// Each character with the next one, and with its counterparts in upper and lower case.
void CompareOrder(const std::set<wchar_t>& all) {
    const ScopedCodePage utf8(65001);
    const Collation& collation = Collation::ForLocale("");
    const auto order = [](int sign) {
        return std::string(sign < 0 ? "before" : sign > 0 ? "after" : "equal");
    };
    const auto compare = [&](Differences& differences, wchar_t left, wchar_t right) {
        const auto bytes = [](wchar_t unit) { return SystemsBytes(65001, {&unit, 1}); };
        const int systems = ::CompareStringEx(LOCALE_NAME_INVARIANT,
                                              NORM_IGNORECASE | NORM_IGNOREKANATYPE |
                                                  NORM_IGNOREWIDTH | SORT_STRINGSORT,
                                              &left, 1, &right, 1, nullptr, nullptr, 0);
        differences.Compare(left, order(collation.Compare(bytes(left), bytes(right))),
                            order(systems - 2));
    };
    Differences neighbours("comparison with the next character", 4),
        cases("comparison with the other case", 4);
    for (auto at = all.begin(); at != all.end(); ++at) {
        if (const auto next = std::next(at); next != all.end())
            compare(neighbours, *at, *next);
        for (const DWORD map : {LCMAP_UPPERCASE, LCMAP_LOWERCASE}) {
            const std::wstring other = SystemsCase({&*at, 1}, map);
            if (other.size() == 1 && other[0] != *at)
                compare(cases, *at, other[0]);
        }
    }
    neighbours.Print();
    cases.Print();
}

} // namespace
} // namespace vnbytstr::test

int main() {
    using namespace vnbytstr::test;
    const vnbytstr::SystemVersion version = vnbytstr::System::Current().GetVersion();
    std::printf("System: %s, calling itself Windows %lu.%lu\n",
                IsSubstitute() ? "Wine, which is not Windows" : "Windows",
                static_cast<unsigned long>(version.major),
                static_cast<unsigned long>(version.minor));
    std::set<wchar_t> all;
    for (const UINT page : kPages)
        ComparePage(page, all);
    CompareTypes(all);
    CompareOrder(all);
}
