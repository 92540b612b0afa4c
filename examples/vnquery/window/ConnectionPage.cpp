#include "vnquery/window/ConnectionPage.h"

#include "vnquery/result/CellText.h"
#include "vnquery/window/Guard.h"
#include "vnquery/window/Label.h"
#include "vnquery/window/ParametersDialog.h"
#include "vnquery/window/ResultView.h"
#include "vnquery/window/RunTask.h"

#include "vnbytstr/ByteStream.h"
#include "vnbytstr/GlobalVars.h"

#include <QDateTime>
#include <QEvent>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QVBoxLayout>

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

    m_outdated = new QWidget(this);
    m_outdated->setObjectName("outdated");
    m_outdatedText = new QLabel(m_outdated);
    m_outdatedText->setWordWrap(true);
    m_refresh = new QPushButton(m_outdated);
    auto* const outdatedLayout = new QHBoxLayout(m_outdated);
    outdatedLayout->setContentsMargins(6, 2, 6, 2);
    outdatedLayout->addWidget(m_outdatedText, 1);
    outdatedLayout->addWidget(m_refresh);
    m_outdated->hide();

    auto* const lower = new QWidget(this);
    auto* const lowerLayout = new QVBoxLayout(lower);
    lowerLayout->setContentsMargins(0, 0, 0, 0);
    lowerLayout->setSpacing(0);
    lowerLayout->addWidget(m_failure);
    lowerLayout->addWidget(m_outdated);
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
    connect(m_refresh, &QPushButton::clicked, this, &ConnectionPage::Refresh);
    connect(m_result, &ResultView::StatusChanged, this, &ConnectionPage::StatusChanged);
    connect(m_result, &ResultView::Changed, this, [this] {
        ShowTransaction(); // rows may have been written
        LookForUndone();
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
    m_outdatedText->setText(Label(IDS_VQ_N_OUTDATED));
    m_refresh->setText(PlainLabel(IDS_VQ_C_REFRESH));
}

void ConnectionPage::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange)
        Relabel();
    QWidget::changeEvent(event);
}

QString ConnectionPage::GetTitle() const {
    const bool isChanged = HasUncommitted() || !m_result->GetDocument().GetEdits().IsEmpty();
    const QString name = QString::fromStdString(m_connection.GetShortName());
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
    // The library reads its settings once per process: on this thread.
    static_cast<void>(CByteStream().GetLength());
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
    Launch(m_session);
}

/// Runs the statement; without a session on a connection that can change nothing.
void ConnectionPage::Launch(const std::shared_ptr<Session>& session) {
    m_run = session ? std::make_unique<QueryRun>(session, m_running->sql, m_parameters)
                    : std::make_unique<QueryRun>(m_connection, m_running->sql, m_parameters);
    m_shape.reset();
    m_hasShape = false;
    m_isStopping = false;
    m_started.start();
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
        m_outdated->hide();
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
        const double seconds = static_cast<double>(m_started.elapsed()) / 1000;
        Tell(IDS_VQ_N_RUNNING,
             {GroupDigits(m_hasShape ? m_result->GetDocument().GetShownRows() : 0),
              FormatSize(m_run->GetProgress().GetBytes()),
              QString::number(seconds, 'f', 1).toStdString()});
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
    const qint64 time = m_started.elapsed();
    const std::string seconds =
        QString::number(static_cast<double>(time) / 1000, 'f', 2).toStdString();
    const CString fetched = std::to_string(rows).c_str();
    GetGlobals().SetGlobalVarValue(CGlobalVars::TLXAO_NUM_FETCHED, &fetched);
    if (m_cellBefore)
        return FinishAgain(*run);
    // Neither rows nor a number of them: a definition.
    m_hasDefined |= m_session && !m_hasShape && !run->GetChangedRows();
    ShowTransaction();
    HistoryEntry entry;
    entry.sql = run->GetSql();
    entry.connection = m_connection.GetDisplayName();
    entry.when = QDateTime::currentSecsSinceEpoch() - time / 1000;
    entry.milliseconds = time;
    if (m_hasShape)
        entry.rows = static_cast<std::int64_t>(rows);
    const bool isUndone = LookForUndone();
    switch (run->GetState()) {
    case TaskState::Stopped:
        Tell(IDS_VQ_W_STOPPED, {GroupDigits(rows)});
        if (isUndone)
            ShowFailure(*run, isUndone);
        break;
    case TaskState::Failed:
        m_waiting.clear();
        entry.error = run->GetMessage();
        if (rows == 0)
            Tell(IDS_VQ_W_FAILED, {});
        else
            Tell(IDS_VQ_W_FAILED_AFTER, {GroupDigits(rows)});
        ShowFailure(*run, isUndone);
        break;
    default:
        if (const auto changed = run->GetChangedRows())
            Tell(IDS_VQ_N_CHANGED_ROWS,
                 {GroupDigits(static_cast<std::uint64_t>(*changed)), seconds});
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

void ConnectionPage::ShowFailure(const QueryRun& run, bool isUndone) {
    QString text = Sentence(run.GetMessage());
    if (const QString undone = Label(IDS_VQ_S_ALL_UNDONE); isUndone && !text.contains(undone))
        text += (text.isEmpty() ? "" : " ") + undone;
    if (!m_session && !run.GetFailurePlace() && FindRefusal(run.GetSql(), m_server))
        text += " " + Label(IDS_VQ_N_HINT_ALLOW);
    m_failure->setText(text);
    m_failure->show();
    if (const auto place = run.GetFailurePlace(); place && m_running->position >= 0)
        m_editor->ShowError(*m_running, *place, 0, text);
}

// --- results that are outdated -------------------------------------------------------------------

/// Whether a transaction was rolled back since the last look; then what it showed is outdated.
bool ConnectionPage::LookForUndone() {
    if (!m_session || m_session->GetUndoneCount() == m_undoneCount)
        return false;
    m_undoneCount = m_session->GetUndoneCount();
    if (m_result->HasResult()) {
        m_outdated->show();
        m_refresh->setVisible(IsQuery());
        QTimer::singleShot(0, this, &ConnectionPage::Outdated); // when this run has ended
    }
    return true;
}

/// Whether the result comes from a statement that only reads.
bool ConnectionPage::IsQuery() const {
    const std::string& sql = m_result->GetDocument().GetSql();
    const SqlText text(sql, m_server, m_result->GetParameters(), true);
    return !FindRefusal(text.Get(), m_server);
}

void ConnectionPage::ReadAgain() {
    if (IsBusy() || !m_outdated->isVisibleTo(this) || !IsQuery() || HasUncommitted() ||
        !m_result->GetDocument().GetEdits().IsEmpty())
        return;
    ResultList& list = m_result->GetList();
    list.CellCancel();
    m_cellBefore = {list.GetCurrentRow(), list.GetCurrentColumn()};
    m_running = {m_result->GetDocument().GetSql(), -1};
    m_parameters = m_result->GetParameters();
    // Not in the session: a function that the query calls would change there what it did before.
    Launch(nullptr);
}

void ConnectionPage::FinishAgain(const QueryRun& run) {
    const auto [row, column] = *std::exchange(m_cellBefore, std::nullopt);
    const bool isDone = run.GetState() == TaskState::Done;
    m_outdated->setVisible(!isDone);
    Tell(isDone ? IDS_VQ_N_ROLLED_BACK : IDS_VQ_N_OUTDATED, {});
    if (isDone && !IsBusy() && row >= 0 && row < m_result->GetList().GetCount())
        m_result->GetList().SetCurrentCell(row, column);
    Q_EMIT Changed();
}

/// What the user asks for, in the session.
void ConnectionPage::Refresh() {
    if (IsBusy() || !m_result->LeaveChanges())
        return;
    m_failure->hide();
    m_waiting.clear();
    m_running = {m_result->GetDocument().GetSql(), -1};
    m_parameters = m_result->GetParameters();
    Launch(m_session);
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
    if (allow) {
        Guard(this, [this] { m_session = OpenSession(m_connection); });
        m_undoneCount = 0;
    } else if (LeaveTransaction()) {
        LookForUndone();
        m_session.reset();
    }
    ShowTransaction();
    Q_EMIT Changed();
    return allow == AreChangesAllowed();
}

void ConnectionPage::Commit() {
    EndTransaction(true);
    LookForUndone(); // when it failed
}

void ConnectionPage::RollBack() {
    EndTransaction(false);
    LookForUndone();
}

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
        m_cellBefore.reset();
        m_timer.stop();
        m_result->SetFilling(false);
    }
    if (!m_result->LeaveChanges() || !LeaveTransaction())
        return false;
    m_result->StoreLayout();
    return true;
}

} // namespace vnquery
