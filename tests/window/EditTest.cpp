#include "tests/window/ControlHost.h"

#include "src/charset/CodePage.h"
#include "vnbytstr/window/Edit.h"

#include <QClipboard>
#include <QInputMethodEvent>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using vnbytstr::ScopedCodePage;

constexpr int kId = 7;

/// An edit control that writes its messages down and may keep some for itself.
class WatchedEdit : public CEdit {
public:
    WatchedEdit(CWnd& parent, DWORD style) {
        Create(style | WS_VISIBLE | WS_TABSTOP, CRect(10, 10, 200, 100), &parent, kId);
        SetFocus();
    }
    ~WatchedEdit() override { DestroyWindow(); }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_CHAR && wParam == m_keptChar)
            return 0;
        if (message >= WM_CUT && message <= WM_UNDO)
            m_commands.push_back(message);
        return CEdit::WindowProc(message, wParam, lParam);
    }
    BOOL PreTranslateMessage(MSG* message) override {
        return (message->message == WM_KEYDOWN && message->wParam == m_keptKey) ||
               CEdit::PreTranslateMessage(message);
    }
    WPARAM m_keptChar = 0;
    WPARAM m_keptKey = 0;
    std::vector<UINT> m_commands;
};

TEST(Edit, TypingTellsTheParentAndPassesThroughTheObject) {
    ControlHost host;
    WatchedEdit edit(host, ES_AUTOHSCROLL);
    EXPECT_THAT(host.Codes(kId), ElementsAre(EN_UPDATE, EN_CHANGE, EN_SETFOCUS));
    edit.m_keptChar = 'b';
    edit.m_keptKey = 'C';
    Type("abc");
    EXPECT_EQ(TextOf(edit), "a");
    EXPECT_THAT(host.Codes(kId), ElementsAre(EN_UPDATE, EN_CHANGE));
    EXPECT_TRUE(edit.GetModify());
    PressKey(Qt::Key_Backspace);
    EXPECT_EQ(TextOf(edit), "");
    edit.SetWindowText("new");
    EXPECT_FALSE(edit.GetModify());
    edit.SendMessage(WM_CHAR, 'x');
    EXPECT_EQ(TextOf(edit), "xnew");
    host.Codes(kId);
    CEdit other;
    other.Create(WS_VISIBLE, CRect(10, 150, 200, 170), &host, kId + 1);
    other.SetFocus();
    EXPECT_THAT(host.Codes(kId), ElementsAre(EN_KILLFOCUS));
}

TEST(Edit, TheLimitCountsBytesAndCutsAtCharacters) {
    const ScopedCodePage utf8(65001);
    ControlHost host;
    WatchedEdit edit(host, ES_AUTOHSCROLL);
    edit.LimitText(5);
    host.Codes(kId);
    for (const char byte : std::string("\xC3\xA4\xC3\xB6\xC3\xBC")) // three of two bytes each
        edit.SendMessage(WM_CHAR, static_cast<BYTE>(byte));
    EXPECT_EQ(TextOf(edit), "\xC3\xA4\xC3\xB6");
    EXPECT_THAT(host.Codes(kId),
                ElementsAre(EN_UPDATE, EN_CHANGE, EN_UPDATE, EN_CHANGE, EN_MAXTEXT));
    QApplication::clipboard()->setText(QStringLiteral("xyz"));
    edit.Paste();
    EXPECT_EQ(TextOf(edit), "\xC3\xA4\xC3\xB6x");
    // What is selected makes room.
    edit.SetSel(0, 2);
    edit.Paste();
    EXPECT_EQ(TextOf(edit), "xy\xC3\xB6x");
    edit.SetWindowText("longer than that");
    EXPECT_EQ(TextOf(edit), "longer than that");
    // What an input method commits is cut as well, and as a whole character.
    edit.SetWindowText("abc");
    edit.SetSel(3, 3);
    QInputMethodEvent composed;
    composed.setCommitString(QStringLiteral("\u4E2D\u6587")); // three bytes each
    QApplication::sendEvent(QApplication::focusWidget(), &composed);
    EXPECT_EQ(TextOf(edit), "abc");
    edit.LimitText(6);
    QApplication::sendEvent(QApplication::focusWidget(), &composed);
    EXPECT_EQ(TextOf(edit), "abc\xE4\xB8\xAD");
}

TEST(Edit, PositionsAreBytesOfTheCodePage) {
    const ScopedCodePage japanese(932);
    ControlHost host;
    WatchedEdit edit(host, ES_AUTOHSCROLL);
    edit.SetWindowText("a\x82\xA0z"); // a, a letter of two bytes, z
    edit.SetSel(1, 3);
    int first = 0;
    int end = 0;
    edit.GetSel(first, end);
    EXPECT_EQ(std::pair(first, end), std::pair(1, 3));
    edit.SetSel(2, 4); // begins inside the letter
    edit.GetSel(first, end);
    EXPECT_EQ(std::pair(first, end), std::pair(1, 4));
    edit.SetSel(0, -1);
    EXPECT_EQ(edit.GetSel(), static_cast<DWORD>(MAKELONG(0, 4)));
    edit.SetSel(-1, 0);
    edit.GetSel(first, end);
    EXPECT_EQ(first, end);
    edit.SetSel(3, 4);
    edit.ReplaceSel("\x82\xA2", TRUE);
    EXPECT_EQ(TextOf(edit), "a\x82\xA0\x82\xA2");
    EXPECT_TRUE(edit.CanUndo());
    EXPECT_TRUE(edit.Undo());
    EXPECT_EQ(TextOf(edit), "a\x82\xA0z");
}

TEST(Edit, KeysOfTheClipboardAreMessages) {
    ControlHost host;
    WatchedEdit edit(host, ES_AUTOHSCROLL);
    edit.SetWindowText("word");
    PressKey(Qt::Key_A, Qt::ControlModifier);
    PressKey(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "word");
    PressKey(Qt::Key_V, Qt::ControlModifier);
    PressKey(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(TextOf(edit), "wordword");
    PressKey(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(TextOf(edit), "word");
    EXPECT_THAT(edit.m_commands, ElementsAre(WM_CUT, WM_PASTE, WM_PASTE, WM_UNDO));
    QApplication::clipboard()->setText(QStringLiteral("one\r\ntwo"));
    edit.SetWindowText("");
    edit.Paste();
    EXPECT_EQ(TextOf(edit), "one");
}

TEST(Edit, StylesConfineWhatIsTyped) {
    ControlHost host;
    {
        WatchedEdit number(host, ES_NUMBER);
        Type("1x2");
        EXPECT_EQ(TextOf(number), "12");
    }
    {
        WatchedEdit upper(host, ES_UPPERCASE);
        Type("aB");
        EXPECT_EQ(TextOf(upper), "AB");
    }
    {
        WatchedEdit readOnly(host, ES_READONLY);
        readOnly.SetWindowText("kept");
        readOnly.SetSel(0, -1);
        Type("x");
        readOnly.Cut();
        readOnly.Clear();
        EXPECT_EQ(TextOf(readOnly), "kept");
        readOnly.SetReadOnly(FALSE);
        Type("x");
        EXPECT_EQ(TextOf(readOnly), "x");
    }
    WatchedEdit password(host, ES_PASSWORD);
    QApplication::clipboard()->setText(QStringLiteral("before"));
    Type("secret");
    password.SetSel(0, -1);
    password.Cut();
    EXPECT_EQ(QApplication::clipboard()->text(), "before");
    EXPECT_EQ(TextOf(password), "secret");
}

TEST(Edit, ATextComesBackAsItWasUntilItIsChanged) {
    const ScopedCodePage utf8(65001);
    ControlHost host;
    WatchedEdit edit(host, ES_MULTILINE | ES_WANTRETURN);
    for (const std::string text : {"a\nb\r\nc\r", "\xFF\xFE broken",
                                   "no\xC2\xA0"
                                   "break",
                                   "tab\there"}) {
        edit.SetWindowText(text.c_str());
        EXPECT_EQ(TextOf(edit), text);
    }
    edit.SetWindowText("no\xC2\xA0"
                       "break\nz");
    edit.SetSel(0, 0);
    Type("x");
    PressKey(Qt::Key_Return);
    EXPECT_EQ(TextOf(edit), "x\nno\xC2\xA0"
                            "break\nz"); // the text's own kind of break
    edit.SetWindowText("");
    Type("x");
    PressKey(Qt::Key_Return);
    EXPECT_EQ(TextOf(edit), "x\r\n");
    edit.LimitText(4);
    PressKey(Qt::Key_Return); // two bytes do not fit with one left
    edit.SendMessage(WM_CHAR, 'y');
    EXPECT_EQ(TextOf(edit), "x\r\ny");
}

TEST(Edit, LinesAreCountedByTheirBreaks) {
    ControlHost host;
    WatchedEdit edit(host, ES_MULTILINE);
    edit.SetWindowText("one\r\n\r\nthree");
    EXPECT_EQ(edit.GetLineCount(), 3);
    EXPECT_EQ(edit.LineIndex(0), 0);
    EXPECT_EQ(edit.LineIndex(1), 5);
    EXPECT_EQ(edit.LineIndex(2), 7);
    EXPECT_EQ(edit.LineIndex(3), -1);
    EXPECT_EQ(edit.LineLength(8), 5);
    EXPECT_EQ(edit.LineFromChar(7), 2);
    EXPECT_EQ(edit.LineFromChar(6), 1); // between CR and LF is still the line before
    char buffer[4] = "zzz";
    EXPECT_EQ(edit.GetLine(2, buffer, 3), 3);
    EXPECT_STREQ(buffer, "thr");
    EXPECT_EQ(edit.GetLine(9, buffer, 3), 0);
    EXPECT_EQ(edit.GetLine(0, buffer, 1), 1);
}

TEST(Edit, TheParentMayEndItWhileBeingTold) {
    ControlHost host;
    for (const DWORD style : {DWORD{ES_AUTOHSCROLL}, DWORD{ES_MULTILINE}}) {
        CEdit edit;
        edit.Create(style | WS_VISIBLE, CRect(0, 0, 50, 20), &host, kId);
        edit.SetFocus();
        edit.LimitText(1);
        QApplication::clipboard()->setText(QStringLiteral("abc"));
        host.m_destroyOnCommand = true;
        PressKey(Qt::Key_V, Qt::ControlModifier);
        host.m_destroyOnCommand = false;
        EXPECT_EQ(edit.m_hWnd, nullptr);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

} // namespace
