#pragma once

#include "guicomponentbase/iguicomponent.h"

#include <QPointer>

class QPixmap;

namespace VelmarGui {

class DFLocateToolBar;

/// The component as the host sees it: a frame that makes the toolbar and hands the host's announcements on to it.
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
    /// Makes a toolbar; one made before is left to its Qt parent. There is no panel: the result is null. Lets no
    /// exception out; without a new toolbar the former one stays.
    QWidget* CreateWidget(GuiComponentCommon* common, const QString& componentName) override;
    /// Null before CreateWidget() and when the toolbar has been deleted.
    QToolBar* GetToolBar() override;
    bool QueryOptionFlag() override;
    QWidget* GetExtraWidget() override;
    /// Has the toolbar bind the driver's values. May be called again. Lets no exception out.
    void ConnectInterfaceValues() override;

private:
    QPixmap* m_pIcon = nullptr;
    QPointer<DFLocateToolBar> m_pToolBar;
};

} // namespace VelmarGui
