// The registry, below the current user's key.
#include "src/os/NativeSystem.h"
#include "src/os/SystemRegistry.h"
#include "src/os/windows/WindowsCalls.h"

#include <algorithm>
#include <cerrno>

namespace vnbytstr {

namespace {

/// An open key that closes itself.
class OwnKey {
public:
    OwnKey(HKEY above, const wchar_t* name, REGSAM access) noexcept
        : m_error(::RegOpenKeyExW(above, name, 0, access, &m_key)) {}
    explicit OwnKey(const std::string& toMake) {
        m_error = ::RegCreateKeyExW(HKEY_CURRENT_USER, windows::Widen(toMake).c_str(), 0, nullptr,
                                    0, KEY_WRITE, nullptr, &m_key, nullptr);
    }
    ~OwnKey() {
        if (m_key)
            ::RegCloseKey(m_key);
    }
    OwnKey(const OwnKey&) = delete;
    OwnKey& operator=(const OwnKey&) = delete;

    int Error() const noexcept { return windows::ErrnoOf(static_cast<DWORD>(m_error)); }
    HKEY Get() const noexcept { return m_key; }

private:
    HKEY m_key = nullptr;
    LSTATUS m_error;
};

std::optional<std::string> TextOf(DWORD type, const std::vector<BYTE>& data, DWORD size) {
    if (type == REG_DWORD && size == sizeof(DWORD))
        return std::to_string(*reinterpret_cast<const DWORD*>(data.data()));
    if (type != REG_SZ && type != REG_EXPAND_SZ)
        return std::nullopt;
    std::wstring_view text(reinterpret_cast<const wchar_t*>(data.data()), size / sizeof(wchar_t));
    if (text.ends_with(L'\0')) // not all programs write the NUL
        text.remove_suffix(1);
    return windows::Narrow(text);
}

void ReadValues(HKEY key, std::vector<RegistryValue>& values) {
    std::wstring name(16384, L'\0'); // the longest is one less
    std::vector<BYTE> data(1024);
    for (DWORD index = 0;;) {
        auto length = static_cast<DWORD>(name.size()), size = static_cast<DWORD>(data.size());
        DWORD type = 0;
        const LSTATUS error =
            ::RegEnumValueW(key, index, name.data(), &length, nullptr, &type, data.data(), &size);
        if (error == ERROR_MORE_DATA)
            data.resize(std::max<std::size_t>(size, data.size() * 2));
        else if (error == ERROR_SUCCESS) {
            values.push_back({windows::Narrow({name.data(), length}), TextOf(type, data, size)});
            ++index;
        } else
            return;
    }
}

void ReadKey(HKEY key, int levels, bool isWhole, RegistryKey& tree) {
    DWORD unused = 0;
    FILETIME changed{};
    ::RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &unused, nullptr, nullptr, nullptr, nullptr,
                       nullptr, nullptr, &changed);
    tree.changed = static_cast<std::int64_t>(
        (static_cast<std::uint64_t>(changed.dwHighDateTime) << 32) | changed.dwLowDateTime);
    if (isWhole || levels == 2)
        ReadValues(key, tree.values);
    std::array<wchar_t, 256> name;
    for (DWORD index = 0; levels > 0; ++index) {
        auto length = static_cast<DWORD>(name.size());
        if (::RegEnumKeyExW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            return;
        const OwnKey within(key, name.data(), KEY_READ);
        if (within.Error() != 0)
            continue; // removed meanwhile, or another user's
        RegistryKey& added = tree.keys.emplace_back();
        added.name = windows::Narrow({name.data(), length});
        ReadKey(within.Get(), levels - 1, isWhole, added);
    }
}

class WindowsRegistry final : public SystemRegistry {
public:
    int Read(const std::string& key, bool isWhole, RegistryKey& tree) override {
        tree = {};
        const OwnKey opened(HKEY_CURRENT_USER, windows::Widen(key).c_str(), KEY_READ);
        if (opened.Error() == 0)
            ReadKey(opened.Get(), 2, isWhole, tree);
        return opened.Error();
    }
    int Set(const std::string& key, const std::string& name, const std::string& text) override {
        const OwnKey made(key);
        if (made.Error() != 0)
            return made.Error();
        const std::wstring wide = windows::Widen(text);
        return ErrorOf(::RegSetValueExW(made.Get(), windows::Widen(name).c_str(), 0, REG_SZ,
                                        reinterpret_cast<const BYTE*>(wide.c_str()),
                                        static_cast<DWORD>((wide.size() + 1) * sizeof(wchar_t))));
    }
    int Remove(const std::string& key, const std::string& name) override {
        DWORD keys = 0, values = 0;
        const std::wstring wide = windows::Widen(key);
        {
            const OwnKey opened(HKEY_CURRENT_USER, wide.c_str(), KEY_READ | KEY_SET_VALUE);
            int error = opened.Error();
            if (error == 0)
                error = ErrorOf(::RegDeleteValueW(opened.Get(), windows::Widen(name).c_str()));
            if (error != 0)
                return error == ENOENT ? 0 : error;
            ::RegQueryInfoKeyW(opened.Get(), nullptr, nullptr, nullptr, &keys, nullptr, nullptr,
                               &values, nullptr, nullptr, nullptr, nullptr);
        }
        if (keys == 0 && values == 0) // a key that stays empty does no harm
            ::RegDeleteKeyW(HKEY_CURRENT_USER, wide.c_str());
        return 0;
    }
    int Sync(const std::string& key) override {
        const OwnKey opened(HKEY_CURRENT_USER, windows::Widen(key).c_str(), KEY_READ);
        return opened.Error() != 0 ? opened.Error() : ErrorOf(::RegFlushKey(opened.Get()));
    }
    std::string Fold(const std::string& name) override {
        std::wstring wide = windows::Widen(name);
        ::CharUpperBuffW(wide.data(), static_cast<DWORD>(wide.size()));
        return windows::Narrow(wide);
    }

private:
    static int ErrorOf(LSTATUS error) noexcept {
        return windows::ErrnoOf(static_cast<DWORD>(error));
    }
};

} // namespace

SystemRegistry* NativeSystem::GetRegistry() {
    static WindowsRegistry registry;
    return &registry;
}

} // namespace vnbytstr
