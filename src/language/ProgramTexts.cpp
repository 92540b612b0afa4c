#include "vnbytstr/ProgramTexts.h"

#include "src/resources/ResourceFiles.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/ResourceLibrary.h"
#include "vnbytstr/framework/Exception.h"

#include <memory>

namespace vnbytstr {

using detail::WithoutExceptions;

namespace {

struct Free {
    using pointer = HINSTANCE;
    void operator()(HINSTANCE library) const { FreeResourceLibrary(library); }
};
using Loaded = std::unique_ptr<void, Free>;

} // namespace

ProgramTexts::ProgramTexts(const char* prefix) : m_prefix(prefix != nullptr ? prefix : "") {
    Load();
}

ProgramTexts::~ProgramTexts() {
    FreeResourceLibrary(m_english);
    FreeResourceLibrary(m_library);
}

bool ProgramTexts::Load() {
    const auto load = [this] {
        Loaded library(detail::LoadResourceFile(GetUILanguage(), m_prefix));
        if (!library)
            return false;
        Loaded english;
        const CString name = detail::GetResourceDLLName(detail::kEnglish, m_prefix);
        HINSTANCE handle = nullptr;
        if (!name.IsEmpty() && LoadResourceLibrary(name, handle) == 0)
            english.reset(handle);
        FreeResourceLibrary(m_english);
        FreeResourceLibrary(m_library);
        m_library = library.release();
        m_english = english.release();
        return true;
    };
    return WithoutExceptions(load, false);
}

bool ProgramTexts::Find(UINT id, CString& text) const {
    text.Empty();
    return WithoutExceptions(
        [&] {
            return FindResourceString(m_library, id, text) ||
                   FindResourceString(m_english, id, text);
        },
        false);
}

bool ProgramTexts::IsRightToLeft() const {
    return WithoutExceptions([this] { return IsResourceRightToLeft(m_library); }, false);
}

} // namespace vnbytstr
