// A field of several lines.
#pragma once

#include "src/window/controls/EditField.h"

#include <QPlainTextEdit>
#include <QPointer>

namespace vnbytstr::detail {

class TextFieldWidget;

class TextField final : public EditField {
public:
    TextField(EditFieldOwner& owner, const EditFieldStyle& style, QWidget* parent);
    ~TextField() override;

    QPlainTextEdit* Edit() const;
    EditFieldOwner& Owner() const { return m_owner; }

    QWidget* Widget() const override { return Edit(); }
    QString Text() const override;
    void SetText(const QString& text) override { Edit()->setPlainText(text); }
    int Length() const override { return Edit()->document()->characterCount() - 1; }
    int SelectionStart() const override { return Edit()->textCursor().selectionStart(); }
    int SelectionEnd() const override { return Edit()->textCursor().selectionEnd(); }
    int Cursor() const override { return Edit()->textCursor().position(); }
    void Select(int anchor, int cursor, bool scroll) override;
    QString SelectedText() const override;
    void Insert(const QString& text) override { Edit()->insertPlainText(text); }
    bool CanUndo() const override { return Edit()->document()->isUndoAvailable(); }
    void Undo() override { Edit()->undo(); }
    void EmptyUndo() override { Edit()->document()->clearUndoRedoStacks(); }
    void Copy() const override { Edit()->copy(); }
    void SetReadOnly(bool on) override;
    bool IsReadOnly() const override { return Edit()->isReadOnly(); }
    void SetPassword(bool) override {}
    void SetCue(const QString& text) override { Edit()->setPlaceholderText(text); }
    void ScrollToCursor() override { Edit()->ensureCursorVisible(); }

private:
    QPointer<TextFieldWidget> m_edit;
};

} // namespace vnbytstr::detail
