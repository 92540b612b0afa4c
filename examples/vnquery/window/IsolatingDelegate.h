// Items such as paths and SQL among texts that run from right to left.
#pragma once

#include "vnquery/window/Label.h"

#include <QStyledItemDelegate>

namespace vnquery {

/// Shows each text in its own direction: a slash or parenthesis at its end stays there. The items
/// have the text without marks.
class IsolatingDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QString displayText(const QVariant& value, const QLocale& locale) const override {
        return Isolated(QStyledItemDelegate::displayText(value, locale));
    }
};

} // namespace vnquery
