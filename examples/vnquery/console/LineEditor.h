// Lines that a user types at a terminal, with editing and history.
#pragma once

#include "vnquery/files/RecentTexts.h"

#include <optional>
#include <string>

struct editline;
struct history;

namespace vnquery {

/// libedit (the console itself on Windows, whose history is not kept) on standard input and on the
/// terminal that standard output or error is. One at a time.
class LineEditor {
public:
    /// The lines of earlier sessions can be called up.
    LineEditor();
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    /// A line without its end; nothing at the end of the input (Ctrl-D). Throws Interrupted on a
    /// signal; Ctrl-C also drops the line.
    std::optional<std::string> Read(const char* prompt);
    /// Remembers a line, in this session and for later ones.
    void Remember(const std::string& line);

private:
    static const char* PromptOf(editline* editor);
    static int ReadCharacter(editline* editor, wchar_t* character);

    editline* m_editor;
    history* m_history;
    const char* m_prompt = "";
    RecentTexts m_recent;
};

} // namespace vnquery
