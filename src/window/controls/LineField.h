// A field of one line.
#pragma once

#include "src/window/controls/EditField.h"

#include <QLineEdit>
#include <QPointer>

namespace vnbytstr::detail {

class LineFieldWidget;

class LineField final : public EditField {
public:
    LineField(EditFieldOwner& owner, QWidget* parent);
    ~LineField() override;

    QLineEdit* Line() const;
    EditFieldOwner& Owner() const { return m_owner; }

    QWidget* Widget() const override { return Line(); }
    QString Text() const override { return Line()->text(); }
    void SetText(const QString& text) override;
    int Length() const override { return static_cast<int>(Line()->text().size()); }
    int SelectionStart() const override;
    int SelectionEnd() const override;
    int Cursor() const override { return Line()->cursorPosition(); }
    void Select(int anchor, int cursor, bool scroll) override;
    QString SelectedText() const override { return Line()->selectedText(); }
    void Insert(const QString& text) override { Line()->insert(text); }
    bool CanUndo() const override { return Line()->isUndoAvailable(); }
    void Undo() override { Line()->undo(); }
    void EmptyUndo() override;
    void Copy() const override { Line()->copy(); }
    void SetReadOnly(bool on) override { Line()->setReadOnly(on); }
    bool IsReadOnly() const override { return Line()->isReadOnly(); }
    void SetPassword(bool on) override;
    void SetCue(const QString& text) override { Line()->setPlaceholderText(text); }
    void ScrollToCursor() override;

private:
    QPointer<LineFieldWidget> m_line;
};

} // namespace vnbytstr::detail
