#include "historybench.h"
#include "historytest.h"
#include "support/asnobody.h"
#include "support/testmain.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

using namespace historybench;
using testsupport::AsNobody;
using workbench::DfError;
using workbench::FrequencyMatch;
using workbench::GeoPosition;
using workbench::HistoryLimits;
using workbench::ResultAnswer;
using workbench::ResultFile;
using workbench::ResultFileError;
using workbench::StationResult;
using workbench::TrueEmitter;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

/// Results that have everything that can be in one, or lack it, at random.
class RandomResults
{
public:
    DfResult next()
    {
        DfResult result;
        if (coin())
            result.frequency = number();
        result.date = QDate(1, 1, 1).addDays(upTo(3650000));
        result.time = QTime::fromMSecsSinceStartOfDay(upTo(24 * 3600 * 1000 - 1));
        if (coin())
            result.truth = TrueEmitter{text(), position()};
        const int stations = upTo(7);
        for (int i = 0; i < stations; ++i)
            result.stations.push_back(station());
        return result;
    }

private:
    StationResult station()
    {
        StationResult station;
        station.stationId = upTo(100) - 50;
        station.stationName = text();
        if (coin())
            station.position = position();
        if (coin())
            station.azimuth = number();
        if (coin())
            station.sigma = number();
        if (coin())
            station.quality = number();
        if (coin())
            station.level = number();
        if (coin())
            station.error = static_cast<DfError>(upTo(40) - 20);
        return station;
    }

    /// Any finite pattern of bits.
    double number()
    {
        for (;;) {
            const std::uint64_t bits = m_random();
            double number = 0.0;
            std::memcpy(&number, &bits, sizeof number);
            if (std::isfinite(number))
                return number;
        }
    }

    GeoPosition position() { return {number(), number()}; }

    QString text()
    {
        QString text;
        const int length = upTo(12);
        for (int i = 0; i < length; ++i)
            text += QChar(0x20 + upTo(0x2000)); // below the surrogates
        return text;
    }

    bool coin() { return m_random() % 2 == 0; }
    int upTo(int greatest) { return static_cast<int>(m_random() % static_cast<std::uint64_t>(greatest + 1)); }

    std::mt19937_64 m_random{20240517};
};

bool isSame(const GeoPosition& a, const GeoPosition& b)
{
    return a.latitude == b.latitude && a.longitude == b.longitude;
}

bool isSame(const TrueEmitter& a, const TrueEmitter& b)
{
    return a.name == b.name && isSame(a.position, b.position);
}

template <typename T>
bool isSame(const std::optional<T>& a, const std::optional<T>& b)
{
    return a.has_value() == b.has_value() && (!a || isSame(*a, *b));
}

bool isSame(const StationResult& a, const StationResult& b)
{
    return a.stationId == b.stationId && a.stationName == b.stationName && isSame(a.position, b.position) &&
           a.azimuth == b.azimuth && a.sigma == b.sigma && a.quality == b.quality && a.level == b.level &&
           a.error == b.error;
}

bool isSame(const DfResult& a, const DfResult& b)
{
    return a.frequency == b.frequency && a.date == b.date && a.time == b.time && isSame(a.truth, b.truth) &&
           std::equal(a.stations.begin(), a.stations.end(), b.stations.begin(), b.stations.end(),
                      [](const StationResult& x, const StationResult& y) { return isSame(x, y); });
}

/// What the operation throws; nothing when it does not.
template <typename Operation>
std::optional<ResultFileError> errorOf(Operation operation)
{
    try {
        operation();
    } catch (const ResultFileError& error) {
        return error;
    }
    return std::nullopt;
}

template <typename Operation>
QString sentenceOf(Operation operation)
{
    const std::optional<ResultFileError> error = errorOf(operation);
    return error ? error->sentence() : QStringLiteral("no error");
}

} // namespace

class TestResultFile : public HistoryTest
{
    Q_OBJECT

private slots:
    // What is stored is found

    void everyStoredResultIsFoundAsItWas()
    {
        RandomResults random;
        std::vector<DfResult> results;
        {
            ResultFile file(path(), {});
            for (int i = 0; i < 300; ++i) {
                results.push_back(random.next());
                QCOMPARE(ResultFile::objection(results.back()), QString());
                file.append(results.back());
            }
        }
        std::stable_sort(results.begin(), results.end(), [](const DfResult& a, const DfResult& b) {
            return QDateTime(a.date, a.time, Qt::UTC) < QDateTime(b.date, b.time, Qt::UTC);
        });
        const std::vector<DfResult> found = allOf(path());
        QCOMPARE(found.size(), results.size());
        for (std::size_t i = 0; i < found.size(); ++i)
            QVERIFY2(isSame(found[i], results[i]), qPrintable(QStringLiteral("result %1 differs").arg(i)));
    }

    void theOrderOfTheStationsIsKept()
    {
        DfResult result = resultAt(noon(), 1.0, 30);
        std::reverse(result.stations.begin(), result.stations.end());
        ResultFile file(path(), {});
        file.append(result);
        QVERIFY(isSame(find(file, everything()).results.at(0), result));
    }

    void aTruthWithoutNameIsATruth()
    {
        DfResult result = resultAt(noon());
        result.truth = TrueEmitter{QString(), {1.0, 2.0}};
        result.stations[0].stationName = QString();
        ResultFile file(path(), {});
        file.append(result);
        QVERIFY(isSame(find(file, everything()).results.at(0), result));
    }

    void resultsComeInTheOrderOfTheirTimes()
    {
        ResultFile file(path(), {});
        for (int i : {3, 1, 5, 2, 4})
            file.append(resultOfSeries(i));
        QCOMPARE(frequencies(find(file, everything()).results), ascending(1, 5));
    }

    void resultsOfTheSameTimeComeInTheOrderOfStoring()
    {
        ResultFile file(path(), {});
        for (int i = 1; i <= 5; ++i)
            file.append(resultAt(noon(), i));
        QCOMPARE(frequencies(find(file, everything()).results), ascending(1, 5));
    }

    void bothEndsBelongToTheSpan()
    {
        ResultFile file(path(), {});
        for (int i = 1; i <= 9; ++i)
            file.append(resultOfSeries(i));
        ResultQuery query;
        query.from = noon().addSecs(3);
        query.to = noon().addSecs(6);
        QCOMPARE(frequencies(find(file, query).results), ascending(3, 6));
        query.from = query.from.addMSecs(1);
        query.to = query.to.addMSecs(-1);
        QCOMPARE(frequencies(find(file, query).results), ascending(4, 5));
    }

    void anEndThatIsNotGivenIsOpen()
    {
        ResultFile file(path(), {});
        for (int i = 1; i <= 9; ++i)
            file.append(resultOfSeries(i));
        ResultQuery query;
        query.from = noon().addSecs(7);
        QCOMPARE(frequencies(find(file, query).results), ascending(7, 9));
        query.from = QDateTime();
        query.to = noon().addSecs(2);
        QCOMPARE(frequencies(find(file, query).results), ascending(1, 2));
    }

    void aSpanMayBeGivenInLocalTime()
    {
        ResultFile file(path(), {});
        file.append(resultOfSeries(0));
        ResultQuery query;
        query.from = query.to = QDateTime(noon().date(), QTime(14, 0)); // summer time, two hours east of UTC
        QCOMPARE(find(file, query).results.size(), std::size_t(1));
    }

    void frequenciesWithinTheToleranceMatch()
    {
        ResultFile file(path(), {});
        for (double frequency : {433.90e6, 433.91e6, 433.92e6, 433.93e6, 433.94e6})
            file.append(resultAt(noon(), frequency));
        ResultQuery query;
        query.frequency = FrequencyMatch{433.92e6, 10e3};
        QCOMPARE(frequencies(find(file, query).results), (std::vector<double>{433.91e6, 433.92e6, 433.93e6}));
        query.frequency = FrequencyMatch{433.92e6, 0.0};
        QCOMPARE(frequencies(find(file, query).results), std::vector<double>{433.92e6});
    }

    void aResultWithoutFrequencyMatchesNone()
    {
        DfResult result = resultAt(noon());
        result.frequency.reset();
        ResultFile file(path(), {});
        file.append(result);
        ResultQuery query;
        query.frequency = FrequencyMatch{0.0, 1e12};
        QCOMPARE(find(file, query).results.size(), std::size_t(0));
        query.frequency.reset();
        QCOMPARE(find(file, query).results.size(), std::size_t(1));
    }

    void senselessNumbersFindNothing()
    {
        ResultFile file(path(), {});
        file.append(resultAt(noon(), 1.0));
        ResultQuery query;
        for (const FrequencyMatch& match : {FrequencyMatch{notANumber, 1.0}, FrequencyMatch{1.0, notANumber},
                                            FrequencyMatch{1.0, -1.0}, FrequencyMatch{infinite, 1.0}}) {
            query.frequency = match;
            QCOMPARE(find(file, query).results.size(), std::size_t(0));
        }
    }

    void ofTooManyResultsTheNewestAreGiven()
    {
        ResultFile file(path(), {});
        for (int i = 1; i <= 9; ++i)
            file.append(resultOfSeries(i));
        ResultQuery query;
        query.limit = 9;
        QVERIFY(find(file, query).isComplete);
        query.limit = 4;
        const ResultAnswer answer = find(file, query);
        QVERIFY(!answer.isComplete);
        QCOMPARE(frequencies(answer.results), ascending(6, 9));
    }

    void aCancelledQueryEndsBeforeTheNextResult()
    {
        ResultFile file(path(), {});
        file.append(resultAt(noon()));
        const std::atomic<bool> isCancelled{true};
        QCOMPARE(file.find(everything(), isCancelled).results.size(), std::size_t(0));
    }

    // What is not stored

    void aResultWithoutDateOrTimeIsObjectedTo()
    {
        DfResult result = resultAt(noon());
        result.date = QDate();
        QCOMPARE(ResultFile::objection(result), QStringLiteral("the result has no date"));
        result = resultAt(noon());
        result.time = QTime();
        QCOMPARE(ResultFile::objection(result), QStringLiteral("the result has no time of day"));
    }

    void aResultWithANumberThatIsNotFiniteIsObjectedTo()
    {
        for (double bad : {notANumber, infinite, -infinite}) {
            DfResult result = resultAt(noon(), bad);
            QCOMPARE(ResultFile::objection(result), QStringLiteral("the frequency is not a finite number"));

            for (const GeoPosition& position : {GeoPosition{bad, 0.0}, GeoPosition{0.0, bad}}) {
                result = resultAt(noon());
                result.truth = TrueEmitter{QStringLiteral("T"), position};
                QCOMPARE(ResultFile::objection(result),
                         QStringLiteral("the position of the transmitter is not finite"));
                checkStationObjection([&](StationResult& station) { station.position = position; });
            }
            checkStationObjection([&](StationResult& station) { station.azimuth = bad; });
            checkStationObjection([&](StationResult& station) { station.sigma = bad; });
            checkStationObjection([&](StationResult& station) { station.quality = bad; });
            checkStationObjection([&](StationResult& station) { station.level = bad; });
        }
    }

    // Limits

    void theOldestGoWhenThereAreTooMany()
    {
        HistoryLimits limits;
        limits.maxResults = 5;
        ResultFile file(path(), limits);
        for (int i = 1; i <= 12; ++i) {
            file.append(resultOfSeries(i));
            QCOMPARE(frequencies(find(file, everything()).results), ascending(std::max(1, i - 4), i));
        }
    }

    void theStationsGoWithTheirResult()
    {
        HistoryLimits limits;
        limits.maxResults = 1;
        ResultFile file(path(), limits);
        file.append(resultOfSeries(1, 30));
        file.append(resultOfSeries(2, 3));
        QCOMPARE(OtherConnection(path()).run(QStringLiteral("SELECT count(*) FROM station_result")).toInt(), 3);
    }

    void oldestIsWhatWasStoredFirst()
    {
        HistoryLimits limits;
        limits.maxResults = 2;
        ResultFile file(path(), limits);
        for (int i : {30, 20, 10})
            file.append(resultOfSeries(i));
        QCOMPARE(frequencies(find(file, everything()).results), (std::vector<double>{10, 20}));
    }

    void theFileDoesNotGrowBeyondItsLimit()
    {
        HistoryLimits limits;
        limits.maxBytes = 400000;
        {
            ResultFile file(path(), limits);
            for (int i = 1; i <= 100; ++i)
                file.append(resultOfSeries(i, 200));
        }
        QVERIFY2(contentOf(path()).size() <= limits.maxBytes + 50000, "pages that became free were not used again");
        const std::vector<DfResult> found = allOf(path());
        QVERIFY(found.size() > 5 && found.size() < 60);
        QCOMPARE(frequencies(found), ascending(101 - static_cast<int>(found.size()), 100));
    }

    void theNewestIsKeptHoweverLargeItIs()
    {
        HistoryLimits limits;
        limits.maxBytes = 1;
        limits.maxResults = 0;
        ResultFile file(path(), limits);
        file.append(resultOfSeries(1, 1000));
        QCOMPARE(find(file, everything()).results.size(), std::size_t(1));
        file.append(resultOfSeries(2, 1000));
        QCOMPARE(frequencies(find(file, everything()).results), std::vector<double>{2.0});
    }

    void whatWasStoredTooLongAgoGoesWithTheNextResult()
    {
        HistoryLimits limits;
        limits.maxAgeDays = 10;
        ResultFile file(path(), limits);
        for (int i = 1; i <= 3; ++i)
            file.append(resultOfSeries(i));
        age(1, 11);
        age(2, 9);
        file.append(resultOfSeries(4));
        QCOMPARE(frequencies(find(file, everything()).results), ascending(2, 4));
    }

    void whatWasStoredTooLongAgoGoesOnOpening()
    {
        HistoryLimits limits;
        limits.maxAgeDays = 10;
        {
            ResultFile file(path(), limits);
            for (int i = 1; i <= 3; ++i)
                file.append(resultOfSeries(i));
            age(1, 11);
            age(2, 11);
        }
        ResultFile file(path(), limits);
        QCOMPARE(frequencies(find(file, everything()).results), std::vector<double>{3.0});
    }

    void anOldMeasurementThatWasStoredNowStays()
    {
        HistoryLimits limits;
        limits.maxAgeDays = 1;
        ResultFile file(path(), limits);
        for (int i = 1; i <= 3; ++i)
            file.append(resultAt(noon().addYears(-12), i));
        QCOMPARE(frequencies(find(file, everything()).results), ascending(1, 3));
    }

    void lowerLimitsHoldOnOpening()
    {
        {
            ResultFile file(path(), {});
            for (int i = 1; i <= 20; ++i)
                file.append(resultOfSeries(i));
        }
        HistoryLimits limits;
        limits.maxResults = 3;
        ResultFile file(path(), limits);
        QCOMPARE(frequencies(find(file, everything()).results), ascending(18, 20));
    }

    // The file

    void aStoreIsOneFileWithALogWhileItIsOpen()
    {
        {
            ResultFile file(path(), {});
            file.append(resultAt(noon()));
            QCOMPARE(OtherConnection(path()).run(QStringLiteral("PRAGMA journal_mode")).toString(),
                     QStringLiteral("wal"));
        }
        QCOMPARE(QDir(folderPath()).entryList(QDir::Files), QStringList{QStringLiteral("history.sqlite")});
    }

    void aStoreSaysWhatItIs()
    {
        ResultFile file(path(), {});
        const OtherConnection other(path());
        QCOMPARE(other.run(QStringLiteral("PRAGMA application_id")).toInt(), 0x44464C52);
        QCOMPARE(other.run(QStringLiteral("PRAGMA user_version")).toInt(), 1);
    }

    void anEmptyFileBecomesAStore()
    {
        write("");
        ResultFile(path(), {}).append(resultAt(noon()));
        QCOMPARE(allOf(path()).size(), std::size_t(1));
    }

    void aNameThatStandsForMemoryElsewhereIsAFile()
    {
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(folderPath()));
        ResultFile(QStringLiteral(":memory:"), {}).append(resultAt(noon()));
        QCOMPARE(allOf(QStringLiteral(":memory:")).size(), std::size_t(1));
        QCOMPARE(sentenceOf([] { ResultFile(QString(), {}); }), QStringLiteral(": cannot be opened: it is a folder"));
        QVERIFY(QDir::setCurrent(previous));
    }

    void aFolderThatIsNotThereIsNamedAndNotCreated()
    {
        const QString folder = inFolder(QStringLiteral("missing"));
        const QString file = folder + QStringLiteral("/history.sqlite");
        QCOMPARE(sentenceOf([&] { ResultFile(file, {}); }),
                 file + QStringLiteral(": cannot be opened: there is no folder ") + folder);
        QVERIFY(!QFileInfo::exists(folder));
    }

    void aFolderIsNoStore()
    {
        QCOMPARE(sentenceOf([&] { ResultFile(folderPath(), {}); }),
                 folderPath() + QStringLiteral(": cannot be opened: it is a folder"));
    }

    void aReadOnlyFileIsRefused()
    {
        fill(10);
        const QByteArray before = contentOf(path());
        QCOMPARE(chmod(qPrintable(folderPath()), 0777), 0);
        QCOMPARE(chmod(qPrintable(path()), 0444), 0);
        const AsNobody nobody;
        QCOMPARE(sentenceOf([&] { ResultFile(path(), {}); }), refusal("it is read-only"));
        QCOMPARE(contentOf(path()), before);
    }

    void aReadOnlyFolderIsRefused()
    {
        fill(10);
        const QByteArray before = contentOf(path());
        QCOMPARE(chmod(qPrintable(path()), 0666), 0);
        QCOMPARE(chmod(qPrintable(folderPath()), 0555), 0);
        {
            const AsNobody nobody;
            QCOMPARE(sentenceOf([&] { ResultFile(path(), {}); }),
                     refusal(QStringLiteral("the folder %1 is read-only").arg(folderPath())));
            QCOMPARE(contentOf(path()), before);
        }
        QCOMPARE(chmod(qPrintable(folderPath()), 0700), 0);
    }

    void aFileThatBecomesReadOnlyIsToldWhenWriting()
    {
        ResultFile file(path(), {});
        file.append(resultOfSeries(1));
        OtherConnection::run(onlyConnection(), QStringLiteral("PRAGMA query_only = ON"));
        QCOMPARE(sentenceOf([&] { file.append(resultOfSeries(2)); }),
                 path() + QStringLiteral(": cannot be written: it is read-only"));
        QCOMPARE(find(file, everything()).results.size(), std::size_t(1));
    }

    void aTruncatedFileIsRefusedAndStaysAsItIs_data()
    {
        QTest::addColumn<double>("share");
        QTest::newRow("all but the last page") << 0.95;
        QTest::newRow("half") << 0.5;
        QTest::newRow("first page") << 0.01;
    }

    void aTruncatedFileIsRefusedAndStaysAsItIs()
    {
        QFETCH(double, share);
        fill(200);
        const QByteArray whole = contentOf(path());
        write(whole.left(std::max(4096, static_cast<int>(whole.size() * share) / 4096 * 4096)));
        checkRefused("it is damaged: database disk image is malformed");
    }

    void aFileCutWithinItsHeaderIsRefusedAndStaysAsItIs()
    {
        fill(1);
        write(contentOf(path()).left(60));
        checkRefused("it is damaged: database disk image is malformed");
    }

    void aFileWithARuinedPageIsRefusedAndStaysAsItIs()
    {
        fill(200, 20);
        QByteArray content = contentOf(path());
        QVERIFY(content.size() > 10 * 4096);
        content.replace(7 * 4096, 4096, QByteArray(4096, '\xff'));
        write(content);
        const QString sentence = sentenceOf([&] { ResultFile(path(), {}); });
        QVERIFY2(sentence.startsWith(refusal("it is damaged: ")), qPrintable(sentence));
        QCOMPARE(contentOf(path()), content);
    }

    /// Even a transaction that changes nothing would correct the header.
    void aFileOfAnotherLengthThanItsHeaderKnowsIsRefusedAndStaysAsItIs()
    {
        fill(3);
        QByteArray content = contentOf(path());
        constexpr int lastByteOfVersion = 95; // of the program that wrote the length into the header
        content[lastByteOfVersion] = static_cast<char>(content[lastByteOfVersion] + 1);
        write(content + QByteArray(4096, 'x'));
        const QString sentence = sentenceOf([&] { ResultFile(path(), {}); });
        QVERIFY2(sentence.startsWith(refusal("it is damaged: ")), qPrintable(sentence));
        QCOMPARE(contentOf(path()), content + QByteArray(4096, 'x'));
    }

    void aDatabaseWithoutTablesBecomesAStore()
    {
        OtherConnection(path()).run(QStringLiteral("VACUUM"));
        QVERIFY(!contentOf(path()).isEmpty());
        ResultFile(path(), {}).append(resultAt(noon()));
        QCOMPARE(allOf(path()).size(), std::size_t(1));
    }

    /// It looks like one without tables, which would become a store.
    void aDatabaseThatHasLostItsTablesIsRefusedAndStaysAsItIs()
    {
        OtherConnection(path()).run(QStringLiteral("CREATE TABLE address (name TEXT)"));
        QByteArray content = contentOf(path());
        constexpr int lowByteOfTheNumberOfTables = 104;
        QCOMPARE(content.at(lowByteOfTheNumberOfTables), '\1');
        content[lowByteOfTheNumberOfTables] = '\0';
        write(content);
        checkRefused("it is damaged: *** in database main *** Fragmentation of 60 bytes reported as 0 on page 1");
    }

    void aFileThatIsNoDatabaseIsRefusedAndStaysAsItIs()
    {
        for (int lines : {1, 100}) {
            write(QByteArray("A letter to a friend.\n").repeated(lines));
            checkRefused("it is damaged or no database");
        }
    }

    void aDatabaseOfAnotherProgramIsRefusedAndStaysAsItIs()
    {
        OtherConnection(path()).run(QStringLiteral("CREATE TABLE address (name TEXT)"));
        checkRefused("it is a database of another program");
        OtherConnection(path()).run(QStringLiteral("DROP TABLE address"));
        OtherConnection(path()).run(QStringLiteral("PRAGMA application_id = 7"));
        checkRefused("it is a database of another program");
    }

    void aFileIsCheckedWithoutWaitingForAnotherProgramThatWrites()
    {
        const OtherConnection other(path());
        other.run(QStringLiteral("CREATE TABLE address (name TEXT)"));
        other.run(QStringLiteral("BEGIN IMMEDIATE"));
        checkRefused("it is a database of another program");
        other.run(QStringLiteral("ROLLBACK"));
    }

    void aSchemaThatIsNotKnownIsRefusedAndStaysAsItIs_data()
    {
        QTest::addColumn<int>("version");
        QTest::newRow("newer") << 2;
        QTest::newRow("none") << 0;
    }

    void aSchemaThatIsNotKnownIsRefusedAndStaysAsItIs()
    {
        QFETCH(int, version);
        fill(10);
        OtherConnection(path()).run(QStringLiteral("PRAGMA user_version = %1").arg(version));
        checkRefused(QStringLiteral("its schema is version %1, this program knows version 1 only").arg(version));
    }

    void aLockedFileIsToldOnOpeningAndOpensLater()
    {
        fill(1);
        const OtherConnection other(path());
        other.run(QStringLiteral("BEGIN EXCLUSIVE"));
        const auto error = errorOf([&] { ResultFile(path(), {}); });
        QVERIFY(error);
        QCOMPARE(error->sentence(), refusal("another program has locked it"));
        QVERIFY(error->kind() == ResultFileError::Kind::Locked);
        QCOMPARE(QString::fromUtf8(error->what()), error->sentence());
        other.run(QStringLiteral("ROLLBACK"));
        QCOMPARE(allOf(path()).size(), std::size_t(1));
    }

    void aLockedFileCanBeReadAndIsWrittenLater()
    {
        ResultFile file(path(), {});
        file.append(resultOfSeries(1));
        const OtherConnection other(path());
        other.run(QStringLiteral("BEGIN EXCLUSIVE"));
        const auto error = errorOf([&] { file.append(resultOfSeries(2)); });
        QVERIFY(error);
        QCOMPARE(error->sentence(), path() + QStringLiteral(": cannot be written: another program has locked it"));
        QVERIFY(error->kind() == ResultFileError::Kind::Locked);
        QCOMPARE(frequencies(find(file, everything()).results), ascending(1, 1));
        other.run(QStringLiteral("ROLLBACK"));
        file.append(resultOfSeries(2));
        QCOMPARE(frequencies(find(file, everything()).results), ascending(1, 2));
    }

    void aFullDiskTakesNothingAwayAndIsOvercome()
    {
        ResultFile file(path(), {});
        file.append(resultOfSeries(1));
        const QString connection = onlyConnection();
        const int pages = OtherConnection::run(connection, QStringLiteral("PRAGMA page_count")).toInt();
        OtherConnection::run(connection, QStringLiteral("PRAGMA max_page_count = %1").arg(pages + 3));
        const auto error = errorOf([&] { file.append(resultOfSeries(2, 1000)); });
        QVERIFY(error);
        QCOMPARE(error->sentence(), path() + QStringLiteral(": cannot be written: the disk is full"));
        QVERIFY(error->kind() == ResultFileError::Kind::Other);
        QCOMPARE(frequencies(find(file, everything()).results), ascending(1, 1));
        QCOMPARE(OtherConnection(path()).run(QStringLiteral("SELECT count(*) FROM station_result")).toInt(), 2);

        OtherConnection::run(connection, QStringLiteral("PRAGMA max_page_count = 1000000"));
        file.append(resultOfSeries(2, 1000));
        QCOMPARE(frequencies(find(file, everything()).results), ascending(1, 2));
    }

    void whatCannotBeReadIsTold()
    {
        ResultFile file(path(), {});
        OtherConnection(path()).run(QStringLiteral("DROP TABLE station_result"));
        const QString sentence = sentenceOf([&] { find(file, everything()); });
        QVERIFY2(sentence.startsWith(path() + QStringLiteral(": cannot be read: ")), qPrintable(sentence));
        QVERIFY2(sentence.contains(QStringLiteral("no such table: station_result")), qPrintable(sentence));
    }

    void aValueThatIsNeverStoredIsToldAsDamage_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* change, const char* reason) {
            QTest::newRow(change) << QString::fromLatin1(change) << QString::fromLatin1(reason);
        };
        row("result SET time = 1.5", "time is no whole number");
        row("result SET time = 'noon'", "time is no whole number");
        row("result SET frequency = 'high'", "frequency is no finite number");
        row("result SET frequency = 9e999", "frequency is no finite number");
        row("result SET truth_latitude = NULL", "truth_latitude is no finite number");
        row("result SET truth_longitude = x'31'", "truth_longitude is no finite number");
        row("result SET truth_latitude = NULL, truth_longitude = NULL", "truth_latitude is no finite number");
        row("result SET truth_name = NULL", "truth_name is no text");
        row("result SET truth_name = x'41'", "truth_name is no text");
        row("station_result SET station = 'one'", "station is no whole number");
        row("station_result SET station = 4294967297", "station is no number of 32 bits");
        row("station_result SET name = x'41'", "name is no text");
        row("station_result SET latitude = NULL", "latitude is no finite number");
        row("station_result SET longitude = NULL", "longitude is no finite number");
        row("station_result SET azimuth = 'north'", "azimuth is no finite number");
        row("station_result SET azimuth = -9e999", "azimuth is no finite number");
        row("station_result SET sigma = x''", "sigma is no finite number");
        row("station_result SET quality = ''", "quality is no finite number");
        row("station_result SET level = 'loud'", "level is no finite number");
        row("station_result SET error = 0.5", "error is no whole number");
        row("station_result SET error = -4294967296", "error is no number of 32 bits");
    }

    void aValueThatIsNeverStoredIsToldAsDamage()
    {
        QFETCH(QString, change);
        QFETCH(QString, reason);
        ResultFile file(path(), {});
        DfResult result = resultOfSeries(1);
        result.truth = TrueEmitter{QStringLiteral("Ferry"), {50.5, 6.5}};
        file.append(result);
        QVERIFY(isSame(find(file, everything()).results.at(0), result));
        OtherConnection(path()).run(QStringLiteral("UPDATE ") + change);
        QCOMPARE(sentenceOf([&] { find(file, everything()); }),
                 path() + QStringLiteral(": cannot be read: it is damaged: ") + reason);
    }

    /// Read as 0 it would be ages old, and gone.
    void aResultOfWhichNobodyKnowsWhenItWasStoredIsNotRemoved()
    {
        fill(1);
        OtherConnection(path()).run(QStringLiteral("PRAGMA journal_mode = DELETE"));
        OtherConnection(path()).run(QStringLiteral("UPDATE result SET stored = 'long ago'"));
        checkRefused("it is damaged: stored is no whole number");
        QCOMPARE(OtherConnection(path()).run(QStringLiteral("SELECT count(*) FROM result")).toInt(), 1);
    }

    void anAnswerThatBreaksOffIsAFailure()
    {
        fill(3);
        ResultFile file(path(), {});
        {
            // Reading the oldest result, which comes last, overflows.
            const OtherConnection other(path());
            other.run(QStringLiteral("ALTER TABLE result RENAME TO kept"));
            other.run(QStringLiteral("CREATE VIEW result AS SELECT id, time, abs(-9223372036854775808 + id - 1)"
                                     " AS frequency, truth_name, truth_latitude, truth_longitude FROM kept"));
        }
        const QString sentence = sentenceOf([&] { find(file, everything()); });
        QVERIFY2(sentence.startsWith(path() + QStringLiteral(": cannot be read: ")), qPrintable(sentence));
        ResultQuery newest;
        newest.limit = 1;
        QCOMPARE(find(file, newest).results.size(), std::size_t(1));
    }

    void aFailedResultLeavesNothingOfItself()
    {
        ResultFile file(path(), {});
        const OtherConnection other(path());
        other.run(QStringLiteral("CREATE TRIGGER refuse BEFORE INSERT ON station_result WHEN new.place = 5"
                                 " BEGIN SELECT raise(ABORT, 'no sixth station'); END"));
        const QString sentence = sentenceOf([&] { file.append(resultOfSeries(1, 10)); });
        QVERIFY2(sentence.contains(QStringLiteral("no sixth station")), qPrintable(sentence));
        QCOMPARE(other.run(QStringLiteral("SELECT count(*) FROM result")).toInt(), 0);
        QCOMPARE(other.run(QStringLiteral("SELECT count(*) FROM station_result")).toInt(), 0);
        file.append(resultOfSeries(2, 5));
        QCOMPARE(find(file, everything()).results.size(), std::size_t(1));
    }

private:
    [[nodiscard]] QString refusal(const QString& reason) const
    {
        return path() + QStringLiteral(": cannot be opened: ") + reason;
    }
    [[nodiscard]] QString refusal(const char* reason) const { return refusal(QLatin1String(reason)); }

    static ResultAnswer find(const ResultFile& file, const ResultQuery& query)
    {
        return file.find(query, notCancelled);
    }

    /// The one of the file that a test has open.
    static QString onlyConnection()
    {
        const QStringList names = QSqlDatabase::connectionNames();
        return names.size() == 1 ? names.first() : QString();
    }

    void fill(int results, int stations = 2) const
    {
        ResultFile file(path(), {});
        for (int i = 1; i <= results; ++i)
            file.append(resultOfSeries(i, stations));
    }

    void write(const QByteArray& content) const
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), qint64(content.size()));
    }

    void age(int id, int days) const
    {
        OtherConnection(path()).run(QStringLiteral("UPDATE result SET stored = %1 WHERE id = %2")
                                        .arg(QDateTime::currentDateTimeUtc().addDays(-days).toMSecsSinceEpoch())
                                        .arg(id));
    }

    void checkRefused(const QString& reason) const
    {
        const QByteArray before = contentOf(path());
        const auto error = errorOf([&] { ResultFile(path(), {}); });
        QVERIFY(error);
        QCOMPARE(error->sentence(), refusal(reason));
        QVERIFY(error->kind() == ResultFileError::Kind::Other);
        QCOMPARE(contentOf(path()), before);
    }
    void checkRefused(const char* reason) const { checkRefused(QString(QLatin1String(reason))); }

    template <typename Change>
    static void checkStationObjection(Change change)
    {
        DfResult result = resultAt(noon());
        change(result.stations[1]);
        QCOMPARE(ResultFile::objection(result), QStringLiteral("station 2 has a number that is not finite"));
    }
};

DFL_TEST_MAIN_WITH(TestResultFile, QCoreApplication)
#include "tst_resultfile.moc"
