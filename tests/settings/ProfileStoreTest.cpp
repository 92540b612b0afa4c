// The settings on the disk, without another process.
#include "src/charset/CodePage.h"
#include "tests/settings/ProfileFixture.h"
#include "tests/support/LongFile.h"

#include <filesystem>

namespace vnbytstr::test {
namespace {

TEST_F(Profile, ValuesAreWrittenAndRead) {
    EXPECT_EQ(VNGetProfileDWORD(3, "Options", "MaxCachePages", 64, 0), 64u);
    EXPECT_FALSE(VNIsProfileValue(3, "Options", "MaxCachePages"));
    EXPECT_TRUE(VNWriteProfileDWORD(3, "Options", "MaxCachePages", 0xFFFFFFFF));
    EXPECT_EQ(VNGetProfileDWORD(3, "Options", "MaxCachePages", 64, 0), 0xFFFFFFFFu);
    EXPECT_EQ(VNGetProfileDWORD(1, "Options", "MaxCachePages", 64, 0), 64u); // another root
    EXPECT_TRUE(VNWriteProfileString(3, "Options", "UILanguage", ""));
    EXPECT_TRUE(VNIsProfileValue(3, "Options", "UILanguage"));
    EXPECT_EQ(VNGetProfileString(3, "Options", "UILanguage", "ENU", 0), "");
    EXPECT_EQ(VNGetProfileString(3, "Options", "Other", "ENU", 0), "ENU");
    EXPECT_EQ(VNGetProfileString(3, "Options", "Other", nullptr, 0), "");
    CProfileSectionKey key;
    EXPECT_TRUE(VNGetProfileSectionKey(3, "Options", key));
    ASSERT_EQ(key.GetCount(), 2);
    EXPECT_EQ(key.GetName(0), "MaxCachePages");
    EXPECT_EQ(key.GetString(0), "4294967295");
    EXPECT_EQ(key.GetName(2), "");
    EXPECT_EQ(key.GetString(-1), "");
    EXPECT_TRUE(VNWriteProfileString(3, "Options", "UILanguage", nullptr));
    EXPECT_FALSE(VNIsProfileValue(3, "Options", "UILanguage"));
    EXPECT_TRUE(VNDeleteProfileSection(3, "Options"));
    EXPECT_TRUE(VNDeleteProfileSection(3, "Options"));
    EXPECT_FALSE(VNGetProfileSectionKey(3, "Options", key));
    EXPECT_EQ(key.GetCount(), 0);
    EXPECT_FALSE(VNWriteProfileString(3, nullptr, "x", "y"));
    EXPECT_FALSE(VNIsProfileValue(3, "Options", nullptr));
    EXPECT_EQ(VNGetProfileDWORD(3, nullptr, nullptr, 5), 5u);
    EXPECT_TRUE(m_system.OpenHandles().empty());
    EXPECT_EQ(m_system.Diagnostics(), "");
}

TEST_F(Profile, TextThatIsNotANumberGivesTheDefault) {
    m_folder.Write("profile.ini",
                   "[3/N]\na=12x\nb=\nc=-1\nd=4294967296\ne= 7 \nf=0x1F\ng=0x\nh=1e3\ni=010\n");
    const auto number = [](const char* name) { return VNGetProfileDWORD(3, "N", name, 99); };
    for (const char* name : {"a", "b", "c", "d", "g", "h"})
        EXPECT_EQ(number(name), 99u) << name;
    EXPECT_EQ(number("e"), 7u);
    EXPECT_EQ(number("f"), 31u);
    EXPECT_EQ(number("i"), 10u);
}

TEST_F(Profile, ChangesOfOthersAreSeenAtTheNextTick) {
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 1));
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 0), 1u);
    m_folder.Write("profile.ini", "[3/A]\nb=22\n");
    m_system.ResetCounts();
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 0), 1u);
    EXPECT_EQ(m_system.Count(Call::Status), 0u); // in one tick the file is not even looked at
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 0), 22u);
    m_folder.Write("profile.ini",
                   "[3/A]\nb=333\nc=1\n"); // a write keeps what others wrote meanwhile
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 4));
    EXPECT_EQ(m_folder.Read("profile.ini"), "[3/A]\nb=4\nc=1\n");
    m_system.ResetCounts();
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 4)); // nothing to change, nothing written
    EXPECT_EQ(m_system.Count(Call::Write), 0u);
}

TEST_F(Profile, ABatchIsSavedWholeOrNotAtAll) {
    VNWriteProfileString(3, "Global Variables", "OLD", "1");
    CProfileBatch batch;
    batch.DeleteSection(3, "Global Variables");
    for (int i = 0; i < 100000; ++i)
        batch.WriteDWORD(3, "Global Variables", ("VAR" + std::to_string(i)).c_str(),
                         static_cast<DWORD>(i));
    batch.WriteString(3, "Global Variables", "VAR7", nullptr);
    m_system.Inject(Fault{.call = Call::Rename, .error = EIO});
    EXPECT_FALSE(batch.Commit());
    EXPECT_EQ(m_folder.Read("profile.ini"), "[3/Global Variables]\nOLD=1\n");
    m_system.Inject({});
    m_system.ResetCounts();
    EXPECT_TRUE(batch.Commit());
    EXPECT_EQ(m_system.Count(Call::Rename), 1u);
    CProfileSectionKey key;
    EXPECT_TRUE(VNGetProfileSectionKey(3, "Global Variables", key));
    EXPECT_EQ(key.GetCount(), 99999);
    EXPECT_FALSE(VNIsProfileValue(3, "Global Variables", "OLD"));
    EXPECT_EQ(VNGetProfileDWORD(3, "Global Variables", "VAR99999", 0), 99999u);
}

TEST_F(Profile, AnUnreadableFileGivesDefaultsAndIsNotWritten) {
    m_folder.Write("profile.ini", "[3/A]\nb=1\n");
    m_system.Inject(Fault{.call = Call::Open, .fromThenOn = true, .error = EACCES});
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 9u);
    EXPECT_NE(m_system.Diagnostics().find(m_folder.File("profile.ini")), std::string::npos);
    // The lock opens, the file does not.
    m_system.Inject(Fault{.call = Call::Open, .at = 2, .fromThenOn = true, .error = EACCES});
    EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "c", 1));
    m_system.Inject({});
    EXPECT_EQ(m_folder.Read("profile.ini"), "[3/A]\nb=1\n");
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 1u);
}

TEST_F(Profile, ADamagedFileIsKeptBesideTheNewOne) {
    const std::string damaged("[3/A]\nb=1\nc=\xFF\xFE\nd=4\n");
    m_folder.Write("profile.ini", damaged);
    m_folder.Write("profile.ini.damaged-1", "another");
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "d", 0), 4u);
    EXPECT_NE(m_system.Diagnostics().find("line 3"), std::string::npos);
    EXPECT_EQ(m_folder.Read("profile.ini"), damaged); // reading changes nothing
    m_system.Inject(Fault{.call = Call::Rename, .error = EIO});
    EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "e", 5));
    m_system.Inject({});
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "e", 5));
    EXPECT_EQ(m_folder.Read("profile.ini"), "[3/A]\nb=1\nd=4\ne=5\n");
    EXPECT_EQ(m_folder.Read("profile.ini.damaged-1"), "another");
    EXPECT_EQ(m_folder.Read("profile.ini.damaged-2"), damaged);
    EXPECT_FALSE(Holds("profile.ini.damaged-3"));
    EXPECT_NE(m_system.Diagnostics().find("profile.ini.damaged-2"), std::string::npos);
    // When it cannot be kept it is not replaced.
    m_folder.Write("profile.ini", damaged + "more");
    for (const Call call : {Call::Write, Call::Sync, Call::Close}) {
        m_system.Inject(Fault{.call = call, .at = call == Call::Close ? 4u : 1u, .error = ENOSPC});
        EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "e", 6)) << CallName(call);
        EXPECT_EQ(m_folder.Read("profile.ini"), damaged + "more");
        EXPECT_FALSE(Holds("profile.ini.damaged-3"));
    }
}

TEST_F(Profile, AFailureToReadPasses) {
    m_folder.Write("profile.ini", "[3/A]\nb=1\n");
    const auto breakReading = [&] {
        m_system.Inject(Fault{.call = Call::Open, .fromThenOn = true, .error = EMFILE});
    };
    breakReading();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 9u);
    EXPECT_EQ(VNGetProfileStatus(), ProfileUnreadable);
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 9u);
    const std::string said = m_system.Diagnostics();
    EXPECT_EQ(said.find("cannot be read"), said.rfind("cannot be read")); // once
    m_system.Inject({});
    NextTick(); // the file is what it was
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 1u);
    EXPECT_EQ(VNGetProfileStatus(), ProfileSound);
    // What was read last is better than defaults, also after a change by this process.
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "b", 2));
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 2u);
    m_folder.Write("profile.ini", "[3/A]\nb=3\nc=1\n");
    breakReading();
    EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "c", 4));
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 2u);
    m_system.Inject({});
    NextTick();
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 9), 3u);
}

TEST_F(Profile, AFileOfAnotherLengthThanSettingsHaveIsNotRead) {
    m_folder.Write("profile.ini", "[3/A]\nb=1\n");
    vnbytstr::test::SetLength(m_folder.File("profile.ini"), std::uintmax_t{1} << 40);
    EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 7), 7u);
    EXPECT_EQ(VNGetProfileStatus(), ProfileUnreadable);
    EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "b", 1));
}

TEST_F(Profile, AProgramLearnsOfTrouble) {
    struct Told {
        std::vector<std::pair<EProfileStatus, std::string>> messages;
        static void Take(EProfileStatus status, const char* text, void* context) {
            // A handler may ask for settings.
            EXPECT_EQ(VNGetProfileDWORD(3, "A", "b", 0), 1u);
            static_cast<Told*>(context)->messages.emplace_back(status, text);
        }
    } told;
    VNSetProfileHandler(&Told::Take, &told);
    m_folder.Write("profile.ini", "[3/A]\nb=1\n\xFF\n");
    CString text;
    EXPECT_EQ(VNGetProfileStatus(&text), ProfileDamaged);
    ASSERT_EQ(told.messages.size(), 1u);
    EXPECT_EQ(told.messages[0].second, std::string(text));
    m_system.Inject(Fault{.call = Call::Rename, .error = EROFS});
    EXPECT_FALSE(VNWriteProfileDWORD(3, "A", "c", 1));
    m_system.Inject({});
    EXPECT_EQ(VNGetProfileStatus(&text), ProfileNotSaved);
    EXPECT_EQ(told.messages.back(), std::pair(ProfileNotSaved, std::string(text)));
    EXPECT_NE(text.Find("profile.ini"), -1);
    EXPECT_TRUE(VNWriteProfileDWORD(3, "A", "c", 1));
    EXPECT_EQ(VNGetProfileStatus(&text), ProfileSound);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(m_system.Diagnostics(), "");
    VNSetProfileHandler(nullptr);
}

TEST_F(Profile, TextFollowsTheCodePage) {
    {
        const vnbytstr::ScopedCodePage scope(1252);
        NextTick();
        EXPECT_TRUE(VNWriteProfileString(3, "A", "b", "gr\xFC\xDF"));
        EXPECT_EQ(VNGetProfileString(3, "A", "b", ""), "gr\xFC\xDF");
    }
    const vnbytstr::ScopedCodePage scope(65001);
    NextTick();
    EXPECT_EQ(VNGetProfileString(3, "A", "b", ""), "gr\xC3\xBC\xC3\x9F");
}

} // namespace
} // namespace vnbytstr::test
