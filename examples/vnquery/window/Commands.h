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
    kCmdFocusSql,
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
    kIdResultHeadings,
};

/// Help pages, by their numbers in the index.
enum HelpTopic : unsigned {
    kHelpContents = 100000,
    kHelpConnect = 1,
    kHelpExport = 4,
    kHelpSettings = 7,
    kHelpValues = 9,
};

} // namespace vnquery
