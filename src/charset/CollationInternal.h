// The fast way to the keys of plain ASCII text.
#pragma once

#include "vnbytstr/framework/Types.h"

#include <unicode/ucol.h>

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vnbytstr::detail {

struct CollatorCloser {
    void operator()(UCollator* collator) const noexcept { ucol_close(collator); }
};
using CollatorPtr = std::unique_ptr<UCollator, CollatorCloser>;

/// Appends ICU's key of UTF-16 text, with its NUL.
void AppendIcuKey(const UCollator& collator, std::u16string_view text, std::string& keys);

/// Makes ICU's keys of ASCII text from tables learnt from it.
///
/// A key is the weights of the characters, byte 1, the weights of the accents, and NUL. The bytes a
/// character adds to the first part depend on itself and the one before it only (equal beginnings
/// of two weights in a row are shortened), as long as no two of them sort as one letter (Hungarian
/// "cs") and each is one letter without an accent. The second part of such a text is a matter of
/// its length. So the keys of pairs of characters are enough; other texts are left to ICU.
class AsciiKeys {
public:
    explicit AsciiKeys(const UCollator& collator);

    /// Appends the key; false, with `keys` unchanged, when the text needs ICU itself.
    bool Append(std::string_view text, std::string& keys) const;

private:
    static constexpr std::size_t kMaxLength = 255; ///< bytes of text
    /// What one character adds, in one register: up to 7 bytes, the first lowest; above them their
    /// number, kUnknown where only ICU knows.
    using Step = std::uint64_t;
    static constexpr std::size_t kMaxStepBytes = 7;
    static constexpr Step kUnknown = 0xFF;

    void LearnTails(const UCollator& collator);
    void LearnClasses(const UCollator& collator);
    void LearnSteps(const UCollator& collator);
    void ForgetContractions(const UCollator& collator);
    bool IsTail(std::string_view part, std::size_t length) const;
    Step& At(std::size_t previous, std::size_t next) { return m_steps[previous * m_count + next]; }

    /// Characters of equal weight are one class; 0: none, as before the first character.
    std::array<BYTE, 256> m_classes{};
    std::size_t m_count = 1;          ///< of classes, with the class 0
    std::vector<Step> m_steps;        ///< by the class before and the class itself
    std::vector<std::string> m_tails; ///< byte 1 and the second part, by the text's length
    std::vector<char16_t> m_samples;  ///< one character of each class
};

} // namespace vnbytstr::detail
