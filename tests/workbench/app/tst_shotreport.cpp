#include "app/shotreport.h"

#include "support/freshtree.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"

#include <QComboBox>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QToolBar>

#include <cmath>

using testsupport::FreshTree;
using workbench::ShotReport;

namespace {

const QString root = QStringLiteral("/GUI/DFLocateHandler/Values/Result/");

void addSelection(const FreshTree& tree, const char* name, const std::vector<std::pair<int, const char*>>& items)
{
    auto* const selection = tree.add<values::ValueSelection>(root + QLatin1String(name));
    for (const auto& [key, text] : items)
        selection->AddItem(QString::fromUtf8(text), 0.0, key);
}

/// A one-sigma ellipse of 300 m by 200 m, its major axis due north-east.
workbench::Fix someFix()
{
    workbench::Fix fix;
    fix.position = {48.3, 11.25};
    fix.covariance = {65000.0, 65000.0, 25000.0};
    fix.chiSquare = 1.5475;
    fix.degreesOfFreedom = 2;
    return fix;
}

/// Two stations: one with a bearing, one without.
void addResult(const FreshTree& tree)
{
    addSelection(tree, "SelectedDF", {{4, "North Hill"}, {7, "Ådal"}});
    addSelection(tree, "Azimuth", {{4, "278.4"}});
    addSelection(tree, "Quality", {{4, "87"}});
    addSelection(tree, "Level", {{4, "34.1"}, {7, "-2.0"}});
    addSelection(tree, "Errors", {{4, ""}, {7, "-17"}});
    addSelection(tree, "DFLatitude", {{4, "48.250000"}, {7, "48.500000"}});
    addSelection(tree, "DFLongitude", {{4, "-11.500000"}, {7, "11.000000"}});
    tree.add<values::StringValue>(root + "ResultTime")->SetValue("2024-05-06 07:08:09", nullptr);
    tree.add<values::StringValue>(root + "Frequency")->SetValue("98500000", nullptr);
    tree.add<values::IntValue>(root + "QualityThreshold")->SetValue(30, nullptr);
    tree.add<values::DoubleValue>(root + "AveragePositionLatitude")->SetValue(48.3, nullptr);
    tree.add<values::DoubleValue>(root + "AveragePositionLongitude")->SetValue(11.25, nullptr);
}

void addWidgets(QToolBar& toolBar)
{
    auto* const combo = new QComboBox(&toolBar);
    combo->setObjectName("direction finder name");
    combo->addItem("North Hill");
    const auto label = [&toolBar](const char* name, const QString& text) {
        (new QLabel(text, &toolBar))->setObjectName(QLatin1String(name));
    };
    label("average bearing", QString::fromUtf8("278.4°"));
    label("average quality", "87%");
    label("LocationFindingTime", "09:08:09");
}

} // namespace

class TestShotReport : public QObject
{
    Q_OBJECT
private slots:
    void widgetsAndValuesAreRead();
    void numbersAreAsMeasuredWhereTheItemsCarryThem();
    void whatIsMissingIsAbsent();
    void coordinatesThatAreNotInUseAreAbsent();
    void aTextThatIsNoNumberIsAbsent();
    void valuesOfAnotherKindAreAbsent();
    void theTableIsAligned();
    void theTableShowsMissingThingsAsDashes();
    void theTableTellsTheErrorOfAFix();
    void theTableTellsWhyThereIsNoFix();
    void everyErrorCodeHasItsText_data();
    void everyErrorCodeHasItsText();
    void jsonHasNumbersAsNumbersAndMissingThingsAsNull();
    void jsonTellsTheErrorOfAFix();
    void jsonTellsWhyThereIsNoFix();
    void storedResultsAreToldOf();
    void aFixThatTheValuesDoNotShowIsNone();
    void jsonOfNothingIsAllNull();
};

void TestShotReport::widgetsAndValuesAreRead()
{
    const FreshTree tree;
    addResult(tree);
    QToolBar toolBar;
    addWidgets(toolBar);
    const ShotReport shot = workbench::readShot(&toolBar, root);
    QCOMPARE(shot.directionFinder.value(), QStringLiteral("North Hill"));
    QCOMPARE(shot.averageBearing.value(), QString::fromUtf8("278.4°"));
    QCOMPARE(shot.averageQuality.value(), QStringLiteral("87%"));
    QCOMPARE(shot.locationFindingTime.value(), QStringLiteral("09:08:09"));
    QCOMPARE(shot.resultTime, QStringLiteral("2024-05-06 07:08:09"));
    QCOMPARE(shot.frequency.value(), 98.5e6);
    QCOMPARE(shot.qualityThreshold.value(), 30);
    QCOMPARE(shot.averageLatitude.value(), 48.3);
    QCOMPARE(shot.averageLongitude.value(), 11.25);
    QCOMPARE(shot.stations.size(), std::size_t(2));
    QCOMPARE(shot.stations[0].key, 4);
    QCOMPARE(shot.stations[0].name, QStringLiteral("North Hill"));
    QCOMPARE(shot.stations[0].azimuth.value(), 278.4);
    QCOMPARE(shot.stations[0].quality.value(), 87.0);
    QCOMPARE(shot.stations[0].level.value(), 34.1);
    QVERIFY(!shot.stations[0].error);
    QCOMPARE(shot.stations[0].latitude.value(), 48.25);
    QCOMPARE(shot.stations[0].longitude.value(), -11.5);
    QVERIFY(!shot.stations[1].azimuth);
    QVERIFY(!shot.stations[1].quality);
    QCOMPARE(shot.stations[1].error.value(), -17);
}

void TestShotReport::numbersAreAsMeasuredWhereTheItemsCarryThem()
{
    const FreshTree tree;
    addSelection(tree, "SelectedDF", {{4, "North Hill"}});
    tree.add<values::ValueSelection>(root + "Azimuth")->AddItem("0.0", 359.9866, 4);
    tree.add<values::ValueSelection>(root + "Level")->AddItem("12.3", 12.25, 4);
    const ShotReport shot = workbench::readShot(nullptr, root);
    QCOMPARE(shot.stations.at(0).azimuth.value(), 359.9866);
    QCOMPARE(shot.stations.at(0).level.value(), 12.25);
}

void TestShotReport::whatIsMissingIsAbsent()
{
    const FreshTree tree;
    const ShotReport shot = workbench::readShot(nullptr, root);
    QVERIFY(!shot.directionFinder && !shot.averageBearing && !shot.averageQuality && !shot.locationFindingTime);
    QVERIFY(shot.resultTime.isEmpty());
    QVERIFY(!shot.frequency && !shot.qualityThreshold && !shot.averageLatitude && !shot.averageLongitude);
    QVERIFY(shot.stations.empty());
}

void TestShotReport::coordinatesThatAreNotInUseAreAbsent()
{
    const FreshTree tree;
    tree.add<values::DoubleValue>(root + "AveragePositionLatitude")->SetState(values::StateUnused, nullptr);
    QVERIFY(!workbench::readShot(nullptr, root).averageLatitude);
}

void TestShotReport::aTextThatIsNoNumberIsAbsent()
{
    const FreshTree tree;
    addSelection(tree, "SelectedDF", {{1, "A"}});
    addSelection(tree, "Azimuth", {{1, "---"}});
    addSelection(tree, "Errors", {{1, "broken"}});
    const ShotReport shot = workbench::readShot(nullptr, root);
    QVERIFY(!shot.stations.at(0).azimuth);
    QVERIFY(!shot.stations.at(0).error);
}

void TestShotReport::valuesOfAnotherKindAreAbsent()
{
    const FreshTree tree;
    tree.add<values::IntValue>(root + "SelectedDF");
    tree.add<values::ValueSelection>(root + "ResultTime");
    tree.add<values::StringValue>(root + "QualityThreshold");
    const ShotReport shot = workbench::readShot(nullptr, root);
    QVERIFY(shot.stations.empty());
    QVERIFY(shot.resultTime.isEmpty());
    QVERIFY(!shot.qualityThreshold);
}

void TestShotReport::theTableIsAligned()
{
    const FreshTree tree;
    addResult(tree);
    QToolBar toolBar;
    addWidgets(toolBar);
    QCOMPARE(workbench::shotTable(3, workbench::readShot(&toolBar, root)),
             QString::fromUtf8("Result 3\n"
                               "  Shown DF station      North Hill\n"
                               "  Shown bearing         278.4°\n"
                               "  Shown quality         87%\n"
                               "  Shown time or error   09:08:09\n"
                               "  Result time (UTC)     2024-05-06 07:08:09\n"
                               "  Frequency             98500000 Hz\n"
                               "  Quality threshold     30 %\n"
                               "  Fix                   48.300000, 11.250000\n"
                               "\n"
                               "  DF station  Azimuth  Quality      Level  Error            Position\n"
                               "  North Hill   278.4°     87 %  34.1 dBµV  ---              48.250000, -11.500000\n"
                               "  Ådal            ---      ---  -2.0 dBµV  No signal (-17)  48.500000, 11.000000\n"
                               "\n"));
}

void TestShotReport::theTableShowsMissingThingsAsDashes()
{
    ShotReport shot;
    shot.averageBearing.emplace();
    shot.stations = {{}};
    shot.stations[0].name = "A";
    QCOMPARE(workbench::shotTable(1, shot), QString("Result 1\n"
                                                    "  Shown DF station      ---\n"
                                                    "  Shown bearing         ---\n"
                                                    "  Shown quality         ---\n"
                                                    "  Shown time or error   ---\n"
                                                    "  Result time (UTC)     ---\n"
                                                    "  Frequency             ---\n"
                                                    "  Quality threshold     ---\n"
                                                    "  Fix                   ---\n"
                                                    "\n"
                                                    "  DF station  Azimuth  Quality  Level  Error  Position\n"
                                                    "  A               ---      ---    ---  ---    ---\n"
                                                    "\n"));
}

void TestShotReport::theTableTellsTheErrorOfAFix()
{
    ShotReport shot;
    shot.averageLatitude = 48.3;
    shot.averageLongitude = 11.25;
    shot.located = someFix();
    const QString expected =
        QString::fromUtf8("  Fix                   48.300000, 11.250000\n"
                          "  Error ellipse (95 %)  semi-axes 734 m and 490 m, major axis at 45.0°\n"
                          "  Chi-square            1.55, degrees of freedom: 2\n"
                          "\n");
    const QString table = workbench::shotTable(1, shot);
    QVERIFY2(table.contains(expected), qPrintable(table));
}

void TestShotReport::theTableTellsWhyThereIsNoFix()
{
    ShotReport shot;
    shot.located = QStringLiteral("No fix: fog.");
    const QString table = workbench::shotTable(1, shot);
    QVERIFY2(table.contains(QStringLiteral("  Fix                   No fix: fog.\n\n")), qPrintable(table));
}

void TestShotReport::everyErrorCodeHasItsText_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::newRow("-1") << -1 << "Not in scan range (-1)";
    QTest::newRow("-2") << -2 << "Scan range undefined (-2)";
    QTest::newRow("-3") << -3 << "Not in time range (-3)";
    QTest::newRow("-14") << -14 << "Timeout (-14)";
    QTest::newRow("-17") << -17 << "No signal (-17)";
    QTest::newRow("unknown") << -99 << "-99";
    QTest::newRow("none") << 0 << "0";
}

void TestShotReport::everyErrorCodeHasItsText()
{
    QFETCH(int, code);
    QFETCH(QString, text);
    ShotReport shot;
    shot.stations = {{}};
    shot.stations[0].name = "A";
    shot.stations[0].error = code;
    const QString row = workbench::shotTable(1, shot).split('\n').at(11);
    QCOMPARE(row.simplified(), QStringLiteral("A --- --- --- %1 ---").arg(text));
}

void TestShotReport::jsonHasNumbersAsNumbersAndMissingThingsAsNull()
{
    const FreshTree tree;
    addResult(tree);
    QToolBar toolBar;
    addWidgets(toolBar);
    const QJsonObject expected = QJsonDocument::fromJson(R"({
            "shot": 2,
            "widgets": { "directionFinder": "North Hill", "averageBearing": "278.4°", "averageQuality": "87%",
                         "locationFindingTime": "09:08:09" },
            "resultTime": "2024-05-06 07:08:09", "frequency": 98500000, "qualityThreshold": 30,
            "fix": { "latitude": 48.3, "longitude": 11.25, "ellipse": null, "chiSquare": null,
                     "degreesOfFreedom": null },
            "noFix": null, "history": null,
            "stations": [
              { "key": 4, "name": "North Hill", "azimuth": 278.4, "quality": 87, "level": 34.1, "error": null,
                "latitude": 48.25, "longitude": -11.5 },
              { "key": 7, "name": "Ådal", "azimuth": null, "quality": null, "level": -2, "error": -17,
                "latitude": 48.5, "longitude": 11 } ] })")
                                     .object();
    QVERIFY(!expected.isEmpty());
    QCOMPARE(workbench::shotJson(2, workbench::readShot(&toolBar, root)), expected);
}

void TestShotReport::jsonTellsTheErrorOfAFix()
{
    ShotReport shot;
    shot.averageLatitude = 48.3;
    shot.averageLongitude = 11.25;
    shot.located = someFix();
    const QJsonObject json = workbench::shotJson(1, shot);
    QVERIFY(json.value("noFix").isNull());
    const QJsonObject fix = json.value("fix").toObject();
    QCOMPARE(fix.keys(), QStringList({"chiSquare", "degreesOfFreedom", "ellipse", "latitude", "longitude"}));
    QCOMPARE(fix.value("chiSquare").toDouble(), 1.5475);
    QCOMPARE(fix.value("degreesOfFreedom").toInt(), 2);
    const QJsonObject ellipse = fix.value("ellipse").toObject();
    QCOMPARE(ellipse.keys(), QStringList({"azimuth", "probability", "semiMajor", "semiMinor"}));
    QCOMPARE(ellipse.value("probability").toDouble(), 0.95);
    const double factor = std::sqrt(-2.0 * std::log(0.05));
    QCOMPARE(ellipse.value("semiMajor").toDouble(), 300.0 * factor);
    QCOMPARE(ellipse.value("semiMinor").toDouble(), 200.0 * factor);
    QCOMPARE(ellipse.value("azimuth").toDouble(), 45.0);
}

void TestShotReport::jsonTellsWhyThereIsNoFix()
{
    ShotReport shot;
    shot.located = QStringLiteral("No fix: fog.");
    const QJsonObject json = workbench::shotJson(1, shot);
    QVERIFY(json.value("fix").isNull());
    QCOMPARE(json.value("noFix").toString(), QStringLiteral("No fix: fog."));
}

void TestShotReport::storedResultsAreToldOf()
{
    ShotReport shot;
    shot.located = QStringLiteral("No fix: fog.");
    shot.history = workbench::HistoryFix{*shot.located, 12, 48, true};
    QVERIFY(workbench::shotTable(1, shot).contains(
        QStringLiteral("  Fix                   No fix: fog.\n  Stored results        12, usable bearings: 48\n\n")));
    QJsonObject history = workbench::shotJson(1, shot).value("history").toObject();
    QCOMPARE(history, (QJsonObject{{"results", 12}, {"bearings", 48}, {"complete", true}}));

    shot.history->isComplete = false;
    QVERIFY(workbench::shotTable(1, shot).contains(
        QStringLiteral("  Stored results        12 (the newest of more), usable bearings: 48\n")));
    history = workbench::shotJson(1, shot).value("history").toObject();
    QCOMPARE(history.value("complete"), QJsonValue(false));
}

void TestShotReport::aFixThatTheValuesDoNotShowIsNone()
{
    ShotReport shot;
    shot.located = someFix();
    shot.averageLatitude = 48.3;
    QVERIFY(workbench::shotJson(1, shot).value("fix").isNull());
    QVERIFY(workbench::shotTable(1, shot).contains(QStringLiteral("  Fix                   ---\n\n")));
}

void TestShotReport::jsonOfNothingIsAllNull()
{
    const QJsonObject expected = QJsonDocument::fromJson(R"({
        "shot": 1,
        "widgets": { "directionFinder": null, "averageBearing": null, "averageQuality": null,
                     "locationFindingTime": null },
        "resultTime": null, "frequency": null, "qualityThreshold": null, "fix": null, "noFix": null,
        "history": null, "stations": [] })")
                                     .object();
    QVERIFY(!expected.isEmpty());
    QCOMPARE(workbench::shotJson(1, {}), expected);
}

DFL_TEST_MAIN(TestShotReport)
#include "tst_shotreport.moc"
