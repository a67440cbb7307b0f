#pragma once

#include "guicomponentbase/iguicomponent.h"

#include <QPointer>

class QPixmap;

namespace VelmarGui {

class DFLocateSettingsWidget;
class DFLocateToolBar;

/// The component as the host sees it: a frame that makes the toolbar and the settings panel and hands the host's
/// announcements on to them. Either may be deleted by others at any time. What the host calls lets no exception out.
///
/// While it lives it keeps the translations of "DFLocateHandler" registered; those of "DFLocateComponent" are the
/// factory's.
class DFLocateComponent final : public IGuiComponent
{
public:
    /// Needs an application object, for the icon.
    explicit DFLocateComponent(const QString& name);
    /// Deletes the toolbar when it still exists.
    ~DFLocateComponent() override;

    bool QueryReady() override;
    void NotifyAttached() override;
    void NotifyDetached() override;
    /// Makes a toolbar and a settings panel, which is the result and from then on the host's. Widgets made before are
    /// left to their Qt parents. Null when one of them cannot be made; one that could not be made leaves the former
    /// one.
    QWidget* CreateWidget(GuiComponentCommon* common, const QString& componentName) override;
    /// Null before CreateWidget() and when the toolbar has been deleted.
    QToolBar* GetToolBar() override;
    bool QueryOptionFlag() override;
    /// Has the panel follow the host's user input mode. Nothing is connected without a panel or without the service.
    void ConnectVelmarGuiServices(GuiComponentCommon* common) override;
    QWidget* GetExtraWidget() override;
    /// Has the panel, then the toolbar, bind the driver's values. May be called again.
    void ConnectInterfaceValues() override;
    /// Has the panel make its values and work without a driver. The toolbar has nothing to bind then.
    void CreateAndConnectInterfaceValues() override;

private:
    QPixmap* m_pIcon = nullptr;
    QPointer<DFLocateToolBar> m_pToolBar;
    QPointer<DFLocateSettingsWidget> m_pSettings;
};

} // namespace VelmarGui
