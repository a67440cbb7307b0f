#include "dflocatetoolbar.h"

#include "boxwatchdog.h"
#include "drivervalues.h"
#include "support/testmain.h"
#include "support/traces.h"

#include "devicecontrol/guicentral.h"
#include "guicomponentbase/guicomponentcommon.h"
#include "valuewidgets/vccomboboxclassic.h"
#include "valuewidgets/vcnumericfloatspin.h"

#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPointer>
#include <QShortcutEvent>
#include <QSignalSpy>
#include <QToolButton>
#include <QWidgetAction>

#include <memory>
#include <stdexcept>

using testsupport::BoxWatchdog;
using testsupport::CommandLog;
using testsupport::DriverValues;
using testsupport::RecordingObserver;
using testsupport::Traces;
using VelmarGui::DFLocateToolBar;

namespace {

const QString componentName = QStringLiteral("/GUI/DFLocateComponent/");
const QString sourceName = QStringLiteral("userinterface/guicomponents/dflocatecomponent/dflocatetoolbar");
const QString historyWarning = QStringLiteral(
    "Locate Type <b>History</b> is selected in the DF/Locate Settings, but Locate(History) is not available");
const QString onlineWarning = QStringLiteral(
    "Locate Type <b>Online</b> is selected in the DF/Locate Settings, but Locate(Online) is not available");

constexpr int noLocate = 0;
constexpr int online = 1;
constexpr int history = 2;

using Keys = std::vector<int>;
using Codes = std::vector<TChangeCode>;

/// A toolbar as the host holds it.
struct Toolbar
{
    explicit Toolbar(const QString& name = componentName)
        : bar(new DFLocateToolBar(&common, name))
    {
    }
    ~Toolbar() { delete bar.data(); }

    [[nodiscard]] QToolButton* button() const { return bar->findChild<QToolButton*>(QStringLiteral("DFStarter")); }
    void connectTree() const { invoke("sl_VTConnected"); }
    void invoke(const char* slot) const { QVERIFY(QMetaObject::invokeMethod(bar, slot, Qt::DirectConnection)); }
    void setUsable(bool hri, bool df) const
    {
        QVERIFY(QMetaObject::invokeMethod(bar, "SlotLocateUsable", Qt::DirectConnection, Q_ARG(bool, hri),
                                          Q_ARG(bool, df)));
    }

    VelmarGui::GuiComponentCommon common;
    QPointer<DFLocateToolBar> bar;
};

values::BoolValue* trigger(const QString& component = componentName)
{
    return dynamic_cast<values::BoolValue*>(
        values::Tree::Instance()->FindValue(component + QLatin1String("TriggerLocateStart")));
}

/// The traces that the toolbar itself wrote.
std::vector<TraceRecord> toolbarTraces(const Traces& traces)
{
    std::vector<TraceRecord> own;
    for (const TraceRecord& record : traces.records) {
        if (record.sourceFile == sourceName)
            own.push_back(record);
    }
    return own;
}

/// The hot-key overview, a line each.
QStringList listedHotKeys()
{
    QStringList listed;
    for (const HotKeyInfo& info : GuiCentral::Instance()->GetListedHotKeys())
        listed << info.keys + QLatin1Char('|') + info.text + QLatin1Char('|') + info.group;
    return listed;
}

const QString ourHotKey = QStringLiteral("Ctrl+D|Start/Stop Locate|Resource subwindow");

void selectText(values::ValueSelection* selection, const char* text)
{
    QVERIFY(selection->Select(QString::fromLatin1(text)));
}

} // namespace

class TestDFLocateToolBar : public QObject
{
    Q_OBJECT

private slots:
    // Construction
    void theToolbarIsNamedAndParentless();
    void theSlotsStandInTheirOrderAndThereAreNoSignals();
    void theWidgetsStandInTheirOrder();
    void theStartButtonShowsTheLettersInEveryState();
    void aLabelStandsRightAlignedBeforeEachSpin();
    void everySettingHasItsWidget_data();
    void everySettingHasItsWidget();
    void aSettingThatAppearsLaterIsBoundThen();
    void aThresholdOutOfUseCanBeEdited();
    void thresholdsOfThreeDigitsAreShownWhole();
    void everyComponentInTheNameBecomesHandler();
    void aNameWithoutComponentIsUsedAsItIs();
    void theStatusDisplayUsesTheHandlersFolder();

    // Missing values
    void everyValueIsBound_data();
    void everyValueIsBound();
    void nothingIsMissingFromACompleteDriver();
    void withoutADriverEveryMissingValueIsTracedInOrder();
    void missingValuesAreNotTracedWithoutTheTraceBit();
    void aValueOfAnotherKindIsMissing();
    void withoutADriverTheToolbarDoesNothingAndSurvives();
    void valuesThatAppearAfterConstructionAreNotBound();
    void runningIsBoundOnlyByTheConnectAnnouncement();
    void connectingTwiceChangesNothing();
    void connectingSetsTheStatusDisplayUp();

    // Start button
    void theStartButtonNeedsAnActivityAndAllowance_data();
    void theStartButtonNeedsAnActivityAndAllowance();
    void anActivityWithoutACurrentItemDoesNotForbid();
    void anActivityOfNoneUnchecksTheButton();
    void losingAllowanceOnlyDisablesTheButton();
    void aChangeOfCyclicStartedReconsidersTheButton();
    void aDisabledStartButtonSaysWhy();
    void otherCodesThanAChangeOfContentAreIgnored();
    void aNullNotificationMatchesNoUnboundValue();

    // Commands
    void aClickRequestsOneDf();
    void theSecondClickInARowAnnouncesTheCommandAgain();
    void inContinuousWorkflowTheButtonSwitchesCyclicDf();
    void cyclicDfThatTheDriverEndedCanBeStartedAgain();
    void aCyclicStateFromTheDriverWritesTheMatchingCommand();
    void aDriverThatAnswersAtOnceGetsEachCommandOnce();
    void withoutTheCommandValueNothingIsWritten();
    void aCommandValueThatLacksTheKeyIsLeftAlone();

    // Workflow
    void leavingContinuousStopsCyclicDfOnceAndMakesAPushButton();
    void leavingContinuousUncheckedWritesNothing();
    void twoPushButtonWorkflowsInARowGiveOneCommandPerClick();
    void continuousAnnouncedTwiceGivesOneCommandPerToggle();
    void workflowsCanChangeForthAndBack();
    void aDriverThatReturnsToContinuousWhileItIsLeftGetsACyclicButton();
    void onlyTheExactTextIsContinuous();
    void aChangeOfLocateTypeStopsCyclicDf();
    void aChangeOfLocateTypeLeavesAPushButtonAlone();

    // State at the start
    void cyclicDfThatRunsAtTheStartIsShownWithoutACommand();
    void cyclicDfThatRunsAtTheStartWarnsOfItsLocateType();
    void cyclicStartedDoesNotCheckAPushButton();
    void enabledAtTheStartDecidesOnTheToolbar();

    // "Enabled" and the hot key
    void enabledSwitchesTheWholeToolbar();
    void theHotKeyComesOnlyAfterEnabledHasBeenFalseOnce();
    void theHotKeyGoesWithEnabled();
    void theFirstFalseLeavesTheHotKeysOfOthersAlone();
    void theHotKeyNeedsAnEnabledStartButton();
    void enabledShowsTheCyclicStateWithoutACommand();
    void enabledChecksTheButtonWhenCyclicStartedIsUnknown();
    void enabledLeavesAPushButtonAlone();
    void theHotKeyClicksTheStartButton();
    void theHotKeyTogglesCyclicDf();
    void theHotKeyOfSomebodyElseIsNotTaken();
    void theHotKeyGoesWithTheToolbar();

    // External trigger
    void theTriggerIsPublishedAndNotInUse();
    void anExistingTriggerIsUsed();
    void aTriggerSetAsSoonAsItIsPublishedDoesNothing();
    void theStateOfTheTriggerTellsWhetherDfRuns();
    void theStateOfTheTriggerIsWrittenAsOnesOwn();
    void theTriggerRequestsOneDf();
    void theTriggerStartsCyclicDf();
    void theTriggerDoesNotStopCyclicDf();
    void aDisabledButtonMakesTheTriggerDoNothing();
    void withoutAWorkflowTheTriggerDoesNothing();
    void anAnnouncedTriggerIsNotASetOne();
    void triggerTracesNeedTheTraceBit();

    // Availability
    void anUnavailableLocateTypeIsWarnedOf_data();
    void anUnavailableLocateTypeIsWarnedOf();
    void theWarningComesBeforeTheCommandAndDoesNotStopIt();
    void everyWayToACommandWarns();
    void lostAvailabilityUnchecksTheButton_data();
    void lostAvailabilityUnchecksTheButton();
    void lostAvailabilityIsReportedByTheStatusDisplay();
    void theRunningServiceIsObservedOnlyForAMoment();
    void availabilityDoesNotTouchAnUncheckedButton();

    // Lives and deaths
    void eachBoundValueMayGo_data();
    void eachBoundValueMayGo();
    void theCommandValueMayGoWhileAWarningIsOpen();
    void theToolbarMayGoWhileAWarningIsOpen_data();
    void theToolbarMayGoWhileAWarningIsOpen();
    void theToolbarMayGoInAnswerToItsCommand_data();
    void theToolbarMayGoInAnswerToItsCommand();
    void theToolbarMayGoBeforeTheHostAndAfterIt();
    void aWindowTakesTheToolbarWithIt();
    void theTreeMayGoBeforeTheToolbar();
    void twoToolbarsFollowTheSameValues();
    void twoComponentsDoNotMeet();
    void anExceptionFromADriverIsTracedAndGoesNoFurther();
    void anExceptionInANotificationIsTracedAndGoesNoFurther();
};

// ---- Construction ----

void TestDFLocateToolBar::theToolbarIsNamedAndParentless()
{
    const DriverValues driver;
    const Toolbar toolbar;
    QCOMPARE(toolbar.bar->metaObject()->className(), "VelmarGui::DFLocateToolBar");
    QCOMPARE(toolbar.bar->objectName(), QStringLiteral("DFLocateToolBar"));
    QCOMPARE(toolbar.bar->windowTitle(), QStringLiteral("DF/Locate Toolbar"));
    QVERIFY(toolbar.bar->parent() == nullptr);
}

void TestDFLocateToolBar::theSlotsStandInTheirOrderAndThereAreNoSignals()
{
    const QMetaObject& meta = DFLocateToolBar::staticMetaObject;
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        QCOMPARE(meta.method(i).methodType(), QMetaMethod::Slot);
        QCOMPARE(meta.method(i).access(), QMetaMethod::Private);
        methods << QString::fromLatin1(meta.method(i).methodSignature());
    }
    QCOMPARE(methods, (QStringList{"sl_VTConnected()", "SlotCyclicToggle(bool)", "SlotSingleShot()",
                                   "SlotLocateUsable(bool,bool)"}));
}

void TestDFLocateToolBar::theWidgetsStandInTheirOrder()
{
    const DriverValues driver;
    const Toolbar toolbar;
    QStringList shown;
    for (QAction* action : toolbar.bar->actions()) {
        QWidget* const widget = toolbar.bar->widgetForAction(action);
        auto* const label = qobject_cast<QLabel*>(widget);
        if (action->isSeparator())
            shown << QStringLiteral("|");
        else if (label != nullptr && label->objectName().isEmpty())
            shown << QStringLiteral("text:") + label->text();
        else
            shown << widget->objectName();
    }
    QCOMPARE(shown, (QStringList{"DFStarter", "|", "Led Label", "|", "text:L.", "Level threshold", "text:Q.",
                                 "Quality threshold", "DF Mode", "DF Bandwidth", "DF Averaging", "|",
                                 "text:", "direction finder name", "average bearing", "average quality",
                                 "LocationFindingTime", "DetailedResults"}));
}

void TestDFLocateToolBar::theStartButtonShowsTheLettersInEveryState()
{
    const DriverValues driver;
    const Toolbar toolbar;
    const QIcon icon = toolbar.button()->icon();
    QCOMPARE(toolbar.button()->toolTip(), QStringLiteral("Start/Stop Locate"));
    QCOMPARE(icon.availableSizes(QIcon::Normal, QIcon::Off), QList<QSize>{QSize(22, 22)});
    const QImage letters = icon.pixmap(QSize(22, 22)).toImage();
    QVERIFY(letters.hasAlphaChannel());
    QCOMPARE(qAlpha(letters.pixel(0, 0)), 0);
    QCOMPARE(icon.pixmap(QSize(22, 22), QIcon::Normal, QIcon::On).toImage(), letters);
}

void TestDFLocateToolBar::aLabelStandsRightAlignedBeforeEachSpin()
{
    const DriverValues driver;
    const Toolbar toolbar;
    int found = 0;
    for (const QLabel* label : toolbar.bar->findChildren<QLabel*>()) {
        if (label->text() != QLatin1String("L.") && label->text() != QLatin1String("Q."))
            continue;
        ++found;
        QCOMPARE(label->minimumWidth(), 18);
        QCOMPARE(label->maximumWidth(), 18);
        QCOMPARE(label->alignment(), Qt::AlignRight | Qt::AlignVCenter);
    }
    QCOMPARE(found, 2);
}

void TestDFLocateToolBar::everySettingHasItsWidget_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("path");

    QTest::newRow("level threshold") << "Level threshold" << 40 << "Config/Threshold";
    QTest::newRow("quality threshold") << "Quality threshold" << 40 << "Config/Quality";
    QTest::newRow("mode") << "DF Mode" << 60 << "Config/Mode";
    QTest::newRow("bandwidth") << "DF Bandwidth" << 80 << "Config/Bandwidth";
    QTest::newRow("averaging") << "DF Averaging" << 60 << "Config/AverageTime";
}

void TestDFLocateToolBar::everySettingHasItsWidget()
{
    QFETCH(QString, name);
    QFETCH(int, width);
    QFETCH(QString, path);
    const DriverValues driver;
    const Toolbar toolbar;
    auto* const widget = toolbar.bar->findChild<QWidget*>(name);
    QVERIFY(widget != nullptr);
    QCOMPARE(widget->toolTip(), name);
    QCOMPARE(widget->minimumWidth(), width);
    QCOMPARE(widget->maximumWidth(), width);
    values::ValueBase* const value = values::Tree::Instance()->FindValue("/GUI/DFLocateHandler/" + path);
    QVERIFY(value != nullptr);
    if (auto* const spin = qobject_cast<VCNumericFloatSpin*>(widget))
        QCOMPARE(spin->GetNumeric(), value);
    else if (auto* const combo = qobject_cast<VCComboBoxClassic*>(widget))
        QCOMPARE(static_cast<values::ValueBase*>(combo->GetValueSelection()), value);
    else
        QFAIL("neither a spin box nor a combo box of the host");
}

void TestDFLocateToolBar::aSettingThatAppearsLaterIsBoundThen()
{
    DriverValues driver({"Config/Mode"});
    const Toolbar toolbar;
    auto* const combo = toolbar.bar->findChild<VCComboBoxClassic*>("DF Mode");
    QVERIFY(combo->GetValueSelection() == nullptr);
    auto* const mode = driver.tree.add<values::ValueSelection>("/GUI/DFLocateHandler/Config/Mode");
    QCOMPARE(combo->GetValueSelection(), mode);
}

void TestDFLocateToolBar::aThresholdOutOfUseCanBeEdited()
{
    const DriverValues driver;
    driver.levelThreshold->SetState(values::StateUnused, nullptr);
    const Toolbar toolbar;
    auto* const spin = toolbar.bar->findChild<VCNumericFloatSpin*>("Level threshold");
    QVERIFY(spin->isEnabled());
    spin->stepUp();
    QCOMPARE(driver.levelThreshold->GetValue(), 21);
    QCOMPARE(driver.levelThreshold->GetState(), values::StateOrdinary);
}

void TestDFLocateToolBar::thresholdsOfThreeDigitsAreShownWhole()
{
    const DriverValues driver;
    const Toolbar toolbar;
    toolbar.bar->show();
    QVERIFY(QTest::qWaitForWindowExposed(toolbar.bar));
    for (const char* name : {"Level threshold", "Quality threshold"}) {
        const auto* const edit =
            toolbar.bar->findChild<VCNumericFloatSpin*>(QLatin1String(name))->findChild<QLineEdit*>();
        for (const char* text : {"-40", "200"})
            QVERIFY(edit->fontMetrics().horizontalAdvance(QLatin1String(text)) <= edit->contentsRect().width());
    }
}

void TestDFLocateToolBar::everyComponentInTheNameBecomesHandler()
{
    const QString name = QStringLiteral("/Components/DFLocateComponent/component/");
    const DriverValues driver({}, QStringLiteral("/Handlers/DFLocateHandler/component/"));
    const Traces traces;
    const Toolbar toolbar(name);
    QVERIFY(toolbarTraces(traces).empty());
    // Only the trigger belongs to the component itself.
    QVERIFY(trigger(name) != nullptr);
}

void TestDFLocateToolBar::aNameWithoutComponentIsUsedAsItIs()
{
    const QString name = QStringLiteral("/GUI/DFLocate/");
    const DriverValues driver({}, name);
    const Traces traces;
    const Toolbar toolbar(name);
    QVERIFY(toolbarTraces(traces).empty());
    QVERIFY(trigger(name) != nullptr);
}

void TestDFLocateToolBar::theStatusDisplayUsesTheHandlersFolder()
{
    const DriverValues driver;
    auto* const status = driver.tree.add<values::StringValue>("/GUI/DFLocateHandler/Values/Status/LocateStatus");
    status->SetValue(QStringLiteral("DFID3#N_North#ST1"), nullptr);
    const Toolbar toolbar;
    toolbar.connectTree();
    const auto* const connected = dynamic_cast<values::BoolValue*>(
        values::Tree::Instance()->FindValue(componentName + QLatin1String("LocateDFConnectedIndicator")));
    QVERIFY(connected != nullptr);
    QVERIFY(connected->GetValue());
}

// ---- Missing values ----

void TestDFLocateToolBar::everyValueIsBound_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("line");

    QTest::newRow("enabled") << "Enabled"
                             << "Missing DF Value Enabled" << 142;
    QTest::newRow("allowed") << "Values/DFLocateAllowed"
                             << "Missing DF Value DFLocateAllowed" << 148;
    QTest::newRow("workflow") << "Config/DFLocateWorkflow"
                              << "Missing DF Value DFLocateWorkflow" << 158;
    QTest::newRow("locate type") << "Config/DFLocateType"
                                 << "Missing DF Value DFLocateType" << 168;
    QTest::newRow("activity") << "Config/DFLocateActivity"
                              << "Missing DF Value DFLocateActivity" << 180;
    QTest::newRow("cyclic") << "Values/Result/CyclicLocateStarted"
                            << "Missing DF Value CyclicLocateStarted" << 192;
    QTest::newRow("commands") << "Values/Commands"
                              << "Missing DF Value Commands" << 198;
    QTest::newRow("running") << "DFRunning"
                             << "Missing DF Value: DFRunning" << 378;
}

void TestDFLocateToolBar::everyValueIsBound()
{
    QFETCH(QString, path);
    QFETCH(QString, text);
    QFETCH(int, line);
    const DriverValues driver({path});
    const Traces traces;
    const Toolbar toolbar;
    toolbar.connectTree();
    const std::vector<TraceRecord> own = toolbarTraces(traces);
    QCOMPARE(own.size(), std::size_t(1));
    QCOMPARE(own[0].text, text);
    QCOMPARE(int(own[0].line), line);
}

void TestDFLocateToolBar::nothingIsMissingFromACompleteDriver()
{
    const DriverValues driver;
    const Traces traces;
    const Toolbar toolbar;
    toolbar.connectTree();
    QVERIFY(toolbarTraces(traces).empty());
}

void TestDFLocateToolBar::withoutADriverEveryMissingValueIsTracedInOrder()
{
    const testsupport::FreshTree tree;
    const Traces traces;
    const Toolbar toolbar;
    toolbar.connectTree();
    std::vector<int> lines;
    for (const TraceRecord& record : toolbarTraces(traces))
        lines.push_back(record.line);
    QCOMPARE(lines, (std::vector<int>{142, 148, 158, 168, 180, 192, 198, 378}));
}

void TestDFLocateToolBar::missingValuesAreNotTracedWithoutTheTraceBit()
{
    const testsupport::FreshTree tree;
    const Traces traces(~0x20);
    const Toolbar toolbar;
    toolbar.connectTree();
    QVERIFY(traces.records.empty());
}

void TestDFLocateToolBar::aValueOfAnotherKindIsMissing()
{
    DriverValues driver({"Config/DFLocateWorkflow"});
    driver.tree.add<values::StringValue>("/GUI/DFLocateHandler/Config/DFLocateWorkflow");
    const Traces traces;
    const Toolbar toolbar;
    const std::vector<TraceRecord> own = toolbarTraces(traces);
    QCOMPARE(own.size(), std::size_t(1));
    QCOMPARE(own[0].text, QStringLiteral("Missing DF Value DFLocateWorkflow"));
}

void TestDFLocateToolBar::withoutADriverTheToolbarDoesNothingAndSurvives()
{
    const testsupport::FreshTree tree;
    BoxWatchdog watchdog;
    const Toolbar toolbar;
    toolbar.connectTree();
    toolbar.invoke("SlotSingleShot");
    toolbar.setUsable(false, false);
    trigger()->SetValue(true, nullptr);
    QVERIFY(QMetaObject::invokeMethod(toolbar.bar, "SlotCyclicToggle", Qt::DirectConnection, Q_ARG(bool, true)));
    QVERIFY(!toolbar.button()->isEnabled());
    QVERIFY(!toolbar.button()->statusTip().isEmpty());
    QVERIFY(watchdog.seen.empty());
}

void TestDFLocateToolBar::valuesThatAppearAfterConstructionAreNotBound()
{
    const testsupport::FreshTree tree;
    const Toolbar toolbar;
    const DriverValues driver;
    driver.enabled->SetValue(false, nullptr);
    QVERIFY(toolbar.bar->isEnabled());
}

void TestDFLocateToolBar::runningIsBoundOnlyByTheConnectAnnouncement()
{
    const DriverValues driver;
    driver.running->SetValue(true, nullptr);
    const Toolbar toolbar;
    QCOMPARE(trigger()->GetState(), values::StateUnused);
    toolbar.connectTree();
    QCOMPARE(trigger()->GetState(), values::StateOrdinary);
}

void TestDFLocateToolBar::connectingTwiceChangesNothing()
{
    const DriverValues driver;
    const Toolbar toolbar;
    toolbar.connectTree();
    const std::size_t observers = driver.running->GetObserverCount();
    toolbar.connectTree();
    QCOMPARE(driver.running->GetObserverCount(), observers);
    driver.running->SetValue(true, nullptr);
    QCOMPARE(trigger()->GetState(), values::StateOrdinary);
}

void TestDFLocateToolBar::connectingSetsTheStatusDisplayUp()
{
    const DriverValues driver;
    const Toolbar toolbar;
    const QString indicator = componentName + QLatin1String("LocateDFUsableIndicator");
    QVERIFY(values::Tree::Instance()->FindValue(indicator) == nullptr);
    toolbar.connectTree();
    QVERIFY(values::Tree::Instance()->FindValue(indicator) != nullptr);
}

// ---- Start button ----

void TestDFLocateToolBar::theStartButtonNeedsAnActivityAndAllowance_data()
{
    QTest::addColumn<int>("activity");
    QTest::addColumn<bool>("allowed");
    QTest::addColumn<bool>("enabled");

    QTest::newRow("none, forbidden") << 0 << false << false;
    QTest::newRow("none, allowed") << 0 << true << false;
    QTest::newRow("DF, forbidden") << 1 << false << false;
    QTest::newRow("DF, allowed") << 1 << true << true;
    QTest::newRow("locate, forbidden") << 2 << false << false;
    QTest::newRow("locate, allowed") << 2 << true << true;
}

void TestDFLocateToolBar::theStartButtonNeedsAnActivityAndAllowance()
{
    QFETCH(int, activity);
    QFETCH(bool, allowed);
    QFETCH(bool, enabled);
    const DriverValues driver;
    const Toolbar changed;
    driver.activity->Select(activity);
    driver.allowed->SetValue(allowed, nullptr);
    QCOMPARE(changed.button()->isEnabled(), enabled);

    const Toolbar madeLater;
    QCOMPARE(madeLater.button()->isEnabled(), enabled);

    driver.allowed->SetValue(!allowed, nullptr);
    driver.allowed->SetValue(allowed, nullptr);
    QCOMPARE(changed.button()->isEnabled(), enabled);
}

void TestDFLocateToolBar::anActivityWithoutACurrentItemDoesNotForbid()
{
    const DriverValues driver;
    const Toolbar toolbar;
    driver.activity->DeleteItems();
    QVERIFY(toolbar.button()->isEnabled());
}

void TestDFLocateToolBar::anActivityOfNoneUnchecksTheButton()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    toolbar.button()->click();
    const CommandLog log(driver.commands);
    driver.activity->Select(0);
    QVERIFY(!toolbar.button()->isChecked());
    QVERIFY(!toolbar.button()->isEnabled());
    // The button is disabled by then and tells of its change all the same.
    QCOMPARE(log.keys, Keys{11});
}

void TestDFLocateToolBar::losingAllowanceOnlyDisablesTheButton()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    toolbar.button()->click();
    const CommandLog log(driver.commands);
    driver.allowed->SetValue(false, nullptr);
    QVERIFY(!toolbar.button()->isEnabled());
    QVERIFY(toolbar.button()->isChecked());
    QVERIFY(log.keys.empty());
}

void TestDFLocateToolBar::aChangeOfCyclicStartedReconsidersTheButton()
{
    DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    QVERIFY(driver.remove("Values/DFLocateAllowed"));
    QVERIFY(toolbar.button()->isEnabled()); // a value that goes is no change of content
    driver.cyclicStarted->SetValue(true, nullptr);
    QVERIFY(!toolbar.button()->isEnabled());
    QVERIFY(toolbar.button()->isChecked());
}

void TestDFLocateToolBar::aDisabledStartButtonSaysWhy()
{
    const DriverValues driver;
    const Toolbar toolbar;
    QSet<QString> reasons;
    QVERIFY(toolbar.button()->statusTip().isEmpty());

    driver.allowed->SetValue(false, nullptr);
    reasons << toolbar.button()->statusTip();
    driver.activity->Select(0);
    reasons << toolbar.button()->statusTip();
    driver.enabled->SetValue(false, nullptr);
    reasons << toolbar.button()->statusTip();
    QCOMPARE(reasons.size(), 3);
    QVERIFY(!reasons.contains(QString()));
    QCOMPARE(toolbar.button()->toolTip(), QStringLiteral("Start/Stop Locate"));

    driver.enabled->SetValue(true, nullptr);
    driver.activity->Select(2);
    driver.allowed->SetValue(true, nullptr);
    QVERIFY(toolbar.button()->statusTip().isEmpty());
}

void TestDFLocateToolBar::otherCodesThanAChangeOfContentAreIgnored()
{
    const DriverValues driver;
    const Toolbar toolbar;
    for (const TChangeCode code : {ChangeState, ChangeLimits, ChangeItems, ChangeExternal}) {
        driver.activity->StartTransaction(nullptr);
        driver.activity->Select(0);
        driver.activity->EndTransaction(code);
        driver.enabled->StartTransaction(nullptr);
        driver.enabled->SetValue(false, nullptr);
        driver.enabled->EndTransaction(code);
        QVERIFY(toolbar.button()->isEnabled());
        QVERIFY(toolbar.bar->isEnabled());
    }
    driver.enabled->HasChanged(ChangeContent, nullptr);
    QVERIFY(!toolbar.bar->isEnabled());
}

void TestDFLocateToolBar::aNullNotificationMatchesNoUnboundValue()
{
    const testsupport::FreshTree tree;
    const Toolbar toolbar;
    toolbar.button()->setEnabled(true);
    const Traces traces;
    toolbar.bar->Update(nullptr, ChangeContent);
    toolbar.bar->Update(nullptr, ChangeExternal);
    QVERIFY(toolbar.button()->isEnabled());
    QVERIFY(traces.records.empty());
}

// ---- Commands ----

void TestDFLocateToolBar::aClickRequestsOneDf()
{
    const DriverValues driver;
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    QVERIFY(!toolbar.button()->isCheckable());
    toolbar.button()->click();
    QCOMPARE(log.keys, Keys{9});
    QCOMPARE(driver.commands->GetStringValue(), QStringLiteral("Start single DF"));
}

void TestDFLocateToolBar::theSecondClickInARowAnnouncesTheCommandAgain()
{
    const DriverValues driver;
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    toolbar.button()->click();
    QCOMPARE(log.codes(), (Codes{ChangeContent, ChangeExternal}));
    toolbar.button()->click();
    // Announced, not set: nobody has set anything from outside.
    QCOMPARE(log.codes(), (Codes{ChangeContent, ChangeExternal, ChangeContent}));
    QCOMPARE(log.keys, (Keys{9, 9}));
}

void TestDFLocateToolBar::inContinuousWorkflowTheButtonSwitchesCyclicDf()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    QVERIFY(toolbar.button()->isCheckable());
    toolbar.button()->click();
    QVERIFY(toolbar.button()->isChecked());
    toolbar.button()->click();
    QVERIFY(!toolbar.button()->isChecked());
    toolbar.button()->click();
    QCOMPARE(log.keys, (Keys{10, 11, 10}));
}

void TestDFLocateToolBar::cyclicDfThatTheDriverEndedCanBeStartedAgain()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    toolbar.button()->click();
    driver.enabled->HasChanged(ChangeContent, nullptr); // shows the driver's state, which is "off", without a command
    QVERIFY(!toolbar.button()->isChecked());
    const CommandLog log(driver.commands);
    toolbar.button()->click();
    QCOMPARE(log.keys, Keys{10});
    QCOMPARE(log.codes(), Codes{ChangeContent});
}

void TestDFLocateToolBar::aCyclicStateFromTheDriverWritesTheMatchingCommand()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    driver.cyclicStarted->SetValue(true, nullptr);
    QVERIFY(toolbar.button()->isChecked());
    driver.cyclicStarted->SetValue(false, nullptr);
    QVERIFY(!toolbar.button()->isChecked());
    QCOMPARE(log.keys, (Keys{10, 11}));
}

void TestDFLocateToolBar::aDriverThatAnswersAtOnceGetsEachCommandOnce()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    Keys heard;
    RecordingObserver answering([&](Observable*, TChangeCode code) {
        if (code != ChangeContent)
            return;
        heard.push_back(driver.commands->GetCurrentKey());
        driver.cyclicStarted->SetValue(heard.back() == 10, nullptr);
    });
    values::ValueObservingPtr<values::ValueSelection> binding(&answering);
    binding.Assign(driver.commands);
    toolbar.button()->click();
    QCOMPARE(heard, Keys{10});
    toolbar.button()->click();
    QCOMPARE(heard, (Keys{10, 11}));
    QVERIFY(!toolbar.button()->isChecked());
}

void TestDFLocateToolBar::withoutTheCommandValueNothingIsWritten()
{
    const DriverValues driver({"Values/Commands"});
    const Toolbar toolbar;
    toolbar.button()->click();
    selectText(driver.workflow, "Continuous");
    toolbar.button()->click();
    QVERIFY(toolbar.button()->isChecked());
}

void TestDFLocateToolBar::aCommandValueThatLacksTheKeyIsLeftAlone()
{
    const DriverValues driver;
    driver.commands->DeleteItem(9);
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    toolbar.button()->click();
    QVERIFY(log.codes().empty());
    QCOMPARE(driver.commands->GetCurrentKey(), 0);
}

// ---- Workflow ----

void TestDFLocateToolBar::leavingContinuousStopsCyclicDfOnceAndMakesAPushButton()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    toolbar.button()->click();
    const CommandLog log(driver.commands);
    selectText(driver.workflow, "On trigger");
    QCOMPARE(log.keys, Keys{11});
    QVERIFY(!toolbar.button()->isChecked());
    QVERIFY(!toolbar.button()->isCheckable());
    toolbar.button()->click();
    toolbar.button()->click();
    QCOMPARE(log.keys, (Keys{11, 9, 9}));
    // Nothing listens to a toggle any more, whoever makes one.
    toolbar.button()->setCheckable(true);
    toolbar.button()->setChecked(true);
    QCOMPARE(log.keys, (Keys{11, 9, 9}));
}

void TestDFLocateToolBar::leavingContinuousUncheckedWritesNothing()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    selectText(driver.workflow, "On request");
    QVERIFY(log.codes().empty());
}

void TestDFLocateToolBar::twoPushButtonWorkflowsInARowGiveOneCommandPerClick()
{
    const DriverValues driver;
    const Toolbar toolbar;
    selectText(driver.workflow, "On trigger");
    selectText(driver.workflow, "On request");
    const CommandLog log(driver.commands);
    toolbar.button()->click();
    QCOMPARE(log.keys, Keys{9});
}

void TestDFLocateToolBar::continuousAnnouncedTwiceGivesOneCommandPerToggle()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    driver.workflow->HasChanged(ChangeContent, nullptr);
    driver.enabled->HasChanged(ChangeContent, nullptr);
    const CommandLog log(driver.commands);
    toolbar.button()->click();
    QCOMPARE(log.keys, Keys{10});
    QCOMPARE(log.codes(), (Codes{ChangeContent, ChangeExternal}));
}

void TestDFLocateToolBar::workflowsCanChangeForthAndBack()
{
    const DriverValues driver;
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    Keys expected;
    for (int round = 0; round < 3; ++round) {
        selectText(driver.workflow, "Continuous");
        toolbar.button()->click();
        toolbar.button()->click();
        selectText(driver.workflow, "On request");
        toolbar.button()->click();
        for (const int key : {10, 11, 9})
            expected.push_back(key);
    }
    QCOMPARE(log.keys, expected);
}

void TestDFLocateToolBar::aDriverThatReturnsToContinuousWhileItIsLeftGetsACyclicButton()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    toolbar.button()->click();
    bool refused = false;
    RecordingObserver refusing([&](Observable*, TChangeCode code) {
        if (code == ChangeContent && !std::exchange(refused, true))
            selectText(driver.workflow, "Continuous");
    });
    values::ValueObservingPtr<values::ValueSelection> binding(&refusing);
    binding.Assign(driver.commands);
    selectText(driver.workflow, "On request");
    QCOMPARE(driver.workflow->GetStringValue(), QStringLiteral("Continuous"));
    QVERIFY(toolbar.button()->isCheckable());
    const CommandLog log(driver.commands);
    toolbar.button()->click();
    QCOMPARE(log.keys, Keys{10});
}

void TestDFLocateToolBar::onlyTheExactTextIsContinuous()
{
    const DriverValues driver;
    driver.workflow->AddItem("continuous", 0.0, 10);
    driver.workflow->AddItem("Continuous ", 0.0, 11);
    const Toolbar toolbar;
    for (const int key : {10, 11}) {
        driver.workflow->Select(key);
        QVERIFY(!toolbar.button()->isCheckable());
    }
    driver.workflow->DeleteItems(); // nothing is current, and nothing is not "Continuous"
    QVERIFY(!toolbar.button()->isCheckable());
    const CommandLog log(driver.commands);
    toolbar.button()->click();
    QCOMPARE(log.keys, Keys{9});
}

void TestDFLocateToolBar::aChangeOfLocateTypeStopsCyclicDf()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    toolbar.setUsable(true, true);
    toolbar.button()->click();
    const CommandLog log(driver.commands);
    driver.locateType->Select(online);
    QVERIFY(!toolbar.button()->isChecked());
    driver.locateType->Select(history);
    QCOMPARE(log.keys, Keys{11});
}

void TestDFLocateToolBar::aChangeOfLocateTypeLeavesAPushButtonAlone()
{
    const DriverValues driver;
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    driver.locateType->Select(online);
    QVERIFY(log.codes().empty());
    QVERIFY(toolbar.button()->isEnabled());
}

// ---- State at the start ----

void TestDFLocateToolBar::cyclicDfThatRunsAtTheStartIsShownWithoutACommand()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    driver.cyclicStarted->SetValue(true, nullptr);
    const CommandLog log(driver.commands);
    const Toolbar toolbar;
    QVERIFY(toolbar.button()->isChecked());
    QVERIFY(log.codes().empty());
    toolbar.button()->click();
    QCOMPARE(log.keys, Keys{11});
}

void TestDFLocateToolBar::cyclicDfThatRunsAtTheStartWarnsOfItsLocateType()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    driver.locateType->Select(online);
    driver.cyclicStarted->SetValue(true, nullptr);
    const CommandLog log(driver.commands);
    const BoxWatchdog watchdog;
    const Toolbar toolbar;
    QCOMPARE(watchdog.seen.size(), std::size_t(1));
    QCOMPARE(watchdog.seen[0].text, onlineWarning);
    QVERIFY(log.codes().empty());
}

void TestDFLocateToolBar::cyclicStartedDoesNotCheckAPushButton()
{
    const DriverValues driver;
    driver.cyclicStarted->SetValue(true, nullptr);
    const Toolbar toolbar;
    QVERIFY(!toolbar.button()->isChecked());
    driver.cyclicStarted->SetValue(false, nullptr);
    driver.cyclicStarted->SetValue(true, nullptr);
    QVERIFY(!toolbar.button()->isChecked());
}

void TestDFLocateToolBar::enabledAtTheStartDecidesOnTheToolbar()
{
    const DriverValues driver;
    driver.enabled->SetValue(false, nullptr);
    const Toolbar disabled;
    QVERIFY(!disabled.bar->isEnabled());
    driver.enabled->SetValue(true, nullptr);
    const Toolbar enabled;
    QVERIFY(enabled.bar->isEnabled());
}

// ---- "Enabled" and the hot key ----

void TestDFLocateToolBar::enabledSwitchesTheWholeToolbar()
{
    const DriverValues driver;
    const Toolbar toolbar;
    driver.enabled->SetValue(false, nullptr);
    QVERIFY(!toolbar.bar->isEnabled());
    QVERIFY(!toolbar.bar->findChild<QWidget*>("DF Mode")->isEnabled());
    driver.enabled->SetValue(true, nullptr);
    QVERIFY(toolbar.bar->isEnabled());
    QVERIFY(toolbar.bar->findChild<QWidget*>("DF Mode")->isEnabled());
}

void TestDFLocateToolBar::theHotKeyComesOnlyAfterEnabledHasBeenFalseOnce()
{
    const DriverValues driver;
    const Toolbar toolbar;
    QVERIFY(listedHotKeys().isEmpty());
    driver.enabled->HasChanged(ChangeContent, nullptr);
    QVERIFY(listedHotKeys().isEmpty());
    driver.enabled->SetValue(false, nullptr);
    QVERIFY(listedHotKeys().isEmpty());
    driver.enabled->SetValue(true, nullptr);
    QCOMPARE(listedHotKeys(), QStringList{ourHotKey});
}

void TestDFLocateToolBar::theHotKeyGoesWithEnabled()
{
    const DriverValues driver;
    driver.enabled->SetValue(false, nullptr);
    const Toolbar toolbar;
    driver.enabled->SetValue(true, nullptr);
    driver.enabled->HasChanged(ChangeContent, nullptr); // registered once only
    QCOMPARE(listedHotKeys(), QStringList{ourHotKey});
    driver.enabled->SetValue(false, nullptr);
    QVERIFY(listedHotKeys().isEmpty());
    driver.enabled->SetValue(true, nullptr);
    QCOMPARE(listedHotKeys(), QStringList{ourHotKey});
}

void TestDFLocateToolBar::theFirstFalseLeavesTheHotKeysOfOthersAlone()
{
    const DriverValues driver;
    QObject other;
    const int id =
        GuiCentral::Instance()->AddHotKey(Qt::Key_E, Qt::ControlModifier, &other, "Else", "Elsewhere", true, true);
    const Toolbar toolbar;
    driver.enabled->SetValue(false, nullptr);
    QCOMPARE(listedHotKeys(), QStringList{"Ctrl+E|Else|Elsewhere"});
    GuiCentral::Instance()->RemoveHotKey(id, true);
}

void TestDFLocateToolBar::theHotKeyNeedsAnEnabledStartButton()
{
    const DriverValues driver;
    driver.enabled->SetValue(false, nullptr);
    driver.activity->Select(0);
    const Toolbar toolbar;
    driver.enabled->SetValue(true, nullptr);
    QVERIFY(listedHotKeys().isEmpty());
    driver.activity->Select(1); // too late for this "Enabled"
    QVERIFY(listedHotKeys().isEmpty());
    driver.enabled->HasChanged(ChangeContent, nullptr);
    QCOMPARE(listedHotKeys(), QStringList{ourHotKey});
}

void TestDFLocateToolBar::enabledShowsTheCyclicStateWithoutACommand()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    toolbar.button()->click();
    QVERIFY(toolbar.button()->isChecked());
    const CommandLog log(driver.commands);
    driver.enabled->SetValue(false, nullptr);
    QVERIFY(!toolbar.button()->isChecked());
    QVERIFY(log.codes().empty());
    driver.enabled->SetValue(true, nullptr);
    toolbar.button()->click();
    QCOMPARE(log.keys.size(), std::size_t(1));
}

void TestDFLocateToolBar::enabledChecksTheButtonWhenCyclicStartedIsUnknown()
{
    const DriverValues driver({"Values/Result/CyclicLocateStarted"});
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    QVERIFY(!toolbar.button()->isChecked());
    driver.enabled->HasChanged(ChangeContent, nullptr);
    QVERIFY(toolbar.button()->isChecked());
    QVERIFY(log.codes().empty());
}

void TestDFLocateToolBar::enabledLeavesAPushButtonAlone()
{
    const DriverValues driver;
    const Toolbar toolbar;
    driver.enabled->SetValue(false, nullptr);
    driver.enabled->SetValue(true, nullptr);
    const CommandLog log(driver.commands);
    toolbar.button()->click();
    QCOMPARE(log.keys, Keys{9});
}

namespace {

/// A main window that shows the toolbar and has the keyboard.
struct Desktop
{
    explicit Desktop(QToolBar* toolbar)
    {
        window.addToolBar(toolbar);
        window.show();
        GuiCentral::Instance()->SetMainWidget(&window);
    }
    ~Desktop() { GuiCentral::Instance()->SetMainWidget(nullptr); }
    [[nodiscard]] bool isActive() { return QTest::qWaitForWindowActive(&window); }
    void pressHotKey() { QTest::keyClick(&window, Qt::Key_D, Qt::ControlModifier); }

    QMainWindow window;
};

} // namespace

void TestDFLocateToolBar::theHotKeyClicksTheStartButton()
{
    const DriverValues driver;
    driver.enabled->SetValue(false, nullptr);
    const Toolbar toolbar;
    Desktop desktop(toolbar.bar);
    QVERIFY(desktop.isActive());
    const CommandLog log(driver.commands);
    driver.enabled->SetValue(true, nullptr);
    desktop.pressHotKey();
    QCOMPARE(log.keys, Keys{9});
    driver.allowed->SetValue(false, nullptr); // a disabled button is not clicked
    desktop.pressHotKey();
    QCOMPARE(log.keys, Keys{9});
    driver.allowed->SetValue(true, nullptr);
    driver.enabled->SetValue(false, nullptr); // the hot key is gone
    desktop.pressHotKey();
    QCOMPARE(log.keys, Keys{9});
}

void TestDFLocateToolBar::theHotKeyTogglesCyclicDf()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    driver.enabled->SetValue(false, nullptr);
    const Toolbar toolbar;
    Desktop desktop(toolbar.bar);
    QVERIFY(desktop.isActive());
    driver.enabled->SetValue(true, nullptr);
    const CommandLog log(driver.commands);
    desktop.pressHotKey();
    desktop.pressHotKey();
    QCOMPARE(log.keys, (Keys{10, 11}));
}

void TestDFLocateToolBar::theHotKeyOfSomebodyElseIsNotTaken()
{
    const DriverValues driver;
    driver.enabled->SetValue(false, nullptr);
    const Toolbar toolbar;
    driver.enabled->SetValue(true, nullptr);
    const CommandLog log(driver.commands);
    QShortcutEvent foreign(QKeySequence(Qt::CTRL + Qt::Key_D), 1234567);
    QCoreApplication::sendEvent(toolbar.bar, &foreign);
    QVERIFY(log.codes().empty());
}

void TestDFLocateToolBar::theHotKeyGoesWithTheToolbar()
{
    const DriverValues driver;
    driver.enabled->SetValue(false, nullptr);
    {
        const Toolbar toolbar;
        driver.enabled->SetValue(true, nullptr);
        QCOMPARE(listedHotKeys(), QStringList{ourHotKey});
    }
    QVERIFY(listedHotKeys().isEmpty());
}

// ---- External trigger ----

void TestDFLocateToolBar::theTriggerIsPublishedAndNotInUse()
{
    const DriverValues driver;
    Toolbar toolbar;
    QVERIFY(trigger() != nullptr);
    QCOMPARE(trigger()->GetState(), values::StateUnused);
    QVERIFY(!trigger()->GetValue());
    const VelmarGui::GuiComponentTools neighbour(&toolbar.common, QStringLiteral("/GUI/OtherComponent/"));
    QCOMPARE(neighbour.GetGlobalValue("TriggerLocateStart"), static_cast<values::ValueBase*>(trigger()));
}

void TestDFLocateToolBar::anExistingTriggerIsUsed()
{
    const DriverValues driver;
    auto* const existing = driver.tree.add<values::BoolValue>(componentName + "TriggerLocateStart");
    const Toolbar toolbar;
    QCOMPARE(trigger(), existing);
    QCOMPARE(existing->GetState(), values::StateUnused);
    const CommandLog log(driver.commands);
    existing->SetValue(true, nullptr);
    QCOMPARE(log.keys, Keys{9});
}

void TestDFLocateToolBar::aTriggerSetAsSoonAsItIsPublishedDoesNothing()
{
    const DriverValues driver;
    auto* const existing = driver.tree.add<values::BoolValue>(componentName + "TriggerLocateStart");
    RecordingObserver impatient([existing](Observable*, TChangeCode code) {
        if (code == ChangeState)
            existing->SetValue(true, nullptr);
    });
    values::ValueObservingPtr<values::BoolValue> binding(&impatient);
    binding.Assign(existing);
    const CommandLog log(driver.commands);
    const Toolbar toolbar;
    QVERIFY(existing->GetValue());
    QVERIFY(log.codes().empty());
}

void TestDFLocateToolBar::theStateOfTheTriggerTellsWhetherDfRuns()
{
    const DriverValues driver;
    const Toolbar toolbar;
    toolbar.connectTree();
    QCOMPARE(trigger()->GetState(), values::StateUnused);
    driver.running->SetValue(true, nullptr);
    QCOMPARE(trigger()->GetState(), values::StateOrdinary);
    driver.running->SetValue(false, nullptr);
    QCOMPARE(trigger()->GetState(), values::StateUnused);
}

namespace {

/// Notes what it is told of the state of values.
class ListeningToolBar : public DFLocateToolBar
{
public:
    using DFLocateToolBar::DFLocateToolBar;
    void Update(Observable* source, TChangeCode code) override
    {
        if (code == ChangeState)
            statesHeard.push_back(source);
        DFLocateToolBar::Update(source, code);
    }

    std::vector<Observable*> statesHeard;
};

} // namespace

void TestDFLocateToolBar::theStateOfTheTriggerIsWrittenAsOnesOwn()
{
    const DriverValues driver;
    VelmarGui::GuiComponentCommon common;
    ListeningToolBar toolbar(&common, componentName);
    QVERIFY(QMetaObject::invokeMethod(&toolbar, "sl_VTConnected", Qt::DirectConnection));
    driver.running->SetValue(true, nullptr);
    QCOMPARE(trigger()->GetState(), values::StateOrdinary);
    QVERIFY(toolbar.statesHeard.empty());
    trigger()->SetState(values::StateUnused, nullptr);
    QCOMPARE(toolbar.statesHeard.size(), std::size_t(1));
}

void TestDFLocateToolBar::theTriggerRequestsOneDf()
{
    const DriverValues driver;
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    const Traces traces;
    trigger()->SetValue(true, nullptr);
    trigger()->SetValue(true, nullptr); // the same content, but set from outside all the same
    trigger()->SetValue(false, nullptr);
    QCOMPARE(log.keys, (Keys{9, 9, 9}));
    QCOMPARE(traces.records.size(), std::size_t(3));
    for (const TraceRecord& record : traces.records) {
        QCOMPARE(record.text, QStringLiteral("DF single shot triggered from external"));
        QCOMPARE(record.sourceFile, sourceName);
        QCOMPARE(int(record.line), 464);
    }
}

void TestDFLocateToolBar::theTriggerStartsCyclicDf()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    const Traces traces;
    trigger()->SetValue(true, nullptr);
    QVERIFY(toolbar.button()->isChecked());
    QCOMPARE(log.keys, Keys{10});
    QCOMPARE(traces.records.size(), std::size_t(1));
    QCOMPARE(traces.records[0].text, QStringLiteral("DF Cycle mode enabled from external"));
    QCOMPARE(traces.records[0].sourceFile, sourceName);
    QCOMPARE(int(traces.records[0].line), 469);
}

void TestDFLocateToolBar::theTriggerDoesNotStopCyclicDf()
{
    const DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    toolbar.button()->click();
    const CommandLog log(driver.commands);
    const Traces traces;
    trigger()->SetValue(false, nullptr);
    QVERIFY(toolbar.button()->isChecked());
    QVERIFY(log.codes().empty());
    QCOMPARE(traces.records.size(), std::size_t(1));
}

void TestDFLocateToolBar::aDisabledButtonMakesTheTriggerDoNothing()
{
    const DriverValues driver;
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    const Traces traces;
    driver.allowed->SetValue(false, nullptr);
    trigger()->SetValue(true, nullptr);
    driver.allowed->SetValue(true, nullptr);
    driver.enabled->SetValue(false, nullptr); // disables the button through the toolbar
    trigger()->SetValue(true, nullptr);
    QVERIFY(log.codes().empty());
    QVERIFY(traces.records.empty());
}

void TestDFLocateToolBar::withoutAWorkflowTheTriggerDoesNothing()
{
    const DriverValues driver({"Config/DFLocateWorkflow"});
    const Toolbar toolbar;
    QVERIFY(toolbar.button()->isEnabled());
    const CommandLog log(driver.commands);
    const Traces traces;
    trigger()->SetValue(true, nullptr);
    QVERIFY(log.codes().empty());
    QVERIFY(traces.records.empty());
}

void TestDFLocateToolBar::anAnnouncedTriggerIsNotASetOne()
{
    const DriverValues driver;
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    trigger()->HasChanged(ChangeContent, nullptr);
    driver.enabled->HasChanged(ChangeExternal, nullptr);
    QVERIFY(log.codes().empty());
}

void TestDFLocateToolBar::triggerTracesNeedTheTraceBit()
{
    const DriverValues driver;
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    const Traces traces(~0x20);
    trigger()->SetValue(true, nullptr);
    selectText(driver.workflow, "Continuous");
    trigger()->SetValue(true, nullptr);
    QCOMPARE(log.keys, (Keys{9, 10}));
    QVERIFY(traces.records.empty());
}

// ---- Availability ----

void TestDFLocateToolBar::anUnavailableLocateTypeIsWarnedOf_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("hri");
    QTest::addColumn<bool>("df");
    QTest::addColumn<QString>("warning");

    QTest::newRow("no locate") << noLocate << false << false << QString();
    QTest::newRow("online, none") << online << false << false << onlineWarning;
    QTest::newRow("online, HRI only") << online << true << false << onlineWarning;
    QTest::newRow("online, DF only") << online << false << true << QString();
    QTest::newRow("online, both") << online << true << true << QString();
    QTest::newRow("history, none") << history << false << false << historyWarning;
    QTest::newRow("history, HRI only") << history << true << false << QString();
    QTest::newRow("history, DF only") << history << false << true << historyWarning;
    QTest::newRow("history, both") << history << true << true << QString();
}

void TestDFLocateToolBar::anUnavailableLocateTypeIsWarnedOf()
{
    QFETCH(int, type);
    QFETCH(bool, hri);
    QFETCH(bool, df);
    QFETCH(QString, warning);
    const DriverValues driver;
    driver.locateType->Select(type);
    const Toolbar toolbar;
    toolbar.setUsable(hri, df);
    const CommandLog log(driver.commands);
    const BoxWatchdog watchdog;
    toolbar.button()->click();
    QCOMPARE(log.keys, Keys{9});
    QCOMPARE(watchdog.seen.size(), std::size_t(warning.isEmpty() ? 0 : 1));
    for (const testsupport::SeenBox& box : watchdog.seen) {
        QCOMPARE(box.title, QStringLiteral("Warning"));
        QCOMPARE(box.text, warning);
        QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
        QCOMPARE(box.icon, QMessageBox::Warning);
        QVERIFY(!box.hasParent);
    }
}

void TestDFLocateToolBar::theWarningComesBeforeTheCommandAndDoesNotStopIt()
{
    const DriverValues driver;
    driver.locateType->Select(history);
    const Toolbar toolbar;
    Keys keysWhileOpen;
    const BoxWatchdog watchdog([&] { keysWhileOpen.push_back(driver.commands->GetCurrentKey()); });
    toolbar.button()->click();
    QCOMPARE(keysWhileOpen, Keys{0});
    QCOMPARE(driver.commands->GetCurrentKey(), 9);
}

void TestDFLocateToolBar::everyWayToACommandWarns()
{
    const DriverValues driver;
    driver.locateType->Select(history);
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    const BoxWatchdog watchdog;
    toolbar.button()->click();
    QCOMPARE(watchdog.seen.size(), std::size_t(1));
    trigger()->SetValue(true, nullptr);
    QCOMPARE(watchdog.seen.size(), std::size_t(2));
    selectText(driver.workflow, "Continuous");
    toolbar.button()->click();
    QCOMPARE(watchdog.seen.size(), std::size_t(3));
    toolbar.button()->click();
    QCOMPARE(watchdog.seen.size(), std::size_t(4));
    trigger()->SetValue(true, nullptr);
    QCOMPARE(watchdog.seen.size(), std::size_t(5));
    driver.cyclicStarted->HasChanged(ChangeContent, nullptr);
    QCOMPARE(watchdog.seen.size(), std::size_t(6));
    QCOMPARE(log.keys, (Keys{9, 9, 10, 11, 10, 11}));
}

void TestDFLocateToolBar::lostAvailabilityUnchecksTheButton_data()
{
    QTest::addColumn<bool>("hriRunning");
    QTest::addColumn<bool>("hri");
    QTest::addColumn<bool>("df");
    QTest::addColumn<bool>("checked");

    QTest::newRow("HRI runs, none usable") << true << false << false << false;
    QTest::newRow("HRI runs, DF usable") << true << false << true << false;
    QTest::newRow("HRI runs, HRI usable") << true << true << false << true;
    QTest::newRow("HRI runs, both usable") << true << true << true << true;
    QTest::newRow("DF runs, none usable") << false << false << false << false;
    QTest::newRow("DF runs, DF usable") << false << false << true << true;
    QTest::newRow("DF runs, HRI usable") << false << true << false << false;
    QTest::newRow("DF runs, both usable") << false << true << true << true;
}

void TestDFLocateToolBar::lostAvailabilityUnchecksTheButton()
{
    QFETCH(bool, hriRunning);
    QFETCH(bool, hri);
    QFETCH(bool, df);
    QFETCH(bool, checked);
    DriverValues driver;
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    toolbar.button()->click();
    const CommandLog log(driver.commands);
    toolbar.setUsable(hri, df);
    QVERIFY(toolbar.button()->isChecked()); // without "LocateHRIRunning" nothing is known to be lost

    driver.add<values::BoolValue>("Values/Status/LocateHRIRunning")->SetValue(hriRunning, nullptr);
    toolbar.setUsable(hri, df);
    QCOMPARE(toolbar.button()->isChecked(), checked);
    QCOMPARE(log.keys, checked ? Keys{} : Keys{11});
}

void TestDFLocateToolBar::lostAvailabilityIsReportedByTheStatusDisplay()
{
    DriverValues driver;
    auto* const status = driver.add<values::StringValue>("Values/Status/LocateStatus");
    auto* const hriStatus = driver.tree.add<values::StringValue>("/DRV/DRIVER/DFLOCATE/LocateHRIStatus");
    hriStatus->SetValue(QStringLiteral("DFID1#ST0"), nullptr);
    driver.add<values::BoolValue>("Values/Status/LocateHRIRunning");
    selectText(driver.workflow, "Continuous");
    driver.locateType->Select(online);
    const Toolbar toolbar;
    toolbar.connectTree();
    const BoxWatchdog watchdog;
    status->SetValue(QStringLiteral("DFID3#ST1"), nullptr);
    toolbar.button()->click();
    QVERIFY(watchdog.seen.empty()); // the toolbar has heard that DF is usable
    status->SetValue(QStringLiteral("DFID3#ST0"), nullptr);
    QVERIFY(!toolbar.button()->isChecked());
    QCOMPARE(watchdog.seen.size(), std::size_t(1)); // of the stop command
}

void TestDFLocateToolBar::theRunningServiceIsObservedOnlyForAMoment()
{
    DriverValues driver;
    auto* const hriRunning = driver.add<values::BoolValue>("Values/Status/LocateHRIRunning");
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    toolbar.button()->click();
    toolbar.setUsable(true, true);
    QVERIFY(toolbar.button()->isChecked());
    QCOMPARE(hriRunning->GetObserverCount(), std::size_t(0));
}

void TestDFLocateToolBar::availabilityDoesNotTouchAnUncheckedButton()
{
    DriverValues driver;
    driver.add<values::BoolValue>("Values/Status/LocateHRIRunning");
    selectText(driver.workflow, "Continuous");
    const Toolbar toolbar;
    const CommandLog log(driver.commands);
    toolbar.setUsable(false, false);
    QVERIFY(log.codes().empty());
}

// ---- Lives and deaths ----

void TestDFLocateToolBar::eachBoundValueMayGo_data()
{
    QTest::addColumn<QByteArray>("path");
    for (const char* path : {"Enabled", "Values/DFLocateAllowed", "Config/DFLocateWorkflow", "Config/DFLocateType",
                             "Config/DFLocateActivity", "Values/Result/CyclicLocateStarted", "Values/Commands",
                             "DFRunning", "Config/Threshold", "Config/Quality", "Config/Mode", "Config/Bandwidth",
                             "Config/AverageTime", "../DFLocateComponent/TriggerLocateStart"})
        QTest::newRow(path) << QByteArray(path);
}

void TestDFLocateToolBar::eachBoundValueMayGo()
{
    QFETCH(QByteArray, path);
    const DriverValues driver;
    driver.locateType->Select(history);
    const BoxWatchdog watchdog;
    const Toolbar toolbar;
    toolbar.connectTree();
    QString full = "/GUI/DFLocateHandler/" + QString::fromLatin1(path);
    full.replace("DFLocateHandler/../", QString());
    QVERIFY(values::Tree::Instance()->DeleteValue(full));

    // All that can still happen does happen.
    toolbar.invoke("SlotSingleShot");
    const auto touch = [](const char* name) {
        if (values::ValueBase* const value = values::Tree::Instance()->FindValue(QLatin1String(name)))
            value->HasChanged(ChangeContent, nullptr);
    };
    for (const char* workflow : {"Continuous", "On request"}) {
        if (values::Tree::Instance()->FindValue("/GUI/DFLocateHandler/Config/DFLocateWorkflow") != nullptr)
            selectText(driver.workflow, workflow);
        for (const char* name :
             {"/GUI/DFLocateHandler/Config/DFLocateActivity", "/GUI/DFLocateHandler/Values/Result/CyclicLocateStarted",
              "/GUI/DFLocateHandler/Values/DFLocateAllowed", "/GUI/DFLocateHandler/Enabled",
              "/GUI/DFLocateHandler/DFRunning", "/GUI/DFLocateHandler/Config/DFLocateType"})
            touch(name);
        toolbar.button()->setEnabled(true);
        toolbar.button()->click();
        toolbar.setUsable(false, false);
        if (trigger() != nullptr)
            trigger()->SetValue(true, nullptr);
    }
    QVERIFY(toolbar.bar != nullptr);
}

void TestDFLocateToolBar::theCommandValueMayGoWhileAWarningIsOpen()
{
    DriverValues driver;
    driver.locateType->Select(history);
    const Toolbar toolbar;
    const BoxWatchdog watchdog([&] { driver.remove("Values/Commands"); });
    toolbar.button()->click();
    QCOMPARE(watchdog.seen.size(), std::size_t(1));
    QVERIFY(toolbar.bar != nullptr);
}

void TestDFLocateToolBar::theToolbarMayGoWhileAWarningIsOpen_data()
{
    QTest::addColumn<QByteArray>("way");
    for (const char* way : {"click", "toggle", "trigger", "cyclic trigger", "activity", "workflow", "locate type",
                            "cyclic started", "usable", "hot key", "connect"})
        QTest::newRow(way) << QByteArray(way);
}

void TestDFLocateToolBar::theToolbarMayGoWhileAWarningIsOpen()
{
    QFETCH(QByteArray, way);
    DriverValues driver;
    auto* const hriRunning = driver.add<values::BoolValue>("Values/Status/LocateHRIRunning");
    for (const char* path : {"/GUI/DFLocateHandler/Values/Status/LocateStatus", "/DRV/DRIVER/DFLOCATE/LocateHRIStatus"})
        driver.tree.add<values::StringValue>(QLatin1String(path));
    driver.enabled->SetValue(false, nullptr);
    const Toolbar toolbar;
    Desktop desktop(toolbar.bar);
    QVERIFY(desktop.isActive());
    driver.enabled->SetValue(true, nullptr);
    const bool checked = way != "click" && way != "trigger" && way != "hot key" && way != "cyclic trigger";
    if (checked || way == "cyclic trigger")
        selectText(driver.workflow, "Continuous");
    if (checked && way != "toggle")
        toolbar.button()->click();
    {
        // The type is warned of from now on; it must not uncheck the button before its time.
        driver.locateType->StartTransaction(nullptr);
        driver.locateType->Select(history);
        driver.locateType->EndTransaction(ChangeState);
    }
    const CommandLog log(driver.commands);
    const Traces traces;
    const BoxWatchdog watchdog([&] { delete toolbar.bar.data(); });

    if (way == "click" || way == "toggle")
        QTest::mouseClick(toolbar.button(), Qt::LeftButton);
    else if (way == "trigger" || way == "cyclic trigger")
        trigger()->SetValue(true, nullptr);
    else if (way == "activity")
        driver.activity->Select(0);
    else if (way == "workflow")
        selectText(driver.workflow, "On request");
    else if (way == "locate type")
        driver.locateType->HasChanged(ChangeContent, nullptr);
    else if (way == "cyclic started")
        driver.cyclicStarted->HasChanged(ChangeContent, nullptr);
    else if (way == "usable")
        toolbar.setUsable(false, false);
    else if (way == "hot key")
        desktop.pressHotKey();
    else
        toolbar.connectTree(); // the status display finds no service usable

    QVERIFY(toolbar.bar == nullptr);
    QCOMPARE(watchdog.seen.size(), std::size_t(1));
    QVERIFY(log.codes().empty());
    QVERIFY(toolbarTraces(traces).empty());
    QVERIFY(!hriRunning->GetValue());
}

void TestDFLocateToolBar::theToolbarMayGoInAnswerToItsCommand_data()
{
    QTest::addColumn<QString>("workflow");
    QTest::addColumn<bool>("byTrigger");

    QTest::newRow("single, click") << "On request" << false;
    QTest::newRow("cyclic, click") << "Continuous" << false;
    QTest::newRow("single, trigger") << "On request" << true;
    QTest::newRow("cyclic, trigger") << "Continuous" << true;
}

void TestDFLocateToolBar::theToolbarMayGoInAnswerToItsCommand()
{
    QFETCH(QString, workflow);
    QFETCH(bool, byTrigger);
    const DriverValues driver;
    driver.workflow->Select(workflow);
    const Toolbar toolbar;
    const QPointer<QToolButton> button = toolbar.button();
    RecordingObserver deleting([&](Observable*, TChangeCode) { delete toolbar.bar.data(); });
    values::ValueObservingPtr<values::ValueSelection> binding(&deleting);
    binding.Assign(driver.commands);
    const Traces traces;
    if (byTrigger)
        trigger()->SetValue(true, nullptr);
    else
        QTest::mouseClick(toolbar.button(), Qt::LeftButton);
    QVERIFY(toolbar.bar == nullptr);
    QVERIFY(toolbarTraces(traces).empty());
    // The button is left behind only as long as Qt is in it.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(button == nullptr);
}

void TestDFLocateToolBar::theToolbarMayGoBeforeTheHostAndAfterIt()
{
    const DriverValues driver;
    auto common = std::make_unique<VelmarGui::GuiComponentCommon>();
    auto first = std::make_unique<DFLocateToolBar>(common.get(), componentName);
    auto second = std::make_unique<DFLocateToolBar>(common.get(), QStringLiteral("/GUI/SecondComponent/"));
    first.reset();
    QVERIFY(QMetaObject::invokeMethod(second.get(), "sl_VTConnected", Qt::DirectConnection));
    common.reset();
    driver.enabled->SetValue(false, nullptr);
    second.reset();
    QCOMPARE(driver.enabled->GetObserverCount(), std::size_t(0));
}

void TestDFLocateToolBar::aWindowTakesTheToolbarWithIt()
{
    const DriverValues driver;
    const Toolbar toolbar;
    toolbar.connectTree();
    {
        QMainWindow window;
        window.addToolBar(toolbar.bar);
    }
    QVERIFY(toolbar.bar == nullptr);
    for (const values::ValueBase* value : values::Tree::Instance()->ValuesBelow("/GUI/DFLocateHandler"))
        QVERIFY2(value->GetObserverCount() == 0, qPrintable(value->GetPathName()));
}

void TestDFLocateToolBar::theTreeMayGoBeforeTheToolbar()
{
    const Toolbar toolbar;
    {
        const DriverValues driver;
        const Toolbar bound(QStringLiteral("/GUI/DFLocateComponent/"));
        bound.connectTree();
        values::Tree::Instance()->Clear();
        bound.invoke("SlotSingleShot");
        bound.connectTree();
    }
    QVERIFY(toolbar.bar != nullptr);
}

void TestDFLocateToolBar::twoToolbarsFollowTheSameValues()
{
    const DriverValues driver;
    const Toolbar first;
    auto second = std::make_unique<Toolbar>();
    driver.allowed->SetValue(false, nullptr);
    QVERIFY(!first.button()->isEnabled());
    QVERIFY(!second->button()->isEnabled());
    driver.allowed->SetValue(true, nullptr);
    const CommandLog log(driver.commands);
    second->button()->click();
    QCOMPARE(log.keys, Keys{9});
    second.reset();
    first.button()->click();
    QCOMPARE(log.keys, (Keys{9, 9}));
}

void TestDFLocateToolBar::twoComponentsDoNotMeet()
{
    const testsupport::FreshTree cleared;
    const QString otherName = QStringLiteral("/GUI/SecondComponent/");
    const DriverValues driver;
    auto* const otherEnabled = driver.tree.add<values::BoolValue>(QStringLiteral("/GUI/SecondHandler/Enabled"));
    const Toolbar first;
    const Toolbar other(otherName);
    QVERIFY(first.bar->isEnabled());
    QVERIFY(!other.bar->isEnabled());
    otherEnabled->SetValue(true, nullptr);
    driver.enabled->SetValue(false, nullptr);
    QVERIFY(!first.bar->isEnabled());
    QVERIFY(other.bar->isEnabled());
    QVERIFY(trigger() != trigger(otherName));
}

void TestDFLocateToolBar::anExceptionFromADriverIsTracedAndGoesNoFurther()
{
    const DriverValues driver;
    const Toolbar toolbar;
    RecordingObserver failing([](Observable*, TChangeCode) { throw std::runtime_error("out of order"); });
    values::ValueObservingPtr<values::ValueSelection> binding(&failing);
    binding.Assign(driver.commands);
    const Traces traces;
    toolbar.button()->click();
    selectText(driver.workflow, "Continuous");
    toolbar.button()->click();
    const std::vector<TraceRecord> own = toolbarTraces(traces);
    QCOMPARE(own.size(), std::size_t(2));
    QCOMPARE(own[0].text, QStringLiteral("Exception in DFLocateToolBar::SlotSingleShot"));
    QCOMPARE(own[1].text, QStringLiteral("Exception in DFLocateToolBar::SlotCyclicToggle"));
    QVERIFY(toolbar.button()->isChecked());
}

void TestDFLocateToolBar::anExceptionInANotificationIsTracedAndGoesNoFurther()
{
    const DriverValues driver;
    const Toolbar toolbar;
    RecordingObserver failing([](Observable*, TChangeCode) { throw std::runtime_error("out of order"); });
    values::ValueObservingPtr<values::ValueSelection> binding(&failing);
    binding.Assign(driver.commands);
    const Traces traces;
    trigger()->SetValue(true, nullptr);
    const std::vector<TraceRecord> own = toolbarTraces(traces);
    QCOMPARE(own.size(), std::size_t(1));
    QCOMPARE(own[0].text, QStringLiteral("Exception in DFLocateToolBar::Update"));
}

DFL_TEST_MAIN(TestDFLocateToolBar)
#include "tst_dflocatetoolbar.moc"
