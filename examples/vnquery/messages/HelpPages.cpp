#include "vnquery/messages/HelpPages.h"

#include "vnbytstr/HTMLHelp.h"
#include "vnbytstr/Interaction.h"

namespace vnquery {

namespace {

/// Passes everything on and remembers whether something was opened.
class OpeningWatch : public vnbytstr::Interaction {
public:
    explicit OpeningWatch(Interaction& next) : m_next(next) {}

    int MessageBox(const char* text, const char* caption, UINT type, UINT helpContext) override {
        return m_next.MessageBox(text, caption, type, helpContext);
    }
    int ShellExecute(const char* verb, const char* file, const char* parameters, const char* folder,
                     int show) override {
        const int result = m_next.ShellExecute(verb, file, parameters, folder, show);
        m_hasOpened = result >= vnbytstr::kShellStarted;
        return result;
    }
    bool HasOpened() const { return m_hasOpened; }

private:
    Interaction& m_next;
    bool m_hasOpened = false;
};

} // namespace

bool OpenHelpPage(unsigned topic) {
    OpeningWatch watch(vnbytstr::Interaction::Current());
    const vnbytstr::ScopedInteraction scope(watch);
    CVNHTMLHelp help("xdg-open");
    // The number as it stands in the index; a command would change it.
    constexpr UINT kByNumber = 0;
    help.DoHtmlHelp(topic, kByNumber);
    return watch.HasOpened();
}

} // namespace vnquery
