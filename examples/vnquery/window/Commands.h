// Numbers of the window's commands and controls.
#pragma once

namespace vnquery {

enum Command : unsigned {
    kCmdOpen = 100,
    kCmdConnect,
    kCmdExport,
    kCmdExit,
    kCmdRun,
    kCmdStop,
    kCmdGotoSql,
    kCmdNextPane,
    kCmdWrite,
    kCmdDiscard,
    kCmdEditCell,
    kCmdZoom,
    kCmdSetNull,
    kCmdSetDefault,
    kCmdUndoCell,
    kCmdLoad,
    kCmdSave,
    kCmdCopy,
    kCmdFit,
    kCmdMoveLeft,
    kCmdMoveRight,
    kCmdSort,
    kCmdResetColumns,
    kCmdGlobals,
    kCmdLanguage,
    kCmdContents,
    kCmdAbout,
};

enum Control : unsigned {
    kIdDatabaseLabel = 200,
    kIdDatabase,
    kIdSqlLabel,
    kIdSql,
    kIdProgress,
    kIdResult,
    kIdHeadings,
};

/// Help pages, by their numbers in the index.
enum HelpTopic : unsigned {
    kHelpContents = 100000,
    kHelpConnect = 1,
    kHelpQuery = 2,
    kHelpEdit = 3,
    kHelpValues = 4,
    kHelpExport = 5,
    kHelpGlobals = 6,
    kHelpLanguage = 7,
};

} // namespace vnquery
