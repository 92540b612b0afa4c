#include "vnquery/window/Actions.h"

#include "vnquery/messages/MessageIds.h"
#include "vnquery/window/ConnectionPage.h"
#include "vnquery/window/Help.h"
#include "vnquery/window/MainWindow.h"
#include "vnquery/window/ResultView.h"

namespace vnquery {

namespace {

using Window = MainWindow;
using Pieces = SqlEditor::Which;

ConnectionPage& Page(Window& window) { return *window.GetPage(); }
ResultView& Result(Window& window) { return Page(window).GetResult(); }
SqlEditor& Editor(Window& window) { return Page(window).GetEditor(); }

constexpr unsigned kHelpContents = 100000; ///< its number in the help's index

constexpr unsigned kPageIdle = kNeedsPage | kNeedsIdle;
constexpr unsigned kResult = kPageIdle | kNeedsResult;
constexpr unsigned kCell = kResult | kNeedsCell;
constexpr unsigned kEditable = kCell | kNeedsEditable;
constexpr unsigned kTable = kResult | kNeedsTable;

constexpr ActionEntry kLine;

constexpr ActionEntry kFile[] = {
    {IDS_VQ_M_OPEN, [](Window& w) { w.Open(); }, 0, "Ctrl+O", "document-open"},
    {IDS_VQ_M_CONNECT, [](Window& w) { w.Connect(); }, 0, "Ctrl+Shift+O", "network-server"},
    {IDS_VQ_N_M_NEW_TAB, [](Window& w) { w.NewTab(); }, kNeedsPage, "Ctrl+N"},
    {IDS_VQ_N_M_CLOSE_TAB, [](Window& w) { w.CloseTab(-1); }, kNeedsPage, "Ctrl+W"},
    kLine,
    {IDS_VQ_M_EXPORT, [](Window& w) { Result(w).Export(); }, kResult, "Ctrl+E", "document-save-as"},
    kLine,
    {IDS_VQ_M_EXIT, [](Window& w) { w.close(); }, 0, "Ctrl+Q"}};

constexpr ActionEntry kQuery[] = {
    {IDS_VQ_M_RUN, [](Window& w) { w.RunPieces(Pieces::All); }, kPageIdle, "F5",
     "media-playback-start"},
    {IDS_VQ_N_M_RUN_CURSOR, [](Window& w) { w.RunPieces(Pieces::AtCursor); }, kPageIdle,
     "Ctrl+Return", "", nullptr, true},
    {IDS_VQ_N_M_RUN_SELECTION, [](Window& w) { w.RunPieces(Pieces::Selection); }, kPageIdle,
     "Shift+F5"},
    {IDS_VQ_M_STOP, [](Window& w) { Page(w).Stop(); }, kNeedsPage | kNeedsBusy, "Esc",
     "process-stop"},
    kLine,
    {IDS_VQ_N_M_COMMENT, [](Window& w) { Editor(w).ToggleComment(); }, kNeedsPage, "Ctrl+/"},
    {IDS_VQ_N_M_FORMAT, [](Window& w) { Editor(w).Format(); }, kNeedsPage, "Ctrl+Shift+I"},
    {IDS_VQ_M_GOTO_SQL, [](Window& w) { Editor(w).setFocus(); }, kNeedsPage, "Ctrl+T"},
    kLine,
    {IDS_VQ_S_ALLOW, [](Window& w) { Page(w).AllowChanges(!Page(w).AreChangesAllowed()); },
     kPageIdle, "", "", [](ConnectionPage& page) { return page.AreChangesAllowed(); }},
    {IDS_VQ_N_COMMIT, [](Window& w) { Page(w).Commit(); }, kPageIdle | kNeedsUncommitted, "",
     "dialog-ok-apply"},
    {IDS_VQ_N_ROLL_BACK, [](Window& w) { Page(w).RollBack(); }, kPageIdle | kNeedsUncommitted}};

constexpr ActionEntry kRows[] = {
    {IDS_VQ_M_EDIT_CELL, [](Window& w) { Result(w).EditCell(); }, kCell, "F2"},
    {IDS_VQ_M_ZOOM, [](Window& w) { w.ShowValue(); }, kCell, "Shift+F2"},
    {IDS_VQ_M_SET_NULL, [](Window& w) { Result(w).SetNull(); }, kEditable, "Ctrl+0"},
    {IDS_VQ_M_SET_DEFAULT, [](Window& w) { Result(w).SetDefault(); }, kEditable, "Ctrl+D"},
    {IDS_VQ_M_LOAD, [](Window& w) { Result(w).LoadCell(); }, kEditable, "Ctrl+L"},
    {IDS_VQ_M_SAVE, [](Window& w) { Result(w).SaveCell(); }, kCell, "Ctrl+Shift+S"},
    kLine,
    {IDS_VQ_N_M_INSERT_ROW, [](Window& w) { Result(w).InsertRow(); }, kTable, "Ctrl+Ins",
     "list-add"},
    {IDS_VQ_N_M_DUPLICATE_ROW, [](Window& w) { Result(w).DuplicateRow(); }, kTable | kNeedsCell},
    {IDS_VQ_N_M_DELETE_ROWS, [](Window& w) { Result(w).DeleteRows(); }, kTable | kNeedsCell,
     "Ctrl+Del", "list-remove"},
    kLine,
    {IDS_VQ_N_M_UNDO, [](Window& w) { Result(w).Undo(); }, kResult | kNeedsChanges, "Ctrl+Z",
     "edit-undo"},
    {IDS_VQ_M_WRITE, [](Window& w) { w.WriteChanges(); }, kResult | kNeedsChanges, "Ctrl+S",
     "document-save"},
    {IDS_VQ_M_DISCARD, [](Window& w) { Result(w).DiscardChanges(); }, kResult | kNeedsChanges}};

constexpr ActionEntry kCopy[] = {
    {IDS_VQ_M_COPY, [](Window& w) { Result(w).Copy(CopyForm::Rows); }, kCell, "Ctrl+C"},
    {IDS_VQ_N_M_COPY_CELL, [](Window& w) { Result(w).Copy(CopyForm::Cell); }, kCell,
     "Ctrl+Shift+C"},
    {IDS_VQ_N_M_COPY_HEADINGS, [](Window& w) { Result(w).Copy(CopyForm::RowsWithHeadings); },
     kCell},
    {IDS_VQ_N_M_COPY_CSV, [](Window& w) { Result(w).Copy(CopyForm::Csv); }, kCell},
    {IDS_VQ_N_M_COPY_INSERT, [](Window& w) { Result(w).Copy(CopyForm::Insert); }, kCell},
    {IDS_VQ_N_M_COPY_JSON, [](Window& w) { Result(w).Copy(CopyForm::Json); }, kCell},
    {IDS_VQ_N_M_COPY_MARKDOWN, [](Window& w) { Result(w).Copy(CopyForm::Markdown); }, kCell}};

constexpr ActionEntry kView[] = {
    {IDS_VQ_N_M_FIND, [](Window& w) { Result(w).Find(); }, kResult, "Ctrl+F", "edit-find"},
    {IDS_VQ_N_M_FIND_NEXT, [](Window& w) { Result(w).FindNext(true); }, kResult, "F3"},
    {IDS_VQ_N_M_FIND_PREVIOUS, [](Window& w) { Result(w).FindNext(false); }, kResult, "Shift+F3"},
    {IDS_VQ_N_M_FILTER, [](Window& w) { Result(w).ShowFilterRow(!Result(w).HasFilterRow()); },
     kResult, "Ctrl+Shift+L", "view-filter",
     [](ConnectionPage& page) { return page.GetResult().HasFilterRow(); }},
    kLine,
    {IDS_VQ_M_FIT, [](Window& w) { Result(w).FitColumns(); }, kResult},
    {IDS_VQ_M_LEFT, [](Window& w) { Result(w).MoveColumn(-1); }, kResult, "Ctrl+Shift+Left"},
    {IDS_VQ_M_RIGHT, [](Window& w) { Result(w).MoveColumn(1); }, kResult, "Ctrl+Shift+Right"},
    {IDS_VQ_M_SORT, [](Window& w) { Result(w).SortColumn(); }, kResult, "Ctrl+Shift+F"},
    {IDS_VQ_M_RESET, [](Window& w) { Result(w).ResetColumns(); }, kResult},
    kLine,
    {IDS_VQ_N_M_NEXT_PANE, [](Window& w) { w.NextPane(); }, kNeedsPage, "F6"}};

constexpr ActionEntry kOptions[] = {
    {IDS_VQ_M_GLOBALS, [](Window& w) { w.EditVariables(); }, 0, "Ctrl+G"}};

constexpr ActionEntry kHelp[] = {
    {IDS_VQ_M_CONTENTS, [](Window& w) { ShowHelp(&w, kHelpContents); }, 0, "F1"},
    {IDS_VQ_M_ABOUT, [](Window& w) { w.ShowAbout(); }}};

constexpr MenuEntry kMenus[] = {{IDS_VQ_M_FILE, kFile},     {IDS_VQ_M_QUERY, kQuery},
                                {IDS_VQ_N_M_RESULT, kRows}, {IDS_VQ_N_M_COPY_AS, kCopy},
                                {IDS_VQ_M_VIEW, kView},     {IDS_VQ_M_OPTIONS, kOptions},
                                {IDS_VQ_M_HELP, kHelp}};

} // namespace

std::span<const MenuEntry> GetMenus() { return kMenus; }

} // namespace vnquery
