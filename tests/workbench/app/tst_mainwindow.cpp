#include "app/mainwindow.h"

#include "app/screenshot.h"
#include "app/session.h"
#include "app/tracemodel.h"
#include "app/traceview.h"
#include "app/userinputcontrol.h"
#include "app/valuetreemodel.h"
#include "app/valuetreeview.h"
#include "fakesource.h"
#include "map/mapbackground.h"
#include "map/mapview.h"

#include "devicecontrol/guicentral.h"
#include "support/freshtree.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"
#include "valuewidgets/undorecordingcontrolbase.h"

#include <QDockWidget>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QTableView>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>
#include <QUndoStack>

using testsupport::FreshTree;
using workbench::MainWindow;
using workbench::Session;

namespace {

QAction* action(const MainWindow& window, const QString& text)
{
    const auto actions = window.findChildren<QAction*>();
    for (QAction* const candidate : actions) {
        if (candidate->text() == text)
            return candidate;
    }
    return nullptr;
}

QString labelText(const MainWindow& window, const char* name)
{
    const auto* const label = window.findChild<QLabel*>(QLatin1String(name));
    return label ? label->text() : QStringLiteral("(no such label)");
}

void showActive(MainWindow& window)
{
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
}

/// Starts the component that comes with the program.
void startComponent(Session& session, MainWindow& window)
{
    window.follow(session);
    const auto error = session.start(QStringLiteral(COMPONENT),
                                     [&window](QToolBar* toolBar, QWidget* panel) { window.place(toolBar, panel); });
    QVERIFY2(!error, error ? qPrintable(error->text()) : "");
}

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT
private slots:
    void theWindowIsTheHostsMainWidgetWhileItLives();
    void operatorEditsAreRecordedWhileTheWindowLives();
    void toolBarAndPanelAreShown();
    void aMissingPanelIsSaid();
    void aFailureOfTheComponentIsShown();
    void aComponentThatFailsAfterPlacingLeavesAWindowThatWorks();
    void theDriverAndTheLastResultAreShown();
    void aFailedMeasurementIsShown();
    void offlineIsShown();
    void aRefusedEditIsShown();
    void refusedSettingsAreShown();
    void theInputModeIsChosenInTheMenu();
    void theDevicesOfTheNetworkAreInTheirMenu();
    void offlineThereAreNoDevices();
    void theMapShowsTheStationsAndTheResultsOfTheDriver();
    void theMapUsesTheQualityThresholdOfTheDriver();
    void aMapBackgroundIsOpenedAndRemovedFromTheMenu();
    void offlineThereIsNoMap();
    void aValueIsFoundBehindTheMap();
    void theParameterSetsHaveADock();
    void everyMenuAndEntryHasItsKey();
    void theWindowIsQuitByKeyboard();
    void aValueIsFoundAndEditedByKeyboard();
    void f6GoesRoundTheAreas();
    void docksAreHiddenByTheMenu();
    void theHotKeysAreListed();
    void aboutTellsTheVersion();
    void ctrlDStartsAMeasurementOnceEnabledWasAnnounced();
    void theWindowMayGoBeforeTheSession();
    void theSessionMayGoBeforeTheWindow();
    void aScreenshotIsAPictureOfTheWindow();
    void aScreenshotThatCannotBeWrittenIsSaid();
};

void TestMainWindow::theWindowIsTheHostsMainWidgetWhileItLives()
{
    const FreshTree tree;
    {
        MainWindow window;
        QCOMPARE(GuiCentral::Instance()->GetMainWidget(), &window);
    }
    QVERIFY(GuiCentral::Instance()->GetMainWidget() == nullptr);
}

void TestMainWindow::operatorEditsAreRecordedWhileTheWindowLives()
{
    const FreshTree tree;
    {
        MainWindow window;
        QUndoStack* const stack = UndoRecordingControlBase::GetUndoStack();
        QVERIFY(stack != nullptr);
        stack->push(new QUndoCommand("span"));
        QVERIFY(action(window, "&Undo span")->isEnabled());
    }
    QVERIFY(UndoRecordingControlBase::GetUndoStack() == nullptr);
}

void TestMainWindow::toolBarAndPanelAreShown()
{
    const FreshTree tree;
    MainWindow window;
    auto* const toolBar = new QToolBar;
    auto* const panel = new QLabel("panel");
    window.place(toolBar, panel);
    showActive(window);
    QCOMPARE(window.toolBarArea(toolBar), Qt::TopToolBarArea);
    QVERIFY(toolBar->isVisible());
    QVERIFY(panel->isVisible());
    QVERIFY(window.findChild<QDockWidget*>("PanelDock")->isAncestorOf(panel));
}

void TestMainWindow::aMissingPanelIsSaid()
{
    const FreshTree tree;
    MainWindow window;
    QCOMPARE(labelText(window, "NoComponent"), QStringLiteral("No component is loaded."));
    window.place(new QToolBar, nullptr);
    QCOMPARE(labelText(window, "NoPanel"), QStringLiteral("This component has no settings panel."));
}

void TestMainWindow::aFailureOfTheComponentIsShown()
{
    const FreshTree tree;
    MainWindow window;
    showActive(window);
    window.showComponentFailure("lib.so: there is no such component library.");
    const auto* const label = window.findChild<QLabel*>("ComponentFailure");
    QVERIFY(label != nullptr && label->isVisible());
    QCOMPARE(label->text(),
             QStringLiteral("The component cannot be used.\n\nlib.so: there is no such component library."));
    QCOMPARE(window.statusBar()->currentMessage(), QStringLiteral("lib.so: there is no such component library."));
}

void TestMainWindow::aComponentThatFailsAfterPlacingLeavesAWindowThatWorks()
{
    const FreshTree tree;
    MainWindow window;
    Session session(std::make_unique<FakeSource>());
    const auto error = session.start(QStringLiteral(FIXTURE_FOLDER "/announcementthrows.so"),
                                     [&window](QToolBar* toolBar, QWidget* panel) { window.place(toolBar, panel); });
    QVERIFY(error);
    window.showComponentFailure(error->text());
    showActive(window);
    QVERIFY(window.findChildren<QToolBar*>().isEmpty());
    QVERIFY(window.findChild<QLabel*>("ComponentFailure")->isVisible());
}

void TestMainWindow::theDriverAndTheLastResultAreShown()
{
    const FreshTree tree;
    MainWindow window;
    Session session(std::make_unique<FakeSource>());
    window.follow(session);
    QCOMPARE(labelText(window, "DriverName"), QStringLiteral("Fake network"));
    QCOMPARE(labelText(window, "LastResult"), QStringLiteral("No result yet"));
    window.showMessage("A file is saved.");
    emit session.driver()->resultPublished(FakeSource::result());
    QCOMPARE(labelText(window, "LastResult"), QStringLiteral("Result 1: 07:08:09 UTC, 1 of 2 stations with a bearing"));
    QCOMPARE(window.statusBar()->currentMessage(), QStringLiteral("A file is saved."));
    workbench::DfResult untimed = FakeSource::result();
    untimed.time = QTime();
    emit session.driver()->resultPublished(untimed);
    QTRY_COMPARE(labelText(window, "LastResult"),
                 QStringLiteral("Result 2: time unknown, 1 of 2 stations with a bearing"));
}

void TestMainWindow::aFailedMeasurementIsShown()
{
    const FreshTree tree;
    MainWindow window;
    Session session(std::make_unique<FakeSource>("The network is down."));
    startComponent(session, window);
    session.toolBar()->findChild<QToolButton*>("DFStarter")->click();
    QTRY_COMPARE(window.statusBar()->currentMessage(), QStringLiteral("The network is down."));
    emit session.driver()->resultPublished(FakeSource::result());
    QCOMPARE(window.statusBar()->currentMessage(), QString());
    QCOMPARE(window.statusBar()->toolTip(), QString());
}

void TestMainWindow::offlineIsShown()
{
    const FreshTree tree;
    MainWindow window;
    Session session(nullptr);
    window.follow(session);
    QCOMPARE(labelText(window, "DriverName"), QStringLiteral("Offline"));
}

void TestMainWindow::aRefusedEditIsShown()
{
    const FreshTree tree;
    tree.add<values::ValueSelection>("/x");
    MainWindow window;
    workbench::ValueTreeModel* const model = window.valueTreeView()->model();
    model->setData(model->indexOf("/x", workbench::ValueTreeModel::ValueColumn), "y");
    QCOMPARE(window.statusBar()->currentMessage(), QStringLiteral("/x has no item \"y\"."));
}

void TestMainWindow::theInputModeIsChosenInTheMenu()
{
    const FreshTree tree;
    MainWindow window;
    Session session(nullptr);
    window.follow(session);
    QVERIFY(action(window, "&Full")->isChecked());
    action(window, "&Locked")->trigger();
    QCOMPARE(session.userInputControl().mode(), workbench::IVelmarGuiUserInputControlService::LockedInput);
    QVERIFY(action(window, "&Locked")->isChecked());
    QVERIFY(!action(window, "&Full")->isChecked());
}

void TestMainWindow::refusedSettingsAreShown()
{
    const FreshTree tree;
    MainWindow window;
    Session session(std::make_unique<FakeSource>());
    window.follow(session);
    emit session.driver()->settingsRefused("It is not good.");
    QCOMPARE(window.statusBar()->currentMessage(), QStringLiteral("It is not good."));
}

void TestMainWindow::theDevicesOfTheNetworkAreInTheirMenu()
{
    const FreshTree tree;
    MainWindow window;
    Session session(std::make_unique<FakeSource>());
    window.follow(session);
    const QList<QAction*> menus = window.menuBar()->actions();
    QCOMPARE(menus.at(menus.size() - 2)->text(), QStringLiteral("&Device"));
    const QList<QAction*> devices = menus.at(menus.size() - 2)->menu()->actions();
    QCOMPARE(devices.size(), 1);
    QCOMPARE(devices[0]->text(), QStringLiteral("&1 Standard"));
    QVERIFY(devices[0]->isChecked());
}

void TestMainWindow::offlineThereAreNoDevices()
{
    const FreshTree tree;
    MainWindow window;
    Session session(nullptr);
    window.follow(session);
    for (const QAction* const menu : window.menuBar()->actions())
        QVERIFY(menu->text() != "&Device");
}

void TestMainWindow::theMapShowsTheStationsAndTheResultsOfTheDriver()
{
    const FreshTree tree;
    MainWindow window;
    auto session = std::make_unique<Session>(std::make_unique<FakeSource>());
    window.follow(*session);
    showActive(window);
    auto* const map = window.findChild<workbench::MapView*>();
    QVERIFY(map != nullptr);
    QTRY_VERIFY(!map->visibleRegion().isEmpty());
    QCOMPARE(map->model()->rowCount(), 2);
    emit session->driver()->resultPublished(FakeSource::result());
    QCOMPARE(map->model()->station(1)->azimuth, std::optional(278.4));
    session.reset(); // may go first
    QCOMPARE(map->model()->rowCount(), 2);
}

void TestMainWindow::theMapUsesTheQualityThresholdOfTheDriver()
{
    const FreshTree tree;
    MainWindow window;
    Session session(std::make_unique<FakeSource>());
    window.follow(session);
    auto* const threshold = dynamic_cast<values::IntValue*>(
        values::Tree::Instance()->FindValue(workbench::handlerRoot() + "Config/Quality"));
    QVERIFY(threshold != nullptr);
    threshold->SetState(values::StateOrdinary, nullptr);
    threshold->SetValue(90, nullptr);
    emit session.driver()->resultPublished(FakeSource::result());
    const workbench::MapModel* const model = window.findChild<workbench::MapView*>()->model();
    QCOMPARE(model->qualityThreshold(), std::optional(90));
    QCOMPARE(model->qualityThreshold(), session.driver()->settings().qualityThreshold);
}

void TestMainWindow::aMapBackgroundIsOpenedAndRemovedFromTheMenu()
{
    const FreshTree tree;
    MainWindow window;
    Session session(std::make_unique<FakeSource>());
    window.follow(session);
    showActive(window);
    const QTemporaryDir folder;
    QFile file(folder.filePath("coast.geojson"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{\"type\": \"LineString\", \"coordinates\": [[-10, 40], [20, 60]]}");
    file.close();
    QAction* const remove = action(window, "&Remove map background");
    QVERIFY(!remove->isEnabled());
    action(window, "Map &background …")->trigger();
    auto* const dialog = window.findChild<QFileDialog*>("MapBackgroundDialog");
    QVERIFY(dialog != nullptr);
    emit dialog->fileSelected(file.fileName());
    dialog->close();
    QTRY_COMPARE(window.statusBar()->currentMessage(), file.fileName() + ": shown as background (shapes: 1).");
    QVERIFY(window.mapView()->background()->isShown());
    QVERIFY(remove->isEnabled());
    remove->trigger();
    QVERIFY(!window.mapView()->background()->isShown());
    QVERIFY(!remove->isEnabled());
}

void TestMainWindow::offlineThereIsNoMap()
{
    const FreshTree tree;
    MainWindow window;
    Session session(nullptr);
    window.follow(session);
    QCOMPARE(window.findChild<workbench::MapView*>(), nullptr);
}

void TestMainWindow::aValueIsFoundBehindTheMap()
{
    const FreshTree tree;
    MainWindow window;
    Session session(std::make_unique<FakeSource>());
    window.follow(session);
    showActive(window);
    QTRY_VERIFY(window.valueTreeView()->visibleRegion().isEmpty()); // a dock behind another one is not hidden
    QTest::keyClick(&window, Qt::Key_F, Qt::ControlModifier);
    QTRY_COMPARE(QApplication::focusWidget(), window.valueTreeView()->filterEdit());
    QTRY_VERIFY(!window.valueTreeView()->visibleRegion().isEmpty());
}

void TestMainWindow::theParameterSetsHaveADock()
{
    const FreshTree tree;
    MainWindow window;
    const QTemporaryDir folder;
    {
        Session session(nullptr);
        window.follow(session);
        window.offerParameterSets(session, folder.path());
        showActive(window);
        QVERIFY(window.findChild<QPushButton*>("RequestParameterSet")->isVisible());
        QTest::keyClicks(window.findChild<QLineEdit*>("ParameterSetName"), "none");
        QTest::keyClick(window.findChild<QLineEdit*>("ParameterSetName"), Qt::Key_Return);
        QTRY_COMPARE(window.statusBar()->currentMessage(),
                     QStringLiteral("The component has not reported any settings that could be saved."));
    }
    QVERIFY(!window.findChild<QPushButton*>("SaveParameterSet")->isEnabled()); // the session may go first
    action(window, "&Parameter sets")->trigger();
    QVERIFY(!window.findChild<QDockWidget*>("ParameterSetDock")->isVisible());
}

void TestMainWindow::everyMenuAndEntryHasItsKey()
{
    const FreshTree tree;
    MainWindow window;
    const QTemporaryDir folder;
    Session session(std::make_unique<FakeSource>());
    window.follow(session);
    window.offerParameterSets(session, folder.path());
    QList<QMenu*> menus;
    for (QAction* const entry : window.menuBar()->actions())
        menus += entry->menu();
    QCOMPARE(menus.size(), 5);
    for (const QMenu* const menu : qAsConst(menus)) {
        QVERIFY2(menu->title().contains('&'), qPrintable(menu->title()));
        QStringList keys;
        for (const QAction* const entry : menu->actions()) {
            if (entry->isSeparator())
                continue;
            const int mnemonic = entry->text().indexOf('&');
            QVERIFY2(mnemonic >= 0, qPrintable(entry->text()));
            keys += entry->text().mid(mnemonic + 1, 1).toLower();
        }
        QCOMPARE(keys.removeDuplicates(), 0);
    }
}

void TestMainWindow::theWindowIsQuitByKeyboard()
{
    const FreshTree tree;
    MainWindow window;
    showActive(window);
    QSignalSpy closed(&window, &MainWindow::closed);
    QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
    QTRY_VERIFY(!window.isVisible());
    QCOMPARE(closed.count(), 1);
}

void TestMainWindow::aValueIsFoundAndEditedByKeyboard()
{
    const FreshTree tree;
    tree.add<values::ValueSelection>("/A/mode")->AddItems({"Normal", "Gate"});
    auto* const span = tree.add<values::IntValue>("/A/span");
    MainWindow window;
    showActive(window);
    QTest::keyClick(&window, Qt::Key_F, Qt::ControlModifier);
    QTRY_COMPARE(QApplication::focusWidget(), window.valueTreeView()->filterEdit());
    QTest::keyClicks(QApplication::focusWidget(), "span");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QTreeView* const view = window.valueTreeView()->tree();
    QCOMPARE(QApplication::focusWidget(), view);
    QTest::keyClick(view, Qt::Key_Home);
    QTest::keyClick(view, Qt::Key_Down);
    QTest::keyClick(view, Qt::Key_F2);
    QTest::keyClicks(QApplication::focusWidget(), "12");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QTRY_COMPARE(span->GetValue(), 12);
}

void TestMainWindow::f6GoesRoundTheAreas()
{
    const FreshTree tree;
    tree.add<values::IntValue>("/A/a");
    MainWindow window;
    auto* const toolBar = new QToolBar;
    auto* const button = new QPushButton("start");
    toolBar->addWidget(button);
    auto* const panel = new QLineEdit;
    window.place(toolBar, panel);
    showActive(window);
    button->setFocus();
    QTest::keyClick(&window, Qt::Key_F6);
    QTRY_COMPARE(QApplication::focusWidget(), panel);
    QTest::keyClick(&window, Qt::Key_F6);
    QTRY_VERIFY(window.valueTreeView()->isAncestorOf(QApplication::focusWidget()));
    QTest::keyClick(&window, Qt::Key_F6);
    QTRY_VERIFY(window.traceView()->isAncestorOf(QApplication::focusWidget()));
    QTest::keyClick(&window, Qt::Key_F6);
    QTRY_COMPARE(QApplication::focusWidget(), button);
    QTest::keyClick(&window, Qt::Key_F6, Qt::ShiftModifier);
    QTRY_VERIFY(window.traceView()->isAncestorOf(QApplication::focusWidget()));
}

void TestMainWindow::docksAreHiddenByTheMenu()
{
    const FreshTree tree;
    MainWindow window;
    showActive(window);
    const auto docks = window.findChildren<QDockWidget*>();
    QCOMPARE(docks.size(), 3);
    for (QDockWidget* const dock : docks) {
        dock->toggleViewAction()->trigger();
        QVERIFY(!dock->isVisible());
        dock->toggleViewAction()->trigger();
        QVERIFY(dock->isVisible());
    }
}

void TestMainWindow::theHotKeysAreListed()
{
    const FreshTree tree;
    MainWindow window;
    QObject receiver;
    GuiCentral::Instance()->AddHotKey(Qt::Key_D, Qt::ControlModifier, &receiver, "Start", "Group", true, true);
    action(window, "&Hot keys")->trigger();
    const auto* const table = window.findChild<QTableWidget*>("HotKeys");
    QVERIFY(table != nullptr && table->isVisible());
    QCOMPARE(table->rowCount(), 1);
    QCOMPARE(table->item(0, 0)->text(), QStringLiteral("Ctrl+D"));
    QCOMPARE(table->item(0, 1)->text(), QStringLiteral("Start"));
    QCOMPARE(table->item(0, 2)->text(), QStringLiteral("Group"));
    GuiCentral::Instance()->RemoveHotKeyReceiver(&receiver);
}

void TestMainWindow::aboutTellsTheVersion()
{
    const FreshTree tree;
    MainWindow window;
    action(window, "&About")->trigger();
    const auto* const box = window.findChild<QMessageBox*>();
    QVERIFY(box != nullptr && box->isVisible());
    QVERIFY(QRegularExpression("Workbench \\d+\\.\\d+\\.\\d+").match(box->text()).hasMatch());
}

void TestMainWindow::ctrlDStartsAMeasurementOnceEnabledWasAnnounced()
{
    const FreshTree tree;
    MainWindow window;
    Session session(std::make_unique<FakeSource>());
    startComponent(session, window);
    showActive(window);
    session.announceEnabled();
    QSignalSpy results(session.driver(), &workbench::DfDriver::resultPublished);
    QTest::keyClick(&window, Qt::Key_D, Qt::ControlModifier);
    QTRY_COMPARE(results.count(), 1);
    QCOMPARE(labelText(window, "average bearing"), QString::fromUtf8("278.4°"));
}

void TestMainWindow::theWindowMayGoBeforeTheSession()
{
    const FreshTree tree;
    auto window = std::make_unique<MainWindow>();
    Session session(std::make_unique<FakeSource>());
    startComponent(session, *window);
    window->show();
    window.reset();
    QVERIFY(session.toolBar() == nullptr);
    emit session.driver()->resultPublished(FakeSource::result());
}

void TestMainWindow::theSessionMayGoBeforeTheWindow()
{
    const FreshTree tree;
    MainWindow window;
    {
        Session session(std::make_unique<FakeSource>());
        startComponent(session, window);
        showActive(window);
    }
    QVERIFY(window.findChildren<QToolBar*>().isEmpty());
    action(window, "&Locked")->trigger();
    QVERIFY(!window.valueTreeView()->model()->indexOf(workbench::handlerRoot() + "Values/Commands").isValid());
    QVERIFY(values::Tree::Instance()->FindValue(workbench::handlerRoot() + "Values/Commands") == nullptr);
}

void TestMainWindow::aScreenshotIsAPictureOfTheWindow()
{
    const FreshTree tree;
    MainWindow window;
    showActive(window);
    QTemporaryDir folder;
    const QString file = folder.filePath("window.png");
    const auto failure = workbench::saveScreenshot(window.grab().toImage(), file);
    QVERIFY(!failure);
    QCOMPARE(QImage(file).size(), window.size() * window.devicePixelRatioF());
}

void TestMainWindow::aScreenshotThatCannotBeWrittenIsSaid()
{
    const FreshTree tree;
    MainWindow window;
    QTemporaryDir folder;
    const QString file = folder.filePath("missing/window.png");
    const auto failure = workbench::saveScreenshot(window.grab().toImage(), file);
    QVERIFY(failure);
    QVERIFY2(failure->startsWith(file + ": the picture cannot be written: "), qPrintable(*failure));
    QVERIFY(!QFile::exists(file));
}

DFL_TEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
