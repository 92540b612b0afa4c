#include "HelpPages.h"

#include <vnbytstr/HTMLHelp.h>

namespace vnquery {

void OpenHelpPage(unsigned topic) {
    CVNHTMLHelp help("xdg-open");
    // A number as it stands in the index: no command that would change it.
    constexpr UINT kByNumber = 0;
    help.DoHtmlHelp(topic, kByNumber);
}

} // namespace vnquery
