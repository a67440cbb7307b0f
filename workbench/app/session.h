#pragma once

#include "app/componentlibrary.h"
#include "drivers/dfdriver.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>

class QToolBar;
class QWidget;

namespace VelmarGui {
class GuiComponentCommon;
}

namespace workbench {

class DfSource;
class UserInputControl;

/// @name The component's folders in the value tree, each ending in "/"
/// @{
[[nodiscard]] QString componentRoot();
[[nodiscard]] QString handlerRoot();
[[nodiscard]] QString parameterRoot();
/// @}

/// One component at work with one driver, from loading to handing it back. GUI thread only.
///
/// The window that holds the component's widgets may end before or after the session; the session deletes the widgets
/// that are left.
class Session : public QObject
{
    Q_OBJECT
public:
    /// Puts the component's widgets where they belong: its toolbar (never null) and its panel (null when it has none).
    using Placement = std::function<void(QToolBar* toolBar, QWidget* panel)>;

    /// Creates the driver's values at once: a component binds to the values that it finds. @p source null: offline,
    /// without a driver.
    explicit Session(std::unique_ptr<DfSource> source, QObject* parent = nullptr);
    ~Session() override;

    /// Loads the component, has it make its widgets, hands over the services and announces the values. To be called
    /// once. After an error nothing of the component is left.
    [[nodiscard]] std::optional<ComponentError> start(const QString& componentFile, const Placement& place,
                                                      LibraryPlace libraryPlace = LibraryPlace::Safe);

    /// Null when offline.
    [[nodiscard]] DfDriver* driver() const { return m_driver.get(); }
    /// Null without a component.
    [[nodiscard]] QToolBar* toolBar() const;
    [[nodiscard]] UserInputControl& userInputControl() const { return *m_userInputControl; }
    [[nodiscard]] VelmarGui::GuiComponentCommon& common() const { return *m_common; }

    /// Says "disabled", then "enabled": components set up their hot keys at this change only. Without a driver,
    /// nothing.
    void announceEnabled();

private:
    std::optional<ComponentError> connectComponent(const Placement& place);
    void endComponent();

    // In the order in which they are made; what stands further down needs what stands above.
    std::shared_ptr<UserInputControl> m_userInputControl;
    std::unique_ptr<VelmarGui::GuiComponentCommon> m_common;
    std::unique_ptr<DfDriver> m_driver;
    std::unique_ptr<LoadedComponent> m_component;
    QPointer<QToolBar> m_toolBar;
    QPointer<QWidget> m_panel;
};

} // namespace workbench
