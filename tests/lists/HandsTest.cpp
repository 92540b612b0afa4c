// Hands that are faster than a program expects: keys that overlap, message boxes between press and
// release, questions that are answered once.
#include "tests/lists/ListFixture.h"

#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QTimer>
#include <QWheelEvent>
#include <QWindow>

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

// --- message boxes between press and release ----------------------------------------------------

/// Mouse events of the platform: a message box keeps those for windows below from them.
class Boxes : public Hands {
protected:
    void SetUp() override {
        Hands::SetUp();
        ASSERT_TRUE(list->CreateHeadingsControl(1001));
        list->EnableSort();
        Pump();
    }
    QPoint InTop(CWnd& window, CPoint at) {
        window.ClientToScreen(&at);
        return parent.GetWidget()->mapFromGlobal(QPoint(at.x, at.y));
    }
    QWindow* Top() { return parent.GetWidget()->windowHandle(); }
    /// Shows a box when it is asked; the button goes up meanwhile.
    void AnswerWithBox(LRESULT answer, QPoint at) {
        parent.onAsked = [this, answer, at](UINT message) -> LRESULT {
            if (message != VNM_STOREVALUE)
                return 0;
            QTimer::singleShot(0, [this, at] {
                QTest::mouseRelease(Top(), Qt::LeftButton, {}, at);
                QApplication::activeModalWidget()->close();
            });
            AfxMessageBox("text");
            return answer;
        };
    }
};

TEST_F(Boxes, NothingStaysPressed) {
    for (const LRESULT answer : {0, 1})
        for (const int where : {0, 1, 2, 3}) {
            SetUp();
            EditAndType(1, 0, "new");
            CWnd& window = where == 3 ? static_cast<CWnd&>(*list) : *list->GetHeadings();
            const CPoint points[] = {{40, 8}, {100, 8}, {199, 8}, CellPoint(3, 1)};
            const QPoint at = InTop(window, points[where]);
            AnswerWithBox(answer, at);
            QTest::mousePress(Top(), Qt::LeftButton, {}, at);
            EXPECT_EQ(GetKeyState(VK_LBUTTON) & 0x8000, 0);
            EXPECT_EQ(CWnd::GetCapture(), nullptr) << where << answer;
            parent.onAsked = nullptr;
            const int width = list->GetColumnWidth(0);
            const int row = list->GetFirstSel();
            QTest::mouseMove(Top(), at + QPoint(58, 0));
            QTest::mouseMove(Top(), at + QPoint(58, 40));
            Pump();
            EXPECT_EQ(list->GetColumnWidth(0), width);
            EXPECT_EQ(list->GetFirstSel(), row);
            EXPECT_EQ(list->GetSortState(), kNotSorted);
            EXPECT_EQ(parent.asked.size(), answer != 0 ? 1U : 2U); // "store", "closed"
            EXPECT_EQ(IsOpen(), answer != 0);
        }
}

TEST_F(Boxes, ARefusedValueIsAskedForOnceByEachActionOfTheHand) {
    for (int i = 0; i < 60; ++i)
        list->AddStringItems("more", "", "");
    CStringArray files;
    files.Add("/data/x");
    COleDataObject data(files);
    const auto strip = [this](QEvent::Type type, int x) {
        Mouse(*list->GetHeadings(), type, {x, 8});
        Pump();
    };
    const std::pair<const char*, std::function<void()>> actions[] = {
        {"heading",
         [&] {
             strip(QEvent::MouseButtonPress, 40);
             strip(QEvent::MouseButtonRelease, 40);
         }},
        {"divider",
         [&] {
             strip(QEvent::MouseButtonPress, 100);
             for (int x = 101; x < 107; ++x)
                 strip(QEvent::MouseMove, x);
             strip(QEvent::MouseButtonRelease, 107);
         }},
        {"file",
         [&] {
             list->m_DropTarget.OnDragEnter(list.get(), &data, 0, CellPoint(2, 1));
             for (int row = 0; row < 6; ++row) {
                 list->m_DropTarget.OnDragOver(list.get(), &data, 0, CellPoint(row, 1));
                 Pump();
             }
         }},
        {"wheel",
         [&] {
             for (int notch = 0; notch < 4; ++notch) {
                 const QPointF at = list->GetWidget()->rect().center();
                 QWheelEvent turn(at, list->GetWidget()->mapToGlobal(at), {}, {0, -120},
                                  Qt::NoButton, {}, Qt::NoScrollPhase, false);
                 QApplication::sendEvent(list->GetWidget(), &turn);
             }
         }},
        {"row", [&] { Click(CellPoint(3, 1)); }}};
    for (const auto& [name, act] : actions) {
        EditAndType(1, 0, "bad");
        parent.Answer(VNM_STOREVALUE, 1);
        for (const int times : {1, 2}) {
            parent.Take();
            if (times == 2) // the same action anew
                QTest::qWait(std::string_view(name) == "wheel" ? 600 : 0);
            if (times == 2 && std::string_view(name) == "file")
                Down(Qt::Key_Shift);
            act();
            Pump();
            EXPECT_EQ(parent.Take(), Asked{"store 0 bad"}) << name << times;
        }
        EXPECT_TRUE(IsOpenAt(1, 0));
        EXPECT_EQ(list->SendMessage(LB_GETTOPINDEX), 0);
        list->CellCancel();
        Pump();
    }
}

TEST_F(Boxes, AThumbThatIsRefusedGoesBack) {
    Make(WS_VSCROLL);
    list->SetEditorType(0, kEditorText);
    for (int i = 0; i < 300; ++i)
        list->AddStringItems("more", "", "");
    Pump();
    auto* bar = list->GetWidget()->findChild<QScrollBar*>();
    ASSERT_NE(bar, nullptr);
    const auto drag = [&] {
        bar->setSliderDown(true); // as a press on the thumb
        for (int i = 1; i <= 8; ++i)
            bar->setSliderPosition(i * 16);
        bar->setSliderDown(false);
        Pump();
    };
    EditAndType(1, 0, "bad");
    parent.Answer(VNM_STOREVALUE, 1);
    drag();
    EXPECT_EQ(parent.Take(), Asked{"store 0 bad"});
    EXPECT_EQ(list->SendMessage(LB_GETTOPINDEX), 0);
    EXPECT_EQ(bar->value(), 0);
    EXPECT_EQ(bar->sliderPosition(), 0);
    parent.onAsked = nullptr;
    Down(Qt::Key_Shift); // the hand does something else
    drag();
    EXPECT_EQ(list->SendMessage(LB_GETTOPINDEX), 128);
    EXPECT_EQ(bar->value(), 128);
    EXPECT_EQ(Cell(1, 0), "bad");
}

} // namespace
} // namespace vnbytstr::test
