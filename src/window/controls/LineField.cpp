#include "src/window/controls/LineField.h"
#include "src/window/controls/FieldWidget.h"

#include "vnbytstr/window/Messages.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>

namespace vnbytstr::detail {

/// A QLineEdit all of whose input goes through the field.
class LineFieldWidget final : public FieldWidget<QLineEdit, LineField> {
public:
    LineFieldWidget(LineField& field, QWidget* parent) : FieldWidget(field, parent) {
        setMaxLength(INT_MAX);
        setDragEnabled(true);
        QObject::connect(this, &QLineEdit::textChanged, this, [this] {
            if (m_field != nullptr)
                m_field->Owner().FieldChanged();
        });
    }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (m_field == nullptr || IsTypedText(event->text(), event->modifiers()))
            return;
        if (const UINT command = ClipboardCommand(*event))
            m_field->Owner().FieldCommand(command);
        else
            QLineEdit::keyPressEvent(event);
    }
    QString Replaced(const QInputMethodEvent& event) const override {
        return event.replacementLength() > 0
                   ? text().mid(cursorPosition() + event.replacementStart(),
                                event.replacementLength())
                   : selectedText();
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        const QClipboard* const clipboard = QApplication::clipboard();
        if (event->button() == Qt::MiddleButton && clipboard->supportsSelection() &&
            m_field != nullptr) {
            setCursorPosition(cursorPositionAt(event->position().toPoint()));
            m_field->InsertFromUser(clipboard->text(QClipboard::Selection));
            return;
        }
        QLineEdit::mouseReleaseEvent(event);
    }
    void dropEvent(QDropEvent* event) override {
        if (m_field == nullptr || !event->mimeData()->hasText())
            return;
        const QString text = event->mimeData()->text();
        const bool within = event->source() == this && event->dropAction() == Qt::MoveAction;
        int at = cursorPositionAt(event->position().toPoint());
        if (within) {
            const int start = selectionStart();
            const int end = selectionEnd();
            if (start >= 0 && at >= start && at <= end)
                return;
            if (start >= 0 && at > end)
                at -= end - start;
            del();
        }
        event->acceptProposedAction();
        setCursorPosition(at);
        m_field->InsertFromUser(text);
    }
    void contextMenuEvent(QContextMenuEvent* event) override {
        const std::unique_ptr<QMenu> menu(createStandardContextMenu());
        for (QAction* const action : menu->actions()) {
            const UINT command = CommandOf(action->objectName());
            if (command == 0)
                continue;
            action->disconnect(SIGNAL(triggered(bool)));
            connect(action, &QAction::triggered, this, [this, command] {
                if (m_field != nullptr)
                    m_field->Owner().FieldCommand(command);
            });
        }
        const QPointer<QWidget> alive(this);
        menu->exec(event->globalPos());
    }

private:
    static UINT CommandOf(const QString& action) {
        return action == u"edit-copy"    ? WM_COPY
               : action == u"edit-cut"   ? WM_CUT
               : action == u"edit-paste" ? WM_PASTE
               : action == u"edit-undo"  ? WM_UNDO
                                         : 0;
    }
};

LineField::LineField(EditFieldOwner& owner, QWidget* parent)
    : EditField(owner), m_line(new LineFieldWidget(*this, parent)) {}

LineField::~LineField() {
    if (m_line != nullptr)
        m_line->Forget();
}

QLineEdit* LineField::Line() const { return m_line; }

void LineField::SetText(const QString& text) {
    Line()->setText(text);
    Line()->setCursorPosition(0);
}

int LineField::SelectionStart() const {
    return Line()->hasSelectedText() ? Line()->selectionStart() : Cursor();
}

int LineField::SelectionEnd() const {
    return Line()->hasSelectedText() ? Line()->selectionEnd() : Cursor();
}

void LineField::Select(int anchor, int cursor, bool) {
    Line()->deselect();
    if (anchor == cursor)
        Line()->setCursorPosition(cursor);
    else
        Line()->setSelection(anchor, cursor - anchor);
}

void LineField::EmptyUndo() {
    // Qt forgets only when the text is set.
    const int start = SelectionStart();
    const int end = SelectionEnd();
    const QSignalBlocker quiet(Line());
    Line()->setText(Line()->text());
    Select(start, end, false);
}

void LineField::SetPassword(bool on) {
    Line()->setEchoMode(on ? QLineEdit::Password : QLineEdit::Normal);
}

void LineField::ScrollToCursor() {
    const int start = SelectionStart();
    const int end = SelectionEnd();
    const int cursor = Cursor();
    // Moving the cursor is what scrolls.
    Line()->cursorForward(false, 0);
    Select(cursor == start ? end : start, cursor, true);
}

} // namespace vnbytstr::detail
