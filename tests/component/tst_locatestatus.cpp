#include "locatestatus.h"

#include "support/testmain.h"

#include <QRandomGenerator>
#include <QTranslator>

#include <algorithm>

using namespace VelmarGui;

namespace {

const QString tick = QStringLiteral("<IMG src=\":/icons/OK\" width = 16 height = 16 >");

const QString dfTableHead = QStringLiteral(
    "<TABLE border = \"1\" frame = \"hsides\" rules = \"groups\"summary = \"Locate DF status display\"of MS "
    "Windows.\"><CAPTION><B>Locate (Online) is connected</B></CAPTION><COLGROUP align = \"center\"><THEAD "
    "valign = \"top\"><TR><TH>DF Station<TH>Available<TBODY>");

const QString hriTableHead = QStringLiteral(
    "<TABLE border = \"1\" frame = \"hsides\" rules = \"groups\"summary = \"Locate HRI status display\"of MS "
    "Windows.\"><CAPTION><B>Locate (HRI) is connected</B></CAPTION><COLGROUP align = \"center\"><COLGROUP "
    "align = \"center\"><COLGROUP align = \"center\"><COLGROUP align = \"center\"><THEAD valign = "
    "\"top\"><TR><TH>DF Station<TH>Available<TH>Scan<TH>Wideband<TH>Range<TBODY>");

const QString noDf = QStringLiteral("<B>Locate (Online) </B>is not connected<BR><BR>");
const QString noHri = QStringLiteral("<B>Locate (HRI) </B>is not connected");

LocateServiceStatus parsed(const QString& text)
{
    LocateServiceStatus service;
    applyStatusText(service, text);
    return service;
}

QString dfRow(const QString& cells)
{
    return dfTableHead + cells + QStringLiteral("</TABLE><BR><BR>") + noHri;
}

QString hriRow(const QString& cells)
{
    return noDf + hriTableHead + cells + QStringLiteral("</TABLE>");
}

QString dfReport(const QString& text)
{
    return buildReport(parsed(text), {}, 100e6);
}

QString hriReport(const QString& text, double frequency = 100e6)
{
    return buildReport({}, parsed(text), frequency);
}

/// The rules of the status text once more, one token after the other and by Qt's text functions alone.
void applyTokenByToken(LocateServiceStatus& service, const QString& text)
{
    service.anyAvailable = false;
    service.connected = !text.isEmpty();
    if (!service.connected) {
        service.stations.clear();
        return;
    }
    const auto frequency = [](const QString& number) { return qIsFinite(number.toDouble()) ? number.toDouble() : 0; };
    int id = 0;
    for (const QString& token : text.split(QLatin1Char('#'))) {
        const QString kind = token.left(2);
        const QString content = token.mid(2);
        if (token.contains(QStringLiteral("DFID"))) {
            id = token.mid(4).toInt();
            service.stations[id].id = id;
        } else if (service.stations.count(id) == 0) {
            continue;
        } else if (kind == QStringLiteral("N_")) {
            service.stations[id].name = content;
        } else if (kind == QStringLiteral("ST")) {
            service.stations[id].status = content.toInt();
            service.anyAvailable = service.anyAvailable || (content.toInt() & 1) != 0;
        } else if (kind == QStringLiteral("FB")) {
            service.stations[id].rangeLow = frequency(content);
        } else if (kind == QStringLiteral("FE")) {
            service.stations[id].rangeHigh = frequency(content);
        }
    }
}

bool isSame(const LocateServiceStatus& a, const LocateServiceStatus& b)
{
    return a.anyAvailable == b.anyAvailable && a.connected == b.connected &&
           std::equal(a.stations.begin(), a.stations.end(), b.stations.begin(), b.stations.end(),
                      [](const auto& one, const auto& other) {
                          const LocateStationStatus& s = one.second;
                          const LocateStationStatus& t = other.second;
                          return one.first == other.first && s.id == t.id && s.name == t.name && s.status == t.status &&
                                 s.rangeLow == t.rangeLow && s.rangeHigh == t.rangeHigh;
                      });
}

/// Up to 20 tokens, most of which mean something, and one in ten with a piece of another in it.
QString randomText(QRandomGenerator& random)
{
    static const QStringList kinds{"DFID", "DFID", "N_", "ST", "FB", "FE", "LO", "DFI", "D", "N", "", "dfid"};
    static const QStringList contents{"0",          "1",
                                      "2",          "3",
                                      "17",         "-4",
                                      "30000000",   "3000000000",
                                      "433.92",     "1e6",
                                      "00000012",   "1e999",
                                      "nan",        "1234567890",
                                      "",           "0x1",
                                      " 5",         "5 ",
                                      "+7",         "x",
                                      "North",      "D",
                                      ".5",         "5.",
                                      "2147483648", "123456789012345678",
                                      "1 000",      "1,5"};
    const auto anyOf = [&random](const QStringList& list) { return list.at(random.bounded(list.size())); };
    QStringList tokens;
    for (int i = random.bounded(20); i > 0; --i) {
        QString token = anyOf(kinds) + anyOf(contents);
        if (random.bounded(10) == 0)
            token.insert(random.bounded(token.size() + 1), anyOf(kinds));
        tokens << token;
    }
    return tokens.join(QLatin1Char('#'));
}

} // namespace

class TestLocateStatus : public QObject
{
    Q_OBJECT

private slots:
    // Reading
    void aRecordStartsEmptyWithBothFlagsFalse();
    void aFullTextGivesOneStation();
    void severalStationsStandInTheOrderOfTheirIdentifiers();
    void anEmptyTextForgetsAllStations();
    void aTextWithoutTokensCountsAsConnected();
    void emptyTokensAreIgnored();
    void unknownTokensAreIgnored_data();
    void unknownTokensAreIgnored();
    void tokensBeforeTheFirstStationAreDropped();
    void tokensBeforeTheFirstStationReachStationZeroWhenItIsKnown();
    void aKnownStationKeepsItsFields();
    void aVanishedStationStaysWithItsOldFields();
    void anOmittedFieldKeepsItsValue();
    void theStationMarkCountsAnywhereInAToken_data();
    void theStationMarkCountsAnywhereInAToken();
    void unreadableNumbersAreZero_data();
    void unreadableNumbersAreZero();
    void namesAreTakenAsTheyAre_data();
    void namesAreTakenAsTheyAre();
    void onlyBitZeroMeansAvailable_data();
    void onlyBitZeroMeansAvailable();
    void availabilityIsOfTheLastTextOnly();
    void availabilityOnceToldHoldsForTheWholeText();
    void aStatusWordWithoutStationMakesNothingAvailable();
    void numbersMayHaveExponentsAndFractions();
    void plainDigitsReadAsAnyNumber_data();
    void plainDigitsReadAsAnyNumber();
    void everyTextReadsTokenByToken_data();
    void everyTextReadsTokenByToken();
    void aTextThatIsHeldIsNotReadAgain();
    void aTextIsReadAgainAfterAnother_data();
    void aTextIsReadAgainAfterAnother();
    void aTextThatFindsMoreTheNextTimeIsReadAgain();

    // Frequency ranges
    void bothEndsOfTheRangeAreInside_data();
    void bothEndsOfTheRangeAreInside();
    void aServiceCoversWhatAnyOfItsStationsCovers();

    // Report
    void withoutStationsTheReportSaysWhetherConnected();
    void connectedWithoutStationsIsSaidSo();
    void theDfTableShowsAvailability();
    void theHriTableShowsCapabilities_data();
    void theHriTableShowsCapabilities();
    void theRangeNeedsBothEndsAndACapability_data();
    void theRangeNeedsBothEndsAndACapability();
    void aRangeWithoutTheFrequencyIsInItalics_data();
    void aRangeWithoutTheFrequencyIsInItalics();
    void rowsStandInTheOrderOfTheIdentifiers();
    void bothTablesStandOneAfterTheOther();
    void aPlaceMarkerInAStationNameIsFilledByWhatFollows();
    void theReportIsTranslatedInTheContextOfTheStatusDisplay();
};

void TestLocateStatus::aRecordStartsEmptyWithBothFlagsFalse()
{
    const LocateServiceStatus service;
    QVERIFY(service.stations.empty());
    QVERIFY(!service.anyAvailable);
    QVERIFY(!service.connected);
    const LocateStationStatus station;
    QCOMPARE(station.id, 0);
    QVERIFY(station.name.isEmpty());
    QCOMPARE(station.status, 0);
    QCOMPARE(station.rangeLow, 0.0);
    QCOMPARE(station.rangeHigh, 0.0);
}

void TestLocateStatus::aFullTextGivesOneStation()
{
    const LocateServiceStatus service =
        parsed(QStringLiteral("DFID3#N_North#LO8.55#LA47.37#ST1#FB20000000#FE3000000000"));
    QVERIFY(service.connected);
    QVERIFY(service.anyAvailable);
    QCOMPARE(service.stations.size(), std::size_t(1));
    const LocateStationStatus& station = service.stations.at(3);
    QCOMPARE(station.id, 3);
    QCOMPARE(station.name, QStringLiteral("North"));
    QCOMPARE(station.status, 1);
    QCOMPARE(station.rangeLow, 20e6);
    QCOMPARE(station.rangeHigh, 3000e6);
}

void TestLocateStatus::severalStationsStandInTheOrderOfTheirIdentifiers()
{
    const LocateServiceStatus service = parsed(QStringLiteral("DFID12#N_C#DFID-4#N_A#DFID7#N_B"));
    QStringList names;
    for (const auto& [id, station] : service.stations) {
        QCOMPARE(station.id, id);
        names.append(station.name);
    }
    QCOMPARE(names, (QStringList{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}));
}

void TestLocateStatus::anEmptyTextForgetsAllStations()
{
    LocateServiceStatus service = parsed(QStringLiteral("DFID3#ST1"));
    applyStatusText(service, QString());
    QVERIFY(service.stations.empty());
    QVERIFY(!service.connected);
    QVERIFY(!service.anyAvailable);
}

void TestLocateStatus::aTextWithoutTokensCountsAsConnected()
{
    for (const char* const text : {"#", " ", "hello"}) {
        const LocateServiceStatus service = parsed(QLatin1String(text));
        QVERIFY2(service.connected, text);
        QVERIFY2(!service.anyAvailable, text);
        QVERIFY2(service.stations.empty(), text);
    }
}

void TestLocateStatus::emptyTokensAreIgnored()
{
    const LocateServiceStatus service = parsed(QStringLiteral("##DFID3###N_North##ST1##"));
    QCOMPARE(service.stations.size(), std::size_t(1));
    QCOMPARE(service.stations.at(3).name, QStringLiteral("North"));
    QCOMPARE(service.stations.at(3).status, 1);
}

void TestLocateStatus::unknownTokensAreIgnored_data()
{
    QTest::addColumn<QString>("token");
    QTest::newRow("one letter") << "N";
    QTest::newRow("lower case name") << "n_South";
    QTest::newRow("lower case status") << "st1";
    QTest::newRow("lower case mark") << "dfid9";
    QTest::newRow("leading blank") << " ST1";
    QTest::newRow("other word") << "XY1";
    QTest::newRow("name without underscore") << "NSouth";
    QTest::newRow("longitude") << "LO8.5";
    QTest::newRow("latitude") << "LA47.3";
}

void TestLocateStatus::unknownTokensAreIgnored()
{
    QFETCH(QString, token);
    const LocateServiceStatus service = parsed(QStringLiteral("DFID3#N_North#ST16#FB1#FE2#") + token);
    QCOMPARE(service.stations.size(), std::size_t(1));
    QVERIFY(!service.anyAvailable);
    const LocateStationStatus& station = service.stations.at(3);
    QCOMPARE(station.name, QStringLiteral("North"));
    QCOMPARE(station.status, 16);
    QCOMPARE(station.rangeLow, 1.0);
    QCOMPARE(station.rangeHigh, 2.0);
}

void TestLocateStatus::tokensBeforeTheFirstStationAreDropped()
{
    const LocateServiceStatus service = parsed(QStringLiteral("N_Lost#ST1#FB1#FE2#DFID3"));
    QCOMPARE(service.stations.size(), std::size_t(1));
    QVERIFY(!service.anyAvailable);
    const LocateStationStatus& station = service.stations.at(3);
    QVERIFY(station.name.isEmpty());
    QCOMPARE(station.status, 0);
    QCOMPARE(station.rangeLow, 0.0);
    QCOMPARE(station.rangeHigh, 0.0);
}

void TestLocateStatus::tokensBeforeTheFirstStationReachStationZeroWhenItIsKnown()
{
    LocateServiceStatus service = parsed(QStringLiteral("DFID0#N_Zero#DFID3#N_North"));
    applyStatusText(service, QStringLiteral("N_Nought#DFID3"));
    QCOMPARE(service.stations.at(0).name, QStringLiteral("Nought"));
    QCOMPARE(service.stations.at(3).name, QStringLiteral("North"));
}

void TestLocateStatus::aKnownStationKeepsItsFields()
{
    LocateServiceStatus service = parsed(QStringLiteral("DFID3#N_North#ST17#FB5#FE6#DFID4#DFID3"));
    applyStatusText(service, QStringLiteral("DFID3"));
    const LocateStationStatus& station = service.stations.at(3);
    QCOMPARE(station.name, QStringLiteral("North"));
    QCOMPARE(station.status, 17);
    QCOMPARE(station.rangeLow, 5.0);
    QCOMPARE(station.rangeHigh, 6.0);
}

void TestLocateStatus::aVanishedStationStaysWithItsOldFields()
{
    LocateServiceStatus service = parsed(QStringLiteral("DFID3#N_North#ST1#DFID4#N_South#ST1#FB7#FE8"));
    applyStatusText(service, QStringLiteral("DFID3#ST1"));
    QCOMPARE(service.stations.size(), std::size_t(2));
    const LocateStationStatus& station = service.stations.at(4);
    QCOMPARE(station.name, QStringLiteral("South"));
    QCOMPARE(station.status, 1);
    QCOMPARE(station.rangeLow, 7.0);
    QCOMPARE(station.rangeHigh, 8.0);
}

void TestLocateStatus::anOmittedFieldKeepsItsValue()
{
    LocateServiceStatus service = parsed(QStringLiteral("DFID3#N_North#ST1#FB5#FE6"));
    applyStatusText(service, QStringLiteral("DFID3#FE9"));
    const LocateStationStatus& station = service.stations.at(3);
    QCOMPARE(station.name, QStringLiteral("North"));
    QCOMPARE(station.status, 1);
    QCOMPARE(station.rangeLow, 5.0);
    QCOMPARE(station.rangeHigh, 9.0);
}

void TestLocateStatus::theStationMarkCountsAnywhereInAToken_data()
{
    QTest::addColumn<QString>("token");
    QTest::addColumn<int>("id");
    QTest::newRow("in front") << "DFID42" << 42;
    QTest::newRow("negative") << "DFID-42" << -42;
    QTest::newRow("leading zeros are decimal") << "DFID010" << 10;
    QTest::newRow("after a name: four characters go, the rest is no number") << "N_DFID42" << 0;
    QTest::newRow("after a digit: four characters go, the rest is no number") << "7DFID42" << 0;
    QTest::newRow("at the end of a number that starts with it") << "DFIDDFID" << 0;
}

void TestLocateStatus::theStationMarkCountsAnywhereInAToken()
{
    QFETCH(QString, token);
    QFETCH(int, id);
    const LocateServiceStatus service = parsed(token + QStringLiteral("#N_Here"));
    QCOMPARE(service.stations.size(), std::size_t(1));
    QCOMPARE(service.stations.begin()->first, id);
    QCOMPARE(service.stations.begin()->second.name, QStringLiteral("Here"));
}

void TestLocateStatus::unreadableNumbersAreZero_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << "DFID#ST#FB#FE";
    QTest::newRow("letters") << "DFIDx#STx#FBx#FEx";
    QTest::newRow("letters behind") << "DFID0x#ST1x#FB1x#FE1x";
    QTest::newRow("too large") << "DFID99999999999#ST99999999999#FB1e999#FE1e999";
    QTest::newRow("decimal comma and fraction of an integer") << "DFID1.5#ST1.5#FB1,5#FE1,5";
    QTest::newRow("hexadecimal") << "DFID0x1#ST0x1#FB0x1#FE0x1";
    QTest::newRow("not finite") << "DFIDinf#STinf#FBinf#FEnan";
}

void TestLocateStatus::unreadableNumbersAreZero()
{
    QFETCH(QString, text);
    LocateServiceStatus service = parsed(QStringLiteral("DFID0#ST2#FB3#FE4"));
    applyStatusText(service, text);
    QCOMPARE(service.stations.size(), std::size_t(1));
    const LocateStationStatus& station = service.stations.at(0);
    QCOMPARE(station.status, 0);
    QCOMPARE(station.rangeLow, 0.0);
    QCOMPARE(station.rangeHigh, 0.0);
    QVERIFY(!service.anyAvailable);
}

void TestLocateStatus::namesAreTakenAsTheyAre_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << "";
    QTest::newRow("blanks") << "  North  East ";
    QTest::newRow("umlaut and other scripts") << QString::fromUtf8("Zürich 東京");
    QTest::newRow("looks like a token") << "ST1";
    QTest::newRow("markup") << "<b>North</b>";
}

void TestLocateStatus::namesAreTakenAsTheyAre()
{
    QFETCH(QString, name);
    const LocateServiceStatus service = parsed(QStringLiteral("DFID3#N_before#N_") + name);
    QCOMPARE(service.stations.at(3).name, name);
}

void TestLocateStatus::onlyBitZeroMeansAvailable_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("available");
    QTest::newRow("0") << 0 << false;
    QTest::newRow("1") << 1 << true;
    QTest::newRow("2") << 2 << false;
    QTest::newRow("16") << 16 << false;
    QTest::newRow("48") << 48 << false;
    QTest::newRow("49") << 49 << true;
    QTest::newRow("-1") << -1 << true;
}

void TestLocateStatus::onlyBitZeroMeansAvailable()
{
    QFETCH(int, status);
    QTEST(parsed(QStringLiteral("DFID3#ST%1").arg(status)).anyAvailable, "available");
}

void TestLocateStatus::availabilityIsOfTheLastTextOnly()
{
    LocateServiceStatus service = parsed(QStringLiteral("DFID3#ST1"));
    applyStatusText(service, QStringLiteral("DFID3#N_North"));
    QVERIFY(!service.anyAvailable);
    QCOMPARE(service.stations.at(3).status, 1);
}

void TestLocateStatus::availabilityOnceToldHoldsForTheWholeText()
{
    const LocateServiceStatus service = parsed(QStringLiteral("DFID3#ST1#ST0"));
    QVERIFY(service.anyAvailable);
    QCOMPARE(service.stations.at(3).status, 0);
}

void TestLocateStatus::aStatusWordWithoutStationMakesNothingAvailable()
{
    QVERIFY(!parsed(QStringLiteral("ST1")).anyAvailable);
}

void TestLocateStatus::numbersMayHaveExponentsAndFractions()
{
    const LocateServiceStatus service = parsed(QStringLiteral("DFID3#FB2.5e7#FE30000000.25"));
    QCOMPARE(service.stations.at(3).rangeLow, 25e6);
    QCOMPARE(service.stations.at(3).rangeHigh, 30000000.25);
}

void TestLocateStatus::plainDigitsReadAsAnyNumber_data()
{
    QTest::addColumn<QString>("digits");
    for (int count = 1; count <= 20; ++count) {
        const QByteArray number(count, '9');
        QTest::newRow(number.constData()) << QString::fromLatin1(number);
        const QByteArray zeros = QByteArray(count, '0') + "7";
        QTest::newRow(zeros.constData()) << QString::fromLatin1(zeros);
    }
    QTest::newRow("greatest int") << "2147483647";
    QTest::newRow("beyond every int") << "2147483648";
    QTest::newRow("greatest whole number that every smaller one is a double of") << "9007199254740992";
    QTest::newRow("rounded to a double") << "9007199254740993";
}

void TestLocateStatus::plainDigitsReadAsAnyNumber()
{
    QFETCH(QString, digits);
    const auto station = [](const QString& text) { return parsed(text).stations.begin()->second; };
    for (const char* const behind : {"", "#", "#N_North"}) {
        const QString end = digits + QLatin1String(behind);
        QCOMPARE(station(QStringLiteral("DFID") + end).id, digits.toInt());
        QCOMPARE(station(QStringLiteral("DFID3#ST") + end).status, digits.toInt());
        // Not to within a tolerance: to the last bit.
        QVERIFY(station(QStringLiteral("DFID3#FB") + end).rangeLow == digits.toDouble());
        QVERIFY(station(QStringLiteral("DFID3#FE") + end).rangeHigh == digits.toDouble());
    }
}

void TestLocateStatus::everyTextReadsTokenByToken_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 8; ++seed)
        QTest::newRow(qPrintable(QString::number(seed))) << seed;
}

void TestLocateStatus::everyTextReadsTokenByToken()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    for (int record = 0; record < 200; ++record) {
        LocateServiceStatus read;
        LocateServiceStatus expected;
        QString text;
        for (int turn = 0; turn < 8; ++turn) {
            if (random.bounded(3) > 0)
                text = randomText(random);
            applyStatusText(read, text);
            applyTokenByToken(expected, text);
            QVERIFY2(isSame(read, expected), qPrintable(text));
        }
    }
}

void TestLocateStatus::aTextThatIsHeldIsNotReadAgain()
{
    const QString text = QStringLiteral("DFID3#N_North#ST1");
    LocateServiceStatus service;
    QVERIFY(applyStatusText(service, text));
    QVERIFY(!applyStatusText(service, text));
    // Not even when somebody made the same text anew.
    QVERIFY(!applyStatusText(service, QString(text.constData(), text.size())));
    QVERIFY(service.connected);
    QVERIFY(service.anyAvailable);
    QCOMPARE(service.stations.at(3).name, QStringLiteral("North"));
}

void TestLocateStatus::aTextIsReadAgainAfterAnother_data()
{
    QTest::addColumn<QString>("other");
    QTest::newRow("another") << "DFID3#N_South#ST0";
    QTest::newRow("without stations") << "#";
    QTest::newRow("empty") << "";
}

void TestLocateStatus::aTextIsReadAgainAfterAnother()
{
    QFETCH(QString, other);
    const QString text = QStringLiteral("DFID3#N_North#ST1");
    LocateServiceStatus service = parsed(text);
    QVERIFY(applyStatusText(service, other));
    QVERIFY(applyStatusText(service, text));
    QVERIFY(service.connected);
    QVERIFY(service.anyAvailable);
    QCOMPARE(service.stations.at(3).name, QStringLiteral("North"));
}

void TestLocateStatus::aTextThatFindsMoreTheNextTimeIsReadAgain()
{
    const QString text = QStringLiteral("N_Zero#ST1#DFID0");
    LocateServiceStatus service = parsed(text);
    QVERIFY(service.stations.at(0).name.isEmpty());
    QVERIFY(!service.anyAvailable);
    QVERIFY(applyStatusText(service, text));
    QCOMPARE(service.stations.at(0).name, QStringLiteral("Zero"));
    QVERIFY(service.anyAvailable);
    QVERIFY(!applyStatusText(service, text));
}

void TestLocateStatus::bothEndsOfTheRangeAreInside_data()
{
    QTest::addColumn<double>("frequency");
    QTest::addColumn<bool>("inside");
    QTest::newRow("below") << 19999999.9 << false;
    QTest::newRow("at the lower end") << 20e6 << true;
    QTest::newRow("within") << 21e6 << true;
    QTest::newRow("at the upper end") << 30e6 << true;
    QTest::newRow("above") << 30000000.1 << false;
}

void TestLocateStatus::bothEndsOfTheRangeAreInside()
{
    QFETCH(double, frequency);
    const LocateServiceStatus service = parsed(QStringLiteral("DFID3#FB20000000#FE30000000"));
    QTEST(service.stations.at(3).Covers(frequency), "inside");
    QTEST(rangesOf(service).Hold(frequency), "inside");
}

void TestLocateStatus::aServiceCoversWhatAnyOfItsStationsCovers()
{
    const FrequencyRanges ranges = rangesOf(parsed(QStringLiteral("DFID3#FB10#FE20#DFID4#ST0#FB30#FE40")));
    QVERIFY(ranges.Hold(15));
    QVERIFY(!ranges.Hold(25));
    QVERIFY(ranges.Hold(35));
    QVERIFY(!rangesOf(LocateServiceStatus()).Hold(0));
}

void TestLocateStatus::withoutStationsTheReportSaysWhetherConnected()
{
    QCOMPARE(buildReport({}, {}, 100e6), noDf + noHri);
}

void TestLocateStatus::connectedWithoutStationsIsSaidSo()
{
    const LocateServiceStatus connected = parsed(QStringLiteral("#"));
    QCOMPARE(buildReport(connected, {}, 100e6), QStringLiteral("<B>Locate (Online) </B>is connected<BR><BR>") + noHri);
    QCOMPARE(buildReport({}, connected, 100e6), noDf + QStringLiteral("<B>Locate (HRI) </B>is connected"));
}

void TestLocateStatus::theDfTableShowsAvailability()
{
    QCOMPARE(dfReport(QStringLiteral("DFID3#N_North#ST1")), dfRow(QStringLiteral("<TR><TD> North<TD> ") + tick));
    QCOMPARE(dfReport(QStringLiteral("DFID3#N_North#ST50")), dfRow(QStringLiteral("<TR><TD> North<TD>  ")));
    QCOMPARE(dfReport(QStringLiteral("DFID3")), dfRow(QStringLiteral("<TR><TD> <TD>  ")));
}

void TestLocateStatus::theHriTableShowsCapabilities_data()
{
    const QString blank = QStringLiteral(" ");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("available");
    QTest::addColumn<QString>("scan");
    QTest::addColumn<QString>("wideband");
    QTest::newRow("none") << 0 << blank << blank << blank;
    QTest::newRow("available") << 1 << tick << blank << blank;
    QTest::newRow("scan") << 16 << blank << tick << blank;
    QTest::newRow("wideband") << 32 << blank << blank << tick;
    QTest::newRow("all") << 49 << tick << tick << tick;
    QTest::newRow("other bits") << (2 | 4 | 8 | 64) << blank << blank << blank;
}

void TestLocateStatus::theHriTableShowsCapabilities()
{
    QFETCH(int, status);
    QFETCH(QString, available);
    QFETCH(QString, scan);
    QFETCH(QString, wideband);
    QCOMPARE(hriReport(QStringLiteral("DFID3#N_North#ST%1").arg(status)),
             hriRow(QStringLiteral("<TR><TD> North<TD> ") + available + QStringLiteral("<TD> ") + scan +
                    QStringLiteral("<TD> ") + wideband + QStringLiteral("<TD>  ")));
}

void TestLocateStatus::theRangeNeedsBothEndsAndACapability_data()
{
    const QString range = QStringLiteral("20.000 MHz - 3000.000 MHz");
    const QString blank = QStringLiteral(" ");
    QTest::addColumn<QString>("tokens");
    QTest::addColumn<QString>("cell");
    QTest::newRow("available only") << "ST1#FB20000000#FE3000000000" << blank;
    QTest::newRow("scan") << "ST16#FB20000000#FE3000000000" << range;
    QTest::newRow("wideband") << "ST32#FB20000000#FE3000000000" << range;
    QTest::newRow("both") << "ST48#FB20000000#FE3000000000" << range;
    QTest::newRow("no lower end") << "ST16#FE3000000000" << blank;
    QTest::newRow("no upper end") << "ST16#FB20000000" << blank;
    QTest::newRow("three decimals, rounded") << "ST16#FB25000499#FE1234567890"
                                             << "25.000 MHz - 1234.568 MHz";
}

void TestLocateStatus::theRangeNeedsBothEndsAndACapability()
{
    QFETCH(QString, tokens);
    QFETCH(QString, cell);
    const QString report = hriReport(QStringLiteral("DFID3#") + tokens);
    QVERIFY2(report.endsWith(QStringLiteral("<TD> ") + cell + QStringLiteral("</TABLE>")), qPrintable(report));
}

void TestLocateStatus::aRangeWithoutTheFrequencyIsInItalics_data()
{
    const QString inside = QStringLiteral("<TD> 20.000 MHz - 30.000 MHz</TABLE>");
    const QString outside = QStringLiteral("<TD> <i>20.000 MHz - 30.000 MHz</i></TABLE>");
    QTest::addColumn<double>("frequency");
    QTest::addColumn<QString>("ending");
    QTest::newRow("below") << 19999999.0 << outside;
    QTest::newRow("at the lower end") << 20e6 << inside;
    QTest::newRow("at the upper end") << 30e6 << inside;
    QTest::newRow("above") << 30000001.0 << outside;
}

void TestLocateStatus::aRangeWithoutTheFrequencyIsInItalics()
{
    QFETCH(double, frequency);
    QFETCH(QString, ending);
    const QString report = hriReport(QStringLiteral("DFID3#ST16#FB20000000#FE30000000"), frequency);
    QVERIFY2(report.endsWith(ending), qPrintable(report));
}

void TestLocateStatus::rowsStandInTheOrderOfTheIdentifiers()
{
    QCOMPARE(dfReport(QStringLiteral("DFID10#N_C#DFID9#N_B#DFID-1#N_A")),
             dfRow(QStringLiteral("<TR><TD> A<TD>  <TR><TD> B<TD>  <TR><TD> C<TD>  ")));
}

void TestLocateStatus::bothTablesStandOneAfterTheOther()
{
    const QString report = buildReport(parsed(QStringLiteral("DFID1#N_One#ST1")),
                                       parsed(QStringLiteral("DFID2#N_Two#ST17#FB1000000#FE2000000")), 100e6);
    QCOMPARE(report, dfTableHead + QStringLiteral("<TR><TD> One<TD> ") + tick + QStringLiteral("</TABLE><BR><BR>") +
                         hriTableHead + QStringLiteral("<TR><TD> Two<TD> ") + tick + QStringLiteral("<TD> ") + tick +
                         QStringLiteral("<TD>  <TD> <i>1.000 MHz - 2.000 MHz</i></TABLE>"));
}

void TestLocateStatus::aPlaceMarkerInAStationNameIsFilledByWhatFollows()
{
    QCOMPARE(dfReport(QStringLiteral("DFID3#N_50%2#ST1")),
             dfRow(QStringLiteral("<TR><TD> 50") + tick + QStringLiteral("<TD> ") + tick));
    // The marker of the name is the lowest one left, so it takes the tick and the cell keeps its marker.
    QCOMPARE(dfReport(QStringLiteral("DFID3#N_%1#ST1")),
             dfRow(QStringLiteral("<TR><TD> ") + tick + QStringLiteral("<TD> %2")));
    QCOMPARE(hriReport(QStringLiteral("DFID3#N_%5")), hriRow(QStringLiteral("<TR><TD>  <TD>  <TD>  <TD>  <TD>  ")));
}

void TestLocateStatus::theReportIsTranslatedInTheContextOfTheStatusDisplay()
{
    /// Marks every text of the status display's context.
    class Marking : public QTranslator
    {
    public:
        bool isEmpty() const override { return false; }
        QString translate(const char* context, const char* source, const char*, int) const override
        {
            if (qstrcmp(context, "VelmarGui::LocateStatusHandler") != 0)
                return QString();
            return QLatin1Char('*') + QLatin1String(source);
        }
    } translator;
    QCoreApplication::installTranslator(&translator);
    const QString empty = buildReport({}, parsed(QStringLiteral("#")), 0);
    const QString full = buildReport(parsed(QStringLiteral("DFID1")), parsed(QStringLiteral("DFID1")), 0);
    QCoreApplication::removeTranslator(&translator);
    QCOMPARE(empty,
             QStringLiteral("<B>*Locate (Online) </B>*is not connected<BR><BR><B>*Locate (HRI) </B>*is connected"));
    for (const char* const text : {"<B>*Locate (Online) is connected</B>", "<B>*Locate (HRI) is connected</B>",
                                   "<TR><TH>*DF Station<TH>*Available<TBODY>",
                                   "<TR><TH>*DF Station<TH>*Available<TH>*Scan<TH>*Wideband<TH>*Range<TBODY>"})
        QVERIFY2(full.contains(QLatin1String(text)), text);
}

DFL_TEST_MAIN_WITH(TestLocateStatus, QCoreApplication)
#include "tst_locatestatus.moc"
