#include "drivers/csv.h"
#include "drivers/recording.h"
#include "support/testmain.h"
#include "textfile.h"

#include <QSignalSpy>

using namespace workbench;

namespace {

const QByteArray header =
    "shot,date,transmitter,station,latitude_deg,longitude_deg,azimuth_deg,true_latitude_deg,true_longitude_deg\n";
const QByteArray bearing = "1,2012-06-18,Arthur,Bridge,36.5,-121.75,78.5,36.25,-121.5\n";

QByteArray changed(const QByteArray& from, const QByteArray& to)
{
    return QByteArray(bearing).replace(from, to);
}

} // namespace

class RecordingTest : public QObject
{
    Q_OBJECT
private slots:
    void init() { qRegisterMetaType<DfResult>("workbench::DfResult"); }

    void aBearingIsReadWithAllItsFields();
    void whatIsNotRecordedIsAbsent();
    void linesOfOneShotStandInOneResult();
    void stationsAreNumberedByFirstAppearance();
    void columnsMayComeInAnyOrder();
    void byteOrderMarkCrLfAndEmptyLinesMakeNoDifference();
    void aMissingLineBreakAtTheEndMakesNoDifference();
    void quotedNamesMayHoldCommasQuotesAndLineBreaks();
    void anAzimuthOf360IsNorth();
    void theTruthMayBeUnknown();
    void shotNumbersMayHaveGaps();
    void oneErrorIsToldWithFileLineAndField_data();
    void oneErrorIsToldWithFileLineAndField();
    void allBadLinesAreToldAndNothingIsLoaded();
    void ofAFileFullOfErrorsTheRestIsCounted();
    void aMissingFileIsToldWithItsReason();
    void aFileThatIsTooLargeIsToldWithItsSizeAndTheLimit();
    void readingGoesOnBehindAFlaw();
    void fieldsAreQuotedOnlyWhenTheyHaveToBe();

    void eachMeasurementPlaysTheNextShot();
    void behindTheLastShotItFails();
    void aMeasurementGivenUpPlaysNoShot();
    void statedDefaultsFillWhatIsNotRecorded();
    void withoutDefaultsNothingIsInvented();
    void theNetworkTellsItsNameAndStations();

private:
    Loaded<Recording> load(const QByteArray& text)
    {
        return loadRecording(m_files.write(QStringLiteral("r.csv"), text));
    }
    QStringList errorsOf(const QByteArray& text)
    {
        const Loaded<Recording> loaded = load(text);
        QStringList errors = loaded.errors;
        if (loaded.value.has_value() == !errors.isEmpty())
            errors += QStringLiteral("a recording and errors exclude each other");
        for (QString& error : errors)
            error.replace(m_files.path(QStringLiteral("r.csv")), QStringLiteral("r.csv"));
        return errors;
    }
    Recording loadGood(const QByteArray& text)
    {
        const Loaded<Recording> loaded = load(text);
        if (!loaded)
            qFatal("%s", qPrintable(loaded.errors.join(QLatin1Char('\n'))));
        return *loaded.value;
    }

    testsupport::TextFiles m_files;
};

void RecordingTest::aBearingIsReadWithAllItsFields()
{
    const Recording recording = loadGood(header + bearing);
    QCOMPARE(recording.fileName, QStringLiteral("r.csv"));
    QCOMPARE(recording.shots.size(), std::size_t(1));
    const DfResult& shot = recording.shots[0];
    QCOMPARE(shot.date, QDate(2012, 6, 18));
    QCOMPARE(shot.truth->name, QStringLiteral("Arthur"));
    QCOMPARE(shot.truth->position.latitude, 36.25);
    QCOMPARE(shot.truth->position.longitude, -121.5);
    QCOMPARE(shot.stations.size(), std::size_t(1));
    QCOMPARE(shot.stations[0].stationId, 1);
    QCOMPARE(shot.stations[0].stationName, QStringLiteral("Bridge"));
    QCOMPARE(shot.stations[0].position->latitude, 36.5);
    QCOMPARE(shot.stations[0].position->longitude, -121.75);
    QCOMPARE(*shot.stations[0].azimuth, 78.5);
    QCOMPARE(shot.stations[0].error, DfError::None);
}

void RecordingTest::whatIsNotRecordedIsAbsent()
{
    const Recording recording = loadGood(header + bearing);
    QVERIFY(!recording.shots[0].frequency);
    QVERIFY(!recording.shots[0].time.isValid());
    QVERIFY(!recording.shots[0].stations[0].level);
    QVERIFY(!recording.shots[0].stations[0].quality);
    QVERIFY(!recording.stations[0].range);
}

void RecordingTest::linesOfOneShotStandInOneResult()
{
    const Recording recording = loadGood(header + bearing + changed("Bridge", "Point") + changed("1,", "2,"));
    QCOMPARE(recording.shots.size(), std::size_t(2));
    QCOMPARE(recording.shots[0].stations.size(), std::size_t(2));
    QCOMPARE(recording.shots[0].stations[1].stationName, QStringLiteral("Point"));
    QCOMPARE(recording.shots[1].stations.size(), std::size_t(1));
}

void RecordingTest::stationsAreNumberedByFirstAppearance()
{
    QByteArray second = changed("Bridge", "Point");
    QByteArray third = changed("Bridge", "Alpha").replace(0, 1, "2");
    QByteArray fourth = QByteArray(bearing).replace(0, 1, "2").replace("36.5", "37");
    const Recording recording = loadGood(header + bearing + second + third + fourth);
    QCOMPARE(recording.stations.size(), std::size_t(3));
    const QStringList names{recording.stations[0].name, recording.stations[1].name, recording.stations[2].name};
    QCOMPARE(names, (QStringList{QStringLiteral("Bridge"), QStringLiteral("Point"), QStringLiteral("Alpha")}));
    for (int i = 0; i < 3; ++i)
        QCOMPARE(recording.stations[static_cast<std::size_t>(i)].id, i + 1);
    QCOMPARE(recording.stations[0].position->latitude, 36.5);
    QCOMPARE(recording.shots[1].stations[0].stationId, 3);
    QCOMPARE(recording.shots[1].stations[1].stationId, 1);
    QCOMPARE(recording.shots[1].stations[1].position->latitude, 37.0);
}

void RecordingTest::columnsMayComeInAnyOrder()
{
    const Recording recording = loadGood("azimuth_deg,true_longitude_deg,shot,station,date,true_latitude_deg,"
                                         "longitude_deg,transmitter,latitude_deg\n"
                                         "78.5,-121.5,4,Bridge,2012-06-18,36.25,-121.75,Arthur,36.5\n");
    QCOMPARE(*recording.shots.at(0).stations.at(0).azimuth, 78.5);
    QCOMPARE(recording.shots[0].stations[0].position->longitude, -121.75);
    QCOMPARE(recording.shots[0].truth->position.latitude, 36.25);
}

void RecordingTest::byteOrderMarkCrLfAndEmptyLinesMakeNoDifference()
{
    QByteArray text = "\xEF\xBB\xBF" + header + "\n" + bearing + "\n" + changed("Bridge", "Point") + "\n\n";
    text.replace("\n", "\r\n");
    const Recording recording = loadGood(text);
    QCOMPARE(recording.shots.size(), std::size_t(1));
    QCOMPARE(recording.shots[0].stations.size(), std::size_t(2));
    QCOMPARE(recording.shots[0].truth->position.longitude, -121.5); // the field at the line's end
}

void RecordingTest::aMissingLineBreakAtTheEndMakesNoDifference()
{
    QCOMPARE(loadGood((header + bearing).trimmed()).shots.size(), std::size_t(1));
}

void RecordingTest::quotedNamesMayHoldCommasQuotesAndLineBreaks()
{
    const Recording recording =
        loadGood(header + changed("Bridge", "\"Old \"\"Bridge\"\",\r\nSouth\"") + changed("Bridge", "\"Plain\""));
    QCOMPARE(recording.stations.at(0).name, QStringLiteral("Old \"Bridge\",\r\nSouth"));
    QCOMPARE(recording.stations.at(1).name, QStringLiteral("Plain"));
}

void RecordingTest::anAzimuthOf360IsNorth()
{
    QCOMPARE(*loadGood(header + changed("78.5", "360")).shots[0].stations[0].azimuth, 0.0);
    QCOMPARE(*loadGood(header + changed("78.5", "0")).shots[0].stations[0].azimuth, 0.0);
}

void RecordingTest::theTruthMayBeUnknown()
{
    QVERIFY(!loadGood(header + "1,2012-06-18,,Bridge,36.5,-121.75,78.5,,\n").shots[0].truth);
}

void RecordingTest::shotNumbersMayHaveGaps()
{
    QCOMPARE(loadGood(header + changed("1,2", "3,2") + changed("1,2", "9,2")).shots.size(), std::size_t(2));
}

void RecordingTest::oneErrorIsToldWithFileLineAndField_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("error");
    const auto file = [](const char* name, const QByteArray& text, const char* error) {
        QTest::newRow(name) << text << QString::fromUtf8(error);
    };
    file("empty file", "", "r.csv:1: header: expected the names of the columns, found nothing");
    file("only line breaks", "\n\r\n", "r.csv:1: header: expected the names of the columns, found nothing");
    file("only a header", header, "r.csv:1: shot: expected a bearing below the names of the columns, found nothing");
    file("unknown column", QByteArray(header).replace("shot", "shot,level") + "1," + bearing,
         "r.csv:1: \"level\": no such column");
    file("missing column", QByteArray(header).replace(",azimuth_deg", "") + bearing,
         "r.csv:1: azimuth_deg: column is missing");
    file("column twice", QByteArray(header).replace("shot", "shot,shot") + "1," + bearing,
         "r.csv:1: shot: column is given more than once");
    file("too few fields", header + bearing + "1,2012-06-18\n", "r.csv:3: line: expected 9 fields, found 2");
    file("too many fields", header + changed("\n", ",\n"), "r.csv:2: line: expected 9 fields, found 10");

    const auto line = [](const char* name, const QByteArray& from, const QByteArray& to, const char* error) {
        QTest::newRow(name) << header + changed(from, to) << QString::fromUtf8(error);
    };
    line("shot zero", "1,2012", "0,2012", "r.csv:2: shot: expected a positive whole number, found \"0\"");
    line("shot broken", "1,2012", "1.5,2012", "r.csv:2: shot: expected a positive whole number, found \"1.5\"");
    line("shot empty", "1,2012", ",2012", "r.csv:2: shot: expected a positive whole number, found nothing");
    line("date form", "2012-06-18", "18.06.2012", "r.csv:2: date: expected a date as yyyy-MM-dd, found \"18.06.2012\"");
    line("date impossible", "06-18", "06-31", "r.csv:2: date: expected a date as yyyy-MM-dd, found \"2012-06-31\"");
    line("date short", "06-18", "6-18", "r.csv:2: date: expected a date as yyyy-MM-dd, found \"2012-6-18\"");
    line("date empty", "2012-06-18", "", "r.csv:2: date: expected a date as yyyy-MM-dd, found nothing");
    line("station empty", "Bridge", "", "r.csv:2: station: expected a name, found nothing");
    line("latitude", "36.5", "90.01", "r.csv:2: latitude_deg: expected degrees from -90 to 90, found \"90.01\"");
    line("latitude no number", "36.5", "north",
         "r.csv:2: latitude_deg: expected degrees from -90 to 90, found \"north\"");
    line("longitude", "-121.75", "-180.5",
         "r.csv:2: longitude_deg: expected degrees from -180 to 180, found \"-180.5\"");
    line("longitude nan", "-121.75", "nan", "r.csv:2: longitude_deg: expected degrees from -180 to 180, found \"nan\"");
    line("azimuth above", "78.5", "360.001", "r.csv:2: azimuth_deg: expected degrees from 0 to 360, found \"360.001\"");
    line("azimuth below", "78.5", "-0.1", "r.csv:2: azimuth_deg: expected degrees from 0 to 360, found \"-0.1\"");
    line("azimuth empty", "78.5", "", "r.csv:2: azimuth_deg: expected degrees from 0 to 360, found nothing");
    line("true latitude", "36.25", "-91", "r.csv:2: true_latitude_deg: expected degrees from -90 to 90, found \"-91\"");
    line("true longitude", ",-121.5\n", ",\n",
         "r.csv:2: true_longitude_deg: expected degrees from -180 to 180, found nothing");
    line("transmitter empty", "Arthur", "",
         "r.csv:2: transmitter: expected a name, because a true position is given, found nothing");
    line("quotes within", "Bridge", "Bri\"dge", "r.csv:2: text: expected quotes only around a whole field");
    line("text behind quotes", "Bridge", "\"Bridge\"x",
         "r.csv:2: text: expected a comma or the end of the line behind closing quotes");
    line("no UTF-8", "Bridge", "Br\xFC\x63ke", "r.csv:2: text: expected UTF-8");
    line("cut off UTF-8", "-121.5\n", "-121.5\n\n\xC3", "r.csv:4: text: expected UTF-8");

    const auto second = [](const char* name, const QByteArray& secondLine, const char* error) {
        QTest::newRow(name) << header + changed("1,2012", "5,2012") + secondLine << QString::fromUtf8(error);
    };
    second("shots descending", changed("1,2012", "4,2012"),
           "r.csv:3: shot: expected a number that is not below 5, the one of the line before, found \"4\"");
    second("station twice", changed("1,2012", "5,2012"),
           "r.csv:3: station: expected a station that shot 5 does not have yet, found \"Bridge\"");
    second("another date", "5,2012-06-19,Arthur,Point,36.5,-121.75,78.5,36.25,-121.5\n",
           "r.csv:3: date: expected the same as in the first line of shot 5, found \"2012-06-19\"");
    second("another transmitter", "5,2012-06-18,Bert,Point,36.5,-121.75,78.5,36.25,-121.5\n",
           "r.csv:3: transmitter: expected the same as in the first line of shot 5, found \"Bert\"");
    second("another true latitude", "5,2012-06-18,Arthur,Point,36.5,-121.75,78.5,36.26,-121.5\n",
           "r.csv:3: true_latitude_deg: expected the same as in the first line of shot 5, found \"36.26\"");
    second("another true longitude", "5,2012-06-18,Arthur,Point,36.5,-121.75,78.5,36.25,-121.6\n",
           "r.csv:3: true_longitude_deg: expected the same as in the first line of shot 5, found \"-121.6\"");
    second("line after a record on two lines",
           "5,2012-06-18,Arthur,\"Po\nint\",36.5,-121.75,78.5,36.25,-121.5\n" + changed("1,2012", "x,2012"),
           "r.csv:5: shot: expected a positive whole number, found \"x\"");
}

void RecordingTest::oneErrorIsToldWithFileLineAndField()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, error);
    QCOMPARE(errorsOf(text).join(QLatin1Char('\n')), error);
}

void RecordingTest::allBadLinesAreToldAndNothingIsLoaded()
{
    const QString file = QStringLiteral(TEST_DATA_DIR "/manyerrors.csv");
    const Loaded<Recording> loaded = loadRecording(file);
    QVERIFY(!loaded);
    QStringList actual = loaded.errors;
    for (QString& error : actual) {
        QVERIFY(error.startsWith(file));
        error.remove(0, file.size());
    }
    const QStringList expected{
        QStringLiteral(":3: azimuth_deg: expected degrees from 0 to 360, found \"361\""),
        QStringLiteral(":4: date: expected a date as yyyy-MM-dd, found \"today\""),
        QStringLiteral(":4: latitude_deg: expected degrees from -90 to 90, found \"x\""),
        QStringLiteral(":6: line: expected 9 fields, found 3"),
        QStringLiteral(":7: text: expected UTF-8"),
        QStringLiteral(":8: shot: expected a number that is not below 3, the one of the line before, found \"1\""),
        QStringLiteral(":9: text: expected closing quotes for those that open here"),
        QStringLiteral(":9: line: expected 9 fields, found 4"),
    };
    QCOMPARE(actual.join(QLatin1Char('\n')), expected.join(QLatin1Char('\n')));
}

void RecordingTest::ofAFileFullOfErrorsTheRestIsCounted()
{
    const auto errorsOfBadLines = [this](int count) { return errorsOf(header + QByteArray("x\n").repeated(count)); };
    const QStringList all = errorsOfBadLines(1000);
    QCOMPARE(all.size(), 1000);
    QCOMPARE(all.last(), QStringLiteral("r.csv:1001: line: expected 9 fields, found 1"));
    QCOMPARE(errorsOfBadLines(1001), all + QStringList{QStringLiteral("r.csv: 1 more error")});
    QCOMPARE(errorsOfBadLines(2500), all + QStringList{QStringLiteral("r.csv: 1500 more errors")});
}

void RecordingTest::aMissingFileIsToldWithItsReason()
{
    const QString file = m_files.path(QStringLiteral("none.csv"));
    const Loaded<Recording> loaded = loadRecording(file);
    QVERIFY(!loaded);
    QCOMPARE(loaded.errors, QStringList{file + QStringLiteral(": cannot be read: No such file or directory")});
}

void RecordingTest::aFileThatIsTooLargeIsToldWithItsSizeAndTheLimit()
{
    const QString file = m_files.write(QStringLiteral("large.csv"), header + bearing);
    QVERIFY(QFile::resize(file, 268435457));
    const Loaded<Recording> loaded = loadRecording(file);
    QVERIFY(!loaded);
    QCOMPARE(loaded.errors,
             QStringList{file + QStringLiteral(": cannot be read: it is too large: 268435457 bytes, at most 268435456 "
                                               "are allowed")});
}

void RecordingTest::readingGoesOnBehindAFlaw()
{
    const csv::Table table = csv::parse("a\"b,c\n\"d\"e,f\ng,\"h");
    QCOMPARE(table.flaws.size(), std::size_t(3));
    QCOMPARE(table.flaws[2].line, 3);
    QCOMPARE(table.records.size(), std::size_t(3));
    QCOMPARE(table.records[0].fields.at(1), QStringLiteral("c"));
    QCOMPARE(table.records[1].fields.at(1), QStringLiteral("f"));
}

void RecordingTest::fieldsAreQuotedOnlyWhenTheyHaveToBe()
{
    QCOMPARE(csv::quoted(QStringLiteral("plain name")), QStringLiteral("plain name"));
    QCOMPARE(csv::quoted(QStringLiteral("a,b")), QStringLiteral("\"a,b\""));
    QCOMPARE(csv::quoted(QStringLiteral("a\"b")), QStringLiteral("\"a\"\"b\""));
    QCOMPARE(csv::quoted(QStringLiteral("a\nb")), QStringLiteral("\"a\nb\""));
    QCOMPARE(csv::quoted(QStringLiteral("a\rb")), QStringLiteral("\"a\rb\""));
    QCOMPARE(csv::quoted(QString()), QString());
}

void RecordingTest::eachMeasurementPlaysTheNextShot()
{
    RecordedNetwork network(loadGood(header + bearing + changed("1,2012", "2,2012").replace("78.5", "79.5")), {},
                            Pacing::Immediate);
    QSignalSpy measured(&network, &DfSource::measured);
    QCOMPARE(network.measurementsLeft(), std::optional<int>(2));
    network.measure({});
    QCOMPARE(measured.count(), 0); // from the event loop, not at once
    QTRY_COMPARE(measured.count(), 1);
    QCOMPARE(network.measurementsLeft(), std::optional<int>(1));
    network.measure({});
    QTRY_COMPARE(measured.count(), 2);
    QCOMPARE(*measured[0][0].value<DfResult>().stations[0].azimuth, 78.5);
    QCOMPARE(*measured[1][0].value<DfResult>().stations[0].azimuth, 79.5);
    QCOMPARE(network.measurementsLeft(), std::optional<int>(0));
}

void RecordingTest::behindTheLastShotItFails()
{
    RecordedNetwork network(loadGood(header + bearing), {}, Pacing::Immediate);
    QSignalSpy measured(&network, &DfSource::measured);
    QSignalSpy failed(&network, &DfSource::failed);
    network.measure({});
    QTRY_COMPARE(measured.count(), 1);
    network.measure({});
    QTRY_COMPARE(failed.count(), 1);
    QCOMPARE(failed[0][0].toString(), QStringLiteral("The recording r.csv has no further shot."));
    QCOMPARE(measured.count(), 1);
}

void RecordingTest::aMeasurementGivenUpPlaysNoShot()
{
    RecordedNetwork network(loadGood(header + bearing), {}, Pacing::Immediate);
    QSignalSpy measured(&network, &DfSource::measured);
    network.measure({});
    network.cancel();
    QCoreApplication::processEvents();
    QCOMPARE(measured.count(), 0);
    QCOMPARE(network.measurementsLeft(), std::optional<int>(1));
    network.measure({});
    network.measure({});
    QTRY_COMPARE(measured.count(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(measured.count(), 1);
}

void RecordingTest::statedDefaultsFillWhatIsNotRecorded()
{
    RecordedDefaults defaults;
    defaults.frequency = 164e6;
    defaults.level = 33.5;
    defaults.quality = 80.0;
    defaults.sigma = 2.5;
    defaults.time = QTime(12, 30);
    RecordedNetwork network(loadGood(header + bearing), defaults, Pacing::Immediate);
    QSignalSpy measured(&network, &DfSource::measured);
    network.measure({});
    QTRY_COMPARE(measured.count(), 1);
    const auto result = measured[0][0].value<DfResult>();
    QCOMPARE(result.frequency, defaults.frequency);
    QCOMPARE(result.time, QTime(12, 30));
    QCOMPARE(result.stations[0].level, defaults.level);
    QCOMPARE(result.stations[0].quality, defaults.quality);
    QCOMPARE(result.stations[0].sigma, defaults.sigma);
    QCOMPARE(network.initialFrequency(), defaults.frequency);
}

void RecordingTest::withoutDefaultsNothingIsInvented()
{
    RecordedNetwork network(loadGood(header + bearing), {}, Pacing::Immediate);
    QSignalSpy measured(&network, &DfSource::measured);
    DfRequest request;
    request.frequency = 100e6;
    network.measure(request);
    QTRY_COMPARE(measured.count(), 1);
    const auto result = measured[0][0].value<DfResult>();
    QVERIFY(!result.frequency);
    QVERIFY(!result.time.isValid());
    QVERIFY(!result.stations[0].level);
    QVERIFY(!result.stations[0].quality);
    QVERIFY(!network.initialFrequency());
}

void RecordingTest::theNetworkTellsItsNameAndStations()
{
    RecordedNetwork network(loadGood(header + bearing), {}, Pacing::RealTime);
    QCOMPARE(network.name(), QStringLiteral("Recording r.csv"));
    QCOMPARE(network.stations().size(), std::size_t(1));
    QVERIFY(network.hriStations().empty());
}

DFL_TEST_MAIN_WITH(RecordingTest, QCoreApplication)
#include "tst_recording.moc"
