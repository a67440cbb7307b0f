#include "checks.h"
#include "interrupter.h"
#include "knownvalues.h"
#include "operations.h"
#include "ownclock.h"

#include "guicomponentbase/iguicomponent.h"
#include "support/testmain.h"

#include <QToolButton>

#include <optional>

using chaos::find;
using chaos::handlerPath;
using chaos::Interrupter;
using chaos::World;
using values::BoolValue;
using values::DoubleValue;
using values::IntValue;
using values::StringValue;
using values::Tree;
using values::ValueBase;
using values::ValueSelection;

namespace {

/// The day of a component, with driver and window: an operator goes through everything once.
class Day
{
public:
    struct Step
    {
        const char* name;
        void (Day::*act)();
        /// The component makes values. It would lose one whose place another kind has taken meanwhile, as it tells in a
        /// trace; so nobody does that then.
        bool makesValues = false;
        /// Widgets are being placed or deleted, which nobody must do a second time inside.
        bool endsWidgets = false;
    };
    static const Step steps[];

    Day();
    ~Day();
    Day(const Day&) = delete;
    Day& operator=(const Day&) = delete;

    void perform(const Step& step);
    [[nodiscard]] const Step& current() const { return *m_current; }
    [[nodiscard]] World& world() { return m_world; }
    /// Repairs what is missing, ends everything, and tells what has been wrong; empty: nothing.
    [[nodiscard]] QStringList end();

    void answer();
    void chooseDevice(int index);
    void handParameterSetIn();

private:
    void makeAll() { m_world.complete(m_dice); }
    void pressStart();
    void openDetails() { press("DetailedResults"); }
    void changeStations();
    void changeSettings();
    void chooseOtherDevice() { chooseDevice(1); }
    void reportDriverSettings();
    void exchangeForm();
    void requestParameters();
    void reportStatus();
    void measureContinuously();
    void trigger();
    void fail();
    void speakOtherLanguage();
    void connectAnew() { m_world.connectValues(); }
    void makeWidgetsAnew();
    void goOffline() { m_world.goOffline(); }
    void endAll() { m_world.end(m_dice); }

    void letEventsHappen();
    void press(const char* button);
    static void select(const char* path, int index);

    chaos::Dice m_dice{1};
    World m_world;
    chaos::Operations m_operations{m_world, m_dice}; // closes boxes
    chaos::Checks m_checks{m_world, m_operations};
    const Step* m_current = nullptr;
    int m_results = 0;
};

const Day::Step Day::steps[] = {
    {"make everything", &Day::makeAll, true, true},
    {"press the start button", &Day::pressStart},
    {"answer", &Day::answer},
    {"open the details", &Day::openDetails},
    {"press the start button again", &Day::pressStart},
    {"answer again", &Day::answer},
    {"change the stations", &Day::changeStations},
    {"change settings", &Day::changeSettings},
    {"choose another device", &Day::chooseOtherDevice},
    {"hand in a parameter set", &Day::handParameterSetIn},
    {"report the driver's settings", &Day::reportDriverSettings},
    {"exchange the form", &Day::exchangeForm, true},
    {"request the parameters", &Day::requestParameters},
    {"report the status", &Day::reportStatus},
    {"measure continuously", &Day::measureContinuously},
    {"trigger", &Day::trigger},
    {"fail", &Day::fail},
    {"speak another language", &Day::speakOtherLanguage},
    {"connect anew", &Day::connectAnew, true},
    {"make the widgets anew", &Day::makeWidgetsAnew, true, true},
    {"go offline", &Day::goOffline, true},
    {"end", &Day::endAll, false, true},
};

Day::Day()
{
    m_operations.letMeddlersGo();
    m_operations.setQuiet(true);
}

Day::~Day()
{
    Tree::Instance()->Clear();
}

/// With what the event loop would do afterwards.
void Day::perform(const Step& step)
{
    m_current = &step;
    (this->*step.act)();
    letEventsHappen();
    m_operations.languageHasSettled();
}

/// All that the event loop would do until the next frame.
void Day::letEventsHappen()
{
    chaos::OwnClock::advance(20);
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QStringList Day::end()
{
    makeAll();
    QStringList wrong = m_checks.look() + m_checks.probe();
    m_operations.setQuiet(true);
    endAll();
    letEventsHappen();
    wrong += m_checks.lookForLeftovers() + chaos::Checks::takeComplaints();
    return wrong;
}

void Day::press(const char* button)
{
    if (auto* const found = m_world.toolBar ? m_world.toolBar->findChild<QToolButton*>(QLatin1String(button)) : nullptr)
        found->click();
}

void Day::select(const char* path, int index)
{
    if (auto* const selection = find<ValueSelection>(handlerPath(path)))
        selection->SelectIndex(index);
}

void Day::pressStart()
{
    press("DFStarter");
}

/// Each result is other than the one before in everything that can be shown.
void Day::answer()
{
    if (m_world.source() == nullptr)
        return;
    const int number = ++m_results;
    workbench::DfResult result;
    result.date = QDate(2026, 5, 14);
    result.time = QTime(9, 30, number % 60);
    result.frequency = 433.92e6 + number;
    for (const int id : {1, 2}) {
        workbench::StationResult& station = result.stations.emplace_back();
        station.stationId = id;
        station.stationName = QStringLiteral("Station %1").arg(id);
        station.position = workbench::GeoPosition{48.0 + 0.1 * id, 11.0 + 0.01 * number};
        station.azimuth = 100.5 + id + number;
        station.quality = 70.0 + id + number % 20;
        station.level = 30.0 + number % 20;
    }
    m_world.source()->answer(result);
}

void Day::changeStations()
{
    auto* const stations = find<ValueSelection>(handlerPath("Values/Result/SelectedDF"));
    if (stations == nullptr)
        return;
    stations->AddItem(QStringLiteral("Station 3"), 3.0, 3);
    select("Values/Result/SelectedDF", 1);
}

void Day::changeSettings()
{
    for (const char* const path : {"Config/Mode", "Config/Bandwidth", "Config/AverageTime", "Config/DFLocateType"})
        select(path, 1);
    if (auto* const offset = find<DoubleValue>(handlerPath("Config/DFFrequencyOffset")))
        offset->SetValue(250.0, nullptr);
    if (auto* const span = find<DoubleValue>(handlerPath("Config/DFSpan")))
        span->SetValue(20e3, nullptr);
    if (auto* const quality = find<IntValue>(handlerPath("Config/Quality")))
        quality->SetState(values::StateOrdinary, nullptr);
    if (auto* const quality = find<IntValue>(handlerPath("Config/Quality")))
        quality->SetValue(37, nullptr);
}

void Day::chooseDevice(int index)
{
    if (m_world.driver)
        m_world.driver->selectDevice(index);
}

void Day::handParameterSetIn()
{
    if (!m_world.common)
        return;
    m_world.common->SetParameterSet(
        chaos::componentPath(), QStringLiteral("DF_Settings"),
        QStringLiteral("<DF_Settings><Bandwidth>1000</Bandwidth><Averaging>1500</Averaging><DFMode>Norm</DFMode>"
                       "<Detail><QualityThreshold>55</QualityThreshold><LevelThreshold>12</LevelThreshold></Detail>"
                       "<FrequencyOffset>0</FrequencyOffset><Workflow>On request</Workflow><LocateType>Online"
                       "</LocateType><Activity>DF</Activity><ActivityTrigger>Manual</ActivityTrigger></DF_Settings>"));
}

void Day::reportDriverSettings()
{
    if (auto* const settings = find<StringValue>(chaos::parameterPath("DF_Settings")))
        settings->SetValue(
            QStringLiteral("<DF_Settings><Bandwidth>25000</Bandwidth><Averaging>0</Averaging><DFMode>Norm</DFMode>"
                           "<FrequencyOffset>10</FrequencyOffset><Workflow>On request</Workflow><LocateType>No locate"
                           "</LocateType><Activity>DF and locate</Activity><ActivityTrigger>Signal</ActivityTrigger>"
                           "</DF_Settings>"),
            nullptr);
}

void Day::exchangeForm()
{
    QFile shipped(QStringLiteral(FORM_FOLDER "/DF_Settings_FFP.xml"));
    auto* const form = find<StringValue>(chaos::parameterPath("DF_Settings/PGXML"));
    if (form != nullptr && shipped.open(QIODevice::ReadOnly))
        form->SetValue(QString::fromUtf8(shipped.readAll()), nullptr);
    connectAnew();
}

void Day::requestParameters()
{
    emit m_world.common->si_parametersRequested();
    emit m_world.common->si_propertiesChanged();
}

void Day::reportStatus()
{
    for (const QString& path :
         {handlerPath("Values/Status/LocateStatus"), QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus")}) {
        for (const char* const text : {"DFID3#N_North#ST1#FB20000000#FE3000000000", "DFID3#ST0"}) {
            if (auto* const status = find<StringValue>(path))
                status->SetValue(QString::fromLatin1(text), nullptr);
        }
    }
}

void Day::measureContinuously()
{
    select("Config/DFLocateActivity", 1);
    select("Config/DFLocateWorkflow", 1);
    pressStart();
    for (int i = 0; i < 2; ++i) {
        answer();
        letEventsHappen();
    }
    pressStart();
    select("Config/DFLocateWorkflow", 0);
}

void Day::trigger()
{
    for (const bool isSet : {true, false}) {
        if (auto* const value = find<BoolValue>(chaos::componentPath() + QLatin1String("TriggerLocateStart")))
            value->SetValue(isSet, nullptr);
    }
}

void Day::fail()
{
    pressStart();
    if (chaos::ScriptedSource* const source = m_world.source())
        source->fail(QStringLiteral("No station answers."));
}

void Day::speakOtherLanguage()
{
    m_world.setOtherLanguage(true);
    QCoreApplication::processEvents();
    m_world.setOtherLanguage(false);
}

void Day::makeWidgetsAnew()
{
    if (!m_world.window)
        m_world.makeWindow(false);
    m_world.makeWidgets();
    connectAnew();
}

/// What somebody does in the middle of a notification. @p changed is the value of which is being told.
struct Interruption
{
    const char* name;
    void (*act)(Day& day, ValueBase& changed);
};

void makeAnew(const QString& path, values::TValueType type)
{
    Tree::Instance()->DeleteValue(path);
    chaos::insertValue(path, chaos::makeValue(type));
}

void write(ValueBase& value)
{
    if (auto* const truth = dynamic_cast<BoolValue*>(&value))
        truth->SetValue(!truth->GetValue(), nullptr);
    else if (auto* const integer = dynamic_cast<IntValue*>(&value))
        integer->SetValue(integer->GetValue() + 1, nullptr);
    else if (auto* const real = dynamic_cast<DoubleValue*>(&value))
        real->SetValue(real->GetValue() + 1.0, nullptr);
    else if (auto* const text = dynamic_cast<StringValue*>(&value))
        text->SetValue(QStringLiteral("something else"), nullptr);
    else if (auto* const selection = dynamic_cast<ValueSelection*>(&value))
        selection->AddItem(QStringLiteral("something else"), 4711.0, 4711);
}

const Interruption interruptions[] = {
    {"the value goes", [](Day&, ValueBase& changed) { Tree::Instance()->DeleteValue(changed.GetPathName()); }},
    {"the value is another one", [](Day&, ValueBase& changed) { makeAnew(changed.GetPathName(), changed.GetType()); }},
    {"the value is of another kind",
     [](Day& day, ValueBase& changed) {
         if (!day.current().makesValues)
             makeAnew(changed.GetPathName(),
                      changed.GetType() == values::TypeString ? values::TypeInt : values::TypeString);
     }},
    {"the value is written", [](Day&, ValueBase& changed) { write(changed); }},
    {"the value is put out of use", [](Day&, ValueBase& changed) { changed.SetState(values::StateUnused, nullptr); }},
    {"all values go", [](Day&, ValueBase&) { Tree::Instance()->Clear(); }},
    {"the network answers", [](Day& day, ValueBase&) { day.answer(); }},
    {"another device is chosen", [](Day& day, ValueBase&) { day.chooseDevice(0); }},
    {"a parameter set is handed in", [](Day& day, ValueBase&) { day.handParameterSetIn(); }},
    {"the driver ends", [](Day& day, ValueBase&) { day.world().driver.reset(); }},
    {"the toolbar goes",
     [](Day& day, ValueBase&) {
         if (!day.current().endsWidgets)
             delete day.world().toolBar;
     }},
    {"the panel goes",
     [](Day& day, ValueBase&) {
         if (!day.current().endsWidgets)
             delete day.world().panel;
     }},
};

/// With DFLOCATE_ALL_FAULTS=1 in the environment each change of the day is interrupted, which takes half an hour (under
/// sanitizers twice as long); else a part of them.
bool interruptsEach()
{
    return qEnvironmentVariableIsSet("DFLOCATE_ALL_FAULTS");
}

} // namespace

Q_DECLARE_METATYPE(const Interruption*)

/// What becomes of component, driver and window when others do something in the middle of a notification, at one change
/// after the other of those that are told in the course of a day.
class TestInterruptions : public QObject
{
    Q_OBJECT

private slots:
    void aDayWithoutInterruption();
    void everybodyGoesOn_data();
    void everybodyGoesOn();

private:
    static int changesOfADay(Interrupter::Place place);

    int m_row = 0; // so far; each begins at another change
};

int TestInterruptions::changesOfADay(Interrupter::Place place)
{
    Day day;
    const Interrupter counting(place, 0, {});
    for (const Day::Step& step : Day::steps)
        day.perform(step);
    return counting.count();
}

void TestInterruptions::aDayWithoutInterruption()
{
    QVERIFY2(changesOfADay(Interrupter::Place::Last) > 800, "there is little to interrupt");
    Day day;
    for (const Day::Step& step : Day::steps)
        day.perform(step);
    const QStringList wrong = day.end();
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QLatin1Char('\n'))));
}

void TestInterruptions::everybodyGoesOn_data()
{
    QTest::addColumn<const Interruption*>("interruption");
    QTest::addColumn<bool>("first");
    for (const Interruption& interruption : interruptions) {
        QTest::addRow("%s, before the others are told", interruption.name) << &interruption << true;
        QTest::addRow("%s, after the others are told", interruption.name) << &interruption << false;
    }
}

void TestInterruptions::everybodyGoesOn()
{
    QFETCH(const Interruption*, interruption);
    QFETCH(bool, first);
    const auto place = first ? Interrupter::Place::First : Interrupter::Place::Last;
    const int changes = changesOfADay(place);
    const int apart = interruptsEach() ? 1 : 41;
    for (int at = 1 + m_row++ % apart; at <= changes; at += apart) {
        Day day;
        QString where = QStringLiteral("at change %1, ").arg(at);
        {
            const Interrupter interrupter(place, at, [&](ValueBase& changed) {
                where += QLatin1String(day.current().name) + QLatin1String(", ") + changed.GetPathName();
                interruption->act(day, changed);
            });
            for (const Day::Step& step : Day::steps)
                day.perform(step);
        }
        const QStringList wrong = day.end();
        QVERIFY2(wrong.isEmpty(), qPrintable(where + QLatin1Char('\n') + wrong.join(QLatin1Char('\n'))));
    }
}

DFL_TEST_MAIN_WITHIN(TestInterruptions, QApplication, interruptsEach() ? 3600 : 150)
#include "tst_interruptions.moc"
