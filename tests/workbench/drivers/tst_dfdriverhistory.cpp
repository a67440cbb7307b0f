#include "driverbench.h"
#include "drivers/locatehistory.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"

using namespace workbench;

namespace {

const QString hriStatus = QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus");

constexpr int online = 1;
constexpr int history = 2;

/// Answers when the test says so.
class FakeHistory final : public LocateHistory
{
public:
    struct Question
    {
        DfResult latest;
        int qualityThreshold = 0;
    };

    [[nodiscard]] bool isUsable() const override { return usable; }
    void locate(const DfResult& latest, int qualityThreshold) override
    {
        questions.push_back({latest, qualityThreshold});
    }
    void cancel() override { ++cancelled; }

    void becomeUnusable()
    {
        usable = false;
        emit usableChanged();
    }

    bool usable = true;
    std::vector<Question> questions;
    int cancelled = 0;
};

/// What a history may answer.
HistoryFix someFix()
{
    Fix fix;
    fix.position = {12.5, -33.25};
    fix.chiSquare = 7.5;
    fix.degreesOfFreedom = 9;
    return {fix, 4, 11, true};
}

/// A driver that locates with a history.
struct HistoryBench : Bench
{
    HistoryBench()
    {
        driver->setHistory(fake.get());
        select("Config/DFLocateType", history);
        QObject::connect(driver.get(), &DfDriver::resultPublished, driver.get(), [this] { ++published; });
    }

    static void select(const char* path, int key) { handlerValue<ValueSelection>(path)->Select(key); }

    std::unique_ptr<FakeHistory> fake = std::make_unique<FakeHistory>();
    int published = 0;
};

bool running()
{
    return handlerValue<BoolValue>("DFRunning")->GetValue();
}

bool hriRunning()
{
    return handlerValue<BoolValue>("Values/Status/LocateHRIRunning")->GetValue();
}

QString resultTime()
{
    return resultValue<StringValue>("ResultTime")->GetValue();
}

bool hasPosition()
{
    return resultValue<DoubleValue>("AveragePositionLatitude")->GetState() == values::StateOrdinary &&
           resultValue<DoubleValue>("AveragePositionLongitude")->GetState() == values::StateOrdinary;
}

QString reasonOf(const DfDriver& driver)
{
    const auto* const reason = driver.publishedFix() ? std::get_if<QString>(&*driver.publishedFix()) : nullptr;
    return reason != nullptr ? *reason : QString();
}

} // namespace

class DfDriverHistoryTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { qRegisterMetaType<DfResult>("workbench::DfResult"); }

    void everyMeasuredResultIsToldBeforeItsValues();
    void theHistoryIsAskedForTheLatestResult();
    void theHistoryIsAskedForTheTypeAndTheActivityOnly_data();
    void theHistoryIsAskedForTheTypeAndTheActivityOnly();
    void theResultIsPublishedOnceWithTheAnswer();
    void withoutAFixFromTheHistoryTheReasonIsPublished();
    void aLaterOnlineResultIsNotFromTheHistory();
    void theMeasurementIsUnderWayUntilTheAnswer();
    void cyclicMeasuringGoesOnAfterTheAnswer();
    void whatIsStoppedIsNotPublished();
    void whoIsToldOfAResultMayStopIt();
    void aFailureOfTheSourceDropsTheQuestion();
    void aFurtherResultTakesThePlaceOfTheOneThatIsLocated();
    void anAnswerThatNobodyAskedForIsIgnored();
    void anotherHistoryIsAskedInsteadOfTheFirst();
    void aHistoryThatGoesIsAsGoodAsAnAnswer();
    void withoutAHistoryThereIsAReason();

    void theHistoryIsAStationOfTheRemoteService();
    void aHistoryThatCannotBeUsedIsNotAvailableAtAnyFrequency();
    void theStationOfTheHistoryHasANumberOfItsOwn();

    void whereThePositionIsFromIsKnownBeforeTheResult();
    void theServiceRunsFromTheStartOfTheMeasurementOn();
    void theServiceStopsWithTheNextOnlineResult();

    void theDriverMayBeDeletedInAnyOfItsNotifications_data();
    void theDriverMayBeDeletedInAnyOfItsNotifications();
    void theDriverMayBeDeletedWhenAResultIsMeasured();
    void theDriverMayGoBeforeTheAnswer();
};

void DfDriverHistoryTest::everyMeasuredResultIsToldBeforeItsValues()
{
    Bench bench;
    QStringList times;
    connect(bench.driver.get(), &DfDriver::measured, this, [&](const DfResult& result) {
        QVERIFY(running());
        times += result.time.toString(QStringLiteral("ss")) + QLatin1Char('/') + resultTime().right(2);
    });
    bench.measure(someResult(1));
    bench.measure(someResult(2));
    QCOMPARE(times, (QStringList{QStringLiteral("01/"), QStringLiteral("02/01")}));
}

void DfDriverHistoryTest::theHistoryIsAskedForTheLatestResult()
{
    HistoryBench bench;
    handlerValue<IntValue>("Config/Quality")->SetValue(42, nullptr);
    handlerValue<IntValue>("Config/Quality")->SetState(values::StateOrdinary, nullptr);
    bench.command(9);
    QCOMPARE(bench.fake->questions.size(), std::size_t(0));
    bench.answer(someResult(7));
    QCOMPARE(bench.fake->questions.size(), std::size_t(1));
    QCOMPARE(bench.fake->questions[0].latest.time.second(), 7);
    QCOMPARE(bench.fake->questions[0].qualityThreshold, 42);
}

void DfDriverHistoryTest::theHistoryIsAskedForTheTypeAndTheActivityOnly_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("activity");
    QTest::addColumn<bool>("isAsked");
    QTest::newRow("history, DF and locate") << history << 2 << true;
    QTest::newRow("history, DF") << history << 1 << false;
    QTest::newRow("history, no DF") << history << 0 << false;
    QTest::newRow("online, DF and locate") << online << 2 << false;
    QTest::newRow("no locate, DF and locate") << 0 << 2 << false;
}

void DfDriverHistoryTest::theHistoryIsAskedForTheTypeAndTheActivityOnly()
{
    QFETCH(int, type);
    QFETCH(int, activity);
    QFETCH(bool, isAsked);
    HistoryBench bench;
    HistoryBench::select("Config/DFLocateType", type);
    HistoryBench::select("Config/DFLocateActivity", activity);
    bench.command(9);
    bench.answer();
    QCOMPARE(bench.fake->questions.size(), std::size_t(isAsked ? 1 : 0));
    QCOMPARE(bench.published, isAsked ? 0 : 1);
}

void DfDriverHistoryTest::theResultIsPublishedOnceWithTheAnswer()
{
    HistoryBench bench;
    bench.command(9);
    bench.answer(someResult(7));
    QCOMPARE(bench.published, 0);
    QCOMPARE(resultTime(), QString());
    emit bench.fake->located(someFix());
    QCOMPARE(bench.published, 1);
    QVERIFY(resultTime().endsWith(QStringLiteral(":07")));
    QVERIFY(hasPosition());
    QCOMPARE(resultValue<DoubleValue>("AveragePositionLatitude")->GetValue(), 12.5);
    QCOMPARE(resultValue<DoubleValue>("AveragePositionLongitude")->GetValue(), -33.25);
    QCOMPARE(std::get<Fix>(*bench.driver->publishedFix()).chiSquare, 7.5);
    QCOMPARE(bench.driver->publishedHistory()->results, 4);
    QCOMPARE(bench.driver->publishedHistory()->bearings, 11);
    QVERIFY(!running());
    emit bench.fake->located(someFix());
    QCOMPARE(bench.published, 1);
}

void DfDriverHistoryTest::withoutAFixFromTheHistoryTheReasonIsPublished()
{
    HistoryBench bench;
    bench.command(9);
    bench.answer();
    emit bench.fake->located({QStringLiteral("No fix: nothing there."), 3, 0, true});
    QCOMPARE(bench.published, 1);
    QVERIFY(!hasPosition());
    QCOMPARE(reasonOf(*bench.driver), QStringLiteral("No fix: nothing there."));
    QCOMPARE(bench.driver->publishedHistory()->results, 3);
}

void DfDriverHistoryTest::aLaterOnlineResultIsNotFromTheHistory()
{
    HistoryBench bench;
    bench.command(9);
    bench.answer();
    emit bench.fake->located(someFix());
    HistoryBench::select("Config/DFLocateType", online);
    bench.command(9);
    bench.answer();
    QTRY_COMPARE(bench.published, 2);
    QVERIFY(!bench.driver->publishedHistory());
}

void DfDriverHistoryTest::theMeasurementIsUnderWayUntilTheAnswer()
{
    HistoryBench bench;
    bench.command(9);
    bench.answer();
    QVERIFY(running());
    bench.command(9);
    QCOMPARE(bench.source->requests.size(), std::size_t(1));
    bench.command(11); // leaves single measurements alone
    emit bench.fake->located(someFix());
    QCOMPARE(bench.published, 1);
    QVERIFY(!running());
}

void DfDriverHistoryTest::cyclicMeasuringGoesOnAfterTheAnswer()
{
    HistoryBench bench;
    bench.command(10);
    bench.answer();
    QCOMPARE(bench.source->requests.size(), std::size_t(1));
    emit bench.fake->located(someFix());
    QCOMPARE(bench.source->requests.size(), std::size_t(2));
    QVERIFY(running());
}

void DfDriverHistoryTest::whatIsStoppedIsNotPublished()
{
    HistoryBench bench;
    bench.command(10);
    bench.answer();
    bench.command(11);
    QCOMPARE(bench.fake->cancelled, 1);
    QVERIFY(!running());
    emit bench.fake->located(someFix());
    QCOMPARE(bench.published, 0);
    QCOMPARE(resultTime(), QString());
    // And the next one is as if nothing had been.
    bench.command(10);
    bench.answer(someResult(3));
    emit bench.fake->located(someFix());
    QCOMPARE(bench.published, 1);
}

void DfDriverHistoryTest::whoIsToldOfAResultMayStopIt()
{
    HistoryBench bench;
    connect(bench.driver.get(), &DfDriver::measured, this, [&] { bench.command(11); });
    bench.command(10);
    bench.answer();
    QCOMPARE(bench.fake->questions.size(), std::size_t(0));
    QCOMPARE(bench.published, 0);
    QVERIFY(!running());
}

void DfDriverHistoryTest::aFailureOfTheSourceDropsTheQuestion()
{
    HistoryBench bench;
    bench.command(10);
    bench.answer();
    emit bench.source->failed(QStringLiteral("Lost."));
    QCOMPARE(bench.fake->cancelled, 1);
    emit bench.fake->located(someFix());
    QCOMPARE(bench.published, 0);
}

void DfDriverHistoryTest::aFurtherResultTakesThePlaceOfTheOneThatIsLocated()
{
    HistoryBench bench;
    bench.command(10);
    bench.answer(someResult(1));
    bench.answer(someResult(2));
    QCOMPARE(bench.fake->cancelled, 1);
    QCOMPARE(bench.fake->questions.size(), std::size_t(2));
    emit bench.fake->located(someFix());
    QCOMPARE(bench.published, 1);
    QVERIFY(resultTime().endsWith(QStringLiteral(":02")));
}

void DfDriverHistoryTest::anAnswerThatNobodyAskedForIsIgnored()
{
    HistoryBench bench;
    emit bench.fake->located(someFix());
    QCOMPARE(bench.published, 0);
    QVERIFY(!bench.driver->publishedFix());
}

void DfDriverHistoryTest::anotherHistoryIsAskedInsteadOfTheFirst()
{
    HistoryBench bench;
    bench.command(9);
    bench.answer(someResult(5));
    FakeHistory second;
    bench.driver->setHistory(&second);
    QCOMPARE(bench.fake->cancelled, 1);
    QCOMPARE(second.questions.size(), std::size_t(1));
    emit bench.fake->located(someFix());
    QCOMPARE(bench.published, 0);
    emit second.located(someFix());
    QCOMPARE(bench.published, 1);
    bench.driver->setHistory(nullptr);
}

void DfDriverHistoryTest::aHistoryThatGoesIsAsGoodAsAnAnswer()
{
    HistoryBench bench;
    bench.command(9);
    bench.answer();
    bench.fake.reset();
    QCOMPARE(bench.published, 1);
    QCOMPARE(reasonOf(*bench.driver), QStringLiteral("No fix: there are no stored results."));
    QCOMPARE(find<StringValue>(hriStatus)->GetValue(), QStringLiteral("DFID20#N_Far#ST1"));
}

void DfDriverHistoryTest::withoutAHistoryThereIsAReason()
{
    HistoryBench bench;
    bench.driver->setHistory(nullptr);
    bench.command(9);
    bench.answer();
    QCOMPARE(bench.published, 1);
    QVERIFY(!hasPosition());
    QCOMPARE(reasonOf(*bench.driver), QStringLiteral("No fix: there are no stored results."));
    QVERIFY(hriRunning());
}

void DfDriverHistoryTest::theHistoryIsAStationOfTheRemoteService()
{
    const HistoryBench bench;
    QCOMPARE(find<StringValue>(hriStatus)->GetValue(),
             QStringLiteral("DFID20#N_Far#ST1#DFID21#N_Stored results#ST1#FB0#FE1000000000000000"));
}

void DfDriverHistoryTest::aHistoryThatCannotBeUsedIsNotAvailableAtAnyFrequency()
{
    HistoryBench bench;
    bench.fake->becomeUnusable();
    QCOMPARE(find<StringValue>(hriStatus)->GetValue(),
             QStringLiteral("DFID20#N_Far#ST1#DFID21#N_Stored results#ST0#FB0#FE0"));
}

void DfDriverHistoryTest::theStationOfTheHistoryHasANumberOfItsOwn()
{
    auto source = std::make_unique<FakeSource>();
    source->m_hriStations.clear();
    Bench bench(std::move(source));
    FakeHistory fake;
    bench.driver->setHistory(&fake);
    QVERIFY(find<StringValue>(hriStatus)->GetValue().startsWith(QStringLiteral("DFID1#N_Stored results#")));
    bench.source->m_hriStations = {FakeSource::station(9, QStringLiteral("A")),
                                   FakeSource::station(4, QStringLiteral("B"))};
    bench.measure();
    QVERIFY(find<StringValue>(hriStatus)->GetValue().contains(QStringLiteral("#DFID10#N_Stored results#")));
    bench.driver->setHistory(nullptr);
}

void DfDriverHistoryTest::whereThePositionIsFromIsKnownBeforeTheResult()
{
    HistoryBench bench;
    HistoryBench::select("Config/DFLocateType", online);
    bench.command(9);
    QVERIFY(!hriRunning());
    HistoryBench::select("Config/DFLocateType", history);
    bench.answer();
    QStringList seen;
    testsupport::RecordingObserver observer([&](Observable*, TChangeCode code) {
        if (code == ChangeContent)
            seen += hriRunning() ? QStringLiteral("history") : QStringLiteral("online");
    });
    resultValue<StringValue>("ResultTime")->AddObserver(&observer);
    emit bench.fake->located(someFix());
    QCOMPARE(seen, QStringList{QStringLiteral("history")});
    QVERIFY(hriRunning()); // whoever looks later sees the same result
    resultValue<StringValue>("ResultTime")->RemoveObserver(&observer);
}

void DfDriverHistoryTest::theServiceRunsFromTheStartOfTheMeasurementOn()
{
    HistoryBench bench;
    QVERIFY(!hriRunning());
    bench.command(10);
    QVERIFY(hriRunning());
}

void DfDriverHistoryTest::theServiceStopsWithTheNextOnlineResult()
{
    HistoryBench bench;
    bench.command(9);
    HistoryBench::select("Config/DFLocateType", online);
    bench.answer();
    QCOMPARE(bench.published, 1);
    QVERIFY(!hriRunning());
}

void DfDriverHistoryTest::theDriverMayBeDeletedInAnyOfItsNotifications_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name :
         {"LocateHRIRunning", "DFRunning", "CyclicLocateStarted", "Frequency", "ResultTime", "LocateHRIStatus"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void DfDriverHistoryTest::theDriverMayBeDeletedInAnyOfItsNotifications()
{
    QFETCH(QString, name);
    HistoryBench bench;
    testsupport::RecordingObserver observer([&](Observable* source, TChangeCode) {
        if (dynamic_cast<values::ValueBase*>(source)->GetName() == name)
            bench.driver.reset();
    });
    for (values::ValueBase* value : values::Tree::Instance()->ValuesBelow(QString()))
        value->AddObserver(&observer);
    const auto stillThere = [&] { return bench.driver != nullptr; };
    bench.command(10);
    if (stillThere())
        bench.answer();
    if (stillThere())
        emit bench.fake->located(someFix());
    if (stillThere())
        bench.fake->becomeUnusable();
    QVERIFY(!stillThere());
    QVERIFY(values::Tree::Instance()->ValuesBelow(QString()).empty());
    emit bench.fake->located(someFix());
}

void DfDriverHistoryTest::theDriverMayBeDeletedWhenAResultIsMeasured()
{
    HistoryBench bench;
    connect(bench.driver.get(), &DfDriver::measured, this, [&] { bench.driver.reset(); });
    bench.command(10);
    bench.answer();
    QVERIFY(bench.driver == nullptr);
    QCOMPARE(bench.fake->questions.size(), std::size_t(0));
}

void DfDriverHistoryTest::theDriverMayGoBeforeTheAnswer()
{
    HistoryBench bench;
    bench.command(9);
    bench.answer();
    bench.driver.reset();
    QCOMPARE(bench.fake->cancelled, 1);
    emit bench.fake->located(someFix());
    bench.fake->becomeUnusable();
}

DFL_TEST_MAIN_WITH(DfDriverHistoryTest, QCoreApplication)
#include "tst_dfdriverhistory.moc"
