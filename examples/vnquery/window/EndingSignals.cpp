#include "vnquery/window/EndingSignals.h"

#include "vnquery/tasks/Interruption.h"

#include <QApplication>
#include <QDialog>
#include <QMessageBox>

namespace vnquery {

EndingSignals::EndingSignals(QWidget& window) : m_window(window) {
    constexpr int kInterval = 200; // milliseconds
    connect(&m_timer, &QTimer::timeout, this, &EndingSignals::Look);
    m_timer.start(kInterval);
}

void EndingSignals::Look() {
    if (m_isAsking || InterruptingSignal() == 0)
        return;
    if (auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
        if (!qobject_cast<QMessageBox*>(dialog))
            dialog->reject();
        return;
    }
    m_isAsking = true;
    m_signal = TakeInterruptingSignal();
    const bool isClosed = m_window.close();
    m_isAsking = false;
    if (!isClosed) {
        m_signal = 0;
        AwaitSignals();
    }
}

} // namespace vnquery
