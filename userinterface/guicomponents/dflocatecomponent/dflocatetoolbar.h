#pragma once

#include "guicomponentbase/guicomponenttools.h"
#include "valueframework/valueclasses/valueobservermacros.h"

#include <QString>
#include <QToolBar>

#include <memory>

class QToolButton;

namespace VelmarGui {

class DFDetailToolbar;
class GuiComponentCommon;
class LocateStatusHandler;

/// The DF/Locate toolbar: the button that starts and stops DF, the lamp of the locate services, the DF settings an
/// operator changes most often, and the latest result.
///
/// What the button does follows the workflow setting: in "Continuous" it switches cyclic DF on and off, in all others a
/// click requests one DF. It is disabled, with the reason in its status tip, without an activity, while the driver does
/// not allow DF/Locate, and when the driver says neither. Ctrl+D clicks it. Setting the global value
/// "TriggerLocateStart" from outside, to whatever content, starts what a click would start; the state of that value
/// tells whether DF runs.
///
/// The toolbar binds the values that exist when it is made; "DFRunning" is bound in sl_VTConnected(). It may be deleted
/// at any time, also while a warning of its own is open and while a command of its own is carried out.
class DFLocateToolBar : public QToolBar, public GuiComponentTools, public IObserver
{
    Q_OBJECT
public:
    /// @p handlerName is the component's folder in the value tree. The driver's values are looked up in the folder of
    /// that name with "Handler" for every "Component".
    DFLocateToolBar(GuiComponentCommon* common, const QString& handlerName);
    ~DFLocateToolBar() override;

    void Update(Observable* source, TChangeCode code) override;

protected:
    /// The hot key clicks the start button.
    bool event(QEvent* event) override;

private slots:
    void sl_VTConnected();
    void SlotCyclicToggle(bool checked);
    void SlotSingleShot();
    void SlotLocateUsable(bool hriUsable, bool dfUsable);

private:
    void PublishTrigger();
    void AddStartButton();
    void BindStartButtonValues();
    void AddStatusDisplay(const QString& handlerName);
    void AddSettings();
    void AddLabel(const QString& text);
    void AddSpin(const QString& objectName, const QString& toolTip, QLatin1String value);
    void AddCombo(const QString& objectName, const QString& toolTip, int width, QLatin1String value);
    template <typename T>
    bool Link(values::ValuePtr<T>& pointer, QLatin1String value);

    void HandleContentChange(const Observable* source);
    void HandleActivityChange();
    void HandleCyclicStartedChange();
    void HandleEnabledChange();
    void HandleRunningChange();
    void HandleLocateTypeChange();
    void HandleWorkflowChange();
    void HandleExternalTrigger();

    [[nodiscard]] bool IsContinuous() const;
    [[nodiscard]] bool IsStartAllowed() const;
    [[nodiscard]] bool HasActivity() const;
    [[nodiscard]] QString ReasonForNoStart() const;
    void UpdateStartButton();
    void ExplainStartButton();
    void SwitchHotKey(bool on);
    void ShowCyclicState();
    void ConnectCyclicToggle();
    void DisconnectCyclicToggle();

    void WarnAndIssue(int command);
    void LeaveStartButtonBehind();
    void WarnWhenLocateTypeIsUnavailable() const;
    [[nodiscard]] QString LocateTypeWarning() const;
    [[nodiscard]] bool IsLocateLost();

    bool m_hriUsable = false;
    bool m_dfUsable = false;
    DFDetailToolbar* m_pDetailToolbar = nullptr;
    std::unique_ptr<LocateStatusHandler> m_pStatusHandler;
    values::ValuePtr<values::ValueSelection> m_commands;
    QToolButton* m_pStartButton = nullptr;
    values::ValueObservingPtr<values::BoolValue> m_enabled{this};
    values::ValueObservingPtr<values::BoolValue> m_running{this};
    values::ValueObservingPtr<values::ValueSelection> m_workflow{this};
    values::ValueObservingPtr<values::BoolValue> m_cyclicStarted{this};
    values::ValueObservingPtr<values::ValueSelection> m_activity{this};
    values::ValueObservingPtr<values::BoolValue> m_allowed{this};
    values::ValueObservingPtr<values::ValueSelection> m_locateType{this};
    values::ValueObservingPtr<values::BoolValue> m_trigger{this};
    QString m_toolbarPath;
    /// Not "none" at first: the hot key is registered for the first time only after "Enabled" has been false once.
    int m_hotKeyId = 0;
    QAction* m_pStartButtonAction = nullptr;
    int m_commandsUnderWay = 0;
};

} // namespace VelmarGui
