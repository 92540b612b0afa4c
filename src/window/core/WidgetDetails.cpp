#include "src/window/core/WidgetDetails.h"

#include "src/window/controls/ButtonControl.h"
#include "src/window/controls/ComboControl.h"
#include "src/window/controls/EditControl.h"
#include "src/window/controls/SpinControl.h"
#include "src/window/controls/StaticControl.h"
#include "src/window/core/WindowWidget.h"

#include <QEvent>
#include <QFrame>
#include <QLineEdit>

namespace vnbytstr::detail {

QWidget* HostParent(Window& window) { return window.Widget(); }

void HostControl(Window& window, QWidget* inner) {
    // The window draws the border that its style asks for.
    if (auto* line = qobject_cast<QLineEdit*>(inner))
        line->setFrame(false);
    if (auto* frame = qobject_cast<QFrame*>(inner))
        frame->setFrameShape(QFrame::NoFrame);
    window.Host(inner);
}

bool IsComposed(const Window& window) {
    const RoutedEvent* const routed = RoutedEvent::Current();
    return routed != nullptr && routed->IsFor(&window) &&
           routed->Event()->type() == QEvent::InputMethod;
}

void RegisterControlClasses() {
    RegisterSystemClass("EDIT", CS_DBLCLKS, MakeControl<EditControl>);
    RegisterSystemClass("COMBOBOX", CS_DBLCLKS, MakeControl<ComboControl>);
    RegisterSystemClass("BUTTON", CS_DBLCLKS, MakeControl<ButtonControl>);
    RegisterSystemClass("STATIC", CS_DBLCLKS, MakeControl<StaticControl>);
    RegisterSystemClass("msctls_updown32", CS_DBLCLKS, MakeControl<SpinControl>);
}

} // namespace vnbytstr::detail
