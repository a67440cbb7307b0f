#pragma once

#include "guicomponentbase/guicomponentbaseglobal.h"
#include "guicomponentbase/ivelmarguiservice.h"
#include "servicemanagement/serviceregistry.h"

#include <QObject>
#include <QString>

#include <memory>

namespace VelmarGui {

class GuiComponentTools;

/// What the host shares with all its components: the service registry, the components' parameter sets, links and global
/// names, and its announcements. Outlives the components' widgets. GUI thread only.
class GUICOMPONENTBASE_EXPORT GuiComponentCommon : public QObject
{
    Q_OBJECT
public:
    using Services = ServiceManagement::ServiceRegistry<IVelmarGuiService>;

    GuiComponentCommon();
    ~GuiComponentCommon() override;

    /// Never empty.
    [[nodiscard]] const std::shared_ptr<Services>& getServiceRegistry() const;

    /// @name For the host: parameter sets
    /// @p component is the name the component got in CreateWidget().
    /// @{

    /// Hands @p xml in as the new content: stores it, then calls the slot with which the component registered the set,
    /// with a text value that holds @p xml. False when the component has no such set.
    bool SetParameterSet(const QString& component, const QString& name, const QString& xml);
    /// The content last handed in or reported by the component; empty when there is none.
    [[nodiscard]] QString GetParameterSet(const QString& component, const QString& name) const;
    /// @}

    /// For the host: the folder with the form descriptions; empty at first, which means the current folder.
    void SetFormFolder(const QString& folder);

signals:
    /// A component's panel was edited by the operator.
    void si_parametersModified();
    /// The host wants the components to report their parameter sets.
    void si_parametersRequested();
    /// The host's display properties changed.
    void si_propertiesChanged();
    /// For the host: @p component has reported the content of its parameter set @p name, which GetParameterSet() gives.
    /// Emitted for every report, also of the same content; not for what the host hands in.
    void si_parameterSetUpdated(const QString& component, const QString& name);

private:
    friend class GuiComponentTools;
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace VelmarGui
