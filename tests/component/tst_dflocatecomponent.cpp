#include "brixappstartup/translationcenter.h"
#include "guicomponentbase/guicomponentcommon.h"
#include "guicomponentbase/guicomponenttools.h"
#include "loadedcomponent.h"

#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "support/traces.h"
#include "valueframework/valueclasses/value.h"

#include <QFile>
#include <QMainWindow>
#include <QProcess>
#include <QToolBar>
#include <QToolButton>

#include <stdexcept>

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
    void makesAToolbarAndNoPanel();
    void valuesGoUnderTheNameOfCreateWidget();
    void forgetsAToolbarThatWasDeleted();
    void deletesItsToolbarAtTheEnd();
    void leavesAToolbarThatIsGoneAlone();
    void theWindowMayGoBeforeTheComponent();
    void theComponentMayGoBeforeTheWindow();
    void makingWidgetsAgainMakesASecondToolbar();
    void aToolbarThatCannotBeMadeIsTracedAndMissing();
    void aToolbarThatCannotBeMadeLeavesTheFormerOne();

    // Announcements
    void connectingBeforeTheWidgetsAreMadeDoesNothing();
    void connectingBindsTheToolbar();
    void connectingTwiceBindsOnce();
    void connectingAfterTheToolbarWasDeletedDoesNothing();
    void connectingLetsNoExceptionOut();
    void withoutAPanelTheOtherAnnouncementsDoNothing();

    // Several components
    void twoComponentsLiveSideBySide();
    void aComponentMadeAfterAnotherWorksLikeTheFirst();

private:
    ComponentLibrary m_library;
    std::unique_ptr<FreshTree> m_tree;
    std::unique_ptr<GuiComponentCommon> m_common;
};

void TestDFLocateComponent::init()
{
    m_tree = std::make_unique<FreshTree>();
    m_common = std::make_unique<GuiComponentCommon>();
}

void TestDFLocateComponent::cleanup()
{
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
    component->CreateWidget(m_common.get(), componentRoot);
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
    component->CreateWidget(m_common.get(), componentRoot);
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

void TestDFLocateComponent::makesAToolbarAndNoPanel()
{
    const Component component(m_library, L"DFLocateComponent");
    QCOMPARE(component->CreateWidget(m_common.get(), componentRoot), nullptr);
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
    component->CreateWidget(m_common.get(), QStringLiteral("/Window2/DFLocateComponent/"));
    QVERIFY(values::Tree::Instance()->FindValue(QStringLiteral("/Window2/DFLocateComponent/TriggerLocateStart")));
    QVERIFY(!trigger());
    QVERIFY(!component->GetToolBar()->isEnabled());
    enabled->SetValue(true, nullptr);
    QVERIFY(component->GetToolBar()->isEnabled());
}

void TestDFLocateComponent::forgetsAToolbarThatWasDeleted()
{
    Component component(m_library, L"DFLocateComponent");
    component->CreateWidget(m_common.get(), componentRoot);
    delete component->GetToolBar();
    QCOMPARE(component->GetToolBar(), nullptr);
    component.Destroy();
}

void TestDFLocateComponent::deletesItsToolbarAtTheEnd()
{
    Component component(m_library, L"DFLocateComponent");
    component->CreateWidget(m_common.get(), componentRoot);
    const QPointer<QToolBar> toolBar = component->GetToolBar();
    component.Destroy();
    QVERIFY(toolBar.isNull());
}

void TestDFLocateComponent::leavesAToolbarThatIsGoneAlone()
{
    Component component(m_library, L"DFLocateComponent");
    component->CreateWidget(m_common.get(), componentRoot);
    delete component->GetToolBar();
    component.Destroy();
    QCOMPARE(registrations("DFLocateHandler"), 0);
}

void TestDFLocateComponent::theWindowMayGoBeforeTheComponent()
{
    Component component(m_library, L"DFLocateComponent");
    component->CreateWidget(m_common.get(), componentRoot);
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
    component->CreateWidget(m_common.get(), componentRoot);
    window.addToolBar(component->GetToolBar());
    QCOMPARE(window.findChildren<QToolBar*>(QStringLiteral("DFLocateToolBar")).size(), 1);
    component.Destroy();
    QVERIFY(window.findChildren<QToolBar*>(QStringLiteral("DFLocateToolBar")).isEmpty());
}

void TestDFLocateComponent::makingWidgetsAgainMakesASecondToolbar()
{
    QMainWindow window;
    Component component(m_library, L"DFLocateComponent");
    component->CreateWidget(m_common.get(), componentRoot);
    const QPointer<QToolBar> first = component->GetToolBar();
    window.addToolBar(first);
    component->CreateWidget(m_common.get(), componentRoot);
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
    QCOMPARE(component->CreateWidget(m_common.get(), componentRoot), nullptr);
    QCOMPARE(component->GetToolBar(), nullptr);
    QCOMPARE(traces.records.size(), std::size_t(1));
    QCOMPARE(traces.records[0].text, QStringLiteral("Exception in DFLocateComponent::CreateWidget"));
    QCOMPARE(traces.records[0].sourceFile,
             QStringLiteral("userinterface/guicomponents/dflocatecomponent/dflocatecomponent"));
    existing->RemoveObserver(&throwing);
    component->CreateWidget(m_common.get(), componentRoot);
    QVERIFY(component->GetToolBar());
}

void TestDFLocateComponent::aToolbarThatCannotBeMadeLeavesTheFormerOne()
{
    const Component component(m_library, L"DFLocateComponent");
    component->CreateWidget(m_common.get(), componentRoot);
    const QToolBar* const former = component->GetToolBar();
    trigger()->SetState(values::StateOrdinary, nullptr);
    RecordingObserver throwing([](Observable*, TChangeCode) { throw std::runtime_error("not now"); });
    trigger()->AddObserver(&throwing);
    QCOMPARE(component->CreateWidget(m_common.get(), componentRoot), nullptr);
    QCOMPARE(component->GetToolBar(), former);
    trigger()->RemoveObserver(&throwing);
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
    component->CreateWidget(m_common.get(), componentRoot);
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
    component->CreateWidget(m_common.get(), componentRoot);
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
    component->CreateWidget(m_common.get(), componentRoot);
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
    component->CreateWidget(m_common.get(), componentRoot);
    const Traces traces;
    component->ConnectInterfaceValues();
    QVERIFY(!throwing.codes.empty());
    QVERIFY(traces.records.back().text.startsWith(QStringLiteral("Exception in ")));
    indicator->RemoveObserver(&throwing);
}

void TestDFLocateComponent::withoutAPanelTheOtherAnnouncementsDoNothing()
{
    const Traces traces;
    const Component component(m_library, L"DFLocateComponent");
    component->ConnectVelmarGuiServices(m_common.get());
    component->CreateAndConnectInterfaceValues();
    QVERIFY(values::Tree::Instance()->ValuesBelow(QString()).empty());
    QVERIFY(traces.records.empty());
    component->CreateWidget(m_common.get(), componentRoot);
    auto* const running = m_tree->add<values::BoolValue>(runningPath);
    const std::size_t values = values::Tree::Instance()->ValuesBelow(QString()).size();
    component->ConnectVelmarGuiServices(m_common.get());
    component->CreateAndConnectInterfaceValues();
    QCOMPARE(values::Tree::Instance()->ValuesBelow(QString()).size(), values);
    // The toolbar is not told of values that the components make themselves.
    QCOMPARE(running->GetObserverCount(), std::size_t(0));
}

void TestDFLocateComponent::twoComponentsLiveSideBySide()
{
    auto* const enabled = m_tree->add<values::BoolValue>(enabledPath);
    auto* const status = m_tree->add<values::StringValue>(dfStatusPath);
    Component first(m_library, L"DFLocateComponent");
    const Component second(m_library, L"DFLocateComponent");
    for (const Component* const component : {&std::as_const(first), &second}) {
        (*component)->CreateWidget(m_common.get(), componentRoot);
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
        component->CreateWidget(m_common.get(), componentRoot);
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
