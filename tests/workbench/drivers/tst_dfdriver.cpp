#include "driverbench.h"
#include "drivers/simulatednetwork.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"

#include <functional>

using namespace workbench;

namespace {

constexpr int frameMs = 16; // the driver writes one result in that time

const QString hriStatus = QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus");

QStringList itemTexts(const ValueSelection* selection)
{
    QStringList texts;
    for (int i = 0; i < selection->GetItemCount(); ++i)
        texts += selection->GetItem(i)->GetName();
    return texts;
}

/// "key=text" of all items.
QStringList items(const ValueSelection* selection)
{
    QStringList texts;
    for (int i = 0; i < selection->GetItemCount(); ++i)
        texts += QStringLiteral("%1=%2").arg(selection->GetItem(i)->GetKey()).arg(selection->GetItem(i)->GetName());
    return texts;
}

/// Tells what all values of the tree tell, as "name code".
class Log : public IObserver
{
public:
    Log()
    {
        for (values::ValueBase* value : values::Tree::Instance()->ValuesBelow(QString()))
            value->AddObserver(this);
    }
    ~Log() override
    {
        for (values::ValueBase* value : values::Tree::Instance()->ValuesBelow(QString()))
            value->RemoveObserver(this);
    }
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    void Update(Observable* source, TChangeCode code) override
    {
        lines += dynamic_cast<values::ValueBase*>(source)->GetName() + QLatin1Char(' ') + QString::number(code);
    }

    QStringList lines;
};

/// Two stations on the equator whose bearings meet at 1 degree north, 0.5 degrees east, but for the shape of the Earth.
DfResult crossingBearings()
{
    DfResult result = someResult();
    result.stations[0].position = GeoPosition{0.0, 0.0};
    result.stations[0].azimuth = 26.7;
    result.stations[1].position = GeoPosition{0.0, 1.0};
    result.stations[1].azimuth = 333.3;
    return result;
}

values::TValueState averagePositionState()
{
    const auto state = resultValue<DoubleValue>("AveragePositionLongitude")->GetState();
    return resultValue<DoubleValue>("AveragePositionLatitude")->GetState() == state ? state : values::StateRemoved;
}

/// A result that moves everything: a fix, and the selected station 8 is gone.
DfResult movingResult()
{
    DfResult result = crossingBearings();
    result.stations[1].stationId = 9;
    return result;
}

bool running()
{
    return handlerValue<BoolValue>("DFRunning")->GetValue();
}

bool cyclicStarted()
{
    return resultValue<BoolValue>("CyclicLocateStarted")->GetValue();
}

} // namespace

class DfDriverTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { qRegisterMetaType<DfResult>("workbench::DfResult"); }

    void configNumbersHaveTheirRangesStepsDefaultsAndStates_data();
    void configNumbersHaveTheirRangesStepsDefaultsAndStates();
    void configSelectionsHaveTheirItemsAndDefaults_data();
    void configSelectionsHaveTheirItemsAndDefaults();
    void bandwidthsAndAveragingTimesCarryTheirNumbers();
    void overwritingOfThresholdsIsOff();
    void thereAreTwentyCommandsAndNoneIsGiven();
    void aListThatGoesWhileItIsFilledIsLeft();
    void anOperatorsFirstClickCanMeasure();
    void resultValuesAreThereAndEmpty();
    void beforeTheFirstResultNoQualityPasses();
    void stationsOfTheNetworkCanBeSelectedBeforeTheFirstResult();
    void theGlobalFrequencyIsThatOfTheNetwork();
    void anUnknownFrequencyIsZero();
    void deviceListsAreThereWhenTheDeviceIsReady();
    void statusTextsTellTheStations();
    void aStationThatStopsAnsweringIsToldAfterTheResult();
    void settingsTextsAreThereForTheComponent();
    void textsAreShownInTheHandlersTranslation();
    void theDriverDeletesWhatItCreatedAndNothingElse();
    void aValueThatGoesWhileItIsProvidedIsLeft();
    void aReadyFlagOfOthersIsUsedAndLoweredAtTheEnd();
    void aValueOfAnotherKindIsLeftAlone();
    void valuesThatAreThereAreSetUpAnew();

    void command9MeasuresOnce();
    void aCommandGivenAgainMeasuresAgain();
    void whileMeasuringCommand9ChangesNothing();
    void otherCommandsAreLeftToOthers();
    void theDriverNeverSelectsACommand();
    void command10MeasuresUntilCommand11();
    void cyclicCommandsAreIdempotent();
    void command11LeavesASingleMeasurementAlone();
    void command10TakesOverASingleMeasurement();
    void aResultAfterTheStopIsDropped();
    void aFailureEndsEverything();
    void aCommandFromInsideAResultMeasuresAgain();
    void theRequestCarriesTheSettings();
    void thresholdsCountOnlyWhileInUse();
    void theFrequencyOffsetMovesTheMeasurement();

    void oneResultIsWrittenInItsOrder();
    void everyResultIsAnnouncedOnce_data();
    void everyResultIsAnnouncedOnce();
    void resultTextsHaveTheirForms();
    void anAzimuthNear360IsShownAsNorth();
    void whatIsMissingHasNoItem();
    void errorsAreTheirCodes();
    void theSelectedStationStaysSelected();
    void aSelectedStationThatIsGoneGivesWayToTheFirst();
    void selectingAStationWithoutABearingShowsNoOtherStationsBearing();
    void theQualityThresholdIsThatOfTheSettingsWhileInUse();
    void withoutAFixTheAveragePositionIsNotInUse();
    void aFixIsTheAveragePosition();
    void aFixIsWrittenInItsOrder();
    void aFixThatIsLostKeepsItsNumbersOutOfUse();
    void locatingIsAskedForByTypeAndActivity_data();
    void locatingIsAskedForByTypeAndActivity();
    void theTypeWhenTheResultIsThereCounts();
    void aBearingBelowTheThresholdHasNoPartInTheFix();
    void beforeTheFirstResultThereIsNoFix();

    void resultsFasterThanAFrameAreCoalescedToTheLatest();
    void immediateMeasurementsAreAllPublished();
    void aResultInsideAnotherOneWaitsForItsTurn();
    void aResultInsideAnotherOneThatLastsLongerThanAFrameIsNotLost();
    void writingAResultIsAPartOfItsFrame();

    void valuesMayVanishWhileTheDriverRuns();
    void theDriverMayBeDeletedInAnyOfItsNotifications_data();
    void theDriverMayBeDeletedInAnyOfItsNotifications();
    void theDriverMayBeDeletedWhenAResultIsPublished();
    void theDriverMayBeDeletedWhenAMeasurementFails();
    void theDriverMayBeDeletedWhileMeasuring();
    void theDriverMayBeDeletedByItsSourcesAnswer();
};

void DfDriverTest::configNumbersHaveTheirRangesStepsDefaultsAndStates_data()
{
    QTest::addColumn<bool>("isWhole");
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::addColumn<double>("initial");
    QTest::addColumn<int>("state");
    QTest::newRow("Config/DFFrequencyOffset") << false << -2147483647.0 << 2147483647.0 << 0.0 << 0;
    QTest::newRow("Config/DFSpan") << false << 0.0 << 2147483647.0 << 0.0 << 0;
    QTest::newRow("Config/Quality") << true << 1.0 << 100.0 << 1.0 << 2;
    QTest::newRow("Config/Threshold") << true << -40.0 << 200.0 << 0.0 << 2;
}

void DfDriverTest::configNumbersHaveTheirRangesStepsDefaultsAndStates()
{
    const Bench bench;
    QFETCH(bool, isWhole);
    QFETCH(double, min);
    QFETCH(double, max);
    QFETCH(double, initial);
    const auto check = [&](auto* value) {
        QCOMPARE(static_cast<double>(value->GetMin()), min);
        QCOMPARE(static_cast<double>(value->GetMax()), max);
        QCOMPARE(static_cast<double>(value->GetStep()), 1.0);
        QCOMPARE(static_cast<double>(value->GetValue()), initial);
        QTEST(static_cast<int>(value->GetState()), "state");
    };
    if (isWhole)
        check(handlerValue<IntValue>(QTest::currentDataTag()));
    else
        check(handlerValue<DoubleValue>(QTest::currentDataTag()));
}

void DfDriverTest::configSelectionsHaveTheirItemsAndDefaults_data()
{
    QTest::addColumn<QString>("items");
    QTest::addColumn<int>("current");
    const auto row = [](const char* path, const char* items, int current) {
        QTest::newRow(path) << QString::fromLatin1(items) << current;
    };
    row("Config/DFLocateWorkflow", "0=On request,1=Continuous,2=On trigger", 0);
    row("Config/DFLocateType", "0=No locate,1=Online,2=History", 1);
    row("Config/DFLocateActivity", "0=No DF/Locate,1=DF,2=DF and locate", 2);
    row("Config/DFLocateActivityTrigger", "0=Manual,1=Signal,2=Schedule", 0);
    row("Config/Mode", "0=Normal,1=Cont,2=Gate", 0);
    row("Config/Bandwidth",
        "0=120 Hz,1=300 Hz,2=600 Hz,3=1.2 kHz,4=3.0 kHz,5=5.0 kHz,6=7.5 kHz,7=12.0 kHz,8=15.0 kHz,9=30.0 kHz,"
        "10=60.0 kHz,11=100.0 kHz,12=150.0 kHz,13=200.0 kHz",
        7);
    row("Config/AverageTime", "0=Off,1=200m,2=500m,3=1s,4=2s,5=5s,6=10s", 0);
}

void DfDriverTest::configSelectionsHaveTheirItemsAndDefaults()
{
    const Bench bench;
    const auto* selection = handlerValue<ValueSelection>(QTest::currentDataTag());
    QTEST(items(selection).join(QLatin1Char(',')), "items");
    QTEST(selection->GetCurrentKey(), "current");
    QCOMPARE(selection->GetState(), values::StateOrdinary);
}

void DfDriverTest::bandwidthsAndAveragingTimesCarryTheirNumbers()
{
    const Bench bench;
    const auto numbers = [](const ValueSelection* selection) {
        QList<double> list;
        for (int i = 0; i < selection->GetItemCount(); ++i)
            list += selection->GetItem(i)->GetValue();
        return list;
    };
    const QList<double> bandwidths{120,   300,   600,   1200,  3000,   5000,   7500,
                                   12000, 15000, 30000, 60000, 100000, 150000, 200000};
    const QList<double> averagingTimes{0, 200, 500, 1000, 2000, 5000, 10000};
    QCOMPARE(numbers(handlerValue<ValueSelection>("Config/Bandwidth")), bandwidths);
    QCOMPARE(numbers(handlerValue<ValueSelection>("Config/AverageTime")), averagingTimes);
    QCOMPARE(numbers(handlerValue<ValueSelection>("Config/Mode")), (QList<double>{0, 0, 0}));
}

void DfDriverTest::overwritingOfThresholdsIsOff()
{
    const Bench bench;
    QCOMPARE(handlerValue<BoolValue>("Config/OverwriteThreshold")->GetValue(), false);
}

void DfDriverTest::aListThatGoesWhileItIsFilledIsLeft()
{
    const testsupport::FreshTree tree;
    const QString path = handlerRoot + QStringLiteral("Values/Commands");
    auto* const commands = values::CreateOrLink<ValueSelection>(path);
    testsupport::RecordingObserver meddler([&](Observable* source, TChangeCode) {
        source->RemoveObserver(&meddler);
        values::Tree::Instance()->DeleteValue(path);
    });
    commands->AddObserver(&meddler);
    const DfDriver driver(std::make_unique<FakeSource>(), handlerRoot, parameterRoot);
    QVERIFY(!meddler.codes.empty());
    QVERIFY(values::Tree::Instance()->FindValue(path) == nullptr);
}

void DfDriverTest::thereAreTwentyCommandsAndNoneIsGiven()
{
    const Bench bench;
    const auto* commands = handlerValue<ValueSelection>("Values/Commands");
    QCOMPARE(items(commands).join(QLatin1Char(',')),
             QStringLiteral("0=No command,1=Start job,2=Stop job,3=Terminate job,4=Edit job,5=Start scan,6=Stop scan,"
                            "7=To report,8=To database,9=Start single DF,10=Start cyclic DF,11=Stop cyclic DF,"
                            "12=To job,13=Continue Scan,14=Pause Scan,15=Start MScan,16=Show Locate,17=Start new job,"
                            "18=Add to report history,19=Save before report"));
    QCOMPARE(commands->GetCurrentKey(), 0);
}

void DfDriverTest::anOperatorsFirstClickCanMeasure()
{
    const Bench bench;
    QVERIFY(handlerValue<BoolValue>("Enabled")->GetValue());
    QVERIFY(handlerValue<BoolValue>("Values/DFLocateAllowed")->GetValue());
    QVERIFY(!running());
    QVERIFY(!cyclicStarted());
    QVERIFY(!handlerValue<BoolValue>("Values/Status/LocateHRIRunning")->GetValue());
    QVERIFY(!bench.driver->isRunning());
    QVERIFY(!bench.driver->isCyclic());
}

void DfDriverTest::resultValuesAreThereAndEmpty()
{
    const Bench bench;
    for (const char* name : {"Azimuth", "Quality", "Level", "Errors", "DFLatitude", "DFLongitude"})
        QCOMPARE(resultValue<ValueSelection>(name)->GetItemCount(), 0);
    QCOMPARE(resultValue<StringValue>("Frequency")->GetValue(), QString());
    QCOMPARE(resultValue<StringValue>("ResultTime")->GetValue(), QString());
    QCOMPARE(resultValue<DoubleValue>("AveragePositionLongitude")->GetState(), values::StateUnused);
    QCOMPARE(resultValue<DoubleValue>("AveragePositionLatitude")->GetState(), values::StateUnused);
}

void DfDriverTest::beforeTheFirstResultNoQualityPasses()
{
    const Bench bench;
    QCOMPARE(resultValue<IntValue>("QualityThreshold")->GetValue(), 1);
}

void DfDriverTest::stationsOfTheNetworkCanBeSelectedBeforeTheFirstResult()
{
    const Bench bench;
    const auto* selected = resultValue<ValueSelection>("SelectedDF");
    QCOMPARE(items(selected), (QStringList{QStringLiteral("3=North"), QStringLiteral("8=South")}));
    QCOMPARE(selected->GetCurrentKey(), 3);
}

void DfDriverTest::theGlobalFrequencyIsThatOfTheNetwork()
{
    const Bench bench;
    auto* frequency = find<DoubleValue>(globalRoot + QStringLiteral("Frequency"));
    QCOMPARE(frequency->GetValue(), 123456789.0);
    QVERIFY(!frequency->SetValue(-1.0, nullptr));
}

void DfDriverTest::anUnknownFrequencyIsZero()
{
    auto fake = std::make_unique<FakeSource>();
    fake->m_frequency.reset();
    const Bench bench(std::move(fake));
    QCOMPARE(find<DoubleValue>(globalRoot + QStringLiteral("Frequency"))->GetValue(), 0.0);
}

void DfDriverTest::deviceListsAreThereWhenTheDeviceIsReady()
{
    const testsupport::FreshTree tree;
    auto* ready = tree.add<BoolValue>(globalRoot + QStringLiteral("DfDeviceReady"));
    QStringList seen;
    testsupport::RecordingObserver observer([&](Observable*, TChangeCode code) {
        if (code != ChangeContent || !ready->GetValue())
            return;
        for (const char* name : {"DeviceDfBandwidth", "DeviceDfAveraging", "DeviceDfMode"}) {
            const auto* list = find<ValueSelection>(globalRoot + QLatin1String(name));
            seen += QStringLiteral("%1 of %2").arg(list->GetStringValue()).arg(list->GetItemCount());
        }
    });
    ready->AddObserver(&observer);
    const DfDriver driver(std::make_unique<FakeSource>(), handlerRoot, parameterRoot);
    ready->RemoveObserver(&observer);
    QCOMPARE(seen, (QStringList{QStringLiteral("12.0 kHz of 14"), QStringLiteral("Off of 7"),
                                QStringLiteral("NORMAL of 3")}));
}

void DfDriverTest::statusTextsTellTheStations()
{
    const Bench bench;
    QCOMPARE(handlerValue<StringValue>("Values/Status/LocateStatus")->GetValue(),
             QStringLiteral("DFID3#N_North#ST1#DFID8#N_South#ST1"));
    QCOMPARE(find<StringValue>(hriStatus)->GetValue(), QStringLiteral("DFID20#N_Far#ST1"));
}

void DfDriverTest::aStationThatStopsAnsweringIsToldAfterTheResult()
{
    Bench bench;
    Log unchanged;
    bench.measure();
    QVERIFY(!unchanged.lines.join(QLatin1Char(',')).contains(QStringLiteral("Status")));
    bench.source->m_stations[0].available = false;
    bench.measure();
    QCOMPARE(handlerValue<StringValue>("Values/Status/LocateStatus")->GetValue(),
             QStringLiteral("DFID3#N_North#ST0#DFID8#N_South#ST1"));
}

void DfDriverTest::settingsTextsAreThereForTheComponent()
{
    const Bench bench;
    QCOMPARE(find<StringValue>(parameterRoot + QStringLiteral("DF_Settings"))->GetValue(), QString());
    QCOMPARE(find<StringValue>(parameterRoot + QStringLiteral("DFLOCATE/ToDriver"))->GetValue(), QString());
}

void DfDriverTest::textsAreShownInTheHandlersTranslation()
{
    const Bench bench;
    QCOMPARE(handlerValue<ValueSelection>("Config/Mode")->GetTranslationNamespace(), QStringLiteral("DFLocateHandler"));
}

void DfDriverTest::theDriverDeletesWhatItCreatedAndNothingElse()
{
    const testsupport::FreshTree tree;
    tree.add<StringValue>(QStringLiteral("/GLOBAL/Other"));
    tree.add<BoolValue>(handlerRoot + QStringLiteral("Enabled"));
    auto driver = std::make_unique<DfDriver>(std::make_unique<FakeSource>(), handlerRoot, parameterRoot);
    QVERIFY(values::Tree::Instance()->ValuesBelow(QString()).size() > 30);
    driver.reset();
    QStringList left;
    for (const values::ValueBase* value : values::Tree::Instance()->ValuesBelow(QString()))
        left += value->GetPathName();
    QCOMPARE(left, (QStringList{QStringLiteral("/GLOBAL/Other"), handlerRoot + QStringLiteral("Enabled")}));
}

void DfDriverTest::aValueThatGoesWhileItIsProvidedIsLeft()
{
    for (const QString& path :
         {handlerRoot + QLatin1String("Values/Result/SelectedDF"), handlerRoot + QLatin1String("Values/Result/Azimuth"),
          handlerRoot + QLatin1String("Config/Quality"), QStringLiteral("/GLOBAL/Frequency")}) {
        const testsupport::FreshTree tree;
        values::ValueBase* value = nullptr;
        if (path.endsWith(QLatin1String("Quality"))) {
            value = tree.add<IntValue>(path);
        } else if (path.endsWith(QLatin1String("Frequency"))) {
            value = tree.add<DoubleValue>(path);
        } else {
            auto* const selection = tree.add<ValueSelection>(path);
            selection->AddItem(QStringLiteral("of before"), 1.0, 1);
            value = selection;
        }
        testsupport::RecordingObserver deleting(
            [&](Observable*, TChangeCode) { values::Tree::Instance()->DeleteValue(path); });
        value->AddObserver(&deleting);
        const DfDriver driver(std::make_unique<FakeSource>(), handlerRoot, parameterRoot);
        QVERIFY(!deleting.codes.empty());
        QVERIFY(values::Tree::Instance()->FindValue(path) == nullptr);
    }
}

void DfDriverTest::aReadyFlagOfOthersIsUsedAndLoweredAtTheEnd()
{
    const testsupport::FreshTree tree;
    auto* ready = tree.add<BoolValue>(globalRoot + QStringLiteral("DfDeviceReady"));
    auto driver = std::make_unique<DfDriver>(std::make_unique<FakeSource>(), handlerRoot, parameterRoot);
    QVERIFY(ready->GetValue());
    driver.reset();
    QCOMPARE(find<BoolValue>(globalRoot + QStringLiteral("DfDeviceReady")), ready);
    QVERIFY(!ready->GetValue());
}

void DfDriverTest::aValueOfAnotherKindIsLeftAlone()
{
    // Every value of the driver in turn is of another kind; all others work.
    QStringList paths;
    {
        const Bench bench;
        for (const values::ValueBase* value : values::Tree::Instance()->ValuesBelow(QString()))
            paths += value->GetPathName();
    }
    class OtherKind : public values::ValueBase
    {
    public:
        [[nodiscard]] values::TValueType GetType() const override { return values::TypeString; }
        [[nodiscard]] QString GetTypeName() const override { return QStringLiteral("other"); }
        [[nodiscard]] QString GetStringValue() const override { return {}; }
        bool SetStringValue(const QString&, IObserver*) override { return false; }
        bool Assign(const ValueBase&, IObserver*) override { return false; }
        [[nodiscard]] bool Compare(const ValueBase&) const override { return false; }

    protected:
        [[nodiscard]] QString GetRecordingText() const override { return {}; }
    };
    for (const QString& path : qAsConst(paths)) {
        const testsupport::FreshTree tree;
        auto* other = tree.add<OtherKind>(path);
        {
            auto fake = std::make_unique<FakeSource>();
            FakeSource* source = fake.get();
            const DfDriver driver(std::move(fake), handlerRoot, parameterRoot);
            if (!path.endsWith(QStringLiteral("Commands"))) {
                handlerValue<ValueSelection>("Values/Commands")->Select(10);
                QCOMPARE(source->requests.size(), std::size_t(1));
                emit source->measured(someResult());
                handlerValue<ValueSelection>("Values/Commands")->Select(11);
                QVERIFY(!driver.isRunning());
            }
        }
        QCOMPARE(values::Tree::Instance()->FindValue(path), other);
    }
}

void DfDriverTest::valuesThatAreThereAreSetUpAnew()
{
    const testsupport::FreshTree tree;
    auto* mode = tree.add<ValueSelection>(handlerRoot + QStringLiteral("Config/Mode"));
    mode->AddItem(QStringLiteral("Old"), 0.0, 77);
    const DfDriver driver(std::make_unique<FakeSource>(), handlerRoot, parameterRoot);
    QCOMPARE(itemTexts(mode), (QStringList{QStringLiteral("Normal"), QStringLiteral("Cont"), QStringLiteral("Gate")}));
    QCOMPARE(mode->GetStringValue(), QStringLiteral("Normal"));
}

void DfDriverTest::command9MeasuresOnce()
{
    Bench bench;
    QSignalSpy published(bench.driver.get(), &DfDriver::resultPublished);
    bench.command(9);
    QCOMPARE(bench.source->requests.size(), std::size_t(1));
    QVERIFY(running());
    QVERIFY(bench.driver->isRunning());
    QVERIFY(!bench.driver->isCyclic());
    bench.answer();
    QCOMPARE(published.count(), 1);
    QCOMPARE(published[0][0].value<DfResult>().time, someResult().time);
    QVERIFY(!running());
    QVERIFY(!bench.driver->isRunning());
    QCOMPARE(bench.source->requests.size(), std::size_t(1));
}

void DfDriverTest::aCommandGivenAgainMeasuresAgain()
{
    Bench bench;
    bench.measure();
    QCOMPARE(handlerValue<ValueSelection>("Values/Commands")->GetCurrentKey(), 9);
    bench.measure();
    QCOMPARE(bench.source->requests.size(), std::size_t(2));
    // A set that changes nothing is no command.
    handlerValue<ValueSelection>("Values/Commands")->Select(9);
    QCOMPARE(bench.source->requests.size(), std::size_t(2));
}

void DfDriverTest::whileMeasuringCommand9ChangesNothing()
{
    Bench bench;
    bench.command(9);
    const Log log;
    bench.command(9);
    QCOMPARE(bench.source->requests.size(), std::size_t(1));
    QCOMPARE(log.lines, QStringList{QStringLiteral("Commands 3")});
}

void DfDriverTest::otherCommandsAreLeftToOthers()
{
    Bench bench;
    for (int key = 0; key < 20; ++key) {
        if (key >= 9 && key <= 11)
            continue;
        bench.command(key);
        QVERIFY(!bench.driver->isRunning());
    }
    handlerValue<ValueSelection>("Values/Commands")->HasChanged(ChangeState, nullptr);
    handlerValue<ValueSelection>("Values/Commands")->HasChanged(ChangeItems, nullptr);
    QVERIFY(bench.source->requests.empty());
}

void DfDriverTest::theDriverNeverSelectsACommand()
{
    Bench bench;
    for (const int key : {9, 10, 11}) {
        bench.command(key);
        bench.answer();
        QCOMPARE(handlerValue<ValueSelection>("Values/Commands")->GetCurrentKey(), key);
    }
}

void DfDriverTest::command10MeasuresUntilCommand11()
{
    Bench bench;
    QSignalSpy published(bench.driver.get(), &DfDriver::resultPublished);
    bench.command(10);
    QVERIFY(running());
    QVERIFY(cyclicStarted());
    QVERIFY(bench.driver->isCyclic());
    for (int i = 1; i <= 3; ++i) {
        QCOMPARE(bench.source->requests.size(), static_cast<std::size_t>(i));
        bench.answer();
        QTRY_COMPARE(published.count(), i);
        QVERIFY(running());
        QVERIFY(cyclicStarted());
    }
    QCOMPARE(bench.source->requests.size(), std::size_t(4));
    bench.command(11);
    QVERIFY(!running());
    QVERIFY(!cyclicStarted());
    QVERIFY(!bench.driver->isRunning());
    QCOMPARE(bench.source->cancelled, 1);
}

void DfDriverTest::cyclicCommandsAreIdempotent()
{
    Bench bench;
    bench.command(10);
    const Log log;
    bench.command(10);
    bench.command(9);
    QCOMPARE(bench.source->requests.size(), std::size_t(1));
    bench.command(11);
    bench.command(11);
    QCOMPARE(bench.source->cancelled, 1);
    QCOMPARE(log.lines.filter(QStringLiteral("CyclicLocateStarted 3")).size(), 1);
    QCOMPARE(log.lines.filter(QStringLiteral("DFRunning 3")).size(), 1);
}

void DfDriverTest::command11LeavesASingleMeasurementAlone()
{
    Bench bench;
    QSignalSpy published(bench.driver.get(), &DfDriver::resultPublished);
    bench.command(9);
    bench.command(11);
    QVERIFY(running());
    QCOMPARE(bench.source->cancelled, 0);
    bench.answer();
    QCOMPARE(published.count(), 1);
}

void DfDriverTest::command10TakesOverASingleMeasurement()
{
    Bench bench;
    bench.command(9);
    bench.command(10);
    QCOMPARE(bench.source->requests.size(), std::size_t(1));
    QVERIFY(cyclicStarted());
    bench.answer();
    QCOMPARE(bench.source->requests.size(), std::size_t(2));
}

void DfDriverTest::aResultAfterTheStopIsDropped()
{
    Bench bench;
    bench.command(10);
    bench.command(11);
    bench.answer();
    QCOMPARE(resultValue<StringValue>("ResultTime")->GetValue(), QString());

    // Also one that waits for the next frame.
    QSignalSpy published(bench.driver.get(), &DfDriver::resultPublished);
    bench.command(10);
    bench.answer(someResult(1));
    QCOMPARE(published.count(), 1);
    bench.answer(someResult(2));
    bench.command(11);
    bench.measure(someResult(3));
    QCOMPARE(published.count(), 2);
    QVERIFY(resultValue<StringValue>("ResultTime")->GetValue().endsWith(QStringLiteral(":03")));
}

void DfDriverTest::aFailureEndsEverything()
{
    Bench bench;
    QSignalSpy failed(bench.driver.get(), &DfDriver::measurementFailed);
    bench.command(10);
    emit bench.source->failed(QStringLiteral("The well is dry."));
    QCOMPARE(failed.count(), 1);
    QCOMPARE(failed[0][0].toString(), QStringLiteral("The well is dry."));
    QVERIFY(!running());
    QVERIFY(!cyclicStarted());
    QVERIFY(!bench.driver->isRunning());
    emit bench.source->failed(QStringLiteral("Nobody asked."));
    QCOMPARE(failed.count(), 1);
    bench.command(10);
    QCOMPARE(bench.source->requests.size(), std::size_t(2));
}

void DfDriverTest::aCommandFromInsideAResultMeasuresAgain()
{
    Bench bench;
    int commands = 0;
    testsupport::RecordingObserver observer([&](Observable*, TChangeCode code) {
        if (code == ChangeContent && commands++ == 0)
            bench.command(9);
    });
    resultValue<StringValue>("ResultTime")->AddObserver(&observer);
    bench.command(9);
    bench.answer();
    QCOMPARE(bench.source->requests.size(), std::size_t(2));
    QVERIFY(running());
    QVERIFY(bench.driver->isRunning());
    resultValue<StringValue>("ResultTime")->RemoveObserver(&observer);
}

void DfDriverTest::theRequestCarriesTheSettings()
{
    Bench bench;
    bench.command(9);
    QCOMPARE(bench.source->requests[0].frequency, 123456789.0);
    QCOMPARE(bench.source->requests[0].bandwidth, 12000.0);
    QCOMPARE(bench.source->requests[0].averaging, 0.0);
    QCOMPARE(bench.source->requests[0].mode, DfMode::Normal);
    QVERIFY(!bench.source->requests[0].levelThreshold);
    bench.answer();

    find<DoubleValue>(globalRoot + QStringLiteral("Frequency"))->SetValue(50e6, nullptr);
    handlerValue<ValueSelection>("Config/Bandwidth")->Select(13);
    handlerValue<ValueSelection>("Config/AverageTime")->Select(4);
    handlerValue<ValueSelection>("Config/Mode")->Select(2);
    bench.command(9);
    QCOMPARE(bench.source->requests[1].frequency, 50e6);
    QCOMPARE(bench.source->requests[1].bandwidth, 200000.0);
    QCOMPARE(bench.source->requests[1].averaging, 2000.0);
    QCOMPARE(bench.source->requests[1].mode, DfMode::Gated);
}

void DfDriverTest::thresholdsCountOnlyWhileInUse()
{
    Bench bench;
    auto* threshold = handlerValue<IntValue>("Config/Threshold");
    threshold->SetValue(17, nullptr);
    bench.command(9);
    QVERIFY(!bench.source->requests[0].levelThreshold);
    bench.answer();
    threshold->SetState(values::StateOrdinary, nullptr);
    bench.command(9);
    QCOMPARE(bench.source->requests[1].levelThreshold, std::optional<int>(17));
}

void DfDriverTest::theFrequencyOffsetMovesTheMeasurement()
{
    Bench bench;
    handlerValue<DoubleValue>("Config/DFFrequencyOffset")->SetValue(-5000.0, nullptr);
    bench.command(9);
    QCOMPARE(bench.source->requests[0].frequency, 123456789.0 - 5000.0);
    bench.answer();
    // An unknown frequency stays unknown.
    find<DoubleValue>(globalRoot + QStringLiteral("Frequency"))->SetValue(0.0, nullptr);
    handlerValue<DoubleValue>("Config/DFFrequencyOffset")->SetValue(5000.0, nullptr);
    bench.command(9);
    QCOMPARE(bench.source->requests[1].frequency, 0.0);
}

void DfDriverTest::oneResultIsWrittenInItsOrder()
{
    Bench bench;
    // As if a fix had been there, so that its end is seen.
    resultValue<DoubleValue>("AveragePositionLongitude")->SetState(values::StateOrdinary, nullptr);
    resultValue<DoubleValue>("AveragePositionLatitude")->SetState(values::StateOrdinary, nullptr);
    const Log log;
    bench.measure();
    // The driver is told of the command before this log, which came later: what it does at once stands first.
    const QString expected = QStringLiteral("DFRunning 3,DFRunning 19,Commands 3,Commands 19,"
                                            "Frequency 3,Frequency 19,"
                                            "QualityThreshold 3,QualityThreshold 19,"
                                            "AveragePositionLongitude 2,AveragePositionLatitude 2,"
                                            "DFLatitude 7,DFLongitude 7,"
                                            "Level 7,SelectedDF 7,Azimuth 7,Errors 7,"
                                            "Quality 7,Quality 3,"
                                            "ResultTime 3,ResultTime 19,"
                                            "Errors 3,"
                                            "DFRunning 3,DFRunning 19");
    QCOMPARE(log.lines.join(QLatin1Char(',')), expected);
}

void DfDriverTest::everyResultIsAnnouncedOnce_data()
{
    QTest::addColumn<DfResult>("first");
    QTest::addColumn<DfResult>("second");
    DfResult dateless = someResult();
    dateless.date = QDate();
    DfResult timeless = someResult();
    timeless.time = QTime();
    QTest::newRow("in two seconds") << someResult(1) << someResult(2);
    QTest::newRow("in one second") << someResult(1) << someResult(1);
    QTest::newRow("at an unknown time") << timeless << timeless;
    QTest::newRow("on an unknown date") << dateless << dateless;
    QTest::newRow("from known to unknown") << someResult() << timeless;
}

void DfDriverTest::everyResultIsAnnouncedOnce()
{
    Bench bench;
    QFETCH(DfResult, first);
    QFETCH(DfResult, second);
    for (const DfResult& result : {first, second}) {
        const Log log;
        bench.measure(result);
        QCOMPARE(log.lines.filter(QStringLiteral("ResultTime 3")).size(), 1);
        QCOMPARE(log.lines.filter(QStringLiteral("ResultTime 19")).size(), 1);
        QCOMPARE(log.lines.filter(QStringLiteral("Quality 3")).size(), 1);
        QCOMPARE(log.lines.filter(QStringLiteral("Errors 3")).size(), 1);
    }
}

void DfDriverTest::resultTextsHaveTheirForms()
{
    Bench bench;
    bench.measure();
    QCOMPARE(resultValue<StringValue>("Frequency")->GetValue(), QStringLiteral("3000000000"));
    QCOMPARE(resultValue<StringValue>("ResultTime")->GetValue(), QStringLiteral("2026-05-14 10:11:00"));
    QCOMPARE(items(resultValue<ValueSelection>("SelectedDF")),
             (QStringList{QStringLiteral("3=North"), QStringLiteral("8=South")}));
    QCOMPARE(items(resultValue<ValueSelection>("Azimuth")),
             (QStringList{QStringLiteral("3=278.4"), QStringLiteral("8=12.0")}));
    QCOMPARE(items(resultValue<ValueSelection>("Quality")),
             (QStringList{QStringLiteral("3=87"), QStringLiteral("8=40")}));
    QCOMPARE(items(resultValue<ValueSelection>("Level")),
             (QStringList{QStringLiteral("3=33.3"), QStringLiteral("8=-5.0")}));
    QCOMPARE(items(resultValue<ValueSelection>("Errors")), (QStringList{QStringLiteral("3="), QStringLiteral("8=")}));
    QCOMPARE(items(resultValue<ValueSelection>("DFLatitude")),
             (QStringList{QStringLiteral("3=50.123457"), QStringLiteral("8=50.123457")}));
    QCOMPARE(items(resultValue<ValueSelection>("DFLongitude")),
             (QStringList{QStringLiteral("3=-10.500000"), QStringLiteral("8=-10.500000")}));
    QCOMPARE(resultValue<ValueSelection>("Azimuth")->GetItem(0)->GetValue(), 278.44);
}

void DfDriverTest::anAzimuthNear360IsShownAsNorth()
{
    Bench bench;
    DfResult result = someResult();
    result.stations[0].azimuth = 359.96;
    result.stations[1].azimuth = 359.94;
    bench.measure(result);
    QCOMPARE(itemTexts(resultValue<ValueSelection>("Azimuth")),
             (QStringList{QStringLiteral("0.0"), QStringLiteral("359.9")}));
}

void DfDriverTest::whatIsMissingHasNoItem()
{
    Bench bench;
    bench.measure();
    DfResult result = someResult();
    result.frequency.reset();
    result.time = QTime();
    result.stations[0].azimuth.reset();
    result.stations[0].quality.reset();
    result.stations[0].level.reset();
    result.stations[0].position.reset();
    bench.measure(result);
    QCOMPARE(resultValue<StringValue>("Frequency")->GetValue(), QString());
    QCOMPARE(resultValue<StringValue>("ResultTime")->GetValue(), QString());
    for (const char* name : {"Azimuth", "Quality", "Level", "DFLatitude", "DFLongitude"}) {
        const auto* selection = resultValue<ValueSelection>(name);
        QCOMPARE(selection->GetItemCount(), 1);
        QCOMPARE(selection->GetItem(0)->GetKey(), 8);
        QCOMPARE(selection->GetCurrentKey(), ValueSelection::NoKey + 0); // not the other station's
    }
    QCOMPARE(resultValue<ValueSelection>("SelectedDF")->GetItemCount(), 2);
    QCOMPARE(resultValue<ValueSelection>("Errors")->GetItemCount(), 2);
}

void DfDriverTest::errorsAreTheirCodes()
{
    Bench bench;
    for (const auto& [error, text] :
         {std::pair{DfError::None, ""}, std::pair{DfError::NotInScanRange, "-1"},
          std::pair{DfError::ScanRangeUndefined, "-2"}, std::pair{DfError::NotInTimeRange, "-3"},
          std::pair{DfError::Timeout, "-14"}, std::pair{DfError::NoSignal, "-17"}}) {
        DfResult result = someResult();
        result.stations[1].error = error;
        bench.measure(result);
        QCOMPARE(resultValue<ValueSelection>("Errors")->GetItemNameForKey(8), QString::fromLatin1(text));
    }
}

void DfDriverTest::theSelectedStationStaysSelected()
{
    Bench bench;
    resultValue<ValueSelection>("SelectedDF")->Select(8);
    DfResult result = someResult();
    std::swap(result.stations[0], result.stations[1]);
    result.stations.insert(result.stations.begin(), stationResult(1, QStringLiteral("New"), 1.0, 1.0, 1.0));
    for (const DfResult& next : {someResult(), result}) {
        bench.measure(next);
        for (const char* name : {"SelectedDF", "Azimuth", "Quality", "Level", "Errors", "DFLatitude", "DFLongitude"})
            QCOMPARE(resultValue<ValueSelection>(name)->GetCurrentKey(), 8);
        QCOMPARE(resultValue<ValueSelection>("Azimuth")->GetStringValue(), QStringLiteral("12.0"));
    }
}

void DfDriverTest::aSelectedStationThatIsGoneGivesWayToTheFirst()
{
    Bench bench;
    bench.measure();
    resultValue<ValueSelection>("SelectedDF")->Select(8);
    DfResult result = someResult();
    result.stations.pop_back();
    const Log log;
    bench.measure(result);
    QCOMPARE(resultValue<ValueSelection>("SelectedDF")->GetCurrentKey(), 3);
    QCOMPARE(resultValue<ValueSelection>("Azimuth")->GetCurrentKey(), 3);
    const int items = log.lines.indexOf(QStringLiteral("SelectedDF 7"));
    QVERIFY(items >= 0);
    QCOMPARE(log.lines.at(items + 1), QStringLiteral("SelectedDF 3"));
}

void DfDriverTest::selectingAStationWithoutABearingShowsNoOtherStationsBearing()
{
    Bench bench;
    DfResult result = someResult();
    result.stations[1].azimuth.reset();
    result.stations[1].quality.reset();
    result.stations[1].error = DfError::Timeout;
    bench.measure(result);
    QCOMPARE(resultValue<ValueSelection>("Azimuth")->GetStringValue(), QStringLiteral("278.4"));
    resultValue<ValueSelection>("SelectedDF")->Select(8);
    QCOMPARE(resultValue<ValueSelection>("Azimuth")->GetStringValue(), QString());
    QCOMPARE(resultValue<ValueSelection>("Quality")->GetStringValue(), QString());
    QCOMPARE(resultValue<ValueSelection>("Azimuth")->GetItemCount(), 1);
    resultValue<ValueSelection>("SelectedDF")->Select(3);
    QVERIFY(resultValue<ValueSelection>("Azimuth")->Select(3));
}

void DfDriverTest::theQualityThresholdIsThatOfTheSettingsWhileInUse()
{
    Bench bench;
    auto* quality = handlerValue<IntValue>("Config/Quality");
    quality->SetValue(55, nullptr);
    bench.measure();
    QCOMPARE(resultValue<IntValue>("QualityThreshold")->GetValue(), 0);
    quality->SetState(values::StateOrdinary, nullptr);
    bench.measure();
    QCOMPARE(resultValue<IntValue>("QualityThreshold")->GetValue(), 55);
}

void DfDriverTest::withoutAFixTheAveragePositionIsNotInUse()
{
    Bench bench;
    resultValue<DoubleValue>("AveragePositionLongitude")->SetState(values::StateOrdinary, nullptr);
    resultValue<DoubleValue>("AveragePositionLatitude")->SetState(values::StateOrdinary, nullptr);
    bench.measure();
    QCOMPARE(resultValue<DoubleValue>("AveragePositionLongitude")->GetState(), values::StateUnused);
    QCOMPARE(resultValue<DoubleValue>("AveragePositionLatitude")->GetState(), values::StateUnused);
}

void DfDriverTest::aFixIsTheAveragePosition()
{
    Bench bench;
    bench.measure(crossingBearings());
    QCOMPARE(averagePositionState(), values::StateOrdinary);
    const auto& published = bench.driver->publishedFix();
    QVERIFY(published);
    const auto* const fix = std::get_if<Fix>(&*published);
    QVERIFY(fix != nullptr);
    QCOMPARE(resultValue<DoubleValue>("AveragePositionLongitude")->GetValue(), fix->position.longitude);
    QCOMPARE(resultValue<DoubleValue>("AveragePositionLatitude")->GetValue(), fix->position.latitude);
    QVERIFY(std::abs(fix->position.longitude - 0.5) < 1e-6);
    QVERIFY(std::abs(fix->position.latitude - 1.0) < 0.01);
}

void DfDriverTest::aFixIsWrittenInItsOrder()
{
    Bench bench;
    const Log log;
    bench.measure(crossingBearings());
    const int first = log.lines.indexOf(QStringLiteral("QualityThreshold 19")) + 1;
    // Who is told that a coordinate is in use finds it there.
    QCOMPARE(log.lines.mid(first, 7).join(QLatin1Char(',')),
             QStringLiteral("AveragePositionLongitude 3,AveragePositionLongitude 19,AveragePositionLongitude 2,"
                            "AveragePositionLatitude 3,AveragePositionLatitude 19,AveragePositionLatitude 2,"
                            "DFLatitude 7"));
}

void DfDriverTest::aFixThatIsLostKeepsItsNumbersOutOfUse()
{
    Bench bench;
    bench.measure(crossingBearings());
    const double latitude = resultValue<DoubleValue>("AveragePositionLatitude")->GetValue();
    DfResult parallel = crossingBearings();
    parallel.stations[1].azimuth = 26.7;
    bench.measure(parallel);
    QCOMPARE(averagePositionState(), values::StateUnused);
    QCOMPARE(resultValue<DoubleValue>("AveragePositionLatitude")->GetValue(), latitude);
    QCOMPARE(std::get<QString>(*bench.driver->publishedFix()), explanation(NoFix::ParallelLines));
    bench.measure(crossingBearings());
    QCOMPARE(averagePositionState(), values::StateOrdinary);
}

void DfDriverTest::locatingIsAskedForByTypeAndActivity_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("activity");
    QTest::addColumn<QString>("reason");
    const QString wrongType = QStringLiteral("No fix: the locate type is neither \"Online\" nor \"History\".");
    const QString wrongActivity = QStringLiteral("No fix: the activity is not \"DF and locate\".");
    QTest::newRow("online, DF and locate") << 1 << 2 << QString();
    QTest::newRow("no locate") << 0 << 2 << wrongType;
    QTest::newRow("history without one") << 2 << 2 << QStringLiteral("No fix: there are no stored results.");
    QTest::newRow("history, DF") << 2 << 1 << wrongActivity;
    QTest::newRow("online, no activity") << 1 << 0 << wrongActivity;
    QTest::newRow("online, DF") << 1 << 1 << wrongActivity;
    QTest::newRow("no locate, DF") << 0 << 1 << wrongType;
}

void DfDriverTest::locatingIsAskedForByTypeAndActivity()
{
    QFETCH(int, type);
    QFETCH(int, activity);
    QFETCH(QString, reason);
    Bench bench;
    bench.measure(crossingBearings());
    handlerValue<ValueSelection>("Config/DFLocateType")->Select(type);
    handlerValue<ValueSelection>("Config/DFLocateActivity")->Select(activity);
    bench.measure(crossingBearings());
    QCOMPARE(averagePositionState(), reason.isEmpty() ? values::StateOrdinary : values::StateUnused);
    const auto* const published = std::get_if<QString>(&*bench.driver->publishedFix());
    QCOMPARE(published != nullptr ? *published : QString(), reason);
}

void DfDriverTest::theTypeWhenTheResultIsThereCounts()
{
    Bench bench;
    bench.command(9);
    handlerValue<ValueSelection>("Config/DFLocateType")->Select(0);
    bench.answer(crossingBearings());
    QCOMPARE(averagePositionState(), values::StateUnused);
}

void DfDriverTest::aBearingBelowTheThresholdHasNoPartInTheFix()
{
    Bench bench;
    auto* quality = handlerValue<IntValue>("Config/Quality");
    quality->SetValue(41, nullptr); // the second station has 40
    bench.measure(crossingBearings());
    QCOMPARE(averagePositionState(), values::StateOrdinary);
    quality->SetState(values::StateOrdinary, nullptr);
    bench.measure(crossingBearings());
    QCOMPARE(averagePositionState(), values::StateUnused);
    QCOMPARE(std::get<QString>(*bench.driver->publishedFix()), explanation(NoFix::TooFewBearings));
    quality->SetValue(40, nullptr);
    bench.measure(crossingBearings());
    QCOMPARE(averagePositionState(), values::StateOrdinary);
}

void DfDriverTest::beforeTheFirstResultThereIsNoFix()
{
    const Bench bench;
    QVERIFY(!bench.driver->publishedFix());
}

void DfDriverTest::resultsFasterThanAFrameAreCoalescedToTheLatest()
{
    Bench bench;
    QSignalSpy published(bench.driver.get(), &DfDriver::resultPublished);
    bench.command(10);
    bench.answer(someResult(1));
    QCOMPARE(published.count(), 1); // the first one at once
    bench.answer(someResult(2));
    bench.answer(someResult(3));
    bench.answer(someResult(4));
    QCOMPARE(published.count(), 1);
    QCOMPARE(bench.source->requests.size(), std::size_t(2)); // the next one when the last is written
    QTRY_COMPARE(published.count(), 2);
    QCOMPARE(published[1][0].value<DfResult>().time.second(), 4);
    QCOMPARE(bench.source->requests.size(), std::size_t(3));
}

void DfDriverTest::immediateMeasurementsAreAllPublished()
{
    const testsupport::FreshTree tree;
    Scenario scenario;
    scenario.start = QDateTime(QDate(2026, 5, 14), QTime(0, 0), Qt::UTC);
    scenario.stations.resize(1);
    scenario.stations[0].info.id = 1;
    scenario.stations[0].info.position = GeoPosition{};
    DfDriver driver(std::make_unique<SimulatedNetwork>(scenario, 1, Pacing::Immediate), handlerRoot, parameterRoot);
    QSignalSpy published(&driver, &DfDriver::resultPublished);
    handlerValue<ValueSelection>("Values/Commands")->Select(10);
    QTRY_VERIFY(published.count() >= 20);
    // Each is a quarter of a second after the one before: none is missing.
    for (int i = 0; i < published.count(); ++i)
        QCOMPARE(published[i][0].value<DfResult>().time.msecsSinceStartOfDay(), 250 * (i + 1));
}

void DfDriverTest::aResultInsideAnotherOneWaitsForItsTurn()
{
    Bench bench;
    QStringList times;
    bool isNested = false;
    testsupport::RecordingObserver observer([&](Observable*, TChangeCode code) {
        if (code != ChangeContent || isNested)
            return;
        isNested = true;
        bench.command(9);
        bench.answer(someResult(2)); // as an event loop in a message box would deliver it
        times += resultValue<StringValue>("ResultTime")->GetValue().right(2);
    });
    QSignalSpy published(bench.driver.get(), &DfDriver::resultPublished);
    resultValue<ValueSelection>("Quality")->AddObserver(&observer);
    bench.command(9);
    bench.answer(someResult(1));
    QCOMPARE(times, QStringList{QString()});
    QCOMPARE(published.count(), 1);
    QVERIFY(resultValue<StringValue>("ResultTime")->GetValue().endsWith(QStringLiteral(":01")));
    QTRY_COMPARE(published.count(), 2);
    QVERIFY(resultValue<StringValue>("ResultTime")->GetValue().endsWith(QStringLiteral(":02")));
    QVERIFY(!bench.driver->isRunning());
    resultValue<ValueSelection>("Quality")->RemoveObserver(&observer);
}

void DfDriverTest::aResultInsideAnotherOneThatLastsLongerThanAFrameIsNotLost()
{
    Bench bench;
    bool isNested = false;
    testsupport::RecordingObserver observer([&](Observable*, TChangeCode code) {
        if (code != ChangeContent || isNested)
            return;
        isNested = true;
        bench.command(9);
        bench.answer(someResult(2));
        QEventLoop box; // the frame has begun earlier, and ends in here
        QTimer::singleShot(2 * frameMs, &box, &QEventLoop::quit);
        box.exec();
    });
    QSignalSpy published(bench.driver.get(), &DfDriver::resultPublished);
    resultValue<ValueSelection>("Quality")->AddObserver(&observer);
    bench.command(9);
    bench.answer(someResult(1));
    QCOMPARE(published.count(), 1);
    QTRY_COMPARE(published.count(), 2);
    QVERIFY(resultValue<StringValue>("ResultTime")->GetValue().endsWith(QStringLiteral(":02")));
    resultValue<ValueSelection>("Quality")->RemoveObserver(&observer);
}

void DfDriverTest::writingAResultIsAPartOfItsFrame()
{
    Bench bench;
    testsupport::RecordingObserver observer([&](Observable*, TChangeCode code) {
        if (code == ChangeContent)
            QThread::msleep(2 * frameMs); // shows the result
    });
    QSignalSpy published(bench.driver.get(), &DfDriver::resultPublished);
    resultValue<ValueSelection>("Quality")->AddObserver(&observer);
    bench.command(10);
    bench.answer(someResult(1));
    bench.answer(someResult(2));
    QCOMPARE(published.count(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(published.count(), 2);
    resultValue<ValueSelection>("Quality")->RemoveObserver(&observer);
}

void DfDriverTest::valuesMayVanishWhileTheDriverRuns()
{
    QStringList paths;
    {
        const Bench bench;
        for (const values::ValueBase* value : values::Tree::Instance()->ValuesBelow(QString()))
            paths += value->GetPathName();
    }
    for (const QString& path : qAsConst(paths)) {
        Bench bench;
        QSignalSpy published(bench.driver.get(), &DfDriver::resultPublished);
        bench.command(10);
        QVERIFY(values::Tree::Instance()->DeleteValue(path));
        bench.answer();
        QCOMPARE(published.count(), 1);
        if (!path.endsWith(QStringLiteral("Commands")))
            bench.command(11);
    }
    // And all of them, one after the other, in one life.
    Bench bench;
    bench.command(10);
    for (const QString& path : qAsConst(paths)) {
        values::Tree::Instance()->DeleteValue(path);
        bench.answer();
    }
    bench.driver.reset();
}

void DfDriverTest::theDriverMayBeDeletedInAnyOfItsNotifications_data()
{
    QTest::addColumn<QString>("notification");
    QStringList lines;
    {
        Bench bench;
        const Log log;
        resultValue<ValueSelection>("SelectedDF")->Select(8);
        bench.command(10);
        bench.source->m_stations[0].available = false;
        bench.source->m_hriStations.clear();
        bench.answer(movingResult());
        bench.command(11);
        lines = log.lines;
    }
    lines.removeDuplicates();
    for (const QString& line : qAsConst(lines))
        QTest::newRow(qPrintable(line)) << line;
}

void DfDriverTest::theDriverMayBeDeletedInAnyOfItsNotifications()
{
    QFETCH(QString, notification);
    Bench bench;
    testsupport::RecordingObserver observer([&](Observable* source, TChangeCode code) {
        const QString line =
            dynamic_cast<values::ValueBase*>(source)->GetName() + QLatin1Char(' ') + QString::number(code);
        if (line == notification)
            bench.driver.reset();
    });
    for (values::ValueBase* value : values::Tree::Instance()->ValuesBelow(QString()))
        value->AddObserver(&observer);
    const auto stillThere = [&] { return bench.driver != nullptr; };
    resultValue<ValueSelection>("SelectedDF")->Select(8);
    if (stillThere())
        bench.command(10);
    if (stillThere()) {
        bench.source->m_stations[0].available = false;
        bench.source->m_hriStations.clear();
        bench.answer(movingResult());
    }
    if (stillThere())
        bench.command(11);
    QVERIFY(!stillThere());
    QVERIFY(values::Tree::Instance()->ValuesBelow(QString()).empty());
}

void DfDriverTest::theDriverMayBeDeletedWhenAResultIsPublished()
{
    Bench bench;
    connect(bench.driver.get(), &DfDriver::resultPublished, this, [&] { bench.driver.reset(); });
    bench.command(10);
    bench.answer();
    QVERIFY(bench.driver == nullptr);
}

void DfDriverTest::theDriverMayBeDeletedWhenAMeasurementFails()
{
    Bench bench;
    connect(bench.driver.get(), &DfDriver::measurementFailed, this, [&] { bench.driver.reset(); });
    bench.command(10);
    emit bench.source->failed(QStringLiteral("No."));
    QVERIFY(bench.driver == nullptr);
}

void DfDriverTest::theDriverMayBeDeletedWhileMeasuring()
{
    Bench bench;
    bench.command(10);
    bench.driver.reset();
    QVERIFY(values::Tree::Instance()->ValuesBelow(QString()).empty());
    QCoreApplication::processEvents();
}

void DfDriverTest::theDriverMayBeDeletedByItsSourcesAnswer()
{
    const testsupport::FreshTree tree;
    Scenario scenario;
    scenario.start = QDateTime(QDate(2026, 5, 14), QTime(0, 0), Qt::UTC);
    scenario.stations.resize(1);
    scenario.stations[0].info.position = GeoPosition{};
    auto driver = std::make_unique<DfDriver>(std::make_unique<SimulatedNetwork>(scenario, 1, Pacing::Immediate),
                                             handlerRoot, parameterRoot);
    connect(driver.get(), &DfDriver::resultPublished, this, [&] { driver.reset(); });
    handlerValue<ValueSelection>("Values/Commands")->Select(9);
    QTRY_VERIFY(driver == nullptr);
}

DFL_TEST_MAIN_WITH(DfDriverTest, QCoreApplication)
#include "tst_dfdriver.moc"
