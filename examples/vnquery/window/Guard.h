// Keeps what the library throws from passing through Qt.
#pragma once

#include "vnquery/tasks/Failure.h"
#include "vnquery/window/Label.h"

#include <QMessageBox>

#include <exception>

namespace vnquery {

/// Runs what a signal asks for; what the library throws is shown and does not reach Qt's loop.
template <class Action>
void Guard(QWidget* parent, Action&& action) {
    QString message;
    try {
        action();
    } catch (CException* error) {
        message = Sentence(TakeMessage(error));
    } catch (const std::exception& error) {
        message = Sentence(error.what());
    }
    if (!message.isEmpty())
        QMessageBox::warning(parent, Label(IDS_VQ_APP), message);
}

} // namespace vnquery
