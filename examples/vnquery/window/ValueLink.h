// The value pane follows the current cell of the tab that is shown.
#pragma once

#include "vnquery/result/PendingEdits.h"

#include <QObject>
#include <QPointer>

namespace vnquery {

class ConnectionPage;
class ValuePane;

/// What is typed in the pane belongs to the cell that it was typed for, and stays in the pane until
/// that cell takes it.
class ValueLink : public QObject {
    Q_OBJECT
public:
    ValueLink(ValuePane& pane, QObject* parent);

    /// Shows the current cell of the page; null without one.
    void Show(ConnectionPage* page);
    /// Accepts what is typed. False when its column does not take it, which the user has been told.
    bool Leave();

private:
    ValuePane& m_pane;
    // What the pane shows.
    QPointer<ConnectionPage> m_page;
    CellPlace m_place;
    bool m_isTaking = false;
};

} // namespace vnquery
