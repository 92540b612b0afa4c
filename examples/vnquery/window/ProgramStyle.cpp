#include "vnquery/window/ProgramStyle.h"

#include <QApplication>
#include <QProxyStyle>

namespace vnquery {

namespace {

class ProgramStyle : public QProxyStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override {
        return hint == SH_DialogButtonBox_ButtonsHaveIcons
                   ? 0
                   : QProxyStyle::styleHint(hint, option, widget, result);
    }
};

} // namespace

void UseProgramStyle() { QApplication::setStyle(new ProgramStyle); }

} // namespace vnquery
