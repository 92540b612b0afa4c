#include "vnquery/window/ConnectionPage.h"

#include "vnquery/result/CellText.h"
#include "vnquery/sources/ConnectionText.h"
#include "vnquery/window/Guard.h"
#include "vnquery/window/Label.h"
#include "vnquery/window/ParametersDialog.h"
#include "vnquery/window/ResultView.h"
#include "vnquery/window/RunTask.h"

#include "vnbytstr/ByteStream.h"
#include "vnbytstr/GlobalVars.h"

#include <QDateTime>
#include <QEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QVBoxLayout>

#include <cstdio>
#include <thread>

namespace vnquery {

namespace {

constexpr int kInterval = 25; ///< milliseconds between two looks at a run

} // namespace

ConnectionPage::ConnectionPage(const Connection& connection, SqlServer server, QWidget* parent)
    : QWidget(parent), m_connection(connection), m_server(server) {
    m_editor = new SqlEditor(this);
    m_editor->SetServer(server);
    m_failure = new QLabel(this);
    m_failure->setWordWrap(true);
    m_failure->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_failure->setFrameShape(QFrame::StyledPanel);
    m_failure->setMargin(4);
    m_failure->setObjectName("failure");
    m_failure->hide();
    m_result = new ResultView(this);

    m_bar = new QWidget(this);
    m_bar->setObjectName("transaction");
    m_barText = new QLabel(m_bar);
    m_commit = new QPushButton(m_bar);
    m_rollBack = new QPushButton(m_bar);
    auto* const barLayout = new QHBoxLayout(m_bar);
    barLayout->setContentsMargins(6, 2, 6, 2);
    barLayout->addWidget(m_barText, 1);
    barLayout->addWidget(m_commit);
    barLayout->addWidget(m_rollBack);
    m_bar->setAutoFillBackground(true);
    QPalette red = m_bar->palette();
    red.setColor(QPalette::Window, QColor(0xB0, 0x20, 0x20));
    red.setColor(QPalette::WindowText, Qt::white);
    m_bar->setPalette(red);

    auto* const lower = new QWidget(this);
    auto* const lowerLayout = new QVBoxLayout(lower);
    lowerLayout->setContentsMargins(0, 0, 0, 0);
    lowerLayout->setSpacing(0);
    lowerLayout->addWidget(m_failure);
    lowerLayout->addWidget(m_result, 1);
    m_splitter = new QSplitter(Qt::Vertical, this);
    m_splitter->addWidget(m_editor);
    m_splitter->addWidget(lower);
    m_splitter->setStretchFactor(1, 1); // the result gets what the editor does not need
    m_splitter->setSizes(
        {m_editor->fontMetrics().height() * 9, m_editor->fontMetrics().height() * 30});
    m_splitter->setChildrenCollapsible(false);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_bar);
    layout->addWidget(m_splitter, 1);

    connect(m_commit, &QPushButton::clicked, this, &ConnectionPage::Commit);
    connect(m_rollBack, &QPushButton::clicked, this, &ConnectionPage::RollBack);
    connect(m_result, &ResultView::StatusChanged, this, &ConnectionPage::StatusChanged);
    connect(m_result, &ResultView::Changed, this, [this] {
        ShowTransaction(); // rows may have been written
        Q_EMIT Changed();
    });
    connect(&m_timer, &QTimer::timeout, this, [this] { Guard(this, [this] { Follow(); }); });
    Relabel();
    ShowTransaction();
}

ConnectionPage::~ConnectionPage() = default;

void ConnectionPage::Relabel() {
    m_barText->setText(Label(IDS_VQ_N_CHANGES_ON));
    m_commit->setText(Label(IDS_VQ_N_COMMIT));
    m_rollBack->setText(Label(IDS_VQ_N_ROLL_BACK));
}

void ConnectionPage::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        Relabel();
    QWidget::changeEvent(event);
}

QString ConnectionPage::GetTitle() const {
    const bool isChanged = HasUncommitted() || !m_result->GetDocument().GetEdits().IsEmpty();
    QString name = QFileInfo(QString::fromStdString(m_connection.file)).fileName();
    if (m_connection.file.empty())
        name = QString::fromStdString(m_connection.GetDisplayName()).left(40);
    for (const auto& [key, value] : ParseConnection(m_connection.dataSource)) {
        const QString part = QString::fromStdString(key);
        if (part.compare("DSN", Qt::CaseInsensitive) == 0 ||
            part.compare("Database", Qt::CaseInsensitive) == 0)
            name = QString::fromStdString(value);
    }
    return name + (isChanged ? " *" : "");
}

bool ConnectionPage::IsBusy() const { return m_run != nullptr || m_result->IsBusy(); }

void ConnectionPage::Tell(UINT text, std::initializer_list<std::string> insertions) {
    Q_EMIT StatusChanged(Label(text, insertions));
}

// --- running -------------------------------------------------------------------------------------

void ConnectionPage::RunSql(const std::string& sql) { Run({{sql, -1}}); }

void ConnectionPage::Run(std::vector<SqlPiece> pieces) {
    if (IsBusy() || !m_result->LeaveChanges())
        return;
    if (pieces.empty()) {
        Tell(IDS_VQ_W_EMPTY_SQL, {});
        return;
    }
    m_failure->hide();
    m_waiting.assign(pieces.begin(), pieces.end());
    m_isStopping = false;
    Start();
}

/// Asks for what the statement's names stand for; false when the user cancels.
bool ConnectionPage::FillParameters(const std::string& sql, Parameters& parameters) {
    parameters.AddGlobalVariables();
    const auto missing = FindMissing(sql, m_server, parameters);
    if (missing.empty())
        return true;
    std::vector<std::string> names;
    names.reserve(missing.size());
    for (const auto& name : missing)
        names.push_back(name.name);
    ParametersDialog dialog(names, this);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    const ParameterTexts texts = dialog.GetTexts();
    for (const auto& name : missing) {
        if (name.isVariable)
            parameters.variables[name.name] = texts.at(name.name).value_or("");
        else
            parameters.values[name.name] = texts.at(name.name);
    }
    return true;
}

/// Starts the next statement.
void ConnectionPage::Start() {
    m_running = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_parameters = {};
    if (!FillParameters(m_running->sql, m_parameters)) {
        m_waiting.clear();
        return;
    }
    const SqlText text(m_running->sql, m_server, m_parameters, true);
    if (m_session && CommitsByItself(text.Get(), m_server) &&
        QMessageBox::question(this, Label(IDS_VQ_APP), Label(IDS_VQ_N_Q_COMMITS)) !=
            QMessageBox::Yes) {
        m_waiting.clear();
        return;
    }
    m_shape.reset();
    m_hasShape = false;
    m_started = std::chrono::steady_clock::now();
    // The library reads its settings once per process: on this thread.
    static_cast<void>(CByteStream().GetLength());
    m_run = m_session ? std::make_unique<QueryRun>(m_session, m_running->sql, m_parameters)
                      : std::make_unique<QueryRun>(m_connection, m_running->sql, m_parameters);
    m_result->SetFilling(true);
    m_timer.start(kInterval);
    Tell(IDS_VQ_W_STARTING, {});
    Q_EMIT Changed();
}

void ConnectionPage::Stop() {
    if (!IsBusy())
        return;
    m_isStopping = true;
    m_waiting.clear();
    m_result->StopSort();
    if (m_run)
        m_run->Cancel();
    Tell(IDS_VQ_W_STOPPING, {});
}

void ConnectionPage::Follow() {
    if (!m_run)
        return;
    const bool hasEnded = m_run->GetState() != TaskState::Running;
    if (auto shape = m_run->TakeShape())
        m_shape = std::move(shape);
    // The result before stays until there is a row, or none and no failure either.
    if (m_shape && (m_shape->result.GetRowCount() > 0 || m_run->GetState() == TaskState::Done)) {
        m_hasShape = true;
        m_result->Begin(std::move(*m_shape), m_run->GetSql(),
                        {m_connection, m_session, m_parameters});
        m_shape.reset();
    }
    const bool hasNew = m_hasShape && m_result->ShowNewRows();
    if (hasEnded && !hasNew) {
        Finish();
        return;
    }
    if (!m_isStopping) {
        const double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - m_started).count();
        char text[32];
        std::snprintf(text, sizeof text, "%.1f", seconds);
        Tell(IDS_VQ_N_RUNNING,
             {GroupDigits(m_hasShape ? m_result->GetDocument().GetShownRows() : 0),
              FormatSize(m_run->GetProgress().GetBytes()), text});
    }
    Q_EMIT Changed();
}

void ConnectionPage::Finish() {
    m_timer.stop();
    const std::unique_ptr<QueryRun> run = std::move(m_run);
    m_result->SetFilling(false);
    const std::size_t rows = m_hasShape ? m_result->GetDocument().GetShownRows() : 0;
    if (m_hasShape)
        m_result->EndRows();
    const double time =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - m_started).count();
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.2f", time);
    const CString fetched = std::to_string(rows).c_str();
    GetGlobals().SetGlobalVarValue(CGlobalVars::TLXAO_NUM_FETCHED, &fetched);
    // Neither rows nor a number of them: a definition.
    m_hasDefined |= m_session && !m_hasShape && !run->GetChangedRows();
    ShowTransaction();
    HistoryEntry entry;
    entry.sql = run->GetSql();
    entry.connection = m_connection.GetDisplayName();
    entry.when = QDateTime::currentSecsSinceEpoch() - static_cast<std::int64_t>(time);
    entry.milliseconds = static_cast<std::int64_t>(time * 1000);
    if (m_hasShape)
        entry.rows = static_cast<std::int64_t>(rows);
    switch (run->GetState()) {
    case TaskState::Stopped:
        Tell(IDS_VQ_W_STOPPED, {GroupDigits(rows)});
        break;
    case TaskState::Failed:
        m_waiting.clear();
        entry.error = run->GetMessage();
        if (rows == 0)
            Tell(IDS_VQ_W_FAILED, {});
        else
            Tell(IDS_VQ_W_FAILED_AFTER, {GroupDigits(rows)});
        ShowFailure(*run);
        break;
    default:
        if (const auto changed = run->GetChangedRows())
            Tell(IDS_VQ_N_CHANGED_ROWS, {GroupDigits(*changed), seconds});
        else if (rows == 0)
            Tell(IDS_VQ_W_NONE, {seconds});
        else if (rows == 1)
            Tell(IDS_VQ_W_DONE_ONE, {seconds});
        else
            Tell(IDS_VQ_W_DONE, {GroupDigits(rows), seconds});
    }
    Q_EMIT Ran(entry);
    Q_EMIT Changed();
    if (!m_waiting.empty() && !m_isStopping)
        Start();
}

void ConnectionPage::ShowFailure(const QueryRun& run) {
    QString text = Sentence(run.GetMessage());
    if (!m_session && !run.GetFailurePlace() && FindRefusal(run.GetSql(), m_server))
        text += " " + Label(IDS_VQ_N_HINT_ALLOW);
    m_failure->setText(text);
    m_failure->show();
    if (const auto place = run.GetFailurePlace(); place && m_running->position >= 0)
        m_editor->ShowError(*m_running, *place, 0, text);
}

// --- changes -------------------------------------------------------------------------------------

bool ConnectionPage::HasUncommitted() const { return m_session && m_session->HasChanges(); }

void ConnectionPage::ShowTransaction() {
    m_result->SetSession(m_session);
    m_bar->setVisible(m_session != nullptr);
    m_commit->setEnabled(HasUncommitted());
    m_rollBack->setEnabled(HasUncommitted());
    if (!HasUncommitted() && std::exchange(m_hasDefined, false))
        Q_EMIT CatalogChanged(); // others see it only now
}

bool ConnectionPage::AllowChanges(bool allow) {
    if (allow == AreChangesAllowed())
        return true;
    if (allow)
        Guard(this, [this] { m_session = OpenSession(m_connection); });
    else if (LeaveTransaction())
        m_session.reset();
    ShowTransaction();
    Q_EMIT Changed();
    return allow == AreChangesAllowed();
}

void ConnectionPage::Commit() { EndTransaction(true); }

void ConnectionPage::RollBack() { EndTransaction(false); }

bool ConnectionPage::EndTransaction(bool commit) {
    if (IsBusy() || !m_session)
        return false;
    const bool isDone = RunTask(this, IDS_VQ_T_WRITING, [&](Progress&) {
        commit ? m_session->Commit() : m_session->RollBack();
    });
    if (isDone)
        Tell(commit ? IDS_VQ_N_COMMITTED : IDS_VQ_N_ROLLED_BACK, {});
    ShowTransaction();
    Q_EMIT Changed();
    return isDone;
}

/// Asks about changes that are not committed.
bool ConnectionPage::LeaveTransaction() {
    if (!HasUncommitted())
        return true;
    const auto answer =
        QMessageBox::question(this, Label(IDS_VQ_APP), Label(IDS_VQ_N_Q_COMMIT),
                              QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    return answer == QMessageBox::Cancel ? false : EndTransaction(answer == QMessageBox::Yes);
}

bool ConnectionPage::Leave() {
    if (m_run) {
        Stop();
        for (int i = 0; i < 100 && m_run->GetState() == TaskState::Running; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        if (m_run->GetState() == TaskState::Running)
            LetEnd(std::move(m_run)); // a server may never answer
        m_run.reset();
        m_timer.stop();
        m_result->SetFilling(false);
    }
    if (!m_result->LeaveChanges() || !LeaveTransaction())
        return false;
    m_result->StoreLayout();
    return true;
}

} // namespace vnquery
