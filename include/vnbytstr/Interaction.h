// How the library reaches the user: message boxes, and opening a page or file in another program.
// The console version is current until another one is installed; the controls library installs the
// one with windows, a test its double.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/MessageBoxTypes.h"
#include "vnbytstr/framework/Types.h"

namespace vnbytstr {

class VNBYTSTR_API Interaction {
public:
    virtual ~Interaction() = default;

    /// Shows `text` under `caption` (both in the ANSI code page, null is empty) until it is
    /// answered. `type` is made of MB_ values; `helpContext` is the help identifier of the message,
    /// 0 when it has none. Returns the button's ID value, 0 when the box could not be shown.
    virtual int MessageBox(const char* text, const char* caption, UINT type, UINT helpContext) = 0;

    /// Opens `file` (a document, a folder, a program or an address with its scheme) and does not
    /// wait. `verb` is "open" or null. `parameters` (null: none) are a program's arguments,
    /// separated by blanks; one that holds blanks stands in double quotes, and a double quote in
    /// one is \". `folder` (null: this process's) is the working folder. `show` is an SW_ value. No
    /// shell reads any of it. Returns more than 32 when it was started, else a ShellError.
    virtual int ShellExecute(const char* verb, const char* file, const char* parameters,
                             const char* folder, int show) = 0;

    /// The one in use. Safe from every thread.
    static Interaction& Current() noexcept;
    /// Makes `interaction` current (null: the console again) and returns the one before, null for
    /// the console. The caller keeps the object, which must outlive its use.
    static Interaction* Install(Interaction* interaction) noexcept;
};

/// Makes an interaction current for the life of this object.
class VNBYTSTR_API ScopedInteraction {
public:
    /// The interaction must outlive this object.
    explicit ScopedInteraction(Interaction& interaction) noexcept
        : m_previous(Interaction::Install(&interaction)) {}
    ~ScopedInteraction() { Interaction::Install(m_previous); }
    ScopedInteraction(const ScopedInteraction&) = delete;
    ScopedInteraction& operator=(const ScopedInteraction&) = delete;

private:
    Interaction* m_previous;
};

} // namespace vnbytstr
