#include "checks.h"

#include "knownvalues.h"
#include "operations.h"

#include "brixappstartup/translationcenter.h"
#include "devicecontrol/guicentral.h"
#include "support/recordingobserver.h"
#include "valuewidgets/undorecordingcontrolbase.h"
#include "valuewidgets/vccomboboxclassic.h"
#include "valuewidgets/vcnumericfloatspin.h"
#include "ztbase/brix/datetime.h"
#include "ztbase/brix/numbers.h"
#include "ztbase/brix/texts.h"
#include "ztbase/errorhandler.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>
#include <QToolButton>
#include <QUndoStack>

#include <algorithm>
#include <cmath>

namespace chaos {

namespace {

using values::BoolValue;
using values::IntValue;
using values::StringValue;
using values::ValueBase;
using values::ValueSelection;

/// The undo history that a host keeps; the oldest edits go when there are more.
constexpr int mostEditsKept = 1000;

QStringList& complaints()
{
    static QStringList list;
    return list;
}

QString resultPath(const char* name)
{
    return handlerPath("Values/Result/") + QLatin1String(name);
}

/// As the detail toolbar or the toolbar is registered with values; null without one.
IObserver* detailToolbar(const QToolBar* toolBar)
{
    if (toolBar == nullptr)
        return nullptr;
    const QObjectList children = toolBar->children();
    for (QObject* const child : children) {
        if (qstrcmp(child->metaObject()->className(), "VelmarGui::DFDetailToolbar") == 0)
            return dynamic_cast<IObserver*>(child);
    }
    return nullptr;
}

/// The value at @p path when @p observer is bound to it; else null.
template <typename T>
T* bound(const QString& path, const IObserver* observer)
{
    T* const value = find<T>(path);
    return value != nullptr && value->IsObservedBy(observer) ? value : nullptr;
}

QString shownName(const ValueSelection& selection, const values::SelectionItem& item)
{
    const QString& context = selection.GetTranslationNamespace();
    const QString name = context.isEmpty() ? item.GetName()
                                           : QCoreApplication::translate(context.toUtf8().constData(),
                                                                         item.GetName().toUtf8().constData());
    return Brix::Beginning(name, VCComboBoxClassic::LongestText);
}

QString nameOf(const QWidget& widget)
{
    return QStringLiteral("%1 \"%2\"").arg(QLatin1String(widget.metaObject()->className()), widget.objectName());
}

bool isSwitchedOff(const QWidget& widget)
{
    return widget.testAttribute(Qt::WA_ForceDisabled);
}

void lookAtCombo(const VCComboBoxClassic& combo, bool textsHaveSettled, QStringList& failures)
{
    const auto fail = [&](const QString& what) { failures += nameOf(combo) + QLatin1String(": ") + what; };
    const ValueSelection* const selection = combo.GetValueSelection();
    if (selection == nullptr) {
        if (combo.count() != 0 || !isSwitchedOff(combo))
            fail(QStringLiteral("shows something without a value"));
        return;
    }
    if (isSwitchedOff(combo) != (selection->GetState() == values::StateUnused))
        fail(QStringLiteral("its availability is not that of its value"));
    if (combo.count() != selection->GetItemCount()) {
        fail(QStringLiteral("shows %1 of %2 items").arg(combo.count()).arg(selection->GetItemCount()));
        return;
    }
    for (int i = 0; i < combo.count() && textsHaveSettled; ++i) {
        const values::SelectionItem& item = *selection->GetItem(i);
        if (combo.itemText(i) != shownName(*selection, item) || combo.itemData(i) != QVariant(item.GetKey()))
            fail(QStringLiteral("item %1 is another one").arg(i));
    }
    if (combo.currentIndex() != selection->GetItemIndex(selection->GetCurrentKey()))
        fail(QStringLiteral("shows item %1, current is %2")
                 .arg(combo.currentIndex())
                 .arg(selection->GetItemIndex(selection->GetCurrentKey())));
}

void lookAtSpin(const VCNumericFloatSpin& spin, QStringList& failures)
{
    const auto fail = [&](const QString& what) { failures += nameOf(spin) + QLatin1String(": ") + what; };
    const ValueBase* const value = spin.GetNumeric();
    if (value == nullptr) {
        if (!isSwitchedOff(spin))
            fail(QStringLiteral("can be used without a value"));
        return;
    }
    const bool bringsIntoUse = spin.objectName().endsWith(QLatin1String(" threshold"));
    if (isSwitchedOff(spin) != (value->GetState() == values::StateUnused && !bringsIntoUse))
        fail(QStringLiteral("its availability is not that of its value"));
    const bool isBeingEdited = spin.findChild<QLineEdit*>()->isModified();
    if (!isBeingEdited && spin.cleanText() != value->GetStringValue())
        fail(QStringLiteral("shows \"%1\" for \"%2\"").arg(spin.cleanText(), value->GetStringValue()));
}

/// The threshold spins of the toolbar hold on to their paths, whatever comes and goes there.
void lookAtPath(const QToolBar& toolBar, const char* name, const char* path, QStringList& failures)
{
    const auto* const spin = toolBar.findChild<VCNumericFloatSpin*>(QLatin1String(name));
    const ValueBase* const value = values::Tree::Instance()->FindValue(handlerPath(path));
    const bool fits =
        value != nullptr && (value->GetType() == values::TypeInt || value->GetType() == values::TypeDouble);
    if (spin != nullptr && spin->GetNumeric() != (fits ? value : nullptr))
        failures += QStringLiteral("%1 is not bound to what is at %2").arg(nameOf(*spin), handlerPath(path));
}

QString labelText(const QToolBar& toolBar, const char* name)
{
    const auto* const label = toolBar.findChild<QLabel*>(QLatin1String(name));
    return label != nullptr ? label->text() : QString();
}

void compareLabel(const QToolBar& toolBar, const char* name, const QString& wanted, QStringList& failures)
{
    const QString shown = labelText(toolBar, name);
    if (shown != wanted)
        failures += QStringLiteral("The label \"%1\" shows \"%2\" for \"%3\"").arg(QLatin1String(name), shown, wanted);
}

QString currentName(const ValueSelection& selection)
{
    return selection.GetStringValue();
}

void probeNumbers(const QToolBar& toolBar, const IObserver* detail, QStringList& failures)
{
    auto* const quality = bound<ValueSelection>(resultPath("Quality"), detail);
    const auto* const threshold = bound<IntValue>(resultPath("QualityThreshold"), detail);
    const auto* const azimuth = bound<ValueSelection>(resultPath("Azimuth"), detail);
    if (quality == nullptr || threshold == nullptr)
        return;
    quality->HasChanged(ChangeContent, nullptr);
    bool isNumber = false;
    const double percent = Brix::toDoubleEx(currentName(*quality), &isNumber);
    const bool isGoodEnough = threshold->GetValue() <= (isNumber ? std::trunc(percent) : 0.0);
    const auto wanted = [isGoodEnough](const ValueSelection* selection, const QString& unit) {
        const bool isShown = isGoodEnough && selection != nullptr && selection->GetCurrentItem() != nullptr;
        return isShown ? currentName(*selection) + unit : QStringLiteral("---");
    };
    compareLabel(toolBar, "average bearing", wanted(azimuth, QStringLiteral("°")), failures);
    compareLabel(toolBar, "average quality", wanted(quality, QStringLiteral("%")), failures);
}

void probeErrors(const QToolBar& toolBar, const IObserver* detail, QStringList& failures)
{
    auto* const errors = bound<ValueSelection>(resultPath("Errors"), detail);
    if (errors == nullptr || bound<StringValue>(resultPath("Frequency"), detail) == nullptr)
        return;
    errors->HasChanged(ChangeContent, nullptr);
    const QString code = currentName(*errors);
    static const QHash<int, const char*> named{{-17, "No signal"},
                                               {-14, "Timeout"},
                                               {-3, "Not in time range"},
                                               {-2, "Scan range undefined"},
                                               {-1, "Not in scan range"}};
    const char* const name = named.value(code.toInt());
    if (!code.isEmpty())
        compareLabel(toolBar, "LocationFindingTime",
                     name != nullptr ? QObject::tr(name) : QString::number(code.toInt()), failures);
}

void probeButtonColour(const QToolBar& toolBar, const IObserver* detail, QStringList& failures)
{
    auto* const time = bound<StringValue>(resultPath("ResultTime"), detail);
    const auto* const stations = bound<ValueSelection>(resultPath("SelectedDF"), detail);
    const auto* const button = toolBar.findChild<QToolButton*>(QStringLiteral("DetailedResults"));
    if (time == nullptr || stations == nullptr || button == nullptr)
        return;
    time->HasChanged(ChangeContent, nullptr);
    const bool isGreen = button->palette().color(QPalette::Window) == QColor(Qt::green);
    if (isGreen != (stations->GetItemCount() >= 2))
        failures += QStringLiteral("The button of the detailed results is %1 with %2 stations")
                        .arg(isGreen ? QStringLiteral("green") : QStringLiteral("not green"))
                        .arg(stations->GetItemCount());
}

/// Whether the toolbar looked at has a sibling that was made before it and has stayed in the main window.
bool hasEarlierToolbar()
{
    const QWidgetList widgets = QApplication::allWidgets();
    return std::count_if(widgets.begin(), widgets.end(), [](const QWidget* widget) {
               return detailToolbar(qobject_cast<const QToolBar*>(widget)) != nullptr;
           }) > 1;
}

/// The window of the toolbar shows the stations in their order, as far as the toolbar still hears of them.
void probeDetails(const IObserver* detail, QStringList& failures)
{
    auto* const stations = bound<ValueSelection>(resultPath("SelectedDF"), detail);
    // A window does not tell whose it is, and that of an earlier toolbar may be for a list that has gone.
    if (stations == nullptr || hasEarlierToolbar())
        return;
    stations->HasChanged(ChangeItems, nullptr);
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (const QWidget* const window : windows) {
        const auto* const table =
            window->objectName() == QLatin1String("DetailedResults") ? window->findChild<QTableWidget*>() : nullptr;
        // A window that was made for stations of before shows those: it is not bound again.
        const auto* const observer = dynamic_cast<const IObserver*>(window);
        if (table == nullptr || bound<StringValue>(resultPath("ResultTime"), observer) == nullptr)
            continue;
        if (table->rowCount() != 0 && table->rowCount() != stations->GetItemCount()) {
            // Its list may have gone while the time has stayed: then it has no rows.
            failures += QStringLiteral("The detailed results have %1 rows for %2 stations")
                            .arg(table->rowCount())
                            .arg(stations->GetItemCount());
            continue;
        }
        for (int row = 0; row < table->rowCount(); ++row) {
            const QTableWidgetItem* const cell = table->item(row, 0);
            if (cell == nullptr || cell->text() != stations->GetItem(row)->GetName())
                failures += QStringLiteral("Row %1 of the detailed results is of another station").arg(row);
        }
    }
}

void probeStartButton(const QToolBar& toolBar, QStringList& failures)
{
    const auto* const observer = dynamic_cast<const IObserver*>(&toolBar);
    const auto* const button = toolBar.findChild<QToolButton*>(QStringLiteral("DFStarter"));
    auto* const allowed = bound<BoolValue>(handlerPath("Values/DFLocateAllowed"), observer);
    const auto* const activity = bound<ValueSelection>(handlerPath("Config/DFLocateActivity"), observer);
    auto* const workflow = bound<ValueSelection>(handlerPath("Config/DFLocateWorkflow"), observer);
    if (button == nullptr || allowed == nullptr)
        return;
    allowed->HasChanged(ChangeContent, nullptr);
    const bool isAllowed = allowed->GetValue() && activity != nullptr && activity->GetCurrentKey() != 0;
    if (button->isEnabledTo(&toolBar) != isAllowed)
        failures += QStringLiteral("The start button is %1")
                        .arg(isAllowed ? QStringLiteral("disabled") : QStringLiteral("enabled"));
    if (workflow == nullptr)
        return;
    const QPointer<const QToolButton> alive(button);
    workflow->HasChanged(ChangeContent, nullptr); // may uncheck the button, and that may open a box
    if (alive.isNull())
        return;
    const bool isContinuous = currentName(*workflow) == QLatin1String("Continuous");
    if (button->isCheckable() != isContinuous)
        failures += QStringLiteral("The start button's kind is not that of the workflow");
}

// A world that has just been made complete: every value is the driver's, with its first content.

void tryIndicators(QStringList& failures)
{
    struct Step
    {
        QString df;
        QString hri;
        const char* indicator;
        bool wanted;
    };
    const QString available = QStringLiteral("DFID3#N_North#ST1#FB20000000#FE3000000000");
    const Step steps[] = {
        {available, QString(), "LocateDFConnectedIndicator", true},
        {available, QString(), "LocateDFUsableIndicator", true},
        {available, QString(), "LocateHRIConnectedIndicator", false},
        {QStringLiteral("DFID3#ST0"), available, "LocateDFUsableIndicator", false},
        {QStringLiteral("DFID3#ST0"), available, "LocateHRIUsableIndicator", true},
        {QString(), QString(), "LocateDFConnectedIndicator", false},
    };
    for (const Step& step : steps) {
        find<StringValue>(handlerPath("Values/Status/LocateStatus"))->SetValue(step.df, nullptr);
        find<StringValue>(QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus"))->SetValue(step.hri, nullptr);
        const auto* const indicator = find<BoolValue>(componentPath() + QLatin1String(step.indicator));
        if (indicator == nullptr || indicator->GetValue() != step.wanted)
            failures += QStringLiteral("%1 is wrong for \"%2\" and \"%3\"")
                            .arg(QLatin1String(step.indicator), step.df, step.hri);
    }
}

/// A setting that is changed goes to the parameter set, the form and the driver: no exchange is thought to be under
/// way.
void trySetting(const VelmarGui::GuiComponentCommon& common, const QWidget& panel, QStringList& failures)
{
    const int number = 37;
    int updates = 0;
    const auto counting =
        QObject::connect(&common, &VelmarGui::GuiComponentCommon::si_parameterSetUpdated, [&updates] { ++updates; });
    auto* const quality = find<IntValue>(handlerPath("Config/Quality"));
    quality->SetState(values::StateOrdinary, nullptr);
    quality->SetValue(number, nullptr);
    QObject::disconnect(counting);

    const QString text = common.GetParameterSet(componentPath(), QStringLiteral("DF_Settings"));
    const auto* const field = panel.findChild<VCNumericFloatSpin*>(QStringLiteral("Detail/QualityThreshold"));
    if (updates != 1)
        failures += QStringLiteral("One change of a setting made %1 reports of the parameter set").arg(updates);
    if (!text.contains(QStringLiteral("<QualityThreshold>%1<").arg(number)))
        failures += QStringLiteral("The parameter set does not know the setting: ") + text;
    if (field == nullptr || field->value() != number)
        failures += QStringLiteral("The form does not show the setting");
    if (find<StringValue>(parameterPath("DFLOCATE/ToDriver"))->GetValue() != text)
        failures += QStringLiteral("The driver does not get the setting");
}

void tryStart(const QToolBar& toolBar, ScriptedSource& source, QStringList& failures)
{
    auto* const commands = find<ValueSelection>(handlerPath("Values/Commands"));
    testsupport::RecordingObserver heard;
    find<ValueSelection>(handlerPath("Config/DFLocateType"))->Select(0);
    commands->AddObserver(&heard);
    auto* const start = toolBar.findChild<QToolButton*>(QStringLiteral("DFStarter"));
    start->click();
    commands->RemoveObserver(&heard);
    if (heard.count(ChangeContent) != 1 || commands->GetCurrentKey() != 9 || !source.isAsked()) {
        failures += QStringLiteral("One click made %1 commands, the last with key %2")
                        .arg(heard.count(ChangeContent))
                        .arg(commands->GetCurrentKey());
        return;
    }
    workbench::DfResult result;
    for (const int id : {1, 2}) {
        workbench::StationResult& station = result.stations.emplace_back();
        station.stationId = id;
        station.stationName = QStringLiteral("Station %1").arg(id);
        station.azimuth = 100.5 + id;
        station.quality = 80.0 + id;
    }
    find<ValueSelection>(resultPath("SelectedDF"))->DeleteItems();
    source.answer(result);
    compareLabel(toolBar, "average bearing", QStringLiteral("101.5°"), failures);
    compareLabel(toolBar, "average quality", QStringLiteral("81%"), failures);
}

/// The window that the toolbar opens follows the list of stations.
void tryDetails(const QToolBar& toolBar, QStringList& failures)
{
    auto* const stations = find<ValueSelection>(resultPath("SelectedDF"));
    toolBar.findChild<QToolButton*>(QStringLiteral("DetailedResults"))->click();
    stations->AddItem(QStringLiteral("Station 3"), 3.0, 3, nullptr);
    const QWidgetList windows = QApplication::topLevelWidgets();
    const bool isFollowed = std::any_of(windows.begin(), windows.end(), [stations](const QWidget* window) {
        const auto* const table = window->objectName() == QLatin1String("DetailedResults")
                                      ? window->findChild<const QTableWidget*>()
                                      : nullptr;
        return table != nullptr && table->isVisible() && table->rowCount() == stations->GetItemCount();
    });
    if (!isFollowed)
        failures += QStringLiteral("The detailed results do not follow the list of stations");
    probeDetails(detailToolbar(&toolBar), failures);
}

void noteQtMessage(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text)
{
    // What the platform without a screen cannot do is no fault.
    static const char* const expected[] = {"This plugin does not support"};
    for (const char* const beginning : expected) {
        if (text.startsWith(QLatin1String(beginning)))
            return;
    }
    if (type == QtDebugMsg || type == QtInfoMsg)
        return;
    std::fprintf(stderr, "%s\n", qPrintable(text));
    Checks::complain(QStringLiteral("Qt: ") + text);
}

} // namespace

Checks::Checks(World& world, Operations& operations)
    : m_world(world)
    , m_operations(operations)
    , m_widgetsAtFirst(QApplication::allWidgets().size())
{
    qInstallMessageHandler(noteQtMessage);
    ErrorHandler::Instance()->SetTraceMask(ErrorHandler::ComponentTraces);
    ErrorHandler::Instance()->SetTraceSink([](const TraceRecord& record) {
        // Nobody throws here but the host, which takes no number that is none. So there is nothing else to catch; and
        // nothing of what is made may go astray.
        if (record.text.endsWith(QLatin1String("not a finite number")))
            return;
        if (record.text.contains(QLatin1String("xception")) || record.text.startsWith(QLatin1String("!!!")))
            complain(QStringLiteral("Trace: ") + record.text);
    });
}

Checks::~Checks()
{
    ErrorHandler::Instance()->SetTraceSink(nullptr);
    qInstallMessageHandler(nullptr);
}

void Checks::complain(const QString& sentence)
{
    complaints() += sentence;
}

QStringList Checks::takeComplaints()
{
    return std::exchange(complaints(), {});
}

QStringList Checks::look() const
{
    QStringList failures;
    const bool textsHaveSettled = !m_operations.isLanguageSettling();
    const QWidgetList widgets = QApplication::allWidgets();
    for (const QWidget* const widget : widgets) {
        if (const auto* const combo = qobject_cast<const VCComboBoxClassic*>(widget))
            lookAtCombo(*combo, textsHaveSettled, failures);
        else if (const auto* const spin = qobject_cast<const VCNumericFloatSpin*>(widget))
            lookAtSpin(*spin, failures);
    }
    if (m_world.toolBar) {
        lookAtPath(*m_world.toolBar, "Level threshold", "Config/Threshold", failures);
        lookAtPath(*m_world.toolBar, "Quality threshold", "Config/Quality", failures);
    }
    if (const QUndoStack* const stack = UndoRecordingControlBase::GetUndoStack();
        stack != nullptr && stack->count() > mostEditsKept)
        failures += QStringLiteral("There are %1 edits to undo").arg(stack->count());
    return failures;
}

QStringList Checks::probe()
{
    QStringList failures;
    const QPointer<QToolBar> toolBar = m_world.toolBar;
    m_operations.setQuiet(true);
    if (const IObserver* const detail = detailToolbar(toolBar)) {
        probeNumbers(*toolBar, detail, failures);
        probeButtonColour(*toolBar, detail, failures);
        probeErrors(*toolBar, detail, failures);
        probeDetails(detail, failures);
    }
    if (toolBar)
        probeStartButton(*toolBar, failures);
    m_operations.setQuiet(false);
    return failures;
}

QStringList Checks::tryOut()
{
    QStringList failures;
    m_operations.setQuiet(true);
    tryIndicators(failures);
    trySetting(*m_world.common, *m_world.panel, failures);
    tryStart(*m_world.toolBar, *m_world.source(), failures);
    tryDetails(*m_world.toolBar, failures);
    m_operations.setQuiet(false);
    return failures;
}

QStringList Checks::lookForLeftovers() const
{
    QStringList failures;
    if (const int widgets = QApplication::allWidgets().size(); widgets != m_widgetsAtFirst) {
        failures += QStringLiteral("There were %1 widgets at first and are %2 now").arg(m_widgetsAtFirst).arg(widgets);
        const QWidgetList all = QApplication::allWidgets();
        for (const QWidget* const widget : all)
            failures += QStringLiteral("  ") + nameOf(*widget);
    }
    for (const char* const name : {"DFLocateComponent", "DFLocateHandler"}) {
        const int count = TranslationCenter::Instance()->GetRegistrationCount(QLatin1String(name));
        if (count != 0)
            failures += QStringLiteral("%1 is registered %2 times").arg(QLatin1String(name)).arg(count);
    }
    if (!GuiCentral::Instance()->GetListedHotKeys().empty())
        failures += QStringLiteral("There are hot keys left");
    if (UndoRecordingControlBase::GetUndoStack() != nullptr || GuiCentral::Instance()->GetMainWidget() != nullptr)
        failures += QStringLiteral("The window is known still");
    for (ValueBase* const value : values::Tree::Instance()->ValuesBelow(QString())) {
        if (value->GetObserverCount() != 0)
            failures +=
                QStringLiteral("%1 has %2 observers left").arg(value->GetPathName()).arg(value->GetObserverCount());
    }
    return failures;
}

} // namespace chaos
