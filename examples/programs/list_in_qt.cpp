// The list as a widget of a Qt program, with rows that the program keeps.
#include <vnbytstr/controls.h>

#include <QApplication>
#include <QMainWindow>
#include <QTimer>

#include <cstdio>

namespace {

/// A million rows that take no memory.
class Squares : public CListRowSource {
public:
    int GetRowCount() override { return 1'000'000; }
    void GetCell(int row, int column, std::string& text) override {
        const long long number = row;
        text = std::to_string(column == 0 ? number : number * number);
    }
};

/// The window of the library that the list stands in, and that gets its messages.
class Panel : public CWnd {
public:
    explicit Panel(QWidget* parent) {
        CreateInWidget(parent, nullptr, "", WS_CHILD | WS_VISIBLE, CRect(0, 0, 400, 300), 1);
        m_list.Create("LISTBOX", "Squares",
                      WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | LBS_NOTIFY |
                          LBS_OWNERDRAWFIXED | LBS_NOINTEGRALHEIGHT,
                      CRect(0, 24, 400, 300), this, 100);
        m_list.SetNumColumns(2);
        m_list.SetColumnName(0, "Number");
        m_list.SetColumnName(1, "Square");
        m_list.CreateHeadingsControl(101);
        m_list.SetRowSource(&m_rows);
    }
    ~Panel() override { DestroyWindow(); }

    Squares m_rows;
    CListBoxEx m_list;

protected:
    void OnSize(UINT type, int width, int height) {
        CWnd::OnSize(type, width, height);
        m_list.MoveWindow(0, 0, width, height);
        m_list.PositionHeadings(); // above the list, whose top gives way
    }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Panel, CWnd)
ON_WM_SIZE()
END_MESSAGE_MAP()

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QMainWindow window;
    Panel panel(&window);
    window.setCentralWidget(panel.GetWidget());
    window.resize(420, 360);
    window.show();
    if (argc > 1) // for a test: shows it, tells what it shows, and ends
        QTimer::singleShot(200, [&] {
            CString text;
            panel.m_list.GetStringItem(999'999, 1, text);
            std::printf("%d rows, the last one %s\n", panel.m_list.GetCount(),
                        static_cast<const char*>(text));
            window.grab().save(argv[1]);
            window.close();
        });
    return QApplication::exec();
}
