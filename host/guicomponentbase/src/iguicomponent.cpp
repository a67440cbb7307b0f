#include "guicomponentbase/iguicomponent.h"

#include "faultpoints/faultpoint.h"
#include "guicomponentbase/ivelmarguiservice.h"

IDllInstance::~IDllInstance() = default;

namespace VelmarGui {

IVelmarGuiService::~IVelmarGuiService() = default;
IVelmarGuiUserInputControlService::~IVelmarGuiUserInputControlService() = default;

IGuiComponent::IGuiComponent(const QString& name)
    : m_name(name)
{
    faults::mayRaise("IGuiComponent::IGuiComponent");
}

IGuiComponent::~IGuiComponent() = default;

QWidget* IGuiComponent::CreateWidget(GuiComponentCommon* /*common*/, const QString& /*componentName*/)
{
    return nullptr;
}

bool IGuiComponent::IsFirstToolBar()
{
    return false;
}

bool IGuiComponent::IsCompleteToolbarRow() const
{
    return false;
}

void IGuiComponent::RegisterVelmarGuiServices(GuiComponentCommon* /*common*/) {}

void IGuiComponent::ConnectVelmarGuiServices(GuiComponentCommon* /*common*/) {}

void IGuiComponent::ConnectInterfaceValues() {}

// The interface has it by value; components are built for that. NOLINTNEXTLINE(performance-unnecessary-value-param)
void IGuiComponent::SglMdConnected(QString /*device*/) {}

void IGuiComponent::SglMdInfoConnected() {}

void IGuiComponent::SglReplayConnected(const QString& /*source*/) {}

void IGuiComponent::CreateAndConnectInterfaceValues() {}

void IGuiComponent::SglAboutToQuit() {}

void IGuiComponent::ForceParameterApply() {}

bool IGuiComponent::connectToDockWidgetPossible()
{
    return true;
}

} // namespace VelmarGui
