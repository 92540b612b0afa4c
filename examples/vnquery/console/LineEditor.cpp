#include "vnquery/console/LineEditor.h"

#include "vnquery/console/Process.h"
#include "vnquery/tasks/Interruption.h"

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cwchar>
#include <new>

#include <histedit.h>
#include <poll.h>
#include <unistd.h>

namespace vnquery {

namespace {

constexpr int kMaxLines = 500;
constexpr std::size_t kMaxLength = 10000; ///< of a line that is remembered
sigset_t g_signals; ///< that are blocked where no character is waited for, but before

} // namespace

LineEditor::LineEditor() : m_recent("Console History", kMaxLines) {
    std::setlocale(LC_CTYPE, "C.UTF-8"); // text is UTF-8 in every locale
    // Where standard output is a file, only results go there.
    m_editor = el_init("vnquery", stdin, IsOutputTerminal() ? stdout : stderr, stderr);
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
    el_set(m_editor, EL_GETCFN, &LineEditor::ReadCharacter);
    el_set(m_editor, EL_EDITOR, "emacs");
    el_set(m_editor, EL_HIST, history, m_history);
    el_set(m_editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    // So the system hands on a Ctrl-D that was typed while a query ran.
    el_set(m_editor, EL_BIND, "^@", "em-delete-or-list", nullptr);
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

/// Waits for a character or a signal: one that came just before the call counts, too.
int LineEditor::ReadCharacter(editline* editor, wchar_t* character) {
    LineEditor* self = nullptr;
    el_get(editor, EL_CLIENTDATA, &self);
    std::mbstate_t state = {};
    for (;;) {
        pollfd input = {STDIN_FILENO, POLLIN, 0};
        if (ppoll(&input, 1, nullptr, &g_signals) < 0 && errno == EINTR && !IsInterrupted())
            continue;
        char byte = 0;
        const ssize_t count = IsInterrupted() ? -1 : read(STDIN_FILENO, &byte, 1);
        if (count <= 0)
            return static_cast<int>(count);
        const std::size_t used = std::mbrtowc(character, &byte, 1, &state);
        if (used <= 1)
            return 1;
        if (used == static_cast<std::size_t>(-1)) // no UTF-8: it is left out
            state = {};
    }
}

std::optional<std::string> LineEditor::Read(const char* prompt) {
    m_prompt = prompt;
    int count = 0;
    el_resize(m_editor);
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&ending, number);
    pthread_sigmask(SIG_BLOCK, &ending, &g_signals);
    const char* const typed = el_gets(m_editor, &count);
    pthread_sigmask(SIG_SETMASK, &g_signals, nullptr);
    if (IsInterrupted()) {
        el_reset(m_editor);
        std::fputc('\n', stderr);
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
