#pragma once

#include "guicomponentbase/idllinstance.h"

#include <QString>

class QToolBar;
class QWidget;

namespace VelmarGui {

class GuiComponentCommon;

/// What the host asks of a GUI component. Called on the GUI thread, CreateWidget() first. The order of the virtual
/// operations is part of the binary interface.
class GUICOMPONENTBASE_EXPORT IGuiComponent : public IDllInstance
{
public:
    explicit IGuiComponent(const QString& name);
    ~IGuiComponent() override;
    IGuiComponent(const IGuiComponent&) = delete;
    IGuiComponent& operator=(const IGuiComponent&) = delete;

    /// Name given at construction.
    [[nodiscard]] const QString& GetName() const { return m_name; }

    /// True when the component can be used.
    virtual bool QueryReady() = 0;
    /// The component's widgets were put into, or taken out of, the main window.
    virtual void NotifyAttached() = 0;
    virtual void NotifyDetached() = 0;

    /// Makes the component's widgets. @p common outlives them; @p componentName is the component's folder in the value
    /// tree, ending in "/". The result is the component's panel, owned by the caller, or null when it has none.
    virtual QWidget* CreateWidget(GuiComponentCommon* common, const QString& componentName);
    /// The component's toolbar, owned by the component; null when it has none.
    virtual QToolBar* GetToolBar() = 0;
    /// True when the component wants an entry in the host's options.
    virtual bool QueryOptionFlag() = 0;
    /// True when the toolbar starts a new row. Default: false.
    virtual bool IsFirstToolBar();
    /// True when the toolbar takes a whole row. Default: false.
    virtual bool IsCompleteToolbarRow() const;

    /// The component registers services of its own. Default: none.
    virtual void RegisterVelmarGuiServices(GuiComponentCommon* common);
    /// All services are registered; the component connects to those it uses. Default: none.
    virtual void ConnectVelmarGuiServices(GuiComponentCommon* common);
    /// A further widget for the main window, or null.
    virtual QWidget* GetExtraWidget() = 0;

    /// The driver's values are in the tree: the component binds to them. Default: nothing.
    virtual void ConnectInterfaceValues();
    /// A measuring device, its description, or a replay named by its source was connected. Default: nothing.
    virtual void SglMdConnected(QString device);
    virtual void SglMdInfoConnected();
    virtual void SglReplayConnected(const QString& source);
    /// There is no driver: the component creates the values it needs, then binds. Default: nothing.
    virtual void CreateAndConnectInterfaceValues();
    /// The application is about to quit. Default: nothing.
    virtual void SglAboutToQuit();
    /// Edits not applied yet are to be applied now. Default: nothing.
    virtual void ForceParameterApply();
    /// True when the component's panel may be placed in a dock. Default: true.
    virtual bool connectToDockWidgetPossible();

private:
    QString m_name;
};

} // namespace VelmarGui
