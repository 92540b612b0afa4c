// What the Qt widgets of a field share, one line or several.
#pragma once

#include "src/window/controls/EditField.h"

#include <QInputMethodEvent>

namespace vnbytstr::detail {

/// A Qt text widget whose input goes through its field's rules. `Base`: QLineEdit or
/// QPlainTextEdit; `Field`: the EditField it belongs to.
template <class Base, class Field>
class FieldWidget : public Base {
public:
    FieldWidget(Field& field, QWidget* parent) : Base(parent), m_field(&field) {}
    /// To be called when the field is destroyed before its widget.
    void Forget() { m_field = nullptr; }

protected:
    /// What the text composed by an input method takes the place of.
    virtual QString Replaced(const QInputMethodEvent& event) const = 0;

    void inputMethodEvent(QInputMethodEvent* event) override {
        if (m_field == nullptr || event->commitString().isEmpty()) {
            Base::inputMethodEvent(event);
            return;
        }
        bool full = false;
        const QString fitting =
            m_field->m_rules.Fit(m_field->Text(), Replaced(*event), event->commitString(), full);
        QInputMethodEvent cut(event->preeditString(), event->attributes());
        cut.setCommitString(fitting, event->replacementStart(), event->replacementLength());
        Base::inputMethodEvent(&cut);
        if (full && m_field != nullptr)
            m_field->Owner().FieldFull();
    }

    Field* m_field; ///< null once the field has been destroyed
};

} // namespace vnbytstr::detail
