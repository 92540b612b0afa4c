// The window's commands: their texts, keys and icons, where they stand, and when they are enabled.
#pragma once

#include <span>

namespace vnquery {

class ConnectionPage;
class MainWindow;

/// What must hold for a command to be enabled.
enum CommandNeeds : unsigned {
    kNeedsPage = 1,          ///< a connection
    kNeedsIdle = 2,          ///< nothing runs
    kNeedsBusy = 4,          ///< something runs
    kNeedsResult = 8,        ///< a result with columns
    kNeedsCell = 16,         ///< a current cell
    kNeedsEditable = 32,     ///< that can be edited
    kNeedsTable = 64,        ///< a result whose rows can be inserted and deleted
    kNeedsChanges = 128,     ///< changes that are not written
    kNeedsUncommitted = 256, ///< changes that are not committed
};

/// A command; text 0 is a separator.
struct ActionEntry {
    unsigned text = 0;
    void (*run)(MainWindow&) = nullptr;
    unsigned needs = 0;                           ///< CommandNeeds
    const char* keys = "";                        ///< its shortcut, in QKeySequence's portable form
    const char* icon = "";                        ///< those with one are in the tool bar, too
    bool (*isChecked)(ConnectionPage&) = nullptr; ///< of one that is on or off
    bool isPageKey = false; ///< the keys are those of the connection's page only
};

struct MenuEntry {
    unsigned text;
    std::span<const ActionEntry> actions;
};

/// The menu bar, but for what is known only at run time: recent files, docks, languages.
std::span<const MenuEntry> GetMenus();

} // namespace vnquery
