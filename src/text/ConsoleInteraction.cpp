#include "src/text/ConsoleInteraction.h"

#include "messages/ResourceIds.h"
#include "src/os/MessageWindow.h"
#include "src/os/StartProgram.h"
#include "src/os/System.h"
#include "vnbytstr/ResourceLibrary.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>

namespace vnbytstr {

namespace detail {

namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool BeginsWith(std::string_view label, std::string_view answer) {
    return answer.size() <= label.size() &&
           std::equal(answer.begin(), answer.end(), label.begin(),
                      [](char left, char right) { return Lower(left) == Lower(right); });
}

std::string_view WithoutBlanks(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace

std::vector<MessageBoxButton> MessageBoxButtons(UINT type) {
    const auto make = [](int answer, const char* name, UINT id) {
        CString label;
        return MessageBoxButton{answer, name,
                                AfxLoadString(id, label) > 0 ? std::string(label) : name};
    };
    const auto ok = [&] { return make(IDOK, "OK", IDS_BUTTON_OK); };
    const auto cancel = [&] { return make(IDCANCEL, "Cancel", IDS_BUTTON_CANCEL); };
    const auto abort = [&] { return make(IDABORT, "Abort", IDS_BUTTON_ABORT); };
    const auto retry = [&] { return make(IDRETRY, "Retry", IDS_BUTTON_RETRY); };
    const auto ignore = [&] { return make(IDIGNORE, "Ignore", IDS_BUTTON_IGNORE); };
    const auto yes = [&] { return make(IDYES, "Yes", IDS_BUTTON_YES); };
    const auto no = [&] { return make(IDNO, "No", IDS_BUTTON_NO); };
    switch (type & MB_TYPEMASK) {
    case MB_OKCANCEL:
        return {ok(), cancel()};
    case MB_ABORTRETRYIGNORE:
        return {abort(), retry(), ignore()};
    case MB_YESNOCANCEL:
        return {yes(), no(), cancel()};
    case MB_YESNO:
        return {yes(), no()};
    case MB_RETRYCANCEL:
        return {retry(), cancel()};
    default:
        return {ok()};
    }
}

std::size_t DefaultButton(UINT type, std::size_t count) {
    const std::size_t index = (type & MB_DEFMASK) / MB_DEFBUTTON2;
    return index < count ? index : 0;
}

int ChooseButton(const std::vector<MessageBoxButton>& buttons, std::size_t byDefault,
                 std::string_view answer) {
    answer = WithoutBlanks(answer);
    if (answer.empty())
        return static_cast<int>(byDefault);
    int chosen = -1;
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        if (!BeginsWith(buttons[i].label, answer) && !BeginsWith(buttons[i].name, answer))
            continue;
        if (chosen >= 0)
            return -1;
        chosen = static_cast<int>(i);
    }
    return chosen;
}

} // namespace detail

namespace {

/// The buttons as a question, the default one in brackets: "Yes, [No], Cancel? ".
std::string Question(const std::vector<detail::MessageBoxButton>& buttons, std::size_t byDefault) {
    std::string text;
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        text += i > 0 ? ", " : "";
        text += i == byDefault ? "[" + buttons[i].label + "]" : buttons[i].label;
    }
    return text + "? ";
}

} // namespace

int ConsoleInteraction::MessageBox(const char* text, const char* caption, UINT type,
                                   UINT /*helpContext*/) {
    if (const int answer = detail::ShowMessageWindow(text, caption, type))
        return answer;
    std::string message = caption != nullptr && *caption != '\0' ? std::string(caption) + ": " : "";
    message += text != nullptr ? text : "";
    System::Current().WriteDiagnostic(message.c_str());

    const std::vector<detail::MessageBoxButton> buttons = detail::MessageBoxButtons(type);
    const std::size_t byDefault = detail::DefaultButton(type, buttons.size());
    const std::string question = Question(buttons, byDefault);
    std::string line;
    while (buttons.size() > 1 && System::Current().AskAtTerminal(question.c_str(), line)) {
        const int chosen = detail::ChooseButton(buttons, byDefault, line);
        if (chosen >= 0)
            return buttons[static_cast<std::size_t>(chosen)].answer;
    }
    return buttons[byDefault].answer;
}

int ConsoleInteraction::ShellExecute(const char* verb, const char* file, const char* parameters,
                                     const char* folder, int /*show*/) {
    std::string program;
    const int result = detail::StartProgram(verb, file, parameters, folder, program);
    if (result <= 32) {
        const std::string subject = parameters != nullptr && *parameters != '\0' ? parameters
                                    : file != nullptr                            ? file
                                                                                 : "";
        const char* reason = result == kShellFileNotFound   ? "it was not found"
                             : result == kShellPathNotFound ? "its folder was not found"
                             : result == kShellAccessDenied ? "access was denied"
                             : result == kShellNoAssociation
                                 ? "it is needed to open files and is not installed"
                                 : "the system could not start it";
        System::Current().WriteDiagnostic(("Cannot open " + subject + " with " + program + ": " +
                                           reason + ". Open it with another program.")
                                              .c_str());
    }
    return result;
}

Interaction& DefaultInteraction() noexcept {
    // No memory is allocated, since it may have run out.
    alignas(ConsoleInteraction) static std::byte place[sizeof(ConsoleInteraction)];
    static Interaction* const console = new (place) ConsoleInteraction;
    return *console;
}

} // namespace vnbytstr
