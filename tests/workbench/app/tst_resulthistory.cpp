#include "app/resulthistory.h"

#include "historybench.h"
#include "historytest.h"
#include "support/testmain.h"
#include "support/traces.h"

#include <QDir>
#include <QSignalSpy>
#include <QtTest>

#include <functional>

using namespace historybench;
using workbench::Fix;
using workbench::GeoPosition;
using workbench::HistoryChoice;
using workbench::HistoryFix;
using workbench::ResultHistory;

/// Leaves a file of this name that is no store.
using MakeFile = std::function<void(const QString&)>;

Q_DECLARE_METATYPE(HistoryChoice)
Q_DECLARE_METATYPE(MakeFile)

namespace {

/// A history and all it says.
class ObservedHistory
{
public:
    explicit ObservedHistory(const QString& path, int limit = ResultQuery().limit)
        : history(path, nullptr, limit)
    {
        QObject::connect(&history, &ResultHistory::message, &history, [this](const QString& text) { said += text; });
        QObject::connect(&history, &ResultHistory::usableChanged, &history, [this] { ++usableChanges; });
        QObject::connect(&history, &ResultHistory::located, &history,
                         [this](const HistoryFix& fix) { fixes.push_back(fix); });
    }

    /// The reason why there is no fix of the last answer; empty when there is one.
    [[nodiscard]] QString lastReason() const
    {
        const auto* const reason = std::get_if<QString>(&fixes.back().located);
        return reason != nullptr ? *reason : QString();
    }

    ResultHistory history;
    QStringList said;
    int usableChanges = 0;
    std::vector<HistoryFix> fixes;
};

/// Two stations on the equator that see the same emitter, at about 1 degree north.
DfResult crossing(int second, double frequency = 100e6)
{
    DfResult result = resultAt(noon().addSecs(second), frequency);
    result.stations[0].position = GeoPosition{0.0, 0.0};
    result.stations[0].azimuth = 26.7;
    result.stations[1].position = GeoPosition{0.0, 1.0};
    result.stations[1].azimuth = 333.3;
    return result;
}

/// The same with one station each.
DfResult half(int second, std::size_t station)
{
    DfResult result = crossing(second);
    result.stations = {result.stations[station]};
    return result;
}

DfResult withoutTime(DfResult result)
{
    result.time = QTime();
    return result;
}

void makeWithSchema(const QString& path, int version)
{
    workbench::ResultStore(path).close();
    OtherConnection(path).run(QStringLiteral("PRAGMA user_version = %1").arg(version));
}

} // namespace

class TestResultHistory : public HistoryTest
{
    Q_OBJECT

private slots:
    // Keeping

    void whatIsKeptIsStoredAndCounted()
    {
        {
            ObservedHistory observed(path());
            QSignalSpy changes(&observed.history, &ResultHistory::stateChanged);
            observed.history.keep(crossing(0));
            observed.history.keep(crossing(1));
            QTRY_COMPARE(observed.history.storedCount(), 2);
            QVERIFY(changes.count() >= 2);
            QCOMPARE(observed.history.trouble(), QString());
            QVERIFY(observed.history.close());
            QCOMPARE(observed.said, QStringList());
        }
        QCOMPARE(allOf(path()).size(), std::size_t(2));
    }

    void whatWaitsIsWrittenOnClosing()
    {
        ObservedHistory observed(path());
        for (int i = 0; i < 50; ++i)
            observed.history.keep(crossing(i));
        QVERIFY(observed.history.close());
        QCOMPARE(allOf(path()).size(), std::size_t(50));
    }

    void noMoreIsKeptThanTheLimit()
    {
        workbench::HistoryLimits limits;
        limits.maxResults = 2;
        ResultHistory history(path(), nullptr, ResultQuery().limit, limits);
        for (int i = 0; i < 5; ++i)
            history.keep(crossing(i));
        QVERIFY(history.close());
        QCOMPARE(allOf(path()).size(), std::size_t(2));
    }

    void aRefusedResultIsToldOnceWithItsReason()
    {
        ObservedHistory observed(path());
        const testsupport::Traces traces;
        const QString reason = path() + QStringLiteral(": cannot be written: the result has no time of day");
        observed.history.keep(withoutTime(crossing(0)));
        // Not before the result itself has been shown.
        QCOMPARE(observed.said, QStringList());
        QCOMPARE(observed.history.trouble(), reason);
        observed.history.keep(withoutTime(crossing(1)));
        QTRY_COMPARE(observed.said, QStringList{reason});
        QCOMPARE(traces.records.size(), std::size_t(1));
        QCOMPARE(traces.records[0].text, reason);

        DfResult undated = crossing(2);
        undated.date = QDate();
        observed.history.keep(undated);
        QTRY_COMPARE(observed.said.size(), 2);
        QCOMPARE(observed.said[1], path() + QStringLiteral(": cannot be written: the result has no date"));

        observed.history.keep(crossing(3));
        QTRY_COMPARE(observed.history.trouble(), QString());
        QCOMPARE(observed.said.size(), 2);
        QVERIFY(!observed.history.close());
    }

    void aLockIsToldAndPassesByItself()
    {
        workbench::ResultStore(path()).close();
        const OtherConnection other(path());
        other.run(QStringLiteral("BEGIN EXCLUSIVE"));
        ObservedHistory observed(path());
        observed.history.keep(crossing(0));
        const QString reason = path() + QStringLiteral(": cannot be opened: another program has locked it");
        QTRY_COMPARE(observed.said, QStringList{reason});
        QCOMPARE(observed.history.trouble(), reason);
        QVERIFY(observed.history.isUsable());
        other.run(QStringLiteral("ROLLBACK"));
        QTRY_COMPARE(observed.history.storedCount(), 1);
        QCOMPARE(observed.history.trouble(), QString());
        QCOMPARE(observed.usableChanges, 0);
        QVERIFY(observed.history.close());
    }

    void aFileThatCannotBeUsedIsToldAndLeftAsItIs_data()
    {
        QTest::addColumn<QString>("reason");
        QTest::addColumn<MakeFile>("make");
        QTest::newRow("a newer schema") << QStringLiteral("its schema is version 2, this program knows version 1 only")
                                        << MakeFile([](const QString& path) { makeWithSchema(path, 2); });
        QTest::newRow("no database") << QStringLiteral("it is damaged or no database")
                                     << MakeFile([](const QString& path) {
                                            QFile file(path);
                                            QVERIFY(file.open(QIODevice::WriteOnly));
                                            file.write(QByteArray(5000, 'x'));
                                        });
        QTest::newRow("a truncated file") << QStringLiteral("it is damaged") << MakeFile([](const QString& path) {
            {
                workbench::ResultStore store(path);
                for (int i = 0; i < 50; ++i)
                    store.store(resultOfSeries(i, 20));
            }
            QFile file(path);
            QVERIFY(file.resize(file.size() / 2));
        });
    }

    void aFileThatCannotBeUsedIsToldAndLeftAsItIs()
    {
        QFETCH(QString, reason);
        QFETCH(MakeFile, make);
        make(path());
        const QByteArray before = contentOf(path());
        ObservedHistory observed(path());
        observed.history.keep(crossing(0));
        QTRY_COMPARE(observed.usableChanges, 1);
        QVERIFY(!observed.history.isUsable());
        QCOMPARE(observed.said.size(), 1);
        const QString sentence = path() + QStringLiteral(": cannot be opened: ") + reason;
        QVERIFY2(observed.said[0].startsWith(sentence), qPrintable(observed.said[0]));
        QCOMPARE(observed.history.trouble(), observed.said[0]);

        // Work goes on: nothing is said again, and whoever locates gets the reason.
        observed.history.keep(crossing(1));
        observed.history.locate(crossing(1), 0);
        QTRY_COMPARE(observed.fixes.size(), std::size_t(1));
        QCOMPARE(observed.lastReason(), QStringLiteral("No fix: ") + observed.history.trouble());
        QCOMPARE(observed.said.size(), 1);
        QVERIFY(!observed.history.close());
        QCOMPARE(observed.said.last(), observed.said.first() + QStringLiteral(" (1 result is lost)"));
        QCOMPARE(contentOf(path()), before);
    }

    void aFolderThatIsNotThereIsToldAndNotMade()
    {
        const QString folder = inFolder(QStringLiteral("gone"));
        ObservedHistory observed(folder + QStringLiteral("/history.sqlite"));
        QTRY_COMPARE(observed.said.size(), 1);
        QVERIFY2(observed.said[0].endsWith(QStringLiteral("there is no folder ") + folder),
                 qPrintable(observed.said[0]));
        QVERIFY(!QDir(folder).exists());
        // Nothing was to be kept, and so nothing is lost.
        QVERIFY(observed.history.close());
    }

    // Locating

    void aPositionIsComputedFromSeveralResults()
    {
        ObservedHistory observed(path());
        observed.history.keep(half(0, 0));
        observed.history.keep(half(5, 1));
        observed.history.locate(half(5, 1), 0);
        QCOMPARE(observed.fixes.size(), std::size_t(0)); // not before it returns
        QTRY_COMPARE(observed.fixes.size(), std::size_t(1));
        QCOMPARE(observed.lastReason(), QString());
        const Fix fix = std::get<Fix>(observed.fixes[0].located);
        QVERIFY(std::abs(fix.position.longitude - 0.5) < 0.01);
        QVERIFY(std::abs(fix.position.latitude - 1.0) < 0.02);
        QCOMPARE(observed.fixes[0].results, 2);
        QCOMPARE(observed.fixes[0].bearings, 2);
        QVERIFY(observed.fixes[0].isComplete);
        QCOMPARE(observed.history.lastFix()->results, 2);
    }

    void thePositionWeightsBearingsByTheirAccuracy()
    {
        ObservedHistory observed(path());
        DfResult accurate = crossing(0);
        for (workbench::StationResult& station : accurate.stations)
            station.sigma = 0.5;
        observed.history.keep(accurate);
        observed.history.locate(accurate, 0);
        QTRY_COMPARE(observed.fixes.size(), std::size_t(1));
        const double major = workbench::standardEllipse(std::get<Fix>(observed.fixes[0].located).covariance).semiMajor;
        QVERIFY2(major > 500.0 && major < 5000.0, qPrintable(QString::number(major)));
    }

    void bearingsBelowTheThresholdAreLeftOut()
    {
        ObservedHistory observed(path());
        observed.history.keep(crossing(0)); // of 80 percent
        observed.history.locate(crossing(0), 81);
        QTRY_COMPARE(observed.fixes.size(), std::size_t(1));
        QCOMPARE(observed.lastReason(), explanation(workbench::NoFix::TooFewBearings));
        observed.history.locate(crossing(0), 80);
        QTRY_COMPARE(observed.fixes.size(), std::size_t(2));
        QCOMPARE(observed.lastReason(), QString());
    }

    void onlyWhatIsChosenCounts_data()
    {
        QTest::addColumn<HistoryChoice>("choice");
        QTest::addColumn<int>("results");
        const auto time = [](int second) { return noon().addSecs(second); };
        QTest::newRow("everything of the frequency") << HistoryChoice{{}, {}, {}, 0.0} << 3;
        QTest::newRow("from the second on") << HistoryChoice{time(10), {}, {}, 0.0} << 2;
        QTest::newRow("from just behind the second on") << HistoryChoice{time(10).addMSecs(1), {}, {}, 0.0} << 1;
        QTest::newRow("up to the second") << HistoryChoice{{}, time(10), {}, 0.0} << 2;
        QTest::newRow("up to just before the second") << HistoryChoice{{}, time(10).addMSecs(-1), {}, 0.0} << 1;
        QTest::newRow("the second alone") << HistoryChoice{time(10), time(10), {}, 0.0} << 1;
        QTest::newRow("another frequency") << HistoryChoice{{}, {}, 100.002e6, 0.0} << 1;
        QTest::newRow("a tolerance that reaches it") << HistoryChoice{{}, {}, {}, 2000.0} << 4;
        QTest::newRow("a tolerance that does not") << HistoryChoice{{}, {}, {}, 1999.0} << 3;
        QTest::newRow("a tolerance around another frequency") << HistoryChoice{{}, {}, 100.001e6, 1000.0} << 4;
    }

    void onlyWhatIsChosenCounts()
    {
        QFETCH(HistoryChoice, choice);
        QFETCH(int, results);
        ObservedHistory observed(path());
        for (const int second : {0, 10, 20})
            observed.history.keep(crossing(second));
        observed.history.keep(crossing(0, 100.002e6));
        observed.history.setChoice(choice);
        observed.history.locate(crossing(20), 0);
        QTRY_COMPARE(observed.fixes.size(), std::size_t(1));
        QCOMPARE(observed.fixes[0].results, results);
    }

    void whatCannotBeAskedForHasAReason_data()
    {
        QTest::addColumn<HistoryChoice>("choice");
        QTest::addColumn<bool>("hasFrequency");
        QTest::addColumn<QString>("reason");
        QTest::newRow("a span that ends before it begins")
            << HistoryChoice{noon(), noon().addMSecs(-1), {}, 0.0} << true
            << QStringLiteral("No fix: the chosen time span ends before it begins.");
        QTest::newRow("no frequency")
            << HistoryChoice() << false
            << QStringLiteral("No fix: the frequency of the result is not known, and no other is chosen.");
        QTest::newRow("no results")
            << HistoryChoice{noon().addDays(1), {}, {}, 0.0} << true
            << QStringLiteral("No fix: there are no stored results of the chosen time span and frequency.");
    }

    void whatCannotBeAskedForHasAReason()
    {
        QFETCH(HistoryChoice, choice);
        QFETCH(bool, hasFrequency);
        QFETCH(QString, reason);
        ObservedHistory observed(path());
        observed.history.keep(crossing(0));
        observed.history.setChoice(choice);
        DfResult latest = crossing(0);
        if (!hasFrequency)
            latest.frequency.reset();
        observed.history.locate(latest, 0);
        QCOMPARE(observed.fixes.size(), std::size_t(0));
        QTRY_COMPARE(observed.fixes.size(), std::size_t(1));
        QCOMPARE(observed.lastReason(), reason);
    }

    void aChosenFrequencyServesAResultWithoutOne()
    {
        ObservedHistory observed(path());
        observed.history.keep(crossing(0));
        observed.history.setChoice({{}, {}, 100e6, 0.0});
        DfResult latest = crossing(0);
        latest.frequency.reset();
        observed.history.locate(latest, 0);
        QTRY_COMPARE(observed.fixes.size(), std::size_t(1));
        QCOMPARE(observed.lastReason(), QString());
    }

    void aCancelledLocateIsNotAnswered()
    {
        ObservedHistory observed(path());
        observed.history.keep(crossing(0));
        observed.history.locate(crossing(0), 0);
        observed.history.cancel();
        observed.history.locate(withoutFrequency(), 0);
        observed.history.cancel();
        observed.history.locate(crossing(1), 0);
        QTRY_COMPARE(observed.fixes.size(), std::size_t(1));
        QCoreApplication::processEvents();
        QCOMPARE(observed.fixes.size(), std::size_t(1));
        QCOMPARE(observed.lastReason(), QString());
    }

    void aFurtherLocateReplacesTheFirst()
    {
        ObservedHistory observed(path());
        observed.history.keep(crossing(0));
        observed.history.locate(crossing(0), 0);
        observed.history.locate(crossing(0, 5e6), 0);
        QTRY_COMPARE(observed.fixes.size(), std::size_t(1));
        QCOMPARE(observed.fixes[0].results, 0);
        observed.history.locate(withoutFrequency(), 0); // is answered without the store, and is replaced all the same
        observed.history.locate(crossing(0), 0);
        QTRY_COMPARE(observed.fixes.size(), std::size_t(2));
        QCOMPARE(observed.fixes[1].results, 1);
    }

    void anotherChoiceCountsForALocateUnderWay()
    {
        ObservedHistory observed(path());
        observed.history.keep(crossing(0));
        observed.history.keep(crossing(10));
        observed.history.locate(crossing(10), 0);
        observed.history.setChoice({noon().addSecs(10), {}, {}, 0.0});
        QTRY_COMPARE(observed.fixes.size(), std::size_t(1));
        QCOMPARE(observed.fixes[0].results, 1);
        QCOMPARE(observed.history.lastFix()->results, 1);
        // What was found goes with the choice that it was found for.
        observed.history.setChoice({});
        QVERIFY(!observed.history.lastFix());
        QCOMPARE(observed.fixes.size(), std::size_t(1));
    }

    void moreResultsThanALocateTakesAreToldOnce()
    {
        const QString file = inFolder(QStringLiteral("%1.sqlite"));
        ObservedHistory observed(file, 2);
        for (const int second : {0, 10, 20})
            observed.history.keep(crossing(second));
        for (std::size_t count = 1; count <= 2; ++count) {
            observed.history.locate(crossing(20), 0);
            QTRY_COMPARE(observed.fixes.size(), count);
            QCOMPARE(observed.fixes.back().results, 2);
            QVERIFY(!observed.fixes.back().isComplete);
        }
        QTRY_COMPARE(
            observed.said,
            QStringList{file + QStringLiteral(": more than 2 results are chosen; the position is computed from "
                                              "the newest of them.")});
    }

    // The thread of the test holds the lock: whoever waited for the file on it would never get it.
    void locatingDoesNotWaitForALockedFile()
    {
        workbench::ResultStore(path()).close();
        const OtherConnection other(path());
        other.run(QStringLiteral("BEGIN EXCLUSIVE"));
        ObservedHistory observed(path());
        observed.history.locate(crossing(0), 0);
        QTRY_COMPARE(observed.fixes.size(), std::size_t(1));
        QCOMPARE(observed.lastReason(),
                 QStringLiteral("No fix: %1: cannot be opened: another program has locked it").arg(path()));
        other.run(QStringLiteral("ROLLBACK"));
    }

    void theHistoryMayGoWhileItLocates()
    {
        for (int turn = 0; turn < 10; ++turn) {
            ObservedHistory observed(path());
            observed.history.keep(crossing(turn));
            observed.history.locate(crossing(turn), 0);
            for (int i = 0; i < turn; ++i)
                QCoreApplication::processEvents();
        }
    }

    void afterClosingNothingIsLocated()
    {
        ObservedHistory observed(path());
        QVERIFY(observed.history.close());
        QVERIFY(!observed.history.isUsable());
        observed.history.locate(crossing(0), 0);
        QTRY_COMPARE(observed.fixes.size(), std::size_t(1));
        QCOMPARE(observed.lastReason(), QStringLiteral("No fix: %1: cannot be used: it is closed").arg(path()));
    }

private:
    static DfResult withoutFrequency()
    {
        DfResult result = crossing(0);
        result.frequency.reset();
        return result;
    }
};

DFL_TEST_MAIN_WITH(TestResultHistory, QCoreApplication)
#include "tst_resulthistory.moc"
