// As console/LineEditor.cpp, on Windows: the console edits lines and has their history.
#include "vnquery/console/LineEditor.h"

#include "vnquery/tasks/Interruption.h"

#include <cstdio>
#include <iostream>

namespace vnquery {

LineEditor::LineEditor()
    : m_editor(nullptr), m_history(nullptr), m_recent("Console History", 500) {}

LineEditor::~LineEditor() = default;

std::optional<std::string> LineEditor::Read(const char* prompt) {
    std::fputs(prompt, stderr);
    std::string line;
    const bool isRead = static_cast<bool>(std::getline(std::cin, line));
    CheckInterrupted();
    if (!isRead)
        return {};
    while (line.ends_with('\r'))
        line.pop_back();
    return line;
}

void LineEditor::Remember(const std::string& /*line*/) {}

} // namespace vnquery
