#include "panelbench.h"
#include "support/testmain.h"
#include "ztbase/exceptions.h"

#include <QRegularExpression>

#include <functional>
#include <limits>
#include <optional>
#include <set>

using namespace testsupport;
using values::Tree;
using values::ValueBase;

namespace {

const QString panelUnit = QStringLiteral("userinterface/guicomponents/dflocatecomponent/dflocatesettingswidget");

enum class Failure
{
    Report,
    ReportGenerator,
    Host,
    Standard,
    Anything
};

[[noreturn]] void raise(Failure failure)
{
    const QString place = QStringLiteral("place");
    const QString message = QStringLiteral("message");
    switch (failure) {
    case Failure::Report:
        throw ReportException(place, message);
    case Failure::ReportGenerator:
        throw RGException(place, message);
    case Failure::Host:
        throw ZTException(place, message);
    case Failure::Standard:
        throw std::runtime_error("message");
    case Failure::Anything:
        break;
    }
    throw 42;
}

/// Fails whenever it is told of @p code of a value.
class FailingObserver : public IObserver
{
public:
    FailingObserver(ValueBase* value, Failure failure, TChangeCode code = ChangeContent)
        : m_failure(failure)
        , m_code(code)
    {
        m_value.Assign(value);
        value->AddObserver(this);
    }
    ~FailingObserver() override
    {
        if (m_value)
            m_value->RemoveObserver(this);
    }
    void Update(Observable* /*source*/, TChangeCode code) override
    {
        if (code == m_code)
            raise(m_failure);
    }

private:
    values::ValuePtr<ValueBase> m_value;
    Failure m_failure;
    TChangeCode m_code;
};

/// Does @p act, which may raise what a failing observer raised inside the value that @p act sets.
void despiteFailures(const std::function<void()>& act)
{
    try {
        act();
    } catch (...) {
        // The host's own call; what counts is what the panel did meanwhile.
    }
}

QStringList textsOf(const Traces& traces)
{
    QStringList texts;
    for (const TraceRecord& record : traces.records)
        texts << record.text;
    return texts;
}

bool isOfTheForm(const TraceRecord& trace)
{
    return trace.sourceFile == QLatin1String("valuewidgets/valueedit") ||
           trace.sourceFile == QLatin1String("kt270/pgxmlformular");
}

/// Settings that differ from those at first in every field.
Settings otherSettings()
{
    Settings settings;
    settings.bandwidth = "30000";
    settings.averaging = "3000";
    settings.mode = "Cont";
    settings.quality = "70";
    settings.level = "20.5";
    settings.offset = "250";
    settings.workflow = "Continuous";
    settings.locateType = "History";
    settings.activity = "DF and locate";
    settings.trigger = "Schedule";
    return settings;
}

void publishDevice(const PanelBench& bench, int current)
{
    bench.publishBandwidths({"1.2 kHz", "12.0 kHz", "30.0 kHz"}, current);
    bench.publishAveraging({"0s", "3s", "9s"}, current);
    bench.publishModes({"NORMAL", "CONTINUOUS", "GATED"}, current);
}

/// One way of setting the panel to work, which somebody may delete meanwhile.
struct Action
{
    const char* name;
    bool online;
    bool connected; ///< before the action
    void (*prepare)(PanelBench& bench);
    void (*act)(PanelBench& bench);
};

void nothing(PanelBench&) {}

const Action actions[] = {
    {"connecting", true, false,
     [](PanelBench&) { PanelBench::driverSettings()->SetValue(otherSettings().text(), nullptr); },
     [](PanelBench& bench) { bench.panel->sl_VTConnected(); }},
    {"working without driver", false, false,
     [](PanelBench&) {
         PanelBench::driverSettings()->SetValue(otherSettings().text(), nullptr);
         for (const char* const name : {"Config/Bandwidth", "Config/DFLocateType"})
             PanelBench::selection(name)->SelectIndex(2);
     },
     [](PanelBench& bench) { bench.panel->sl_Offline(); }},
    {"connecting again", true, true, [](PanelBench& bench) { publishDevice(bench, 2); },
     [](PanelBench& bench) { bench.panel->sl_VTConnected(); }},
    {"a parameter set", true, true, nothing, [](PanelBench& bench) { bench.handIn(otherSettings().text()); }},
    {"a parameter set without driver", false, true, nothing,
     [](PanelBench& bench) { bench.handIn(otherSettings().text()); }},
    {"settings of the driver", true, true, nothing,
     [](PanelBench&) { PanelBench::driverSettings()->SetValue(otherSettings().text(), nullptr); }},
    {"an edit of the form", true, true, nothing, [](PanelBench& bench) { bench.choose("Bandwidth", "30.0 kHz"); }},
    {"the threshold box of the form", true, true, nothing,
     [](PanelBench& bench) {
         // By its signal: what is raised here must not go through Qt's own event handling.
         emit bench.field<QCheckBox>("Detail")->clicked(true);
     }},
    {"an edit of an inserted combo", true, true, nothing,
     [](PanelBench& bench) { bench.choose("comboWorkflow", "Continuous"); }},
    {"a request", false, true,
     [](PanelBench& bench) {
         bench.choose("Bandwidth", "30.0 kHz");
         bench.choose("DFMode", "Gate");
         PanelBench::extra("DFLocateType")->Select("Online");
     },
     [](PanelBench& bench) { emit bench.common.si_parametersRequested(); }},
    {"an edit of a setting", true, true, nothing,
     [](PanelBench&) { PanelBench::selection("Config/Mode")->Select("Gate"); }},
    {"an edit of a workflow", true, true, nothing,
     [](PanelBench&) { PanelBench::selection("Config/DFLocateWorkflow")->Select("Continuous"); }},
    {"an edit of a threshold", true, true,
     [](PanelBench&) { PanelBench::number("Config/Quality")->SetState(values::StateOrdinary, nullptr); },
     [](PanelBench&) { PanelBench::number("Config/Quality")->SetValue(50, nullptr); }},
    {"another item of the device", true, true, nothing,
     [](PanelBench&) { PanelBench::device("DeviceDfBandwidth")->Select("30.0 kHz"); }},
    {"another device", true, true, [](PanelBench& bench) { publishDevice(bench, 2); },
     [](PanelBench&) { PanelBench::announceDevice(); }},
    {"another span", true, true, nothing,
     [](PanelBench&) { PanelBench::real("Config/DFSpan")->SetValue(29000.0, nullptr); }},
    {"another offset", true, true, nothing,
     [](PanelBench&) { PanelBench::real("Config/DFFrequencyOffset")->SetValue(5.0, nullptr); }},
};

/// A bench ready for @p action. The interface values are there before the panel makes them, with other contents.
std::unique_ptr<PanelBench> benchFor(const Action& action)
{
    auto bench = std::make_unique<PanelBench>();
    publishDevice(*bench, 0);
    for (const VelmarGui::ConfigEntry& entry : VelmarGui::ConfigTable) {
        if (entry.interfaceName != nullptr) {
            auto* const value = bench->tree.add<values::ValueSelection>(componentRoot + entry.interfaceName);
            value->AddItems({"nothing", "known"});
            value->SelectIndex(1);
        }
    }
    if (action.connected)
        bench->connectTo(action.online);
    action.prepare(*bench);
    return bench;
}

using Notification = std::pair<QString, TChangeCode>; ///< path of the value, code

/// What anybody can be told during @p action.
std::set<Notification> notificationsOf(const Action& action)
{
    std::set<Notification> notifications;
    RecordingObserver everybody([&](Observable* source, TChangeCode code) {
        notifications.emplace(dynamic_cast<ValueBase*>(source)->GetPathName(), code);
    });
    const auto bench = benchFor(action);
    for (ValueBase* const value : Tree::Instance()->ValuesBelow(QString()))
        value->AddObserver(&everybody);
    action.act(*bench);
    for (ValueBase* const value : Tree::Instance()->ValuesBelow(QString()))
        value->RemoveObserver(&everybody);
    return notifications;
}

/// The panel is not busy and does its work.
void expectUsable(PanelBench& bench)
{
    bench.panel->sl_VTConnected();
    auto* const mode = PanelBench::selection("Config/Mode");
    for (int i = 0; i < 2; ++i) {
        const QString text = mode->GetItem((mode->GetCurrentKey() + 1) % 3)->GetName();
        mode->Select(text);
        const QString element = QStringLiteral("<DFMode>%1</DFMode>").arg(text.left(4));
        QVERIFY(bench.parameterSet().contains(element));
        QVERIFY(PanelBench::toDriver()->GetValue().contains(element));
        QCOMPARE(bench.shown("DFMode"), text);
    }
    const QString before = bench.parameterSet();
    PanelBench::driverSettings()->SetValue(Settings().text(), nullptr);
    PanelBench::driverSettings()->SetValue(otherSettings().text(), nullptr);
    QCOMPARE(PanelBench::real("Config/DFFrequencyOffset")->GetValue(), 250.0);
    bench.handIn(Settings().text());
    QCOMPARE(mode->GetStringValue(), QString("Normal"));
    bench.panel->sl_parametersModified();
    QVERIFY(bench.parameterSet() != before);
}

/// A text that cannot be read.
class UnreadableText : public values::StringValue
{
public:
    explicit UnreadableText(Failure failure)
        : m_failure(failure)
    {
    }
    [[nodiscard]] QString GetStringValue() const override { raise(m_failure); }

private:
    Failure m_failure;
};

} // namespace

Q_DECLARE_METATYPE(Failure)

class TestFailures : public QObject
{
    Q_OBJECT

private slots:
    // Whatever fails

    void whoeverFailsThePanelStaysUsable_data() { everyActionAndFailure(); }
    void whoeverFailsThePanelStaysUsable()
    {
        QFETCH(int, action);
        QFETCH(Failure, failure);
        const auto notifications = notificationsOf(actions[action]);
        QVERIFY(!notifications.empty());
        for (const auto& [path, code] : notifications) {
            const auto bench = benchFor(actions[action]);
            {
                const FailingObserver failing(Tree::Instance()->FindValue(path), failure, code);
                const Traces traces;
                despiteFailures([&] { actions[action].act(*bench); });
                for (const TraceRecord& trace : traces.records) {
                    if (isOfTheForm(trace)) // what an operator's edit brings about ends in the form's own widgets
                        continue;
                    QCOMPARE(trace.sourceFile, panelUnit);
                    QVERIFY(trace.line > 0);
                    QVERIFY2(trace.text.startsWith("Exception in DFLocateSettingsWidget::") ||
                                 trace.text == "ReportException place: message",
                             qPrintable(trace.text));
                }
            }
            expectUsable(*bench);
            if (QTest::currentTestFailed())
                QFAIL(qPrintable(QStringLiteral("%1, code %2").arg(path).arg(code)));
        }
    }

    void whoeverDeletesThePanelEndsItsWork_data()
    {
        QTest::addColumn<int>("action");
        for (std::size_t action = 0; action < std::size(actions); ++action)
            QTest::newRow(actions[action].name) << int(action);
    }
    void whoeverDeletesThePanelEndsItsWork()
    {
        QFETCH(int, action);
        for (const auto& [path, code] : notificationsOf(actions[action])) {
            for (const bool first : {true, false}) {
                const auto bench = benchFor(actions[action]);
                std::optional<Journal> journal;
                auto* const value = Tree::Instance()->FindValue(path);
                RecordingObserver deleting([&, expected = code](Observable*, TChangeCode told) {
                    if (told != expected || !bench->panel)
                        return;
                    delete bench->panel;
                    journal->take();
                });
                if (first)
                    value->MakeFirstObserver(&deleting);
                else
                    value->AddObserver(&deleting);
                journal.emplace(*bench);
                actions[action].act(*bench);
                value->RemoveObserver(&deleting);
                QVERIFY2(!bench->panel, qPrintable(path));
                // Whatever step comes next is not done. Only the value itself, and a link that the host has begun, are
                // brought to their end.
                const QString others = QStringLiteral("^(?!C:DFLocate|\\S*%1( |=))").arg(path.section('/', -1));
                const QStringList lines = journal->take().filter(QRegularExpression(others));
                QVERIFY2(lines.isEmpty(), qPrintable(path + ": " + lines.join('\n')));
            }
        }
    }

    // Single failures and their traces

    void aFailureInOneGroupLeavesTheNextGroupsAlone_data() { everyFailure(); }
    void aFailureInOneGroupLeavesTheNextGroupsAlone()
    {
        QFETCH(Failure, failure);
        QFETCH(QString, ownText);
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Settings handedIn = otherSettings();
        handedIn.averaging = "2000";
        const FailingObserver measurement(PanelBench::selection("Config/AverageTime"), failure);
        const FailingObserver thresholds(PanelBench::flag("Config/OverwriteThreshold"), failure);
        const FailingObserver extras(PanelBench::selection("Config/DFLocateType"), failure);
        const Traces traces;
        bench.handIn(handedIn.text());
        const QString text = "Exception in DFLocateSettingsWidget::SetValuesFromXml" + ownText;
        QCOMPARE(textsOf(traces), (QStringList{text, text, text}));
        // What was set stays set; the rest of each group is left.
        QCOMPARE(PanelBench::selection("Config/AverageTime")->GetStringValue(), QString("2s"));
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetStringValue(), QString("12.0 kHz"));
        QCOMPARE(PanelBench::flag("Config/OverwriteThreshold")->GetValue(), true);
        QCOMPARE(PanelBench::number("Config/Quality")->GetValue(), 1);
        QCOMPARE(PanelBench::real("Config/DFFrequencyOffset")->GetValue(), 250.0);
        QCOMPARE(PanelBench::selection("Config/DFLocateWorkflow")->GetStringValue(), QString("Continuous"));
        QCOMPARE(PanelBench::selection("Config/DFLocateActivity")->GetCurrentKey(), 0);
    }

    void settingsThatCannotBeWrittenAreEmptyAndNotSent()
    {
        PanelBench bench;
        auto* const bandwidth = PanelBench::selection("Config/Bandwidth");
        bandwidth->AddItem("all", std::numeric_limits<double>::infinity(), 77);
        PanelBench::driverSettings()->SetValue(Settings().text(), nullptr);
        bench.panel->sl_VTConnected();
        Journal journal(bench);
        const Traces traces;
        bandwidth->Select(77);
        QCOMPARE(journal.take(), (QStringList{"Config/Bandwidth=all", "set="}));
        QCOMPARE(traces.records.size(), std::size_t(1));
        QVERIFY2(traces.records[0].text.startsWith("Exception in DFLocateSettingsWidget::GetXmlFromValues ") &&
                     traces.records[0].text.endsWith(": not a finite number"),
                 qPrintable(traces.records[0].text));
        bandwidth->Select("600 Hz");
        Settings expected;
        expected.bandwidth = "600";
        QCOMPARE(journal.take(),
                 (QStringList{"Config/Bandwidth=600 Hz", "set=" + expected.text(), "ToDriver=" + expected.text()}));
    }

    void aFailingEditOfTheForm_data() { everyFailure(); }
    void aFailingEditOfTheForm()
    {
        QFETCH(Failure, failure);
        PanelBench bench;
        bench.panel->sl_VTConnected();
        const QString text = failure == Failure::Report ? "ReportException place: message"
                                                        : "Exception in DFLocateSettingsWidget::sl_parametersModified";
        Journal journal(bench);
        {
            const Traces traces;
            const FailingObserver writingBack(PanelBench::selection("Config/DFLocateWorkflow"), failure);
            bench.choose("comboWorkflow", "Continuous");
            QCOMPARE(textsOf(traces), QStringList{text});
            // Nothing but the failing value itself was touched.
            QCOMPARE(journal.take(),
                     (QStringList{"C:DFLocateWorkflow=Continuous", "Config/DFLocateWorkflow=Continuous"}));
        }
        {
            const Traces traces;
            const FailingObserver sending(PanelBench::toDriver(), failure);
            bench.choose("DFMode", "Gate");
            QCOMPARE(textsOf(traces), QStringList{text});
        }
        expectUsable(bench);
    }

    void aFailingRequest_data() { everyFailure(); }
    void aFailingRequest()
    {
        QFETCH(Failure, failure);
        QFETCH(QString, ownText);
        PanelBench bench;
        bench.panel->sl_Offline();
        bench.choose("comboWorkflow", "Continuous");
        Journal journal(bench);
        {
            const Traces traces;
            const FailingObserver writingBack(PanelBench::selection("Config/DFLocateWorkflow"), failure);
            emit bench.common.si_parametersRequested();
            QCOMPARE(textsOf(traces),
                     QStringList{"Exception in DFLocateSettingsWidget::sl_parametersRequested" + ownText});
            QCOMPARE(journal.take(), QStringList{"Config/DFLocateWorkflow=Continuous"});
        }
        Settings expected;
        expected.workflow = "Continuous";
        emit bench.common.si_parametersRequested();
        QCOMPARE(journal.take(), QStringList{"set=" + expected.text()});
    }

    void aFailingConnectionLeavesThePanelAsFarAsItGot_data() { everyFailure(); }
    void aFailingConnectionLeavesThePanelAsFarAsItGot()
    {
        QFETCH(Failure, failure);
        PanelBench bench;
        auto* const workflow = bench.tree.add<values::ValueSelection>(componentRoot + "DFLocateType");
        {
            const Traces traces;
            const FailingObserver failing(workflow, failure);
            bench.panel->sl_VTConnected();
            // No own text here, whatever failed.
            QCOMPARE(textsOf(traces), QStringList{"Exception in DFLocateSettingsWidget::ConnectValues"});
            QCOMPARE(traces.records[0].sourceFile, panelUnit);
        }
        QVERIFY(PanelBench::extra("DFLocateWorkflow"));
        QVERIFY(!PanelBench::extra("DFLocateActivity"));
        QVERIFY(!bench.sheet());
        QCOMPARE(bench.parameterSet(), QString());
        expectUsable(bench);
    }

    void aSettingThatCannotBeMadeLeavesTheOthersAlone_data() { everyFailure(); }
    void aSettingThatCannotBeMadeLeavesTheOthersAlone()
    {
        QFETCH(Failure, failure);
        const FreshTree tree;
        auto* const span = tree.add<values::DoubleValue>(handlerRoot + "Config/DFSpan");
        span->SetValue(5.0, nullptr);
        VelmarGui::GuiComponentCommon common;
        common.SetFormFolder(QStringLiteral(FORM_FOLDER));
        VelmarGui::DFLocateSettingsWidget panel(&common, componentRoot);
        const FailingObserver failing(span, failure);
        const Traces traces;
        panel.sl_Offline();
        QCOMPARE(textsOf(traces), QStringList{"Exception in DFLocateSettingsWidget::CreateConfigValues"});
        QCOMPARE(Tree::Instance()->ValuesBelow(handlerRoot).size(), std::size_t(12));
        QCOMPARE(common.GetParameterSet(componentRoot, "DF_Settings"), Settings().text());
        QVERIFY(panel.findChild<KT270::PgXmlSheet*>());
    }

    void aFailingFormScriptDoesNotKeepTheValuesFromBeingSet()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        const FailingObserver failing(PanelBench::number("Config/Quality"), Failure::Report, ChangeState);
        const Traces traces;
        Settings handedIn = otherSettings();
        handedIn.averaging = "2000";
        bench.handIn(handedIn.text());
        QCOMPARE(textsOf(traces), QStringList{"Exception in DFLocateSettingsWidget::ApplyXmlToForm"});
        QCOMPARE(PanelBench::number("Config/Quality")->GetValue(), 70);
        QCOMPARE(PanelBench::selection("Config/AverageTime")->GetStringValue(), QString("2s"));
    }

    void aTextThatCannotBeReadIsTraced_data() { everyFailure(); }
    void aTextThatCannotBeReadIsTraced()
    {
        QFETCH(Failure, failure);
        PanelBench bench;
        bench.panel->sl_VTConnected();
        UnreadableText unreadable(failure);
        Journal journal(bench);
        const Traces traces;
        bench.panel->SettingsChanged(&unreadable);
        bench.panel->SettingsInDriverChanged(&unreadable);
        QCOMPARE(textsOf(traces), (QStringList{"Exception in DFLocateSettingsWidget::SettingsChanged",
                                               "Exception in DFLocateSettingsWidget::SettingsInDriverChanged"}));
        QCOMPARE(journal.take(), QStringList());
        expectUsable(bench);
    }

    void aFailureOfTheDriverOrACommandIsTraced()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        {
            const Traces traces;
            const FailingObserver driver(PanelBench::toDriver(), Failure::Report);
            PanelBench::selection("Config/Mode")->Select("Gate");
            QCOMPARE(textsOf(traces), QStringList{"Exception in DFLocateSettingsWidget::ValueChanged"});
        }
        const Traces traces;
        const FailingObserver commands(PanelBench::selection("Values/Commands"), Failure::Host);
        PanelBench::real("Config/DFSpan")->SetValue(12000.0, nullptr);
        QCOMPARE(textsOf(traces), QStringList{"Exception in DFLocateSettingsWidget::SpanValueChanged"});
    }

    void failuresAreTracedOnlyWhenTheHostWantsThem()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        const FailingObserver driver(PanelBench::toDriver(), Failure::Report);
        const Traces traces(~0x20);
        PanelBench::selection("Config/Mode")->Select("Gate");
        bench.choose("DFMode", "Cont");
        QVERIFY(traces.records.empty());
    }

    // Bad texts

    void aBadTextIsAnEmptySetOnEveryRoad_data()
    {
        QTest::addColumn<QString>("xml");
        const QString good = otherSettings().text().remove(QRegularExpression("<Detail>.*</Detail>"));
        const auto with = [&good](const char* element, const char* content) {
            return QString(good).replace(QRegularExpression(QStringLiteral("<%1>[^<]*<").arg(QLatin1String(element))),
                                         QStringLiteral("<%1>%2<").arg(QLatin1String(element), QLatin1String(content)));
        };
        QTest::newRow("no XML") << "settings";
        QTest::newRow("not ended") << good.chopped(5);
        QTest::newRow("more than one root") << good + good;
        QTest::newRow("another root") << QString(good).replace("DF_Settings", "Settings");
        QString bomb = "<!DOCTYPE DF_Settings [<!ENTITY a0 \"1\">";
        for (int i = 1; i < 12; ++i)
            bomb += QStringLiteral("<!ENTITY a%1 \"%2\">").arg(i).arg(QStringLiteral("&a%1;").arg(i - 1).repeated(10));
        QTest::newRow("bomb") << bomb + "]>" + with("FrequencyOffset", "&a11;");
        QTest::newRow("external entity") << "<!DOCTYPE DF_Settings [<!ENTITY a SYSTEM \"file:///etc/hostname\">]>" +
                                                with("Workflow", "&a;");
        QTest::newRow("deep nesting") << "<DF_Settings>" + QString("<a>").repeated(100000) +
                                             QString("</a>").repeated(100000) + "</DF_Settings>";
        QTest::newRow("ten megabytes") << good.chopped(14) + QString(10 * 1024 * 1024, ' ') + "</DF_Settings>";
        QTest::newRow("an element twice")
            << QString(good).replace("</DF_Settings>", "<Bandwidth>600</Bandwidth></DF_Settings>");
        QTest::newRow("NaN") << with("Bandwidth", "nan");
        QTest::newRow("infinite") << with("FrequencyOffset", "inf");
        QTest::newRow("exponent") << with("Averaging", "1e3");
        QTest::newRow("no number") << with("Bandwidth", "");
    }
    void aBadTextIsAnEmptySetOnEveryRoad()
    {
        QFETCH(QString, xml);
        const QStringList nothingElse{"Config/Quality state 2", "Config/Threshold state 2", "Config/AverageTime=Off",
                                      "Config/OverwriteThreshold=false"};
        Settings before = otherSettings();
        before.averaging = "2000";
        for (const bool online : {true, false}) {
            PanelBench bench;
            bench.connectTo(online);
            bench.handIn(before.text());
            Journal journal(bench);
            bench.handIn(xml);
            QCOMPARE(journal.take(), QStringList{"set=" + xml} + nothingElse);
            bench.handIn(before.text());
            journal.take();
            PanelBench::driverSettings()->SetValue(xml, nullptr);
            QCOMPARE(journal.take(), QStringList{"P:DF_Settings=" + xml} + nothingElse);
        }
        PanelBench bench;
        PanelBench::selection("Config/AverageTime")->Select("2s");
        PanelBench::flag("Config/OverwriteThreshold")->SetValue(true, nullptr);
        PanelBench::driverSettings()->SetValue(xml, nullptr);
        bench.panel->sl_VTConnected();
        QCOMPARE(PanelBench::selection("Config/AverageTime")->GetStringValue(), QString("Off"));
        QCOMPARE(PanelBench::flag("Config/OverwriteThreshold")->GetValue(), false);
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetStringValue(), QString("12.0 kHz"));
        QCOMPARE(PanelBench::real("Config/DFFrequencyOffset")->GetValue(), 0.0);
        expectUsable(bench);
    }

    void whatOthersAddToASetIsSkipped()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Settings handedIn;
        handedIn.mode = "Gate";
        bench.handIn("<?xml version=\"1.0\"?>\n<!-- by hand -->" +
                     handedIn.text().replace("<DFMode>", "<Note a=\"b\"><Bandwidth>600</Bandwidth></Note>\n<DFMode>"));
        QCOMPARE(PanelBench::selection("Config/Mode")->GetStringValue(), QString("Gate"));
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetStringValue(), QString("12.0 kHz"));
    }

private:
    static void everyFailure()
    {
        QTest::addColumn<Failure>("failure");
        QTest::addColumn<QString>("ownText");
        QTest::newRow("report library") << Failure::Report << " place: message";
        QTest::newRow("report generator") << Failure::ReportGenerator << "";
        QTest::newRow("host") << Failure::Host << "";
        QTest::newRow("standard library") << Failure::Standard << "";
        QTest::newRow("anything") << Failure::Anything << "";
    }

    static void everyActionAndFailure()
    {
        QTest::addColumn<int>("action");
        QTest::addColumn<Failure>("failure");
        const std::pair<const char*, Failure> failures[] = {{"report library", Failure::Report},
                                                            {"anything", Failure::Anything}};
        for (std::size_t action = 0; action < std::size(actions); ++action) {
            for (const auto& [name, failure] : failures)
                QTest::addRow("%s: %s", name, actions[action].name) << int(action) << failure;
        }
    }
};

DFL_TEST_MAIN(TestFailures)
#include "tst_dflocatesettingswidget_failures.moc"
