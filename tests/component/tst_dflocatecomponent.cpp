#include "brixappstartup/translationcenter.h"
#include "guicomponentbase/guicomponentcommon.h"
#include "guicomponentbase/guicomponenttools.h"
#include "loadedcomponent.h"

#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "support/traces.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"

#include <QFile>
#include <QMainWindow>
#include <QPointer>
#include <QProcess>
#include <QToolBar>
#include <QToolButton>

#include <memory>
#include <stdexcept>
#include <vector>

using namespace VelmarGui;
using testsupport::ComponentLibrary;
using testsupport::FreshTree;
using testsupport::RecordingObserver;
using testsupport::Traces;
using Component = testsupport::ComponentLibrary::Component;

namespace {

const QString componentRoot = QStringLiteral("/GUI/DFLocateComponent/");
const QString handlerRoot = QStringLiteral("/GUI/DFLocateHandler/");
const QString triggerPath = componentRoot + QStringLiteral("TriggerLocateStart");
const QString runningPath = handlerRoot + QStringLiteral("DFRunning");
const QString enabledPath = handlerRoot + QStringLiteral("Enabled");
const QString dfStatusPath = handlerRoot + QStringLiteral("Values/Status/LocateStatus");
const QString spanPath = handlerRoot + QStringLiteral("Config/DFSpan");
const QString offsetPath = handlerRoot + QStringLiteral("Config/DFFrequencyOffset");
const QString settingsPath = componentRoot + QStringLiteral("Parameters/DF_Settings");
const QString hriStatusPath = QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus");

int registrations(const char* translationNamespace)
{
    return TranslationCenter::Instance()->GetRegistrationCount(QLatin1String(translationNamespace));
}

values::BoolValue* trigger()
{
    return dynamic_cast<values::BoolValue*>(values::Tree::Instance()->FindValue(triggerPath));
}

values::BoolValue* dfConnected()
{
    return dynamic_cast<values::BoolValue*>(
        values::Tree::Instance()->FindValue(componentRoot + QStringLiteral("LocateDFConnectedIndicator")));
}

/// The failures among @p traces; values that are not there are no failures.
QStringList failures(const Traces& traces)
{
    QStringList texts;
    for (const TraceRecord& record : traces.records) {
        if (!record.text.startsWith(QStringLiteral("Missing DF Value")))
            texts << record.text;
    }
    return texts;
}

/// The host's object that announces how much the operator may do. In the signal's signature the service is named
/// without its namespace.
class UserInputModes : public QObject
{
    Q_OBJECT
public:
    using QObject::receivers;

signals:
    void si_setUserInputMode(IVelmarGuiUserInputControlService::eUserInputMode mode);
};

class UserInputService : public IVelmarGuiUserInputControlService
{
public:
    QObject* GetQObject() override { return &m_modes; }
    void choose(eUserInputMode mode) { emit m_modes.si_setUserInputMode(mode); }
    [[nodiscard]] int receiverCount() const
    {
        return m_modes.receivers(SIGNAL(si_setUserInputMode(IVelmarGuiUserInputControlService::eUserInputMode)));
    }

private:
    UserInputModes m_modes;
};

/// Throws when a value comes to @p path.
class RefusingListener : public values::ITreeListener
{
public:
    explicit RefusingListener(QString path)
        : m_path(std::move(path))
    {
        values::Tree::Instance()->AddListener(this);
    }
    ~RefusingListener() override { values::Tree::Instance()->RemoveListener(this); }

    void ValueInserted(values::ValueBase* value) override
    {
        if (value->GetPathName() == m_path)
            throw std::runtime_error("not now");
    }
    void ValueRemoved(const QString& /*path*/) override {}

private:
    QString m_path;
};

/// A component of another library.
class StrangeComponent : public IGuiComponent
{
public:
    explicit StrangeComponent(bool& deleted)
        : IGuiComponent(QStringLiteral("DFLocateComponent"))
        , m_deleted(deleted)
    {
    }
    ~StrangeComponent() override { m_deleted = true; }

    bool QueryReady() override { return false; }
    void NotifyAttached() override {}
    void NotifyDetached() override {}
    QToolBar* GetToolBar() override { return nullptr; }
    bool QueryOptionFlag() override { return true; }
    QWidget* GetExtraWidget() override { return nullptr; }

private:
    bool& m_deleted;
};

/// An object of another library that is no component at all.
class StrangeInstance : public IDllInstance
{
};

} // namespace

class TestDFLocateComponent : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Library
    void theLibraryExportsItsTwoFactoryFunctionsAndNothingElse();
    void theLibraryHoldsTheIcon();

    // Factory
    void theFactoryMakesAComponentOfTheGivenName_data();
    void theFactoryMakesAComponentOfTheGivenName();
    void everyCallMakesAComponentOfItsOwn();
    void translationsAreRegisteredOncePerComponentAndUnregisteredOnce();
    void objectsOfOtherClassesAreLeftAlone();

    // Interface
    void answersTheHostWithItsConstants();
    void keepsTheHostsDefaultsForTheRest();
    void registersNoServices();

    // Toolbar
    void hasNoToolbarBeforeItsWidgetsAreMade();
    void makesAToolbarAndAPanel();
    void valuesGoUnderTheNameOfCreateWidget();
    void forgetsAToolbarThatWasDeleted();
    void deletesItsToolbarAtTheEnd();
    void leavesAToolbarThatIsGoneAlone();
    void theWindowMayGoBeforeTheComponent();
    void theComponentMayGoBeforeTheWindow();
    void makingWidgetsAgainMakesASecondToolbar();
    void aToolbarThatCannotBeMadeIsTracedAndMissing();
    void aToolbarThatCannotBeMadeLeavesTheFormerOne();

    // Panel
    void theToolbarIsMadeBeforeThePanel();
    void thePanelIsTheHosts();
    void theHostMayDeleteThePanelAtAnyTime();
    void makingWidgetsAgainMakesASecondPanel();
    void aPanelThatCannotBeMadeIsTracedAndMissing();

    // Services
    void noNameIsTheEmptyOne();
    void thePanelFollowsTheUserInputMode();
    void theFirstRegisteredUserInputServiceCounts();
    void withoutServiceOrPanelNothingIsConnected();

    // Announcements
    void connectingBeforeTheWidgetsAreMadeDoesNothing();
    void connectingBindsTheToolbar();
    void connectingTwiceBindsOnce();
    void connectingAfterTheToolbarWasDeletedDoesNothing();
    void connectingLetsNoExceptionOut();
    void connectingBindsThePanelBeforeTheToolbar();
    void thePanelIsBoundWithoutToolbar();
    void workingWithoutDriverIsThePanelsAffairAlone();
    void withoutWidgetsNoAnnouncementDoesAnything();

    // Several components
    void twoComponentsLiveSideBySide();
    void aComponentMadeAfterAnotherWorksLikeTheFirst();

private:
    /// As the host does; the panels are the host's and go at the end of the test.
    QWidget* createWidgets(const Component& component, const QString& root = componentRoot)
    {
        QWidget* const panel = component->CreateWidget(m_common.get(), root);
        m_panels.emplace_back(panel);
        return panel;
    }

    ComponentLibrary m_library;
    std::unique_ptr<FreshTree> m_tree;
    std::unique_ptr<GuiComponentCommon> m_common;
    std::vector<QPointer<QWidget>> m_panels;
};

void TestDFLocateComponent::init()
{
    m_tree = std::make_unique<FreshTree>();
    m_common = std::make_unique<GuiComponentCommon>();
}

void TestDFLocateComponent::cleanup()
{
    for (const QPointer<QWidget>& panel : m_panels)
        delete panel;
    m_panels.clear();
    m_common.reset();
    m_tree.reset();
    QCOMPARE(registrations("DFLocateComponent"), 0);
    QCOMPARE(registrations("DFLocateHandler"), 0);
}

void TestDFLocateComponent::theLibraryExportsItsTwoFactoryFunctionsAndNothingElse()
{
    QProcess nm;
    nm.start(QStringLiteral("nm"), {QStringLiteral("-D"), QStringLiteral("--defined-only"), QStringLiteral("-P"),
                                    QStringLiteral(COMPONENT_LIBRARY)});
    QVERIFY2(nm.waitForFinished(), qPrintable(nm.errorString()));
    QCOMPARE(nm.exitCode(), 0);
    QStringList symbols;
    const QStringList lines =
        QString::fromLatin1(nm.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& line : lines)
        symbols.append(line.section(QLatin1Char(' '), 0, 1));
    symbols.sort();
    QCOMPARE(symbols, (QStringList{QStringLiteral("ZTCreate T"), QStringLiteral("ZTDestroy T")}));
}

void TestDFLocateComponent::theLibraryHoldsTheIcon()
{
    QFile file(QStringLiteral(COMPONENT_LIBRARY));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray content = file.readAll();
    for (const char* const row :
         {"16 16 3 1", "# c #000000", "b c #0000ff", ". c none", "#.....###...####", "#....#...#.#....",
          "####..###...####", "................", "...............b", "............bbbb", ".........bbbbbbb",
          "......bbbbbbbbbb", "...bbbbbbbbbbbbb", "bbbbbbbbbbbbbbbb"})
        QVERIFY2(content.contains(QByteArray(row).append('\0')), row);
}

void TestDFLocateComponent::theFactoryMakesAComponentOfTheGivenName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("usual") << "DFLocateComponent";
    QTest::newRow("empty") << "";
    QTest::newRow("umlaut") << QString::fromUtf8("Peilgerät");
    QTest::newRow("outside the basic plane") << QString::fromUtf8("\U0001F4E1 DF");
}

void TestDFLocateComponent::theFactoryMakesAComponentOfTheGivenName()
{
    QFETCH(QString, name);
    const Component component(m_library, name.toStdWString().c_str());
    QVERIFY(component.get());
    QCOMPARE(component->GetName(), name);
}

void TestDFLocateComponent::everyCallMakesAComponentOfItsOwn()
{
    const Component first(m_library, L"DFLocateComponent");
    const Component second(m_library, L"DFLocateComponent");
    QVERIFY(first.get() != second.get());
}

void TestDFLocateComponent::translationsAreRegisteredOncePerComponentAndUnregisteredOnce()
{
    QCOMPARE(registrations("DFLocateComponent"), 0);
    QCOMPARE(registrations("DFLocateHandler"), 0);
    Component first(m_library, L"DFLocateComponent");
    QCOMPARE(registrations("DFLocateComponent"), 1);
    QCOMPARE(registrations("DFLocateHandler"), 1);
    Component second(m_library, L"AnotherName");
    QCOMPARE(registrations("DFLocateComponent"), 2);
    QCOMPARE(registrations("DFLocateHandler"), 2);
    QCOMPARE(registrations("AnotherName"), 0);
    first.Destroy();
    QCOMPARE(registrations("DFLocateComponent"), 1);
    QCOMPARE(registrations("DFLocateHandler"), 1);
    second.Destroy();
    QCOMPARE(registrations("DFLocateComponent"), 0);
    QCOMPARE(registrations("DFLocateHandler"), 0);
}

void TestDFLocateComponent::objectsOfOtherClassesAreLeftAlone()
{
    const Component component(m_library, L"DFLocateComponent");
    bool deleted = false;
    StrangeComponent strangeComponent(deleted);
    StrangeInstance strangeInstance;
    m_library.destroy(&strangeComponent);
    m_library.destroy(&strangeInstance);
    m_library.destroy(nullptr);
    QVERIFY(!deleted);
    QCOMPARE(registrations("DFLocateComponent"), 1);
    QCOMPARE(registrations("DFLocateHandler"), 1);
}

void TestDFLocateComponent::answersTheHostWithItsConstants()
{
    const Component component(m_library, L"DFLocateComponent");
    const auto expectConstants = [&component] {
        QCOMPARE(component->QueryReady(), true);
        QCOMPARE(component->QueryOptionFlag(), false);
        QCOMPARE(component->GetExtraWidget(), nullptr);
        component->NotifyAttached();
        component->NotifyDetached();
    };
    expectConstants();
    createWidgets(component);
    const QToolBar* const toolBar = component->GetToolBar();
    const std::size_t values = values::Tree::Instance()->ValuesBelow(QString()).size();
    expectConstants();
    QCOMPARE(component->GetToolBar(), toolBar);
    QCOMPARE(values::Tree::Instance()->ValuesBelow(QString()).size(), values);
}

void TestDFLocateComponent::keepsTheHostsDefaultsForTheRest()
{
    bool deleted = false;
    StrangeComponent host(deleted); // overrides none of these
    const Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    const std::size_t values = values::Tree::Instance()->ValuesBelow(QString()).size();
    QCOMPARE(component->IsFirstToolBar(), host.IsFirstToolBar());
    QCOMPARE(component->IsCompleteToolbarRow(), host.IsCompleteToolbarRow());
    QCOMPARE(component->connectToDockWidgetPossible(), host.connectToDockWidgetPossible());
    component->SglMdConnected(QStringLiteral("device"));
    component->SglMdInfoConnected();
    component->SglReplayConnected(QStringLiteral("source"));
    component->SglAboutToQuit();
    component->ForceParameterApply();
    QVERIFY(component->GetToolBar());
    QCOMPARE(values::Tree::Instance()->ValuesBelow(QString()).size(), values);
}

void TestDFLocateComponent::registersNoServices()
{
    const Component component(m_library, L"DFLocateComponent");
    component->RegisterVelmarGuiServices(m_common.get());
    for (const std::type_index type :
         {std::type_index(typeid(IVelmarGuiService)), std::type_index(typeid(IVelmarGuiUserInputControlService))})
        QVERIFY(m_common->getServiceRegistry()->findServiceRegistrationsImpl(type, nullptr).empty());
}

void TestDFLocateComponent::hasNoToolbarBeforeItsWidgetsAreMade()
{
    const Component component(m_library, L"DFLocateComponent");
    QCOMPARE(component->GetToolBar(), nullptr);
}

void TestDFLocateComponent::makesAToolbarAndAPanel()
{
    const Component component(m_library, L"DFLocateComponent");
    const QWidget* const panel = createWidgets(component);
    QVERIFY(panel);
    QCOMPARE(panel->metaObject()->className(), "VelmarGui::DFLocateSettingsWidget");
    QCOMPARE(panel->parent(), nullptr);
    const QToolBar* const toolBar = component->GetToolBar();
    QVERIFY(toolBar);
    QCOMPARE(toolBar->metaObject()->className(), "VelmarGui::DFLocateToolBar");
    QCOMPARE(toolBar->parent(), nullptr);
    QVERIFY(toolBar->findChild<QToolButton*>(QStringLiteral("DFStarter")));
    QVERIFY(toolBar->findChild<QWidget*>(QStringLiteral("Led Label")));
}

void TestDFLocateComponent::valuesGoUnderTheNameOfCreateWidget()
{
    auto* const enabled = m_tree->add<values::BoolValue>(QStringLiteral("/Window2/DFLocateHandler/Enabled"));
    const Component component(m_library, L"DFLocateComponent");
    createWidgets(component, QStringLiteral("/Window2/DFLocateComponent/"));
    QVERIFY(values::Tree::Instance()->FindValue(QStringLiteral("/Window2/DFLocateComponent/TriggerLocateStart")));
    QVERIFY(!trigger());
    QVERIFY(!component->GetToolBar()->isEnabled());
    enabled->SetValue(true, nullptr);
    QVERIFY(component->GetToolBar()->isEnabled());
}

void TestDFLocateComponent::forgetsAToolbarThatWasDeleted()
{
    Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    delete component->GetToolBar();
    QCOMPARE(component->GetToolBar(), nullptr);
    component.Destroy();
}

void TestDFLocateComponent::deletesItsToolbarAtTheEnd()
{
    Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    const QPointer<QToolBar> toolBar = component->GetToolBar();
    component.Destroy();
    QVERIFY(toolBar.isNull());
}

void TestDFLocateComponent::leavesAToolbarThatIsGoneAlone()
{
    Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    delete component->GetToolBar();
    component.Destroy();
    QCOMPARE(registrations("DFLocateHandler"), 0);
}

void TestDFLocateComponent::theWindowMayGoBeforeTheComponent()
{
    Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    {
        QMainWindow window;
        window.addToolBar(component->GetToolBar());
    }
    QCOMPARE(component->GetToolBar(), nullptr);
    component->ConnectInterfaceValues();
    component.Destroy();
}

void TestDFLocateComponent::theComponentMayGoBeforeTheWindow()
{
    QMainWindow window;
    Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    window.addToolBar(component->GetToolBar());
    QCOMPARE(window.findChildren<QToolBar*>(QStringLiteral("DFLocateToolBar")).size(), 1);
    component.Destroy();
    QVERIFY(window.findChildren<QToolBar*>(QStringLiteral("DFLocateToolBar")).isEmpty());
}

void TestDFLocateComponent::makingWidgetsAgainMakesASecondToolbar()
{
    QMainWindow window;
    Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    const QPointer<QToolBar> first = component->GetToolBar();
    window.addToolBar(first);
    createWidgets(component);
    const QPointer<QToolBar> second = component->GetToolBar();
    QVERIFY(second);
    QVERIFY(first);
    QVERIFY(first != second);
    component.Destroy();
    QVERIFY(second.isNull());
    QVERIFY(first);
    QCOMPARE(first->parent(), &window);
}

void TestDFLocateComponent::aToolbarThatCannotBeMadeIsTracedAndMissing()
{
    auto* const existing = m_tree->add<values::BoolValue>(triggerPath);
    RecordingObserver throwing([](Observable*, TChangeCode) { throw std::runtime_error("not now"); });
    existing->AddObserver(&throwing);
    const Component component(m_library, L"DFLocateComponent");
    const Traces traces;
    QCOMPARE(createWidgets(component), nullptr);
    QCOMPARE(component->GetToolBar(), nullptr);
    QCOMPARE(traces.records.size(), std::size_t(1));
    QCOMPARE(traces.records[0].text, QStringLiteral("Exception in DFLocateComponent::CreateWidget"));
    QCOMPARE(traces.records[0].sourceFile,
             QStringLiteral("userinterface/guicomponents/dflocatecomponent/dflocatecomponent"));
    existing->RemoveObserver(&throwing);
    createWidgets(component);
    QVERIFY(component->GetToolBar());
}

void TestDFLocateComponent::aToolbarThatCannotBeMadeLeavesTheFormerOne()
{
    const Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    const QToolBar* const former = component->GetToolBar();
    trigger()->SetState(values::StateOrdinary, nullptr);
    RecordingObserver throwing([](Observable*, TChangeCode) { throw std::runtime_error("not now"); });
    trigger()->AddObserver(&throwing);
    QCOMPARE(createWidgets(component), nullptr);
    QCOMPARE(component->GetToolBar(), former);
    trigger()->RemoveObserver(&throwing);
}

void TestDFLocateComponent::theToolbarIsMadeBeforeThePanel()
{
    // Each makes a value of its own at first.
    const RefusingListener panel(QStringLiteral("/GLOBAL/DfDeviceReady"));
    const Component component(m_library, L"DFLocateComponent");
    QCOMPARE(createWidgets(component), nullptr);
    QVERIFY(component->GetToolBar());
    delete component->GetToolBar();
    values::Tree::Instance()->Clear();
    const RefusingListener toolbar(triggerPath);
    QCOMPARE(createWidgets(component), nullptr);
    QVERIFY(!values::Tree::Instance()->FindValue(QStringLiteral("/GLOBAL/DfDeviceReady")));
}

void TestDFLocateComponent::thePanelIsTheHosts()
{
    Component component(m_library, L"DFLocateComponent");
    const QPointer<QWidget> panel = createWidgets(component);
    component->ConnectInterfaceValues();
    component.Destroy();
    QVERIFY(panel);
    QVERIFY(panel->isEnabled());
}

void TestDFLocateComponent::theHostMayDeleteThePanelAtAnyTime()
{
    const auto service = std::make_shared<UserInputService>();
    m_common->getServiceRegistry()->registerService<IVelmarGuiUserInputControlService>(service);
    auto* const running = m_tree->add<values::BoolValue>(runningPath);
    const Component component(m_library, L"DFLocateComponent");
    delete createWidgets(component);
    const Traces traces;
    component->ConnectVelmarGuiServices(m_common.get());
    component->ConnectInterfaceValues();
    component->CreateAndConnectInterfaceValues();
    service->choose(IVelmarGuiUserInputControlService::LockedInput);
    QCOMPARE(failures(traces), QStringList());
    QVERIFY(!values::Tree::Instance()->FindValue(spanPath));
    QVERIFY(running->GetObserverCount() > 0); // the toolbar was bound all the same
}

void TestDFLocateComponent::makingWidgetsAgainMakesASecondPanel()
{
    const auto service = std::make_shared<UserInputService>();
    m_common->getServiceRegistry()->registerService<IVelmarGuiUserInputControlService>(service);
    const Component component(m_library, L"DFLocateComponent");
    const QPointer<QWidget> first = createWidgets(component);
    const QPointer<QWidget> second = createWidgets(component);
    QVERIFY(first);
    QVERIFY(second);
    QVERIFY(first != second);
    component->ConnectVelmarGuiServices(m_common.get());
    service->choose(IVelmarGuiUserInputControlService::LockedInput);
    QVERIFY(first->isEnabled());
    QVERIFY(!second->isEnabled());
}

void TestDFLocateComponent::aPanelThatCannotBeMadeIsTracedAndMissing()
{
    const Component component(m_library, L"DFLocateComponent");
    const Traces traces;
    {
        const RefusingListener refusal(QStringLiteral("/GLOBAL/DfDeviceReady"));
        QCOMPARE(createWidgets(component), nullptr);
    }
    QCOMPARE(failures(traces), QStringList{QStringLiteral("Exception in DFLocateComponent::CreateWidget")});
    const QPointer<QToolBar> toolBar = component->GetToolBar();
    QVERIFY(toolBar);
    component->ConnectInterfaceValues();
    component->CreateAndConnectInterfaceValues();
    QVERIFY(!values::Tree::Instance()->FindValue(spanPath));
    QVERIFY(createWidgets(component));
    delete toolBar; // the former one is nobody's
}

void TestDFLocateComponent::noNameIsTheEmptyOne()
{
    const Component component(m_library, nullptr);
    QVERIFY(component.get());
    QCOMPARE(component->GetName(), QString());
    QVERIFY(createWidgets(component));
}

void TestDFLocateComponent::thePanelFollowsTheUserInputMode()
{
    using Service = IVelmarGuiUserInputControlService;
    const auto service = std::make_shared<UserInputService>();
    m_common->getServiceRegistry()->registerService<Service>(service);
    const Component component(m_library, L"DFLocateComponent");
    const QWidget* const panel = createWidgets(component);
    service->choose(Service::LockedInput);
    QVERIFY(panel->isEnabled()); // not connected yet
    component->ConnectVelmarGuiServices(m_common.get());
    QCOMPARE(service.use_count(), 2L); // the registry's and the test's
    for (const auto mode : {Service::FullInput, Service::RestrictedInput, Service::LockedInput,
                            Service::ViewSwitchInput, Service::LockedInput, Service::FullInput}) {
        service->choose(mode);
        QCOMPARE(panel->isEnabled(), mode != Service::LockedInput);
    }
    QVERIFY(component->GetToolBar());
}

void TestDFLocateComponent::theFirstRegisteredUserInputServiceCounts()
{
    const auto first = std::make_shared<UserInputService>();
    const auto second = std::make_shared<UserInputService>();
    m_common->getServiceRegistry()->registerService<IVelmarGuiUserInputControlService>(first);
    m_common->getServiceRegistry()->registerService<IVelmarGuiUserInputControlService>(second);
    const Component component(m_library, L"DFLocateComponent");
    const QWidget* const panel = createWidgets(component);
    component->ConnectVelmarGuiServices(m_common.get());
    second->choose(IVelmarGuiUserInputControlService::LockedInput);
    QVERIFY(panel->isEnabled());
    first->choose(IVelmarGuiUserInputControlService::LockedInput);
    QVERIFY(!panel->isEnabled());
}

void TestDFLocateComponent::withoutServiceOrPanelNothingIsConnected()
{
    const Traces traces;
    const Component component(m_library, L"DFLocateComponent");
    const auto service = std::make_shared<UserInputService>();
    createWidgets(component);
    component->ConnectVelmarGuiServices(m_common.get());
    m_common->getServiceRegistry()->registerService<IVelmarGuiUserInputControlService>(service);
    const Component withoutPanel(m_library, L"DFLocateComponent");
    withoutPanel->ConnectVelmarGuiServices(m_common.get());
    QCOMPARE(service->receiverCount(), 0);
    QCOMPARE(failures(traces), QStringList());
}

void TestDFLocateComponent::connectingBeforeTheWidgetsAreMadeDoesNothing()
{
    const Traces traces;
    auto* const running = m_tree->add<values::BoolValue>(runningPath);
    const Component component(m_library, L"DFLocateComponent");
    component->ConnectInterfaceValues();
    QCOMPARE(running->GetObserverCount(), std::size_t(0));
    QCOMPARE(values::Tree::Instance()->ValuesBelow(QString()).size(), std::size_t(1));
    QVERIFY(traces.records.empty());
}

void TestDFLocateComponent::connectingBindsTheToolbar()
{
    auto* const running = m_tree->add<values::BoolValue>(runningPath);
    running->SetValue(true, nullptr);
    m_tree->add<values::StringValue>(dfStatusPath)->SetValue(QStringLiteral("DFID1#ST1"), nullptr);
    m_tree->add<values::StringValue>(hriStatusPath);
    const Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    QCOMPARE(trigger()->GetState(), values::StateUnused);
    QVERIFY(!dfConnected());
    component->ConnectInterfaceValues();
    QCOMPARE(trigger()->GetState(), values::StateOrdinary);
    QVERIFY(dfConnected() && dfConnected()->GetValue());
    running->SetValue(false, nullptr);
    QCOMPARE(trigger()->GetState(), values::StateUnused);
}

void TestDFLocateComponent::connectingTwiceBindsOnce()
{
    auto* const running = m_tree->add<values::BoolValue>(runningPath);
    auto* const status = m_tree->add<values::StringValue>(dfStatusPath);
    const Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    component->ConnectInterfaceValues();
    const std::size_t runningObservers = running->GetObserverCount();
    const std::size_t statusObservers = status->GetObserverCount();
    const std::size_t indicatorObservers = dfConnected()->GetObserverCount();
    QVERIFY(runningObservers > 0);
    component->ConnectInterfaceValues();
    QCOMPARE(running->GetObserverCount(), runningObservers);
    QCOMPARE(status->GetObserverCount(), statusObservers);
    QCOMPARE(dfConnected()->GetObserverCount(), indicatorObservers);
}

void TestDFLocateComponent::connectingAfterTheToolbarWasDeletedDoesNothing()
{
    auto* const running = m_tree->add<values::BoolValue>(runningPath);
    const Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    delete component->GetToolBar();
    component->ConnectInterfaceValues();
    QCOMPARE(running->GetObserverCount(), std::size_t(0));
    QVERIFY(!dfConnected());
}

void TestDFLocateComponent::connectingLetsNoExceptionOut()
{
    m_tree->add<values::StringValue>(dfStatusPath)->SetValue(QStringLiteral("DFID1"), nullptr);
    auto* const indicator =
        m_tree->add<values::BoolValue>(componentRoot + QStringLiteral("LocateDFConnectedIndicator"));
    RecordingObserver throwing([](Observable*, TChangeCode) { throw std::runtime_error("not now"); });
    indicator->AddObserver(&throwing);
    const Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    const Traces traces;
    component->ConnectInterfaceValues();
    QVERIFY(!throwing.codes.empty());
    QVERIFY(traces.records.back().text.startsWith(QStringLiteral("Exception in ")));
    indicator->RemoveObserver(&throwing);
}

void TestDFLocateComponent::connectingBindsThePanelBeforeTheToolbar()
{
    auto* const running = m_tree->add<values::BoolValue>(runningPath);
    m_tree->add<values::StringValue>(settingsPath)
        ->SetValue(QStringLiteral("<DF_Settings><FrequencyOffset>50</FrequencyOffset></DF_Settings>"), nullptr);
    auto* const offset = m_tree->add<values::DoubleValue>(offsetPath);
    std::size_t runningObservers = 0;
    RecordingObserver whenThePanelBinds(
        [&](Observable*, TChangeCode) { runningObservers = running->GetObserverCount(); });
    offset->AddObserver(&whenThePanelBinds);
    const Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    const std::size_t before = running->GetObserverCount();
    component->ConnectInterfaceValues();
    QCOMPARE(offset->GetValue(), 50.0);
    QCOMPARE(runningObservers, before);
    QVERIFY(running->GetObserverCount() > before);
    // The panel makes no settings here: those of the driver are all there are.
    QVERIFY(!values::Tree::Instance()->FindValue(spanPath));
    offset->RemoveObserver(&whenThePanelBinds);
}

void TestDFLocateComponent::thePanelIsBoundWithoutToolbar()
{
    m_tree->add<values::StringValue>(settingsPath)
        ->SetValue(QStringLiteral("<DF_Settings><FrequencyOffset>50</FrequencyOffset></DF_Settings>"), nullptr);
    auto* const offset = m_tree->add<values::DoubleValue>(offsetPath);
    const Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    delete component->GetToolBar();
    component->ConnectInterfaceValues();
    QCOMPARE(offset->GetValue(), 50.0);
}

void TestDFLocateComponent::workingWithoutDriverIsThePanelsAffairAlone()
{
    const Component component(m_library, L"DFLocateComponent");
    createWidgets(component);
    auto* const running = m_tree->add<values::BoolValue>(runningPath);
    component->CreateAndConnectInterfaceValues();
    QVERIFY(dynamic_cast<values::DoubleValue*>(values::Tree::Instance()->FindValue(spanPath)));
    QCOMPARE(values::Tree::Instance()->ValuesBelow(handlerRoot + QStringLiteral("Config/")).size(), std::size_t(12));
    QVERIFY(m_common->GetParameterSet(componentRoot, QStringLiteral("DF_Settings"))
                .contains(QStringLiteral("<Bandwidth>12000</Bandwidth>")));
    QCOMPARE(running->GetObserverCount(), std::size_t(0));
    QVERIFY(!dfConnected());
}

void TestDFLocateComponent::withoutWidgetsNoAnnouncementDoesAnything()
{
    const Traces traces;
    const Component component(m_library, L"DFLocateComponent");
    component->ConnectVelmarGuiServices(m_common.get());
    component->ConnectInterfaceValues();
    component->CreateAndConnectInterfaceValues();
    QVERIFY(values::Tree::Instance()->ValuesBelow(QString()).empty());
    QVERIFY(traces.records.empty());
}

void TestDFLocateComponent::twoComponentsLiveSideBySide()
{
    auto* const enabled = m_tree->add<values::BoolValue>(enabledPath);
    auto* const status = m_tree->add<values::StringValue>(dfStatusPath);
    Component first(m_library, L"DFLocateComponent");
    const Component second(m_library, L"DFLocateComponent");
    for (const Component* const component : {&std::as_const(first), &second}) {
        createWidgets(*component);
        (*component)->ConnectInterfaceValues();
    }
    QVERIFY(first->GetToolBar() != second->GetToolBar());
    enabled->SetValue(true, nullptr);
    QVERIFY(first->GetToolBar()->isEnabled());
    QVERIFY(second->GetToolBar()->isEnabled());
    first.Destroy();
    QVERIFY(second->GetToolBar());
    enabled->SetValue(false, nullptr);
    QVERIFY(!second->GetToolBar()->isEnabled());
    status->SetValue(QStringLiteral("DFID1"), nullptr);
    QVERIFY(dfConnected()->GetValue());
}

void TestDFLocateComponent::aComponentMadeAfterAnotherWorksLikeTheFirst()
{
    auto* const running = m_tree->add<values::BoolValue>(runningPath);
    for (int round = 0; round < 3; ++round) {
        const Component component(m_library, L"DFLocateComponent");
        createWidgets(component);
        component->ConnectInterfaceValues();
        running->SetValue(true, nullptr);
        QCOMPARE(trigger()->GetState(), values::StateOrdinary);
        running->SetValue(false, nullptr);
        QCOMPARE(trigger()->GetState(), values::StateUnused);
    }
    QCOMPARE(running->GetObserverCount(), std::size_t(0));
}

DFL_TEST_MAIN(TestDFLocateComponent)
#include "tst_dflocatecomponent.moc"
