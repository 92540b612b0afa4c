// The list in a program of the framework's style: a window, a message map, cells that are edited.
#include <vnbytstr/controls.h>

#include <cstdio>

namespace {

class Frame : public CWnd {
public:
    CListBoxEx m_list;

protected:
    int OnCreate(LPCREATESTRUCT create) {
        if (CWnd::OnCreate(create) == -1)
            return -1;
        m_list.Create("LISTBOX", "Orders",
                      WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | LBS_NOTIFY |
                          LBS_OWNERDRAWVARIABLE | LBS_HASSTRINGS | LBS_NOINTEGRALHEIGHT,
                      CRect(0, 24, 400, 300), this, 100);
        m_list.SetNumColumns(2);
        m_list.SetColumnName(0, "Name");
        m_list.SetColumnName(1, "Orders");
        m_list.SetColumnWidth(0, 200);
        m_list.SetColumnType(1, 1); // numbers
        m_list.CreateHeadingsControl(101);
        m_list.EnableSort();
        m_list.EnableEditing();
        m_list.SetEditorType(0, kEditorText);
        m_list.SetEditorType(1, kEditorNumber);
        m_list.AddStringItems("Berger", "7");
        m_list.AddStringItems("Adler", "12");
        m_list.Sort(1);
        return 0;
    }
    /// Asked before a value is stored: an empty name is refused.
    LRESULT OnStoreValue(WPARAM column, LPARAM value) {
        return column == 0 && *reinterpret_cast<const char*>(value) == '\0';
    }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Frame, CWnd)
ON_WM_CREATE()
ON_MESSAGE(VNM_STOREVALUE, OnStoreValue)
END_MESSAGE_MAP()

class Program : public CWinApp {
public:
    BOOL InitInstance() override {
        m_pMainWnd = &m_frame;
        if (!m_frame.CreateEx(0, nullptr, "Orders", WS_OVERLAPPEDWINDOW, CRect(100, 100, 520, 440),
                              nullptr, 0))
            return FALSE;
        m_frame.ShowWindow(SW_SHOW);
        return TRUE;
    }
    Frame m_frame;
};

} // namespace

int main(int argc, char**) {
    Program program;
    if (argc == 1)
        return program.Main();
    program.InitInstance(); // for a test: makes the window, tells what it shows, and ends
    CString name;
    program.m_frame.m_list.GetStringItem(0, 0, name);
    std::printf("sorted by orders, the first is %s\n", static_cast<const char*>(name));
    program.m_frame.DestroyWindow();
    return 0;
}
