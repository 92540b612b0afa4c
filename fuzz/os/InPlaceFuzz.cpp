// What a process that was killed while it wrote a file over has left: from a whole copy of the old
// content the file comes back from every state in between; from other bytes it gets what stands for
// the old content there, or stays as it is.
#include "fuzz/FuzzInput.h"
#include "src/os/Crc32c.h"
#include "src/os/InPlaceWrite.h"
#include "src/os/System.h"

#include <filesystem>
#include <span>

using namespace vnbytstr;
using fuzz::Require;

namespace {

/// A file that is made once, opened, and filled anew for every input.
class File {
public:
    explicit File(const char* name)
        : m_name((std::filesystem::temp_directory_path() /
                  ("vnbytstr-fuzz-" + std::to_string(System::Current().GetProcessId()) + name))
                     .string()) {
        Require(System::Current().OpenFile(m_name.c_str(), kOpenRead | kOpenWrite | kOpenCreate,
                                           m_handle) == 0);
    }
    ~File() {
        System::Current().CloseFile(m_handle);
        System::Current().RemoveFile(m_name.c_str());
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const std::string& Name() const { return m_name; }
    FileHandle Handle() const { return m_handle; }
    void Write(const std::string& content) const {
        std::size_t done = 0;
        Require(System::Current().SetFileLength(m_handle, 0) == 0);
        Rewind();
        Require(System::Current().WriteFile(m_handle, content.data(), content.size(), done) == 0 &&
                done == content.size());
    }
    std::string Read() const {
        std::string content(1 << 18, '\0');
        std::size_t done = 0;
        Rewind();
        Require(System::Current().ReadFile(m_handle, content.data(), content.size(), done) == 0);
        content.resize(done);
        return content;
    }

private:
    void Rewind() const {
        std::uint64_t at = 0;
        Require(System::Current().SeekFile(m_handle, 0, SeekOrigin::Begin, at) == 0);
    }

    std::string m_name;
    FileHandle m_handle = kNoFile;
};

std::span<const BYTE> BytesOf(std::string_view text) {
    return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

std::string Number(std::uint64_t value) { // as the machine has it
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

/// The copy of `old`, for a file that was to hold `fresh`.
std::string CopyOf(const std::string& old, const std::string& fresh, const File& target) {
    std::string record;
    for (std::size_t at = 0; at < fresh.size(); at += 4096) {
        const DWORD checksum = Crc32c(BytesOf(std::string_view(fresh).substr(at, 4096)));
        record.append(reinterpret_cast<const char*>(&checksum), sizeof checksum);
    }
    record += fresh.substr(0, 65536) + target.Name();
    FileStatus status;
    Require(System::Current().GetFileStatus(target.Handle(), status) == 0);
    return old + record + Number(old.size()) + Number(fresh.size()) +
           Number(status.identity.device) + Number(status.identity.file) +
           Number(target.Name().size()) + Number(Crc32c(BytesOf(record))) +
           Number(0x31646C6F74737662);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const File target("-target"), undo("-undo");
    fuzz::Input input(data, size);
    // Long contents without long inputs: a text over and over.
    const auto content = [&](std::size_t length) {
        const std::string text = input.Text();
        std::string whole(length, 'x');
        for (std::size_t i = 0; i < length && !text.empty(); ++i)
            whole[i] = text[i % text.size()];
        return whole;
    };
    const std::size_t oldLength = input.Number(), freshLength = input.Number() + input.Byte() * 300;
    const std::string old = content(oldLength), fresh = content(freshLength);
    const std::size_t head = std::min(oldLength, freshLength);
    // It grows first; then the head is overwritten.
    const std::size_t grown = oldLength + std::min(input.Number(), freshLength - head);
    const std::size_t cut = grown >= freshLength ? std::min(input.Number(), head) : 0;
    std::string now = fresh.substr(0, cut) + old.substr(cut);
    if (grown > oldLength)
        now += fresh.substr(oldLength, grown - oldLength);
    std::string copy = CopyOf(old, fresh, target);
    const std::string whole = copy;
    for (unsigned changes = input.Byte() % 4; changes > 0; --changes) {
        // Most places from the end, where the numbers are.
        const std::size_t place = input.Number() % copy.size();
        copy[copy.size() - 1 - place] = static_cast<char>(input.Byte());
    }
    if (input.Byte() % 16 == 1)
        copy.resize(input.Number() % (copy.size() + 1));
    const bool isOther = input.Left() > 0; // written by somebody else since
    if (isOther)
        now = input.Rest();
    target.Write(now);
    undo.Write(copy);
    const bool isDone = RecoverInPlace(undo.Handle());
    const std::string after = target.Read();
    Require(after == now || after == copy.substr(0, oldLength));
    if (copy == whole && !isOther)
        Require(isDone && (after == old || now == fresh));
    return 0;
}
