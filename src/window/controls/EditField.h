// One interface over the Qt widgets for text input, of one line or several. They apply the limit
// and the letter rules to whatever the user enters, be it typed, pasted, dropped or composed by an
// input method.
#pragma once

#include "vnbytstr/window/WindowTypes.h"

#include <QString>

#include <cstddef>
#include <memory>

class QKeyEvent;
class QLineEdit;
class QWidget;

namespace vnbytstr::detail {

/// Gets the notifications of a field.
class EditFieldOwner {
public:
    virtual ~EditFieldOwner() = default;
    virtual void FieldChanged() = 0; ///< by the user or the program
    virtual void FieldFull() = 0;    ///< something did not fit
    /// A key or the menu asks for WM_CUT, WM_COPY, WM_PASTE or WM_UNDO.
    virtual void FieldCommand(UINT message) = 0;
};

/// What the user may put into a field.
struct EditRules {
    std::size_t limit = NoLimit; ///< bytes of the ANSI code page
    bool upper = false;
    bool lower = false;
    bool digits = false;
    std::size_t breakBytes = 1; ///< what a line break counts

    static constexpr std::size_t NoLimit = 0x7FFFFFFE;
    /// As much of `added` as the rules let replace `removed` in `text`; `full` becomes true when
    /// the limit cut some off.
    QString Fit(const QString& text, const QString& removed, QString added, bool& full) const;
    std::size_t Bytes(const QString& text) const;
};

/// Positions count UTF-16 units; a line break counts one.
class EditField {
public:
    virtual ~EditField() = default;
    virtual QWidget* Widget() const = 0;
    virtual QString Text() const = 0; ///< line breaks are '\n'
    /// Sets the text, clears the undo history, puts the cursor at the beginning.
    virtual void SetText(const QString& text) = 0;
    virtual int Length() const = 0;
    virtual int SelectionStart() const = 0; ///< the cursor's place when nothing is selected
    virtual int SelectionEnd() const = 0;
    virtual int Cursor() const = 0;
    /// The cursor comes to `cursor`.
    virtual void Select(int anchor, int cursor, bool scroll) = 0;
    virtual QString SelectedText() const = 0;
    virtual void Insert(const QString& text) = 0; ///< replaces the selection; may be undone
    virtual bool CanUndo() const = 0;
    virtual void Undo() = 0;
    virtual void EmptyUndo() = 0;
    virtual void Copy() const = 0;
    virtual void SetReadOnly(bool on) = 0;
    virtual bool IsReadOnly() const = 0;
    virtual void SetPassword(bool on) = 0; ///< shows bullets
    virtual void SetCue(const QString& text) = 0;
    virtual void ScrollToCursor() = 0;

    /// Inserts what the user typed or pasted, as far as the rules allow.
    void InsertFromUser(const QString& text);

    EditRules m_rules;

protected:
    explicit EditField(EditFieldOwner& owner) : m_owner(owner) {}
    EditFieldOwner& m_owner;

private:
    /// Callers that hold it weakly notice that the field was destroyed meanwhile.
    std::shared_ptr<char> m_life = std::make_shared<char>();
};

struct EditFieldStyle {
    bool multiline = false;
    bool wrap = false; ///< long lines, instead of scrolling
    bool center = false;
    bool right = false;
    bool mirrored = false; ///< left and right change places
    bool vScroll = false;
    bool hScroll = false;
};
/// Where lines of text stand, whichever way they read.
Qt::Alignment AlignmentOf(const EditFieldStyle& style);
/// The widget belongs to `parent`; the field must be destroyed before it.
std::unique_ptr<EditField> MakeEditField(const EditFieldStyle& style, EditFieldOwner& owner,
                                         QWidget* parent);
/// A line's widget and field for a combo box. The field is destroyed with its owner.
std::unique_ptr<EditField> MakeLineField(EditFieldOwner& owner, const EditFieldStyle& style,
                                         QLineEdit*& widget);

/// WM_CUT, WM_COPY, WM_PASTE or WM_UNDO for the platform's keys of these; 0 for other keys.
UINT ClipboardCommand(const QKeyEvent& event);
/// Whether a key's text is inserted by WM_CHAR, not by the key itself.
bool IsTypedText(const QString& text, Qt::KeyboardModifiers modifiers);

} // namespace vnbytstr::detail
