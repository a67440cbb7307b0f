#include "history/resultstore.h"

#include "historybench.h"
#include "historytest.h"
#include "support/testmain.h"

#include <limits>
#include <map>

using namespace historybench;
using workbench::ResultAnswer;
using workbench::ResultStore;

namespace {

/// A store and all it says.
class ObservedStore
{
public:
    explicit ObservedStore(const QString& path, const workbench::HistoryLimits& limits = {})
        : store(path, limits)
    {
        QObject::connect(&store, &ResultStore::opened, &store, [this] { ++opened; });
        QObject::connect(&store, &ResultStore::stored, &store, [this] { ++stored; });
        QObject::connect(&store, &ResultStore::failed, &store, [this](const QString& reason) { failures += reason; });
        QObject::connect(&store, &ResultStore::answered, &store, [this](quint64 request, const ResultAnswer& answer) {
            QVERIFY(QThread::currentThread() == store.thread());
            order.push_back(request);
            answers[request] = answer;
        });
        QObject::connect(&store, &ResultStore::queryFailed, &store, [this](quint64 request, const QString& reason) {
            order.push_back(request);
            refusals[request] = reason;
        });
    }

    ResultStore store;
    int opened = 0;
    int stored = 0;
    QStringList failures;
    std::vector<quint64> order; // of the requests that were answered or failed
    std::map<quint64, ResultAnswer> answers;
    std::map<quint64, QString> refusals;
};

} // namespace

class TestResultStore : public HistoryTest
{
    Q_OBJECT

private slots:
    void aStoreOpensByItself()
    {
        ObservedStore observed(path());
        QCOMPARE(observed.opened, 0);
        QTRY_COMPARE(observed.opened, 1);
        QCOMPARE(observed.failures, QStringList());
    }

    void whatIsStoredIsFound()
    {
        ObservedStore observed(path());
        for (int i = 1; i <= 20; ++i)
            QVERIFY(observed.store.store(resultOfSeries(i)));
        const quint64 request = observed.store.query(everything());
        QTRY_COMPARE(observed.answers.size(), std::size_t(1));
        QCOMPARE(frequencies(observed.answers[request].results), ascending(1, 20));
        QVERIFY(observed.answers[request].isComplete);
        QCOMPARE(observed.stored, 20);
    }

    void aQueryDoesNotSeeWhatIsStoredAfterIt()
    {
        ObservedStore observed(path());
        const quint64 before = observed.store.query(everything());
        QVERIFY(observed.store.store(resultOfSeries(1)));
        const quint64 after = observed.store.query(everything());
        QTRY_COMPARE(observed.answers.size(), std::size_t(2));
        QCOMPARE(observed.order, (std::vector<quint64>{before, after}));
        QCOMPARE(observed.answers[before].results.size(), std::size_t(0));
        QCOMPARE(observed.answers[after].results.size(), std::size_t(1));
    }

    void theLimitsReachTheFile()
    {
        workbench::HistoryLimits limits;
        limits.maxResults = 3;
        {
            ResultStore store(path(), limits);
            for (int i = 1; i <= 10; ++i)
                QVERIFY(store.store(resultOfSeries(i)));
        }
        QCOMPARE(frequencies(allOf(path())), ascending(8, 10));
    }

    void theConnectionBelongsToAnotherThread()
    {
        ObservedStore observed(path());
        QTRY_COMPARE(observed.opened, 1);
        const QStringList names = QSqlDatabase::connectionNames();
        QCOMPARE(names.size(), 1);
        QTest::ignoreMessage(QtWarningMsg, "QSqlDatabasePrivate::database: requested database does not belong to the "
                                           "calling thread.");
        QVERIFY(!QSqlDatabase::database(names.first(), false).isValid());
    }

    // The thread of the test holds the lock: an operation that waited for the file on this thread would never get it.
    void noOperationWaitsForALockedFile()
    {
        ResultStore(path()).close();
        const OtherConnection other(path());
        other.run(QStringLiteral("BEGIN EXCLUSIVE"));
        ObservedStore observed(path());
        QVERIFY(observed.store.store(resultOfSeries(1)));
        const quint64 refused = observed.store.query(everything());
        QTRY_COMPARE(observed.failures, QStringList{locked("opened")});
        QTRY_COMPARE(observed.refusals.size(), std::size_t(1));
        QCOMPARE(observed.refusals[refused], locked("opened"));
        QCOMPARE(observed.stored, 0);

        other.run(QStringLiteral("ROLLBACK"));
        QTRY_COMPARE(observed.stored, 1);
        QCOMPARE(observed.opened, 1);
        observed.store.query(everything());
        QTRY_COMPARE(observed.answers.size(), std::size_t(1));
        QCOMPARE(observed.answers.begin()->second.results.size(), std::size_t(1));
        QCOMPARE(observed.failures.size(), 1);
    }

    void aFailureIsToldOnceHoweverOftenItIsTriedAndAgainWhenItComesBack()
    {
        ObservedStore observed(path());
        QTRY_COMPARE(observed.opened, 1);
        const OtherConnection other(path());
        for (int round = 1; round <= 2; ++round) {
            other.run(QStringLiteral("BEGIN EXCLUSIVE"));
            QVERIFY(observed.store.store(resultOfSeries(3 * round)));
            QTRY_COMPARE(observed.failures.size(), round);
            QCOMPARE(observed.failures.last(), locked("written"));
            // More attempts than one: the query is behind the one that the second result would cause.
            QVERIFY(observed.store.store(resultOfSeries(3 * round + 1)));
            const quint64 request = observed.store.query(everything());
            QTRY_VERIFY(observed.answers.count(request) == 1);
            QCOMPARE(observed.answers[request].results.size(), std::size_t(2 * round - 2));
            QCOMPARE(observed.failures.size(), round);
            other.run(QStringLiteral("ROLLBACK"));
            QTRY_COMPARE(observed.stored, 2 * round);
        }
        QVERIFY(observed.store.close());
        QCOMPARE(frequencies(allOf(path())), (std::vector<double>{3, 4, 6, 7}));
    }

    void aResultWaitsWhateverKeepsItFromBeingWritten()
    {
        ObservedStore observed(path());
        QTRY_COMPARE(observed.opened, 1);
        const OtherConnection other(path());
        other.run(QStringLiteral("CREATE TRIGGER refuse BEFORE INSERT ON result WHEN new.frequency = 1"
                                 " BEGIN SELECT raise(ABORT, 'not now'); END"));
        QVERIFY(observed.store.store(resultOfSeries(1)));
        QVERIFY(observed.store.store(resultOfSeries(2)));
        QTRY_COMPARE(observed.failures.size(), 1);
        QVERIFY2(observed.failures.first().startsWith(path() + QStringLiteral(": cannot be written: ")),
                 qPrintable(observed.failures.first()));
        QCOMPARE(observed.stored, 0);
        other.run(QStringLiteral("DROP TRIGGER refuse"));
        QTRY_COMPARE(observed.stored, 2);
        QCOMPARE(observed.failures.size(), 1);
    }

    void aFullQueueRefusesWhatComesAndKeepsWhatWaits()
    {
        ObservedStore observed(path());
        QTRY_COMPARE(observed.opened, 1);
        {
            const OtherConnection other(path());
            other.run(QStringLiteral("BEGIN EXCLUSIVE"));
            for (int i = 1; i <= ResultStore::maxWaiting; ++i)
                QVERIFY2(observed.store.store(resultOfSeries(i)), qPrintable(observed.store.errorString()));
            QCOMPARE(observed.store.errorString(), QString());
            for (int i = 1; i <= 3; ++i) {
                QVERIFY(!observed.store.store(resultOfSeries(ResultStore::maxWaiting + i)));
                QCOMPARE(observed.store.errorString(),
                         path() + QStringLiteral(": cannot be written: 1000 results wait already"));
            }
            QTRY_COMPARE(observed.failures, QStringList{locked("written")});
            other.run(QStringLiteral("ROLLBACK"));
        }
        QTRY_COMPARE_WITH_TIMEOUT(observed.stored, ResultStore::maxWaiting, 60000);
        QVERIFY(observed.store.store(resultOfSeries(5000)));
        QCOMPARE(observed.store.errorString(), QString());
        QVERIFY(observed.store.close());
        std::vector<double> expected = ascending(1, ResultStore::maxWaiting);
        expected.push_back(5000);
        QCOMPARE(frequencies(allOf(path())), expected);
    }

    void aResultThatCannotBeStoredIsRefusedAtOnce()
    {
        ObservedStore observed(path());
        DfResult result = resultOfSeries(1);
        result.time = QTime();
        QVERIFY(!observed.store.store(result));
        QCOMPARE(observed.store.errorString(),
                 path() + QStringLiteral(": cannot be written: the result has no time of day"));
        result = resultOfSeries(1);
        result.stations[0].level = std::numeric_limits<double>::quiet_NaN();
        QVERIFY(!observed.store.store(result));
        QCOMPARE(observed.store.errorString(),
                 path() + QStringLiteral(": cannot be written: station 1 has a number that is not finite"));
        QVERIFY(observed.store.close());
        QCOMPARE(allOf(path()).size(), std::size_t(0));
    }

    void aStoreThatCannotBeOpenedSaysSoAndRefusesEverything()
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(5000, 'x'));
        file.close();
        const QString reason = path() + QStringLiteral(": cannot be opened: it is damaged or no database");

        ObservedStore observed(path());
        bool isRefusedWhenTold = false;
        QObject::connect(&observed.store, &ResultStore::failed, &observed.store,
                         [&] { isRefusedWhenTold = !observed.store.store(resultOfSeries(2)); });
        QVERIFY(observed.store.store(resultOfSeries(1)));
        QTRY_COMPARE(observed.failures, QStringList{reason});
        QVERIFY(isRefusedWhenTold);
        QVERIFY(!observed.store.store(resultOfSeries(3)));
        QCOMPARE(observed.store.errorString(), reason);
        const quint64 request = observed.store.query(everything());
        QTRY_COMPARE(observed.refusals.size(), std::size_t(1));
        QCOMPARE(observed.refusals[request], reason);
        QVERIFY(!observed.store.close());
        QCOMPARE(observed.store.errorString(), reason + QStringLiteral(" (1 result is lost)"));
        QCOMPARE(observed.failures.size(), 1);
        QCOMPARE(contentOf(path()), QByteArray(5000, 'x'));
    }

    void aCancelledQueryIsNotAnswered()
    {
        ObservedStore observed(path());
        QVERIFY(observed.store.store(resultOfSeries(1)));
        const quint64 first = observed.store.query(everything());
        const quint64 cancelled = observed.store.query(everything());
        const quint64 last = observed.store.query(everything());
        observed.store.cancel(cancelled);
        observed.store.cancel(cancelled);
        observed.store.cancel(last + 1);
        QTRY_VERIFY(observed.answers.count(last) == 1);
        QCOMPARE(observed.order, (std::vector<quint64>{first, last}));
    }

    void aQueryCancelledAfterItWasWorkedOnIsNotAnswered()
    {
        ObservedStore observed(path());
        QTRY_COMPARE(observed.opened, 1);
        const quint64 first = observed.store.query(everything());
        const quint64 cancelled = observed.store.query(everything());
        QVERIFY(observed.store.store(resultOfSeries(1)));
        // Once the result is there both queries have been worked on; no answer arrives without an event loop.
        const OtherConnection other(path());
        while (other.run(QStringLiteral("SELECT count(*) FROM result")).toInt() == 0)
            QThread::yieldCurrentThread();
        observed.store.cancel(cancelled);
        const quint64 last = observed.store.query(everything());
        QTRY_VERIFY(observed.answers.count(last) == 1);
        QCOMPARE(observed.order, (std::vector<quint64>{first, last}));
    }

    void cancellingAnAnsweredQueryDoesNothing()
    {
        ObservedStore observed(path());
        const quint64 request = observed.store.query(everything());
        QTRY_COMPARE(observed.order, std::vector<quint64>{request});
        observed.store.cancel(request);
        observed.store.query(everything());
        QTRY_COMPARE(observed.order.size(), std::size_t(2));
    }

    void whatWaitsIsWrittenWhenTheStoreGoes()
    {
        {
            ResultStore store(path());
            for (int i = 1; i <= 500; ++i)
                QVERIFY(store.store(resultOfSeries(i)));
        }
        QCOMPARE(frequencies(allOf(path())), ascending(1, 500));
    }

    void aStoreMayGoWhileQueriesAreUnderWay()
    {
        {
            ResultStore store(path());
            for (int i = 1; i <= 200; ++i)
                QVERIFY(store.store(resultOfSeries(i)));
        }
        for (int round = 0; round < 20; ++round) {
            ObservedStore observed(path());
            if (round % 2 == 0)
                QTRY_COMPARE(observed.opened, 1);
            for (int i = 0; i < 50; ++i)
                observed.store.query(everything());
        }
        QCOMPARE(allOf(path()).size(), std::size_t(200));
    }

    void aStoreMayGoInAnswerToAQuery()
    {
        auto* store = new ResultStore(path());
        int answers = 0;
        connect(store, &ResultStore::answered, this, [&] {
            ++answers;
            store->deleteLater();
        });
        connect(store, &QObject::destroyed, this, [&] { store = nullptr; });
        store->query(everything());
        store->query(everything());
        QTRY_VERIFY(!store);
        QVERIFY(answers >= 1);
    }

    void closingWhileTheFileIsLockedSaysWhatIsLost()
    {
        ObservedStore observed(path());
        QTRY_COMPARE(observed.opened, 1);
        const OtherConnection other(path());
        other.run(QStringLiteral("BEGIN EXCLUSIVE"));
        QVERIFY(observed.store.store(resultOfSeries(1)));
        QVERIFY(observed.store.store(resultOfSeries(2)));
        QTRY_COMPARE(observed.failures, QStringList{locked("written")});
        QVERIFY(!observed.store.close());
        QCOMPARE(observed.store.errorString(), locked("written") + QStringLiteral(" (2 results are lost)"));
        QVERIFY(!observed.store.close());
        // Closing was one more attempt, for the same reason.
        QCoreApplication::processEvents();
        QCOMPARE(observed.failures.size(), 1);
        other.run(QStringLiteral("ROLLBACK"));
    }

    void closingTriesOnceMoreWhatCouldNotBeWritten()
    {
        ObservedStore observed(path());
        QTRY_COMPARE(observed.opened, 1);
        {
            const OtherConnection other(path());
            other.run(QStringLiteral("BEGIN EXCLUSIVE"));
            QVERIFY(observed.store.store(resultOfSeries(1)));
            QTRY_COMPARE(observed.failures, QStringList{locked("written")});
        }
        QVERIFY(observed.store.close());
        QCOMPARE(frequencies(allOf(path())), ascending(1, 1));
    }

    void aClosedStoreStaysClosed()
    {
        ObservedStore observed(path());
        const QString reason = path() + QStringLiteral(": cannot be used: it is closed");
        QVERIFY(observed.store.store(resultOfSeries(1)));
        const quint64 cancelled = observed.store.query(everything());
        QVERIFY(observed.store.close());
        QVERIFY(observed.store.close());
        QVERIFY(!observed.store.store(resultOfSeries(2)));
        QCOMPARE(observed.store.errorString(), reason);
        const quint64 refused = observed.store.query(everything());
        const quint64 withdrawn = observed.store.query(everything());
        observed.store.cancel(withdrawn);
        QCOMPARE(observed.refusals.size(), std::size_t(0));
        QTRY_COMPARE(observed.refusals.size(), std::size_t(1));
        QCOMPARE(observed.refusals[refused], reason);
        QCOMPARE(observed.answers.count(cancelled), std::size_t(0));
        QCOMPARE(observed.stored, 1);
        QCOMPARE(allOf(path()).size(), std::size_t(1));
    }

    void twoStoresShareAFile()
    {
        ObservedStore one(path());
        ObservedStore two(path());
        for (int i = 1; i <= 50; ++i) {
            QVERIFY(one.store.store(resultOfSeries(2 * i - 1)));
            QVERIFY(two.store.store(resultOfSeries(2 * i)));
        }
        QTRY_COMPARE_WITH_TIMEOUT(one.stored + two.stored, 100, 60000);
        const quint64 request = one.store.query(everything());
        QTRY_COMPARE(one.answers.size(), std::size_t(1));
        QCOMPARE(frequencies(one.answers[request].results), ascending(1, 100));
    }

private:
    [[nodiscard]] QString locked(const char* operation) const
    {
        return path() + QStringLiteral(": cannot be %1: another program has locked it").arg(QLatin1String(operation));
    }
};

DFL_TEST_MAIN_WITH(TestResultStore, QCoreApplication)
#include "tst_resultstore.moc"
