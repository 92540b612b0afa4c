#include "vnbytstr/BidiText.h"

#include "platform/companion/Ccsid.h"
#include "platform/system/CharacterTypes.h"
#include "platform/system/CodePage.h"
#include "platform/system/System.h"
#include "text/SystemAnswersInternal.h"

#include <algorithm>
#include <new>
#include <string>

using vnbytstr::CodePage;
using vnbytstr::System;
using vnbytstr::SystemVersion;

namespace {

constexpr char kLeftToRightMark = '\xFD';

bool IsHebrewOrArabic(UINT page) { return page == 1255 || page == 1256; }

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

void SurroundWithLRM(CString& text) { text = kLeftToRightMark + text + kLeftToRightMark; }

void MaybeAddLRMSuffix(CString& text) {
    System& system = System::Current();
    const SystemVersion version = system.GetVersion();
    if (version.platform != SystemVersion::NtFamily || version.major <= 4 ||
        !system.IsMiddleEastEnabled() || !IsHebrewOrArabic(CodePage::Ansi().GetNumber()))
        return;
    const bool endsWithMark = !text.IsEmpty() && text[text.GetLength() - 1] == kLeftToRightMark;
    if (!endsWithMark && IsStringAllLTR(text))
        text += kLeftToRightMark;
}

bool IsStringAllLTR(const char* text) {
    return !IsHebrewOrArabic(GetNativeCCSID()) || HasNone(text, vnbytstr::type2::kRightToLeft);
}

bool IsStringAllRTL(const char* text) {
    return IsHebrewOrArabic(GetNativeCCSID()) && HasNone(text, vnbytstr::type2::kLeftToRight);
}
