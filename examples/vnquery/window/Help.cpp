#include "vnquery/window/Help.h"

#include "vnquery/messages/HelpPages.h"
#include "vnquery/window/Label.h"

#include "vnbytstr/Interaction.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QList>
#include <QMessageBox>
#include <QPointer>
#include <QProcess>
#include <QShortcut>
#include <QUrl>

namespace vnquery {

namespace {

/// The one argument of a program: see Interaction::ShellExecute.
QString Unquoted(QString argument) {
    if (argument.size() > 1 && argument.startsWith(u'"') && argument.endsWith(u'"'))
        argument = argument.sliced(1, argument.size() - 2);
    return argument.replace("\\\"", "\"");
}

/// A file, with an anchor perhaps, as an address.
QUrl AddressOf(const QString& page) {
    if (!page.startsWith(u'/'))
        return QUrl(page);
    const qsizetype anchor = page.indexOf(u'#', page.lastIndexOf(u'/'));
    QUrl address = QUrl::fromLocalFile(page.left(anchor)); // -1: all
    if (anchor >= 0)
        address.setFragment(page.sliced(anchor + 1));
    return address;
}

/// Runs xdg-open, which may run as long as the browser does: then that has shown the page.
class Opening {
public:
    Opening(QWidget* parent, const QUrl& address) : m_parent(parent), m_address(address) {
        Running().append(this);
        m_process.setProcessChannelMode(QProcess::ForwardedChannels);
        m_process.setStandardInputFile(QProcess::nullDevice());
        QObject::connect(
            &m_process, &QProcess::errorOccurred, qApp,
            [this](QProcess::ProcessError error) {
                if (error == QProcess::FailedToStart)
                    End(false);
            },
            Qt::QueuedConnection);
        QObject::connect(
            &m_process, &QProcess::finished, qApp,
            [this](int code) {
                constexpr int kShort = 30'000; // milliseconds
                End(code == 0 || m_started.elapsed() > kShort);
            },
            Qt::QueuedConnection);
        m_started.start();
        m_process.start(QStringLiteral("xdg-open"), {address.toString(QUrl::FullyEncoded)});
    }

private:
    /// Those that run when the program ends are not ended with it.
    static QList<Opening*>& Running() {
        static auto& running = *new QList<Opening*>; // never destroyed
        return running;
    }
    void End(bool isShown) {
        Running().removeOne(this);
        QWidget* const parent = m_parent ? m_parent.data() : QApplication::activeWindow();
        const QString page =
            m_address.isLocalFile() ? m_address.toLocalFile() : m_address.toString();
        delete this;
        if (!isShown)
            QMessageBox::warning(parent, Label(IDS_VQ_APP),
                                 Label(IDS_VQ_N_NO_HELP, {page.toStdString()}));
    }

    QPointer<QWidget> m_parent;
    QUrl m_address;
    QProcess m_process;
    QElapsedTimer m_started;
};

/// What the help says and opens, it says and opens in the window.
class HelpInWindow : public vnbytstr::Interaction {
public:
    explicit HelpInWindow(QWidget* parent) : m_parent(parent) {}

    int MessageBox(const char* text, const char* caption, UINT, UINT) override {
        QMessageBox::warning(m_parent, QString::fromUtf8(caption), QString::fromUtf8(text));
        return IDOK;
    }
    int ShellExecute(const char*, const char* file, const char* parameters, const char*,
                     int) override {
        new Opening(m_parent, AddressOf(parameters ? Unquoted(QString::fromUtf8(parameters))
                                                   : QString::fromUtf8(file)));
        return vnbytstr::kShellStarted;
    }

private:
    QWidget* m_parent;
};

} // namespace

void ShowHelp(QWidget* parent, unsigned topic) {
    HelpInWindow help(parent);
    const vnbytstr::ScopedInteraction scope(help);
    OpenHelpPage(topic);
}

void AddHelp(QDialog* dialog, unsigned topic) {
    QObject::connect(new QShortcut(QKeySequence::HelpContents, dialog), &QShortcut::activated,
                     dialog, [dialog, topic] { ShowHelp(dialog, topic); });
}

} // namespace vnquery
