// Which code pages there are, which of them is the ANSI one, and where characters begin and end.
#include "src/charset/CodePage.h"

#include "src/charset/CharCount.h"
#include "src/charset/CodePageConverters.h"
#include "src/os/System.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <charconv>
#include <exception>
#include <map>
#include <mutex>

namespace vnbytstr {

namespace {

constexpr char16_t kNoCharacter = 0xFFFD;

/// Length of the valid UTF-8 sequence at `p` (Unicode, table 3-7), 1 for anything else.
std::size_t Utf8Length(const char* p, const char* end) noexcept {
    const auto at = [p](std::size_t i) { return static_cast<BYTE>(p[i]); };
    const auto trails = [&](std::size_t i) { return (at(i) & 0xC0) == 0x80; };
    const auto size = static_cast<std::size_t>(end - p);
    const BYTE first = at(0);
    if (first < 0xC2 || first > 0xF4)
        return 1;
    if (first < 0xE0)
        return size >= 2 && trails(1) ? 2 : 1;
    if (size < 2)
        return 1;
    const BYTE lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const BYTE highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (at(1) < lowest || at(1) > highest)
        return 1;
    if (first < 0xF0)
        return size >= 3 && trails(2) ? 3 : 1;
    return size >= 4 && trails(2) && trails(3) ? 4 : 1;
}

std::size_t Gb18030Length(const char* p, const char* end) noexcept {
    const auto at = [p](std::size_t i) { return static_cast<BYTE>(p[i]); };
    const auto isDigit = [&](std::size_t i) { return at(i) >= 0x30 && at(i) <= 0x39; };
    if (end - p < 2)
        return 1;
    if (!isDigit(1))
        return 2;
    return end - p >= 4 && at(2) >= 0x81 && at(2) <= 0xFE && isDigit(3) ? 4 : 1;
}

std::size_t EucJpLength(const char* p, const char* end) noexcept {
    const std::size_t wanted = static_cast<BYTE>(*p) == 0x8F ? 3 : 2; // 8F: JIS X 0212
    return static_cast<std::size_t>(end - p) >= wanted ? wanted : 1;
}

/// "ISO-8859-15" and "iso885915" are one charset.
std::string Normalized(std::string_view charset) {
    std::string name;
    for (char c : charset) {
        if (c >= 'a' && c <= 'z')
            name += static_cast<char>(c - 'a' + 'A');
        else if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z'))
            name += c;
    }
    return name;
}

struct CharsetName {
    std::string_view name;
    UINT number;
};
constexpr CharsetName kCharsets[] = {
    {"UTF8", 65001},     {"ANSIX341968", 65001}, {"USASCII", 65001},   {"ASCII", 65001},
    {"ISO88591", 28591}, {"ISO88592", 28592},    {"ISO88593", 28593},  {"ISO88594", 28594},
    {"ISO88595", 28595}, {"ISO88596", 28596},    {"ISO88597", 28597},  {"ISO88598", 28598},
    {"ISO88599", 28599}, {"ISO885913", 28603},   {"ISO885915", 28605}, {"CP1250", 1250},
    {"CP1251", 1251},    {"CP1252", 1252},       {"CP1253", 1253},     {"CP1254", 1254},
    {"CP1255", 1255},    {"CP1256", 1256},       {"CP1257", 1257},     {"CP1258", 1258},
    {"KOI8R", 20866},    {"KOI8U", 21866},       {"TIS620", 874},      {"EUCJP", 51932},
    {"SJIS", 932},       {"SHIFTJIS", 932},      {"WINDOWS31J", 932},  {"CP932", 932},
    {"EUCKR", 949},      {"CP949", 949},         {"UHC", 949},         {"EUCCN", 936},
    {"GB2312", 936},     {"GBK", 936},           {"CP936", 936},       {"GB18030", 54936},
    {"BIG5", 950},       {"CP950", 950},
};

} // namespace

struct CodePage::Entry {
    UINT number;
    const char* icuName;
    WORD ccsid;
    Scheme scheme;
};

struct CodePage::Registry {
    std::mutex mutex;
    std::map<UINT, std::unique_ptr<CodePage>> pages;

    static Registry& Get() {
        // Never destroyed: objects with static lifetime may still use code pages at exit.
        static Registry* const registry = new Registry;
        return *registry;
    }
};

std::atomic<const CodePage*> CodePage::s_ansi{nullptr};

/// The PC pages (437, 850 ...) are no ANSI pages, and their tables exchange some ASCII controls.
/// The Windows pages go by their windows-N names: by number ICU gives older variants (1252 without
/// the euro sign, 943 and 949 with another backslash).
const CodePage::Entry* CodePage::FindEntry(UINT number) noexcept {
    using enum Scheme;
    static constexpr Entry kEntries[] = {
        {874, "windows-874", 874, SingleByte},
        {932, "windows-932", 932, DoubleByte},
        {936, "windows-936", 936, DoubleByte},
        {949, "windows-949", 949, DoubleByte},
        {950, "windows-950", 950, DoubleByte},
        {1250, "windows-1250", 1250, SingleByte},
        {1251, "windows-1251", 1251, SingleByte},
        {1252, "windows-1252", 1252, SingleByte},
        {1253, "windows-1253", 1253, SingleByte},
        {1254, "windows-1254", 1254, SingleByte},
        {1255, "windows-1255", 1255, SingleByte},
        {1256, "windows-1256", 1256, SingleByte},
        {1257, "windows-1257", 1257, SingleByte},
        {1258, "windows-1258", 1258, SingleByte},
        {20127, "US-ASCII", 367, SingleByte},
        {20866, "KOI8-R", 878, SingleByte},
        {21866, "KOI8-U", 1168, SingleByte},
        {28591, "ISO-8859-1", 819, SingleByte},
        {28592, "ISO-8859-2", 912, SingleByte},
        {28593, "ISO-8859-3", 913, SingleByte},
        {28594, "ISO-8859-4", 914, SingleByte},
        {28595, "ISO-8859-5", 915, SingleByte},
        {28596, "ISO-8859-6", 1089, SingleByte},
        {28597, "ISO-8859-7", 813, SingleByte},
        {28598, "ISO-8859-8", 916, SingleByte},
        {28599, "ISO-8859-9", 920, SingleByte},
        {28603, "ISO-8859-13", 921, SingleByte},
        {28605, "ISO-8859-15", 923, SingleByte},
        {51932, "EUC-JP", 954, EucJp},
        {51949, "EUC-KR", 970, DoubleByte},
        {54936, "gb18030", 1392, Gb18030},
        {65001, "UTF-8", 1208, Utf8},
    };
    const auto* found =
        std::lower_bound(std::begin(kEntries), std::end(kEntries), number,
                         [](const Entry& entry, UINT wanted) { return entry.number < wanted; });
    return found != std::end(kEntries) && found->number == number ? found : nullptr;
}

CodePage::CodePage(const Entry& entry)
    : m_number(entry.number), m_ccsid(entry.ccsid), m_scheme(entry.scheme),
      m_converters(std::make_unique<Converters>(entry.icuName)) {
    if (IsUtf8()) {
        std::fill(m_lead.begin() + 0xC2, m_lead.begin() + 0xF5, BYTE{1});
    } else if (!IsSingleByte()) {
        const auto converter = m_converters->pool.Borrow();
        UErrorCode error = U_ZERO_ERROR;
        UBool starters[256] = {};
        if (converter.get())
            ucnv_getStarters(converter.get(), starters, &error);
        std::copy(std::begin(starters), std::end(starters), m_lead.begin());
    }
    for (unsigned i = 0x80; i < 0x100; ++i) {
        if (m_lead[i] != 0)
            m_leadRows[i & 0x0F] |= static_cast<BYTE>(1u << ((i - 0x80) >> 4));
    }
    // ICU's 932, like its PC pages, has 1A for U+001C, 1C for U+007F and 7F for U+001A; in an ANSI
    // page ASCII is ASCII.
    m_rotatesControls = m_number == 932;
    for (unsigned i = 0; i < 256; ++i) {
        const char byte = static_cast<char>(i);
        const std::u16string wide =
            i < 0x80 ? std::u16string(1, static_cast<char16_t>(i)) : ToWide({&byte, 1});
        m_single[i] = wide.size() == 1 ? wide[0] : kNoCharacter;
    }
    const auto mapped = [&](unsigned i, UChar32 to) {
        const char16_t unit = static_cast<char16_t>(to);
        if (m_single[i] == kNoCharacter || to > 0xFFFF || unit == m_single[i])
            return static_cast<BYTE>(i);
        const std::string back = FromWide({&unit, 1});
        return back.size() == 1 && back[0] != '?' ? static_cast<BYTE>(back[0])
                                                  : static_cast<BYTE>(i);
    };
    for (unsigned i = 0; i < 256; ++i) {
        m_upper[i] = mapped(i, u_toupper(m_single[i]));
        m_lower[i] = mapped(i, u_tolower(m_single[i]));
    }
}

CodePage::~CodePage() = default;

const CodePage* CodePage::Find(UINT number) {
    const Entry* entry = FindEntry(number);
    if (!entry)
        return nullptr;
    Registry& registry = Registry::Get();
    const std::lock_guard lock(registry.mutex);
    std::unique_ptr<CodePage>& page = registry.pages[number];
    if (!page)
        page.reset(new CodePage(*entry));
    return page.get();
}

const CodePage* CodePage::FindCharset(std::string_view charset) {
    std::string name = Normalized(charset);
    if (name.starts_with("WINDOWS125"))
        name.replace(0, 7, "CP");
    for (const CharsetName& known : kCharsets) {
        if (known.name == name)
            return Find(known.number);
    }
    return nullptr;
}

const CodePage* CodePage::OfLocale(std::string_view locale) {
    const std::size_t dot = locale.find('.');
    const std::size_t at = locale.find('@');
    if (dot == std::string_view::npos)
        return at != std::string_view::npos && locale.substr(at) == "@euro" ? Find(28605)
                                                                            : Find(65001);
    const std::string_view charset =
        locale.substr(dot + 1, at > dot && at != std::string_view::npos ? at - dot - 1 : at);
    return FindCharset(charset);
}

const CodePage& CodePage::Decide() {
    System& system = System::Current();
    const CodePage* page = nullptr;
    if (const std::string wanted = system.GetEnvironment("VNBYTSTR_CODEPAGE"); !wanted.empty()) {
        UINT number = 0;
        const char* end = wanted.data() + wanted.size();
        const auto [rest, error] = std::from_chars(wanted.data(), end, number);
        page = error == std::errc() && rest == end ? Find(number) : nullptr;
        if (!page)
            system.WriteDiagnostic(
                ("vnbytstr: VNBYTSTR_CODEPAGE=" + wanted +
                 " is no code page known here and is ignored. Give the number of "
                 "one, such as 1252, 932 or 65001.")
                    .c_str());
    }
    if (!page) {
        const std::string locale = system.GetTextLocale();
        page = OfLocale(locale);
        if (!page) {
            system.WriteDiagnostic(("vnbytstr: the charset of the locale " + locale +
                                    " is not known here; text is taken for UTF-8. Set "
                                    "VNBYTSTR_CODEPAGE to choose another code page.")
                                       .c_str());
            page = Find(65001);
        }
    }
    if (!page)
        std::terminate();            // an ICU without UTF-8
    const CodePage* first = nullptr; // another thread may have decided meanwhile
    s_ansi.compare_exchange_strong(first, page);
    return first ? *first : *page;
}

const CodePage& CodePage::Ansi() {
    const CodePage* page = s_ansi.load(std::memory_order_acquire);
    return page ? *page : Decide();
}

const CodePage* CodePage::SetAnsi(const CodePage* page) noexcept { return s_ansi.exchange(page); }

std::size_t CodePage::LongCharLength(const char* p, const char* end) const noexcept {
    switch (m_scheme) {
    case Scheme::Utf8:
        return Utf8Length(p, end);
    case Scheme::Gb18030:
        return Gb18030Length(p, end);
    case Scheme::EucJp:
        return EucJpLength(p, end);
    case Scheme::DoubleByte:
        return end - p >= 2 ? 2 : 1;
    case Scheme::SingleByte:
        break;
    }
    return 1;
}

bool CodePage::IsCutShort(const char* p, const char* end) const noexcept {
    const auto size = static_cast<std::size_t>(end - p);
    if (size == 0 || !IsLeadByte(*p) || CharLength(p, end) > 1)
        return false;
    if (size == 1)
        return true;
    if (size > 3)
        return false;
    // What begins a character becomes one when the right bytes are added.
    if (m_scheme == Scheme::EucJp)
        return size == 2 && static_cast<BYTE>(*p) == 0x8F;
    if (m_scheme != Scheme::Utf8 && m_scheme != Scheme::Gb18030)
        return false;
    const bool isUtf8 = m_scheme == Scheme::Utf8;
    for (std::size_t added = 1; size + added <= 4; ++added) {
        char whole[4] = {};
        std::copy(p, end, whole);
        for (std::size_t i = size; i < size + added; ++i)
            whole[i] = static_cast<char>(isUtf8 ? 0x80 : i == 2 ? 0x81 : 0x30);
        if (CharLength(whole, whole + size + added) == size + added)
            return true;
    }
    return false;
}

std::size_t CodePage::CountChars(std::string_view text) const noexcept {
    constexpr std::size_t kPlainStretch = 64; // after a broken sequence
    if (IsSingleByte())
        return text.size();
    std::size_t count = 0;
    const char* p = text.data();
    const char* const end = p + text.size();
    while (p < end) {
        const std::string_view rest(p, static_cast<std::size_t>(end - p));
        detail::CharCountStep step;
        if (IsUtf8())
            step = detail::CountUtf8(rest);
        else if (m_scheme == Scheme::DoubleByte)
            step = detail::CountDoubleByte(rest, m_leadRows);
        p += step.bytes;
        count += step.chars;
        const auto left = static_cast<std::size_t>(end - p);
        const char* const stop = p + (IsUtf8() ? std::min(left, kPlainStretch) : left);
        for (; p < stop; p += CharLength(p, end))
            ++count;
    }
    return count;
}

std::size_t CodePage::CharStart(std::string_view text, std::size_t index) const noexcept {
    if (IsSingleByte() || index >= text.size())
        return index;
    const char* end = text.data() + text.size();
    // UTF-8 tells lead from continuation; elsewhere a byte's role depends on all before it.
    std::size_t start = IsUtf8() ? index - std::min<std::size_t>(index, 3) : 0;
    for (;;) {
        const std::size_t length = CharLength(text.data() + start, end);
        if (start + length > index)
            return start;
        start += length;
    }
}

std::size_t CodePage::SpanWithout(std::string_view text, std::string_view set) const noexcept {
    std::array<bool, 256> stops{};
    for (char c : set)
        stops[static_cast<BYTE>(c)] = true;
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    const char* p = begin;
    if (IsSingleByte() || IsUtf8()) { // a byte below 0x80 is always a character of its own
        while (p < end && !stops[static_cast<BYTE>(*p)])
            ++p;
    } else {
        while (p < end && !stops[static_cast<BYTE>(*p)])
            p += CharLength(p, end);
    }
    return static_cast<std::size_t>(p - begin);
}

} // namespace vnbytstr
