// The order of a write in place, each step on the disk before the next:
//  1. The scratch file has the old content, then the checksums of the new content's blocks, the
//     beginning of the new content, the target's name, and a trailer that says how long they are.
//     Until the trailer is there the target is untouched.
//  2. The target grows to the length of the new content. Only that needs room on the disk.
//  3. The rest is overwritten, and what is too long is cut.
//  4. The scratch file is removed.
// After a failure in 2 or 3 the old content is put back and the scratch file removed; after a kill
// RecoverInPlace does both.
#include "src/os/InPlaceWrite.h"

#include "src/os/Crc32c.h"
#include "src/os/OpenHandle.h"
#include "src/os/Paths.h"
#include "src/os/ScratchFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>
#include <vector>

namespace vnbytstr {

namespace {

// On the stack: memory must not run out while a file is being overwritten.
constexpr std::size_t kChunk = 1 << 16;
constexpr std::size_t kBlock = 4096;
constexpr std::uint64_t kMagic = 0x31646C6F74737662; // the trailer's last 8 bytes
// Blocks of neither content that a kill can leave: the one that was being written, and the one
// where the old content ends and the new one goes on.
constexpr std::size_t kMaxMixedBlocks = 2;
// Bytes of the new content that are kept, so that mixed blocks of a small file can be told from
// what somebody else wrote.
constexpr std::uint64_t kBeginning = 1 << 16;
constexpr std::uint64_t kMaxLength = 0xFFFFFFFFFFull; // of a trailer that makes sense
constexpr std::uint64_t kMaxName = 1 << 16;

struct Trailer {
    std::uint64_t oldLength = 0, newLength = 0;
    FileIdentity target;
    std::uint64_t nameLength = 0;
    std::uint64_t checksum = 0; ///< of the blocks' checksums, the beginning and the name
    std::uint64_t magic = kMagic;
};

int Seek(FileHandle file, std::uint64_t position) {
    std::uint64_t landed = 0;
    const int error = System::Current().SeekFile(file, static_cast<std::int64_t>(position),
                                                 SeekOrigin::Begin, landed);
    return error != 0 || landed == position ? error : EIO;
}

/// Reads all of `bytes`; EIO when the file is too short.
int ReadAt(FileHandle file, std::uint64_t position, std::span<BYTE> bytes) {
    if (const int error = Seek(file, position))
        return error;
    while (!bytes.empty()) {
        std::size_t done = 0;
        if (const int error = System::Current().ReadFile(file, bytes.data(), bytes.size(), done))
            return error;
        if (done == 0)
            return EIO;
        bytes = bytes.subspan(done);
    }
    return 0;
}

int WriteAt(FileHandle file, std::uint64_t position, std::span<const BYTE> bytes) {
    if (const int error = Seek(file, position))
        return error;
    while (!bytes.empty()) {
        std::size_t done = 0;
        if (const int error = System::Current().WriteFile(file, bytes.data(), bytes.size(), done))
            return error;
        if (done == 0)
            return ENOSPC;
        bytes = bytes.subspan(done);
    }
    return 0;
}

/// Calls `take(offset, bytes)` for the bytes [begin, end) of a file, piece by piece.
template <class Take>
int ForEachChunk(FileHandle file, std::uint64_t begin, std::uint64_t end, Take take) {
    std::array<BYTE, kChunk> buffer;
    for (std::uint64_t at = begin; at < end;) {
        const std::span<BYTE> bytes = std::span(buffer).first(
            static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), end - at)));
        if (const int error = ReadAt(file, at, bytes))
            return error;
        if (const int error = take(at, std::span<const BYTE>(bytes)))
            return error;
        at += bytes.size();
    }
    return 0;
}

int CopyRange(FileHandle from, FileHandle to, std::uint64_t begin, std::uint64_t end) {
    return ForEachChunk(from, begin, end, [&](std::uint64_t at, std::span<const BYTE> bytes) {
        return WriteAt(to, at, bytes);
    });
}

std::span<const BYTE> BytesOf(const void* data, std::size_t size) {
    return {static_cast<const BYTE*>(data), size};
}

/// What a scratch file holds between the old content and the trailer.
struct Record {
    std::vector<DWORD> blocks;   ///< checksums of the new content's blocks
    std::vector<BYTE> beginning; ///< of the new content
    std::string name;            ///< of the target

    static std::uint64_t SizeOf(const Trailer& trailer) {
        return (trailer.newLength + kBlock - 1) / kBlock * sizeof(DWORD) +
               std::min(trailer.newLength, kBeginning) + trailer.nameLength;
    }
    void SetSize(const Trailer& trailer) {
        blocks.resize(static_cast<std::size_t>((trailer.newLength + kBlock - 1) / kBlock));
        beginning.resize(static_cast<std::size_t>(std::min(trailer.newLength, kBeginning)));
        name.resize(static_cast<std::size_t>(trailer.nameLength));
    }
    std::array<std::span<BYTE>, 3> Parts() {
        return {std::span(reinterpret_cast<BYTE*>(blocks.data()), blocks.size() * sizeof(DWORD)),
                std::span(beginning), std::span(reinterpret_cast<BYTE*>(name.data()), name.size())};
    }
    DWORD Checksum() {
        DWORD checksum = 0;
        for (const std::span<BYTE> part : Parts())
            checksum = Crc32c(part, checksum);
        return checksum;
    }
};

// --- the old content -----------------------------------------------------------------------------

int MakeRecord(FileHandle source, std::uint64_t length, const std::string& name, Record& record) {
    record.name = name;
    return ForEachChunk(source, 0, length, [&](std::uint64_t at, std::span<const BYTE> bytes) {
        if (at < kBeginning)
            record.beginning.assign(
                bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(
                                                   kBeginning, bytes.size())));
        for (; !bytes.empty(); bytes = bytes.subspan(std::min(kBlock, bytes.size())))
            record.blocks.push_back(Crc32c(bytes.first(std::min(kBlock, bytes.size()))));
        return 0;
    });
}

/// Writes what the scratch file `undo` is to hold (step 1).
int WriteUndo(FileHandle undo, FileHandle target, const std::string& name, FileHandle source,
              Trailer trailer) {
    Record record;
    if (const int error = MakeRecord(source, trailer.newLength, name, record))
        return error;
    if (const int error = CopyRange(target, undo, 0, trailer.oldLength))
        return error;
    trailer.nameLength = name.size();
    trailer.checksum = record.Checksum();
    std::uint64_t at = trailer.oldLength;
    for (const std::span<BYTE> part : record.Parts()) {
        if (const int error = WriteAt(undo, at, part))
            return error;
        at += part.size();
    }
    if (const int error = WriteAt(undo, at, BytesOf(&trailer, sizeof trailer)))
        return error;
    return System::Current().SyncFile(undo);
}

/// EINVAL when the scratch file is not complete.
int ReadUndo(FileHandle undo, Trailer& trailer, Record& record) {
    std::uint64_t length = 0;
    if (const int error = System::Current().GetFileLength(undo, length))
        return error;
    if (length < sizeof trailer)
        return EINVAL;
    if (const int error = ReadAt(undo, length - sizeof trailer,
                                 {reinterpret_cast<BYTE*>(&trailer), sizeof trailer}))
        return error;
    if (trailer.magic != kMagic || std::max(trailer.oldLength, trailer.newLength) > kMaxLength ||
        trailer.nameLength > kMaxName)
        return EINVAL;
    if (length != trailer.oldLength + Record::SizeOf(trailer) + sizeof trailer)
        return EINVAL; // before so much memory is taken
    record.SetSize(trailer);
    std::uint64_t at = trailer.oldLength;
    for (const std::span<BYTE> part : record.Parts()) {
        if (const int error = ReadAt(undo, at, part))
            return error;
        at += part.size();
    }
    return trailer.checksum == record.Checksum() ? 0 : EINVAL;
}

/// Puts the old content back where it differs: places that could not be written still have it.
int Restore(FileHandle target, FileHandle undo, std::uint64_t oldLength) {
    System& system = System::Current();
    std::uint64_t length = 0;
    if (const int error = system.GetFileLength(target, length))
        return error;
    std::array<BYTE, kBlock> buffer;
    const auto putBack = [&](std::uint64_t at, std::span<const BYTE> old) {
        for (; !old.empty();
             at += std::min(kBlock, old.size()), old = old.subspan(std::min(kBlock, old.size()))) {
            const std::span<const BYTE> block = old.first(std::min(kBlock, old.size()));
            const std::span<BYTE> now = std::span(buffer).first(block.size());
            if (at + block.size() <= length && ReadAt(target, at, now) == 0 &&
                std::ranges::equal(now, block))
                continue;
            if (const int error = WriteAt(target, at, block))
                return error;
        }
        return 0;
    };
    int error = length > oldLength ? system.SetFileLength(target, oldLength) : 0;
    length = std::min(length, oldLength);
    if (error == 0)
        error = ForEachChunk(undo, 0, oldLength, putBack);
    return error != 0 ? error : system.SyncFile(target);
}

/// Tells what a target consists of, block by block.
class Mixture {
public:
    Mixture(FileHandle undo, const Trailer& trailer, const Record& record)
        : m_undo(undo), m_trailer(trailer), m_record(record) {}

    /// 0, or kStale when the block is of neither content.
    int Add(std::uint64_t at, std::span<const BYTE> block) {
        const auto number = static_cast<std::size_t>(at / kBlock);
        if (number < m_record.blocks.size() && Crc32c(block) == m_record.blocks[number]) {
            ++m_new;
            return 0;
        }
        m_old.resize(at < m_trailer.oldLength ? static_cast<std::size_t>(std::min<std::uint64_t>(
                                                    block.size(), m_trailer.oldLength - at))
                                              : 0);
        if (const int error = ReadAt(m_undo, at, m_old))
            return error;
        if (m_old.size() == block.size() && std::ranges::equal(m_old, block))
            return 0;
        // Where the file has grown, a power cut may have kept the length alone.
        if (m_old.empty() && std::ranges::all_of(block, [](BYTE byte) { return byte == 0; }))
            return 0;
        return ++m_mixed <= kMaxMixedBlocks && IsMixed(at, block) ? 0 : kStale;
    }
    /// Whether all blocks were those of the new content.
    bool IsNew() const { return m_new == m_record.blocks.size(); }

private:
    /// Whether every byte is one of the two, as far as that is known.
    bool IsMixed(std::uint64_t at, std::span<const BYTE> block) const {
        for (std::size_t i = 0; i < block.size(); ++i) {
            if (at + i >= m_record.beginning.size() && at + i < m_trailer.newLength)
                return true; // not known from here on
            const bool isNew = at + i < m_trailer.newLength &&
                               block[i] == m_record.beginning[static_cast<std::size_t>(at + i)];
            const bool isOld = i < m_old.size() ? block[i] == m_old[i] : block[i] == 0;
            if (!isNew && !isOld)
                return false;
        }
        return true;
    }

    const FileHandle m_undo;
    const Trailer& m_trailer;
    const Record& m_record;
    std::vector<BYTE> m_old;
    std::size_t m_mixed = 0, m_new = 0;
};

/// 0 when the target holds nothing but parts of the old and the new content; kStale when it holds
/// something else, or the new content whole: that write was complete, though the scratch file did
/// not go. Another error when that is not known.
int CheckMixture(FileHandle target, FileHandle undo, const Trailer& trailer, const Record& record) {
    std::uint64_t length = 0;
    if (const int error = System::Current().GetFileLength(target, length))
        return error;
    if (length < std::min(trailer.oldLength, trailer.newLength) ||
        length > std::max(trailer.oldLength, trailer.newLength))
        return kStale;
    Mixture mixture(undo, trailer, record);
    const auto look = [&](std::uint64_t at, std::span<const BYTE> bytes) {
        while (!bytes.empty()) {
            const std::span<const BYTE> block = bytes.first(std::min(kBlock, bytes.size()));
            if (const int error = mixture.Add(at, block))
                return error;
            at += block.size();
            bytes = bytes.subspan(block.size());
        }
        return 0;
    };
    if (const int error = ForEachChunk(target, 0, length, look))
        return error;
    return length == trailer.newLength && mixture.IsNew() ? kStale : 0;
}

// --- the new content -----------------------------------------------------------------------------

/// Steps 2 and 3.
int Overwrite(FileHandle target, FileHandle source, const Trailer& trailer) {
    System& system = System::Current();
    const std::uint64_t head = std::min(trailer.oldLength, trailer.newLength);
    if (trailer.newLength > trailer.oldLength) {
        int error = CopyRange(source, target, head, trailer.newLength);
        if (error == 0)
            error = system.SyncFile(target);
        if (error != 0)
            return error;
    }
    if (const int error = CopyRange(source, target, 0, head))
        return error;
    if (trailer.newLength < trailer.oldLength) {
        if (const int error = system.SetFileLength(target, trailer.newLength))
            return error;
    }
    return system.SyncFile(target);
}

int WriteMissing(FileHandle source, std::uint64_t length, const std::string& name) {
    System& system = System::Current();
    const std::string folder = FolderOf(name);
    OpenHandle target;
    if (const int error = system.OpenFile(
            name.c_str(), kOpenRead | kOpenWrite | kOpenCreate | kOpenExclusive, target.handle))
        return error;
    int error = CopyRange(source, target.handle, 0, length);
    if (error == 0)
        error = system.SyncFile(target.handle);
    const int closed = target.Close();
    if (error == 0)
        error = closed;
    if (error != 0)
        system.RemoveFile(name.c_str());
    else
        system.SyncFolder(folder.c_str());
    return error;
}

/// Takes the target's lock, waiting for a while.
int LockInTurn(FileHandle target) {
    constexpr auto kPause = std::chrono::milliseconds(10);
    for (auto left = std::chrono::milliseconds(2000);; left -= kPause) {
        const int error = System::Current().LockFile(target, true, false);
        if (error != EWOULDBLOCK || left.count() <= 0)
            return LocksAreMissing(error) ? 0 : error;
        std::this_thread::sleep_for(kPause);
    }
}

/// The scratch file for the old content, which goes with this object unless it is to stay.
class UndoFile {
public:
    UndoFile() = default;
    ~UndoFile() {
        if (m_file.handle != kNoFile && !m_stays)
            System::Current().RemoveFile(m_name.c_str());
    }
    UndoFile(const UndoFile&) = delete;
    UndoFile& operator=(const UndoFile&) = delete;

    /// Makes it beside the target, or else in the temporary folder.
    int Make(const std::string& target) {
        m_folder = FolderOf(target);
        const int error = MakeScratch(ScratchUse::Old, m_folder, m_name, m_file.handle);
        if (error != EACCES && error != EPERM && error != EROFS && error != ENAMETOOLONG)
            return error;
        m_folder = System::Current().GetTemporaryFolder();
        return MakeScratch(ScratchUse::Old, m_folder, m_name, m_file.handle);
    }
    FileHandle Handle() const { return m_file.handle; }
    const std::string& Folder() const { return m_folder; }
    void Stay() { m_stays = true; }

private:
    std::string m_folder, m_name;
    OpenHandle m_file;
    bool m_stays = false;
};

} // namespace

int WriteInPlace(FileHandle source, std::uint64_t length, const std::string& name,
                 const FileIdentity& expected) {
    System& system = System::Current();
    if (!expected.IsKnown())
        return WriteMissing(source, length, name);
    OpenHandle target;
    // Never through a link: the name has been followed to its end already.
    int error = system.OpenFile(name.c_str(), kOpenRead | kOpenWrite | kOpenPrivate, target.handle);
    if (error == 0)
        error = LockInTurn(target.handle);
    FileStatus status;
    if (error == 0)
        error = system.GetFileStatus(target.handle, status);
    if (error == 0 && status.identity != expected)
        error = kStale;
    if (error != 0)
        return error;
    const Trailer trailer{
        .oldLength = status.length, .newLength = length, .target = status.identity};
    UndoFile undo;
    error = undo.Make(name);
    if (error == 0)
        error = WriteUndo(undo.Handle(), target.handle, name, source, trailer);
    if (error != 0)
        return error;
    system.SyncFolder(undo.Folder().c_str());
    error = Overwrite(target.handle, source, trailer);
    // What cannot even be put back stays where the next sweep finds it.
    if (error != 0 && Restore(target.handle, undo.Handle(), trailer.oldLength) != 0)
        undo.Stay();
    return error;
}

bool RecoverInPlace(FileHandle undo) {
    Trailer trailer;
    Record record;
    if (const int error = ReadUndo(undo, trailer, record))
        return error == EINVAL; // the target was not touched yet
    OpenHandle target;
    if (const int error = System::Current().OpenFile(
            record.name.c_str(), kOpenRead | kOpenWrite | kOpenPrivate, target.handle))
        return error == ENOENT;
    if (LockInTurn(target.handle) != 0)
        return false; // it is being written
    FileStatus status;
    int error = System::Current().GetFileStatus(target.handle, status);
    if (error == 0)
        error = status.identity == trailer.target
                    ? CheckMixture(target.handle, undo, trailer, record)
                    : kStale;
    if (error != 0)
        return error == kStale; // somebody has put something else there since
    return Restore(target.handle, undo, trailer.oldLength) == 0;
}

} // namespace vnbytstr
