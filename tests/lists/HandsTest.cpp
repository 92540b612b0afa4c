// Hands that are faster than a program expects: keys that overlap, message boxes between press and
// release, questions that are answered once.
#include "tests/lists/ListFixture.h"

#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QTimer>

namespace vnbytstr::test {
namespace {

class Hands : public Editing {
protected:
    static QWidget* Focus() {
        QWidget* focus = QApplication::focusWidget();
        return focus != nullptr ? focus : QApplication::activeWindow();
    }
    static void Down(Qt::Key key) { QTest::keyPress(Focus(), key); }
    static void Up(Qt::Key key) { QTest::keyRelease(Focus(), key); }
    /// Shows a message box that Enter ends as it goes down.
    void BoxEndedByEnter() {
        QTimer::singleShot(0, [] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(box, nullptr);
            QTest::keyPress(box->buttons().front(), Qt::Key_Return);
            EXPECT_FALSE(box->isVisible());
        });
        AfxMessageBox("text");
        parent.SetActiveWindow();
        Pump();
    }
};

TEST_F(Hands, AKeyGoesDownBeforeTheOneThatClosedTheEditorIsUp) {
    for (const bool pumps : {false, true}) {
        SetUp();
        EditAndType(1, 0, "new");
        Down(Qt::Key_Return); // ends the editor, whose line edit had the key
        if (pumps)
            Pump();
        Down(Qt::Key_Down);
        Up(Qt::Key_Return);
        Up(Qt::Key_Down);
        EXPECT_EQ(Cell(1, 0), "new");
        EXPECT_EQ(list->GetFirstSel(), 2) << pumps;
    }
}

TEST_F(Hands, ManyKeysOverlap) {
    const Qt::Key keys[] = {Qt::Key_F2,     Qt::Key_A,  Qt::Key_Tab,    Qt::Key_1,
                            Qt::Key_Return, Qt::Key_F2, Qt::Key_Escape, Qt::Key_Down,
                            Qt::Key_Down,   Qt::Key_F2, Qt::Key_B,      Qt::Key_Return};
    for (int pump = 0; pump < 3; ++pump) {
        SetUp();
        list->SetOnlySel(0);
        Qt::Key last = Qt::Key_Home;
        Down(last);
        int count = 0;
        for (const Qt::Key key : keys) {
            Down(key);
            if (pump == 1 || (pump == 2 && ++count % 2 == 0))
                Pump();
            Up(last);
            last = key;
        }
        Up(last);
        Pump();
        EXPECT_EQ(Cell(0, 0), "a") << pump;
        EXPECT_EQ(Cell(0, 2), "1");
        EXPECT_EQ(Cell(2, 0), "b");
        EXPECT_FALSE(IsOpen());
    }
}

TEST_F(Hands, TheWindowThatGotAReleaseIsGone) {
    for (int i = 0; i < 4; ++i) {
        auto passing = std::make_unique<CEdit>();
        ASSERT_TRUE(passing->Create(WS_CHILD | WS_VISIBLE | WS_TABSTOP, CRect(10, 270, 100, 290),
                                    &parent, 7));
        BoxEndedByEnter();
        passing->SetFocus();
        Up(Qt::Key_Return); // the box is gone: to the window below
        passing->DestroyWindow();
        Pump();
        list->SetOnlySel(0);
        BoxEndedByEnter();
        list->SetFocus();
        Up(Qt::Key_Return);
        Down(Qt::Key_Down);
        Up(Qt::Key_Down);
        EXPECT_EQ(list->GetFirstSel(), 1);
    }
}

} // namespace
} // namespace vnbytstr::test
