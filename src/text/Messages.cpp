#include "vnbytstr/Messages.h"

#include "vnbytstr/ResourceLibrary.h"

#include "messages/ResourceIds.h"
#include "vnbytstr/Interaction.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/framework/Exception.h"
#include "vnbytstr/framework/Module.h"

#include <array>
#include <cstdio>
#include <initializer_list>

using vnbytstr::detail::WithoutExceptions;

namespace {

using Texts = std::initializer_list<const char*>;

int Format(CString& out, const char* format, Texts texts) {
    return WithoutExceptions(
        [&] {
            AfxFormatStrings(out, format, texts.begin(), static_cast<int>(texts.size()));
            return out.GetLength();
        },
        -1);
}

int Format(CString& out, UINT id, HINSTANCE module, Texts texts) {
    CString format;
    if (LoadStringA(format, id, module) == 0)
        return -1;
    return Format(out, format, texts);
}

int ShowFormatted(UINT id, HINSTANCE module, UINT type, Texts texts) {
    CString text;
    Format(text, id, module, texts);
    return WithoutExceptions([&] { return AfxMessageBox(text, type, id); }, 0);
}

CString Load(UINT id) {
    CString text;
    LoadStringA(text, id, nullptr);
    return text;
}

/// Sets `out` to a number as snprintf makes it.
template <typename Number>
void FormatNumber(CString& out, const char* format, Number value) {
    std::array<char, 24> digits;
    std::snprintf(digits.data(), digits.size(), format, value);
    WithoutExceptions(
        [&] {
            out = digits.data();
            return 0;
        },
        0);
}

} // namespace

int FormatStringEx(CString& out, const char* format, const char* a1) {
    return Format(out, format, {a1});
}

int FormatStringEx(CString& out, const char* format, const char* a1, const char* a2) {
    return Format(out, format, {a1, a2});
}

int FormatStringEx(CString& out, const char* format, const char* a1, const char* a2, const char* a3,
                   const char* a4, const char* a5, const char* a6, const char* a7, const char* a8,
                   const char* a9) {
    return Format(out, format, {a1, a2, a3, a4, a5, a6, a7, a8, a9});
}

int FormatStringEx(CString& out, UINT id, HINSTANCE module, const char* a1) {
    return Format(out, id, module, {a1});
}

int FormatStringEx(CString& out, UINT id, HINSTANCE module, const char* a1, const char* a2) {
    return Format(out, id, module, {a1, a2});
}

int FormatStringEx(CString& out, UINT id, HINSTANCE module, const char* a1, const char* a2,
                   const char* a3, const char* a4, const char* a5, const char* a6, const char* a7,
                   const char* a8, const char* a9) {
    return Format(out, id, module, {a1, a2, a3, a4, a5, a6, a7, a8, a9});
}

int FormattedMessageBox(UINT id, HINSTANCE module, UINT type, const char* a1) {
    return ShowFormatted(id, module, type, {a1});
}

int FormattedMessageBox(UINT id, HINSTANCE module, UINT type, const char* a1, const char* a2) {
    return ShowFormatted(id, module, type, {a1, a2});
}

int FormattedMessageBox(UINT id, HINSTANCE module, UINT type, const char* a1, const char* a2,
                        const char* a3, const char* a4, const char* a5, const char* a6,
                        const char* a7, const char* a8, const char* a9) {
    return ShowFormatted(id, module, type, {a1, a2, a3, a4, a5, a6, a7, a8, a9});
}

int DisplayMessageBox(UINT textId, HINSTANCE module, UINT type, UINT /*unused*/) {
    CString text;
    if (LoadStringA(text, textId, module) == 0)
        return -1;
    return WithoutExceptions([&] { return AfxMessageBox(text, type, textId); }, 0);
}

int DisplayMessageBox(UINT textId, UINT captionId, HINSTANCE module, UINT type, UINT /*unused*/) {
    CString text, caption;
    if (LoadStringA(text, textId, module) == 0 || LoadStringA(caption, captionId, module) == 0)
        return -1;
    if (ResourcesAreBiDi())
        type |= MB_RIGHT | MB_RTLREADING;
    // Not AfxMessageBox, which takes no caption.
    return WithoutExceptions(
        [&] { return vnbytstr::Interaction::Current().MessageBox(text, caption, type, 0); }, 0);
}

void FormatShort(CString& out, short value) { FormatNumber(out, "%hd", value); }
void FormatLong(CString& out, LONG value) { FormatNumber(out, "%d", value); }
void FormatWORD(CString& out, WORD value) { FormatNumber(out, "%hu", value); }
void FormatDWORD(CString& out, DWORD value) { FormatNumber(out, "%u", value); }

CString GetBlobDisplayString() { return Load(IDS_BLOB); }
CString GetBlobLocatorDisplayString() { return Load(IDS_BLOB_LOCATOR); }
CString GetClobDisplayString() { return Load(IDS_CLOB); }
CString GetClobLocatorDisplayString() { return Load(IDS_CLOB_LOCATOR); }
CString GetDBClobDisplayString() { return Load(IDS_DBCLOB); }
CString GetDBClobLocatorDisplayString() { return Load(IDS_DBCLOB_LOCATOR); }
CString GetLongVarBlobDisplayString() { return Load(IDS_LONG_VAR_BLOB); }
CString GetLongVarClobDisplayString() { return Load(IDS_LONG_VAR_CLOB); }
CString GetLongVarDBClobDisplayString() { return Load(IDS_LONG_VAR_DBCLOB); }
