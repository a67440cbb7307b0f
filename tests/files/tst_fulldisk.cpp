#include "history/resultfile.h"
#include "room.h"
#include "support/testmain.h"
#include "writers.h"

#include <QTemporaryDir>

using namespace testsupport;
using workbench::DfResult;
using workbench::ResultFile;
using workbench::ResultFileError;
using workbench::StationResult;

namespace {

const std::atomic<bool> notCancelled{false};

/// So large that it takes several pages.
DfResult resultOfSeries(int index)
{
    DfResult result;
    result.date = QDate(2026, 5, 14);
    result.time = QTime(10, 0).addSecs(index);
    result.frequency = index;
    for (int i = 0; i < 200; ++i) {
        StationResult station;
        station.stationId = i + 1;
        station.stationName = QStringLiteral("Station %1").arg(i);
        station.position = workbench::GeoPosition{50.0, 6.0};
        station.azimuth = 45.0;
        result.stations.push_back(station);
    }
    return result;
}

/// The frequencies of all results; each result has to be whole.
std::vector<double> storedIn(const ResultFile& file)
{
    std::vector<double> frequencies;
    const workbench::ResultAnswer answer = file.find({}, notCancelled);
    for (const DfResult& result : answer.results) {
        if (result.stations.size() != 200)
            qFatal("a result has %d stations", static_cast<int>(result.stations.size()));
        frequencies.push_back(*result.frequency);
    }
    return frequencies;
}

template <typename Operation>
QString sentenceOf(Operation operation)
{
    try {
        operation();
    } catch (const ResultFileError& error) {
        return error.sentence();
    }
    return {};
}

} // namespace

class TestFullDisk : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
    }

    void nothingIsThereAfterAFailure_data() { addWriters(); }

    void nothingIsThereAfterAFailure()
    {
        QFETCH(int, writer);
        QFETCH(bool, isLong);
        QCOMPARE(tryWith(0, writer, isLong), QString("No space left on device"));
        QCOMPARE(filesIn(m_folder->path()), QStringList());
    }

    void theOldContentStaysWhereverTheDiskIsFull_data() { addWriters(); }

    void theOldContentStaysWhereverTheDiskIsFull()
    {
        QFETCH(int, writer);
        QFETCH(bool, isLong);
        const QString file = fileOf(writer);
        QCOMPARE(writers()[writer].write(file, 1, isLong), QString());
        const QByteArray old = contentOf(file);
        const qint64 needed = bytesNeeded(writer, isLong);
        for (const qint64 room : {qint64(0), qint64(1), needed / 2, needed - 1}) {
            QCOMPARE(tryWith(room, writer, isLong), QString("No space left on device"));
            QCOMPARE(contentOf(file), old);
            QCOMPARE(filesIn(m_folder->path()), QStringList(QString::fromLatin1(writers()[writer].fileName)));
        }
        QCOMPARE(tryWith(needed, writer, isLong), QString());
        QVERIFY(contentOf(file) != old);
    }

    void whatWasNotTakenFitsLater_data() { addWriters(); }

    void whatWasNotTakenFitsLater()
    {
        QFETCH(int, writer);
        QFETCH(bool, isLong);
        QVERIFY(!tryWith(1, writer, isLong).isEmpty());
        QCOMPARE(writers()[writer].write(fileOf(writer), 2, isLong), QString());
        QVERIFY(!contentOf(fileOf(writer)).isEmpty());
    }

    void aRecordingThatTheDiskDidNotTakeIsGivenUp()
    {
        const QString file = m_folder->filePath(QStringLiteral("bearings.csv"));
        const QString sentence = file + QStringLiteral(": cannot be written: No space left on device");
        workbench::RecordingWriter recording(file);
        QVERIFY(recording.append(resultOfSeries(1)));
        {
            const Room limit(100);
            QVERIFY(!recording.append(resultOfSeries(2)));
            QCOMPARE(recording.errorString(), sentence);
        }
        QVERIFY(!recording.append(resultOfSeries(3)));
        QCOMPARE(recording.errorString(), sentence);
        QVERIFY(!recording.commit());
        QCOMPARE(recording.errorString(), sentence);
        QCOMPARE(filesIn(m_folder->path()), QStringList());
    }

    /// A result on several pages, with room for each part of it but not for all.
    void aStoreHasWholeResultsWhereverTheDiskIsFull()
    {
        const QString path = m_folder->filePath(QStringLiteral("history.sqlite"));
        const qint64 needed = bytesNeededToStore();
        QVERIFY(needed > 4 * 4096);
        int attempt = 0;
        for (qint64 room = 0; room < needed; room += 1000) {
            const QString file = path + QString::number(++attempt);
            ResultFile store(file, {});
            store.append(resultOfSeries(1));
            {
                const Room limit(room);
                QCOMPARE(sentenceOf([&] { store.append(resultOfSeries(2)); }),
                         file + QString(": cannot be written: the disk is full"));
                QCOMPARE(storedIn(store), std::vector<double>{1.0});
            }
            store.append(resultOfSeries(3));
            QCOMPARE(storedIn(store), (std::vector<double>{1.0, 3.0}));
            // Opening checks the whole file.
            QCOMPARE(storedIn(ResultFile(file, {})), (std::vector<double>{1.0, 3.0}));
        }
    }

    void aStoreThatCannotBeMadeIsToldAndMadeLater()
    {
        const qint64 needed = bytesNeededToMake();
        const qint64 lastPage =
            4096; // SQLite makes up for it later: where it has no room, the store is made all the same
        QVERIFY(needed > 2 * lastPage);
        int attempt = 0;
        for (qint64 room = 0; room < needed; room += 500) {
            const QString path = m_folder->filePath(QStringLiteral("history%1.sqlite").arg(++attempt));
            {
                const Room limit(room);
                const QString sentence = sentenceOf([&] { ResultFile(path, {}); });
                if (room < needed - lastPage || !sentence.isEmpty())
                    QCOMPARE(sentence, path + QString(": cannot be opened: the disk is full"));
            }
            ResultFile store(path, {});
            store.append(resultOfSeries(1));
            QCOMPARE(storedIn(store), std::vector<double>{1.0});
        }
    }

private:
    static void addWriters()
    {
        QTest::addColumn<int>("writer");
        QTest::addColumn<bool>("isLong");
        for (int i = 0; i < static_cast<int>(writers().size()); ++i) {
            QTest::addRow("%s, short", writers()[i].name) << i << false;
            QTest::addRow("%s, long", writers()[i].name) << i << true;
        }
    }

    [[nodiscard]] QString fileOf(int writer) const
    {
        return m_folder->filePath(QString::fromLatin1(writers()[writer].fileName));
    }

    /// The reason of the failure, which the sentence gives behind the file; empty without one.
    [[nodiscard]] QString tryWith(qint64 bytes, int writer, bool isLong) const
    {
        const Room limit(bytes);
        const QString sentence = writers()[writer].write(fileOf(writer), 2, isLong);
        if (sentence.isEmpty())
            return {};
        if (!sentence.startsWith(fileOf(writer) + QLatin1String(": ")))
            return QStringLiteral("a sentence without the file: ") + sentence;
        QString reason = sentence.section(QStringLiteral(": "), -1);
        if (reason.endsWith(QLatin1Char('.')))
            reason.chop(1);
        return reason;
    }

    /// How much room the second version of a file takes.
    [[nodiscard]] static qint64 bytesNeeded(int writer, bool isLong)
    {
        const QTemporaryDir elsewhere;
        const Room plenty(1LL << 40);
        if (!writers()[writer]
                 .write(elsewhere.filePath(QString::fromLatin1(writers()[writer].fileName)), 2, isLong)
                 .isEmpty())
            qFatal("%s cannot be written", writers()[writer].name);
        return (1LL << 40) - Room::left();
    }

    [[nodiscard]] static qint64 bytesNeededToMake()
    {
        const QTemporaryDir elsewhere;
        const Room plenty(1LL << 40);
        ResultFile(elsewhere.filePath(QStringLiteral("history.sqlite")), {});
        return (1LL << 40) - Room::left();
    }

    [[nodiscard]] static qint64 bytesNeededToStore()
    {
        const QTemporaryDir elsewhere;
        ResultFile store(elsewhere.filePath(QStringLiteral("history.sqlite")), {});
        store.append(resultOfSeries(1));
        const Room plenty(1LL << 40);
        store.append(resultOfSeries(2));
        return (1LL << 40) - Room::left();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

DFL_TEST_MAIN(TestFullDisk)
#include "tst_fulldisk.moc"
