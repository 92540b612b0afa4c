#include "tests/window/ControlHost.h"

#include "vnbytstr/window/DropTarget.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QUrl>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;

/// Takes files in its window's upper half.
class UpperHalf : public COleDropTarget {
public:
    DROPEFFECT OnDragEnter(CWnd* window, COleDataObject* data, DWORD keys, CPoint point) override {
        m_calls += 'e';
        return OnDragOver(window, data, keys, point);
    }
    DROPEFFECT OnDragOver(CWnd*, COleDataObject* data, DWORD, CPoint point) override {
        m_calls += 'o';
        if (m_onOver)
            m_onOver();
        return data->IsDataAvailable(CF_HDROP) && point.y < 50 ? DROPEFFECT_MOVE : DROPEFFECT_NONE;
    }
    void OnDragLeave(CWnd*) override { m_calls += 'l'; }
    BOOL OnDrop(CWnd* window, COleDataObject* data, DROPEFFECT effect, CPoint point) override {
        m_calls += 'd';
        EXPECT_EQ(effect, DROPEFFECT_MOVE);
        m_point = point;
        auto* const drop = static_cast<HDROP>(data->GetGlobalData(CF_HDROP));
        const UINT count = DragQueryFile(drop, 0xFFFFFFFF, nullptr, 0);
        for (UINT i = 0; i < count; ++i) {
            char name[260] = {};
            DragQueryFile(drop, i, name, sizeof name);
            m_files.emplace_back(name);
        }
        if (m_endsWindow)
            window->DestroyWindow();
        return TRUE;
    }
    std::string m_calls;
    std::vector<std::string> m_files;
    CPoint m_point;
    bool m_endsWindow = false;
    std::function<void()> m_onOver;
};

class DropTargetTest : public testing::Test {
protected:
    DropTargetTest() {
        m_files.setUrls({QUrl::fromLocalFile("/tmp/a b.txt"), QUrl("https://example.org/x"),
                         QUrl::fromLocalFile("/tmp/c.bin")});
        m_child.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(20, 20, 120, 120), &m_host,
                       1);
    }
    template <class Event>
    Qt::DropAction Send(QPoint at, const QMimeData& data) {
        Event event(at, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_child.GetWidget(), &event);
        return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
    }
    /// Qt drops only where a drag has entered.
    void Drop(QPoint at) {
        QDropEvent event(at, Qt::CopyAction, &m_files, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_child.GetWidget(), &event);
    }
    ControlHost m_host;
    CWnd m_child;
    QMimeData m_files;
    UpperHalf m_target;
};

TEST_F(DropTargetTest, IsToldOfTheDragFromEnterToDrop) {
    ASSERT_TRUE(m_target.Register(&m_child));
    COleDropTarget second;
    EXPECT_FALSE(second.Register(&m_child));
    EXPECT_TRUE(m_child.GetWidget()->acceptDrops());
    Send<QDragEnterEvent>({5, 80}, m_files);
    EXPECT_EQ(Send<QDragMoveEvent>({5, 70}, m_files), Qt::IgnoreAction);
    // Nobody is told of a move: the other program would delete its file.
    EXPECT_EQ(Send<QDragMoveEvent>({5, 10}, m_files), Qt::CopyAction);
    Drop({7, 11});
    EXPECT_EQ(m_target.m_calls, "eooood");
    EXPECT_THAT(m_target.m_files, ElementsAre("/tmp/a b.txt", "/tmp/c.bin"));
    EXPECT_EQ(m_target.m_point, CPoint(7, 11));
    m_target.m_calls.clear();
    Send<QDragEnterEvent>({5, 10}, m_files);
    Drop({5, 90}); // refused there
    EXPECT_EQ(m_target.m_calls, "eool");
    QMimeData text;
    text.setText("no file");
    m_target.m_calls.clear();
    Send<QDragEnterEvent>({5, 10}, text);
    EXPECT_EQ(Send<QDragMoveEvent>({5, 10}, text), Qt::IgnoreAction);
    QDragLeaveEvent leave;
    QApplication::sendEvent(m_child.GetWidget(), &leave);
    EXPECT_EQ(m_target.m_calls, "eool");
    m_target.Revoke();
    EXPECT_FALSE(m_child.GetWidget()->acceptDrops());
    EXPECT_TRUE(second.Register(&m_child));
}

TEST_F(DropTargetTest, OutlivesItsWindowAndDiesBeforeIt) {
    ASSERT_TRUE(m_target.Register(&m_child));
    m_target.m_endsWindow = true;
    Send<QDragEnterEvent>({5, 10}, m_files);
    Drop({5, 5});
    EXPECT_EQ(m_child.m_hWnd, nullptr);
    EXPECT_EQ(m_target.m_hWnd, nullptr);
    {
        UpperHalf passing;
        ASSERT_TRUE(passing.Register(&m_host));
    }
    EXPECT_TRUE(m_target.Register(&m_host));
}

TEST_F(DropTargetTest, EndsWhileItIsAsked) {
    const auto revoke = [this] { m_target.Revoke(); };
    const auto destroy = [this] { m_child.DestroyWindow(); };
    for (const bool entered : {false, true})
        for (const std::function<void()>& end : {std::function<void()>(revoke), {destroy}}) {
            if (m_child.m_hWnd == nullptr)
                m_child.Create(nullptr, nullptr, WS_CHILD | WS_VISIBLE, CRect(20, 20, 120, 120),
                               &m_host, 1);
            ASSERT_TRUE(m_target.Register(&m_child));
            m_target.m_onOver = nullptr;
            if (entered)
                Send<QDragEnterEvent>({5, 10}, m_files);
            m_target.m_onOver = end;
            if (entered)
                Send<QDragMoveEvent>({5, 10}, m_files);
            else
                Send<QDragEnterEvent>({5, 10}, m_files);
            EXPECT_EQ(m_target.m_hWnd, nullptr);
        }
}

TEST(DataObject, HoldsTextAndFiles) {
    QMimeData mime;
    mime.setText("words");
    const COleDataObject text(&mime);
    EXPECT_STREQ(static_cast<const char*>(text.GetGlobalData(CF_TEXT)), "words");
    EXPECT_FALSE(text.IsDataAvailable(CF_HDROP));
    EXPECT_EQ(text.GetDrop(), nullptr);
    CStringArray names;
    names.Add("/x/y");
    const COleDataObject files(names);
    char name[4] = {};
    EXPECT_EQ(DragQueryFile(files.GetDrop(), 0, name, sizeof name), 3U);
    EXPECT_STREQ(name, "/x/");
}

} // namespace
