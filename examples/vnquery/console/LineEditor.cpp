#include "vnquery/console/LineEditor.h"

#include "vnquery/tasks/Interruption.h"

#include <clocale>
#include <cstdio>
#include <new>

#include <histedit.h>

namespace vnquery {

namespace {

constexpr int kMaxLines = 500;
constexpr std::size_t kMaxLength = 10000; ///< of a line that is remembered

} // namespace

LineEditor::LineEditor() : m_recent("Console History", kMaxLines) {
    std::setlocale(LC_CTYPE, "C.UTF-8"); // text is UTF-8 in every locale
    m_editor = el_init("vnquery", stdin, stdout, stderr);
    m_history = history_init();
    if (!m_editor || !m_history)
        throw std::bad_alloc();
    HistEvent event = {};
    history(m_history, &event, H_SETSIZE, kMaxLines);
    history(m_history, &event, H_SETUNIQUE, 1);
    for (const std::string& line : m_recent.GetAll())
        history(m_history, &event, H_ENTER, line.c_str());
    el_set(m_editor, EL_CLIENTDATA, this);
    el_set(m_editor, EL_PROMPT, &LineEditor::PromptOf);
    el_set(m_editor, EL_EDITOR, "emacs");
    el_set(m_editor, EL_HIST, history, m_history);
    el_set(m_editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    el_source(m_editor, nullptr); // the user's ~/.editrc
}

LineEditor::~LineEditor() {
    history_end(m_history);
    el_end(m_editor);
}

const char* LineEditor::PromptOf(editline* editor) {
    LineEditor* self = nullptr;
    el_get(editor, EL_CLIENTDATA, &self);
    return self->m_prompt;
}

std::optional<std::string> LineEditor::Read(const char* prompt) {
    m_prompt = prompt;
    int count = 0;
    el_resize(m_editor);
    const char* const typed = el_gets(m_editor, &count);
    if (IsInterrupted()) {
        el_reset(m_editor);
        std::fputc('\n', stdout);
        std::fflush(stdout);
        throw Interrupted();
    }
    if (!typed || count <= 0)
        return {};
    std::string line(typed, static_cast<std::size_t>(count));
    while (line.ends_with('\n') || line.ends_with('\r'))
        line.pop_back();
    return line;
}

void LineEditor::Remember(const std::string& line) {
    if (line.find_first_not_of(" \t") == std::string::npos || line.size() > kMaxLength)
        return;
    HistEvent event = {};
    history(m_history, &event, H_ENTER, line.c_str());
    m_recent.Add(line, line);
}

} // namespace vnquery
