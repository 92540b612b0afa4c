#include "vnquery/window/MainWindow.h"

#include "vnquery/files/RecentTexts.h"
#include "vnquery/messages/HelpPages.h"
#include "vnquery/result/CellText.h"
#include "vnquery/sources/SavedConnections.h"
#include "vnquery/window/Actions.h"
#include "vnquery/window/CatalogTree.h"
#include "vnquery/window/ConnectForm.h"
#include "vnquery/window/ConnectionPage.h"
#include "vnquery/window/Guard.h"
#include "vnquery/window/HistoryPane.h"
#include "vnquery/window/Icons.h"
#include "vnquery/window/Label.h"
#include "vnquery/window/ResultView.h"
#include "vnquery/window/RunTask.h"
#include "vnquery/window/Translation.h"
#include "vnquery/window/ValueLink.h"
#include "vnquery/window/ValuePane.h"
#include "vnquery/window/VariablesDialog.h"

#include "vnbytstr/GlobalVars.h"
#include "vnbytstr/Language.h"
#include "vnbytstr/Profile.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDockWidget>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QShortcut>
#include <QStatusBar>
#include <QTabBar>
#include <QToolBar>
#include <QVBoxLayout>

namespace vnquery {

namespace {

constexpr UINT kPlacesRoot = 3;
constexpr char kPlacesSection[] = "Window";

RecentTexts RecentDatabases() { return {"Databases", 10}; }

/// A name in a menu or tab, where an ampersand would mark a letter.
QString MenuText(QString name) { return Isolated(name.replace(u'&', QStringLiteral("&&"))); }

} // namespace

MainWindow::MainWindow() : m_signals(*this) {
    m_tabs = new QTabWidget(this);
    m_tabs->setTabsClosable(true);
    m_tabs->setMovable(true);
    m_tabs->setDocumentMode(true);
    m_tabs->setFocusPolicy(Qt::NoFocus); // its bar has the keys
    m_tabs->tabBar()->setFocusPolicy(Qt::TabFocus);
    m_welcome = new QLabel(this);
    m_welcome->setAlignment(Qt::AlignCenter);
    m_welcome->setWordWrap(true);
    m_welcome->setTextFormat(Qt::RichText);
    auto* const center = new QWidget(this);
    auto* const layout = new QVBoxLayout(center);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_tabs);
    layout->addWidget(m_welcome);
    setCentralWidget(center);
    connect(m_tabs, &QTabWidget::currentChanged, this, &MainWindow::PageChanged);
    connect(m_tabs, &QTabWidget::tabCloseRequested, this, &MainWindow::CloseTab);
    connect(m_welcome, &QLabel::linkActivated, this,
            [this](const QString& link) { return link == "open" ? Open() : Connect(); });

    MakeDocks();
    MakeActions();
    m_rows = new QLabel(this);
    m_changes = new QLabel(this);
    m_rows->setObjectName("rows");
    m_changes->setObjectName("changes");
    statusBar()->addPermanentWidget(m_rows);
    statusBar()->addPermanentWidget(m_changes);
    setAcceptDrops(true);
    const int unit = fontMetrics().averageCharWidth();
    resize(unit * 180, fontMetrics().height() * 45);
    resizeDocks({m_docks[0], m_docks[2]}, {unit * 34, unit * 44}, Qt::Horizontal);
    Relabel();
    RestorePlaces();
    PageChanged();
}

MainWindow::~MainWindow() = default;

void MainWindow::MakeActions() {
    m_toolBar = addToolBar(QString());
    m_toolBar->setObjectName("tools");
    for (const MenuEntry& entry : GetMenus()) {
        QMenu* const menu = menuBar()->addMenu(QString());
        m_menus.push_back(menu);
        bool isInToolBar = false;
        for (const ActionEntry& command : entry.actions) {
            QAction* const action =
                command.text == 0 ? menu->addSeparator() : menu->addAction(QString());
            m_actions.push_back(action);
            if (command.text == 0)
                continue;
            action->setShortcut(QKeySequence(QString::fromLatin1(command.keys)));
            action->setCheckable(command.isChecked != nullptr);
            if (command.isPageKey)
                action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
            connect(action, &QAction::triggered, this,
                    [this, run = command.run] { Guard(this, [&] { run(*this); }); });
            if (*command.icon == '\0')
                continue;
            if (!isInToolBar && !m_toolBar->actions().isEmpty())
                m_toolBar->addSeparator();
            action->setIcon(Icon(command.icon));
            m_toolBar->addAction(action);
            isInToolBar = true;
        }
    }
    m_recent = new QMenu(this);
    m_menus[0]->insertMenu(m_menus[0]->actions().at(2), m_recent);
    connect(m_recent, &QMenu::aboutToShow, this, &MainWindow::FillRecent);
    QMenu* const view = m_menus[4];
    view->addSeparator();
    for (QDockWidget* dock : m_docks)
        view->addAction(dock->toggleViewAction());
    view->addAction(m_toolBar->toggleViewAction());
    m_languages = m_menus[5]->addMenu(QString());
    connect(new QShortcut(Qt::Key_F10, this), &QShortcut::activated, this,
            [this] { menuBar()->setActiveAction(menuBar()->actions().constFirst()); });
    connect(m_languages, &QMenu::aboutToShow, this, &MainWindow::FillLanguages);
}

QDockWidget* MainWindow::AddDock(const char* name, QWidget* pane, Qt::DockWidgetArea area) {
    auto* const dock = new QDockWidget(this);
    dock->setObjectName(name);
    dock->setWidget(pane);
    addDockWidget(area, dock);
    m_docks.push_back(dock);
    return dock;
}

void MainWindow::MakeDocks() {
    m_tree = new CatalogTree;
    m_history = new HistoryPane;
    m_value = new ValuePane;
    m_link = new ValueLink(*m_value, this);
    AddDock("tree", m_tree, Qt::LeftDockWidgetArea);
    AddDock("history", m_history, Qt::LeftDockWidgetArea);
    AddDock("value", m_value, Qt::RightDockWidgetArea);
    tabifyDockWidget(m_docks[0], m_docks[1]);
    m_docks[0]->raise();
    const auto run = [this](const QString& sql) {
        if (ConnectionPage* page = GetPage(); page && !page->IsBusy() && m_link->Leave())
            page->RunSql(sql.toStdString());
    };
    const auto show = [this](const QString& sql) {
        if (ConnectionPage* page = GetPage())
            page->GetEditor().Insert(sql);
    };
    connect(m_tree, &CatalogTree::Browse, this, run);
    connect(m_tree, &CatalogTree::Count, this, run);
    connect(m_tree, &CatalogTree::ShowDdl, this, show);
    connect(m_tree, &CatalogTree::Insert, this, show);
    connect(m_tree, &CatalogTree::CatalogRead, this, [this] {
        if (ConnectionPage* page = GetPage())
            page->GetEditor().SetCatalog(m_tree->GetCatalog());
    });
    connect(m_history, &HistoryPane::Chosen, this, show);
    connect(m_history, &HistoryPane::SaveAsked, this, [this] {
        if (ConnectionPage* page = GetPage())
            m_history->SaveQuery(page->GetEditor().toPlainText());
    });
}

// --- texts ---------------------------------------------------------------------------------------

void MainWindow::Relabel() {
    std::size_t index = 0;
    std::size_t menu = 0;
    for (const MenuEntry& entry : GetMenus()) {
        m_menus[menu++]->setTitle(Label(entry.text));
        for (const ActionEntry& command : entry.actions)
            if (QAction* const action = m_actions[index++]; command.text != 0)
                action->setText(Label(command.text).section('\t', 0, 0));
    }
    m_recent->setTitle(Label(IDS_VQ_N_M_RECENT));
    m_languages->setTitle(Label(IDS_VQ_M_LANGUAGE).remove("..."));
    m_toolBar->setWindowTitle(Label(IDS_VQ_N_TOOL_BAR));
    const UINT titles[] = {IDS_VQ_C_TREE, IDS_VQ_N_HISTORY, IDS_VQ_P_VALUE};
    for (std::size_t i = 0; i < std::size(titles); ++i)
        m_docks.at(i)->setWindowTitle(Label(titles[i]));
    m_welcome->setText(Label(IDS_VQ_N_WELCOME));
    m_tabs->tabBar()->setAccessibleName(Label(IDS_VQ_N_CONNECTIONS));
    statusBar()->clearMessage(); // in the former language
    TurnDocks();
    ShowState();
}

/// The tree stands where a line of text begins.
void MainWindow::TurnDocks() {
    const bool isTurned = layoutDirection() == Qt::RightToLeft;
    if (isTurned == m_areDocksTurned)
        return;
    m_areDocksTurned = isTurned;
    for (QDockWidget* dock : m_docks) {
        const Qt::DockWidgetArea area = dockWidgetArea(dock);
        if (area == Qt::LeftDockWidgetArea || area == Qt::RightDockWidgetArea)
            addDockWidget(area == Qt::LeftDockWidgetArea ? Qt::RightDockWidgetArea
                                                         : Qt::LeftDockWidgetArea,
                          dock);
    }
    tabifyDockWidget(m_docks[0], m_docks[1]);
    m_docks[0]->raise();
}

/// The menus' texts of help, which are empty, would wipe the status line's text away.
bool MainWindow::event(QEvent* event) {
    return event->type() == QEvent::StatusTip || QMainWindow::event(event);
}

void MainWindow::changeEvent(QEvent* event) {
    if (event->type() == QEvent::LanguageChange && m_tabs)
        Relabel();
    QMainWindow::changeEvent(event);
}

void MainWindow::FillRecent() {
    m_recent->clear();
    const std::vector<std::string> names = RecentDatabases().GetAll();
    for (auto name = names.rbegin(); name != names.rend(); ++name)
        m_recent->addAction(MenuText(QString::fromStdString(*name)), this, [this, file = *name] {
            OpenConnection({file, ""});
        });
    m_recent->addSeparator();
    for (const std::string& name : ListSavedConnections())
        m_recent->addAction(MenuText(QString::fromStdString(name)), this, [this, name] {
            if (const auto connection = OpenSavedConnection(this, name))
                OpenConnection(*connection);
        });
}

void MainWindow::FillLanguages() {
    m_languages->clear();
    const CString current = GetUILanguage();
    for (const SInstalledLanguage& language : GetInstalledLanguages(kTextLibraries)) {
        const QString code = QString::fromLatin1(static_cast<const char*>(language.m_strCode));
        QAction* const action =
            m_languages->addAction(QString::fromUtf8(static_cast<const char*>(language.m_strName)),
                                   this, [this, code] { ChooseLanguage(code); });
        action->setCheckable(true);
        action->setChecked(language.m_strCode == current);
    }
}

void MainWindow::ChooseLanguage(const QString& code) {
    if (!SetTextLanguage(code))
        QMessageBox::warning(this, Label(IDS_VQ_APP), Label(IDS_VQ_L_NOT_SAVED));
}

// --- connections ---------------------------------------------------------------------------------

ConnectionPage* MainWindow::GetPage() const {
    return qobject_cast<ConnectionPage*>(m_tabs->currentWidget());
}

bool MainWindow::OpenConnection(const Connection& connection, const std::string& sql) {
    const auto server = std::make_shared<SqlServer>(SqlServer::Other);
    if (!RunTask(
            this, IDS_VQ_N_OPENING,
            [server, connection](Progress&) { *server = FindServer(connection); }, false))
        return false;
    if (!connection.file.empty())
        RecentDatabases().Add(connection.file, connection.file);
    AddPage(connection, *server, sql);
    return true;
}

void MainWindow::AddPage(const Connection& connection, SqlServer server, const std::string& sql) {
    auto* const page = new ConnectionPage(connection, server, m_tabs);
    connect(page, &ConnectionPage::StatusChanged, this, [this, page](const QString& text) {
        if (page == GetPage())
            ShowStatus(text);
    });
    connect(page, &ConnectionPage::Changed, this, [this, page] {
        m_tabs->setTabText(m_tabs->indexOf(page), MenuText(page->GetTitle()));
        if (page == GetPage())
            ShowState();
    });
    connect(page, &ConnectionPage::Ran, m_history, &HistoryPane::Add);
    connect(page, &ConnectionPage::CatalogChanged, m_tree, &CatalogTree::Refresh);
    connect(&page->GetResult(), &ResultView::CurrentChanged, this, [this, page] {
        if (page == GetPage())
            Guard(this, [&] { m_link->Show(page); });
    });
    connect(page, &ConnectionPage::Outdated, this, [this, page] {
        if (page != GetPage() || m_link->Leave())
            page->ReadAgain();
    });
    connect(&page->GetResult(), &ResultView::ValueWanted, this, &MainWindow::ShowValue);
    for (const auto menu : {2U, 3U}) // of a cell, and of copying
        for (QAction* action : m_menus[menu]->actions())
            page->GetResult().addAction(action);
    for (QAction* action : m_actions)
        if (action->shortcutContext() == Qt::WidgetWithChildrenShortcut)
            page->addAction(action);
    page->GetEditor().setPlainText(QString::fromStdString(sql));
    const int index = m_tabs->addTab(page, MenuText(page->GetTitle()));
    m_tabs->setTabToolTip(index, Isolated(QString::fromStdString(connection.GetDisplayName())));
    m_tabs->setCurrentIndex(index);
    PageChanged();
    page->GetEditor().setFocus();
    const CString name = connection.GetDisplayName().c_str();
    GetGlobals().SetGlobalVarValue(CGlobalVars::TLXAO_CONNECT_ID, &name);
}

void MainWindow::PageChanged() {
    ConnectionPage* const page = GetPage();
    m_tabs->setVisible(page != nullptr);
    m_welcome->setVisible(page == nullptr);
    m_tree->SetConnection(page ? page->GetConnection() : Connection());
    ShowStatus(Label(page ? IDS_VQ_W_TYPE : IDS_VQ_W_READY));
    m_link->Show(page);
    ShowState();
}

void MainWindow::Open() {
    if (const QString file = AskForDatabase(this); !file.isEmpty())
        OpenConnection({file.toStdString(), ""});
}

void MainWindow::Connect() {
    ConnectForm form(this);
    if (form.exec() == QDialog::Accepted)
        OpenConnection(form.GetConnection());
}

void MainWindow::NewTab() {
    if (const ConnectionPage* const page = GetPage())
        AddPage(page->GetConnection(), page->GetServer(), {});
}

void MainWindow::CloseTab(int index) {
    auto* const page =
        qobject_cast<ConnectionPage*>(index < 0 ? m_tabs->currentWidget() : m_tabs->widget(index));
    if (!page)
        return;
    m_tabs->setCurrentWidget(page);
    if (!m_link->Leave() || !page->Leave())
        return;
    m_tabs->removeTab(m_tabs->indexOf(page));
    page->deleteLater();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile())
            OpenConnection({url.toLocalFile().toStdString(), ""});
}

void MainWindow::closeEvent(QCloseEvent* event) {
    while (GetPage() != nullptr) {
        const int before = m_tabs->count();
        CloseTab(-1);
        if (m_tabs->count() == before) {
            event->ignore();
            return;
        }
    }
    StorePlaces();
    event->accept();
}

// --- commands ------------------------------------------------------------------------------------

void MainWindow::RunPieces(SqlEditor::Which which) {
    if (m_link->Leave())
        GetPage()->Run(GetPage()->GetEditor().GetPieces(which));
}

void MainWindow::EditVariables() {
    VariablesDialog dialog(this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    for (int i = 0; i < m_tabs->count(); ++i) // the markers may have changed
        qobject_cast<ConnectionPage*>(m_tabs->widget(i))->GetResult().ReadMarkers();
}

void MainWindow::ShowAbout() {
    QMessageBox::about(this, Label(IDS_VQ_APP), Label(IDS_VQ_ABOUT, {VNQUERY_VERSION}));
}

void MainWindow::NextPane() {
    SqlEditor& editor = GetPage()->GetEditor();
    if (editor.hasFocus())
        GetPage()->GetResult().GetList().SetFocus();
    else
        editor.setFocus();
}

void MainWindow::ShowValue() {
    m_docks.back()->show();
    m_docks.back()->raise();
    auto* const text = m_value->findChild<QPlainTextEdit*>();
    (text->isVisible() ? static_cast<QWidget*>(text) : m_value->findChild<QComboBox*>())
        ->setFocus();
}

void MainWindow::WriteChanges() {
    if (m_link->Leave())
        GetPage()->GetResult().WriteChanges();
}

// --- what the page reports -----------------------------------------------------------------------

void MainWindow::ShowStatus(const QString& text) { statusBar()->showMessage(text); }

void MainWindow::ShowState() {
    ConnectionPage* const page = GetPage();
    unsigned state = 0;
    if (page) {
        ResultView& result = page->GetResult();
        CellPlace place;
        const auto add = [&](bool holds, CommandNeeds need) { state |= holds ? need : 0U; };
        add(true, kNeedsPage);
        add(page->IsBusy(), kNeedsBusy);
        add(!page->IsBusy(), kNeedsIdle);
        add(result.HasResult(), kNeedsResult);
        add(result.GetCurrentPlace(place), kNeedsCell);
        add(result.IsCurrentEditable(), kNeedsEditable);
        add(result.CanChangeRows(), kNeedsTable);
        add(!result.GetDocument().GetEdits().IsEmpty(), kNeedsChanges);
        add(page->HasUncommitted(), kNeedsUncommitted);
    }
    std::size_t index = 0;
    for (const MenuEntry& entry : GetMenus())
        for (const ActionEntry& command : entry.actions)
            if (QAction* const action = m_actions[index++]; command.text != 0) {
                action->setEnabled((command.needs & ~state) == 0);
                action->setChecked(page && command.isChecked && command.isChecked(*page));
            }

    if (page) {
        const Connection& shown = page->GetConnection();
        const bool hasName = shown.file.empty() || !shown.name.empty();
        std::string name = hasName ? shown.GetShortName() : shown.file;
        for (std::size_t i = 0; (i = name.find("[*]", i)) != std::string::npos; i += 6)
            name.insert(i, "[*]"); // Qt's mark for changes, unless it is doubled
        setWindowTitle(Label(IDS_VQ_W_TITLE, {name + "[*]"}));
    } else {
        setWindowTitle(Label(IDS_VQ_APP));
    }
    const std::size_t changes = page ? page->GetResult().GetDocument().GetEdits().GetCount() : 0;
    setWindowModified(changes > 0);
    m_changes->setText(changes == 0 && page && page->HasUncommitted() ? Label(IDS_VQ_N_UNCOMMITTED)
                       : changes == 0                                 ? Label(IDS_VQ_W_NO_CHANGES)
                       : changes == 1                                 ? Label(IDS_VQ_W_CHANGE)
                                      : Label(IDS_VQ_W_CHANGES, {GroupDigits(changes)}));
    m_rows->clear();
    if (!page || !page->GetResult().HasResult())
        return;
    ResultList& list = page->GetResult().GetList();
    const int row = list.GetCurrentRow();
    const std::string rows = GroupDigits(static_cast<std::uint64_t>(list.GetCount()));
    m_rows->setText(
        row < 0 ? Label(IDS_VQ_W_ROWS, {rows})
                : Label(IDS_VQ_W_ROW_OF, {GroupDigits(static_cast<std::uint64_t>(row) + 1), rows}));
}

// --- places --------------------------------------------------------------------------------------

void MainWindow::RestorePlaces() {
    const auto read = [](const char* name) {
        const CString text = VNGetProfileString(kPlacesRoot, kPlacesSection, name, "");
        return QByteArray::fromBase64(QByteArray(static_cast<const char*>(text)));
    };
    restoreGeometry(read("Geometry"));
    restoreState(read("State"));
}

void MainWindow::StorePlaces() const {
    VNWriteProfileString(kPlacesRoot, kPlacesSection, "Geometry", saveGeometry().toBase64());
    VNWriteProfileString(kPlacesRoot, kPlacesSection, "State", saveState().toBase64());
}

} // namespace vnquery
