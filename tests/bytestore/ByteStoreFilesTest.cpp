// CByteStore: its swap file, saving, and files as content.
#include "src/os/Paths.h"
#include "tests/bytestore/StoreFixture.h"

#include "src/os/LeftoverSweep.h"
#include "vnbytstr/TempFileName.h"

#include <filesystem>

#include <set>

namespace vnbytstr::test {
namespace {

class ByteStoreFilesTest : public StoreFixture {};

// --- swap files ----------------------------------------------------------------------------------

TEST_F(ByteStoreFilesTest, SwapFileLivesUntilEmpty) {
    CByteStore store;
    Append(store, Pattern(20 * kPage));
    const std::string name = store.GetFileName();
    EXPECT_EQ(name.find(m_folder.Path() + "~dat-"), 0u);
    EXPECT_TRUE(name.ends_with(".tmp"));
    EXPECT_TRUE(m_folder.HasMode(name, 0600));
    store.Empty();
    EXPECT_EQ(FileCount(), 0u);
    EXPECT_EQ(store.GetFileName(), name);
    // A file that another program makes under the old name is not the store's.
    m_folder.Write(name.substr(m_folder.Path().size()), "other");
    store.Empty();
    EXPECT_EQ(FileCount(), 1u);
}

TEST_F(ByteStoreFilesTest, TemporaryNames) {
    m_system.SetProcessId(1234);
    CString name, next;
    GenerateLOBFileName(name);
    EXPECT_EQ(name.Find((m_folder.Path() + "~tmp-1234-").c_str()), 0);
    EXPECT_EQ(name.Right(4), ".lob");
    GenerateTempFileName(next, "x", "y");
    EXPECT_EQ(next.Right(2), ".y");
    GetTemporaryPath(name);
    EXPECT_EQ(std::string(name), m_folder.Path());
}

TEST_F(ByteStoreFilesTest, NamesTakenMeanwhileArePassedOver) {
    // Links that point nowhere, and files, under the next names.
    CString name;
    GenerateTempFileName(name, "dat", nullptr);
    const std::string last(name);
    const std::string stem = last.substr(0, last.rfind('-') + 1);
    const unsigned counter = static_cast<unsigned>(std::stoul(last.substr(stem.size())));
    for (unsigned i = 1; i <= 3; ++i) {
        const std::string taken = stem + std::to_string(counter + i) + ".tmp";
        if (!m_folder.Link(m_folder.File("nowhere"), taken))
            std::ofstream(taken).put('x');
    }
    // The fourth is taken between the look and the opening.
    const std::string fourth = stem.substr(m_folder.Path().size()) + std::to_string(counter + 4);
    m_system.Before(Call::Open, 1, [&] { m_folder.Write(fourth + ".tmp", "another program's"); });
    CByteStore store;
    const Bytes bytes = Pattern(20 * kPage);
    Append(store, bytes);
    EXPECT_EQ(store.GetFileName(), stem + std::to_string(counter + 5) + ".tmp");
    EXPECT_EQ(Content(store), bytes);
    store.Empty();
    EXPECT_EQ(m_folder.Read(fourth + ".tmp"), "another program's");
    EXPECT_EQ(FileCount(), 4u);
}

TEST_F(ByteStoreFilesTest, DeadProcessesSwapFilesAreSweptAway) {
    // Stores of "process 17": one that died (its lock is gone), one that lives, one that was kept.
    // The number decides nothing: in a container every program is process 1.
    m_system.SetProcessId(17);
    {
        CFile died((m_folder.File("~dat-17-900.tmp")).c_str(),
                   CFile::modeCreate | CFile::modeReadWrite | CFile::modeExclusive |
                       CFile::modeScratch);
    }
    CByteStore lives, kept;
    Append(lives, Pattern(20 * kPage));
    Append(kept, Pattern(20 * kPage));
    kept.SetAutoDelete(0);
    kept.Empty();
    m_folder.Write("~dat-17-901.tmp", "a plain file that happens to have such a name");
    SweepLeftovers(m_folder.Path());
    std::set<std::string> left;
    for (const std::string& name : m_folder.Names())
        left.insert(name);
    EXPECT_FALSE(left.contains("~dat-17-900.tmp"));
    EXPECT_TRUE(left.contains("~dat-17-901.tmp"));
    EXPECT_EQ(left.size(), 3u);
}

// --- saving --------------------------------------------------------------------------------------

TEST_F(ByteStoreFilesTest, SaveLeavesTheFileAndNothingElse) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{5}, std::size_t{kPage}, std::size_t{40 * kPage + 77}}) {
        const Bytes bytes = Pattern(size);
        m_folder.Write("target", "old");
        CByteStore store;
        Append(store, bytes);
        store.SetComplete(1);
        store.SaveToFile(m_folder.File("target").c_str());
        EXPECT_EQ(m_folder.Read("target"), AsText(bytes));
        EXPECT_EQ(FileCount(), 1u);
        EXPECT_TRUE(store.IsEmpty() && !store.GetComplete());
        Append(store, bytes); // and can be used on
        EXPECT_EQ(Content(store), bytes);
        store.CopyToFile(m_folder.File("copy").c_str());
        EXPECT_EQ(Content(store), bytes);
        EXPECT_EQ(m_folder.Read("copy"), AsText(bytes));
        std::filesystem::remove(m_folder.File("copy"));
    }
    EXPECT_TRUE(m_folder.HasMode(m_folder.File("target"), 0644));
}

TEST_F(ByteStoreFilesTest, LastPageThatLeftMemoryWholeIsCutInTheSavedFile) {
    CByteStore store;
    const Bytes bytes = Pattern(20 * kPage + 10);
    Append(store, bytes);
    for (DWORD page = 0; page < 20; ++page)
        store.GetDWord(page * kPage); // pushes the last page out
    store.SaveToFile(m_folder.File("target").c_str());
    EXPECT_EQ(m_folder.Read("target"), AsText(bytes));
}

/// The image that the rule of CBytePage::SwapOut gives, page by page.
std::string ShiftedImage(const Bytes& bytes, std::size_t shift) {
    std::string image;
    for (std::size_t begin = 0; begin < bytes.size(); begin += kPage) {
        std::size_t count = std::min<std::size_t>(bytes.size() - begin, kPage);
        std::size_t position = begin;
        if (begin >= shift)
            position -= shift;
        else
            count -= std::min(count, shift);
        if (count == 0)
            continue;
        if (image.size() < position + count)
            image.resize(position + count);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(begin), count,
                    image.begin() + static_cast<std::ptrdiff_t>(position));
    }
    return image;
}

TEST_F(ByteStoreFilesTest, SavesFromTheCursorByTheRuleOfPages) {
    for (const std::size_t size :
         {std::size_t{100}, std::size_t{3 * kPage}, std::size_t{30 * kPage + 5}}) {
        const Bytes bytes = Pattern(size);
        for (const DWORD shift : std::initializer_list<DWORD>{10, 99, kPage, kPage + 7232}) {
            if (shift >= size)
                continue;
            CByteStore store;
            Append(store, bytes);
            store.SetCurrentOffset(shift);
            store.CopyToFile(m_folder.File("copy").c_str(), 1);
            EXPECT_EQ(m_folder.Read("copy"), ShiftedImage(bytes, shift));
            // A flush from the cursor shows the same file and loses nothing of the store.
            store.Flush(1);
            CFile flushed(store.GetFileName(), CFile::modeRead);
            std::string image(flushed.GetLength(), '\0');
            flushed.Read(image.data(), static_cast<UINT>(image.size()));
            flushed.Close();
            EXPECT_EQ(image, ShiftedImage(bytes, shift));
            EXPECT_EQ(Content(store), bytes);
            store.ConcatByte(1);
            Bytes longer = bytes;
            longer.push_back(1);
            store.SaveToFile(m_folder.File("saved").c_str());
            EXPECT_EQ(m_folder.Read("saved"), AsText(longer));
        }
    }
    EXPECT_EQ(FileCount(), 2u);
}

TEST_F(ByteStoreFilesTest, SaveLeavesLinksAndDevicesWhatTheyAre) {
    const Bytes bytes = Pattern(20 * kPage);
    m_folder.Write("real", "old");
    std::filesystem::permissions(m_folder.File("real"), std::filesystem::perms{0640});
    const std::string null = m_folder.Device(vnbytstr::NullDevice());
    if (!m_folder.Link("real", "link") || !m_folder.Link(null, "null"))
        GTEST_SKIP() << "no symbolic links here";
    for (const char* name : {"link", "null", "real"}) {
        CByteStore store;
        Append(store, bytes);
        store.SaveToFile(m_folder.File(name).c_str());
        EXPECT_TRUE(store.IsEmpty());
    }
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder.File("link")));
    EXPECT_EQ(m_folder.Read("real"), AsText(bytes));
    EXPECT_TRUE(m_folder.HasMode(m_folder.File("real"), 0640));
    EXPECT_TRUE(std::filesystem::is_character_file(null));
}

TEST_F(ByteStoreFilesTest, SavedOntoItsOwnFilesStaysThere) {
    const Bytes bytes = Pattern(20 * kPage);
    {
        CByteStore store;
        Append(store, bytes);
        const std::string name = store.GetFileName();
        store.CopyToFile(name.c_str());
        EXPECT_EQ(Content(store), bytes);
        store.SaveToFile(name.c_str());
        EXPECT_EQ(m_folder.Read(name.substr(m_folder.Path().size())), AsText(bytes));
        EXPECT_TRUE(m_folder.HasMode(name, 0644));
    }
    SweepLeftovers(m_folder.Path()); // it is no left-over either
    EXPECT_EQ(FileCount(), 1u);
}

TEST_F(ByteStoreFilesTest, OpensAFileAsContent) {
    const Bytes bytes = Pattern(20 * kPage + 9);
    m_folder.Write("data", AsText(bytes));
    const std::string name = m_folder.File("data");
    {
        CByteStore store;
        store.SetAutoDelete(0);
        store.SetFileName(name.c_str());
        EXPECT_EQ(Content(store), bytes);
        store.SetFileName(store.GetFileName());
        EXPECT_EQ(store.GetLength(), bytes.size());
    }
    EXPECT_EQ(m_folder.Read("data"), AsText(bytes));
    {
        CByteStore store;
        store.SetFileName(name.c_str());
        EXPECT_EQ(CauseOf([&] { store.SetFileName(m_folder.File("missing").c_str()); }), -2);
        EXPECT_TRUE(store.IsEmpty());
    }
    EXPECT_EQ(FileCount(), 0u); // auto-delete
}

} // namespace
} // namespace vnbytstr::test
