#include "dflocatetoolbar.h"

#include "commandtable.h"
#include "dfdetailtoolbar.h"
#include "entryguard.h"
#include "fittedtext.h"
#include "hostcodes.h"
#include "icons/dfletters.xpm"
#include "locatestatushandler.h"
#include "valuetools.h"

#include "devicecontrol/guicentral.h"
#include "valuewidgets/vcnumericfloatspin.h"

#include <QCoreApplication>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QPixmap>
#include <QPointer>
#include <QScopeGuard>
#include <QShortcutEvent>
#include <QToolButton>

namespace VelmarGui {

namespace {

/// @name Lines under which the host's trace knows this unit's traces
/// @{
constexpr unsigned short enabledMissingLine = 142;
constexpr unsigned short allowedMissingLine = 148;
constexpr unsigned short workflowMissingLine = 158;
constexpr unsigned short locateTypeMissingLine = 168;
constexpr unsigned short activityMissingLine = 180;
constexpr unsigned short cyclicStartedMissingLine = 192;
constexpr unsigned short commandsMissingLine = 198;
constexpr unsigned short runningMissingLine = 378;
constexpr unsigned short externalSingleShotLine = 464;
constexpr unsigned short externalCyclicLine = 469;
/// @}

const QLatin1String triggerName("TriggerLocateStart");

constexpr int noActivityKey = 0;
constexpr int onlineKey = 1;
constexpr int historyKey = 2;

constexpr int noHotKey = -1;

constexpr int labelWidth = 18;
constexpr int spinWidth = 40;

// Not a literal QString: the host may keep traces for longer than this library is loaded.
const QLatin1String sourceFile("userinterface/guicomponents/dflocatecomponent/dflocatetoolbar");

void trace(QLatin1String text, unsigned short line)
{
    traceIfEnabled(text, sourceFile, line);
}

void traceMissing(QLatin1String value, unsigned short line)
{
    traceIfEnabled(QStringLiteral("Missing DF Value %1").arg(value), sourceFile, line);
}

QString handlerPath(QString componentPath)
{
    return componentPath.replace(QLatin1String("Component"), QLatin1String("Handler"));
}

} // namespace

DFLocateToolBar::DFLocateToolBar(GuiComponentCommon* common, const QString& handlerName)
    : GuiComponentTools(common, handlerName)
    , m_toolbarPath(handlerPath(handlerName))
{
    setObjectName(QStringLiteral("DFLocateToolBar"));
    setWindowTitle(tr("DF/Locate Toolbar"));
    PublishTrigger();
    AddStartButton();
    BindStartButtonValues();
    AddStatusDisplay(handlerName);
    AddSettings();
    m_pDetailToolbar = new DFDetailToolbar(this, m_toolbarPath);
}

DFLocateToolBar::~DFLocateToolBar()
{
    runEntry("DFLocateToolBar::~DFLocateToolBar", sourceFile, __LINE__,
             [this] { GuiCentral::Instance()->RemoveHotKeyReceiver(this); });
    if (m_commandsUnderWay > 0)
        LeaveStartButtonBehind();
}

/// Qt still works with a button after the slots of its signals have returned. When the toolbar goes in one of them, the
/// button goes later.
void DFLocateToolBar::LeaveStartButtonBehind()
{
    removeAction(m_pStartButtonAction);
    m_pStartButtonAction->setParent(nullptr);
    m_pStartButtonAction->deleteLater(); // and with it the button, which it owns
}

void DFLocateToolBar::PublishTrigger()
{
    values::LinkOrCreate(m_trigger, GetComponentPath() + triggerName);
    m_trigger->SetState(NotInUseState, this);
    AddGlobalValue(m_trigger.get(), triggerName, nullptr, nullptr);
}

void DFLocateToolBar::AddStartButton()
{
    m_pStartButton = new QToolButton(this);
    m_pStartButton->setObjectName(QStringLiteral("DFStarter"));
    m_pStartButton->setIcon(QIcon(QPixmap(dfletters_xpm)));
    m_pStartButton->setToolTip(tr("Start/Stop Locate"));
    m_pStartButtonAction = addWidget(m_pStartButton);
}

/// The order matters: each step sees only the values bound before it.
void DFLocateToolBar::BindStartButtonValues()
{
    if (Link(m_enabled, QLatin1String("Enabled")))
        HandleEnabledChange();
    else
        traceMissing(QLatin1String("Enabled"), enabledMissingLine);

    if (!Link(m_allowed, QLatin1String("Values/DFLocateAllowed")))
        traceMissing(QLatin1String("DFLocateAllowed"), allowedMissingLine);

    if (Link(m_workflow, QLatin1String("Config/DFLocateWorkflow")))
        HandleWorkflowChange();
    else
        traceMissing(QLatin1String("DFLocateWorkflow"), workflowMissingLine);

    if (Link(m_locateType, QLatin1String("Config/DFLocateType")))
        HandleLocateTypeChange();
    else
        traceMissing(QLatin1String("DFLocateType"), locateTypeMissingLine);

    if (!Link(m_activity, QLatin1String("Config/DFLocateActivity")))
        traceMissing(QLatin1String("DFLocateActivity"), activityMissingLine);
    UpdateStartButton();

    if (!Link(m_cyclicStarted, QLatin1String("Values/Result/CyclicLocateStarted")))
        traceMissing(QLatin1String("CyclicLocateStarted"), cyclicStartedMissingLine);
    else if (m_cyclicStarted->GetValue())
        m_pStartButton->setChecked(true);

    if (!Link(m_commands, QLatin1String("Values/Commands")))
        traceMissing(QLatin1String("Commands"), commandsMissingLine);
}

void DFLocateToolBar::AddStatusDisplay(const QString& handlerName)
{
    addSeparator();
    m_pStatusHandler = std::make_unique<LocateStatusHandler>(this, GetCommon(), handlerName, m_toolbarPath);
    connect(m_pStatusHandler.get(), SIGNAL(si_locateUsable(bool, bool)), this, SLOT(SlotLocateUsable(bool, bool)));
    addWidget(m_pStatusHandler->GetLamp());
    addSeparator();
}

void DFLocateToolBar::AddSettings()
{
    AddLabel(tr("L."));
    AddSpin(QStringLiteral("Level threshold"), tr("Level threshold"), QLatin1String("Config/Threshold"));
    AddLabel(tr("Q."));
    AddSpin(QStringLiteral("Quality threshold"), tr("Quality threshold"), QLatin1String("Config/Quality"));
    AddCombo(QStringLiteral("DF Mode"), tr("DF Mode"), 60, QLatin1String("Config/Mode"));
    AddCombo(QStringLiteral("DF Bandwidth"), tr("DF Bandwidth"), 80, QLatin1String("Config/Bandwidth"));
    AddCombo(QStringLiteral("DF Averaging"), tr("DF Averaging"), 60, QLatin1String("Config/AverageTime"));
}

void DFLocateToolBar::AddLabel(const QString& text)
{
    auto* const label = new QLabel(text, this);
    label->setFixedWidth(labelWidth);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    addWidget(label);
}

void DFLocateToolBar::AddSpin(const QString& objectName, const QString& toolTip, QLatin1String value)
{
    // A threshold is out of use until somebody sets it, and this is where an operator does.
    constexpr bool editableWhenNotInUse = true;
    auto* const spin = new VCNumericFloatSpin(this, editableWhenNotInUse);
    spin->setObjectName(objectName);
    spin->setToolTip(toolTip);
    spin->setFixedWidth(spinWidth);
    // There is room for the number or for the arrows; the arrow keys and the wheel do what the arrows would.
    spin->setButtonSymbols(QAbstractSpinBox::NoButtons);
    spin->SetNumeric_ValuePath(m_toolbarPath + value);
    addWidget(spin);
}

void DFLocateToolBar::AddCombo(const QString& objectName, const QString& toolTip, int width, QLatin1String value)
{
    auto* const combo = new FittedComboBox(this);
    combo->setObjectName(objectName);
    combo->setToolTip(toolTip);
    combo->setFixedWidth(width);
    combo->SetValueSelection_ValuePath(m_toolbarPath + value);
    addWidget(combo);
}

template <typename T>
bool DFLocateToolBar::Link(values::ValuePtr<T>& pointer, QLatin1String value)
{
    return values::LinkByPath(pointer, m_toolbarPath + value);
}

void DFLocateToolBar::Update(Observable* source, TChangeCode code)
{
    runEntry("DFLocateToolBar::Update", sourceFile, __LINE__, [this, source, code] {
        if (code == ValueChanged)
            HandleContentChange(source);
        else if (code == SetFromOutside && isBoundTo(m_trigger, source))
            HandleExternalTrigger();
    });
}

void DFLocateToolBar::HandleContentChange(const Observable* source)
{
    if (isBoundTo(m_activity, source))
        HandleActivityChange();
    else if (isBoundTo(m_cyclicStarted, source))
        HandleCyclicStartedChange();
    else if (isBoundTo(m_allowed, source))
        UpdateStartButton();
    else if (isBoundTo(m_enabled, source))
        HandleEnabledChange();
    else if (isBoundTo(m_running, source))
        HandleRunningChange();
    else if (isBoundTo(m_locateType, source))
        HandleLocateTypeChange();
    else if (isBoundTo(m_workflow, source))
        HandleWorkflowChange();
}

// In the handlers below, unchecking the button in workflow "Continuous" issues a command, and that may open a warning:
// when it returns, the toolbar may be gone.

void DFLocateToolBar::HandleActivityChange()
{
    UpdateStartButton();
    if (!HasActivity())
        m_pStartButton->setChecked(false);
}

void DFLocateToolBar::HandleCyclicStartedChange()
{
    UpdateStartButton();
    m_pStartButton->setChecked(m_cyclicStarted->GetValue());
}

void DFLocateToolBar::HandleEnabledChange()
{
    const bool enabled = m_enabled->GetValue();
    SwitchHotKey(enabled);
    if (IsContinuous())
        ShowCyclicState();
    setEnabled(enabled);
    ExplainStartButton();
}

void DFLocateToolBar::HandleRunningChange()
{
    if (m_trigger)
        m_trigger->SetState(m_running->GetValue() ? OrdinaryState : NotInUseState, this);
}

void DFLocateToolBar::HandleLocateTypeChange()
{
    m_pStartButton->setChecked(false);
}

void DFLocateToolBar::HandleWorkflowChange()
{
    if (IsContinuous()) {
        m_pStartButton->setCheckable(true);
        disconnect(m_pStartButton, SIGNAL(clicked()), this, SLOT(SlotSingleShot()));
        ConnectCyclicToggle();
        return;
    }
    const QPointer<DFLocateToolBar> alive(this);
    // First of all, because a button that is no longer checkable unchecks itself without a word, and cyclic DF would
    // run on.
    m_pStartButton->setChecked(false);
    if (alive == nullptr || IsContinuous()) // somebody has answered the command with a change of the workflow
        return;
    m_pStartButton->setCheckable(false);
    DisconnectCyclicToggle();
    connect(m_pStartButton, SIGNAL(clicked()), this, SLOT(SlotSingleShot()), Qt::UniqueConnection);
}

void DFLocateToolBar::HandleExternalTrigger()
{
    // The trigger is published before there is a workflow, or a button.
    if (!m_workflow || !m_pStartButton->isEnabled())
        return;
    const QPointer<DFLocateToolBar> alive(this);
    if (IsContinuous()) {
        m_pStartButton->setChecked(true);
        if (alive != nullptr)
            trace(QLatin1String("DF Cycle mode enabled from external"), externalCyclicLine);
    } else {
        WarnAndIssue(StartSingleDfCommand);
        if (alive != nullptr)
            trace(QLatin1String("DF single shot triggered from external"), externalSingleShotLine);
    }
}

bool DFLocateToolBar::IsContinuous() const
{
    return m_workflow && currentItemText(*m_workflow.get()) == QLatin1String("Continuous");
}

bool DFLocateToolBar::HasActivity() const
{
    return m_activity && m_activity->GetCurrentKey() != noActivityKey;
}

bool DFLocateToolBar::IsStartAllowed() const
{
    return HasActivity() && m_allowed && m_allowed->GetValue();
}

QString DFLocateToolBar::ReasonForNoStart() const
{
    if (m_enabled && !m_enabled->GetValue())
        return tr("DF/Locate is switched off");
    if (!m_activity || !m_allowed)
        return tr("No driver offers DF/Locate");
    if (!HasActivity())
        return tr("The activity in the DF/Locate Settings is neither DF nor Locate");
    if (!m_allowed->GetValue())
        return tr("The driver does not allow DF/Locate at present");
    return {};
}

void DFLocateToolBar::UpdateStartButton()
{
    m_pStartButton->setEnabled(IsStartAllowed());
    ExplainStartButton();
}

void DFLocateToolBar::ExplainStartButton()
{
    m_pStartButton->setStatusTip(ReasonForNoStart());
}

void DFLocateToolBar::SwitchHotKey(bool on)
{
    // The toolbar itself is enabled only after this, so the button is asked whether it would be enabled in it.
    if (on && m_pStartButton->isEnabledTo(this) && m_hotKeyId == noHotKey) {
        m_hotKeyId = GuiCentral::Instance()->AddHotKey(Qt::Key_D, Qt::ControlModifier, this, tr("Start/Stop Locate"),
                                                       tr("Resource subwindow"), true, true);
    } else if (!on && m_hotKeyId != noHotKey) {
        GuiCentral::Instance()->RemoveHotKey(m_hotKeyId, true);
        m_hotKeyId = noHotKey;
    }
}

/// Checks the button according to the driver without issuing a command.
void DFLocateToolBar::ShowCyclicState()
{
    DisconnectCyclicToggle();
    m_pStartButton->setChecked(!m_cyclicStarted || m_cyclicStarted->GetValue());
    ConnectCyclicToggle();
}

// Always by name: a connection made in one form cannot be taken back in the other. Always unique: a workflow may be
// announced twice in a row.
void DFLocateToolBar::ConnectCyclicToggle()
{
    connect(m_pStartButton, SIGNAL(toggled(bool)), this, SLOT(SlotCyclicToggle(bool)), Qt::UniqueConnection);
}

void DFLocateToolBar::DisconnectCyclicToggle()
{
    disconnect(m_pStartButton, SIGNAL(toggled(bool)), this, SLOT(SlotCyclicToggle(bool)));
}

bool DFLocateToolBar::event(QEvent* event)
{
    if (event->type() == QEvent::Shortcut && static_cast<QShortcutEvent*>(event)->shortcutId() == m_hotKeyId) {
        m_pStartButton->click();
        return true;
    }
    return QToolBar::event(event);
}

void DFLocateToolBar::sl_VTConnected()
{
    runEntry("DFLocateToolBar::sl_VTConnected", sourceFile, __LINE__, [this] {
        if (Link(m_running, QLatin1String("DFRunning")))
            HandleRunningChange();
        else
            trace(QLatin1String("Missing DF Value: DFRunning"), runningMissingLine);
        m_pStatusHandler->SetUpValues();
    });
}

void DFLocateToolBar::SlotCyclicToggle(bool checked)
{
    runEntry("DFLocateToolBar::SlotCyclicToggle", sourceFile, __LINE__,
             [this, checked] { WarnAndIssue(checked ? StartCyclicDfCommand : StopCyclicDfCommand); });
}

void DFLocateToolBar::SlotSingleShot()
{
    runEntry("DFLocateToolBar::SlotSingleShot", sourceFile, __LINE__, [this] { WarnAndIssue(StartSingleDfCommand); });
}

void DFLocateToolBar::SlotLocateUsable(bool hriUsable, bool dfUsable)
{
    runEntry("DFLocateToolBar::SlotLocateUsable", sourceFile, __LINE__, [this, hriUsable, dfUsable] {
        m_hriUsable = hriUsable;
        m_dfUsable = dfUsable;
        if (m_pStartButton->isChecked() && IsLocateLost())
            m_pStartButton->setChecked(false);
    });
}

/// True when the service that locates now can no longer be used; false when the driver does not tell which one that is.
bool DFLocateToolBar::IsLocateLost()
{
    values::ValueObservingPtr<values::BoolValue> hriRunning(this);
    if (!Link(hriRunning, QLatin1String("Values/Status/LocateHRIRunning")))
        return false;
    return hriRunning->GetValue() ? !m_hriUsable : !m_dfUsable;
}

/// Warns of a locate type that cannot be served, and issues @p command in any case. The toolbar may go in it: with a
/// warning the host's event loop runs on, and the command may make the host delete the toolbar.
void DFLocateToolBar::WarnAndIssue(int command)
{
    const QPointer<DFLocateToolBar> alive(this);
    ++m_commandsUnderWay;
    const auto finished = qScopeGuard([alive] {
        if (alive != nullptr)
            --alive->m_commandsUnderWay;
    });
    WarnWhenLocateTypeIsUnavailable();
    if (alive != nullptr && m_commands)
        issueCommand(*m_commands.get(), command);
}

void DFLocateToolBar::WarnWhenLocateTypeIsUnavailable() const
{
    const QString warning = LocateTypeWarning();
    if (!warning.isEmpty() && !QCoreApplication::closingDown())
        QMessageBox::warning(nullptr, tr("Warning"), warning, QMessageBox::Ok, QMessageBox::NoButton);
}

QString DFLocateToolBar::LocateTypeWarning() const
{
    if (!m_locateType)
        return {};
    const int locateType = m_locateType->GetCurrentKey();
    if (locateType == historyKey && !m_hriUsable)
        return tr(
            "Locate Type <b>History</b> is selected in the DF/Locate Settings, but Locate(History) is not available");
    if (locateType == onlineKey && !m_dfUsable)
        return tr(
            "Locate Type <b>Online</b> is selected in the DF/Locate Settings, but Locate(Online) is not available");
    return {};
}

} // namespace VelmarGui
