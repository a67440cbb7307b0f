#include "app/mainwindow.h"

#include "app/displaytext.h"
#include "app/historyview.h"
#include "app/parametersetview.h"
#include "app/resultfeed.h"
#include "app/screenshot.h"
#include "app/session.h"
#include "app/traceview.h"
#include "app/userinputcontrol.h"
#include "app/valuetreeview.h"
#include "drivers/dfsource.h"
#include "filework/filework.h"
#include "map/mapbackground.h"
#include "map/mapview.h"

#include "devicecontrol/guicentral.h"
#include "valuewidgets/undorecordingcontrolbase.h"
#include "ztbase/brix/texts.h"

#include <QActionGroup>
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QScrollArea>
#include <QShortcut>
#include <QStatusBar>
#include <QTableWidget>
#include <QToolBar>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>
#include <iterator>
#include <utility>

namespace workbench {

namespace {

/// An operator goes back a few edits; a host that runs for weeks must not keep all of them.
constexpr int mostEditsKept = 1000;

/// The first widget in the focus chain below @p area that takes the focus by key.
QWidget* firstFocusWidget(QWidget* area)
{
    QWidget* candidate = area;
    do {
        const bool takesFocus = (candidate->focusPolicy() & Qt::TabFocus) != 0 && candidate->isEnabled();
        if (takesFocus && candidate->isVisible() && (candidate == area || area->isAncestorOf(candidate)))
            return candidate;
        candidate = candidate->nextInFocusChain();
    } while (candidate != area);
    return nullptr;
}

} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
    , m_files(new FileWork(this))
{
    setObjectName(QStringLiteral("MainWindow"));
    setWindowTitle(tr("DF/Locate Workbench"));
    setDockNestingEnabled(true);
    addDocks();
    addStatusBar();
    addFileMenu();
    addEditMenu();
    addViewMenu();
    addHelpMenu();
    addFocusKeys();
    m_undoStack.setUndoLimit(mostEditsKept);
    UndoRecordingControlBase::SetUndoStack(&m_undoStack);
    GuiCentral::Instance()->SetMainWidget(this);
    const QFontMetrics font = fontMetrics();
    resize(180 * font.averageCharWidth(), 48 * font.height());
}

MainWindow::~MainWindow()
{
    GuiCentral::Instance()->SetMainWidget(nullptr);
    UndoRecordingControlBase::SetUndoStack(nullptr);
}

void MainWindow::addDocks()
{
    // All areas are docks: none of them is the one that all others give way to.
    const auto addDock = [this](const char* name, const QString& title, QWidget* content) {
        auto* const dock = new QDockWidget(title, this);
        dock->setObjectName(QLatin1String(name));
        dock->setWidget(content);
        return dock;
    };
    m_panelDock =
        addDock("PanelDock", tr("Settings"), textPanel(QStringLiteral("NoComponent"), tr("No component is loaded.")));
    m_valueTreeView = new ValueTreeView;
    QDockWidget* const values = addDock("ValueTreeDock", tr("Value tree"), m_valueTreeView);
    m_traceView = new TraceView;
    QDockWidget* const traces = addDock("TraceDock", tr("Traces"), m_traceView);
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea); // a panel is high
    addDockWidget(Qt::LeftDockWidgetArea, m_panelDock);
    addDockWidget(Qt::RightDockWidgetArea, values);
    addDockWidget(Qt::BottomDockWidgetArea, traces);
    connect(m_valueTreeView, &ValueTreeView::editRefused, this, &MainWindow::showMessage);
}

void MainWindow::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    // Sizes of docks count from the first layout on only.
    if (std::exchange(m_docksAreSized, true))
        return;
    const QFontMetrics font = fontMetrics();
    const auto dock = [this](const char* name) { return findChild<QDockWidget*>(QLatin1String(name)); };
    resizeDocks({m_panelDock, dock("ValueTreeDock")}, {50 * font.averageCharWidth(), 130 * font.averageCharWidth()},
                Qt::Horizontal);
    resizeDocks({dock("ValueTreeDock"), dock("TraceDock")}, {28 * font.height(), 14 * font.height()}, Qt::Vertical);
    if (QDockWidget* const parameterSets = dock("ParameterSetDock"))
        resizeDocks({dock("TraceDock"), parameterSets}, {60 * font.averageCharWidth(), 70 * font.averageCharWidth()},
                    Qt::Horizontal);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    QMainWindow::closeEvent(event);
    emit closed();
}

void MainWindow::addStatusBar()
{
    m_inputMode = new QLabel;
    m_inputMode->setObjectName(QStringLiteral("InputMode"));
    m_driverName = new QLabel(tr("No driver"));
    m_driverName->setObjectName(QStringLiteral("DriverName"));
    m_lastResult = new QLabel(tr("No result yet"));
    m_lastResult->setObjectName(QStringLiteral("LastResult"));
    for (QLabel* const label : {m_lastResult, m_inputMode, m_driverName})
        addToStatusBar(label);
}

void MainWindow::addToStatusBar(QLabel* label)
{
    label->setTextFormat(Qt::PlainText); // files name drivers
    label->setMargin(fontMetrics().averageCharWidth() / 2);
    label->setFrameShape(QFrame::StyledPanel);
    label->setFrameShadow(QFrame::Sunken);
    statusBar()->addPermanentWidget(label);
}

void MainWindow::addFileMenu()
{
    m_fileMenu = menuBar()->addMenu(tr("&File"));
    m_fileMenu->addAction(tr("&Save screenshot …"), this, &MainWindow::saveScreenshotAs, QKeySequence::Print);
    m_fileMenu->addSeparator();
    m_fileMenu->addAction(tr("&Quit"), this, &QWidget::close, QKeySequence(QStringLiteral("Ctrl+Q")));
}

void MainWindow::addEditMenu()
{
    QMenu* const menu = menuBar()->addMenu(tr("&Edit"));
    // The actions that the stack itself would make take an ampersand in the text of an edit for a mnemonic.
    const auto add = [&](const QString& verb, QKeySequence::StandardKey keys, auto step, auto canChanged,
                         auto textChanged) {
        QAction* const action = menu->addAction(verb, &m_undoStack, step);
        action->setShortcuts(keys);
        action->setEnabled(false);
        connect(&m_undoStack, canChanged, action, &QAction::setEnabled);
        connect(&m_undoStack, textChanged, action, [action, verb](const QString& edit) {
            action->setText(edit.isEmpty() ? verb : verb + QLatin1Char(' ') + Brix::MenuText(edit));
        });
    };
    add(tr("&Undo"), QKeySequence::Undo, &QUndoStack::undo, &QUndoStack::canUndoChanged, &QUndoStack::undoTextChanged);
    add(tr("&Redo"), QKeySequence::Redo, &QUndoStack::redo, &QUndoStack::canRedoChanged, &QUndoStack::redoTextChanged);
    menu->addSeparator();
    menu->addAction(tr("&Find value"), this, &MainWindow::findValue, QKeySequence::Find);
}

void MainWindow::findValue()
{
    auto* const dock = findChild<QDockWidget*>(QStringLiteral("ValueTreeDock"));
    dock->show();
    dock->raise(); // the map may lie on it
    m_valueTreeView->filterEdit()->setFocus(Qt::ShortcutFocusReason);
    m_valueTreeView->filterEdit()->selectAll();
}

void MainWindow::addViewMenu()
{
    m_viewMenu = menuBar()->addMenu(tr("&View"));
    const auto dock = [this](const char* name) { return findChild<QDockWidget*>(QLatin1String(name)); };
    addDockEntry(dock("PanelDock"), tr("&Settings"));
    addDockEntry(dock("ValueTreeDock"), tr("&Value tree"));
    addDockEntry(dock("TraceDock"), tr("&Traces"));
}

void MainWindow::addDockEntry(QDockWidget* dock, const QString& text)
{
    QAction* const entry = dock->toggleViewAction();
    entry->setText(text); // the dock's title has no mnemonic
    m_viewMenu->addAction(entry);
}

void MainWindow::addHelpMenu()
{
    m_helpMenu = menuBar()->addMenu(tr("&Help"));
    m_helpMenu->addAction(tr("&Hot keys"), this, &MainWindow::showHotKeys);
    m_helpMenu->addAction(tr("&About"), this, &MainWindow::showAbout);
}

void MainWindow::addFocusKeys()
{
    const auto addKeys = [this](const QKeySequence& keys, bool forward) {
        auto* const shortcut = new QShortcut(keys, this);
        connect(shortcut, &QShortcut::activated, this, [this, forward] { focusNextArea(forward); });
    };
    addKeys(QKeySequence(Qt::Key_F6), true);
    addKeys(QKeySequence(QStringLiteral("Shift+F6")), false);
}

/// Goes round the toolbars and docks that are visible and have something to focus.
void MainWindow::focusNextArea(bool forward)
{
    QList<QWidget*> areas;
    const auto toolBars = findChildren<QToolBar*>(QString(), Qt::FindDirectChildrenOnly);
    std::copy(toolBars.begin(), toolBars.end(), std::back_inserter(areas));
    const auto docks = findChildren<QDockWidget*>(QString(), Qt::FindDirectChildrenOnly);
    std::copy(docks.begin(), docks.end(), std::back_inserter(areas));
    if (!forward)
        std::reverse(areas.begin(), areas.end());
    const QWidget* const focused = QApplication::focusWidget();
    const auto current = std::find_if(areas.begin(), areas.end(), [focused](const QWidget* area) {
        return focused != nullptr && area->isAncestorOf(focused);
    });
    if (current != areas.end())
        std::rotate(areas.begin(), std::next(current), areas.end());
    for (QWidget* const area : qAsConst(areas)) {
        if (area->visibleRegion().isEmpty())
            continue; // a dock behind another one counts as visible
        if (QWidget* const target = firstFocusWidget(area)) {
            target->setFocus(Qt::TabFocusReason);
            return;
        }
    }
}

QWidget* MainWindow::textPanel(const QString& objectName, const QString& text) const
{
    auto* const label = new QLabel(text);
    label->setObjectName(objectName);
    label->setTextFormat(Qt::PlainText); // the text may name files and quote exceptions
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    label->setMargin(fontMetrics().height());
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

void MainWindow::place(QToolBar* toolBar, QWidget* panel)
{
    addToolBar(Qt::TopToolBarArea, toolBar);
    toolBar->show();
    if (!m_toolBarObstacle.isEmpty()) {
        toolBar->setEnabled(false);
        toolBar->setToolTip(m_toolBarObstacle);
    }
    QWidget* content = nullptr;
    if (panel == nullptr) {
        content = textPanel(QStringLiteral("NoPanel"), tr("This component has no settings panel."));
    } else {
        auto* const scrollArea = new QScrollArea; // a panel may be higher than the screen
        scrollArea->setWidgetResizable(true);
        scrollArea->setFrameShape(QFrame::NoFrame);
        scrollArea->setFocusPolicy(Qt::NoFocus); // the panel's fields take it, and scroll it
        scrollArea->setWidget(panel);
        content = scrollArea;
    }
    delete m_panelDock->widget();
    m_panelDock->setWidget(content);
}

void MainWindow::follow(Session& session)
{
    addInputModeMenu(session);
    DfDriver* const driver = session.driver();
    if (driver == nullptr) {
        m_toolBarObstacle = tr("There is no driver to measure with: the workbench was started offline.");
        m_driverName->setText(tr("Offline"));
        m_driverName->setToolTip(m_toolBarObstacle);
        return;
    }
    addDeviceMenu(*driver);
    m_feed = new ResultFeed(*driver, this);
    addMap(*driver);
    m_driverName->setText(beginningOf(driver->source().name()));
    connect(m_feed, &ResultFeed::arrived, this, &MainWindow::showResults);
    connect(driver, &DfDriver::resultPublished, this, &MainWindow::endMessageOfFailure);
    connect(driver, &DfDriver::measurementFailed, this, &MainWindow::showMeasuringFailure);
    connect(driver, &DfDriver::settingsRefused, this, &MainWindow::showMeasuringFailure);
}

void MainWindow::addDeviceMenu(DfDriver& driver)
{
    auto* const menu = new QMenu(tr("&Device"), this);
    menuBar()->insertMenu(m_helpMenu->menuAction(), menu);
    auto* const devices = new QActionGroup(menu);
    int index = 0;
    for (const DfDevice& device : driver.source().devices()) {
        constexpr int longest = 60; // characters
        const QString name = Brix::MenuText(Brix::OneLine(device.name, longest));
        QAction* const action = menu->addAction(QStringLiteral("&%1 %2").arg(index + 1).arg(name));
        action->setCheckable(true);
        action->setChecked(index == driver.currentDevice());
        devices->addAction(action);
        connect(action, &QAction::triggered, &driver, [&driver, index] { driver.selectDevice(index); });
        ++index;
    }
}

void MainWindow::addMap(const DfDriver& driver)
{
    m_mapView = new MapView;
    MapModel* const model = m_mapView->model();
    model->setStations(driver.source().stations());
    connect(m_feed, &ResultFeed::arrived, model, [model](const ResultBatch& batch) {
        model->setQualityThreshold(batch.qualityThreshold);
        model->addResults(batch.results, batch.history);
    });
    connect(m_mapView, &MapView::message, this, &MainWindow::showMessage);

    auto* const dock = new QDockWidget(tr("Map"), this);
    dock->setObjectName(QStringLiteral("MapDock"));
    dock->setWidget(m_mapView);
    tabifyDockWidget(findChild<QDockWidget*>(QStringLiteral("ValueTreeDock")), dock);
    dock->raise();
    addDockEntry(dock, tr("&Map"));
    addMapEntries();
}

void MainWindow::addMapEntries()
{
    auto* const open = new QAction(tr("Map &background …"), m_fileMenu);
    connect(open, &QAction::triggered, m_mapView, &MapView::chooseBackground);
    auto* const remove = new QAction(tr("&Remove map background"), m_fileMenu);
    remove->setEnabled(false);
    connect(remove, &QAction::triggered, m_mapView->background(), &MapBackground::remove);
    connect(m_mapView->background(), &MapBackground::shownChanged, remove, &QAction::setEnabled);
    QAction* const first = m_fileMenu->actions().constFirst();
    m_fileMenu->insertActions(first, {open, remove});
    m_fileMenu->insertSeparator(first);
}

void MainWindow::offerParameterSets(Session& session, const QString& folder)
{
    auto* const view = new ParameterSetView(session.common(), componentRoot(), QStringLiteral("DF_Settings"),
                                            session.driver() == nullptr, folder);
    auto* const dock = new QDockWidget(tr("Parameter sets"), this);
    dock->setObjectName(QStringLiteral("ParameterSetDock"));
    dock->setWidget(view);
    splitDockWidget(findChild<QDockWidget*>(QStringLiteral("TraceDock")), dock, Qt::Horizontal);
    addDockEntry(dock, tr("&Parameter sets"));
    connect(view, &ParameterSetView::message, this, &MainWindow::showMessage);
}

void MainWindow::offerHistory(ResultHistory& history)
{
    auto* const view = new HistoryView(history);
    connect(m_feed, &ResultFeed::arrived, view,
            [view](const ResultBatch& batch) { view->follow(batch.results.back()); });
    auto* const dock = new QDockWidget(tr("History"), this);
    dock->setObjectName(QStringLiteral("HistoryDock"));
    dock->setWidget(view);
    tabifyDockWidget(findChild<QDockWidget*>(QStringLiteral("TraceDock")), dock);
    findChild<QDockWidget*>(QStringLiteral("TraceDock"))->raise();
    addDockEntry(dock, tr("&History"));

    m_historyState = new QLabel;
    m_historyState->setObjectName(QStringLiteral("HistorySummary"));
    addToStatusBar(m_historyState);
    showHistoryState(history);
    connect(&history, &ResultHistory::stateChanged, this, [this, &history] { showHistoryState(history); });
    connect(&history, &ResultHistory::message, this, &MainWindow::showMessage);
}

/// Messages come and go with the results; that results are not stored has to stay in view.
void MainWindow::showHistoryState(const ResultHistory& history)
{
    const QString trouble = history.trouble();
    m_historyState->setText(trouble.isEmpty() ? tr("Stored: %1").arg(history.storedCount()) : tr("Not stored"));
    m_historyState->setToolTip(asToolTip(trouble.isEmpty() ? history.file() : trouble));
}

void MainWindow::addInputModeMenu(Session& session)
{
    using Service = IVelmarGuiUserInputControlService;
    UserInputControl* const control = &session.userInputControl();
    QMenu* const menu = m_viewMenu->addMenu(tr("Operator &input"));
    auto* const modes = new QActionGroup(menu);
    const auto addMode = [&](const QString& text, Service::eUserInputMode mode) {
        QAction* const action = menu->addAction(text);
        action->setCheckable(true);
        action->setChecked(control->mode() == mode);
        modes->addAction(action);
        connect(action, &QAction::triggered, control, [control, mode] { control->setMode(mode); });
        const QString shown = tr("Input: %1").arg(QString(text).remove(QLatin1Char('&')).toLower());
        if (control->mode() == mode)
            m_inputMode->setText(shown);
        connect(control, &UserInputControl::si_setUserInputMode, this,
                [this, mode, shown](Service::eUserInputMode now) {
                    if (now == mode)
                        m_inputMode->setText(shown);
                });
    };
    addMode(tr("&Full"), Service::FullInput);
    addMode(tr("&Restricted"), Service::RestrictedInput);
    addMode(tr("&Locked"), Service::LockedInput);
    addMode(tr("&View switching only"), Service::ViewSwitchInput);
}

void MainWindow::showComponentFailure(const QString& reason)
{
    delete m_panelDock->widget();
    m_panelDock->setWidget(
        textPanel(QStringLiteral("ComponentFailure"), tr("The component cannot be used.\n\n%1").arg(reason)));
    showMessage(reason);
}

void MainWindow::showMessage(const QString& text)
{
    statusBar()->showMessage(beginningOf(text));
    statusBar()->setToolTip(asToolTip(text)); // the bar may be too short for it
    m_messageEndsWithResult = false;
}

/// The next result shows that it is over.
void MainWindow::showMeasuringFailure(const QString& text)
{
    showMessage(text);
    m_messageEndsWithResult = true;
}

/// At once: what is told after it shall not end with it.
void MainWindow::endMessageOfFailure()
{
    // What came of a file is still to be read in the middle of cyclic measuring.
    if (m_messageEndsWithResult)
        showMessage(QString());
}

void MainWindow::showResults(const ResultBatch& batch)
{
    const DfResult& result = batch.results.back();
    m_resultCount += static_cast<int>(batch.results.size());
    const auto bearings = std::count_if(result.stations.begin(), result.stations.end(),
                                        [](const StationResult& station) { return station.azimuth.has_value(); });
    const QString time =
        result.time.isValid() ? result.time.toString(QStringLiteral("HH:mm:ss")) + tr(" UTC") : tr("time unknown");
    m_lastResult->setText(tr("Result %1: %2, %3 of %4 stations with a bearing")
                              .arg(m_resultCount)
                              .arg(time)
                              .arg(bearings)
                              .arg(result.stations.size()));
}

QImage MainWindow::picture()
{
    if (m_feed != nullptr)
        m_feed->flush();
    return grab().toImage();
}

// Dialogs are opened, not executed: a dialog that waits in a function would outlive a window that is closed meanwhile.

void MainWindow::saveScreenshotAs()
{
    auto* const dialog = new QFileDialog(this, tr("Save screenshot"), QString(), tr("PNG pictures (*.png)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(QStringLiteral("png"));
    dialog->selectFile(QStringLiteral("dflocate-workbench.png"));
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& file) {
        m_files->run([file, picture = picture()] { return saveScreenshot(picture, file); },
                     [this, file](const std::optional<QString>& failure) {
                         showMessage(failure ? *failure : tr("%1: the picture is saved.").arg(file));
                     });
    });
    dialog->open();
}

void MainWindow::showHotKeys()
{
    const std::vector<HotKeyInfo> hotKeys = GuiCentral::Instance()->GetListedHotKeys();
    auto* const table = new QTableWidget(static_cast<int>(hotKeys.size()), 3);
    table->setObjectName(QStringLiteral("HotKeys"));
    table->setHorizontalHeaderLabels({tr("Keys"), tr("What they do"), tr("Group")});
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setTabKeyNavigation(false);
    table->verticalHeader()->hide();
    int row = 0;
    for (const HotKeyInfo& hotKey : hotKeys) {
        table->setItem(row, 0, new QTableWidgetItem(hotKey.keys));
        table->setItem(row, 1, new QTableWidgetItem(hotKey.text));
        table->setItem(row, 2, new QTableWidgetItem(hotKey.group));
        ++row;
    }
    table->resizeColumnsToContents();
    table->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);

    auto* const dialog = new QDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("Hot keys"));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    auto* const layout = new QVBoxLayout(dialog);
    layout->addWidget(table);
    layout->addWidget(buttons);
    dialog->resize(70 * fontMetrics().averageCharWidth(), 15 * fontMetrics().height());
    dialog->open();
}

void MainWindow::showAbout()
{
    auto* const box = new QMessageBox(this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(tr("About"));
    box->setText(tr("<b>DF/Locate Workbench %1</b><p>Loads a DF/Locate component, gives it a network of direction "
                    "finders and shows every value that moves.</p>")
                     .arg(QStringLiteral(DFLOCATE_VERSION)));
    box->open();
}

} // namespace workbench
