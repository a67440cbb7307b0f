#include "panelbench.h"
#include "support/testmain.h"

#include <QRegularExpression>
#include <QSignalSpy>

#include <optional>

using namespace testsupport;
using values::Tree;
using values::ValueSelection;
using VelmarGui::ConfigTable;

namespace {

QStringList operator+(QStringList lines, const std::optional<QString>& line)
{
    if (line)
        lines << *line;
    return lines;
}

/// What the roads below should leave behind: the settings, and what is known of them elsewhere.
struct Expectation
{
    Settings settings;             ///< the values
    QString reported;              ///< the host's parameter set
    QString driver;                ///< the driver's settings
    std::optional<QString> edited; ///< averaging edited in the form but not yet in the values
    bool online = true;

    /// The settings are reported: a line only when the text is another one.
    std::optional<QString> report()
    {
        const QString text = settings.text();
        return std::exchange(reported, text) == text ? std::nullopt : std::make_optional("set=" + text);
    }
    /// The settings go to the driver, unless it has them.
    [[nodiscard]] std::optional<QString> send() const
    {
        const QString text = settings.text();
        return text == driver ? std::nullopt : std::make_optional("ToDriver=" + text);
    }
};

const QStringList bandwidthTexts{QStringLiteral("1.2 kHz"), QStringLiteral("7.5 kHz"), QStringLiteral("12.0 kHz"),
                                 QStringLiteral("30.0 kHz")};

QString hertz(const QString& kilohertz)
{
    return QString::number(1000.0 * kilohertz.section(QLatin1Char(' '), 0, 0).toDouble());
}

/// One of two that is not @p current.
QString other(const QString& current, const QString& one, const QString& another)
{
    return current == one ? another : one;
}

/// Changes a setting on one road, to another content each time, and gives the lines that it should leave in a journal.
using Road = QStringList (*)(PanelBench& bench, Expectation& expected);

QStringList operatorEditsTheForm(PanelBench& bench, Expectation& expected)
{
    const QString text = other(bench.shown("Averaging"), "5s", "1s");
    bench.choose("Averaging", text);
    const QString milliseconds = text == "5s" ? "5000" : "1000";
    if (!expected.online) {
        expected.edited = milliseconds;
        return {};
    }
    expected.settings.averaging = milliseconds;
    return QStringList() + expected.report() + ("Config/AverageTime=" + text) + expected.send();
}

QStringList operatorEditsAValueInTheToolbar(PanelBench& /*bench*/, Expectation& expected)
{
    auto* const mode = PanelBench::selection("Config/Mode");
    const QString text = other(mode->GetStringValue(), "Gate", "Cont");
    mode->Select(text);
    expected.edited.reset();
    expected.settings.mode = text;
    // The device's mode is set first; its own notification starts an exchange, and the setting's another.
    const QString deviceMode = text == "Gate" ? "GATED" : "CONTINUOUS";
    const auto report = expected.report();
    return QStringList{"Config/Mode=" + text, "G:DeviceDfMode=" + deviceMode} + report + expected.send() +
           expected.send();
}

QStringList hostHandsAParameterSetIn(PanelBench& bench, Expectation& expected)
{
    expected.edited.reset();
    expected.settings.offset = other(expected.settings.offset, "250", "-0.5");
    const auto report = expected.report();
    bench.handIn(expected.settings.text());
    return QStringList() + report + ("Config/DFFrequencyOffset=" + expected.settings.offset);
}

QStringList driverCorrectsItsSettings(PanelBench& /*bench*/, Expectation& expected)
{
    expected.edited.reset();
    expected.settings.locateType = other(expected.settings.locateType, "Online", "History");
    expected.driver = expected.settings.text();
    PanelBench::driverSettings()->SetValue(expected.driver, nullptr);
    return {"P:DF_Settings=" + expected.driver, "Config/DFLocateType=" + expected.settings.locateType,
            "C:DFLocateType=" + expected.settings.locateType};
}

QStringList deviceListsChange(PanelBench& bench, Expectation& expected)
{
    expected.edited.reset();
    const int current = expected.settings.bandwidth == "1200" ? 3 : 0;
    bench.publishBandwidths(bandwidthTexts, current);
    PanelBench::announceDevice();
    const QString text = bandwidthTexts[current];
    expected.settings.bandwidth = hertz(text);
    return QStringList{"G:DeviceDfBandwidth items", "G:DfDeviceReady=false", "Config/Bandwidth items",
                       "Config/Bandwidth=" + text} +
           expected.report() + expected.send();
}

QStringList deviceTakesAnotherItem(PanelBench& /*bench*/, Expectation& expected)
{
    auto* const device = PanelBench::device("DeviceDfBandwidth");
    expected.edited.reset();
    const QString text = other(device->GetStringValue(), "12.0 kHz", "30.0 kHz");
    device->Select(text);
    expected.settings.bandwidth = hertz(text);
    const auto report = expected.report();
    return QStringList{"G:DeviceDfBandwidth=" + text, "Config/Bandwidth=" + text} + report + expected.send() +
           expected.send();
}

QStringList spanChanges(PanelBench& /*bench*/, Expectation& expected)
{
    auto* const span = PanelBench::real("Config/DFSpan");
    expected.edited.reset();
    const QString text = other(PanelBench::selection("Config/Bandwidth")->GetStringValue(), "7.5 kHz", "1.2 kHz");
    const double hz = hertz(text).toDouble() + (span->GetValue() == hertz(text).toDouble() + 10.0 ? 20.0 : 10.0);
    span->SetValue(hz, nullptr);
    expected.settings.bandwidth = hertz(text);
    const auto report = expected.report();
    return (QStringList{"Config/DFSpan=" + QString::number(hz), "Config/Bandwidth=" + text,
                        "G:DeviceDfBandwidth=" + text} +
            report + expected.send() + expected.send())
           << "Values/Commands=Start single DF";
}

QStringList parametersAreRequested(PanelBench& bench, Expectation& expected)
{
    emit bench.common.si_parametersRequested();
    if (expected.online)
        return {};
    QStringList values;
    const QString edited = std::exchange(expected.edited, std::nullopt).value_or(expected.settings.averaging);
    if (std::exchange(expected.settings.averaging, edited) != edited)
        values << (edited == "5000" ? "Config/AverageTime=5s" : "Config/AverageTime=1s");
    return QStringList() + expected.report() + values;
}

struct NamedRoad
{
    const char* name;
    Road road;
};

const NamedRoad roads[] = {
    {"operator edits the form", operatorEditsTheForm},
    {"operator edits a value in the toolbar", operatorEditsAValueInTheToolbar},
    {"host hands a parameter set in", hostHandsAParameterSetIn},
    {"driver corrects its settings", driverCorrectsItsSettings},
    {"device lists change", deviceListsChange},
    {"device takes another item", deviceTakesAnotherItem},
    {"span changes", spanChanges},
    {"parameters are requested", parametersAreRequested},
};

/// The bench with the device's lists of bandwidths and modes, connected.
void connectWithDevice(PanelBench& bench, bool online)
{
    bench.publishBandwidths(bandwidthTexts, 2);
    bench.publishModes({"NORMAL", "CONTINUOUS", "GATED"}, 0);
    bench.connectTo(online);
}

/// A form whose text has another root than settings have.
const QString foreignForm = QStringLiteral(R"(<pgxml name="Other" title="Other" context="Test">
  <field name="DFFrequencyOffset" type="number" label="Offset" row="5"/>
  <script><![CDATA[ function setOverwriteThreshold(on) {} ]]></script>
</pgxml>)");

} // namespace

class TestRoads : public QObject
{
    Q_OBJECT

private slots:
    // Pairs

    void everyRoadAfterEveryOther_data()
    {
        QTest::addColumn<bool>("online");
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("second");
        for (const bool online : {true, false}) {
            for (std::size_t first = 0; first < std::size(roads); ++first) {
                for (std::size_t second = 0; second < std::size(roads); ++second) {
                    QTest::addRow("%s: %s, %s", online ? "with driver" : "without", roads[first].name,
                                  roads[second].name)
                        << online << int(first) << int(second);
                }
            }
        }
    }
    void everyRoadAfterEveryOther()
    {
        QFETCH(bool, online);
        QFETCH(int, first);
        QFETCH(int, second);
        PanelBench bench;
        connectWithDevice(bench, online);
        Expectation expected;
        expected.online = online;
        expected.reported = bench.parameterSet();
        Journal journal(bench);
        for (const int road : {first, second, first}) {
            const QStringList lines = roads[road].road(bench, expected);
            QCOMPARE(journal.take(), lines);
            expectShown(bench, expected);
        }
    }

    // From the operator to the values

    void anEditOfTheFormReachesValuesHostAndDriver()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        QSignalSpy modified(&bench.common, &VelmarGui::GuiComponentCommon::si_parametersModified);
        Journal journal(bench);
        Settings expected;
        expected.offset = "-1500";
        bench.enter("DFFrequencyOffset", -1500);
        QCOMPARE(journal.take(), (QStringList{"set=" + expected.text(), "Config/DFFrequencyOffset=-1500",
                                              "ToDriver=" + expected.text()}));
        QCOMPARE(modified.count(), 0);
    }

    void withoutDriverAnEditWaitsForTheHost()
    {
        PanelBench bench;
        bench.panel->sl_Offline();
        QSignalSpy modified(&bench.common, &VelmarGui::GuiComponentCommon::si_parametersModified);
        Journal journal(bench);
        Settings expected;
        expected.offset = "-1500";
        bench.enter("DFFrequencyOffset", -1500);
        QCOMPARE(modified.count(), 1);
        QCOMPARE(journal.take(), QStringList());
        emit bench.common.si_parametersRequested();
        QCOMPARE(journal.take(), (QStringList{"set=" + expected.text(), "Config/DFFrequencyOffset=-1500"}));
        QCOMPARE(modified.count(), 1);
        emit bench.common.si_parametersRequested();
        QCOMPARE(journal.take(), QStringList());
    }

    void theThresholdBoxBringsBothThresholdsIntoUse()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Journal journal(bench);
        Settings expected;
        expected.quality = "1";
        expected.level = "0";
        bench.field<QCheckBox>("Detail")->click();
        QCOMPARE(journal.take(),
                 (QStringList{"Config/Quality state 0", "Config/Threshold state 0", "set=" + expected.text(),
                              "Config/OverwriteThreshold=true", "ToDriver=" + expected.text()}));
        expected.level = "-7";
        bench.enter("Detail/LevelThreshold", -7);
        QCOMPARE(journal.take(),
                 (QStringList{"set=" + expected.text(), "Config/Threshold=-7", "ToDriver=" + expected.text()}));
        bench.field<QCheckBox>("Detail")->click();
        // An empty group is no detail, and the contents stay.
        QCOMPARE(journal.take(),
                 (QStringList{"Config/Quality state 2", "Config/Threshold state 2", "set=" + Settings().text(),
                              "Config/OverwriteThreshold=false", "ToDriver=" + Settings().text()}));
        QCOMPARE(PanelBench::number("Config/Threshold")->GetValue(), -7);
    }

    void theInsertedCombosTravelWithTheForm_data() { extraValues(); }
    void theInsertedCombosTravelWithTheForm()
    {
        QFETCH(bool, online);
        QFETCH(QString, name);
        QFETCH(QString, field);
        QFETCH(QString, text);
        QFETCH(QString, settings);
        PanelBench bench;
        bench.connectTo(online);
        QSignalSpy modified(&bench.common, &VelmarGui::GuiComponentCommon::si_parametersModified);
        Journal journal(bench);
        bench.choose(field.toLatin1(), text);
        QStringList lines{"C:" + name + "=" + text, "Config/" + name + "=" + text, "set=" + settings};
        if (online) {
            lines << "ToDriver=" + settings;
        } else {
            QCOMPARE(journal.take(), QStringList{lines.takeFirst()});
            QCOMPARE(modified.count(), 1);
            emit bench.common.si_parametersRequested();
        }
        QCOMPARE(journal.take(), lines);
    }

    void aSettingOfTheToolbarThatTravelsWithEverySetDoesSo_data() { extraValues(); }
    void aSettingOfTheToolbarThatTravelsWithEverySetDoesSo()
    {
        QFETCH(bool, online);
        QFETCH(QString, name);
        QFETCH(QString, field);
        QFETCH(QString, text);
        QFETCH(QString, settings);
        PanelBench bench;
        bench.connectTo(online);
        QSignalSpy modified(&bench.common, &VelmarGui::GuiComponentCommon::si_parametersModified);
        Journal journal(bench);
        PanelBench::selection(("Config/" + name).toLatin1())->Select(text);
        QStringList lines{"Config/" + name + "=" + text, "C:" + name + "=" + text};
        if (online)
            lines << "set=" + settings << "ToDriver=" + settings;
        QCOMPARE(journal.take(), lines);
        QCOMPARE(modified.count(), online ? 0 : 1);
        QCOMPARE(bench.shown(field.toLatin1()), text);
        emit bench.common.si_parametersRequested();
        QCOMPARE(journal.take(), online ? QStringList() : QStringList{"set=" + settings});
    }

    void writingBackDuringAnExchangeWithoutDriverReportsNoEdit()
    {
        PanelBench bench;
        bench.panel->sl_Offline();
        QSignalSpy modified(&bench.common, &VelmarGui::GuiComponentCommon::si_parametersModified);
        Settings handedIn;
        handedIn.workflow = "On trigger";
        bench.handIn(handedIn.text());
        QCOMPARE(PanelBench::extra("DFLocateWorkflow")->GetStringValue(), QString("On trigger"));
        QCOMPARE(modified.count(), 0);
        QVERIFY(!bench.sheet()->isModified());
        PanelBench::extra("DFLocateWorkflow")->Select("Continuous");
        QCOMPARE(modified.count(), 1);
        QVERIFY(bench.sheet()->isModified());
    }

    void anEditThatIsNoSettingsTextGoesOnAsItIs()
    {
        PanelBench bench;
        bench.tree.add<values::StringValue>(parameterRoot + "DF_Settings/PGXML")->SetValue(foreignForm, nullptr);
        PanelBench::selection("Config/AverageTime")->Select("2s");
        bench.panel->sl_VTConnected();
        Journal journal(bench);
        bench.enter("DFFrequencyOffset", 5);
        const QString text = "<Other><FrequencyOffset>5</FrequencyOffset></Other>";
        // Unreadable settings are empty ones: averaging falls to the item of number 0.
        QCOMPARE(journal.take(), (QStringList{"set=" + text, "Config/AverageTime=Off", "ToDriver=" + text}));
    }

    void aRequestCompletesWhateverTheFormHolds()
    {
        PanelBench bench;
        bench.tree.add<values::StringValue>(parameterRoot + "DF_Settings/PGXML")->SetValue(foreignForm, nullptr);
        bench.panel->sl_Offline();
        Journal journal(bench);
        emit bench.common.si_parametersRequested();
        QCOMPARE(journal.take(), QStringList{"set=<DF_Settings><Workflow>On request</Workflow><LocateType>No locate"
                                             "</LocateType><Activity>No DF/Locate</Activity><ActivityTrigger>Manual"
                                             "</ActivityTrigger></DF_Settings>"});
    }

    // Values to text

    void everyThresholdInUseEntersTheText_data()
    {
        QTest::addColumn<bool>("quality");
        QTest::addColumn<bool>("level");
        QTest::addColumn<bool>("overwrite");
        for (int bits = 0; bits < 8; ++bits) {
            QTest::addRow("quality %s, level %s, overwriting %s", (bits & 1) != 0 ? "in use" : "not in use",
                          (bits & 2) != 0 ? "in use" : "not in use", (bits & 4) != 0 ? "on" : "off")
                << ((bits & 1) != 0) << ((bits & 2) != 0) << ((bits & 4) != 0);
        }
    }
    void everyThresholdInUseEntersTheText()
    {
        QFETCH(bool, quality);
        QFETCH(bool, level);
        QFETCH(bool, overwrite);
        PanelBench bench;
        PanelBench::number("Config/Quality")->SetValue(55, nullptr);
        PanelBench::number("Config/Threshold")->SetValue(-12, nullptr);
        PanelBench::flag("Config/OverwriteThreshold")->SetValue(overwrite, nullptr);
        bench.panel->sl_VTConnected();
        const auto state = [](bool used) { return used ? values::StateOrdinary : values::StateUnused; };
        PanelBench::number("Config/Quality")->SetState(state(quality), nullptr);
        PanelBench::number("Config/Threshold")->SetState(state(level), nullptr);
        Journal journal(bench);
        Settings expected;
        expected.mode = "Gate";
        expected.quality = quality ? "55" : "";
        expected.level = level ? "-12" : "";
        PanelBench::selection("Config/Mode")->Select("Gate");
        QStringList lines{"Config/Mode=Gate", "set=" + expected.text()};
        // One threshold in the text brings both into use.
        if (level && !quality)
            lines << "Config/Quality state 0";
        if (quality && !level)
            lines << "Config/Threshold state 0";
        QCOMPARE(journal.take(), lines << "ToDriver=" + expected.text());
        QCOMPARE(PanelBench::flag("Config/OverwriteThreshold")->GetValue(), overwrite);
        QCOMPARE(bench.field<QCheckBox>("Detail")->isChecked(), quality || level);
        // And back again.
        bench.handIn(expected.text());
        QCOMPARE(PanelBench::flag("Config/OverwriteThreshold")->GetValue(), quality || level);
        QCOMPARE(PanelBench::number("Config/Quality")->GetValue(), 55);
        QCOMPARE(PanelBench::number("Config/Threshold")->GetValue(), quality && !level ? 0 : -12);
    }

    void overwritingThresholdsIsReportedButNotWritten()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Journal journal(bench);
        PanelBench::flag("Config/OverwriteThreshold")->SetValue(true, nullptr);
        QCOMPARE(journal.take(), (QStringList{"Config/OverwriteThreshold=true", "ToDriver=" + Settings().text()}));
    }

    void theActivityTravelsByKeyAndTheOthersByName()
    {
        PanelBench bench;
        for (const char* const name : {"Config/DFLocateWorkflow", "Config/DFLocateType", "Config/DFLocateActivity",
                                       "Config/DFLocateActivityTrigger"}) {
            auto* const setting = PanelBench::selection(name);
            setting->DeleteItems();
            setting->AddItems({"eins", "zwei", "drei"});
            setting->SelectIndex(1);
        }
        bench.panel->sl_VTConnected();
        Settings expected;
        expected.workflow = expected.locateType = expected.trigger = "";
        expected.activity = "DF";
        QCOMPARE(bench.parameterSet(), expected.text());
        Settings handedIn;
        handedIn.workflow = "On trigger";
        handedIn.activity = "DF and locate";
        bench.handIn(handedIn.text());
        QCOMPARE(PanelBench::selection("Config/DFLocateActivity")->GetStringValue(), QString("drei"));
        QCOMPARE(PanelBench::selection("Config/DFLocateWorkflow")->GetStringValue(), QString("zwei"));
    }

    void selectionsWithoutCurrentItemAreNotChosen()
    {
        PanelBench bench;
        for (const char* const name :
             {"Config/Mode", "Config/Bandwidth", "Config/AverageTime", "Config/DFLocateWorkflow", "Config/DFLocateType",
              "Config/DFLocateActivity", "Config/DFLocateActivityTrigger"})
            PanelBench::selection(name)->DeleteItems();
        bench.panel->sl_VTConnected();
        QCOMPARE(bench.parameterSet(), QString("<DF_Settings><Bandwidth>0</Bandwidth><Averaging>0</Averaging>"
                                               "<FrequencyOffset>0</FrequencyOffset></DF_Settings>"));
    }

    // Text to values

    void aWholeSetReachesTheValuesInItsOrder_data() { onlineOrNot(); }
    void aWholeSetReachesTheValuesInItsOrder()
    {
        QFETCH(bool, online);
        PanelBench bench;
        bench.connectTo(online);
        Journal journal(bench);
        Settings handedIn;
        handedIn.bandwidth = "60000";
        handedIn.averaging = "10000";
        handedIn.mode = "Cont";
        handedIn.quality = "70";
        handedIn.level = "-12.7";
        handedIn.offset = "2.5";
        handedIn.workflow = "Continuous";
        handedIn.locateType = "History";
        handedIn.activity = "DF and locate";
        handedIn.trigger = "Schedule";
        bench.handIn(handedIn.text());
        QCOMPARE(journal.take(),
                 (QStringList{"set=" + handedIn.text(), "Config/Quality state 0", "Config/Threshold state 0",
                              "Config/AverageTime=10s", "Config/Bandwidth=60.0 kHz", "Config/Mode=Cont",
                              "Config/OverwriteThreshold=true", "Config/Quality=70", "Config/Threshold=-13",
                              "Config/DFFrequencyOffset=2.5", "Config/DFLocateWorkflow=Continuous",
                              "C:DFLocateWorkflow=Continuous", "Config/DFLocateType=History", "C:DFLocateType=History",
                              "Config/DFLocateActivity=DF and locate", "C:DFLocateActivity=DF and locate",
                              "Config/DFLocateActivityTrigger=Schedule", "C:DFLocateActivityTrigger=Schedule"}));
        QCOMPARE(bench.shown("Bandwidth"), QString("60.0 kHz"));
        QCOMPARE(bench.shown("Averaging"), QString("10s"));
        QCOMPARE(bench.shown("DFMode"), QString("Cont"));
        QCOMPARE(bench.shownNumber("Detail/QualityThreshold"), 70.0);
        QCOMPARE(bench.shownNumber("DFFrequencyOffset"), 2.5);
        QCOMPARE(bench.shown("comboActivityTrigger"), QString("Schedule"));
        // The same again changes nothing.
        bench.handIn(handedIn.text());
        QCOMPARE(journal.take(), QStringList());
    }

    void theLevelIsRoundedInTheValueAndCutInTheForm_data()
    {
        QTest::addColumn<QString>("level");
        QTest::addColumn<int>("value");
        QTest::addColumn<double>("shown");
        QTest::newRow("-12.7") << "-12.7" << -13 << -12.0;
        QTest::newRow("12.5") << "12.5" << 13 << 12.0;
        QTest::newRow("-2.5") << "-2.5" << -2 << -2.0;
        QTest::newRow("whole") << "33" << 33 << 33.0;
    }
    void theLevelIsRoundedInTheValueAndCutInTheForm()
    {
        QFETCH(QString, level);
        QFETCH(int, value);
        QFETCH(double, shown);
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Settings handedIn;
        handedIn.quality = "5";
        handedIn.level = level;
        bench.handIn(handedIn.text());
        QCOMPARE(PanelBench::number("Config/Threshold")->GetValue(), value);
        QCOMPARE(bench.shownNumber("Detail/LevelThreshold"), shown);
    }

    void aMissingThresholdCountsAsZero()
    {
        PanelBench bench;
        PanelBench::number("Config/Quality")->SetValue(55, nullptr);
        PanelBench::number("Config/Threshold")->SetValue(-12, nullptr);
        bench.panel->sl_VTConnected();
        Settings handedIn;
        handedIn.level = "20";
        bench.handIn(handedIn.text());
        // A quality of 0 is out of range.
        QCOMPARE(PanelBench::number("Config/Quality")->GetValue(), 55);
        QCOMPARE(PanelBench::number("Config/Threshold")->GetValue(), 20);
        handedIn.level.clear();
        handedIn.quality = "60";
        bench.handIn(handedIn.text());
        QCOMPARE(PanelBench::number("Config/Quality")->GetValue(), 60);
        QCOMPARE(PanelBench::number("Config/Threshold")->GetValue(), 0);
    }

    void thresholdsOutOfRangeAreRefused()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Settings handedIn;
        handedIn.quality = "101";
        handedIn.level = "200.5";
        bench.handIn(handedIn.text());
        QCOMPARE(PanelBench::number("Config/Quality")->GetValue(), 1);
        QCOMPARE(PanelBench::number("Config/Threshold")->GetValue(), 0);
        QVERIFY(PanelBench::flag("Config/OverwriteThreshold")->GetValue());
    }

    void withoutThresholdsOverwritingEndsAndTheirContentsStay()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Settings handedIn;
        handedIn.quality = "60";
        handedIn.level = "20";
        bench.handIn(handedIn.text());
        Journal journal(bench);
        bench.handIn(Settings().text());
        QCOMPARE(journal.take(), (QStringList{"set=" + Settings().text(), "Config/Quality state 2",
                                              "Config/Threshold state 2", "Config/OverwriteThreshold=false"}));
    }

    void numbersThatNoItemHasLeaveTheSelection()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Journal journal(bench);
        Settings handedIn;
        handedIn.bandwidth = "12001";
        handedIn.averaging = "1";
        bench.handIn(handedIn.text());
        QCOMPARE(journal.take(), QStringList{"set=" + handedIn.text()});
    }

    void theFirstModeThatBeginsLikeTheNameIsTaken()
    {
        PanelBench bench;
        auto* const mode = PanelBench::selection("Config/Mode");
        mode->DeleteItems();
        mode->AddItems({"GATE", "Gated 2", "Gate", "Nor", "Continuous"});
        mode->SelectIndex(3);
        bench.panel->sl_VTConnected();
        Settings handedIn;
        handedIn.mode = "Gate";
        bench.handIn(handedIn.text());
        QCOMPARE(mode->GetStringValue(), QString("Gated 2"));
        handedIn.mode = "Cont";
        bench.handIn(handedIn.text());
        QCOMPARE(mode->GetStringValue(), QString("Continuous"));
        for (const char* const none : {"Norm", "Wideband", ""}) { // no such mode, no such name, no mode
            handedIn.mode = none;
            bench.handIn(handedIn.text());
            QCOMPARE(mode->GetStringValue(), QString("Continuous"));
        }
    }

    void anUnknownNameIsNotSelectedButTheInterfaceValueIsWrittenBack_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("element");
        QTest::newRow("workflow") << "DFLocateWorkflow"
                                  << "Workflow";
        QTest::newRow("locate type") << "DFLocateType"
                                     << "LocateType";
        QTest::newRow("activity") << "DFLocateActivity"
                                  << "Activity";
        QTest::newRow("activity trigger") << "DFLocateActivityTrigger"
                                          << "ActivityTrigger";
    }
    void anUnknownNameIsNotSelectedButTheInterfaceValueIsWrittenBack()
    {
        QFETCH(QString, name);
        QFETCH(QString, element);
        PanelBench bench;
        bench.panel->sl_Offline();
        PanelBench::extra(name.toLatin1())->SelectIndex(2);
        auto* const setting = PanelBench::selection(("Config/" + name).toLatin1());
        QCOMPARE(setting->GetCurrentKey(), 0);
        // Not set at all: nothing is written back.
        bench.handIn("<DF_Settings/>");
        QCOMPARE(setting->GetCurrentKey(), 0);
        bench.handIn(QStringLiteral("<DF_Settings><%1>Nobody knows</%1></DF_Settings>").arg(element));
        QCOMPARE(setting->GetCurrentKey(), 2);
    }

    // The driver

    void settingsThatTheDriverHasAreNotSent()
    {
        PanelBench bench;
        Settings gate;
        gate.mode = "Gate";
        PanelBench::driverSettings()->SetValue(Settings().text(), nullptr);
        bench.panel->sl_VTConnected();
        Journal journal(bench);
        PanelBench::selection("Config/Mode")->Select("Gate");
        QCOMPARE(journal.take(), (QStringList{"Config/Mode=Gate", "set=" + gate.text(), "ToDriver=" + gate.text()}));
        PanelBench::selection("Config/Mode")->Select("Normal");
        QCOMPARE(journal.take(), (QStringList{"Config/Mode=Normal", "set=" + Settings().text()}));
        bench.choose("DFMode", "Gate");
        QCOMPARE(journal.take(), (QStringList{"set=" + gate.text(), "Config/Mode=Gate", "ToDriver=" + gate.text()}));
        bench.choose("DFMode", "Normal");
        QCOMPARE(journal.take(), (QStringList{"set=" + Settings().text(), "Config/Mode=Normal"}));
    }

    void anAnswerInsideTheExchangeIsDroppedAndALaterOneTaken()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Settings corrected;
        corrected.mode = "Cont";
        corrected.bandwidth = "600";
        RecordingObserver driver([&](Observable*, TChangeCode code) {
            if (code == ChangeContent)
                PanelBench::driverSettings()->SetValue(corrected.text(), nullptr);
        });
        PanelBench::toDriver()->AddObserver(&driver);
        PanelBench::selection("Config/Mode")->Select("Gate");
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetStringValue(), QString("12.0 kHz"));
        Journal journal(bench);
        PanelBench::driverSettings()->HasChanged(ChangeContent, nullptr);
        QCOMPARE(journal.take(),
                 (QStringList{"P:DF_Settings=" + corrected.text(), "Config/Bandwidth=600 Hz", "Config/Mode=Cont"}));
        QCOMPARE(bench.shown("Bandwidth"), QString("600 Hz"));
        PanelBench::toDriver()->RemoveObserver(&driver);
    }

    // The device

    void deviceListsPublishedBeforeConnectingAreTaken_data() { onlineOrNot(); }
    void deviceListsPublishedBeforeConnectingAreTaken()
    {
        QFETCH(bool, online);
        PanelBench bench;
        bench.publishBandwidths({"1.2 kHz", "30.0 kHz"}, 1);
        bench.publishAveraging({"0s", "3s"}, 1);
        bench.publishModes({"Contin.", "GATE!", "normal"}, 1);
        Journal journal(bench);
        bench.connectTo(online);
        Settings expected;
        const QString atFirst = expected.text();
        expected.bandwidth = "30000";
        const QString withBandwidth = expected.text();
        expected.averaging = "3000";
        const QString withAveraging = expected.text();
        // One list after the other, and each reported and sent at once.
        QCOMPARE(journal.take().filter(QRegularExpression("^(set|ToDriver)=")),
                 (QStringList{"set=" + atFirst, "set=" + withBandwidth, "ToDriver=" + withBandwidth,
                              "set=" + withAveraging, "ToDriver=" + withAveraging}));
        QVERIFY(PanelBench::selection("Config/Bandwidth")->Compare(*PanelBench::device("DeviceDfBandwidth")));
        QVERIFY(PanelBench::selection("Config/AverageTime")->Compare(*PanelBench::device("DeviceDfAveraging")));
        QCOMPARE(bench.field("Bandwidth")->count(), 2);
        QCOMPARE(bench.shown("Bandwidth"), QString("30.0 kHz"));
        QCOMPARE(bench.field("Averaging")->count(), 2);
        QCOMPARE(bench.shown("Averaging"), QString("3s"));
        // Modes are only mapped; neither side's choice is touched.
        QCOMPARE(PanelBench::selection("Config/Mode")->GetStringValue(), QString("Normal"));
        QCOMPARE(PanelBench::device("DeviceDfMode")->GetStringValue(), QString("GATE!"));
    }

    void deviceListsPublishedLaterWaitForTheReadyFlag()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        bench.publishAveraging({"0s", "3s"}, 1);
        QCOMPARE(PanelBench::selection("Config/AverageTime")->GetItemCount(), 7);
        Settings expected;
        expected.averaging = "3000";
        Journal journal(bench);
        PanelBench::deviceReady()->SetValue(true, nullptr);
        QCOMPARE(journal.take(),
                 (QStringList{"G:DfDeviceReady=true", "Config/AverageTime items", "Config/AverageTime=3s",
                              "set=" + expected.text(), "ToDriver=" + expected.text()}));
        QCOMPARE(bench.shown("Averaging"), QString("3s"));
        // Lists of another device, and the flag going out.
        bench.publishAveraging({"0s", "3s", "9s"}, 0);
        PanelBench::deviceReady()->SetValue(false, nullptr);
        QCOMPARE(bench.field("Averaging")->count(), 3);
        QCOMPARE(bench.shown("Averaging"), QString("0s"));
    }

    void withoutDeviceListsThePanelsOwnStay()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Journal journal(bench);
        PanelBench::announceDevice();
        QCOMPARE(journal.take(), QStringList{"G:DfDeviceReady=false"});
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetItemCount(), 14);
        PanelBench::selection("Config/Bandwidth")->Select("600 Hz");
        PanelBench::selection("Config/AverageTime")->Select("2s");
        PanelBench::selection("Config/Mode")->Select("Gate");
        for (const char* const name : {"DeviceDfBandwidth", "DeviceDfAveraging", "DeviceDfMode"})
            QVERIFY(!PanelBench::device(name));
    }

    void aDeviceListOfAnotherKindIsNone()
    {
        PanelBench bench;
        bench.tree.add<values::StringValue>(globalRoot + "DeviceDfBandwidth");
        bench.panel->sl_VTConnected();
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetItemCount(), 14);
    }

    void aDeviceWithoutCurrentItemLeavesNoneInTheSetting()
    {
        PanelBench bench;
        bench.publishBandwidths({"1.2 kHz", "30.0 kHz"}, -1);
        bench.panel->sl_VTConnected();
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetItemCount(), 2);
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetCurrentItem(), nullptr);
    }

    void devicesAreKnownByTheirPublishedName()
    {
        PanelBench bench;
        auto* const elsewhere = bench.tree.add<ValueSelection>("/DRV/Bandwidth");
        elsewhere->AddItem("30.0 kHz", 30000.0, 0);
        elsewhere->AddItem("1.2 kHz", 1200.0, 1);
        elsewhere->Select(0);
        VelmarGui::GuiComponentTools driver(&bench.common, "/DRV/");
        driver.AddGlobalValue(elsewhere, "DeviceDfBandwidth", nullptr, nullptr);
        bench.panel->sl_VTConnected();
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetStringValue(), QString("30.0 kHz"));
        elsewhere->Select(1);
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetStringValue(), QString("1.2 kHz"));
        PanelBench::selection("Config/Bandwidth")->Select("30.0 kHz");
        QCOMPARE(elsewhere->GetStringValue(), QString("30.0 kHz"));
    }

    void settingAndDeviceMirrorOneAnother_data()
    {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QString>("device");
        QTest::addColumn<QString>("settingText");
        QTest::addColumn<QString>("deviceText");
        QTest::newRow("bandwidth") << "Config/Bandwidth"
                                   << "DeviceDfBandwidth"
                                   << "1.2 kHz"
                                   << "1.2 kHz";
        QTest::newRow("averaging") << "Config/AverageTime"
                                   << "DeviceDfAveraging"
                                   << "3s"
                                   << "3s";
        QTest::newRow("mode") << "Config/Mode"
                              << "DeviceDfMode"
                              << "Gate"
                              << "gated";
    }
    void settingAndDeviceMirrorOneAnother()
    {
        QFETCH(QString, setting);
        QFETCH(QString, device);
        QFETCH(QString, settingText);
        QFETCH(QString, deviceText);
        PanelBench bench;
        bench.publishBandwidths({"1.2 kHz", "30.0 kHz"}, 1);
        bench.publishAveraging({"0s", "3s"}, 0);
        bench.publishModes({"NORM", "gated"}, 0);
        bench.panel->sl_VTConnected();
        auto* const settingValue = PanelBench::selection(setting.toLatin1());
        auto* const deviceValue = PanelBench::device(device.toLatin1());
        const QString settingBefore = settingValue->GetStringValue();
        const QString deviceBefore = deviceValue->GetStringValue();
        QVERIFY(settingValue->Select(settingText));
        QCOMPARE(deviceValue->GetStringValue(), deviceText);
        QVERIFY(deviceValue->Select(deviceBefore));
        QCOMPARE(settingValue->GetStringValue(), settingBefore);
        QCOMPARE(bench.parameterSet(), PanelBench::toDriver()->GetValue());
    }

    void mirroringGoesOnDuringAnExchange()
    {
        PanelBench bench;
        connectWithDevice(bench, true);
        Journal journal(bench);
        Settings handedIn;
        handedIn.bandwidth = "30000";
        handedIn.mode = "Cont";
        bench.handIn(handedIn.text());
        QCOMPARE(journal.take(),
                 (QStringList{"set=" + handedIn.text(), "Config/Bandwidth=30.0 kHz", "G:DeviceDfBandwidth=30.0 kHz",
                              "Config/Mode=Cont", "G:DeviceDfMode=CONTINUOUS"}));
    }

    void modesWithoutCounterpartAreNotMirrored()
    {
        PanelBench bench;
        bench.publishModes({"NORMAL", "Wideband", "CO"}, 0);
        bench.panel->sl_VTConnected();
        PanelBench::selection("Config/Mode")->Select("Cont");
        QCOMPARE(PanelBench::device("DeviceDfMode")->GetStringValue(), QString("NORMAL"));
        PanelBench::device("DeviceDfMode")->Select("Wideband");
        QCOMPARE(PanelBench::selection("Config/Mode")->GetStringValue(), QString("Cont"));
        // The modes of another device are not mixed with those of the former one.
        bench.publishModes({"Wideband", "GATING"}, 0);
        PanelBench::announceDevice();
        PanelBench::selection("Config/Mode")->Select("Gate");
        QCOMPARE(PanelBench::device("DeviceDfMode")->GetStringValue(), QString("GATING"));
    }

    void aDeviceThatGoesIsForgotten()
    {
        PanelBench bench;
        connectWithDevice(bench, true);
        Tree::Instance()->DeleteValue(globalRoot + "DeviceDfBandwidth");
        Tree::Instance()->DeleteValue(globalRoot + "DeviceDfMode");
        Journal journal(bench);
        Settings expected;
        expected.bandwidth = "7500";
        PanelBench::selection("Config/Bandwidth")->Select("7.5 kHz");
        QCOMPARE(journal.take(),
                 (QStringList{"Config/Bandwidth=7.5 kHz", "set=" + expected.text(), "ToDriver=" + expected.text()}));
        PanelBench::announceDevice();
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetItemCount(), 4);
    }

    // The span

    void theSpanChoosesTheClosestBandwidthAndStartsABearing_data()
    {
        QTest::addColumn<double>("span");
        QTest::addColumn<QString>("bandwidth");
        QTest::newRow("nearer below") << 9000.0 << "7.5 kHz";
        QTest::newRow("nearer above") << 10000.0 << "12.0 kHz";
        QTest::newRow("equally near") << 9750.0 << "7.5 kHz";
        QTest::newRow("beyond all") << 2147483647.0 << "200.0 kHz";
        QTest::newRow("below all") << 1.0 << "120 Hz";
    }
    void theSpanChoosesTheClosestBandwidthAndStartsABearing()
    {
        QFETCH(double, span);
        QFETCH(QString, bandwidth);
        PanelBench bench;
        bench.panel->sl_VTConnected();
        PanelBench::real("Config/DFSpan")->SetValue(span, nullptr);
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetStringValue(), bandwidth);
        QCOMPARE(PanelBench::selection("Values/Commands")->GetCurrentKey(), 9);
    }

    void everySpanIssuesTheCommandAnew()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Journal journal(bench);
        for (const int span : {12000, 12001}) {
            PanelBench::real("Config/DFSpan")->SetValue(span, nullptr);
            QCOMPARE(journal.take(),
                     (QStringList{QStringLiteral("Config/DFSpan=%1").arg(span), "Values/Commands=Start single DF"}));
        }
        PanelBench::real("Config/DFSpan")->SetValue(-1.0, nullptr);
        PanelBench::real("Config/DFSpan")->SetValue(12001.0, nullptr);
        bench.panel->SpanValueChanged(PanelBench::real("Config/DFFrequencyOffset"));
        QCOMPARE(journal.take(), QStringList());
    }

    // What is missing

    void aMissingSettingIsLeftOut_data() { everyPath(); }
    void aMissingSettingIsLeftOut()
    {
        QFETCH(QString, path);
        PanelBench bench({path});
        expectTheOthersToWork(bench, path);
    }

    void aSettingOfAnotherKindIsLeftOut_data() { everyPath(); }
    void aSettingOfAnotherKindIsLeftOut()
    {
        QFETCH(QString, path);
        PanelBench bench({}, {path});
        expectTheOthersToWork(bench, path);
    }

private:
    static void onlineOrNot()
    {
        QTest::addColumn<bool>("online");
        QTest::newRow("with a driver") << true;
        QTest::newRow("without a driver") << false;
    }

    static void extraValues()
    {
        QTest::addColumn<bool>("online");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("settings");
        for (const bool online : {true, false}) {
            const char* const mode = online ? "with a driver" : "without a driver";
            Settings settings;
            settings.workflow = "Continuous";
            QTest::addRow("workflow %s", mode) << online << "DFLocateWorkflow"
                                               << "comboWorkflow"
                                               << "Continuous" << settings.text();
            settings = Settings();
            settings.locateType = "Online";
            QTest::addRow("locate type %s", mode) << online << "DFLocateType"
                                                  << "comboType"
                                                  << "Online" << settings.text();
            settings = Settings();
            settings.activity = "DF";
            QTest::addRow("activity %s", mode) << online << "DFLocateActivity"
                                               << "comboActivity"
                                               << "DF" << settings.text();
            settings = Settings();
            settings.trigger = "Signal";
            QTest::addRow("activity trigger %s", mode) << online << "DFLocateActivityTrigger"
                                                       << "comboActivityTrigger"
                                                       << "Signal" << settings.text();
        }
    }

    static void everyPath()
    {
        QTest::addColumn<QString>("path");
        for (const VelmarGui::ConfigEntry& entry : ConfigTable)
            QTest::newRow(entry.path) << QString(entry.path);
        for (const char* const path : {"Values/Commands", "DF_Settings", "DFLOCATE/ToDriver"})
            QTest::newRow(path) << QString(path);
    }

    static void expectTheOthersToWork(PanelBench& bench, const QString& path)
    {
        const Traces traces;
        bench.panel->sl_VTConnected();
        Settings handedIn;
        handedIn.bandwidth = "60000";
        handedIn.averaging = "10000";
        handedIn.mode = "Cont";
        handedIn.quality = "70";
        handedIn.level = "20";
        handedIn.offset = "250";
        handedIn.workflow = "Continuous";
        handedIn.locateType = "History";
        handedIn.activity = "DF and locate";
        handedIn.trigger = "Schedule";
        bench.handIn(handedIn.text());
        const std::pair<const char*, QString*> elements[] = {
            {"Config/Bandwidth", &handedIn.bandwidth},
            {"Config/AverageTime", &handedIn.averaging},
            {"Config/Mode", &handedIn.mode},
            {"Config/Quality", &handedIn.quality},
            {"Config/Threshold", &handedIn.level},
            {"Config/DFFrequencyOffset", &handedIn.offset},
            {"Config/DFLocateWorkflow", &handedIn.workflow},
            {"Config/DFLocateType", &handedIn.locateType},
            {"Config/DFLocateActivity", &handedIn.activity},
            {"Config/DFLocateActivityTrigger", &handedIn.trigger},
        };
        for (const auto& [name, content] : elements) {
            if (path == QLatin1String(name))
                content->clear();
        }
        // Whatever is there has been set, and is reported after the next change of any value.
        bench.panel->ValueChanged(nullptr);
        QCOMPARE(bench.parameterSet(), handedIn.text());
        if (path != "DFLOCATE/ToDriver")
            QCOMPARE(PanelBench::toDriver()->GetValue(), handedIn.text());
        if (path != "Config/DFSpan" && path != "Values/Commands") {
            PanelBench::real("Config/DFSpan")->SetValue(1000.0, nullptr);
            QCOMPARE(PanelBench::selection("Values/Commands")->GetCurrentKey(), 9);
        }
        if (path != "DF_Settings") {
            PanelBench::driverSettings()->SetValue(handedIn.text(), nullptr);
            if (path != "Config/Bandwidth")
                QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetStringValue(), QString("60.0 kHz"));
        }
        bench.publishBandwidths({"1.2 kHz", "30.0 kHz"}, 0);
        bench.publishAveraging({"0s", "3s"}, 0);
        bench.publishModes({"NORM", "gated"}, 0);
        PanelBench::announceDevice();
        bench.panel->sl_parametersModified();
        bench.panel->sl_parametersRequested();
        QCOMPARE(traces.records.size(), std::size_t(0));
    }

    /// The form shows what is expected, an edit not taken over yet included.
    static void expectShown(const PanelBench& bench, const Expectation& expected)
    {
        const auto milliseconds = expected.edited.value_or(expected.settings.averaging);
        QCOMPARE(bench.shown("Averaging"), QString(milliseconds == "5000"   ? "5s"
                                                   : milliseconds == "1000" ? "1s"
                                                                            : "Off"));
        QCOMPARE(bench.shown("DFMode").left(4), expected.settings.mode);
        QCOMPARE(hertz(bench.shown("Bandwidth")), expected.settings.bandwidth);
        QCOMPARE(bench.shownNumber("DFFrequencyOffset"), expected.settings.offset.toDouble());
        QCOMPARE(bench.shown("comboType"), expected.settings.locateType);
    }
};

DFL_TEST_MAIN(TestRoads)
#include "tst_dflocatesettingswidget_roads.moc"
