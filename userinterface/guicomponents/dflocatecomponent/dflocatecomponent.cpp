#include "dflocatecomponent.h"

#include "brixappstartup/translationcenter.h"
#include "dflocatesettingswidget.h"
#include "dflocatetoolbar.h"
#include "entryguard.h"
#include "guicomponentbase/guicomponentcommon.h"

#include <QPixmap>

#include <memory>

namespace VelmarGui {

namespace {

// Handed over as copies: the host may keep them for longer than it keeps this library loaded.
const QLatin1String sourceFile("userinterface/guicomponents/dflocatecomponent/dflocatecomponent");
const QLatin1String componentNamespace("DFLocateComponent");
const QLatin1String handlerNamespace("DFLocateHandler");

// clang-format off
const char* const iconXpm[] = {
    "16 16 3 1",
    "# c #000000",
    "b c #0000ff",
    ". c none",
    "#.....###...####",
    "#....#...#.#....",
    "#....#...#.#....",
    "#....#...#.#....",
    "#....#...#.#....",
    "#....#...#.#....",
    "#....#...#.#....",
    "####..###...####",
    "................",
    "................",
    "...............b",
    "............bbbb",
    ".........bbbbbbb",
    "......bbbbbbbbbb",
    "...bbbbbbbbbbbbb",
    "bbbbbbbbbbbbbbbb",
};
// clang-format on

} // namespace

DFLocateComponent::DFLocateComponent(const QString& name)
    : IGuiComponent(name)
{
    auto icon = std::make_unique<QPixmap>(iconXpm);
    TranslationCenter::Instance()->Register(handlerNamespace);
    m_pIcon = icon.release();
}

DFLocateComponent::~DFLocateComponent()
{
    // The icon stays for ever: a component may be destroyed when the application object, and with it the right to touch
    // a pixmap, has gone already.
    runEntry("DFLocateComponent::~DFLocateComponent", sourceFile, __LINE__,
             [] { TranslationCenter::Instance()->Unregister(handlerNamespace); });
    delete m_pToolBar;
}

bool DFLocateComponent::QueryReady()
{
    return true;
}

void DFLocateComponent::NotifyAttached() {}

void DFLocateComponent::NotifyDetached() {}

QWidget* DFLocateComponent::CreateWidget(GuiComponentCommon* common, const QString& componentName)
{
    QWidget* panel = nullptr;
    runEntry("DFLocateComponent::CreateWidget", sourceFile, __LINE__, [&] {
        m_pToolBar = new DFLocateToolBar(common, componentName);
        m_pSettings = new DFLocateSettingsWidget(common, componentName);
        panel = m_pSettings;
    });
    return panel;
}

QToolBar* DFLocateComponent::GetToolBar()
{
    return m_pToolBar;
}

bool DFLocateComponent::QueryOptionFlag()
{
    return false;
}

void DFLocateComponent::ConnectVelmarGuiServices(GuiComponentCommon* common)
{
    runEntry("DFLocateComponent::ConnectVelmarGuiServices", sourceFile, __LINE__, [&] {
        const std::type_index type = typeid(IVelmarGuiUserInputControlService);
        const auto found = common->getServiceRegistry()->findServiceRegistrationsImpl(type, {});
        if (found.empty() || !m_pSettings)
            return;
        const auto service = std::static_pointer_cast<IVelmarGuiUserInputControlService>(found.front()->get(type));
        if (service != nullptr) {
            QObject::connect(service->GetQObject(),
                             "2si_setUserInputMode(IVelmarGuiUserInputControlService::eUserInputMode)", m_pSettings,
                             "1sl_setUserInputMode(IVelmarGuiUserInputControlService::eUserInputMode)");
        }
    });
}

QWidget* DFLocateComponent::GetExtraWidget()
{
    return nullptr;
}

void DFLocateComponent::ConnectInterfaceValues()
{
    runEntry("DFLocateComponent::ConnectInterfaceValues", sourceFile, __LINE__, [this] {
        if (m_pSettings)
            m_pSettings->ConnectValues();
        if (m_pToolBar)
            QMetaObject::invokeMethod(m_pToolBar, "sl_VTConnected", Qt::DirectConnection);
    });
}

void DFLocateComponent::CreateAndConnectInterfaceValues()
{
    runEntry("DFLocateComponent::CreateAndConnectInterfaceValues", sourceFile, __LINE__, [this] {
        if (m_pSettings)
            m_pSettings->sl_Offline();
    });
}

} // namespace VelmarGui

extern "C" {

/// Makes a component. Null when it cannot be constructed. No name is the empty one.
Q_DECL_EXPORT IDllInstance* ZTCreate(const wchar_t* name)
{
    using VelmarGui::DFLocateComponent;
    DFLocateComponent* component = nullptr;
    VelmarGui::runEntry("DFLocateComponent::ZTCreate", VelmarGui::sourceFile, __LINE__, [&] {
        component = new DFLocateComponent(name != nullptr ? QString::fromWCharArray(name) : QString());
        // A component whose own translations cannot be registered works all the same.
        TranslationCenter::Instance()->Register(VelmarGui::componentNamespace);
    });
    return component;
}

/// Takes a component back. Objects of other classes are left alone.
Q_DECL_EXPORT void ZTDestroy(IDllInstance* instance)
{
    auto* const component = dynamic_cast<VelmarGui::DFLocateComponent*>(instance);
    if (component == nullptr)
        return;
    VelmarGui::runEntry("DFLocateComponent::ZTDestroy", VelmarGui::sourceFile, __LINE__,
                        [] { TranslationCenter::Instance()->Unregister(VelmarGui::componentNamespace); });
    delete component;
}

} // extern "C"
