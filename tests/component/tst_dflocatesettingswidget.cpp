#include "panelbench.h"
#include "support/testmain.h"
#include "valuewidgets/vccomboboxclassic.h"

#include <QGridLayout>
#include <QLabel>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTranslator>

using namespace testsupport;
using values::BoolValue;
using values::Tree;
using values::ValueSelection;
using VelmarGui::ConfigEntry;
using VelmarGui::ConfigTable;
using VelmarGui::DFLocateSettingsWidget;
using VelmarGui::IVelmarGuiUserInputControlService;

namespace {

const QStringList extraNames{QStringLiteral("DFLocateWorkflow"), QStringLiteral("DFLocateType"),
                             QStringLiteral("DFLocateActivity"), QStringLiteral("DFLocateActivityTrigger")};

/// A form of one number field, "DFFrequencyOffset".
const QString smallForm = QStringLiteral(R"(<pgxml name="DF_Settings" title="Small" context="Test">
  <field name="DFFrequencyOffset" type="number" label="Offset" row="5"/>
  <script><![CDATA[ function setOverwriteThreshold(on) {} ]]></script>
</pgxml>)");

QStringList itemTexts(const QComboBox& comboBox)
{
    QStringList texts;
    for (int i = 0; i < comboBox.count(); ++i)
        texts << comboBox.itemText(i);
    return texts;
}

QStringList textsOf(const Traces& traces)
{
    QStringList texts;
    for (const TraceRecord& record : traces.records)
        texts << record.text;
    return texts;
}

/// Answers every text with the text in brackets, behind its context.
class MarkingTranslator : public QTranslator
{
public:
    MarkingTranslator() { QCoreApplication::installTranslator(this); }
    QString translate(const char* context, const char* text, const char* /*disambiguation*/, int /*n*/) const override
    {
        return QStringLiteral("%1[%2]").arg(QLatin1String(context), QLatin1String(text));
    }
    [[nodiscard]] bool isEmpty() const override { return false; }
};

} // namespace

class TestDFLocateSettingsWidget : public QObject
{
    Q_OBJECT

private slots:
    // Construction

    void itsMetaObjectIsTheOneHostsKnow()
    {
        const QMetaObject& meta = DFLocateSettingsWidget::staticMetaObject;
        QCOMPARE(meta.className(), "VelmarGui::DFLocateSettingsWidget");
        QStringList methods;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            QCOMPARE(meta.method(i).methodType(), QMetaMethod::Slot);
            QCOMPARE(meta.method(i).access(), QMetaMethod::Public);
            methods << QString::fromLatin1(meta.method(i).methodSignature());
        }
        QCOMPARE(methods,
                 (QStringList{"sl_VTConnected()", "sl_Offline()", "SettingsChanged(values::ValueBase*)",
                              "ValueChanged(values::ValueBase*)", "MapViewChanged(values::ValueBase*)",
                              "SettingsInDriverChanged(values::ValueBase*)", "ExtraValuesChanged(values::ValueBase*)",
                              "OffsetValueChanged(values::ValueBase*)", "SpanValueChanged(values::ValueBase*)",
                              "sl_parametersModified()", "sl_parametersRequested()", "sl_propertiesChanged()",
                              "sl_setUserInputMode(IVelmarGuiUserInputControlService::eUserInputMode)"}));
    }

    void aNewPanelHasItsNamesAndAnEmptyLayout()
    {
        const PanelBench bench;
        QCOMPARE(bench.panel->objectName(), QString("DFLocateSettingsWidget"));
        QCOMPARE(bench.panel->windowTitle(), QString("Locate Settings"));
        QCOMPARE(bench.panel->toolTip(), QString("Locate Settings"));
        QCOMPARE(bench.panel->parent(), nullptr);
        const auto* const layout = qobject_cast<QGridLayout*>(bench.panel->layout());
        QVERIFY(layout);
        QCOMPARE(layout->objectName(), QString("DFLocateSettingsLayout"));
        QCOMPARE(layout->count(), 0);
        QVERIFY(!bench.sheet());
    }

    void itsTitleIsTranslatedInItsOwnContext()
    {
        const MarkingTranslator translator;
        const PanelBench bench;
        QCOMPARE(bench.panel->windowTitle(), QString("DFLocateSettings[Locate Settings]"));
        QCOMPARE(bench.panel->toolTip(), QString("DFLocateSettings[Locate Settings]"));
    }

    void aNewPanelMakesTheDeviceReadyFlagAndPublishesIt()
    {
        PanelBench bench;
        QVERIFY(PanelBench::deviceReady());
        QCOMPARE(PanelBench::deviceReady()->GetValue(), false);
        const VelmarGui::GuiComponentTools other(&bench.common, "/Other/");
        QCOMPARE(other.GetGlobalValue("DfDeviceReady"), PanelBench::deviceReady());
    }

    void anExistingDeviceReadyFlagIsTaken()
    {
        const FreshTree tree;
        auto* const flag = tree.add<BoolValue>(globalRoot + "DfDeviceReady");
        VelmarGui::GuiComponentCommon common;
        const DFLocateSettingsWidget panel(&common, componentRoot);
        QCOMPARE(PanelBench::deviceReady(), flag);
        QCOMPARE(Tree::Instance()->ValuesBelow(QString()).size(), std::size_t(1));
    }

    void aNewPanelTakesParameterSetsBeforeItIsConnected()
    {
        PanelBench bench;
        QVERIFY(bench.common.SetParameterSet(componentRoot, "DF_Settings", Settings().text()));
        QVERIFY(!bench.common.SetParameterSet(componentRoot, "Other", QString()));
    }

    void aDeviceReadyFlagWhoseNameIsTakenWorksOutsideTheTree()
    {
        const FreshTree tree;
        tree.add<values::StringValue>(globalRoot + "DfDeviceReady");
        VelmarGui::GuiComponentCommon common;
        const VelmarGui::GuiComponentTools other(&common, "/Other/");
        std::unique_ptr<BoolValue> flag; // nobody's, and so the test's
        {
            const Traces traces;
            const DFLocateSettingsWidget panel(&common, componentRoot);
            flag.reset(dynamic_cast<BoolValue*>(other.GetGlobalValue("DfDeviceReady")));
            QVERIFY(flag);
            QVERIFY(!flag->IsInTree());
            QVERIFY(flag->GetObserverCount() > 0);
            QVERIFY(traces.records.empty());
        }
    }

    void everyComponentInItsPathBecomesHandler()
    {
        FreshTree tree;
        VelmarGui::GuiComponentCommon common;
        DFLocateSettingsWidget panel(&common, "/ComponentOne/DFLocateComponent/component/");
        panel.sl_Offline();
        for (const ConfigEntry& entry : ConfigTable)
            QVERIFY2(Tree::Instance()->FindValue("/HandlerOne/DFLocateHandler/component/" + QString(entry.path)),
                     entry.path);
        for (const QString& name : extraNames)
            QVERIFY(Tree::Instance()->FindValue("/ComponentOne/DFLocateComponent/component/" + name));
    }

    // Without a driver

    void startingWithoutDriverMakesAllSettingsWithTheirDefaults()
    {
        const FreshTree tree;
        VelmarGui::GuiComponentCommon common;
        DFLocateSettingsWidget panel(&common, componentRoot);
        panel.sl_Offline();
        QVERIFY(panel.IsOffline());
        QCOMPARE(PanelBench::real("Config/DFFrequencyOffset")->GetValue(), 0.0);
        QCOMPARE(PanelBench::real("Config/DFSpan")->GetValue(), 0.0);
        QCOMPARE(PanelBench::selection("Config/Mode")->GetStringValue(), QString("Normal"));
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetStringValue(), QString("12.0 kHz"));
        QCOMPARE(PanelBench::selection("Config/AverageTime")->GetStringValue(), QString("Off"));
        QCOMPARE(PanelBench::flag("Config/OverwriteThreshold")->GetValue(), false);
        QCOMPARE(PanelBench::number("Config/Quality")->GetValue(), 1);
        QCOMPARE(PanelBench::number("Config/Quality")->GetState(), values::StateUnused);
        QCOMPARE(PanelBench::number("Config/Threshold")->GetValue(), 0);
        QCOMPARE(PanelBench::number("Config/Threshold")->GetState(), values::StateUnused);
        QCOMPARE(common.GetParameterSet(componentRoot, "DF_Settings"), Settings().text());
        // All settings, their four interface values and the flag, and nothing else.
        QCOMPARE(Tree::Instance()->ValuesBelow(QString()).size(), ConfigTable.size() + 4 + 1);
    }

    void withADriverThePanelMakesNoSettings()
    {
        const FreshTree tree;
        VelmarGui::GuiComponentCommon common;
        DFLocateSettingsWidget panel(&common, componentRoot);
        panel.sl_VTConnected();
        QVERIFY(!panel.IsOffline());
        QVERIFY(Tree::Instance()->ValuesBelow(handlerRoot).empty());
        QCOMPARE(Tree::Instance()->ValuesBelow(QString()).size(), std::size_t(5));
        QCOMPARE(common.GetParameterSet(componentRoot, "DF_Settings"), QString("<DF_Settings/>"));
    }

    void aDriverThatComesAfterAStartWithoutOneDoesNotEndIt()
    {
        PanelBench bench;
        bench.panel->sl_Offline();
        bench.panel->sl_VTConnected();
        QVERIFY(bench.panel->IsOffline());
        QCOMPARE(bench.parameterSet(), Settings().text());
    }

    // Connecting

    void interfaceValuesFollowTheSettings()
    {
        PanelBench bench;
        PanelBench::selection("Config/DFLocateActivity")->Select("DF");
        bench.panel->sl_VTConnected();
        for (const QString& name : extraNames) {
            const auto* const value = PanelBench::extra(name.toLatin1());
            const auto* const setting = PanelBench::selection(("Config/" + name).toLatin1());
            QVERIFY2(value != nullptr, qPrintable(name));
            QVERIFY2(value->Compare(*setting), qPrintable(name));
        }
        PanelBench::selection("Config/DFLocateActivity")->Select("DF and locate");
        QCOMPARE(PanelBench::extra("DFLocateActivity")->GetStringValue(), QString("DF and locate"));
    }

    void anInterfaceValueWhoseNameIsTakenWorksOutsideTheTree()
    {
        std::unique_ptr<ValueSelection> outside; // nobody's, and so the test's
        PanelBench bench;
        bench.tree.add<values::IntValue>(componentRoot + "DFLocateWorkflow");
        const Traces traces;
        bench.panel->sl_VTConnected();
        outside.reset(bench.field<VCComboBoxClassic>("comboWorkflow")->GetValueSelection());
        QVERIFY(outside);
        QVERIFY(!outside->IsInTree());
        QVERIFY(traces.records.empty());
        // It is linked to nothing and has no item.
        Settings expected;
        expected.workflow.clear();
        QCOMPARE(bench.parameterSet(), expected.text());
        expected.mode = "Gate";
        PanelBench::selection("Config/Mode")->Select("Gate");
        QCOMPARE(PanelBench::toDriver()->GetValue(), expected.text());
        delete bench.panel;
    }

    void aRequestIsAnsweredOnceHoweverOftenThePanelWasConnected()
    {
        PanelBench bench;
        bench.panel->sl_Offline();
        bench.panel->sl_Offline();
        bench.panel->sl_VTConnected();
        RecordingObserver observer;
        auto* const offset = PanelBench::real("Config/DFFrequencyOffset");
        offset->AddObserver(&observer);
        emit bench.common.si_parametersRequested();
        QCOMPARE(observer.count(ChangeExternal), 1);
        offset->RemoveObserver(&observer);
    }

    void onlyActivitiesAndTheirTriggersAreTranslatedAsResourceTypes()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        QCOMPARE(PanelBench::extra("DFLocateWorkflow")->GetTranslationNamespace(), QString());
        QCOMPARE(PanelBench::extra("DFLocateType")->GetTranslationNamespace(), QString());
        QCOMPARE(PanelBench::extra("DFLocateActivity")->GetTranslationNamespace(), QString("PITResourceTypes"));
        QCOMPARE(PanelBench::extra("DFLocateActivityTrigger")->GetTranslationNamespace(), QString("PITResourceTypes"));
    }

    void offsetAndSpanArePublishedUnderGlobalNames()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        const VelmarGui::GuiComponentTools other(&bench.common, "/Other/");
        QCOMPARE(other.GetGlobalValue("DFFrequencyOffset"), PanelBench::real("Config/DFFrequencyOffset"));
        QCOMPARE(other.GetGlobalValue("DFSpan"), PanelBench::real("Config/DFSpan"));
    }

    void connectingReportsTheSettingsAndTakesThoseOfTheDriver_data() { onlineOrNot(); }
    void connectingReportsTheSettingsAndTakesThoseOfTheDriver()
    {
        QFETCH(bool, online);
        PanelBench bench;
        Settings driver;
        driver.bandwidth = "30000";
        driver.workflow = "Continuous";
        driver.offset = "-250";
        PanelBench::driverSettings()->SetValue(driver.text(), nullptr);
        bench.connectTo(online);
        // What was reported is what the values were before.
        QCOMPARE(bench.parameterSet(), Settings().text());
        QCOMPARE(PanelBench::selection("Config/Bandwidth")->GetStringValue(), QString("30.0 kHz"));
        QCOMPARE(PanelBench::selection("Config/DFLocateWorkflow")->GetStringValue(), QString("Continuous"));
        QCOMPARE(PanelBench::extra("DFLocateWorkflow")->GetStringValue(), QString("Continuous"));
        QCOMPARE(PanelBench::real("Config/DFFrequencyOffset")->GetValue(), -250.0);
        QCOMPARE(PanelBench::toDriver()->GetValue(), QString());
        QCOMPARE(bench.shown("Bandwidth"), QString("30.0 kHz"));
        QCOMPARE(bench.shownNumber("DFFrequencyOffset"), -250.0);
        // With a driver, a changed interface value marks the form even though the driver changed it.
        QCOMPARE(bench.sheet()->isModified(), online);
    }

    void anEmptyTextOfTheDriverChangesNothing()
    {
        PanelBench bench;
        PanelBench::selection("Config/AverageTime")->Select("2s");
        PanelBench::flag("Config/OverwriteThreshold")->SetValue(true, nullptr);
        bench.panel->sl_VTConnected();
        Journal journal(bench);
        PanelBench::driverSettings()->HasChanged(ChangeContent, nullptr);
        QCOMPARE(journal.take(), QStringList{"P:DF_Settings="});
        QCOMPARE(PanelBench::selection("Config/AverageTime")->GetStringValue(), QString("2s"));
    }

    void connectingAgainBindsNothingTwice_data()
    {
        QTest::addColumn<bool>("firstOnline");
        QTest::newRow("with a driver twice") << true;
        QTest::newRow("first without a driver, then with one") << false;
    }
    void connectingAgainBindsNothingTwice()
    {
        QFETCH(bool, firstOnline);
        PanelBench bench;
        bench.publishBandwidths({"7.5 kHz", "30.0 kHz"}, 1);
        bench.connectTo(firstOnline);
        const auto observers = [] {
            std::vector<std::pair<QString, std::size_t>> counts;
            for (const values::ValueBase* const value : Tree::Instance()->ValuesBelow(QString()))
                counts.emplace_back(value->GetPathName(), value->GetObserverCount());
            return counts;
        };
        const auto before = observers();
        bench.panel->sl_VTConnected();
        QVERIFY(observers() == before);
        QCOMPARE(bench.panel->findChildren<KT270::PgXmlSheet*>().size(), 1);
        QCOMPARE(bench.panel->layout()->count(), 1);

        Settings expected;
        expected.bandwidth = "30000";
        expected.mode = "Gate";
        Journal journal(bench);
        PanelBench::selection("Config/Mode")->Select("Gate");
        QCOMPARE(journal.take(),
                 (QStringList{"Config/Mode=Gate", "set=" + expected.text(), "ToDriver=" + expected.text()}));
        QSignalSpy modified(&bench.common, &VelmarGui::GuiComponentCommon::si_parametersModified);
        bench.choose("DFMode", "Cont");
        QCOMPARE(modified.count(), firstOnline ? 0 : 1);
        emit bench.common.si_parametersRequested();
        expected.mode = "Cont";
        QStringList lines{"set=" + expected.text(), "Config/Mode=Cont"};
        if (firstOnline)
            lines << "ToDriver=" + expected.text();
        QCOMPARE(journal.take(), lines);
    }

    void valuesThatComeLaterAreBoundByConnectingAgain()
    {
        PanelBench bench({"Config/Bandwidth", "DFLOCATE/ToDriver"});
        bench.panel->sl_VTConnected();
        auto* const bandwidth = bench.tree.add<ValueSelection>(handlerRoot + "Config/Bandwidth");
        bandwidth->AddItem("15.0 kHz", 15000.0, 4);
        bandwidth->Select(4);
        bench.panel->sl_VTConnected();
        Settings expected;
        expected.bandwidth = "15000";
        QCOMPARE(bench.parameterSet(), expected.text());
        QCOMPARE(bench.shown("Bandwidth"), QString("15.0 kHz"));
    }

    // The form

    void theFormShowsTheSettings_data() { onlineOrNot(); }
    void theFormShowsTheSettings()
    {
        QFETCH(bool, online);
        PanelBench bench;
        if (online) {
            PanelBench::selection("Config/Bandwidth")->Select("60.0 kHz");
            PanelBench::selection("Config/Mode")->Select("Gate");
            PanelBench::real("Config/DFFrequencyOffset")->SetValue(1500.0, nullptr);
        }
        bench.connectTo(online);
        QCOMPARE(itemTexts(*bench.field("DFMode")), (QStringList{"Normal", "Cont", "Gate"}));
        QCOMPARE(bench.field("Bandwidth")->count(), 14);
        QCOMPARE(itemTexts(*bench.field("Averaging")), (QStringList{"Off", "200m", "500m", "1s", "2s", "5s", "10s"}));
        QCOMPARE(bench.shown("Bandwidth"), QString(online ? "60.0 kHz" : "12.0 kHz"));
        QCOMPARE(bench.shown("DFMode"), QString(online ? "Gate" : "Normal"));
        QCOMPARE(bench.shown("Averaging"), QString("Off"));
        QCOMPARE(bench.shownNumber("DFFrequencyOffset"), online ? 1500.0 : 0.0);
        QCOMPARE(bench.field<QDoubleSpinBox>("Detail/LevelThreshold")->minimum(), -40.0);
        QCOMPARE(bench.field<QDoubleSpinBox>("Detail/LevelThreshold")->maximum(), 200.0);
        QCOMPARE(bench.field<QDoubleSpinBox>("Detail/QualityThreshold")->maximum(), 100.0);
        QVERIFY(!bench.field<QDoubleSpinBox>("Detail/QualityThreshold")->isEnabled());
        QVERIFY(!bench.field<QCheckBox>("Detail")->isChecked());
        const QWidget* const inLayout = bench.panel->layout()->itemAt(0)->widget();
        QVERIFY(inLayout->isAncestorOf(bench.sheet()));
        bench.panel->show();
        QVERIFY(bench.sheet()->isVisible());
    }

    void theFourCombosStandInTheFirstRows()
    {
        const MarkingTranslator translator;
        PanelBench bench;
        bench.panel->sl_VTConnected();
        struct Row
        {
            const char* objectName;
            const char* value;
            const char* label;
            const char* field;
        };
        const Row rows[] = {
            {"VCComboBoxWorkflow", "DFLocateWorkflow", "comboWorkflow[Request Mode]", "comboWorkflow"},
            {"VCComboBoxType", "DFLocateType", "comboType[Locate Type]", "comboType"},
            {"VCComboBoxActivity", "DFLocateActivity", "comboActivity[Locate Activity]", "comboActivity"},
            {"VCComboBoxActivityTrigger", "DFLocateActivityTrigger", "comboActivityTrigger[Locate Activity Trigger]",
             "comboActivityTrigger"},
        };
        bench.panel->resize(600, 800);
        bench.panel->show();
        int above = -1;
        for (const Row& row : rows) {
            const auto* const combo = bench.panel->findChild<VCComboBoxClassic*>(QLatin1String(row.objectName));
            QVERIFY2(combo != nullptr, row.objectName);
            QCOMPARE(combo, bench.field<VCComboBoxClassic>(row.field));
            QCOMPARE(combo->GetValueSelection(), PanelBench::extra(row.value));
            QCOMPARE(combo->toolTip(), QString(row.label));
            QVERIFY(combo->isEnabled());
            QStringList labels;
            for (const QLabel* const label : bench.sheet()->findChildren<QLabel*>()) {
                if (label->buddy() == combo)
                    labels << label->text();
            }
            QCOMPARE(labels, QStringList{row.label});
            const int top = combo->mapTo(bench.panel, QPoint()).y();
            QVERIFY2(top > above, row.objectName);
            above = top;
        }
        QVERIFY(bench.field("DFMode")->mapTo(bench.panel, QPoint()).y() > above);
    }

    void theOffsetOfTheFormFollowsTheValue()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Journal journal(bench);
        PanelBench::real("Config/DFFrequencyOffset")->SetValue(-12.5, nullptr);
        QCOMPARE(bench.shownNumber("DFFrequencyOffset"), -12.5);
        // The offset is no reason to report anything.
        QCOMPARE(journal.take(), QStringList{"Config/DFFrequencyOffset=-12.5"});
        QVERIFY(!bench.sheet()->isModified());
    }

    void theFormOfTheValueComesBeforeTheFile()
    {
        PanelBench bench;
        bench.tree.add<values::StringValue>(parameterRoot + "DF_Settings/PGXML")->SetValue(smallForm, nullptr);
        bench.panel->sl_VTConnected();
        QVERIFY(bench.sheet());
        QVERIFY(bench.field<QDoubleSpinBox>("DFFrequencyOffset"));
        QVERIFY(!bench.field("Bandwidth"));
        QVERIFY(bench.field("comboWorkflow"));
    }

    void anEmptyTextOfTheValueMeansTheFile()
    {
        PanelBench bench;
        bench.tree.add<values::StringValue>(parameterRoot + "DF_Settings/PGXML");
        bench.panel->sl_VTConnected();
        QVERIFY(bench.field("Bandwidth"));
    }

    void theFormIsMadeAnewWheneverThePanelConnects()
    {
        PanelBench bench;
        auto* const pgxml = bench.tree.add<values::StringValue>(parameterRoot + "DF_Settings/PGXML");
        bench.panel->sl_VTConnected();
        const QPointer<QWidget> first = bench.sheet();
        pgxml->SetValue(smallForm, nullptr);
        QVERIFY(first); // not by a change of the text alone
        bench.panel->sl_VTConnected();
        QVERIFY(first.isNull());
        QVERIFY(!bench.field("Bandwidth"));
        QCOMPARE(bench.panel->layout()->count(), 1);
        pgxml->SetValue(QString(), nullptr);
        bench.panel->sl_VTConnected();
        QVERIFY(bench.field("Bandwidth"));
        QCOMPARE(bench.panel->layout()->count(), 1);
        // Edits of the new form reach the values, once.
        Journal journal(bench);
        Settings expected;
        expected.mode = "Gate";
        bench.choose("DFMode", "Gate");
        QCOMPARE(journal.take(),
                 (QStringList{"set=" + expected.text(), "Config/Mode=Gate", "ToDriver=" + expected.text()}));
    }

    void aBadDescriptionIsTracedAndThePanelWorksWithoutForm_data()
    {
        QTest::addColumn<QString>("pgxml");
        QTest::newRow("no XML") << "settings";
        QTest::newRow("a file name") << "DF_Settings_FFP.xml";
        QTest::newRow("another root") << "<DF_Settings/>";
        QTest::newRow("a document type") << "<!DOCTYPE pgxml [<!ENTITY a \"b\">]>" + smallForm;
    }
    void aBadDescriptionIsTracedAndThePanelWorksWithoutForm()
    {
        QFETCH(QString, pgxml);
        PanelBench bench;
        bench.panel->sl_VTConnected();
        const QPointer<QWidget> former = bench.sheet();
        bench.tree.add<values::StringValue>(parameterRoot + "DF_Settings/PGXML")->SetValue(pgxml, nullptr);
        const Traces traces;
        bench.panel->sl_VTConnected();
        QCOMPARE(textsOf(traces), QStringList{"** LoadPgXml: Cannot load " + pgxml + "\n"});
        QCOMPARE(traces.records[0].sourceFile,
                 QString("userinterface/guicomponents/dflocatecomponent/dflocatesettingswidget"));
        QVERIFY(former.isNull()); // the former form does not come back
        expectWorkWithoutForm(bench);
        QCOMPARE(traces.records.size(), std::size_t(1));
    }

    void aMissingFileIsTracedWithItsName()
    {
        PanelBench bench;
        const QTemporaryDir folder;
        bench.common.SetFormFolder(folder.path());
        const Traces traces;
        bench.panel->sl_VTConnected();
        QCOMPARE(textsOf(traces),
                 QStringList{"** LoadPgXml: Cannot load " + folder.filePath("DF_Settings_FFP.xml") + "\n"});
        expectWorkWithoutForm(bench);
    }

    void withoutTheBitNothingIsTraced()
    {
        PanelBench bench;
        bench.common.SetFormFolder("/nowhere");
        const Traces traces(~0x20);
        bench.panel->sl_VTConnected();
        QVERIFY(traces.records.empty());
    }

    void changedPropertiesRestoreTheFormsLook()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        bench.sheet()->setCollapsed(true);
        QVERIFY(bench.common.property("CfgDFLocateSettings").isValid());
        bench.sheet()->EnableInput(false, 0);
        QVERIFY(!bench.field("DFMode")->isEnabled());
        auto kept = bench.common.property("CfgDFLocateSettings").toMap();
        kept["collapsed"] = false;
        bench.common.setProperty("CfgDFLocateSettings", kept);
        emit bench.common.si_propertiesChanged();
        QVERIFY(!bench.sheet()->isCollapsed());
        QVERIFY(bench.field("DFMode")->isEnabled());
        // The next form looks like this one.
        bench.sheet()->setCollapsed(true);
        bench.panel->sl_VTConnected();
        QVERIFY(bench.sheet()->isCollapsed());
    }

    // Small slots

    void onlyTheLockedInputModeDisablesThePanel()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        using Service = IVelmarGuiUserInputControlService;
        for (const int mode : {0, 2, 1, 2, 3, 2, 2, 0, 4, -1}) {
            bench.panel->sl_setUserInputMode(static_cast<Service::eUserInputMode>(mode));
            QCOMPARE(bench.panel->isEnabled(), mode != 2);
            QCOMPARE(bench.field("DFMode")->isEnabled(), mode != 2);
        }
    }

    void theMapViewIsOfNoConcern()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Journal journal(bench);
        bench.panel->MapViewChanged(nullptr);
        bench.panel->MapViewChanged(PanelBench::selection("Config/Mode"));
        QCOMPARE(journal.take(), QStringList());
    }

    void aChangeOfLanguageLeavesThePanelAsItIs()
    {
        PanelBench bench;
        bench.panel->setWindowTitle("the host's own title");
        QEvent event(QEvent::LanguageChange);
        QCoreApplication::sendEvent(bench.panel, &event);
        QCOMPARE(bench.panel->windowTitle(), QString("the host's own title"));
    }

    void aChangeEventReachesTheFrame()
    {
        const PanelBench bench;
        const int before = bench.panel->frameWidth();
        bench.panel->setFrameStyle(QFrame::Box | QFrame::Plain);
        bench.panel->setStyleSheet("QFrame { border: 7px solid black; }");
        QVERIFY(before != 7);
        QCOMPARE(bench.panel->frameWidth(), 7);
    }

    void slotsWithoutValueDoNothing()
    {
        PanelBench bench;
        bench.panel->sl_VTConnected();
        Journal journal(bench);
        bench.panel->SettingsChanged(nullptr);
        bench.panel->SettingsInDriverChanged(nullptr);
        bench.panel->OffsetValueChanged(nullptr);
        bench.panel->SpanValueChanged(nullptr);
        QCOMPARE(journal.take(), QStringList());
    }

    // Life

    void theValuesMayGoBeforeThePanel()
    {
        PanelBench bench;
        bench.publishBandwidths({"7.5 kHz"}, 0);
        bench.panel->sl_VTConnected();
        Tree::Instance()->Clear();
        bench.choose("DFMode", "Gate");
        bench.handIn(Settings().text());
        emit bench.common.si_parametersRequested();
        QVERIFY(Tree::Instance()->ValuesBelow(QString()).empty());
    }

    void nobodyObservesAnythingWhenThePanelIsGone()
    {
        PanelBench bench;
        bench.publishBandwidths({"7.5 kHz"}, 0);
        bench.panel->sl_VTConnected();
        const QString sent = PanelBench::toDriver()->GetValue();
        delete bench.panel;
        for (const values::ValueBase* const value : Tree::Instance()->ValuesBelow(QString())) {
            const bool isLinked = extraNames.contains(value->GetName());
            QVERIFY2(isLinked || value->GetObserverCount() == 0, qPrintable(value->GetPathName()));
        }
        PanelBench::selection("Config/Mode")->Select("Gate");
        QCOMPARE(PanelBench::toDriver()->GetValue(), sent);
        QVERIFY(!bench.common.SetParameterSet(componentRoot, "DF_Settings", Settings().text()));
        emit bench.common.si_parametersRequested();
        emit bench.common.si_propertiesChanged();
    }

    void theSharedObjectMayGoBeforeThePanel()
    {
        const FreshTree tree;
        auto common = std::make_unique<VelmarGui::GuiComponentCommon>();
        common->SetFormFolder(QStringLiteral(FORM_FOLDER));
        DFLocateSettingsWidget panel(common.get(), componentRoot);
        panel.sl_Offline();
        common.reset();
        PanelBench::selection("Config/Mode")->Select("Gate");
        panel.sl_parametersRequested();
        panel.sl_VTConnected();
        QCOMPARE(PanelBench::selection("Config/Mode")->GetStringValue(), QString("Gate"));
    }

    void twoPanelsKeepTheirSettingsApart()
    {
        const FreshTree tree;
        VelmarGui::GuiComponentCommon common;
        common.SetFormFolder(QStringLiteral(FORM_FOLDER));
        DFLocateSettingsWidget first(&common, "/1/DFLocateComponent/");
        auto second = std::make_unique<DFLocateSettingsWidget>(&common, "/2/DFLocateComponent/");
        first.sl_Offline();
        second->sl_Offline();
        auto* const firstMode = PanelBench::at<ValueSelection>("/1/DFLocateHandler/Config/Mode");
        auto* const secondMode = PanelBench::at<ValueSelection>("/2/DFLocateHandler/Config/Mode");
        Settings gate;
        gate.mode = "Gate";
        firstMode->Select("Gate");
        QCOMPARE(secondMode->GetStringValue(), QString("Normal"));
        QCOMPARE(common.GetParameterSet("/1/DFLocateComponent/", "DF_Settings"), gate.text());
        QCOMPARE(common.GetParameterSet("/2/DFLocateComponent/", "DF_Settings"), Settings().text());
        second.reset();
        firstMode->Select("Normal");
        QCOMPARE(common.GetParameterSet("/1/DFLocateComponent/", "DF_Settings"), Settings().text());
    }

    void theDeviceOfTwoPanelsIsTheSame()
    {
        PanelBench bench;
        DFLocateSettingsWidget other(&bench.common, "/2/DFLocateComponent/");
        bench.panel->sl_VTConnected();
        other.sl_Offline();
        bench.publishBandwidths({"7.5 kHz", "30.0 kHz"}, 1);
        PanelBench::announceDevice();
        auto* const otherBandwidth = PanelBench::at<ValueSelection>("/2/DFLocateHandler/Config/Bandwidth");
        QCOMPARE(otherBandwidth->GetItemCount(), 2);
        PanelBench::selection("Config/Bandwidth")->Select("7.5 kHz");
        QCOMPARE(PanelBench::device("DeviceDfBandwidth")->GetStringValue(), QString("7.5 kHz"));
        QCOMPARE(otherBandwidth->GetStringValue(), QString("7.5 kHz"));
    }

private:
    static void onlineOrNot()
    {
        QTest::addColumn<bool>("online");
        QTest::newRow("with a driver") << true;
        QTest::newRow("without a driver") << false;
    }

    /// Values, parameter sets and driver go on; what needs the form does nothing.
    static void expectWorkWithoutForm(PanelBench& bench)
    {
        QVERIFY(!bench.sheet());
        Journal journal(bench);
        Settings expected;
        expected.mode = "Gate";
        PanelBench::selection("Config/Mode")->Select("Gate");
        QCOMPARE(journal.take(),
                 (QStringList{"Config/Mode=Gate", "set=" + expected.text(), "ToDriver=" + expected.text()}));
        expected.averaging = "2000";
        bench.handIn(expected.text());
        QCOMPARE(journal.take(), (QStringList{"set=" + expected.text(), "Config/AverageTime=2s"}));
        bench.panel->sl_parametersModified();
        bench.panel->sl_parametersRequested();
        bench.panel->sl_propertiesChanged();
        PanelBench::real("Config/DFFrequencyOffset")->SetValue(5.0, nullptr);
        PanelBench::extra("DFLocateType")->Select("Online");
        QCOMPARE(journal.take(), (QStringList{"Config/DFFrequencyOffset=5", "C:DFLocateType=Online"}));
    }
};

DFL_TEST_MAIN(TestDFLocateSettingsWidget)
#include "tst_dflocatesettingswidget.moc"
