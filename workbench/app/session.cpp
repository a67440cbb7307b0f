#include "app/session.h"

#include "app/contained.h"
#include "app/userinputcontrol.h"
#include "drivers/dfsource.h"

#include "guicomponentbase/guicomponentcommon.h"
#include "guicomponentbase/iguicomponent.h"
#include "valueframework/tree.h"
#include "valueframework/valueclasses/value.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QToolBar>

namespace workbench {

namespace {

const QString componentName = QStringLiteral("DFLocateComponent");

/// Where the form descriptions are, installed or in the build folder.
QString formFolder()
{
    const QString prefix = QCoreApplication::applicationDirPath() + QStringLiteral("/../");
    const QString forms = QStringLiteral("/dflocate/forms");
    const QString installed = QDir::cleanPath(prefix + QStringLiteral(DFLOCATE_DATA_FOLDER) + forms);
    const QString built = QDir::cleanPath(prefix + QStringLiteral("share") + forms);
    return QFileInfo::exists(installed) ? installed : built;
}

} // namespace

QString componentRoot()
{
    return QStringLiteral("/GUI/DFLocateComponent/");
}

QString handlerRoot()
{
    return QStringLiteral("/GUI/DFLocateHandler/");
}

QString parameterRoot()
{
    return componentRoot() + QStringLiteral("Parameters/");
}

Session::Session(std::unique_ptr<DfSource> source, QObject* parent)
    : QObject(parent)
    , m_userInputControl(std::make_shared<UserInputControl>())
    , m_common(std::make_unique<VelmarGui::GuiComponentCommon>())
{
    m_common->SetFormFolder(formFolder());
    if (source)
        m_driver = std::make_unique<DfDriver>(std::move(source), handlerRoot(), parameterRoot());
}

Session::~Session()
{
    endComponent();
}

std::optional<ComponentError> Session::start(const QString& componentFile, const Placement& place,
                                             LibraryPlace libraryPlace)
{
    auto loaded = loadComponent(componentFile, componentName, libraryPlace);
    if (const auto* const error = std::get_if<ComponentError>(&loaded))
        return *error;
    m_component = std::move(std::get<std::unique_ptr<LoadedComponent>>(loaded));

    std::optional<ComponentError> error = connectComponent(place);
    if (error) {
        error->file = componentFile;
        endComponent();
    }
    return error;
}

std::optional<ComponentError> Session::connectComponent(const Placement& place)
{
    using Kind = ComponentError::Kind;
    VelmarGui::IGuiComponent& component = m_component->component();

    m_common->getServiceRegistry()->registerService<IVelmarGuiUserInputControlService>(m_userInputControl);
    if (const auto thrown = contained([&] {
            m_panel = component.CreateWidget(m_common.get(), componentRoot());
            m_toolBar = component.GetToolBar();
        }))
        return ComponentError{Kind::WidgetsThrew, {}, *thrown};
    if (m_toolBar == nullptr)
        return ComponentError{Kind::NoToolBar, {}, {}};
    place(m_toolBar, m_panel);
    if (const auto thrown = contained([&] { component.NotifyAttached(); }))
        return ComponentError{Kind::WidgetsThrew, {}, *thrown};

    if (const auto thrown = contained([&] {
            component.RegisterVelmarGuiServices(m_common.get());
            component.ConnectVelmarGuiServices(m_common.get());
        }))
        return ComponentError{Kind::ServicesThrew, {}, *thrown};
    if (const auto thrown = contained([&] {
            if (m_driver)
                component.ConnectInterfaceValues();
            else
                component.CreateAndConnectInterfaceValues();
        }))
        return ComponentError{Kind::AnnouncementThrew, {}, *thrown};
    return std::nullopt;
}

QToolBar* Session::toolBar() const
{
    return m_toolBar;
}

void Session::announceEnabled()
{
    // Looked up each time: an outside party may delete the value while its observers are told.
    for (const bool enabled : {false, true}) {
        auto* const value = dynamic_cast<values::BoolValue*>(
            values::Tree::Instance()->FindValue(handlerRoot() + QStringLiteral("Enabled")));
        if (m_driver && value != nullptr)
            value->SetValue(enabled, nullptr);
    }
}

void Session::endComponent()
{
    if (!m_component)
        return;
    VelmarGui::IGuiComponent& component = m_component->component();
    if (const auto thrown = contained([&] {
            component.SglAboutToQuit();
            component.NotifyDetached();
        }))
        qWarning("%s", qPrintable(tr("%1: leaving the component let %2 out.").arg(m_component->file(), *thrown)));

    // The panel is the host's, the toolbar the component's; one that its component forgets goes all the same.
    delete m_panel;
    m_component.reset();
    delete m_toolBar;
}

} // namespace workbench
