// Matching fonts by fontconfig, which desktops have. It is loaded when it is first needed, so that
// machines without a screen need not have it.
#include "src/os/NativeSystem.h"

#include <dlfcn.h>

#include <memory>

namespace vnbytstr {

namespace {

struct FcPattern;

/// The functions of libfontconfig that matching takes (its interface is stable since 2.0).
class Fontconfig {
public:
    /// Null when there is no such library. Never unloaded: its configuration stays for later.
    static const Fontconfig* Get() {
        static const Fontconfig library;
        return library.m_isComplete ? &library : nullptr;
    }

    std::string Match(const std::string& family) const {
        const PatternPtr pattern(m_create(), m_destroy);
        if (!pattern)
            return {};
        for (const char* name : {family.c_str(), "monospace"}) // the second where the first fails
            m_addString(pattern.get(), kFamily, reinterpret_cast<const unsigned char*>(name));
        m_substitute(nullptr, pattern.get(), kMatchPattern);
        m_defaultSubstitute(pattern.get());
        int result = 0;
        const PatternPtr match(m_match(nullptr, pattern.get(), &result), m_destroy);
        unsigned char* found = nullptr;
        if (!match || m_getString(match.get(), kFamily, 0, &found) != kResultMatch || !found)
            return {};
        return reinterpret_cast<const char*>(found);
    }

private:
    static constexpr const char* kFamily = "family";
    static constexpr int kMatchPattern = 0, kResultMatch = 0;
    using PatternPtr = std::unique_ptr<FcPattern, void (*)(FcPattern*)>;

    Fontconfig() {
        void* const library = ::dlopen("libfontconfig.so.1", RTLD_NOW | RTLD_LOCAL);
        if (!library)
            return;
        const auto load = [library](const char* name, auto& function) {
            function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(
                ::dlsym(library, name));
            return function != nullptr;
        };
        m_isComplete =
            load("FcPatternCreate", m_create) && load("FcPatternDestroy", m_destroy) &&
            load("FcPatternAddString", m_addString) && load("FcPatternGetString", m_getString) &&
            load("FcConfigSubstitute", m_substitute) &&
            load("FcDefaultSubstitute", m_defaultSubstitute) && load("FcFontMatch", m_match);
    }

    bool m_isComplete = false;
    FcPattern* (*m_create)() = nullptr;
    void (*m_destroy)(FcPattern*) = nullptr;
    int (*m_addString)(FcPattern*, const char*, const unsigned char*) = nullptr;
    int (*m_getString)(const FcPattern*, const char*, int, unsigned char**) = nullptr;
    int (*m_substitute)(void*, FcPattern*, int) = nullptr;
    void (*m_defaultSubstitute)(FcPattern*) = nullptr;
    FcPattern* (*m_match)(void*, FcPattern*, int*) = nullptr;
};

} // namespace

std::string NativeSystem::MatchFontFamily(const std::string& family) {
    const Fontconfig* const fonts = Fontconfig::Get();
    return fonts ? fonts->Match(family) : std::string();
}

} // namespace vnbytstr
