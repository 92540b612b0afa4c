#include "src/charset/Collation.h"

#include "src/charset/CodePage.h"
#include "src/charset/CollationInternal.h"
#include "src/os/System.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <map>
#include <mutex>
#include <new>
#include <stdexcept>

namespace vnbytstr {

namespace {

/// ICU takes lengths of 32 bits.
std::string_view Clipped(std::string_view text) { return text.substr(0, INT_MAX / 4); }

int32_t LengthOf(std::string_view text) { return static_cast<int32_t>(text.size()); }
int32_t LengthOf(std::u16string_view text) { return static_cast<int32_t>(text.size()); }

/// ICU's name of the locale; the empty name stands for Unicode's own order.
std::string IcuName(std::string_view locale) {
    std::string name(locale.substr(0, locale.find_first_of(".@")));
    return name == "C" || name == "POSIX" ? std::string() : name;
}

detail::CollatorPtr OpenCollator(const std::string& locale) {
    UErrorCode error = U_ZERO_ERROR;
    detail::CollatorPtr collator(ucol_open(locale.c_str(), &error));
    if (error == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    if (U_FAILURE(error) || !collator) {
        error = U_ZERO_ERROR;
        collator.reset(ucol_open("", &error));
    }
    if (U_SUCCESS(error) && collator) {
        error = U_ZERO_ERROR;
        ucol_setStrength(collator.get(), UCOL_SECONDARY);
        ucol_setAttribute(collator.get(), UCOL_NORMALIZATION_MODE, UCOL_ON, &error);
        ucol_setAttribute(collator.get(), UCOL_CASE_LEVEL, UCOL_OFF, &error);
        // Thai rules would ignore punctuation, and make different names equal.
        ucol_setAttribute(collator.get(), UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE, &error);
    }
    if (error == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    if (U_FAILURE(error) || !collator)
        throw std::runtime_error("ICU has no collation data; install its data library");
    return collator;
}

} // namespace

struct Collation::Rules {
    explicit Rules(const std::string& locale) : collator(OpenCollator(locale)), ascii(*collator) {}
    detail::CollatorPtr collator;
    detail::AsciiKeys ascii;
};

Collation::Collation(const std::string& locale) : m_rules(std::make_unique<Rules>(locale)) {}
Collation::~Collation() = default;

const Collation& Collation::ForLocale(std::string_view locale) {
    static std::mutex mutex;
    // Never destroyed: objects with static lifetime may still compare at exit.
    static auto* const known = new std::map<std::string, std::unique_ptr<Collation>>;
    const std::string name = IcuName(locale);
    const std::lock_guard lock(mutex);
    std::unique_ptr<Collation>& collation = (*known)[name];
    if (!collation)
        collation.reset(new Collation(name));
    return *collation;
}

const Collation& Collation::Current() {
    static std::atomic<const Collation*> current{nullptr};
    static std::atomic<unsigned> learntAt{0};
    const unsigned installs = System::InstallCount();
    const Collation* collation = current.load(std::memory_order_acquire);
    if (!collation || learntAt.load(std::memory_order_relaxed) != installs) {
        collation = &ForLocale(System::Current().GetTextLocale());
        learntAt.store(installs, std::memory_order_relaxed);
        current.store(collation, std::memory_order_release);
    }
    return *collation;
}

int Collation::Compare(std::string_view left, std::string_view right) const {
    left = Clipped(left);
    right = Clipped(right);
    const CodePage& page = CodePage::Ansi();
    if (page.IsUtf8()) {
        UErrorCode error = U_ZERO_ERROR;
        const int order = ucol_strcollUTF8(m_rules->collator.get(), left.data(), LengthOf(left),
                                           right.data(), LengthOf(right), &error);
        if (error == U_MEMORY_ALLOCATION_ERROR)
            throw std::bad_alloc();
        return order;
    }
    const std::u16string wideLeft = page.ToWide(left), wideRight = page.ToWide(right);
    return ucol_strcoll(m_rules->collator.get(), wideLeft.data(), LengthOf(wideLeft),
                        wideRight.data(), LengthOf(wideRight));
}

void Collation::AppendKey(std::string_view text, std::string& keys) const {
    if (!m_rules->ascii.Append(text, keys))
        AppendKeyByIcu(text, keys);
}

void Collation::AppendKeyByIcu(std::string_view text, std::string& keys) const {
    detail::AppendIcuKey(*m_rules->collator, CodePage::Ansi().ToWide(Clipped(text)), keys);
}

int CompareIgnoringCaseKanaWidth(std::string_view left, std::string_view right) {
    return Collation::Current().Compare(left, right);
}

void CollationKeys::Reserve(std::size_t count, std::size_t bytes) {
    m_ends.reserve(m_ends.size() + count);
    m_keys.reserve(m_keys.size() + bytes + bytes / 4 + count * 4);
}

} // namespace vnbytstr
