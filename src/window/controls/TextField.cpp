#include "src/window/controls/TextField.h"
#include "src/window/controls/FieldWidget.h"

#include "vnbytstr/window/Messages.h"

#include <QKeyEvent>
#include <QMimeData>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextOption>

namespace vnbytstr::detail {

/// A QPlainTextEdit all of whose input goes through the field.
class TextFieldWidget final : public FieldWidget<QPlainTextEdit, TextField> {
public:
    TextFieldWidget(TextField& field, QWidget* parent) : FieldWidget(field, parent) {
        connect(document(), &QTextDocument::contentsChange, this,
                [this](int, int removed, int added) {
                    // A mere change of format counts as many characters removed as added.
                    m_changed = m_changed || removed != 0 || added != 0;
                });
        connect(this, &QPlainTextEdit::textChanged, this, [this] {
            if (m_field != nullptr && std::exchange(m_changed, false))
                m_field->Owner().FieldChanged();
        });
    }

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (m_field == nullptr || IsTypedText(event->text(), event->modifiers()))
            return;
        if (const UINT command = ClipboardCommand(*event)) {
            m_field->Owner().FieldCommand(command);
        } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
            if ((event->modifiers() & (Qt::AltModifier | Qt::MetaModifier)) == 0)
                m_field->InsertFromUser(QStringLiteral("\n"));
        } else if (event->key() == Qt::Key_Tab && event->modifiers() == Qt::NoModifier) {
            m_field->InsertFromUser(QStringLiteral("\t"));
        } else {
            QPlainTextEdit::keyPressEvent(event);
        }
    }
    QString Replaced(const QInputMethodEvent&) const override { return m_field->SelectedText(); }
    /// Pasting and dropping end here.
    void insertFromMimeData(const QMimeData* source) override {
        if (m_field != nullptr && source->hasText())
            m_field->InsertFromUser(
                source->text().replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    }

private:
    bool m_changed = false;
};

TextField::TextField(EditFieldOwner& owner, const EditFieldStyle& style, QWidget* parent)
    : EditField(owner), m_edit(new TextFieldWidget(*this, parent)) {
    m_edit->setLineWrapMode(style.wrap ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
    m_edit->setVerticalScrollBarPolicy(style.vScroll ? Qt::ScrollBarAsNeeded
                                                     : Qt::ScrollBarAlwaysOff);
    m_edit->setHorizontalScrollBarPolicy(style.hScroll ? Qt::ScrollBarAsNeeded
                                                       : Qt::ScrollBarAlwaysOff);
    QTextOption option = m_edit->document()->defaultTextOption();
    option.setAlignment(AlignmentOf(style));
    m_edit->document()->setDefaultTextOption(option);
}

TextField::~TextField() {
    if (m_edit != nullptr)
        m_edit->Forget();
}

QPlainTextEdit* TextField::Edit() const { return m_edit; }

QString TextField::Text() const {
    // toPlainText would turn no-break spaces into blanks.
    QString text = Edit()->document()->toRawText();
    text.replace(QChar::ParagraphSeparator, u'\n');
    return text;
}

QString TextField::SelectedText() const {
    return Edit()->textCursor().selectedText().replace(QChar::ParagraphSeparator, u'\n');
}

void TextField::Select(int anchor, int cursor, bool scroll) {
    QTextCursor place = Edit()->textCursor();
    place.setPosition(anchor);
    place.setPosition(cursor, QTextCursor::KeepAnchor);
    const int x = Edit()->horizontalScrollBar()->value();
    const int y = Edit()->verticalScrollBar()->value();
    Edit()->setTextCursor(place);
    if (!scroll) {
        Edit()->horizontalScrollBar()->setValue(x);
        Edit()->verticalScrollBar()->setValue(y);
    }
}

void TextField::SetReadOnly(bool on) {
    Edit()->setReadOnly(on);
    // The keys still move through a read-only text.
    if (on)
        Edit()->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

} // namespace vnbytstr::detail
