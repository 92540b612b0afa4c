#include "src/settings/ProfileNotices.h"

#include "src/charset/CodePage.h"
#include "src/os/System.h"

#include <mutex>

namespace vnbytstr::detail {

namespace {

struct Handler {
    VNProfileHandler function = nullptr;
    void* context = nullptr;
};
std::mutex g_mutex;
Handler g_handler;

Handler CurrentHandler() {
    const std::lock_guard lock(g_mutex);
    return g_handler;
}

} // namespace

void ProfileNotices::SetHandler(VNProfileHandler handler, void* context) {
    const std::lock_guard lock(g_mutex);
    g_handler = {handler, context};
}

std::string ProfileNotices::ToAnsi(const std::string& text) {
    const CodePage& ansi = CodePage::Ansi();
    return ansi.IsUtf8() ? text : ansi.FromWide(CodePage::Find(65001)->ToWide(text));
}

ProfileNotices::~ProfileNotices() {
    for (const auto& [status, text] : m_notices) {
        try {
            if (const Handler handler = CurrentHandler(); handler.function)
                handler.function(status, ToAnsi(text).c_str(), handler.context);
            else
                System::Current().WriteDiagnostic(("vnbytstr: " + text).c_str());
        } catch (...) {
            // A message that memory does not suffice for; the status still tells.
        }
    }
}

} // namespace vnbytstr::detail
