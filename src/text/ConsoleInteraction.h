// The Interaction of programs without windows.
#pragma once

#include "src/framework/DefaultInteraction.h"

#include <string>
#include <string_view>
#include <vector>

namespace vnbytstr {

/// Message boxes are lines on standard error: the caption, the text and, when there is more than
/// one button, the choice. When standard input is a terminal the user is asked (the first letters
/// of a button, or Enter for the default button); otherwise, and when the input ends, the default
/// button is the answer. Right-to-left text is written as it is: showing it is the terminal's
/// work.
///
/// ShellExecute starts programs directly. A document, folder or address goes to `xdg-open`. What it
/// cannot start it says on standard error.
class VNBYTSTR_API ConsoleInteraction : public Interaction {
public:
    int MessageBox(const char* text, const char* caption, UINT type, UINT helpContext) override;
    int ShellExecute(const char* verb, const char* file, const char* parameters, const char* folder,
                     int show) override;
};

namespace detail {

/// One button of a message box.
struct MessageBoxButton {
    int answer;        ///< ID value
    const char* name;  ///< in English
    std::string label; ///< in the language of the resources
};

/// The buttons of a box of that type, in their order; one "OK" for an unknown type.
std::vector<MessageBoxButton> MessageBoxButtons(UINT type);
/// Index of the default button among `count`; the first when the type names one past the last.
std::size_t DefaultButton(UINT type, std::size_t count);
/// The button whose label or name begins with `answer` (without regard to case and blanks around
/// it): its index; `byDefault` for an empty answer; -1 when no button or more than one fits.
int ChooseButton(const std::vector<MessageBoxButton>& buttons, std::size_t byDefault,
                 std::string_view answer);

} // namespace detail

} // namespace vnbytstr
