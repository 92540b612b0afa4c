// Signals that ask the program to end close its window.
#pragma once

#include <QTimer>

class QWidget;

namespace vnquery {

/// Closes the window as its close button would. Dialogs close first, one at each look, since each
/// has to return to its caller. The user is asked about unwritten changes and may cancel. An open
/// message box has to be answered.
class EndingSignals : public QObject {
public:
    explicit EndingSignals(QWidget& window);
    /// The signal that closed the window; 0 when the user closed it.
    int Get() const { return m_signal; }

private:
    void Look();

    QWidget& m_window;
    QTimer m_timer;
    int m_signal = 0;
    bool m_isAsking = false; ///< about changes
};

} // namespace vnquery
