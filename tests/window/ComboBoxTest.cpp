#include "tests/window/ControlHost.h"

#include "vnbytstr/window/ComboBox.h"

#include <QAbstractItemView>
#include <QComboBox>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

constexpr int kId = 9;

class ComboBoxTest : public testing::Test {
protected:
    void Make(DWORD style) {
        m_combo.Create(style | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL, CRect(10, 10, 150, 200),
                       &m_host, kId);
        for (const char* const text : {"pear", "Apple", "fig", "apricot"})
            m_combo.AddString(text);
    }
    std::vector<std::string> Items() const {
        std::vector<std::string> items;
        for (int i = 0; i < m_combo.GetCount(); ++i) {
            CString text;
            m_combo.GetLBText(i, text);
            items.emplace_back(text);
        }
        return items;
    }
    /// What PopupHidden tells comes after the events that are under way.
    std::vector<int> Codes() {
        QCoreApplication::processEvents();
        return m_host.Codes(kId);
    }
    QComboBox* Widget() const { return m_combo.GetWidget()->findChild<QComboBox*>(); }

    ControlHost m_host;
    CComboBox m_combo;
};

TEST_F(ComboBoxTest, ItemsKeepTheirOrderDataAndSelection) {
    Make(CBS_DROPDOWNLIST);
    EXPECT_THAT(Items(), ElementsAre("pear", "Apple", "fig", "apricot"));
    EXPECT_EQ(m_combo.GetCurSel(), -1);
    m_combo.SetItemData(2, 77);
    m_combo.SetCurSel(2);
    EXPECT_EQ(m_combo.InsertString(0, "first"), 0);
    EXPECT_EQ(m_combo.GetCurSel(), 3);
    EXPECT_EQ(m_combo.GetItemData(3), 77U);
    EXPECT_EQ(TextOf(m_combo), "fig");
    EXPECT_EQ(m_combo.DeleteString(1), 4);
    EXPECT_EQ(m_combo.GetCurSel(), 2);
    EXPECT_EQ(m_combo.DeleteString(2), 3);
    EXPECT_EQ(m_combo.GetCurSel(), -1);
    EXPECT_EQ(TextOf(m_combo), "");
    EXPECT_EQ(m_combo.DeleteString(9), CB_ERR);
    EXPECT_EQ(m_combo.InsertString(9, "x"), CB_ERR);
    EXPECT_EQ(m_combo.GetLBTextLen(-1), CB_ERR);
    m_combo.ResetContent();
    EXPECT_EQ(m_combo.GetCount(), 0);
    EXPECT_GE(m_combo.InitStorage(100, 1000), 100);
    EXPECT_TRUE(Codes().empty()); // the program's own doing tells nobody
}

TEST_F(ComboBoxTest, SortsAndFindsIgnoringCase) {
    Make(CBS_DROPDOWN | CBS_SORT);
    EXPECT_THAT(Items(), ElementsAre("Apple", "apricot", "fig", "pear"));
    EXPECT_EQ(m_combo.FindString(-1, "AP"), 0);
    EXPECT_EQ(m_combo.FindString(0, "ap"), 1);
    EXPECT_EQ(m_combo.FindString(1, "ap"), 0); // goes round
    EXPECT_EQ(m_combo.FindStringExact(-1, "ap"), CB_ERR);
    EXPECT_EQ(m_combo.FindStringExact(-1, "FIG"), 2);
    EXPECT_EQ(m_combo.SelectString(-1, "pe"), 3);
    EXPECT_EQ(TextOf(m_combo), "pear");
    EXPECT_EQ(m_combo.SelectString(-1, "zz"), CB_ERR);
    EXPECT_EQ(m_combo.GetCurSel(), 3);
}

TEST_F(ComboBoxTest, TypingAndLimit) {
    Make(CBS_DROPDOWN | CBS_AUTOHSCROLL);
    m_combo.SetCurSel(0);
    m_combo.SetFocus();
    EXPECT_THAT(Codes(), ElementsAre(CBN_SETFOCUS));
    EXPECT_EQ(m_combo.GetEditSel(), static_cast<DWORD>(MAKELONG(0, 4)));
    m_combo.LimitText(3);
    Type("f");
    EXPECT_THAT(Codes(), ElementsAre(CBN_EDITUPDATE, CBN_EDITCHANGE));
    EXPECT_EQ(m_combo.GetCurSel(), -1);
    Type("igs");
    EXPECT_EQ(TextOf(m_combo), "fig");
    Codes();
    // Neither Enter nor leaving picks what was typed.
    PressKey(Qt::Key_Return);
    m_host.SetFocus();
    EXPECT_THAT(Codes(), ElementsAre(CBN_KILLFOCUS));
    EXPECT_EQ(m_combo.GetCurSel(), -1);
    m_combo.AddString("late");
    EXPECT_EQ(TextOf(m_combo), "fig");
}

TEST_F(ComboBoxTest, PickingWithKeys) {
    Make(CBS_DROPDOWNLIST);
    m_combo.SetFocus();
    Codes();
    PressKey(Qt::Key_Down);
    EXPECT_THAT(Codes(), ElementsAre(CBN_SELENDOK, CBN_SELCHANGE));
    EXPECT_EQ(m_combo.GetCurSel(), 0);
    Type("f");
    EXPECT_EQ(TextOf(m_combo), "fig");
    Codes();
    m_combo.ShowDropDown();
    EXPECT_TRUE(m_combo.GetDroppedState());
    EXPECT_THAT(Codes(), ElementsAre(CBN_DROPDOWN)); // and the focus stays the combo box's
    QAbstractItemView* const list = Widget()->view();
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_FALSE(m_combo.GetDroppedState());
    EXPECT_THAT(Codes(), ElementsAre(CBN_SELENDOK, CBN_SELCHANGE, CBN_CLOSEUP));
    Activate(m_host);
    Codes();
    EXPECT_EQ(TextOf(m_combo), "apricot");
    m_combo.ShowDropDown();
    QTest::keyClick(list, Qt::Key_Up);
    QTest::keyClick(list, Qt::Key_Escape);
    // The platform takes the focus away along with the list.
    EXPECT_THAT(Codes(), ElementsAre(CBN_DROPDOWN, CBN_SELENDCANCEL, CBN_CLOSEUP, CBN_KILLFOCUS));
    EXPECT_EQ(TextOf(m_combo), "apricot");
}

TEST_F(ComboBoxTest, TheWindowIsAsHighAsItsField) {
    Make(CBS_DROPDOWN);
    CRect rect;
    m_combo.GetWindowRect(rect);
    EXPECT_LT(rect.Height(), 60);
    m_combo.MoveWindow(0, 0, 100, 250);
    CRect after;
    m_combo.GetWindowRect(after);
    EXPECT_EQ(after.Height(), rect.Height());
    EXPECT_EQ(after.Width(), 100);
    m_combo.GetDroppedControlRect(after);
    EXPECT_EQ(after.Height(), 250);
    CComboBox simple;
    simple.Create(CBS_SIMPLE | WS_VISIBLE, CRect(0, 100, 100, 180), &m_host, kId + 1);
    simple.GetWindowRect(after);
    EXPECT_EQ(after.Height(), 80);
}

TEST_F(ComboBoxTest, TheParentMayEndItWhileBeingTold) {
    Make(CBS_DROPDOWNLIST);
    m_combo.SetFocus();
    m_host.m_destroyOnCommand = true;
    PressKey(Qt::Key_Down);
    m_host.m_destroyOnCommand = false;
    EXPECT_EQ(m_combo.m_hWnd, nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace
