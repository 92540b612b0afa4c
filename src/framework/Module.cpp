#include "vnbytstr/framework/Module.h"

#include "src/os/Paths.h"
#include "src/os/System.h"
#include "vnbytstr/Interaction.h"

#include <atomic>
#include <string>

namespace {
std::atomic<HINSTANCE> g_resources{nullptr};
int g_program; // its address stands for the program
} // namespace

HINSTANCE AfxGetInstanceHandle() { return reinterpret_cast<HINSTANCE>(&g_program); }

HINSTANCE AfxGetResourceHandle() {
    const HINSTANCE resources = g_resources.load(std::memory_order_relaxed);
    return resources != nullptr ? resources : AfxGetInstanceHandle();
}

void AfxSetResourceHandle(HINSTANCE module) {
    g_resources.store(module, std::memory_order_relaxed);
}

CString AfxGetAppName() {
    const std::string file = vnbytstr::System::Current().GetModuleFileName();
    std::string_view name = vnbytstr::FileNameOf(file);
    if (name.size() > 4 && name.ends_with(".exe"))
        name.remove_suffix(4);
    return CString(name.data(), static_cast<int>(name.size()));
}

void AfxFormatStrings(CString& out, const char* format, const char* const* texts, int count) {
    CString result;
    // Neither a percent sign nor the digit after it is ever part of a longer character.
    for (const char* p = format != nullptr ? format : ""; *p != '\0'; ++p) {
        if (p[0] != '%' || p[1] < '1' || p[1] > '9') {
            result += *p;
            continue;
        }
        const int index = *++p - '1';
        if (index >= count)
            result += '?';
        else if (texts[index] != nullptr)
            result += texts[index];
    }
    out = result;
}

int AfxMessageBox(const char* text, UINT type, UINT helpId) {
    return vnbytstr::Interaction::Current().MessageBox(text, AfxGetAppName(), type, helpId);
}
