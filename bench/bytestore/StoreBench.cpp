// The byte containers: appending, random access, spilling and reading back.
#include "bench/Rounds.h"

#include "vnbytstr/ByteStore.h"
#include "vnbytstr/ByteStream.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <list>
#include <memory>
#include <random>
#include <stdexcept>
#include <unordered_map>

namespace vnbytstr::bench {
namespace {

constexpr std::size_t kPage = CBytePage::m_dwPageSize;
constexpr std::size_t kPiece = 65536;

std::vector<BYTE> SomeBytes(std::size_t size) {
    std::vector<BYTE> bytes(size);
    std::minstd_rand random(5);
    for (BYTE& byte : bytes)
        byte = static_cast<BYTE>(random() >> 8);
    return bytes;
}

/// A temporary file without a name, in the folder that the library uses.
class ScratchFile {
public:
    ScratchFile() {
        const char* folder = std::getenv("TMPDIR");
        std::string name = std::string(folder ? folder : "/var/tmp") + "/bench-XXXXXX";
        m_file = ::mkstemp(name.data());
        if (m_file < 0)
            throw std::runtime_error("cannot make " + name);
        ::unlink(name.c_str());
    }
    ~ScratchFile() { ::close(m_file); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    void Write(const void* p, std::size_t n, std::size_t at) const {
        if (::pwrite(m_file, p, n, static_cast<off_t>(at)) != static_cast<ssize_t>(n))
            throw std::runtime_error("short write");
    }
    void Read(void* p, std::size_t n, std::size_t at) const {
        if (::pread(m_file, p, n, static_cast<off_t>(at)) != static_cast<ssize_t>(n))
            throw std::runtime_error("short read");
    }

private:
    int m_file;
};

/// A blob in SQLite's temporary database (file-backed, 2 MiB of cache).
class SqliteBlob {
public:
    explicit SqliteBlob(std::size_t size) {
        Check(sqlite3_open("", &m_database));
        Run("PRAGMA cache_size=-2048; CREATE TABLE t(b BLOB)");
        Run("INSERT INTO t VALUES(zeroblob(" + std::to_string(size) + "))");
        Check(sqlite3_blob_open(m_database, "main", "t", "b", 1, 1, &m_blob));
    }
    ~SqliteBlob() {
        sqlite3_blob_close(m_blob);
        sqlite3_close(m_database);
    }
    SqliteBlob(const SqliteBlob&) = delete;
    SqliteBlob& operator=(const SqliteBlob&) = delete;
    void Write(const void* p, std::size_t n, std::size_t at) {
        Check(sqlite3_blob_write(m_blob, p, static_cast<int>(n), static_cast<int>(at)));
    }

private:
    static void Check(int status) {
        if (status != SQLITE_OK)
            throw std::runtime_error(sqlite3_errstr(status));
    }
    void Run(const std::string& sql) {
        Check(sqlite3_exec(m_database, sql.c_str(), nullptr, nullptr, nullptr));
    }
    sqlite3* m_database = nullptr;
    sqlite3_blob* m_blob = nullptr;
};

/// The least that a cache of 64 whole pages can be.
class BareLru {
public:
    explicit BareLru(const ScratchFile& file) : m_file(file) {}
    DWORD Read4(std::size_t index) {
        const BYTE* page = Page(index / kPage);
        DWORD value;
        std::memcpy(&value, page + index % kPage, 4);
        return value;
    }

private:
    struct Entry {
        std::size_t number;
        std::unique_ptr<BYTE[]> data;
    };
    const BYTE* Page(std::size_t number) {
        if (const auto found = m_index.find(number); found != m_index.end()) {
            m_entries.splice(m_entries.begin(), m_entries, found->second);
            return m_entries.front().data.get();
        }
        if (m_entries.size() < 64) {
            m_entries.push_front({number, std::make_unique<BYTE[]>(kPage)});
        } else {
            m_entries.splice(m_entries.begin(), m_entries, std::prev(m_entries.end()));
            m_index.erase(m_entries.front().number);
            m_entries.front().number = number;
        }
        m_file.Read(m_entries.front().data.get(), kPage, number * kPage);
        m_index[number] = m_entries.begin();
        return m_entries.front().data.get();
    }
    const ScratchFile& m_file;
    std::list<Entry> m_entries;
    std::unordered_map<std::size_t, std::list<Entry>::iterator> m_index;
};

void AddAppending(Contests& contests) {
    static constexpr std::size_t kBytes = 200000; // below the in-memory limit
    static constexpr int kTurns = 50;
    contests.Add({"append one byte",
                  static_cast<double>(kBytes) * kTurns,
                  Contest::Nanoseconds,
                  {{"CByteStream",
                    [] {
                        for (int turn = 0; turn < kTurns; ++turn) {
                            CByteStream stream;
                            for (std::size_t i = 0; i < kBytes; ++i)
                                stream.ConcatByte(static_cast<BYTE>(i));
                            benchmark::DoNotOptimize(stream.GetLength());
                        }
                    }},
                   {"vector::push_back",
                    [] {
                        for (int turn = 0; turn < kTurns; ++turn) {
                            std::vector<BYTE> bytes;
                            for (std::size_t i = 0; i < kBytes; ++i)
                                bytes.push_back(static_cast<BYTE>(i));
                            benchmark::DoNotOptimize(bytes.data());
                        }
                    }}},
                  1.0});
    static const std::vector<BYTE> piece = SomeBytes(kPiece);
    static constexpr std::size_t kTotal = std::size_t{1} << 30;
    contests.Add({"append 1 GiB in 64 KiB pieces",
                  static_cast<double>(kTotal),
                  Contest::GigabytesPerSecond,
                  {{"CByteStream",
                    [] {
                        CByteStream stream;
                        for (std::size_t done = 0; done < kTotal; done += kPiece)
                            stream.Concat(piece.data(), kPiece);
                    }},
                   {"vector::insert",
                    [] {
                        std::vector<BYTE> bytes;
                        for (std::size_t done = 0; done < kTotal; done += kPiece)
                            bytes.insert(bytes.end(), piece.begin(), piece.end());
                        benchmark::DoNotOptimize(bytes.data());
                    }}},
                  1.0,
                  5});
}

void AddResident(Contests& contests) {
    static constexpr DWORD kSize = 15 * kPage; // resident whatever the memory load
    static const std::vector<BYTE> flat = SomeBytes(kSize);
    static CByteStore store(flat.data(), kSize);
    static const std::vector<DWORD> indexes = [] {
        std::vector<DWORD> result(1 << 16);
        std::minstd_rand random(3);
        for (DWORD& index : result)
            index = static_cast<DWORD>(random() % kSize);
        return result;
    }();
    static constexpr int kTurns = 100;
    contests.Add({"GetByte in sequence",
                  static_cast<double>(kSize) * 20,
                  Contest::Nanoseconds,
                  {{"CByteStore", [] {
                        DWORD sum = 0;
                        for (int turn = 0; turn < 20; ++turn)
                            for (DWORD i = 0; i < kSize; ++i)
                                sum += store.GetByte(i);
                        benchmark::DoNotOptimize(sum);
                    }}}});
    contests.Add({"GetByte at random, resident",
                  static_cast<double>(indexes.size()) * kTurns,
                  Contest::Nanoseconds,
                  {{"CByteStore",
                    [] {
                        DWORD sum = 0;
                        for (int turn = 0; turn < kTurns; ++turn)
                            for (DWORD index : indexes)
                                sum += store.GetByte(index);
                        benchmark::DoNotOptimize(sum);
                    }},
                   {"flat array",
                    [] {
                        DWORD sum = 0;
                        for (int turn = 0; turn < kTurns; ++turn) {
                            for (DWORD index : indexes)
                                sum += flat[index];
                            benchmark::ClobberMemory();
                        }
                        benchmark::DoNotOptimize(sum);
                    }}},
                  0.5});
}

constexpr std::size_t kSpilled = (std::size_t{2} << 30) - kPiece;
constexpr std::size_t kBlob = std::size_t{900} << 20; // SQLite's default limit is 1 GB

/// What is spilled to, one at a time.
struct Spilled {
    std::unique_ptr<CByteStore> store;
    std::unique_ptr<ScratchFile> file;
    std::unique_ptr<SqliteBlob> blob;

    void FillStore(std::size_t size) {
        for (std::size_t done = 0; done < size; done += kPiece)
            store->Concat(Piece(), kPiece);
    }
    void WriteFile() {
        for (std::size_t done = 0; done < kSpilled; done += kPage)
            file->Write(Piece(), kPage, done);
    }
    void FillBlob() {
        blob = std::make_unique<SqliteBlob>(kBlob);
        for (std::size_t done = 0; done < kBlob; done += kPiece)
            blob->Write(Piece(), kPiece, done);
    }

private:
    static const BYTE* Piece() {
        static const std::vector<BYTE> piece = SomeBytes(kPiece);
        return piece.data();
    }
};

/// The work, done once before each round that counts and released: memory that a virtual machine has
/// to ask its host for costs many times what the writing costs, and who has to ask is chance.
Contender Spilling(std::string name, std::function<void(Spilled&)> begin,
                   std::function<void(Spilled&)> work) {
    static Spilled spilled;
    return {std::move(name), [=] { work(spilled); },
            [=] {
                spilled = {};
                begin(spilled);
                work(spilled);
                spilled = {};
                begin(spilled);
            }};
}

void AddSpilling(Contests& contests) {
    const auto newStore = [](Spilled& to) { to.store = std::make_unique<CByteStore>(); };
    contests.Add(
        {"spill 2 GiB",
         static_cast<double>(kSpilled),
         Contest::GigabytesPerSecond,
         {Spilling("CByteStore", newStore, [](Spilled& to) { to.FillStore(kSpilled); }),
          Spilling(
              "pwrite 32 KiB", [](Spilled& to) { to.file = std::make_unique<ScratchFile>(); },
              [](Spilled& to) { to.WriteFile(); })},
         1.0,
         5});
    contests.Add({"spill 900 MiB",
                  static_cast<double>(kBlob),
                  Contest::GigabytesPerSecond,
                  {Spilling("CByteStore", newStore, [](Spilled& to) { to.FillStore(kBlob); }),
                   Spilling(
                       "SQLite", [](Spilled&) {}, [](Spilled& to) { to.FillBlob(); })},
                  2.0,
                  3});
}

void AddReadingBack(Contests& contests) {
    static constexpr std::size_t kTotal = std::size_t{512} << 20, kRandom = std::size_t{256} << 20;
    static constexpr int kReads = 50000;
    static const std::vector<BYTE> content = SomeBytes(kTotal);
    static std::unique_ptr<CByteStore> store;
    static std::unique_ptr<ScratchFile> file;
    static std::unique_ptr<BareLru> lru;
    static std::vector<BYTE> buffer(kPiece);
    const auto prepare = [] {
        if (store)
            return;
        store = std::make_unique<CByteStore>(content.data(), static_cast<DWORD>(kTotal));
        file = std::make_unique<ScratchFile>();
        for (std::size_t done = 0; done < kTotal; done += kPage) // as a cache of pages writes
            file->Write(content.data() + done, kPage, done);
        lru = std::make_unique<BareLru>(*file);
    };
    contests.Add({"read back in sequence",
                  static_cast<double>(kTotal),
                  Contest::GigabytesPerSecond,
                  {{"CByteStore",
                    [] {
                        for (std::size_t done = 0; done < kTotal; done += kPage)
                            store->CopyTo(static_cast<DWORD>(done), buffer.data(), kPage, kPage);
                    },
                    prepare},
                   {"pread 32 KiB",
                    [] {
                        for (std::size_t done = 0; done < kTotal; done += kPage)
                            file->Read(buffer.data(), kPage, done);
                    }}},
                  0.8});
    static std::minstd_rand random(9);
    contests.Add({"read 4 bytes at random, 256 MiB",
                  kReads,
                  Contest::Nanoseconds,
                  {{"CByteStore",
                    [] {
                        for (int i = 0; i < kReads; ++i)
                            benchmark::DoNotOptimize(
                                store->GetDWord(static_cast<DWORD>(random() % (kRandom - 4))));
                    },
                    prepare},
                   {"64-page LRU with pread",
                    [] {
                        for (int i = 0; i < kReads; ++i)
                            benchmark::DoNotOptimize(lru->Read4(random() % (kRandom - 4)));
                    }}},
                  1.0});
    contests.Add({"GetTargetMaxPages",
                  1000000,
                  Contest::Nanoseconds,
                  {{"CByteStore", [] {
                        for (int i = 0; i < 1000000; ++i)
                            benchmark::DoNotOptimize(CByteStore::GetTargetMaxPages());
                    }}}});
}

} // namespace
} // namespace vnbytstr::bench

int main(int argc, char** argv) {
    vnbytstr::bench::Contests contests;
    vnbytstr::bench::AddAppending(contests);
    vnbytstr::bench::AddResident(contests);
    vnbytstr::bench::AddSpilling(contests);
    vnbytstr::bench::AddReadingBack(contests);
    return contests.Run(argc, argv);
}
