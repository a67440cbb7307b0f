#include "forms.h"

#include "kt270/pgxmlsheet.h"
#include "support/freshtree.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"
#include "valuewidgets/vccomboboxclassic.h"

#include <QCheckBox>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QToolButton>
#include <QVBoxLayout>

using KT270::PgXmlFormular;
using testsupport::FreshTree;
using values::DoubleValue;
using values::IntValue;
using values::ValueSelection;

namespace {

/// The form that comes with the host, set up as the settings panel does it, in a window.
class SettingsForm
{
public:
    SettingsForm()
    {
        offset->SetMinMax(-2147483647.0, 2147483647.0, 1.0, nullptr);
        quality->SetMinMax(1, 100, 1, nullptr);
        level->SetMinMax(-40, 200, 1, nullptr);
        quality->SetState(values::StateUnused, nullptr);
        level->SetState(values::StateUnused, nullptr);
        mode->AddItem("Normal", 0.0, 0);
        mode->AddItem("Cont", 0.0, 1);
        mode->AddItem("Gate", 0.0, 2);
        mode->SelectIndex(0);
        bandwidth->AddItem("7.5 kHz", 7500.0, 6);
        bandwidth->AddItem("12.0 kHz", 12000.0, 7);
        bandwidth->SelectIndex(1);
        averaging->AddItem("Off", 0.0, 0);
        averaging->AddItem("200m", 200.0, 1);
        averaging->SelectIndex(0);

        KT270::PgXmlParser parser;
        form.reset(parser.ParsePGXMLFile(QStringLiteral(FORM_FOLDER "/DF_Settings_FFP.xml")));
        if (!form)
            qFatal("%s", qPrintable(parser.GetErrors().join(QLatin1Char('\n'))));
        const char* const labels[] = {"Request Mode", "Locate Type", "Locate Activity", "Locate Activity Trigger"};
        for (int row = 1; row <= 4; ++row) {
            auto* const combo = new VCComboBoxClassic;
            combo->setObjectName(QStringLiteral("extra%1").arg(row));
            extra->AddItems({"On request", "DF and locate"});
            extra->SelectIndex(0);
            combo->SetValueSelection(extra);
            form->GetSheet()->InsertWidget(QLatin1String(labels[row - 1]), combo->objectName(), combo, row);
        }
        form->CreateValueTree();
        bound = form->InitVTValue("Detail/QualityThreshold", quality) &&
                form->InitVTValue("Detail/LevelThreshold", level) && form->InitVTValue("DFMode", mode) &&
                form->InitVTValue("Bandwidth", bandwidth) && form->InitVTValue("Averaging", averaging) &&
                form->InitVTValue("DFFrequencyOffset", offset) &&
                form->InitEnumeration("enumMode", mode, {"Normal", "Cont", "Gate"}) &&
                form->InitEnumeration("enumBandwidth", bandwidth) && form->InitEnumeration("enumAveraging", averaging);
        form->CreateGUI(true);
        auto* const layout = new QVBoxLayout(&window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(form->GetWidget());
        form->Show();
    }

    FreshTree tree;
    DoubleValue* offset = tree.add<DoubleValue>("/h/offset");
    IntValue* quality = tree.add<IntValue>("/h/quality");
    IntValue* level = tree.add<IntValue>("/h/level");
    ValueSelection* mode = tree.add<ValueSelection>("/h/mode");
    ValueSelection* bandwidth = tree.add<ValueSelection>("/h/bandwidth");
    ValueSelection* averaging = tree.add<ValueSelection>("/h/averaging");
    ValueSelection* extra = tree.add<ValueSelection>("/h/extra");
    QWidget window;
    std::unique_ptr<PgXmlFormular> form;
    bool bound = false;
};

} // namespace

class TestSettingsForm : public QObject
{
    Q_OBJECT
private slots:
    void everyFieldAndEnumerationCanBeBound()
    {
        const SettingsForm f;
        QVERIFY(f.bound);
    }

    void itsTextHasTheSettingsElementsInTheirOrder()
    {
        const SettingsForm f;
        QCOMPARE(f.form->GetXmlString(),
                 QString("<DF_Settings><Bandwidth>12000</Bandwidth><Averaging>0</Averaging><DFMode>Normal</DFMode>"
                         "<Detail/><DFFrequencyOffset>0</DFFrequencyOffset></DF_Settings>"));
    }

    void itTakesAWholeSettingsTextOver()
    {
        const SettingsForm f;
        QVERIFY(f.form->EvaluateScript("setOverwriteThreshold(true);"));
        QVERIFY(f.form->SetXmlString(
            "<DF_Settings><Bandwidth>7500</Bandwidth><Averaging>200</Averaging><DFMode>Gate</DFMode><Detail>"
            "<QualityThreshold>50</QualityThreshold><LevelThreshold>-12</LevelThreshold></Detail><FrequencyOffset>-0.5"
            "</FrequencyOffset><Workflow>Continuous</Workflow></DF_Settings>"));
        QCOMPARE(
            f.form->GetXmlString(),
            QString("<DF_Settings><Bandwidth>7500</Bandwidth><Averaging>200</Averaging><DFMode>Gate</DFMode><Detail>"
                    "<QualityThreshold>50</QualityThreshold><LevelThreshold>-12</LevelThreshold></Detail>"
                    "<DFFrequencyOffset>0</DFFrequencyOffset></DF_Settings>"));
    }

    void normSelectsNormal()
    {
        const SettingsForm f;
        QVERIFY(f.form->SetXmlString("<DF_Settings><DFMode>Gate</DFMode></DF_Settings>"));
        QVERIFY(f.form->SetXmlString("<DF_Settings><DFMode>Norm</DFMode></DF_Settings>"));
        QVERIFY(f.form->GetXmlString().contains("<DFMode>Normal</DFMode>"));
    }

    void theLevelThresholdIsAWholeNumber()
    {
        const SettingsForm f;
        f.form->EvaluateScript("setOverwriteThreshold(true);");
        f.form->SetXmlString("<DF_Settings><Detail><LevelThreshold>-12.7</LevelThreshold></Detail></DF_Settings>");
        QVERIFY(f.form->GetXmlString().contains("<LevelThreshold>0</LevelThreshold>"));
    }

    void setOverwriteThresholdEnablesAndDisablesBothThresholds()
    {
        const SettingsForm f;
        for (const bool on : {true, false, true}) {
            QVERIFY(f.form->EvaluateScript(
                QStringLiteral("setOverwriteThreshold(%1);").arg(QLatin1String(on ? "true" : "false"))));
            QCOMPARE(f.quality->GetState(), on ? values::StateOrdinary : values::StateUnused);
            QCOMPARE(f.level->GetState(), on ? values::StateOrdinary : values::StateUnused);
            QCOMPARE(f.form->GetSheet()->GetFieldWidget("Detail/QualityThreshold")->isEnabled(), on);
            QCOMPARE(f.form->GetSheet()->GetFieldWidget("Detail/LevelThreshold")->isEnabled(), on);
            QCOMPARE(f.window.findChild<QCheckBox*>("Detail")->isChecked(), on);
        }
    }

    void theKeyboardGoesThroughTheRowsFromTopToBottom()
    {
        SettingsForm f;
        f.form->EvaluateScript("setOverwriteThreshold(true);");
        f.window.show();
        f.window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&f.window));
        f.window.findChild<QToolButton*>("title")->setFocus();
        for (const char* const name :
             {"extra1", "extra2", "extra3", "extra4", "DFMode", "Bandwidth", "Averaging", "Detail",
              "Detail/QualityThreshold", "Detail/LevelThreshold", "DFFrequencyOffset"}) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QCOMPARE(QApplication::focusWidget()->objectName(), QString(name));
        }
    }

    void everyWidgetHasALabelOrATextOfItsOwnAndUnitsAreShown()
    {
        const SettingsForm f;
        QStringList labels;
        for (const QLabel* label : f.window.findChildren<QLabel*>()) {
            if (label->buddy() != nullptr)
                labels.append(label->buddy()->objectName() + '=' + label->text());
        }
        labels.sort();
        QCOMPARE(
            labels,
            QStringList({"Averaging=&Averaging", "Bandwidth=&Bandwidth", "DFFrequencyOffset=Frequency off&set [Hz]",
                         "DFMode=DF &mode", QString::fromUtf8("Detail/LevelThreshold=&Level threshold [dB\xc2\xb5V]"),
                         "Detail/QualityThreshold=&Quality threshold [%]", "extra1=Request Mode", "extra2=Locate Type",
                         "extra3=Locate Activity", "extra4=Locate Activity Trigger"}));
        QCOMPARE(f.window.findChild<QCheckBox*>("Detail")->text(), QString("&Overwrite thresholds"));
    }

    void itFitsIntoANarrowDock_data()
    {
        QTest::addColumn<int>("pointSize");
        QTest::newRow("small font") << 8;
        QTest::newRow("usual font") << 10;
    }
    void itFitsIntoANarrowDock()
    {
        QFETCH(int, pointSize);
        SettingsForm f;
        QFont font = f.window.font();
        font.setPointSize(pointSize);
        f.window.setFont(font);
        f.window.resize(320, 700);
        f.window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&f.window));
        const auto* const area = qobject_cast<QScrollArea*>(f.form->GetWidget());
        QCOMPARE(area->horizontalScrollBar()->maximum(), 0);
        for (const QWidget* widget : f.window.findChildren<QWidget*>()) {
            if (widget->isVisible())
                QVERIFY(widget->mapTo(&f.window, QPoint(widget->width(), 0)).x() <= 320);
        }
    }

    void itGrowsWithTheFont()
    {
        SettingsForm f;
        QFont font = f.window.font();
        font.setPointSize(8);
        f.window.setFont(font);
        const QSize small = f.form->GetSheet()->sizeHint();
        font.setPointSize(16);
        f.window.setFont(font);
        const QSize large = f.form->GetSheet()->sizeHint();
        QVERIFY(large.height() > small.height() * 5 / 4);
        QVERIFY(large.width() > small.width() * 5 / 4);
    }
};

DFL_TEST_MAIN(TestSettingsForm)
#include "tst_settingsform.moc"
