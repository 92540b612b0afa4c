#include "src/window/core/HandInput.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMouseEvent>

namespace vnbytstr::detail {
namespace {

constexpr qint64 kWheelPause = 500; ///< milliseconds; notches after it are another turn

struct HandState {
    unsigned action = 0;
    Qt::MouseButtons buttons; ///< of the last mouse event
    bool isTold = true;       ///< the platform knows these buttons, too
    QElapsedTimer lastWheel;
};

HandState& State() {
    static HandState state;
    return state;
}

void NoteButtons(const QMouseEvent& event) {
    HandState& state = State();
    state.buttons = event.buttons();
    // Events that the program makes itself are unknown to the platform.
    state.isTold = (state.buttons & ~QGuiApplication::mouseButtons()) == Qt::NoButton;
}

void NoteWheel() {
    HandState& state = State();
    if (!state.lastWheel.isValid() || state.lastWheel.elapsed() > kWheelPause)
        ++state.action;
    state.lastWheel.start();
}

/// Sees every event before its receiver does.
class Watcher : public QObject {
public:
    using QObject::QObject;
    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            ++State().action;
            NoteButtons(*static_cast<QMouseEvent*>(event));
            break;
        case QEvent::MouseButtonRelease:
        case QEvent::MouseMove:
            NoteButtons(*static_cast<QMouseEvent*>(event));
            break;
        case QEvent::KeyPress:
            if (!static_cast<QKeyEvent*>(event)->isAutoRepeat())
                ++State().action;
            break;
        case QEvent::Wheel:
            NoteWheel();
            break;
        case QEvent::DragEnter:
            ++State().action;
            break;
        default:
            break;
        }
        return false;
    }
};

} // namespace

void WatchHand() { qApp->installEventFilter(new Watcher(qApp)); }

Qt::MouseButtons ButtonsDown() {
    const HandState& state = State();
    return state.isTold ? state.buttons & QGuiApplication::mouseButtons() : state.buttons;
}

unsigned CurrentHandAction() { return State().action; }

} // namespace vnbytstr::detail
