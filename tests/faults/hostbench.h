#pragma once

#include "../component/loadedcomponent.h"
#include "guicomponentbase/guicomponentcommon.h"
#include "support/freshtree.h"
#include "valueframework/valueclasses/valueobservermacros.h"

#include <QLabel>
#include <QPointer>
#include <QToolBar>
#include <QToolButton>

#include <memory>
#include <optional>

namespace testsupport {

/// Whether there is a driver.
enum class Mode
{
    Online,
    Offline
};

/// A host with one component and, online, a driver of two DF stations.
class HostBench
{
public:
    HostBench(const ComponentLibrary& library, Mode mode);
    ~HostBench();
    HostBench(const HostBench&) = delete;
    HostBench& operator=(const HostBench&) = delete;

    [[nodiscard]] Mode mode() const { return m_mode; }

    /// @name The host's calls, in their order
    /// @{
    void create();
    void makeWidgets();
    void connectServices();
    void announceTree();
    void destroy();
    /// @}

    /// The component's; null without one.
    [[nodiscard]] QToolBar* toolBar() const;
    /// Whether the host got a component with toolbar and panel.
    [[nodiscard]] bool isComplete() const;

    /// @name What operator, driver and host do, each other than the last time so that it is a change
    /// @{
    void announceEnabled();
    void measure();
    void openDetailedResults();
    void openReport();
    void reportStatus();
    void changeStationList();
    void changeSetting();
    void changeSpan();
    void changeWorkflow();
    void exchangeDevice();
    void handParameterSetIn();
    void takeParameterSetOut();
    void reportDriverSettings();
    void switchUserInput();
    void changeProperties();
    /// @}

    /// @name What is wrong with the component; empty: nothing
    /// @{

    /// A setting that is changed reaches parameter set, driver and form.
    [[nodiscard]] QString whatIsWrongWithSettings();
    /// The start button starts a DF, and its result is shown. Online only.
    [[nodiscard]] QString whatIsWrongWithMeasuring();
    /// @}

private:
    class UserInputControl;

    void addDriverValues();
    void publishDevice();
    template <typename T>
    T* value(const char* path) const;
    [[nodiscard]] values::ValueSelection* selection(const char* path) const;
    [[nodiscard]] QString label(const char* objectName) const;
    [[nodiscard]] QToolButton* startButton() const;
    [[nodiscard]] QString parameterSet() const;
    void writeResult();
    int next();

    FreshTree m_tree;
    const ComponentLibrary& m_library;
    const Mode m_mode;
    VelmarGui::GuiComponentCommon m_common;
    std::shared_ptr<UserInputControl> m_userInput;
    std::optional<ComponentLibrary::Component> m_component;
    QPointer<QWidget> m_panel;
    int m_step = 0;
    QString m_time;
};

} // namespace testsupport
