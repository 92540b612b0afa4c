#include "tests/window/ControlHost.h"

#include "vnbytstr/window/Menu.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

enum Ids : UINT { kOpen = 201, kSave, kAbout };

TEST(Menu, APopupBelongsToItsItem) {
    CMenu menu;
    CMenu popup;
    ASSERT_TRUE(menu.CreatePopupMenu());
    ASSERT_TRUE(popup.CreatePopupMenu());
    popup.AppendMenu(MF_STRING, kSave, "Save");
    const auto handle = reinterpret_cast<std::uintptr_t>(popup.m_hMenu);
    EXPECT_FALSE(popup.AppendMenu(MF_POPUP, handle, "in itself"));
    ASSERT_TRUE(menu.AppendMenu(MF_POPUP, handle, "More"));
    EXPECT_FALSE(menu.AppendMenu(MF_POPUP, handle, "twice"));
    EXPECT_FALSE(popup.DestroyMenu());
    EXPECT_EQ(menu.GetMenuState(kSave, MF_BYCOMMAND), 0U);
    EXPECT_EQ(menu.GetMenuState(kOpen, MF_BYCOMMAND), static_cast<UINT>(-1));
    EXPECT_TRUE(menu.DestroyMenu());
    EXPECT_EQ(CMenu::FromHandle(reinterpret_cast<HMENU>(handle)), nullptr);
}

TEST(Menu, APopupAnswersWhatWasChosen) {
    ControlHost host;
    CMenu more;
    more.CreatePopupMenu();
    more.AppendMenu(MF_STRING | MF_CHECKED, kSave, "&Save");
    CMenu menu;
    menu.CreatePopupMenu();
    menu.AppendMenu(MF_STRING, kOpen, "&Open");
    menu.AppendMenu(MF_STRING | MF_GRAYED, kAbout, "&About");
    menu.AppendMenu(MF_SEPARATOR);
    menu.AppendMenu(MF_POPUP, reinterpret_cast<std::uintptr_t>(more.Detach()), "&More");
    const auto press = [](std::vector<int> keys) {
        DoLater([keys = std::move(keys)] {
            for (const int key : keys)
                QTest::keyClick(QApplication::activePopupWidget(), static_cast<Qt::Key>(key));
            while (QWidget* const open = QApplication::activePopupWidget())
                open->close();
        });
    };
    press({Qt::Key_O});
    EXPECT_EQ(menu.TrackPopupMenu(TPM_RETURNCMD, 50, 50, &host), static_cast<BOOL>(kOpen));
    press({Qt::Key_M, Qt::Key_S});
    EXPECT_EQ(menu.TrackPopupMenu(TPM_RETURNCMD, 50, 50, &host), static_cast<BOOL>(kSave));
    QCoreApplication::processEvents();
    EXPECT_TRUE(host.m_told.empty());
    press({Qt::Key_A});
    EXPECT_EQ(menu.TrackPopupMenu(TPM_RETURNCMD, 50, 50, &host), 0);
    press({Qt::Key_O});
    EXPECT_TRUE(menu.TrackPopupMenu(0, 50, 50, &host));
    QCoreApplication::processEvents();
    EXPECT_THAT(host.Codes(kOpen), ElementsAre(0));
}

} // namespace
