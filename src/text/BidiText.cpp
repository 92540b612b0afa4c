#include "vnbytstr/BidiText.h"

#include "src/charset/CharacterTypes.h"
#include "src/charset/CodePage.h"
#include "src/charset/SystemText.h"
#include "src/os/System.h"
#include "src/text/SystemAnswers.h"

#include <algorithm>
#include <new>
#include <string>
#include <string_view>

using vnbytstr::CodePage;
using vnbytstr::System;
using vnbytstr::SystemVersion;

namespace {

constexpr char16_t kLeftToRightMark = 0x200E;

/// Pages for text in which directions mix.
bool IsBidirectional(const CodePage& page) {
    return page.GetNumber() == 1255 || page.GetNumber() == 1256 || page.IsUtf8();
}

/// The mark in the ANSI code page. A single-byte page without the mark gets the byte that it has in
/// the Hebrew and Arabic pages; in a double-byte page that would be half a character, so there is
/// no mark.
std::string Mark() {
    const CodePage& page = CodePage::Ansi();
    const std::u16string_view wide(&kLeftToRightMark, 1);
    std::string mark = page.FromWide(wide);
    if (page.ToWide(mark) == wide)
        return mark;
    return page.IsSingleByte() ? "\xFD" : "";
}

/// Whether no character has that direction; also when there is no memory to look.
bool HasNone(const char* text, WORD direction) {
    try {
        const std::u16string wide = CodePage::Ansi().ToWide(text != nullptr ? text : "");
        return std::none_of(wide.begin(), wide.end(), [direction](char16_t character) {
            return vnbytstr::CharacterType2(character) == direction;
        });
    } catch (const std::bad_alloc&) {
        return true;
    }
}

} // namespace

bool IsBIDIWindows() { return vnbytstr::detail::IsMiddleEastEnabledOnce(); }

void SurroundWithLRM(CString& text) {
    const CString mark = Mark().c_str();
    text = mark + text + mark;
}

void MaybeAddLRMSuffix(CString& text) {
    System& system = System::Current();
    const SystemVersion version = system.GetVersion();
    if (version.platform != SystemVersion::NtFamily || version.major <= 4 ||
        !vnbytstr::IsMiddleEastEnabled() || !IsBidirectional(CodePage::Ansi()))
        return;
    const CString mark = Mark().c_str();
    if (text.Right(mark.GetLength()) != mark && IsStringAllLTR(text))
        text += mark;
}

bool IsStringAllLTR(const char* text) {
    return !IsBidirectional(CodePage::Ansi()) || HasNone(text, vnbytstr::type2::kRightToLeft);
}

bool IsStringAllRTL(const char* text) {
    return IsBidirectional(CodePage::Ansi()) && HasNone(text, vnbytstr::type2::kLeftToRight);
}
