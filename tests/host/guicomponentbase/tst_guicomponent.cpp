#include "guicomponentbase/guicomponentcommon.h"
#include "guicomponentbase/guicomponenttools.h"
#include "guicomponentbase/iguicomponent.h"
#include "support/testmain.h"
#include "valueframework/valuebase.h"

#include <QMetaType>
#include <QSignalSpy>

#include <type_traits>

using namespace VelmarGui;

namespace {

/// Answers what it must and leaves everything else to the base.
class PlainComponent : public IGuiComponent
{
public:
    using IGuiComponent::IGuiComponent;
    bool QueryReady() override { return true; }
    void NotifyAttached() override {}
    void NotifyDetached() override {}
    QToolBar* GetToolBar() override { return nullptr; }
    bool QueryOptionFlag() override { return false; }
    QWidget* GetExtraWidget() override { return nullptr; }
};

class ReloadingTools : public GuiComponentTools
{
public:
    using GuiComponentTools::GuiComponentTools;
    using GuiComponentTools::OnReloadedValues;
};

class InputControl : public QObject, public IVelmarGuiUserInputControlService
{
public:
    QObject* GetQObject() override { return this; }
};

const QString component = QStringLiteral("/GUI/SomeComponent/");

} // namespace

class TestGuiComponent : public QObject
{
    Q_OBJECT
private slots:
    void aComponentKeepsItsName()
    {
        QCOMPARE(PlainComponent(QStringLiteral("SomeComponent")).GetName(), "SomeComponent");
    }

    void aComponentNeedNotCareForWhatItDoesNotUse()
    {
        GuiComponentCommon common;
        PlainComponent plain(QStringLiteral("SomeComponent"));
        QVERIFY(plain.CreateWidget(&common, component) == nullptr);
        QVERIFY(!plain.IsFirstToolBar());
        QVERIFY(!plain.IsCompleteToolbarRow());
        QVERIFY(plain.connectToDockWidgetPossible());
        plain.RegisterVelmarGuiServices(&common);
        plain.ConnectVelmarGuiServices(&common);
        plain.ConnectInterfaceValues();
        plain.SglMdConnected(QStringLiteral("receiver"));
        plain.SglMdInfoConnected();
        plain.SglReplayConnected(QStringLiteral("file"));
        plain.CreateAndConnectInterfaceValues();
        plain.SglAboutToQuit();
        plain.ForceParameterApply();
    }

    void aComponentIsDestroyedThroughTheFactorysInterface()
    {
        QVERIFY(std::has_virtual_destructor_v<IDllInstance>);
        QVERIFY(std::has_virtual_destructor_v<IGuiComponent>);
        QVERIFY(!std::has_virtual_destructor_v<GuiComponentTools>);
    }

    void theServiceRegistryIsThereFromTheStart()
    {
        const GuiComponentCommon common;
        QVERIFY(common.getServiceRegistry() != nullptr);
        QCOMPARE(&common.getServiceRegistry(), &common.getServiceRegistry());
    }

    void theUserInputServiceIsFoundByItsInterface()
    {
        GuiComponentCommon common;
        const auto service = std::make_shared<InputControl>();
        common.getServiceRegistry()->registerService<IVelmarGuiUserInputControlService>(service);
        const auto found = common.getServiceRegistry()->findServiceRegistrationsImpl(
            typeid(IVelmarGuiUserInputControlService), nullptr);
        QCOMPARE(found.size(), std::size_t(1));
        const auto control = std::static_pointer_cast<IVelmarGuiUserInputControlService>(
            found.front()->get(typeid(IVelmarGuiUserInputControlService)));
        QCOMPARE(control->GetQObject(), service.get());
    }

    void userInputModesHaveTheNumbersOfTheBinaryInterface()
    {
        QCOMPARE(int(IVelmarGuiUserInputControlService::FullInput), 0);
        QCOMPARE(int(IVelmarGuiUserInputControlService::RestrictedInput), 1);
        QCOMPARE(int(IVelmarGuiUserInputControlService::LockedInput), 2);
        QCOMPARE(int(IVelmarGuiUserInputControlService::ViewSwitchInput), 3);
    }

    void announcementsReachStringConnections()
    {
        GuiComponentCommon common;
        QSignalSpy modified(&common, SIGNAL(si_parametersModified()));
        QSignalSpy requested(&common, SIGNAL(si_parametersRequested()));
        QSignalSpy properties(&common, SIGNAL(si_propertiesChanged()));
        emit common.si_parametersModified();
        emit common.si_parametersRequested();
        emit common.si_propertiesChanged();
        QCOMPARE(modified.count(), 1);
        QCOMPARE(requested.count(), 1);
        QCOMPARE(properties.count(), 1);
    }

    void valuesCanTravelThroughSignals()
    {
        const GuiComponentCommon common;
        QVERIFY(QMetaType::isRegistered(QMetaType::type("values::ValueBase*")));
    }

    void toolsKnowTheFoldersOfTheirComponent()
    {
        GuiComponentCommon common;
        const GuiComponentTools tools(&common, component);
        QCOMPARE(tools.GetComponentPath(), "/GUI/SomeComponent/");
        QCOMPARE(tools.GetParameterPath(), "/GUI/SomeComponent/Parameters/");
        QCOMPARE(tools.GetGlobalPath(), "/GLOBAL/");
    }

    void nothingIsAddedToTheComponentsName()
    {
        GuiComponentCommon common;
        const GuiComponentTools tools(&common, QStringLiteral("Bare"));
        QCOMPARE(tools.GetComponentPath(), "Bare");
        QCOMPARE(tools.GetParameterPath(), "BareParameters/");
    }

    void toolsKnowTheSharedObjectUntilItGoes()
    {
        auto common = std::make_unique<GuiComponentCommon>();
        const GuiComponentTools tools(common.get(), component);
        QCOMPARE(tools.GetCommon(), common.get());
        common.reset();
        QVERIFY(tools.GetCommon() == nullptr);
        QVERIFY(GuiComponentTools(nullptr, component).GetCommon() == nullptr);
    }

    void aComponentWorksOnlineUntilToldOtherwise()
    {
        GuiComponentCommon common;
        GuiComponentTools tools(&common, component);
        GuiComponentTools others(&common, component);
        QVERIFY(!tools.IsOffline());
        tools.SetOffline(true);
        QVERIFY(tools.IsOffline());
        QVERIFY(!others.IsOffline());
        tools.SetOffline(false);
        QVERIFY(!tools.IsOffline());
    }

    void hostNoticesNeedNoAnswer()
    {
        GuiComponentCommon common;
        ReloadingTools tools(&common, component);
        tools.SetParams(QStringLiteral("anything"));
        tools.OnReloadedValues();
        QCOMPARE(tools.GetComponentPath(), component);
    }

    void aFormDescriptionLiesInTheHostsFormFolder()
    {
        GuiComponentCommon common;
        const GuiComponentTools tools(&common, component);
        QCOMPARE(tools.GetPGXMLFilename("DF_Settings", "FFP"), "DF_Settings_FFP.xml");
        common.SetFormFolder("/usr/share/forms");
        QCOMPARE(tools.GetPGXMLFilename("DF_Settings", "FFP"), "/usr/share/forms/DF_Settings_FFP.xml");
        common.SetFormFolder("/usr/share/forms/");
        QCOMPARE(tools.GetPGXMLFilename("DF_Settings", "FFP"), "/usr/share/forms/DF_Settings_FFP.xml");
    }

    void aFormDescriptionsNameIsTakenAsItIs()
    {
        GuiComponentCommon common;
        const GuiComponentTools tools(&common, component);
        QCOMPARE(tools.GetPGXMLFilename("%2", "%1"), "%2_%1.xml");
    }

    void aFormDescriptionHasANameWithoutTheSharedObject()
    {
        auto common = std::make_unique<GuiComponentCommon>();
        common->SetFormFolder("/forms");
        const GuiComponentTools tools(common.get(), component);
        common.reset();
        QCOMPARE(tools.GetPGXMLFilename("DF_Settings", "FFP"), "DF_Settings_FFP.xml");
    }
};

DFL_TEST_MAIN_WITH(TestGuiComponent, QCoreApplication)
#include "tst_guicomponent.moc"
