// Invariants of the registry:
// 1. Every library has its own address as its handle and lives as long as that is loaded, or is one
//    of the kKept last ones that were freed.
// 2. The texts of a library are in the code page m_page; after a change of the page they are made
// again.
#include "vnbytstr/ResourceLibrary.h"

#include "src/charset/CodePage.h"
#include "src/os/System.h"
#include "src/resources/PeResources.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace vnbytstr {

namespace {

/// Freed libraries that are kept, so that loading them again needs no reading: the English one is
/// loaded and freed for every string that only it has.
constexpr std::size_t kKept = 4;

struct Library {
    std::string file;
    FileStatus status;
    detail::PeResources resources;
    unsigned loads = 0;
    std::uint64_t freed = 0; ///< when it was last freed, counted in frees
    const CodePage* page = nullptr;
    std::unordered_map<UINT, CString> texts;

    HINSTANCE Handle() { return reinterpret_cast<HINSTANCE>(this); }
    bool IsOf(const FileStatus& other) const {
        return status.identity == other.identity && status.length == other.length &&
               status.modifiedSeconds == other.modifiedSeconds &&
               status.modifiedNanoseconds == other.modifiedNanoseconds;
    }
};

int ReadAll(System& system, const char* name, std::vector<BYTE>& content) {
    FileHandle handle = kNoFile;
    if (const int error = system.OpenFile(name, kOpenRead, handle))
        return error;
    std::uint64_t length = 0;
    int error = system.GetFileLength(handle, length);
    if (error == 0 && length > detail::PeResources::kMaxFileLength)
        error = ENOEXEC;
    std::size_t read = 0, done = 1;
    if (error == 0)
        content.resize(static_cast<std::size_t>(length));
    while (error == 0 && read < content.size() && done > 0) {
        error = system.ReadFile(handle, content.data() + read, content.size() - read, done);
        read += done;
    }
    content.resize(std::min(read, content.size()));
    system.CloseFile(handle);
    return error;
}

class Registry {
public:
    /// Never destroyed: objects with static lifetime may still load strings at exit.
    static Registry& Get() {
        static Registry* const registry =
            new Registry; // NOLINT(bugprone-unhandled-exception-at-new)
        return *registry;
    }

    int Load(const char* name, HINSTANCE& handle) {
        System& system = System::Current();
        FileStatus status;
        if (const int error = system.GetFileStatus(name, status))
            return error;
        if (!status.isRegular)
            return status.isFolder ? EISDIR : ENOEXEC;
        const std::lock_guard lock(m_mutex);
        for (const auto& [each, library] : m_libraries) {
            if (library->IsOf(status)) {
                ++library->loads;
                handle = each;
                return 0;
            }
        }
        auto library = std::make_unique<Library>();
        std::vector<BYTE> content;
        if (const int error = ReadAll(system, name, content))
            return error;
        if (!library->resources.Parse(std::move(content)))
            return ENOEXEC;
        library->file = name;
        library->status = status;
        library->loads = 1;
        handle = library->Handle();
        m_libraries.emplace(handle, std::move(library));
        return 0;
    }

    bool Revive(HINSTANCE handle) {
        const std::lock_guard lock(m_mutex);
        const auto found = m_libraries.find(handle);
        if (found == m_libraries.end())
            return false;
        ++found->second->loads;
        return true;
    }

    bool Free(HINSTANCE handle) {
        const std::lock_guard lock(m_mutex);
        Library* library = Find(handle);
        if (library == nullptr)
            return false;
        if (--library->loads == 0) {
            library->freed = ++m_frees;
            ForgetOldest();
        }
        return true;
    }

    /// Calls `function` with the library of a handle; gives `otherwise` for an invalid handle.
    template <typename Function, typename Result>
    Result With(HINSTANCE handle, Function function, Result otherwise) {
        const std::lock_guard lock(m_mutex);
        Library* library = Find(handle);
        return library != nullptr ? function(*library) : otherwise;
    }

private:
    Library* Find(HINSTANCE handle) {
        const auto found = m_libraries.find(handle);
        return found != m_libraries.end() && found->second->loads > 0 ? found->second.get()
                                                                      : nullptr;
    }

    void ForgetOldest() {
        auto oldest = m_libraries.end();
        std::size_t unused = 0;
        for (auto each = m_libraries.begin(); each != m_libraries.end(); ++each) {
            if (each->second->loads > 0)
                continue;
            ++unused;
            if (oldest == m_libraries.end() || each->second->freed < oldest->second->freed)
                oldest = each;
        }
        if (unused > kKept)
            m_libraries.erase(oldest);
    }

    std::mutex m_mutex;
    std::unordered_map<HINSTANCE, std::unique_ptr<Library>> m_libraries;
    std::uint64_t m_frees = 0;
};

/// The string of `library` in the ANSI code page, made at its first use; null when there is none.
const CString* TextOf(Library& library, UINT id) {
    const CodePage& page = CodePage::Ansi();
    if (library.page != &page) {
        library.texts.clear();
        library.page = &page;
    }
    const auto found = library.texts.find(id);
    if (found != library.texts.end())
        return &found->second;
    std::u16string wide;
    if (!library.resources.FindString(id, wide))
        return nullptr;
    const std::string text = page.FromWide(wide);
    return &library.texts.emplace(id, CString(text.data(), static_cast<int>(text.size())))
                .first->second;
}

/// Primary languages that are written from right to left: Arabic, Hebrew, Urdu, Persian, Yiddish,
/// Sindhi, Syriac, Pashto, Divehi, Uyghur, Dari, Central Kurdish.
bool IsRightToLeftLanguage(WORD language) {
    constexpr std::array<WORD, 12> kLanguages = {0x01, 0x0D, 0x20, 0x29, 0x3D, 0x59,
                                                 0x5A, 0x63, 0x65, 0x80, 0x8C, 0x92};
    return std::find(kLanguages.begin(), kLanguages.end(), language & 0x3FF) != kLanguages.end();
}

} // namespace

HINSTANCE GetApplicationInstance() noexcept { return AfxGetInstanceHandle(); }

int LoadResourceLibrary(const char* file, HINSTANCE& library) {
    library = nullptr;
    return file != nullptr && *file != '\0' ? Registry::Get().Load(file, library) : ENOENT;
}

bool ReviveResourceLibrary(HINSTANCE library) { return Registry::Get().Revive(library); }

bool FreeResourceLibrary(HINSTANCE library) { return Registry::Get().Free(library); }

std::string GetModuleFileName(HINSTANCE library) {
    if (library == GetApplicationInstance())
        return System::Current().GetModuleFileName();
    return Registry::Get().With(
        library, [](const Library& each) { return each.file; }, std::string());
}

bool FindResourceString(HINSTANCE library, UINT id, CString& text) {
    return Registry::Get().With(
        library,
        [&](Library& each) {
            const CString* found = TextOf(each, id);
            if (found != nullptr)
                text = *found;
            return found != nullptr;
        },
        false);
}

std::vector<UINT> ListResourceStrings(HINSTANCE library) {
    return Registry::Get().With(
        library, [](const Library& each) { return each.resources.GetStringIds(); },
        std::vector<UINT>());
}

WORD GetResourceLanguage(HINSTANCE library) {
    return Registry::Get().With(
        library, [](const Library& each) { return each.resources.GetLanguage(); }, WORD{0});
}

bool IsResourceRightToLeft(HINSTANCE library) {
    return Registry::Get().With(
        library,
        [](const Library& each) {
            return each.resources.GetFileDescription().starts_with(u"\u200E\u200E") ||
                   IsRightToLeftLanguage(each.resources.GetLanguage());
        },
        false);
}

} // namespace vnbytstr

int AfxLoadString(UINT id, CString& text) {
    if (!vnbytstr::FindResourceString(AfxGetResourceHandle(), id, text))
        text.Empty();
    return text.GetLength();
}

int AfxMessageBox(UINT textId, UINT type, UINT helpId) {
    CString text;
    AfxLoadString(textId, text);
    return AfxMessageBox(text, type, helpId == 0xFFFFFFFF ? textId : helpId);
}
