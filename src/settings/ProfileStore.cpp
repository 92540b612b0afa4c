// How a change gets to the disk: under the profile's lock the profile is read, changed, and written
// as every file is (see FileReplacement): as a rule to a new file that takes the profile's name in
// one step. Readers need no lock: whatever they open is whole, unless the profile is one that a new
// file cannot replace.
//
// Invariants, under m_mutex:
//  1. m_file is empty unless m_isLoaded.
//  2. m_readError is not 0 only with a text in m_readTrouble.
#include "src/settings/ProfileStore.h"

#include "src/os/FileReplacement.h"
#include "src/os/Paths.h"
#include "src/settings/ProfileRegistry.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <string_view>
#include <utility>

namespace vnbytstr::detail {

namespace {

constexpr int kMaxKeptAside = 10000;
constexpr std::size_t kMaxBytes = std::size_t{64} << 20; // more than settings ever take
constexpr std::chrono::seconds kMaxWait{2};

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

/// The folder of this user's profile and locks, with its separator; empty when there is none.
std::string UsersFolder() {
    const std::string folder = SettingsFolder();
    return folder.empty() ? folder : AsFolderPrefix(AsFolderPrefix(folder) + "vnbytstr");
}

/// Beyond what errno numbers: the name leads to a device, a pipe or a folder.
constexpr int kNotPlain = -1;

std::string ReasonOf(int error) {
    return error == kNotPlain ? "it is not a plain file" : System::Current().GetErrorText(error);
}

/// What kind of file the profile is: 0 for a plain one, ENOENT for none, kNotPlain. `isNothing`
/// receives whether it is the null device, which stands for no settings.
int LookAt(const std::string& path, FileStatus& status, bool& isNothing) {
    System& system = System::Current();
    isNothing = false;
    if (path.empty())
        return ENOENT;
    if (const int error = system.GetFileStatus(path.c_str(), status))
        return error;
    if (status.isRegular)
        return 0;
    if (!status.identity.IsKnown())
        return ENOENT; // a link that leads nowhere
    FileStatus null;
    isNothing = !status.isFolder && system.GetFileStatus(NullDevice(), null) == 0 &&
                null.identity == status.identity;
    return isNothing ? ENOENT : kNotPlain;
}

int WriteAll(FileHandle handle, std::string_view text) {
    while (!text.empty()) {
        std::size_t done = 0;
        if (const int error = System::Current().WriteFile(handle, text.data(), text.size(), done))
            return error;
        if (done == 0)
            return ENOSPC;
        text.remove_prefix(done);
    }
    return 0;
}

/// A file that root writes for a user belongs to the user.
void GiveTo(FileHandle handle, const FileStatus& owner) {
    if (System::Current().IsPrivileged())
        System::Current().SetFileOwner(handle, owner.owner, owner.group);
}

} // namespace

ProfileStore::ProfileStore() : m_file(CodePage::Ansi()) {}

ProfileStore& ProfileStore::Get() {
    // Never destroyed: objects with static lifetime may still ask for settings at exit.
    static ProfileStore* const store = new ProfileStore;
    return *store;
}

std::string ProfileStore::Path() {
    std::string path = System::Current().GetEnvironment("VNBYTSTR_PROFILE");
    if (!path.empty())
        return path;
    const std::string folder = UsersFolder();
    return folder.empty() ? folder : folder + "profile.ini";
}

ProfileStore::Stamp ProfileStore::StampOf(const std::string& path) {
    Stamp stamp;
    stamp.path = path;
    stamp.codePage = CodePage::Ansi().GetNumber();
    if (const auto registry = ProfileRegistry::Of(path)) {
        stamp.error = registry->GetStamp(stamp.length);
        return stamp;
    }
    FileStatus status;
    bool isNothing = false;
    stamp.error = LookAt(path, status, isNothing);
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
    if (const auto registry = ProfileRegistry::Of(path)) {
        loaded.error = registry->Load(loaded.text);
        return loaded;
    }
    OpenedFile file;
    loaded.error = file.Open(path, kOpenRead);
    std::uint64_t length = 0;
    if (loaded.error == 0)
        loaded.error = System::Current().GetFileLength(file.Handle(), length);
    if (loaded.error == 0 && length > kMaxBytes)
        loaded.error = EFBIG;
    std::size_t done = 1;
    while (loaded.error == 0 && done != 0) {
        const std::size_t size = loaded.text.size();
        if (size > kMaxBytes)
            return {EFBIG, {}};
        loaded.text.resize(size + 65536);
        loaded.error =
            System::Current().ReadFile(file.Handle(), loaded.text.data() + size, 65536, done);
        loaded.text.resize(size + (loaded.error == 0 ? done : 0));
    }
    return loaded;
}

void ProfileStore::Refresh(ProfileNotices& notices) {
    const DWORD tick = System::Current().GetTickCount();
    const unsigned installs = System::InstallCount();
    if (!m_isOutOfDate && tick == m_tick && installs == m_installs)
        return;
    // Stamped before it is read: what changes in between has another stamp the next time.
    Stamp stamp = StampOf(Path());
    const bool isSame = m_isLoaded && m_readError == 0 && !m_isOutOfDate && stamp == m_stamp;
    if (!isSame) {
        const Loaded loaded = stamp.error == 0 ? Load(stamp.path) : Loaded{stamp.error, {}};
        const bool isRead = loaded.error == 0 || loaded.error == ENOENT;
        const bool isOther =
            !m_isLoaded || stamp.path != m_stamp.path || stamp.codePage != m_stamp.codePage;
        // The failure may be temporary: until the file is read again, what was read last is in use.
        if (isRead || isOther) {
            m_file = ProfileFile(isRead ? loaded.text : std::string(), CodePage::Ansi());
            m_isLoaded = isRead;
        }
        std::string trouble;
        EProfileStatus status = ProfileUnreadable;
        if (!isRead)
            trouble = "the settings in " + stamp.path + " cannot be read (" +
                      ReasonOf(loaded.error) + "); " +
                      (m_isLoaded ? "the ones read last" : "defaults") +
                      " are in use. Check the file and its permissions.";
        else if (const std::size_t line = m_file.DamagedLine(); line != 0) {
            status = ProfileDamaged;
            trouble = "the settings in " + stamp.path + " are damaged at line " +
                      std::to_string(line) +
                      "; what can be read of them is in use. Mend the file, or remove it; it is "
                      "kept beside the new one when settings are saved.";
        }
        m_readError = isRead ? 0 : loaded.error;
        if (!trouble.empty() && trouble != m_readTrouble)
            notices.Add(status, trouble);
        m_readTrouble = std::move(trouble);
        if (m_savePath != stamp.path)
            m_saveTrouble.clear(); // it was another file's
        m_stamp = std::move(stamp);
    }
    m_isOutOfDate = false;
    m_tick = tick;
    m_installs = installs;
}

EProfileStatus ProfileStore::GetStatus(std::string& text) {
    ProfileNotices notices;
    const std::lock_guard lock(m_mutex);
    Refresh(notices);
    const bool isSaveTrouble = m_readError == 0 && !m_saveTrouble.empty();
    text = isSaveTrouble ? m_saveTrouble : m_readTrouble;
    if (isSaveTrouble)
        return ProfileNotSaved;
    return m_readError != 0 ? ProfileUnreadable : text.empty() ? ProfileSound : ProfileDamaged;
}

// --- saving --------------------------------------------------------------------------------------

int ProfileStore::WriteNew(const std::string& name, const std::string& text,
                           const FileStatus& owner) {
    System& system = System::Current();
    OpenedFile file;
    int error = file.Open(name, kOpenWrite | kOpenCreate | kOpenExclusive | kOpenPrivate);
    if (error != 0)
        return error;
    error = WriteAll(file.Handle(), text);
    if (error == 0)
        error = system.SyncFile(file.Handle());
    if (error == 0)
        GiveTo(file.Handle(), owner);
    const int closed = file.Close();
    if (error == 0)
        error = closed;
    if (error != 0)
        system.RemoveFile(name.c_str());
    return error;
}

int ProfileStore::KeepAside(const std::string& path, const std::string& text,
                            const FileStatus& owner, std::string& name) {
    for (int number = 1; number < kMaxKeptAside; ++number) {
        name = path + ".damaged-" + std::to_string(number);
        const int error = WriteNew(name, text, owner);
        if (error != EEXIST)
            return error;
        if (const Loaded kept = Load(name); kept.error == 0 && kept.text == text)
            return 0; // it was kept before, and the change after that failed
    }
    return EEXIST;
}

int ProfileStore::Replace(const std::string& path, const std::string& text,
                          const FileStatus& owner) {
    if (const auto registry = ProfileRegistry::Of(path))
        return registry->Save(text);
    FileReplacement replacement;
    replacement.SetPrivate();
    if (const int error = replacement.Open(path.c_str(), true))
        return error;
    if (replacement.IsNew())
        GiveTo(replacement.Handle(), owner);
    const int error = WriteAll(replacement.Handle(), text);
    return error != 0 ? error : replacement.Commit();
}

int ProfileStore::Rewrite(const std::string& path, const FileStatus& profile,
                          const std::function<bool(ProfileFile&)>& change,
                          ProfileNotices& notices) {
    Loaded loaded = Load(path);
    if (loaded.error == ENOENT)
        loaded = {};
    if (loaded.error != 0)
        return loaded.error; // what cannot be read is not overwritten
    ProfileFile file(loaded.text, CodePage::Ansi());
    if (!change(file))
        return 0;
    const std::string text = file.Text();
    if (text == loaded.text)
        return 0; // a section was removed, and its values set again
    if (file.DamagedLine() != 0 && !ProfileRegistry::Of(path)) {
        std::string name;
        if (const int error = KeepAside(path, loaded.text, profile, name))
            return error;
        notices.Add(ProfileDamaged,
                    "the damaged settings file " + path + " is kept as " + name + ".");
    }
    return Replace(path, text, profile);
}

/// `path` receives the name with its links followed, `reason` why it failed where that is not in
/// the error number.
int ProfileStore::Save(std::string& path, ProfileLock::Deadline deadline,
                       const std::function<bool(ProfileFile&)>& change, ProfileNotices& notices,
                       std::string& reason) {
    System& system = System::Current();
    const bool isFile = !ProfileRegistry::Of(path);
    std::string locked = isFile ? path : UsersFolder();
    if (locked.empty()) {
        reason = "HOME (on Windows APPDATA) is not set";
        return ENOENT;
    }
    if (!isFile)
        locked += "registry";
    FileStatus profile;
    bool isNothing = false;
    int error = LookAt(locked, profile, isNothing);
    if (isNothing)
        return 0;
    if (error == ENOENT) {
        const bool isLink = profile.isLink;
        error = system.MakeFolder(FolderOf(locked).c_str());
        if (error == 0)
            error = system.GetFileStatus(FolderOf(locked).c_str(), profile);
        profile.identity = {};
        profile.mode = 0600; // what a new file is given, besides the folder's owner and group
        if (isLink)
            error = ENOENT;
    } else if (error == 0 && profile.isLink) {
        std::string target;
        error = system.ResolveName(locked.c_str(), target); // the link stays one
        if (error == 0)
            path = locked = target;
    }
    if (error != 0)
        return error;
    ProfileLock lock;
    error = lock.Take(locked, profile, deadline);
    if (error == EWOULDBLOCK)
        reason = "they are locked by " + lock.Holder();
    else if (error == EACCES)
        reason = locked + ".lock: " + system.GetErrorText(error);
    return error != 0 ? error : Rewrite(path, profile, change, notices);
}

bool ProfileStore::Change(const std::function<bool(ProfileFile&)>& change) {
    const auto deadline = std::chrono::steady_clock::now() + kMaxWait;
    ProfileNotices notices;
    const std::string named = Path();
    std::string path = named, reason;
    int error = 0;
    if (std::unique_lock writing(m_writing, deadline); writing)
        error = Save(path, deadline, change, notices, reason);
    else {
        error = EWOULDBLOCK;
        reason = "another thread of this program is saving them";
    }
    std::string trouble;
    if (error != 0) {
        trouble = "the settings could not be saved" + (path.empty() ? "" : " to " + path) + ": " +
                  (reason.empty() ? ReasonOf(error) : reason) + ". " +
                  (error == EWOULDBLOCK ? "Try again when that is done."
                                        : "Set VNBYTSTR_PROFILE to a file that can be written.");
        notices.Add(ProfileNotSaved, trouble);
    }
    const std::lock_guard lock(m_mutex);
    m_saveTrouble = std::move(trouble);
    m_savePath = named;
    m_isOutOfDate = true;
    return error == 0;
}

} // namespace vnbytstr::detail
