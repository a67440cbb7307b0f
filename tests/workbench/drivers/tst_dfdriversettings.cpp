#include "driverbench.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "support/traces.h"

#include "ztbase/observation.h"

#include <list>

using namespace workbench;

Q_DECLARE_METATYPE(std::optional<workbench::DfMode>)

namespace {

const QString text30kHz = QStringLiteral(
    "<DF_Settings><Bandwidth>30000</Bandwidth><Averaging>500</Averaging><DFMode>Gate</DFMode>"
    "<Detail><QualityThreshold>40</QualityThreshold><LevelThreshold>12</LevelThreshold></Detail>"
    "<FrequencyOffset>-250</FrequencyOffset><Workflow>Continuous</Workflow><LocateType>Online</LocateType>"
    "<Activity>DF</Activity><ActivityTrigger>Signal</ActivityTrigger></DF_Settings>");

DfDevice otherDevice()
{
    return {QStringLiteral("Other"),
            {{QStringLiteral("1 kHz"), 1000.0}, {QStringLiteral("25 kHz"), 25000.0}},
            {{QStringLiteral("none"), 0.0}, {QStringLiteral("400 ms"), 400.0}},
            {{QStringLiteral("Gated"), DfMode::Gated}, {QStringLiteral("Normal"), DfMode::Normal}}};
}

std::unique_ptr<FakeSource> sourceWithTwoDevices()
{
    auto source = std::make_unique<FakeSource>();
    source->m_devices.push_back(otherDevice());
    return source;
}

StringValue* toDriver()
{
    return find<StringValue>(parameterRoot + QStringLiteral("DFLOCATE/ToDriver"));
}

StringValue* settingsText()
{
    return find<StringValue>(parameterRoot + QStringLiteral("DF_Settings"));
}

template <typename T = ValueSelection>
T* global(const char* name)
{
    return find<T>(globalRoot + QLatin1String(name));
}

QString element(const char* name, const QString& content)
{
    return QStringLiteral("<DF_Settings><%1>%2</%1></DF_Settings>").arg(QLatin1String(name), content);
}

QStringList itemTexts(const ValueSelection* selection)
{
    QStringList texts;
    for (int i = 0; i < selection->GetItemCount(); ++i)
        texts += QStringLiteral("%1=%2").arg(selection->GetItem(i)->GetKey()).arg(selection->GetItem(i)->GetName());
    return texts;
}

/// Sends @p text and waits for the answer.
QString answerTo(const QString& text)
{
    testsupport::RecordingObserver observer;
    const Observation observation(*settingsText(), observer);
    toDriver()->SetValue(text, nullptr);
    const bool answered = QTest::qWaitFor([&] { return observer.count(ChangeContent) > 0; });
    return answered ? settingsText()->GetValue() : QStringLiteral("no answer");
}

} // namespace

class DfDriverSettingsTest : public QObject
{
    Q_OBJECT
private slots:
    void aTextIsAnsweredFromTheEventLoop();
    void allSettingsOfATextAreMeasuredWith();
    void aTextCountsAtOnceAndNotOnlyWhenItIsAnswered();
    void theLatestOfSeveralTextsIsAnsweredOnce();
    void theSameTextSentAgainIsAnsweredAgain();
    void anAnswerIsAnnouncedOnceEvenWhenItIsTheSame();
    void aDriverWithoutATextAnswersNothing();

    void whatTheDeviceCannotDoIsCorrected_data();
    void whatTheDeviceCannotDoIsCorrected();
    void whatATextDoesNotNameStays();
    void aTextWithoutThresholdsTakesThemOutOfUse();
    void otherFieldsOfATextComeBackUnchanged();
    void unknownElementsDoNotComeBack();

    void aBadTextIsRefusedWithItsReason_data();
    void aBadTextIsRefusedWithItsReason();
    void aRefusalIsTracedWhenTracesAreOn();

    void aConfigValueCountsWithoutAText();
    void aConfigValueAfterATextHasTheLastWord();
    void aTextAfterAConfigValueHasTheLastWord();
    void aThresholdCountsFromItsStateAndItsContent();
    void aThresholdOutOfUseSaysNothingByItsContent();
    void anAnswerTellsAlsoWhatConfigValuesSaidAfterTheText();
    void aConfigListThatIsFilledAnewSaysNothing();
    void aDeviceListCountsWhenSomebodySelectsInIt();
    void deviceListsShowWhatIsInForce();
    void theTextIsAnsweredBeforeTheDeviceListsAreSet();
    void theQualityThresholdComesWithTheResult();
    void thePublishedRequestIsThatOfTheResult();

    void theOtherDevicesListsArePublishedBeforeItIsReadyAgain();
    void noContentOfAListIsAnnouncedWhenTheDeviceChanges();
    void anotherDeviceCorrectsWhatIsInForce();
    void anotherDeviceAnswersTheAcceptedText();
    void withoutATextAnotherDeviceWritesNone();
    void theSameDeviceAgainChangesNothing();

    void theDriverMayBeDeletedWhileItTakesOrAnswersATextOrChangesTheDevice_data();
    void theDriverMayBeDeletedWhileItTakesOrAnswersATextOrChangesTheDevice();
    void theDriverMayBeDeletedByARefusal();
    void anAnswerThatIsDueDiesWithTheDriver();
    void settingsValuesMayVanish();

    void modesAreKnownByTheirFirstThreeLetters_data();
    void modesAreKnownByTheirFirstThreeLetters();
    void ofTwoEquallyNearStepsTheFirstIsTaken();
};

void DfDriverSettingsTest::aTextIsAnsweredFromTheEventLoop()
{
    const Bench bench;
    toDriver()->SetValue(text30kHz, nullptr);
    QCOMPARE(settingsText()->GetValue(), QString());
    QTRY_COMPARE(settingsText()->GetValue(), text30kHz);
}

void DfDriverSettingsTest::allSettingsOfATextAreMeasuredWith()
{
    Bench bench;
    QCOMPARE(answerTo(text30kHz), text30kHz);
    bench.command(9);
    const DfRequest& request = bench.source->requests.at(0);
    QCOMPARE(request.bandwidth, 30000.0);
    QCOMPARE(request.averaging, 500.0);
    QCOMPARE(request.mode, DfMode::Gated);
    QCOMPARE(request.qualityThreshold, std::optional<int>(40));
    QCOMPARE(request.levelThreshold, std::optional<int>(12));
    QCOMPARE(request.frequencyOffset, -250.0);
    QCOMPARE(request.frequency, 123456789.0 - 250.0);
}

void DfDriverSettingsTest::aTextCountsAtOnceAndNotOnlyWhenItIsAnswered()
{
    Bench bench;
    toDriver()->SetValue(text30kHz, nullptr);
    bench.command(9);
    QCOMPARE(bench.source->requests.at(0).bandwidth, 30000.0);
}

void DfDriverSettingsTest::theLatestOfSeveralTextsIsAnsweredOnce()
{
    const Bench bench;
    testsupport::RecordingObserver observer;
    const Observation observation(*settingsText(), observer);
    toDriver()->SetValue(element("Bandwidth", QStringLiteral("600")), nullptr);
    toDriver()->SetValue(text30kHz, nullptr);
    QTRY_COMPARE(settingsText()->GetValue(), text30kHz);
    QCoreApplication::processEvents();
    QCOMPARE(observer.codes, (std::vector<TChangeCode>{ChangeContent, ChangeExternal}));
}

void DfDriverSettingsTest::theSameTextSentAgainIsAnsweredAgain()
{
    const Bench bench;
    const QString wanted = element("Bandwidth", QStringLiteral("29000"));
    const QString corrected = answerTo(wanted);
    QVERIFY(corrected.contains(QStringLiteral("<Bandwidth>30000</Bandwidth>")));
    QCOMPARE(answerTo(wanted), corrected);
}

void DfDriverSettingsTest::anAnswerIsAnnouncedOnceEvenWhenItIsTheSame()
{
    const Bench bench;
    answerTo(text30kHz);
    testsupport::RecordingObserver observer;
    const Observation observation(*settingsText(), observer);
    toDriver()->SetValue(text30kHz, nullptr);
    QTRY_COMPARE(observer.count(ChangeContent), 1);
    QCoreApplication::processEvents();
    QCOMPARE(observer.codes, (std::vector<TChangeCode>{ChangeContent, ChangeExternal}));
}

void DfDriverSettingsTest::aDriverWithoutATextAnswersNothing()
{
    const Bench bench;
    testsupport::RecordingObserver observer;
    const Observation observation(*settingsText(), observer);
    handlerValue<ValueSelection>("Config/Bandwidth")->Select(9);
    QTRY_COMPARE(global("DeviceDfBandwidth")->GetStringValue(), QStringLiteral("30.0 kHz"));
    QVERIFY(observer.codes.empty());
    QCOMPARE(toDriver()->GetValue(), QString());
}

void DfDriverSettingsTest::whatTheDeviceCannotDoIsCorrected_data()
{
    QTest::addColumn<QString>("sent");
    QTest::addColumn<QString>("answered");
    const auto row = [](const char* name, const char* sent, const char* answered) {
        QTest::newRow(name) << QStringLiteral("<DF_Settings>%1</DF_Settings>").arg(QLatin1String(sent))
                            << QString::fromLatin1(answered);
    };
    row("bandwidth between steps", "<Bandwidth>29000.5</Bandwidth>", "<Bandwidth>30000</Bandwidth>");
    row("bandwidth in the middle", "<Bandwidth>13500</Bandwidth>", "<Bandwidth>12000</Bandwidth>");
    row("bandwidth too small", "<Bandwidth>-5</Bandwidth>", "<Bandwidth>120</Bandwidth>");
    row("bandwidth too large", "<Bandwidth>90000000000</Bandwidth>", "<Bandwidth>200000</Bandwidth>");
    row("averaging between steps", "<Averaging>1400</Averaging>", "<Averaging>1000</Averaging>");
    row("averaging negative", "<Averaging>-1</Averaging>", "<Averaging>0</Averaging>");
    row("averaging too long", "<Averaging>60000</Averaging>", "<Averaging>10000</Averaging>");
    row("mode unknown", "<DFMode>Wobble</DFMode>", "<DFMode>Norm</DFMode>");
    row("quality too low", "<Detail><QualityThreshold>-3</QualityThreshold></Detail>",
        "<Detail><QualityThreshold>1</QualityThreshold></Detail>");
    row("quality too high", "<Detail><QualityThreshold>101</QualityThreshold></Detail>",
        "<Detail><QualityThreshold>100</QualityThreshold></Detail>");
    row("level too low", "<Detail><LevelThreshold>-40.7</LevelThreshold></Detail>",
        "<Detail><LevelThreshold>-40</LevelThreshold></Detail>");
    row("level far too high", "<Detail><LevelThreshold>99999999999</LevelThreshold></Detail>",
        "<Detail><LevelThreshold>200</LevelThreshold></Detail>");
    row("level half", "<Detail><LevelThreshold>12.5</LevelThreshold></Detail>",
        "<Detail><LevelThreshold>13</LevelThreshold></Detail>");
    row("level half below zero", "<Detail><LevelThreshold>-2.5</LevelThreshold></Detail>",
        "<Detail><LevelThreshold>-2</LevelThreshold></Detail>");
    row("offset too large", "<FrequencyOffset>3000000000</FrequencyOffset>",
        "<FrequencyOffset>2147483647</FrequencyOffset>");
    row("offset too small", "<FrequencyOffset>-3000000000</FrequencyOffset>",
        "<FrequencyOffset>-2147483647</FrequencyOffset>");
}

void DfDriverSettingsTest::whatTheDeviceCannotDoIsCorrected()
{
    QFETCH(QString, sent);
    QFETCH(QString, answered);
    Bench bench;
    // Normal is the default and would not show that the text decides.
    handlerValue<ValueSelection>("Config/Mode")->Select(2);
    const QString answer = answerTo(sent);
    QVERIFY2(answer.contains(answered), qPrintable(answer));
    bench.command(9);
    QVERIFY(bench.source->requests.at(0) == bench.driver->settings());
}

void DfDriverSettingsTest::whatATextDoesNotNameStays()
{
    const Bench bench;
    handlerValue<ValueSelection>("Config/AverageTime")->Select(3);
    handlerValue<ValueSelection>("Config/Mode")->Select(1);
    handlerValue<DoubleValue>("Config/DFFrequencyOffset")->SetValue(77.0, nullptr);
    QCOMPARE(answerTo(element("Bandwidth", QStringLiteral("300"))),
             QStringLiteral("<DF_Settings><Bandwidth>300</Bandwidth><Averaging>1000</Averaging><DFMode>Cont</DFMode>"
                            "<FrequencyOffset>77</FrequencyOffset></DF_Settings>"));
    QCOMPARE(answerTo(QStringLiteral("<DF_Settings/>")),
             QStringLiteral("<DF_Settings><Bandwidth>300</Bandwidth><Averaging>1000</Averaging><DFMode>Cont</DFMode>"
                            "<FrequencyOffset>77</FrequencyOffset></DF_Settings>"));
}

void DfDriverSettingsTest::aTextWithoutThresholdsTakesThemOutOfUse()
{
    const Bench bench;
    answerTo(text30kHz);
    answerTo(QStringLiteral("<DF_Settings><Detail><LevelThreshold>5</LevelThreshold></Detail></DF_Settings>"));
    QCOMPARE(bench.driver->settings().qualityThreshold, std::optional<int>());
    QCOMPARE(bench.driver->settings().levelThreshold, std::optional<int>(5));
    answerTo(QStringLiteral("<DF_Settings><Detail/></DF_Settings>"));
    QCOMPARE(bench.driver->settings().levelThreshold, std::optional<int>());
}

void DfDriverSettingsTest::otherFieldsOfATextComeBackUnchanged()
{
    const Bench bench;
    const QString answer = answerTo(QStringLiteral("<DF_Settings><Workflow>On trigger</Workflow><Activity>No DF/Locate"
                                                   "</Activity></DF_Settings>"));
    QVERIFY(answer.endsWith(QStringLiteral("<Workflow>On trigger</Workflow><Activity>No DF/Locate</Activity>"
                                           "</DF_Settings>")));
}

void DfDriverSettingsTest::unknownElementsDoNotComeBack()
{
    const Bench bench;
    QVERIFY(!answerTo(QStringLiteral("<?xml version=\"1.0\"?><DF_Settings><Colour>red</Colour></DF_Settings>"))
                 .contains(QStringLiteral("Colour")));
}

void DfDriverSettingsTest::aBadTextIsRefusedWithItsReason_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char* name, const QString& text, const char* reason) {
        QTest::newRow(name) << text << QStringLiteral("The settings for the driver are refused: %1.").arg(reason);
    };
    row("empty", QString(), "it is empty");
    row("too long", QString(65537, QLatin1Char(' ')), "it is longer than 65536 characters");
    row("other root", QStringLiteral("<Settings/>"), "its root is \"Settings\" instead of \"DF_Settings\"");
    row("document type", QStringLiteral("<!DOCTYPE a [<!ENTITY b \"c\">]><DF_Settings/>"),
        "it has a document type declaration");
    row("number", element("Bandwidth", QStringLiteral("1e4")),
        "it has an element twice, nested too deeply or with a bad number");
    row("twice", QStringLiteral("<DF_Settings><DFMode>Norm</DFMode><DFMode>Cont</DFMode></DF_Settings>"),
        "it has an element twice, nested too deeply or with a bad number");
    QTest::newRow("no XML") << QStringLiteral("<DF_Settings>\n<Bandwidth>")
                            << QStringLiteral("The settings for the driver are refused: line 2: ");
}

void DfDriverSettingsTest::aBadTextIsRefusedWithItsReason()
{
    QFETCH(QString, text);
    QFETCH(QString, reason);
    const Bench bench;
    answerTo(text30kHz);
    const DfSettings before = bench.driver->settings();
    QSignalSpy refused(bench.driver.get(), &DfDriver::settingsRefused);
    testsupport::RecordingObserver observer;
    const Observation observation(*settingsText(), observer);
    toDriver()->SetValue(text, nullptr);
    QCoreApplication::processEvents();
    QCOMPARE(refused.count(), 1);
    QVERIFY2(refused.at(0).at(0).toString().startsWith(reason), qPrintable(refused.at(0).at(0).toString()));
    QCOMPARE(settingsText()->GetValue(), text30kHz);
    QVERIFY(observer.codes.empty());
    QVERIFY(bench.driver->settings() == before);
}

void DfDriverSettingsTest::aRefusalIsTracedWhenTracesAreOn()
{
    const Bench bench;
    {
        const testsupport::Traces silent(0);
        toDriver()->SetValue(QStringLiteral("nonsense"), nullptr);
        QVERIFY(silent.records.empty());
    }
    const testsupport::Traces traces;
    toDriver()->SetValue(QStringLiteral("<Other/>"), nullptr);
    QCOMPARE(traces.records.size(), std::size_t(1));
    QCOMPARE(traces.records[0].text, QStringLiteral("The settings for the driver are refused: its root is \"Other\" "
                                                    "instead of \"DF_Settings\"."));
    QCOMPARE(traces.records[0].sourceFile, QStringLiteral("workbench/drivers/dfdriver"));
}

void DfDriverSettingsTest::aConfigValueCountsWithoutAText()
{
    const Bench bench;
    handlerValue<ValueSelection>("Config/Bandwidth")->Select(9);
    handlerValue<ValueSelection>("Config/AverageTime")->Select(2);
    handlerValue<ValueSelection>("Config/Mode")->Select(1);
    handlerValue<DoubleValue>("Config/DFFrequencyOffset")->SetValue(-8.0, nullptr);
    QCOMPARE(bench.driver->settings().bandwidth, 30000.0);
    QCOMPARE(bench.driver->settings().averaging, 500.0);
    QCOMPARE(bench.driver->settings().mode, DfMode::Continuous);
    QCOMPARE(bench.driver->settings().frequencyOffset, -8.0);
}

void DfDriverSettingsTest::aConfigValueAfterATextHasTheLastWord()
{
    const Bench bench;
    answerTo(text30kHz);
    handlerValue<ValueSelection>("Config/Bandwidth")->Select(1);
    QCOMPARE(bench.driver->settings().bandwidth, 300.0);
    QCOMPARE(bench.driver->settings().averaging, 500.0);
}

void DfDriverSettingsTest::aTextAfterAConfigValueHasTheLastWord()
{
    const Bench bench;
    handlerValue<ValueSelection>("Config/Bandwidth")->Select(1);
    toDriver()->SetValue(text30kHz, nullptr);
    QCOMPARE(bench.driver->settings().bandwidth, 30000.0);
}

void DfDriverSettingsTest::aThresholdCountsFromItsStateAndItsContent()
{
    const Bench bench;
    auto* quality = handlerValue<IntValue>("Config/Quality");
    quality->SetState(values::StateOrdinary, nullptr);
    QCOMPARE(bench.driver->settings().qualityThreshold, std::optional<int>(1));
    quality->SetValue(60, nullptr);
    QCOMPARE(bench.driver->settings().qualityThreshold, std::optional<int>(60));
    quality->SetState(values::StateUnused, nullptr);
    QCOMPARE(bench.driver->settings().qualityThreshold, std::optional<int>());
}

void DfDriverSettingsTest::aThresholdOutOfUseSaysNothingByItsContent()
{
    // As a component does that follows a text without enabling the value.
    const Bench bench;
    answerTo(text30kHz);
    handlerValue<IntValue>("Config/Threshold")->SetValue(33, nullptr);
    handlerValue<IntValue>("Config/Quality")->SetValue(66, nullptr);
    QCOMPARE(bench.driver->settings().levelThreshold, std::optional<int>(12));
    QCOMPARE(bench.driver->settings().qualityThreshold, std::optional<int>(40));
}

void DfDriverSettingsTest::anAnswerTellsAlsoWhatConfigValuesSaidAfterTheText()
{
    const Bench bench;
    toDriver()->SetValue(text30kHz, nullptr);
    handlerValue<ValueSelection>("Config/Bandwidth")->Select(0);
    QTRY_VERIFY(settingsText()->GetValue().contains(QStringLiteral("<Bandwidth>120</Bandwidth>")));
    QVERIFY(settingsText()->GetValue().contains(QStringLiteral("<Averaging>500</Averaging>")));
}

void DfDriverSettingsTest::aConfigListThatIsFilledAnewSaysNothing()
{
    const Bench bench;
    handlerValue<ValueSelection>("Config/Bandwidth")->Select(9);
    handlerValue<ValueSelection>("Config/Bandwidth")->DeleteItems();
    handlerValue<ValueSelection>("Config/Mode")->DeleteItems();
    QCOMPARE(bench.driver->settings().bandwidth, 30000.0);
}

void DfDriverSettingsTest::aDeviceListCountsWhenSomebodySelectsInIt()
{
    const Bench bench;
    global("DeviceDfBandwidth")->Select(QStringLiteral("60.0 kHz"));
    global("DeviceDfAveraging")->Select(QStringLiteral("2s"));
    global("DeviceDfMode")->Select(QStringLiteral("CONTINUOUS"));
    QCOMPARE(bench.driver->settings().bandwidth, 60000.0);
    QCOMPARE(bench.driver->settings().averaging, 2000.0);
    QCOMPARE(bench.driver->settings().mode, DfMode::Continuous);
}

void DfDriverSettingsTest::deviceListsShowWhatIsInForce()
{
    const Bench bench;
    answerTo(text30kHz);
    QTRY_COMPARE(global("DeviceDfMode")->GetStringValue(), QStringLiteral("GATED"));
    QCOMPARE(global("DeviceDfBandwidth")->GetStringValue(), QStringLiteral("30.0 kHz"));
    QCOMPARE(global("DeviceDfAveraging")->GetStringValue(), QStringLiteral("500m"));
}

void DfDriverSettingsTest::theTextIsAnsweredBeforeTheDeviceListsAreSet()
{
    const Bench bench;
    QStringList order;
    testsupport::RecordingObserver observer([&](Observable* source, TChangeCode code) {
        if (code == ChangeContent)
            order += dynamic_cast<values::ValueBase*>(source)->GetName();
    });
    const Observation observation(*settingsText(), observer);
    std::list<Observation> observations;
    for (const char* name : {"DeviceDfMode", "DeviceDfAveraging", "DeviceDfBandwidth"})
        observations.emplace_back(*global(name), observer);
    toDriver()->SetValue(text30kHz, nullptr);
    QTRY_COMPARE(order.join(QLatin1Char(' ')),
                 QStringLiteral("DF_Settings DeviceDfBandwidth DeviceDfAveraging DeviceDfMode"));
}

void DfDriverSettingsTest::theQualityThresholdComesWithTheResult()
{
    Bench bench;
    answerTo(text30kHz);
    bench.measure();
    QCOMPARE(resultValue<IntValue>("QualityThreshold")->GetValue(), 40);
}

void DfDriverSettingsTest::thePublishedRequestIsThatOfTheResult()
{
    Bench bench;
    QVERIFY(!bench.driver->publishedRequest());
    bench.command(10);
    toDriver()->SetValue(text30kHz, nullptr);
    bench.answer();
    QCOMPARE(bench.driver->publishedRequest()->bandwidth, 12000.0);
    QTRY_COMPARE(bench.source->requests.size(), std::size_t(2));
    bench.answer();
    QTRY_COMPARE(bench.driver->publishedRequest()->bandwidth, 30000.0);
}

void DfDriverSettingsTest::theOtherDevicesListsArePublishedBeforeItIsReadyAgain()
{
    const Bench bench(sourceWithTwoDevices());
    QCOMPARE(bench.driver->currentDevice(), 0);
    QStringList seen;
    auto* ready = global<BoolValue>("DfDeviceReady");
    testsupport::RecordingObserver observer([&](Observable*, TChangeCode code) {
        if (code != ChangeContent)
            return;
        for (const char* name : {"DeviceDfBandwidth", "DeviceDfAveraging", "DeviceDfMode"})
            seen += itemTexts(global(name)).join(QLatin1Char(','));
    });
    const Observation observation(*ready, observer);
    bench.driver->selectDevice(1);
    QCOMPARE(seen, (QStringList{QStringLiteral("0=1 kHz,1=25 kHz"), QStringLiteral("0=none,1=400 ms"),
                                QStringLiteral("0=Gated,1=Normal")}));
    QCOMPARE(bench.driver->currentDevice(), 1);
    QVERIFY(ready->GetValue());
    ready->SetValue(false, nullptr);
    bench.driver->selectDevice(0);
    QVERIFY(ready->GetValue());
}

void DfDriverSettingsTest::noContentOfAListIsAnnouncedWhenTheDeviceChanges()
{
    // Whoever mirrors a list would look for the new text in its old items.
    const Bench bench(sourceWithTwoDevices());
    testsupport::RecordingObserver observer;
    std::list<Observation> observations;
    for (const char* name : {"DeviceDfMode", "DeviceDfAveraging", "DeviceDfBandwidth"})
        observations.emplace_back(*global(name), observer);
    bench.driver->selectDevice(1);
    QCoreApplication::processEvents();
    QCOMPARE(observer.codes, (std::vector<TChangeCode>{ChangeItems, ChangeItems, ChangeItems}));
}

void DfDriverSettingsTest::anotherDeviceCorrectsWhatIsInForce()
{
    Bench bench(sourceWithTwoDevices());
    answerTo(text30kHz);
    handlerValue<ValueSelection>("Config/Mode")->Select(1);
    bench.driver->selectDevice(1);
    QCOMPARE(bench.driver->settings().bandwidth, 25000.0);
    QCOMPARE(bench.driver->settings().averaging, 400.0);
    QCOMPARE(bench.driver->settings().mode, DfMode::Normal);
    QCOMPARE(global("DeviceDfBandwidth")->GetCurrentValue(), 25000.0);
    QCOMPARE(global("DeviceDfAveraging")->GetCurrentValue(), 400.0);
    QCOMPARE(global("DeviceDfMode")->GetStringValue(), QStringLiteral("Normal"));
    bench.command(9);
    QCOMPARE(bench.source->requests.at(0).bandwidth, 25000.0);
}

void DfDriverSettingsTest::anotherDeviceAnswersTheAcceptedText()
{
    const Bench bench(sourceWithTwoDevices());
    answerTo(text30kHz);
    bench.driver->selectDevice(1);
    QTRY_COMPARE(settingsText()->GetValue(), QString(text30kHz)
                                                 .replace(QStringLiteral("30000"), QStringLiteral("25000"))
                                                 .replace(QStringLiteral(">500<"), QStringLiteral(">400<")));
}

void DfDriverSettingsTest::withoutATextAnotherDeviceWritesNone()
{
    const Bench bench(sourceWithTwoDevices());
    bench.driver->selectDevice(1);
    QCoreApplication::processEvents();
    QCOMPARE(settingsText()->GetValue(), QString());
}

void DfDriverSettingsTest::theSameDeviceAgainChangesNothing()
{
    const Bench bench(sourceWithTwoDevices());
    testsupport::RecordingObserver observer;
    auto* ready = global<BoolValue>("DfDeviceReady");
    const Observation observation(*ready, observer);
    const Observation ofBandwidths(*global("DeviceDfBandwidth"), observer);
    bench.driver->selectDevice(0);
    QVERIFY(observer.codes.empty());
}

void DfDriverSettingsTest::theDriverMayBeDeletedWhileItTakesOrAnswersATextOrChangesTheDevice_data()
{
    QTest::addColumn<QString>("notification");
    for (const char* line : {"ToDriver 3", "ToDriver 19", "DF_Settings 3", "DF_Settings 19", "DeviceDfBandwidth 3",
                             "DeviceDfAveraging 3", "DeviceDfMode 3", "DeviceDfBandwidth 7", "DeviceDfAveraging 7",
                             "DeviceDfMode 7", "DfDeviceReady 3", "DfDeviceReady 19"})
        QTest::newRow(line) << QString::fromLatin1(line);
}

void DfDriverSettingsTest::theDriverMayBeDeletedWhileItTakesOrAnswersATextOrChangesTheDevice()
{
    QFETCH(QString, notification);
    Bench bench(sourceWithTwoDevices());
    testsupport::RecordingObserver observer([&](Observable* source, TChangeCode code) {
        const QString line =
            dynamic_cast<values::ValueBase*>(source)->GetName() + QLatin1Char(' ') + QString::number(code);
        if (line == notification)
            bench.driver.reset();
    });
    for (values::ValueBase* value : values::Tree::Instance()->ValuesBelow(QString()))
        value->AddObserver(&observer);
    toDriver()->SetValue(text30kHz, nullptr);
    QCoreApplication::processEvents();
    if (bench.driver)
        bench.driver->selectDevice(1);
    QVERIFY(bench.driver == nullptr);
    QVERIFY(values::Tree::Instance()->ValuesBelow(QString()).empty());
}

void DfDriverSettingsTest::theDriverMayBeDeletedByARefusal()
{
    Bench bench;
    connect(bench.driver.get(), &DfDriver::settingsRefused, this, [&] { bench.driver.reset(); });
    toDriver()->SetValue(QStringLiteral("nonsense"), nullptr);
    QVERIFY(bench.driver == nullptr);
}

void DfDriverSettingsTest::anAnswerThatIsDueDiesWithTheDriver()
{
    Bench bench;
    toDriver()->SetValue(text30kHz, nullptr);
    bench.driver.reset();
    QCoreApplication::processEvents();
    QVERIFY(values::Tree::Instance()->ValuesBelow(QString()).empty());
}

void DfDriverSettingsTest::settingsValuesMayVanish()
{
    for (const char* gone : {"DF_Settings", "DFLOCATE/ToDriver"}) {
        Bench bench;
        toDriver()->SetValue(text30kHz, nullptr);
        QVERIFY(values::Tree::Instance()->DeleteValue(parameterRoot + QLatin1String(gone)));
        QCoreApplication::processEvents();
        bench.command(9);
        QCOMPARE(bench.source->requests.at(0).bandwidth, 30000.0);
    }
    for (const char* gone : {"DeviceDfBandwidth", "DeviceDfAveraging", "DeviceDfMode", "DfDeviceReady"}) {
        Bench bench(sourceWithTwoDevices());
        QVERIFY(values::Tree::Instance()->DeleteValue(globalRoot + QLatin1String(gone)));
        toDriver()->SetValue(text30kHz, nullptr);
        QTRY_COMPARE(settingsText()->GetValue(), text30kHz);
        bench.driver->selectDevice(1);
        QCOMPARE(bench.driver->settings().bandwidth, 25000.0);
    }
}

void DfDriverSettingsTest::modesAreKnownByTheirFirstThreeLetters_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<std::optional<DfMode>>("mode");
    const auto row = [](const char* text, std::optional<DfMode> mode) {
        QTest::newRow(text) << QString::fromLatin1(text) << mode;
    };
    row("Normal", DfMode::Normal);
    row("NORMAL", DfMode::Normal);
    row("nor", DfMode::Normal);
    row("Cont", DfMode::Continuous);
    row("CONTINUOUS", DfMode::Continuous);
    row("Gate", DfMode::Gated);
    row("gated", DfMode::Gated);
    row("No", std::nullopt);
    row("", std::nullopt);
    row("Wobble", std::nullopt);
}

void DfDriverSettingsTest::modesAreKnownByTheirFirstThreeLetters()
{
    QFETCH(QString, text);
    QFETCH(std::optional<DfMode>, mode);
    QCOMPARE(modeFromText(text), mode);
}

void DfDriverSettingsTest::ofTwoEquallyNearStepsTheFirstIsTaken()
{
    const std::vector<DeviceStep> steps{{QStringLiteral("high"), 30.0}, {QStringLiteral("low"), 10.0}};
    QCOMPARE(nearestStep(steps, 20.0), 0);
    QCOMPARE(nearestStep(steps, 19.0), 1);
    QCOMPARE(nearestStep(steps, -1e300), 1);
}

DFL_TEST_MAIN_WITH(DfDriverSettingsTest, QCoreApplication)
#include "tst_dfdriversettings.moc"
