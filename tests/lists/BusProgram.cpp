// A list to be read over the accessibility bus, see bus_test.py. Ends after a minute.
#include "src/charset/CodePage.h"
#include "vnbytstr/controls.h"
#include "vnbytstr/window/Application.h"

namespace {

class Squares : public CListRowSource {
public:
    int GetRowCount() override { return 1'000'000; }
    void GetCell(int row, int column, std::string& text) override {
        const long long number = row;
        text = std::to_string(column == 0 ? number : number * number);
    }
};

} // namespace

int main(int argc, char** argv) {
    AfxInitWindows(&argc, argv);
    const vnbytstr::ScopedCodePage utf8(65001);
    CWnd window;
    window.CreateEx(0, nullptr, "Lists", WS_OVERLAPPEDWINDOW | WS_VISIBLE, CRect(0, 0, 500, 400),
                    nullptr, 0);
    const DWORD style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | LBS_NOTIFY |
                        LBS_OWNERDRAWFIXED | LBS_NOINTEGRALHEIGHT;
    CListBoxEx texts;
    texts.Create("LISTBOX", "Cities", style | LBS_HASSTRINGS, CRect(0, 60, 400, 180), &window, 100);
    texts.SetNumColumns(3);
    const char* const names[] = {"Name", "City", "Number"};
    for (int column = 0; column < 3; ++column) {
        texts.SetColumnName(column, names[column]);
        texts.SetColumnWidth(column, 100);
    }
    texts.CreateHeadingsControl(101);
    texts.EnableFilterRow();
    texts.AddStringItems("Adler", "Graz", "12");
    texts.AddStringItems("Bäcker", "Linz", "7");
    texts.SetColumnType(2, 1);
    texts.Sort(2);
    texts.SetFocus();
    texts.FindText("graz");
    Squares rows;
    CListBoxEx squares;
    squares.Create("LISTBOX", "Squares", style, CRect(0, 230, 400, 380), &window, 102);
    squares.SetNumColumns(2);
    squares.SetColumnName(0, "Root");
    squares.SetColumnName(1, "Square");
    squares.CreateHeadingsControl(103);
    squares.SetRowSource(&rows);
    window.SetActiveWindow();
    AfxPumpMessages(60'000);
    return 0;
}
