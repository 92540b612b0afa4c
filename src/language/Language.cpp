#include "vnbytstr/Language.h"

#include "src/charset/LanguageNames.h"
#include "src/language/DefaultLanguage.h"
#include "src/os/System.h"
#include "src/resources/ResourceFiles.h"
#include "src/resources/Trace.h"
#include "vnbytstr/Profile.h"
#include "vnbytstr/ResourceLibrary.h"
#include "vnbytstr/framework/Exception.h"
#include "vnbytstr/framework/Module.h"

#include <mutex>
#include <string>

using vnbytstr::System;
using vnbytstr::detail::GetResourceDLLName;
using vnbytstr::detail::kEnglish;
using vnbytstr::detail::LoadResourceFile;
using vnbytstr::detail::Trace;
using vnbytstr::detail::WithoutExceptions;

namespace {

constexpr const char* kPrefix = "vnurc"; // of the libraries that LoadStringA falls back to
constexpr WORD kPrimaryLanguage = 0x3FF; // bits of a LANGID
constexpr WORD kEnglishLanguage = 0x09;

/// Restores the resource handle at the end of a scope.
class ResourceHandleRestorer {
public:
    ResourceHandleRestorer() : m_handle(AfxGetResourceHandle()) {}
    ~ResourceHandleRestorer() { AfxSetResourceHandle(m_handle); }
    ResourceHandleRestorer(const ResourceHandleRestorer&) = delete;
    ResourceHandleRestorer& operator=(const ResourceHandleRestorer&) = delete;

    HINSTANCE GetHandle() const { return m_handle; }

private:
    HINSTANCE m_handle;
};

/// The English library for the time of one load. Its file is looked for at most once per tick,
/// since a program without LoadResourceDLL comes here for each of its strings.
class EnglishLibrary {
public:
    EnglishLibrary() {
        const std::lock_guard lock(s_mutex);
        const DWORD tick = System::Current().GetTickCount();
        const unsigned count = System::InstallCount();
        const bool isFresh = tick == s_tick && count == s_count && !vnbytstr::detail::IsTracing();
        if (isFresh && (s_last == nullptr || vnbytstr::ReviveResourceLibrary(s_last))) {
            m_library = s_last;
            return;
        }
        const CString name = GetResourceDLLName(kEnglish, kPrefix);
        if (!name.IsEmpty())
            vnbytstr::LoadResourceLibrary(name, m_library);
        s_tick = tick;
        s_count = count;
        s_last = m_library;
    }
    ~EnglishLibrary() { vnbytstr::FreeResourceLibrary(m_library); }
    EnglishLibrary(const EnglishLibrary&) = delete;
    EnglishLibrary& operator=(const EnglishLibrary&) = delete;

    /// Null when no such library is found.
    HINSTANCE GetHandle() const { return m_library; }

private:
    static std::mutex s_mutex;
    static DWORD s_tick;
    static unsigned s_count;
    static HINSTANCE s_last; // null: there was none

    HINSTANCE m_library = nullptr;
};

std::mutex EnglishLibrary::s_mutex;
DWORD EnglishLibrary::s_tick = 0;
unsigned EnglishLibrary::s_count = ~0u;
HINSTANCE EnglishLibrary::s_last = nullptr;

int LoadFrom(HINSTANCE module, UINT id, CString& text) {
    AfxSetResourceHandle(module);
    return AfxLoadString(id, text);
}

int LoadWithFallback(CString& text, UINT id, HINSTANCE module) {
    const ResourceHandleRestorer restorer;
    const HINSTANCE current = restorer.GetHandle();
    int length = AfxLoadString(id, text);
    if (length == 0 && module != nullptr && module != current) {
        length = LoadFrom(module, id, text);
        AfxSetResourceHandle(current);
    }
    if (length == 0) {
        const EnglishLibrary english;
        const HINSTANCE handle = english.GetHandle();
        if (handle != nullptr && handle != current && handle != module)
            length = LoadFrom(handle, id, text);
    }
    return length;
}

} // namespace

CString GetUILanguage() {
    return WithoutExceptions(
        [] {
            Trace("Entering GetUILanguage()");
            CString value = VNGetProfileString(3, "Options", "UILanguage", "", 0);
            if (value.IsEmpty())
                return vnbytstr::detail::GetDefaultUILanguage();
            Trace("\t%s specified in registry", static_cast<const char*>(value));
            return value;
        },
        CString());
}

HINSTANCE LoadResourceDLL(const char* prefix) {
    const auto load = [prefix = prefix != nullptr ? prefix : ""] {
        Trace("Entering LoadResourceDLL(\"%s\")", prefix);
        const HINSTANCE library = LoadResourceFile(GetUILanguage(), prefix);
        if (library != nullptr) {
            Trace("\tSetting resource handle");
            AfxSetResourceHandle(library);
        }
        return library;
    };
    return WithoutExceptions(load, HINSTANCE{nullptr});
}

int LoadStringA(CString& text, UINT id, HINSTANCE module) {
    text.Empty();
    return WithoutExceptions([&] { return LoadWithFallback(text, id, module); }, 0);
}

CString GetLanguageNameFromCode(const char* code) {
    return WithoutExceptions(
        [code] {
            const std::string given = code != nullptr ? code : "";
            const std::string name =
                vnbytstr::LanguageDisplayName(vnbytstr::LocaleOfLanguage(given));
            const std::string& shown = name.empty() ? given : name;
            return CString(shown.data(), static_cast<int>(shown.size()));
        },
        CString());
}

BOOL ResourcesAreEnglish() {
    const HINSTANCE current = AfxGetResourceHandle();
    if (current == AfxGetInstanceHandle())
        return TRUE;
    const WORD language = vnbytstr::GetResourceLanguage(current) & kPrimaryLanguage;
    return language == kEnglishLanguage ? TRUE : FALSE;
}

BOOL ResourcesAreBiDi() {
    return vnbytstr::IsResourceRightToLeft(AfxGetResourceHandle()) ? TRUE : FALSE;
}

BOOL SystemResourcesAreEnglish() {
    return WithoutExceptions(
        [] {
            const std::string locale = System::Current().GetMessagesLocale();
            return vnbytstr::AbbreviatedLanguageName(locale).starts_with("EN") ? TRUE : FALSE;
        },
        FALSE);
}

std::vector<SInstalledLanguage> GetInstalledLanguages(const char* prefix) {
    std::vector<SInstalledLanguage> languages;
    for (const auto& [code, file] : vnbytstr::detail::FindResourceFiles(prefix ? prefix : ""))
        languages.push_back({code.c_str(), GetLanguageNameFromCode(code.c_str()), file.c_str()});
    return languages;
}
