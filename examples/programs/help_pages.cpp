// Opens a program's help page by its number. The pages lie in Help/l.ENU beside the program, and
// an index says which number is which page.
#include <vnbytstr/vnbytstr.h>

#include <cstdio>
#include <string_view>

namespace {

/// How the library reaches the user: here, on the terminal. (Without such an object messages go to
/// the terminal and pages to xdg-open; programs with windows get boxes.)
class Terminal : public vnbytstr::Interaction {
public:
    int MessageBox(const char* text, const char*, UINT, UINT) override {
        std::printf("%s\n", text);
        return IDOK;
    }
    int ShellExecute(const char*, const char* file, const char* parameters, const char*,
                     int) override {
        const std::string_view page(parameters);
        std::printf("%s shows %.*s\n", file, static_cast<int>(page.size() - page.rfind('/') - 1),
                    page.substr(page.rfind('/') + 1).data());
        return vnbytstr::kShellStarted;
    }
};

} // namespace

int main() {
    Terminal terminal;
    const vnbytstr::ScopedInteraction scope(terminal);
    CVNHTMLHelp help("browser");
    help.DoHtmlHelp(7, 0);  // a page by its number
    help.DoHtmlHelp(99, 0); // not in the index: the contents
    help.DoHtmlHelp(0, CVNHTMLHelp::helpContents);
    return 0;
}
