#include "src/window/controls/ComboWidgets.h"

#include "src/window/controls/ComboControl.h"
#include "src/window/controls/EditField.h"
#include "vnbytstr/window/Wnd.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace vnbytstr::detail {

ComboWidget::ComboWidget(ComboControl& control, QWidget* parent)
    : QComboBox(parent), m_control(&control) {
    setInsertPolicy(QComboBox::NoInsert);
    setDuplicatesEnabled(true);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMaxVisibleItems(12);
    connect(this, &QComboBox::activated, this, [this](int index) {
        if (m_control != nullptr)
            m_control->Picked(index);
    });
}

void ComboWidget::TakeLine(QLineEdit* line) {
    setEditable(true);
    setLineEdit(line);
    setCompleter(nullptr);
    line->setFrame(false);
    // When the field loses the focus, Qt would pick the item whose text was typed.
    disconnect(line, &QLineEdit::editingFinished, this, nullptr);
    disconnect(line, &QLineEdit::returnPressed, this, nullptr);
}

void ComboWidget::InsertKeepingField(int index, const QString& text) {
    const int before = currentIndex();
    const QString shown = isEditable() ? lineEdit()->text() : QString();
    insertItem(index, text);
    if (before < 0)
        setCurrentIndex(-1);
    if (isEditable() && lineEdit()->text() != shown)
        lineEdit()->setText(shown);
}

void ComboWidget::RemoveKeepingField(int index, int current) {
    const QString shown = isEditable() ? lineEdit()->text() : QString();
    removeItem(index);
    setCurrentIndex(current);
    if (isEditable() && lineEdit()->text() != shown)
        lineEdit()->setText(shown);
}

void ComboWidget::showPopup() {
    if (m_open)
        return;
    const QPointer<ComboWidget> alive(this);
    if (m_control != nullptr)
        m_control->PopupShown();
    if (alive == nullptr || m_control == nullptr || count() == 0)
        return;
    m_open = true;
    QComboBox::showPopup();
}

void ComboWidget::hidePopup() {
    QComboBox::hidePopup();
    // Qt hides the list before it reports what was picked.
    if (std::exchange(m_open, false))
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (m_control != nullptr)
                    m_control->PopupHidden();
            },
            Qt::QueuedConnection);
}

void ComboWidget::keyPressEvent(QKeyEvent* event) {
    // Typed text has come as WM_CHAR already; in a list it looks the item up.
    if (isEditable() && IsTypedText(event->text(), event->modifiers()))
        return;
    QComboBox::keyPressEvent(event);
}

void ComboWidget::wheelEvent(QWheelEvent* event) {
    // Turning the wheel over an unfocused box must not change its item.
    if (hasFocus() || (lineEdit() != nullptr && lineEdit()->hasFocus()))
        QComboBox::wheelEvent(event);
    else
        event->ignore();
}

SimpleComboWidget::SimpleComboWidget(ComboControl& control, QLineEdit* line, QWidget* parent)
    : QWidget(parent), m_control(&control), m_list(new QListWidget(this)) {
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(line);
    layout->addWidget(m_list);
    m_list->setFocusPolicy(Qt::NoFocus);
    setFocusProxy(line);
    connect(m_list, &QListWidget::itemClicked, this, [this] {
        if (m_control != nullptr)
            m_control->Picked(m_list->currentRow());
    });
}

void SimpleComboWidget::Insert(int index, const QString& text) { m_list->insertItem(index, text); }
void SimpleComboWidget::Remove(int index) { delete m_list->takeItem(index); }
void SimpleComboWidget::Clear() { m_list->clear(); }

void SimpleComboWidget::Select(int index) {
    if (index < 0)
        m_list->clearSelection();
    m_list->setCurrentRow(index);
}

} // namespace vnbytstr::detail
