// What a program does that includes <windows.h> and the library; HEADER_ORDER names the order in which
// the including test does.
#pragma once

#include <gtest/gtest.h>

namespace {

using vnbytstr::Interaction;

// Names of functions that are macros of <windows.h> mean the library's; its types are the system's.
TEST(WindowsHeader, HEADER_ORDER) {
    static_assert(std::is_same_v<DWORD, unsigned long>);
    CString text;
    EXPECT_EQ(AfxLoadString(1, text), 0); // no such string
    CFile none;
    EXPECT_EQ(none.Open("", CFile::modeRead), FALSE);
    CByteStream bytes(reinterpret_cast<const BYTE*>("abc"), DWORD{3});
    EXPECT_EQ(bytes.GetLength(), 3u);
    CStringArray array;
    array.SetAtGrow(3, "text");
    EXPECT_EQ(array[3], "text");
    class Answers : public Interaction {
    public:
        int MessageBox(const char*, const char*, UINT, UINT) override { return IDRETRY; }
        int ShellExecute(const char*, const char*, const char*, const char*, int) override {
            return SW_SHOWMAXIMIZED;
        }
    } answers;
    Interaction* const before = Interaction::Install(&answers);
    EXPECT_EQ(AfxMessageBox("text", MB_RETRYCANCEL | MB_ICONSTOP), IDRETRY);
    EXPECT_EQ(Interaction::Current().ShellExecute("", "", "", "", SW_HIDE), SW_SHOWMAXIMIZED);
    Interaction::Install(before);
    EXPECT_NE(::GetCurrentProcessId(), 0u);
    EXPECT_EQ(::MessageBoxW == nullptr, false);
}

} // namespace
