#include "src/charset/SystemText.h"

#include "src/charset/CharacterTypes.h"
#include "src/charset/CodePage.h"
#include "src/os/System.h"

namespace vnbytstr {

bool IsDbcsEnabled() { return !CodePage::Ansi().IsSingleByte(); }

bool IsMiddleEastEnabled() {
    const UINT page = CodePage::Ansi().GetNumber();
    return page == 1255 || page == 1256 || IsLocaleRightToLeft(System::Current().GetTextLocale());
}

} // namespace vnbytstr
