#include "app/operatorsettings.h"
#include "app/session.h"
#include "fakesource.h"

#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "support/treevalue.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"

using testsupport::at;
using testsupport::FreshTree;
using workbench::applySetting;
using workbench::Session;

namespace {

template <typename T>
T* config(const char* name)
{
    return at<T>(workbench::handlerRoot() + QStringLiteral("Config/") + QLatin1String(name));
}

QString error(const char* name, const QString& value)
{
    return applySetting({QLatin1String(name), value}).value_or(QString());
}

} // namespace

class TestOperatorSettings : public QObject
{
    Q_OBJECT
private slots:
    void init() { values::Tree::Instance()->Clear(); }

    void everyNameSetsItsValue_data();
    void everyNameSetsItsValue();
    void aListIsSetByTextOrByNumber();
    void aNumberStandsForNoItemOfAListWithoutNumbers();
    void theTextComesBeforeTheNumber();
    void aThresholdComesIntoUse();
    void aRefusedThresholdStaysOutOfUse();
    void observersAreToldAsOfAnOperator();
    void whatIsAllowedIsTold_data();
    void whatIsAllowedIsTold();
    void aMissingValueIsTold();
    void aValueOfAnotherKindIsTold();
};

void TestOperatorSettings::everyNameSetsItsValue_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("content");
    const QString config = workbench::handlerRoot() + QStringLiteral("Config/");
    QTest::newRow("Frequency") << "/GLOBAL/Frequency"
                               << "98.5e6"
                               << "98500000";
    QTest::newRow("Bandwidth") << config + "Bandwidth"
                               << "30000"
                               << "30.0 kHz";
    QTest::newRow("Averaging") << config + "AverageTime"
                               << "500"
                               << "500m";
    QTest::newRow("Mode") << config + "Mode"
                          << "Gate"
                          << "Gate";
    QTest::newRow("Quality") << config + "Quality"
                             << "100"
                             << "100";
    QTest::newRow("Threshold") << config + "Threshold"
                               << "-40"
                               << "-40";
    QTest::newRow("FrequencyOffset") << config + "DFFrequencyOffset"
                                     << "-12.5"
                                     << "-12.5";
    QTest::newRow("Span") << config + "DFSpan"
                          << "9000"
                          << "9000";
    QTest::newRow("Workflow") << config + "DFLocateWorkflow"
                              << "Continuous"
                              << "Continuous";
    QTest::newRow("Type") << config + "DFLocateType"
                          << "Online"
                          << "Online";
    QTest::newRow("Activity") << config + "DFLocateActivity"
                              << "DF and locate"
                              << "DF and locate";
    QTest::newRow("Trigger") << config + "DFLocateActivityTrigger"
                             << "Signal"
                             << "Signal";
}

void TestOperatorSettings::everyNameSetsItsValue()
{
    QFETCH(QString, path);
    QFETCH(QString, text);
    QFETCH(QString, content);
    const Session session(std::make_unique<FakeSource>());
    QVERIFY(workbench::settingNames().contains(QLatin1String(QTest::currentDataTag())));
    QCOMPARE(error(QTest::currentDataTag(), text), QString());
    QCOMPARE(at<values::ValueBase>(path)->GetStringValue(), content);
}

void TestOperatorSettings::aListIsSetByTextOrByNumber()
{
    const Session session(std::make_unique<FakeSource>());
    QCOMPARE(error("Bandwidth", "1.2 kHz"), QString());
    QCOMPARE(config<values::ValueSelection>("Bandwidth")->GetCurrentValue(), 1200.0);
    QCOMPARE(error("Averaging", "1s"), QString());
    QCOMPARE(error("Averaging", "0"), QString());
    QCOMPARE(config<values::ValueSelection>("AverageTime")->GetStringValue(), QStringLiteral("Off"));
}

void TestOperatorSettings::aNumberStandsForNoItemOfAListWithoutNumbers()
{
    const Session session(std::make_unique<FakeSource>());
    QVERIFY(!error("Mode", "0").isEmpty());
}

void TestOperatorSettings::theTextComesBeforeTheNumber()
{
    const FreshTree tree;
    auto* const bandwidth = tree.add<values::ValueSelection>(workbench::handlerRoot() + "Config/Bandwidth");
    bandwidth->AddItem("2", 1.0, 0);
    bandwidth->AddItem("1", 2.0, 1);
    QCOMPARE(error("Bandwidth", "1"), QString());
    QCOMPARE(bandwidth->GetCurrentKey(), 1);
}

void TestOperatorSettings::aThresholdComesIntoUse()
{
    const Session session(std::make_unique<FakeSource>());
    QCOMPARE(config<values::IntValue>("Quality")->GetState(), values::StateUnused);
    QCOMPARE(error("Quality", "1"), QString());
    QCOMPARE(config<values::IntValue>("Quality")->GetState(), values::StateOrdinary);
    QCOMPARE(session.driver()->settings().qualityThreshold, std::optional<int>(1));
}

void TestOperatorSettings::aRefusedThresholdStaysOutOfUse()
{
    const Session session(std::make_unique<FakeSource>());
    QVERIFY(!error("Quality", "101").isEmpty());
    QCOMPARE(config<values::IntValue>("Quality")->GetState(), values::StateUnused);
}

void TestOperatorSettings::observersAreToldAsOfAnOperator()
{
    const Session session(std::make_unique<FakeSource>());
    testsupport::RecordingObserver observer;
    auto* const span = config<values::DoubleValue>("DFSpan");
    span->AddObserver(&observer);
    QCOMPARE(error("Span", "5"), QString());
    span->RemoveObserver(&observer);
    QCOMPARE(observer.codes, (std::vector<TChangeCode>{ChangeContent, ChangeExternal}));
}

void TestOperatorSettings::whatIsAllowedIsTold_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("allowed");
    QTest::newRow("Quality") << "0"
                             << "a whole number from 1 to 100";
    QTest::newRow("Threshold") << "1.5"
                               << "a whole number from -40 to 200";
    QTest::newRow("Span") << "-1"
                          << "a number from 0 to 2147483647";
    QTest::newRow("FrequencyOffset") << "nan"
                                     << "a number from -2147483647 to 2147483647";
    QTest::newRow("Mode") << "Norm"
                          << "one of \"Normal\", \"Cont\", \"Gate\"";
    QTest::newRow("Averaging") << "300"
                               << "one of \"Off\" (0), \"200m\" (200), \"500m\" (500), \"1s\" (1000), \"2s\" (2000), "
                                  "\"5s\" (5000), \"10s\" (10000)";
}

void TestOperatorSettings::whatIsAllowedIsTold()
{
    QFETCH(QString, value);
    QFETCH(QString, allowed);
    const Session session(std::make_unique<FakeSource>());
    QCOMPARE(error(QTest::currentDataTag(), value),
             QStringLiteral("Option --set %1: \"%2\" was given, but %3 was expected.")
                 .arg(QLatin1String(QTest::currentDataTag()), value, allowed));
}

void TestOperatorSettings::aMissingValueIsTold()
{
    QCOMPARE(error("Frequency", "5"), QStringLiteral("Option --set Frequency: there is no such setting here."));
}

void TestOperatorSettings::aValueOfAnotherKindIsTold()
{
    const FreshTree tree;
    tree.add<values::BoolValue>("/GLOBAL/Frequency");
    QCOMPARE(error("Frequency", "5"),
             QStringLiteral("Option --set Frequency: \"5\" was given, but a value of another kind in this place was "
                            "expected."));
}

DFL_TEST_MAIN(TestOperatorSettings)
#include "tst_operatorsettings.moc"
