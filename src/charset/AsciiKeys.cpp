#include "src/charset/CollationInternal.h"

#include <unicode/uset.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

namespace vnbytstr::detail {

static_assert(std::endian::native == std::endian::little, "steps are stored lowest byte first");

namespace {

constexpr char kLevelEnd = 1;

/// A key's first part and the rest.
struct Parts {
    std::string weights, tail;
};

Parts PartsOf(const UCollator& collator, std::u16string_view text) {
    std::string key;
    AppendIcuKey(collator, text, key);
    const std::size_t end = key.find(kLevelEnd);
    if (end == std::string::npos)
        return {};
    return {key.substr(0, end), key.substr(end)};
}

struct SetCloser {
    void operator()(USet* set) const noexcept { uset_close(set); }
};

} // namespace

void AppendIcuKey(const UCollator& collator, std::u16string_view text, std::string& keys) {
    const std::size_t start = keys.size();
    const auto length = static_cast<int32_t>(text.size());
    std::size_t room = text.size() * 3 + 16;
    for (;;) {
        keys.resize(start + room);
        const auto needed = static_cast<std::size_t>(ucol_getSortKey(
            &collator, text.data(), length, reinterpret_cast<uint8_t*>(keys.data() + start),
            static_cast<int32_t>(std::min<std::size_t>(room, INT32_MAX))));
        if (needed <= room) {
            keys.resize(start + needed);
            break;
        }
        room = needed;
    }
    if (keys.size() == start) // ICU gave up, for which it has no other reason
        throw std::bad_alloc();
}

AsciiKeys::AsciiKeys(const UCollator& collator) {
    LearnTails(collator);
    LearnClasses(collator);
    LearnSteps(collator);
    ForgetContractions(collator);
}

void AsciiKeys::LearnTails(const UCollator& collator) {
    for (std::size_t length = 0; length <= kMaxLength; ++length)
        m_tails.push_back(PartsOf(collator, std::u16string(length, u'0')).tail);
}

bool AsciiKeys::IsTail(std::string_view part, std::size_t length) const {
    return part == m_tails[length];
}

void AsciiKeys::LearnClasses(const UCollator& collator) {
    std::vector<std::string> weights(1);
    m_samples.assign(1, u'\0');
    for (char16_t c = 0x20; c < 0x7F; ++c) {
        const Parts parts = PartsOf(collator, {&c, 1});
        if (parts.weights.empty() || !IsTail(parts.tail, 1))
            continue;
        std::size_t known = 1;
        while (known < weights.size() && weights[known] != parts.weights)
            ++known;
        if (known == weights.size()) {
            weights.push_back(parts.weights);
            m_samples.push_back(c);
        }
        m_classes[c] = static_cast<BYTE>(known);
    }
    m_count = weights.size();
}

void AsciiKeys::LearnSteps(const UCollator& collator) {
    m_steps.assign(m_count * m_count, kUnknown << 56);
    for (std::size_t previous = 0; previous < m_count; ++previous) {
        std::u16string text;
        if (previous != 0)
            text += m_samples[previous];
        const std::string before = PartsOf(collator, text).weights;
        for (std::size_t next = 1; next < m_count; ++next) {
            const Parts parts = PartsOf(collator, text + m_samples[next]);
            const std::size_t added = parts.weights.size() - before.size();
            if (!parts.weights.starts_with(before) || !IsTail(parts.tail, text.size() + 1) ||
                added > kMaxStepBytes)
                continue;
            Step step = Step{added} << 56;
            std::memcpy(&step, parts.weights.data() + before.size(), added);
            At(previous, next) = step;
        }
    }
}

/// Those of three letters too ("dzs"): their first two make the text one for ICU.
void AsciiKeys::ForgetContractions(const UCollator& collator) {
    const std::unique_ptr<USet, SetCloser> set(uset_openEmpty());
    UErrorCode error = U_ZERO_ERROR;
    ucol_getContractionsAndExpansions(&collator, set.get(), nullptr, 0, &error);
    const int32_t items = U_SUCCESS(error) ? uset_getItemCount(set.get()) : 0;
    for (int32_t i = 0; i < items; ++i) {
        std::array<char16_t, 64> text{};
        UChar32 first = 0, last = 0;
        error = U_ZERO_ERROR;
        const int32_t length = uset_getItem(set.get(), i, &first, &last, text.data(),
                                            static_cast<int32_t>(text.size()), &error);
        if (length < 2 || text[0] >= 0x80 || text[1] >= 0x80)
            continue;
        const std::size_t previous = m_classes[text[0]];
        if (previous != 0)
            At(previous, m_classes[text[1]]) = kUnknown << 56;
    }
}

bool AsciiKeys::Append(std::string_view text, std::string& keys) const {
    if (text.size() > kMaxLength)
        return false;
    std::array<char, (kMaxLength + 1) * 8> key;
    char* end = key.data();
    const Step* row = m_steps.data();
    for (const char c : text) {
        const std::size_t next = m_classes[static_cast<BYTE>(c)];
        const Step step = row[next]; // class 0 is unknown in every row
        const auto added = static_cast<std::size_t>(step >> 56);
        if (added == kUnknown)
            return false;
        std::memcpy(end, &step, sizeof step);
        end += added;
        row = m_steps.data() + next * m_count;
    }
    keys.append(key.data(), static_cast<std::size_t>(end - key.data()));
    keys.append(m_tails[text.size()]);
    return true;
}

} // namespace vnbytstr::detail
