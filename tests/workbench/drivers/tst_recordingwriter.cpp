#include "drivers/noisegenerator.h"
#include "drivers/recording.h"
#include "drivers/recordingwriter.h"
#include "support/testmain.h"
#include "textfile.h"

#include <cmath>

using namespace workbench;

namespace {

const QByteArray header =
    "shot,date,transmitter,station,latitude_deg,longitude_deg,azimuth_deg,true_latitude_deg,true_longitude_deg\n";

StationResult bearing(const QString& station, double azimuth)
{
    StationResult result;
    result.stationId = 1;
    result.stationName = station;
    result.position = GeoPosition{36.5, -121.75};
    result.azimuth = azimuth;
    return result;
}

DfResult resultOf(std::vector<StationResult> stations)
{
    DfResult result;
    result.date = QDate(2026, 5, 14);
    result.time = QTime(10, 0);
    result.frequency = 100e6;
    result.stations = std::move(stations);
    return result;
}

/// Results of all sorts, the same for a seed.
std::vector<DfResult> randomResults(quint64 seed)
{
    NoiseGenerator noise(seed);
    const auto pick = [&noise](int count) { return static_cast<int>(noise.uniform() * count); };
    const QString pieces[] = {QStringLiteral("a"),    QStringLiteral(","),    QStringLiteral("\""),
                              QStringLiteral("\n"),   QStringLiteral("\r"),   QStringLiteral(" "),
                              QString::fromUtf8("ß"), QStringLiteral("\r\n"), QStringLiteral("z9")};
    const auto name = [&](int number) {
        QString text;
        for (int i = pick(6); i > 0; --i)
            text += pieces[pick(9)];
        return text + QString::number(number);
    };
    const auto position = [&] { return GeoPosition{noise.uniform() * 180.0 - 90.0, noise.uniform() * 360.0 - 180.0}; };
    std::vector<DfResult> results;
    for (int shot = 1 + pick(5); shot > 0; --shot) {
        DfResult result = resultOf({});
        result.date = QDate(2000, 1, 1).addDays(pick(20000));
        if (pick(2) == 0)
            result.truth = TrueEmitter{name(0), position()};
        for (int station = 1 + pick(4); station > 0; --station) {
            result.stations.push_back(bearing(name(station), pick(5) == 0 ? 359.99999 : noise.uniform() * 360.0));
            result.stations.back().position = position();
        }
        results.push_back(result);
    }
    return results;
}

bool areNear(double a, double b, double tolerance)
{
    return std::abs(a - b) <= tolerance;
}

} // namespace

class RecordingWriterTest : public QObject
{
    Q_OBJECT
private slots:
    void aResultIsWrittenInTheColumnsOfTheFormat();
    void anUnknownTruthLeavesItsFieldsEmpty();
    void namesAreQuotedWhenTheyHaveToBe();
    void stationsWithoutABearingGetNoLine();
    void aResultWithoutBearingsCountsAsAShot();
    void anAzimuthNear360IsWrittenAsNorth();
    void nothingIsThereBeforeTheCommit();
    void withoutACommitAnEarlierFileStays();
    void aPlaceThatCannotBeWrittenIsToldAtOnce();
    void aResultThatCannotBeWrittenIsRefusedWhole_data();
    void aResultThatCannotBeWrittenIsRefusedWhole();
    void whatIsWrittenIsReadBack();

private:
    QByteArray written(const std::vector<DfResult>& results)
    {
        const QString file = m_files.path(QStringLiteral("w.csv"));
        RecordingWriter writer(file);
        for (const DfResult& result : results) {
            if (!writer.append(result))
                qFatal("%s", qPrintable(writer.errorString()));
        }
        if (!writer.commit())
            qFatal("%s", qPrintable(writer.errorString()));
        return testsupport::TextFiles::content(file);
    }

    testsupport::TextFiles m_files;
};

void RecordingWriterTest::aResultIsWrittenInTheColumnsOfTheFormat()
{
    DfResult result = resultOf({bearing(QStringLiteral("A"), 278.44444), bearing(QStringLiteral("B"), 5.0)});
    result.truth = TrueEmitter{QStringLiteral("T"), {36.123456789, 10.0}};
    QCOMPARE(written({result, result}), header +
                                            "1,2026-05-14,T,A,36.5000000,-121.7500000,278.4444,36.1234568,10.0000000\n"
                                            "1,2026-05-14,T,B,36.5000000,-121.7500000,5.0000,36.1234568,10.0000000\n"
                                            "2,2026-05-14,T,A,36.5000000,-121.7500000,278.4444,36.1234568,10.0000000\n"
                                            "2,2026-05-14,T,B,36.5000000,-121.7500000,5.0000,36.1234568,10.0000000\n");
}

void RecordingWriterTest::anUnknownTruthLeavesItsFieldsEmpty()
{
    QCOMPARE(written({resultOf({bearing(QStringLiteral("A"), 1.0)})}),
             header + "1,2026-05-14,,A,36.5000000,-121.7500000,1.0000,,\n");
}

void RecordingWriterTest::namesAreQuotedWhenTheyHaveToBe()
{
    DfResult result = resultOf({bearing(QStringLiteral("A, \"B\""), 1.0)});
    result.truth = TrueEmitter{QStringLiteral("C\nD"), {1.0, 2.0}};
    QCOMPARE(written({result}), header + "1,2026-05-14,\"C\nD\",\"A, \"\"B\"\"\",36.5000000,-121.7500000,1.0000,"
                                         "1.0000000,2.0000000\n");
}

void RecordingWriterTest::stationsWithoutABearingGetNoLine()
{
    StationResult silent = bearing(QStringLiteral("B"), 0.0);
    silent.azimuth.reset();
    silent.error = DfError::NoSignal;
    const QByteArray text = written({resultOf({bearing(QStringLiteral("A"), 1.0), silent})});
    QCOMPARE(text.count('\n'), 2);
}

void RecordingWriterTest::aResultWithoutBearingsCountsAsAShot()
{
    const DfResult good = resultOf({bearing(QStringLiteral("A"), 1.0)});
    const QByteArray text = written({good, resultOf({}), good});
    QVERIFY(text.contains("\n1,2026"));
    QVERIFY(!text.contains("\n2,2026"));
    QVERIFY(text.contains("\n3,2026"));
}

void RecordingWriterTest::anAzimuthNear360IsWrittenAsNorth()
{
    QVERIFY(written({resultOf({bearing(QStringLiteral("A"), 359.99996)})}).contains(",0.0000,"));
    QVERIFY(written({resultOf({bearing(QStringLiteral("A"), 359.99994)})}).contains(",359.9999,"));
}

void RecordingWriterTest::nothingIsThereBeforeTheCommit()
{
    const QString file = m_files.path(QStringLiteral("later.csv"));
    RecordingWriter writer(file);
    QVERIFY(writer.append(resultOf({bearing(QStringLiteral("A"), 1.0)})));
    QVERIFY(!QFile::exists(file));
    QVERIFY(writer.commit());
    QVERIFY(QFile::exists(file));
    QCOMPARE(writer.errorString(), QString());
}

void RecordingWriterTest::withoutACommitAnEarlierFileStays()
{
    const QString file = m_files.write(QStringLiteral("earlier.csv"), "earlier");
    {
        RecordingWriter writer(file);
        QVERIFY(writer.append(resultOf({bearing(QStringLiteral("A"), 1.0)})));
    }
    QCOMPARE(testsupport::TextFiles::content(file), QByteArray("earlier"));
}

void RecordingWriterTest::aPlaceThatCannotBeWrittenIsToldAtOnce()
{
    const QString file = m_files.path(QStringLiteral("nofolder/w.csv"));
    RecordingWriter writer(file);
    const QString error = file + QStringLiteral(": cannot be written: No such file or directory");
    QCOMPARE(writer.errorString(), error);
    QVERIFY(!writer.append(resultOf({bearing(QStringLiteral("A"), 1.0)})));
    QCOMPARE(writer.errorString(), error);
    QVERIFY(!writer.commit());
    QCOMPARE(writer.errorString(), error);
}

void RecordingWriterTest::aResultThatCannotBeWrittenIsRefusedWhole_data()
{
    QTest::addColumn<DfResult>("result");
    QTest::addColumn<QString>("reason");
    const StationResult good = bearing(QStringLiteral("A"), 1.0);
    DfResult dateless = resultOf({good});
    dateless.date = QDate();
    QTest::newRow("no date") << dateless << QStringLiteral("the result has no date");
    DfResult nameless = resultOf({good});
    nameless.truth = TrueEmitter{};
    QTest::newRow("nameless transmitter") << nameless << QStringLiteral("the transmitter has no name");
    StationResult lost = bearing(QStringLiteral("B"), 1.0);
    lost.position.reset();
    QTest::newRow("no position") << resultOf({good, lost}) << QStringLiteral("station B has no position");
    StationResult unnamed = bearing(QString(), 1.0);
    unnamed.stationId = 8;
    QTest::newRow("nameless station") << resultOf({good, unnamed}) << QStringLiteral("station 8 has no name");
    QTest::newRow("station twice") << resultOf({good, good}) << QStringLiteral("station A has two bearings");
}

void RecordingWriterTest::aResultThatCannotBeWrittenIsRefusedWhole()
{
    QFETCH(DfResult, result);
    QFETCH(QString, reason);
    const QString file = m_files.path(QStringLiteral("refused.csv"));
    RecordingWriter writer(file);
    QVERIFY(!writer.append(result));
    QCOMPARE(writer.errorString(), file + QStringLiteral(": cannot be written: ") + reason);
    QVERIFY(writer.append(resultOf({bearing(QStringLiteral("A"), 1.0)})));
    QVERIFY(writer.commit());
    QCOMPARE(testsupport::TextFiles::content(file).mid(header.size()),
             QByteArray("1,2026-05-14,,A,36.5000000,-121.7500000,1.0000,,\n"));
}

void RecordingWriterTest::whatIsWrittenIsReadBack()
{
    for (quint64 seed = 1; seed <= 200; ++seed) {
        const std::vector<DfResult> results = randomResults(seed);
        const QByteArray text = written(results);
        const Loaded<Recording> loaded = loadRecording(m_files.path(QStringLiteral("w.csv")));
        QVERIFY2(loaded, qPrintable(loaded.errors.join(QLatin1Char('\n'))));
        QCOMPARE(loaded.value->shots.size(), results.size());
        for (std::size_t shot = 0; shot < results.size(); ++shot) {
            const DfResult& read = loaded.value->shots[shot];
            const DfResult& original = results[shot];
            QCOMPARE(read.date, original.date);
            QCOMPARE(read.truth.has_value(), original.truth.has_value());
            if (read.truth) {
                QCOMPARE(read.truth->name, original.truth->name);
                QVERIFY(areNear(read.truth->position.latitude, original.truth->position.latitude, 5.1e-8));
                QVERIFY(areNear(read.truth->position.longitude, original.truth->position.longitude, 5.1e-8));
            }
            QCOMPARE(read.stations.size(), original.stations.size());
            for (std::size_t i = 0; i < read.stations.size(); ++i) {
                QCOMPARE(read.stations[i].stationName, original.stations[i].stationName);
                const double difference = std::abs(*read.stations[i].azimuth - *original.stations[i].azimuth);
                QVERIFY(std::min(difference, 360.0 - difference) <= 5.1e-5);
                QVERIFY(areNear(read.stations[i].position->latitude, original.stations[i].position->latitude, 5.1e-8));
                QVERIFY(
                    areNear(read.stations[i].position->longitude, original.stations[i].position->longitude, 5.1e-8));
            }
        }
        QCOMPARE(written(loaded.value->shots), text);
    }
}

DFL_TEST_MAIN_WITH(RecordingWriterTest, QCoreApplication)
#include "tst_recordingwriter.moc"
