// How a change gets to the disk: under the exclusive lock of a file beside the profile (which the
// system takes away from a process that dies), the profile is read, changed, written to a new file
// in the same folder, brought to the disk, and given the profile's name in one step. Readers need
// no lock: whatever they open is whole.
#include "platform/companion/ProfileStoreInternal.h"

#include "platform/system/FileReplacement.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace vnbytstr::detail {

namespace {

constexpr int kMostKeptAside = 10000;

/// An open file that closes itself.
class OpenedFile {
public:
    OpenedFile() = default;
    ~OpenedFile() { Close(); }
    OpenedFile(const OpenedFile&) = delete;
    OpenedFile& operator=(const OpenedFile&) = delete;

    int Open(const std::string& name, unsigned flags) {
        return System::Current().OpenFile(name.c_str(), flags, m_handle);
    }
    int Close() {
        const FileHandle handle = std::exchange(m_handle, kNoFile);
        return handle == kNoFile ? 0 : System::Current().CloseFile(handle);
    }
    FileHandle Handle() const { return m_handle; }

private:
    FileHandle m_handle = kNoFile;
};

void Say(const std::string& text) {
    System::Current().WriteDiagnostic(("vnbytstr: " + text).c_str());
}

} // namespace

ProfileStore::ProfileStore() : m_file(CodePage::Ansi()) {}

ProfileStore& ProfileStore::Get() {
    // Never destroyed: objects with static lifetime may still ask for settings at exit.
    static ProfileStore* const store = new ProfileStore;
    return *store;
}

std::string ProfileStore::Path() {
    System& system = System::Current();
    std::string path = system.GetEnvironment("VNBYTSTR_PROFILE");
    if (!path.empty())
        return path;
    // The XDG base directory rules: a name that is not absolute does not count.
    path = system.GetEnvironment("XDG_CONFIG_HOME");
    if (!path.starts_with('/')) {
        path = system.GetEnvironment("HOME");
        if (path.empty())
            return {};
        path += "/.config";
    }
    return path + "/vnbytstr/profile.ini";
}

ProfileStore::Stamp ProfileStore::StampOf(const std::string& path) {
    Stamp stamp;
    stamp.path = path;
    stamp.codePage = CodePage::Ansi().GetNumber();
    FileStatus status;
    stamp.error = path.empty() ? ENOENT : System::Current().GetFileStatus(path.c_str(), status);
    if (stamp.error == 0) {
        stamp.identity = status.identity;
        stamp.length = status.length;
        stamp.seconds = status.modifiedSeconds;
        stamp.nanoseconds = status.modifiedNanoseconds;
    }
    return stamp;
}

ProfileStore::Loaded ProfileStore::Load(const std::string& path) {
    Loaded loaded;
    OpenedFile file;
    loaded.error = file.Open(path, kOpenRead);
    std::size_t done = 1;
    while (loaded.error == 0 && done != 0) {
        const std::size_t size = loaded.text.size();
        loaded.text.resize(size + 65536);
        loaded.error =
            System::Current().ReadFile(file.Handle(), loaded.text.data() + size, 65536, done);
        loaded.text.resize(size + (loaded.error == 0 ? done : 0));
    }
    return loaded;
}

void ProfileStore::Refresh() {
    const DWORD tick = System::Current().GetTickCount();
    const unsigned installs = System::InstallCount();
    if (m_isLoaded && tick == m_tick && installs == m_installs)
        return;
    m_tick = tick;
    m_installs = installs;
    // Stamped before it is read: what changes in between has another stamp the next time.
    Stamp stamp = StampOf(Path());
    if (m_isLoaded && stamp == m_stamp)
        return;
    const Loaded loaded = stamp.error == 0 ? Load(stamp.path) : Loaded{stamp.error, {}};
    m_file = ProfileFile(loaded.error == 0 ? loaded.text : std::string(), CodePage::Ansi());
    if (loaded.error != 0 && loaded.error != ENOENT)
        Say("the settings in " + stamp.path + " cannot be read (" + std::strerror(loaded.error) +
            "); defaults are in use. Check the file's permissions.");
    else if (const std::size_t line = m_file.DamagedLine(); line != 0)
        Say("the settings in " + stamp.path + " are damaged at line " + std::to_string(line) +
            "; what can be read of them is in use. Mend the file, or remove it; it is kept beside "
            "the new one when settings are saved.");
    m_stamp = std::move(stamp);
    m_isLoaded = true;
}

void ProfileStore::Forget() {
    const std::lock_guard lock(m_mutex);
    m_isLoaded = false;
}

int ProfileStore::WriteNew(const std::string& name, const std::string& text) {
    System& system = System::Current();
    OpenedFile file;
    int error = file.Open(name, kOpenWrite | kOpenCreate | kOpenExclusive | kOpenPrivate);
    if (error != 0)
        return error;
    for (std::size_t written = 0; error == 0 && written < text.size();) {
        std::size_t done = 0;
        error = system.WriteFile(file.Handle(), text.data() + written, text.size() - written, done);
        if (error == 0 && done == 0)
            error = ENOSPC;
        written += done;
    }
    if (error == 0)
        error = system.SyncFile(file.Handle());
    const int closed = file.Close();
    if (error == 0)
        error = closed;
    if (error != 0)
        system.RemoveFile(name.c_str());
    return error;
}

int ProfileStore::KeepAside(const std::string& path, const std::string& text, std::string& name) {
    for (int number = 1; number < kMostKeptAside; ++number) {
        name = path + ".damaged-" + std::to_string(number);
        const int error = WriteNew(name, text);
        if (error != EEXIST)
            return error;
        if (const Loaded kept = Load(name); kept.error == 0 && kept.text == text)
            return 0; // it was kept before, and the change after that failed
    }
    return EEXIST;
}

int ProfileStore::Rewrite(const std::string& path,
                          const std::function<bool(ProfileFile&)>& change) {
    System& system = System::Current();
    Loaded loaded = Load(path);
    if (loaded.error == ENOENT)
        loaded = {};
    if (loaded.error != 0)
        return loaded.error; // what cannot be read is not overwritten
    ProfileFile file(loaded.text, CodePage::Ansi());
    if (!change(file))
        return 0;
    if (file.DamagedLine() != 0) {
        std::string name;
        if (const int error = KeepAside(path, loaded.text, name); error != 0)
            return error;
        Say("the damaged settings file " + path + " is kept as " + name + ".");
    }
    const std::string beside = path + ".new";
    if (const int error = system.RemoveFile(beside.c_str()); error != 0 && error != ENOENT)
        return error; // left by a process that was killed
    int error = WriteNew(beside, file.Text());
    if (error != 0)
        return error;
    error = system.RenameFile(beside.c_str(), path.c_str(), true);
    if (error != 0) {
        system.RemoveFile(beside.c_str());
        return error;
    }
    system.SyncFolder(FolderOf(path).c_str()); // the new file has its name; nothing to undo
    return 0;
}

bool ProfileStore::Change(const std::function<bool(ProfileFile&)>& change) {
    System& system = System::Current();
    const std::lock_guard writing(m_writing);
    std::string path = Path();
    int error = path.empty() ? ENOENT : system.MakeFolder(FolderOf(path).c_str());
    if (error == 0) {
        FileStatus status;
        std::string target;
        error = system.GetFileStatus(path.c_str(), status);
        if (error == ENOENT)
            error = 0;
        else if (error == 0 && status.isLink)
            error = system.ResolveName(path.c_str(), target); // the link stays one
        if (error == 0 && !target.empty())
            path = target;
    }
    if (error == 0) {
        OpenedFile lock;
        error = lock.Open(path + ".lock", kOpenRead | kOpenWrite | kOpenCreate | kOpenPrivate);
        if (error == 0)
            error = system.LockFile(lock.Handle(), true, true);
        if (error == 0) {
            error = Rewrite(path, change);
            // A child of this process may share the open file, so closing alone might not do.
            system.UnlockFile(lock.Handle());
        }
    }
    Forget();
    if (error != 0)
        Say("the settings could not be saved" + (path.empty() ? "" : " to " + path) + ": " +
            (path.empty() ? "HOME is not set" : std::strerror(error)) +
            ". Set VNBYTSTR_PROFILE to a file that can be written.");
    return error == 0;
}

} // namespace vnbytstr::detail
