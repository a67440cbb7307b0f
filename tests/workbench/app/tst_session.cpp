#include "app/session.h"

#include "app/userinputcontrol.h"
#include "fakesource.h"

#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/value.h"

#include <QMainWindow>
#include <QToolBar>

using workbench::ComponentError;
using workbench::Session;
using Kind = workbench::ComponentError::Kind;

Q_DECLARE_METATYPE(ComponentError::Kind)

namespace {

QString fixture(const char* name)
{
    return QStringLiteral(FIXTURE_FOLDER "/%1.so").arg(QLatin1String(name));
}

QStringList calls()
{
    return qApp->property("calls").toStringList();
}

/// Places the widgets as a window does.
Session::Placement into(QMainWindow& window)
{
    return [&window](QToolBar* toolBar, QWidget* panel) {
        window.addToolBar(toolBar);
        if (panel != nullptr)
            window.setCentralWidget(panel);
    };
}

} // namespace

class TestSession : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void theComponentIsDrivenInTheHostsOrder();
    void offlineTheComponentMakesTheValues();
    void aSessionThatEndsFirstDeletesPanelThenComponent();
    void aWindowThatEndsFirstTakesItsWidgetsAlong();
    void aToolBarThatItsComponentForgetsIsDeleted();
    void aPanelMayBeMissing();
    void aFailureWhileStartingIsReportedAndNothingIsLeft_data();
    void aFailureWhileStartingIsReportedAndNothingIsLeft();
    void exceptionsWhileLeavingAreReportedAndContained();
    void theDriversValuesGoWithTheSession();
    void enabledGoesFalseAndThenTrue();
    void announcingEnabledWithoutADriverOrValueDoesNothing();
    void aChangedInputModeIsSentOnce();
    void theInputModeSignalIsFoundByTheSpellingOfComponents();
};

void TestSession::init()
{
    values::Tree::Instance()->Clear();
    qApp->setProperty("calls", QStringList());
    qApp->setProperty("noPanel", false);
    qApp->setProperty("keepToolBar", false);
}

void TestSession::theComponentIsDrivenInTheHostsOrder()
{
    QMainWindow window;
    Session session(std::make_unique<FakeSource>());
    const auto error = session.start(fixture("callrecorder"), into(window));
    QVERIFY(!error);
    QCOMPARE(calls(), QStringList({"ZTCreate DFLocateComponent, driver",
                                   "CreateWidget /GUI/DFLocateComponent/, 1 input control, driver",
                                   "NotifyAttached, placed, driver", "RegisterVelmarGuiServices, driver",
                                   "ConnectVelmarGuiServices, driver", "ConnectInterfaceValues, driver"}));
}

void TestSession::offlineTheComponentMakesTheValues()
{
    QMainWindow window;
    Session session(nullptr);
    const auto error = session.start(fixture("callrecorder"), into(window));
    QVERIFY(!error);
    QVERIFY(session.driver() == nullptr);
    QCOMPARE(calls().first(), QStringLiteral("ZTCreate DFLocateComponent"));
    QCOMPARE(calls().last(), QStringLiteral("CreateAndConnectInterfaceValues"));
}

void TestSession::aSessionThatEndsFirstDeletesPanelThenComponent()
{
    QMainWindow window;
    {
        Session session(std::make_unique<FakeSource>());
        QVERIFY(!session.start(fixture("callrecorder"), into(window)));
        qApp->setProperty("calls", QStringList());
    }
    QCOMPARE(calls(), QStringList({"SglAboutToQuit, driver", "NotifyDetached, driver", "panel deleted, driver",
                                   "ZTDestroy, driver", "toolbar deleted, driver"}));
    QVERIFY(window.findChildren<QToolBar*>().isEmpty());
    QVERIFY(window.centralWidget() == nullptr);
}

void TestSession::aWindowThatEndsFirstTakesItsWidgetsAlong()
{
    auto window = std::make_unique<QMainWindow>();
    {
        Session session(std::make_unique<FakeSource>());
        QVERIFY(!session.start(fixture("callrecorder"), into(*window)));
        window.reset();
        QVERIFY(session.toolBar() == nullptr);
        qApp->setProperty("calls", QStringList());
    }
    QCOMPARE(calls(), QStringList({"SglAboutToQuit, driver", "NotifyDetached, driver", "ZTDestroy, driver"}));
}

void TestSession::aToolBarThatItsComponentForgetsIsDeleted()
{
    qApp->setProperty("keepToolBar", true);
    QMainWindow window;
    {
        Session session(std::make_unique<FakeSource>());
        QVERIFY(!session.start(fixture("callrecorder"), into(window)));
    }
    QCOMPARE(calls().mid(calls().size() - 2), QStringList({"ZTDestroy, driver", "toolbar deleted, driver"}));
}

void TestSession::aPanelMayBeMissing()
{
    qApp->setProperty("noPanel", true);
    bool placed = false;
    Session session(nullptr);
    QVERIFY(!session.start(fixture("callrecorder"), [&placed](QToolBar* toolBar, QWidget* panel) {
        placed = toolBar != nullptr && panel == nullptr;
    }));
    QVERIFY(placed);
}

void TestSession::aFailureWhileStartingIsReportedAndNothingIsLeft_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char* name, Kind kind, const char* reason) {
        QTest::newRow(name) << fixture(name) << kind << QString(reason);
    };
    row("missing", Kind::FileMissing, "there is no such component library.");
    row("widgetsthrow", Kind::WidgetsThrew,
        "the component could not set its widgets up: it let an exception (no paint left) out.");
    row("notoolbar", Kind::NoToolBar, "the component has no toolbar.");
    row("servicesthrow", Kind::ServicesThrew,
        "the component could not take the services over: it let an exception (no service) out.");
    row("announcementthrows", Kind::AnnouncementThrew,
        "the component could not bind to the values: it let an exception of an unknown kind out.");
}

void TestSession::aFailureWhileStartingIsReportedAndNothingIsLeft()
{
    QFETCH(QString, file);
    QFETCH(Kind, kind);
    QFETCH(QString, reason);
    QMainWindow window;
    for (const bool offline : {false, true}) {
        Session session(offline ? nullptr : std::make_unique<FakeSource>());
        const auto error = session.start(file, into(window));
        QVERIFY(error);
        QCOMPARE(error->kind, kind);
        QCOMPARE(error->text(), file + ": " + reason);
        QVERIFY(session.toolBar() == nullptr);
        QVERIFY(window.findChildren<QToolBar*>().isEmpty());
    }
}

void TestSession::exceptionsWhileLeavingAreReportedAndContained()
{
    QMainWindow window;
    Session session(nullptr);
    const QString file = fixture("leavingthrows");
    QVERIFY(!session.start(file, into(window)));
    QTest::ignoreMessage(QtWarningMsg, qPrintable(file + ": leaving the component let an exception (not yet) out."));
    QTest::ignoreMessage(QtWarningMsg, qPrintable(file + ": ZTDestroy let an exception (not at all) out."));
}

void TestSession::theDriversValuesGoWithTheSession()
{
    const QString path = workbench::handlerRoot() + "Values/Commands";
    {
        const Session session(std::make_unique<FakeSource>());
        QVERIFY(values::Tree::Instance()->FindValue(path) != nullptr);
    }
    QVERIFY(values::Tree::Instance()->FindValue(path) == nullptr);
}

void TestSession::enabledGoesFalseAndThenTrue()
{
    Session session(std::make_unique<FakeSource>());
    auto* const enabled =
        dynamic_cast<values::BoolValue*>(values::Tree::Instance()->FindValue(workbench::handlerRoot() + "Enabled"));
    QVERIFY(enabled != nullptr);
    std::vector<bool> seen;
    testsupport::RecordingObserver observer([&](Observable*, TChangeCode code) {
        if (code == ChangeContent)
            seen.push_back(enabled->GetValue());
    });
    enabled->AddObserver(&observer);
    session.announceEnabled();
    enabled->RemoveObserver(&observer);
    QCOMPARE(seen, std::vector<bool>({false, true}));
}

void TestSession::announcingEnabledWithoutADriverOrValueDoesNothing()
{
    testsupport::FreshTree tree;
    auto* const enabled = tree.add<values::BoolValue>(workbench::handlerRoot() + "Enabled");
    testsupport::RecordingObserver observer;
    enabled->AddObserver(&observer);
    Session offline(nullptr);
    offline.announceEnabled();
    QVERIFY(observer.codes.empty());
    enabled->RemoveObserver(&observer);

    values::Tree::Instance()->Clear();
    Session session(std::make_unique<FakeSource>());
    values::Tree::Instance()->DeleteValue(workbench::handlerRoot() + "Enabled");
    session.announceEnabled();
}

void TestSession::aChangedInputModeIsSentOnce()
{
    using Service = workbench::IVelmarGuiUserInputControlService;
    workbench::UserInputControl control;
    QCOMPARE(control.mode(), Service::FullInput);
    std::vector<int> sent;
    connect(&control, &workbench::UserInputControl::si_setUserInputMode, &control,
            [&sent](Service::eUserInputMode mode) { sent.push_back(mode); });
    control.setMode(Service::LockedInput);
    control.setMode(Service::LockedInput);
    control.setMode(Service::FullInput);
    QCOMPARE(sent, std::vector<int>({Service::LockedInput, Service::FullInput}));
}

void TestSession::theInputModeSignalIsFoundByTheSpellingOfComponents()
{
    workbench::UserInputControl control;
    const QMetaObject* const meta = control.GetQObject()->metaObject();
    QVERIFY(meta->indexOfSignal("si_setUserInputMode(IVelmarGuiUserInputControlService::eUserInputMode)") >= 0);
}

DFL_TEST_MAIN(TestSession)
#include "tst_session.moc"
