#include "app/mainwindow.h"
#include "app/session.h"
#include "app/settingsreport.h"
#include "shippednetwork.h"

#include "guicomponentbase/guicomponentcommon.h"
#include "guicomponentbase/parametersetstore.h"
#include "support/freshtree.h"
#include "support/testmain.h"
#include "support/treevalue.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QToolBar>
#include <QToolButton>

using namespace workbench;
using testsupport::at;
using values::StringValue;
using values::ValueSelection;

namespace {

ValueSelection* config(const char* name)
{
    return at<ValueSelection>(handlerRoot() + QStringLiteral("Config/") + QLatin1String(name));
}

ValueSelection* device(const char* name)
{
    return at<ValueSelection>(QStringLiteral("/GLOBAL/") + QLatin1String(name));
}

QString toDriver()
{
    return at<StringValue>(parameterRoot() + QStringLiteral("DFLOCATE/ToDriver"))->GetValue();
}

QString inDriver()
{
    return at<StringValue>(parameterRoot() + QStringLiteral("DF_Settings"))->GetValue();
}

QString element(const char* name, const char* content)
{
    return QStringLiteral("<%1>%2</%1>").arg(QLatin1String(name), QLatin1String(content));
}

/// The whole workbench with the component that comes with it.
struct Bench
{
    explicit Bench(std::unique_ptr<DfSource> source = shippedNetwork())
        : session(std::move(source))
    {
        window.follow(session);
        window.offerParameterSets(session, folder.path());
        const auto error = session.start(QStringLiteral(COMPONENT),
                                         [this](QToolBar* toolBar, QWidget* panel) { window.place(toolBar, panel); });
        if (error)
            qFatal("%s", qPrintable(error->text()));
        window.show();
        settle();
    }

    /// Until all that was queued is done, and what that queued.
    static void settle()
    {
        for (int turn = 0; turn < 5; ++turn)
            QCoreApplication::processEvents();
    }

    template <typename T = QComboBox>
    T* inPanel(const char* name) const
    {
        T* const field = window.findChild<QDockWidget*>("PanelDock")->findChild<T*>(QLatin1String(name));
        if (field == nullptr)
            qFatal("The panel has no %s", name);
        return field;
    }
    [[nodiscard]] QComboBox* inToolBar(const char* name) const
    {
        auto* const combo = session.toolBar()->findChild<QComboBox*>(QLatin1String(name));
        if (combo == nullptr)
            qFatal("The toolbar has no %s", name);
        return combo;
    }
    /// As the operator does.
    static void choose(QComboBox* combo, const QString& text)
    {
        const int index = combo->findText(text);
        QVERIFY2(index >= 0, qPrintable(text));
        combo->setCurrentIndex(index);
        emit combo->activated(index);
        settle();
    }
    DfRequest measure()
    {
        QSignalSpy published(session.driver(), &DfDriver::resultPublished);
        session.toolBar()->findChild<QToolButton*>("DFStarter")->click();
        if (!QTest::qWaitFor([&] { return published.count() > 0; }))
            qFatal("There is no result");
        return *session.driver()->publishedRequest();
    }

    testsupport::FreshTree tree;
    QTemporaryDir folder;
    MainWindow window;
    Session session;
};

} // namespace

class TestSettingsRoads : public QObject
{
    Q_OBJECT
private slots:
    void theComponentHasAPanelWithItsForm();
    void aBandwidthChosenInThePanelArrivesEverywhere();
    void aBandwidthChosenInTheToolBarArrivesEverywhere();
    void aModeArrivesInTheDevicesWords();
    void thresholdsAreMeasuredWithAndTakenOutOfUseAgain();
    void theDriversCorrectionArrivesEverywhere();
    void aRefusedTextIsToldAndChangesNothing();
    void aParameterSetThatIsLoadedIsMeasuredWith();
    void aParameterSetKeepsWhatThePanelShows();
    void anotherDevicesListsAreOfferedAndMeasuredWith();
    void aSpanMeasuresWithTheClosestBandwidth();
    void offlineThePanelIsThereWithItsDefaults();
    void offlineEditsAreReportedWhenTheyAreRequested();
    void offlineTheToolBarIsDisabledWithItsReason();
    void lockedInputDisablesThePanel();
};

void TestSettingsRoads::theComponentHasAPanelWithItsForm()
{
    const Bench bench;
    QVERIFY(bench.window.findChild<QLabel*>("NoPanel") == nullptr);
    QCOMPARE(bench.inPanel("Bandwidth")->currentText(), QStringLiteral("12.0 kHz"));
    QCOMPARE(bench.inPanel("Bandwidth")->count(), 14);
    QCOMPARE(bench.inPanel("VCComboBoxActivity")->currentText(), config("DFLocateActivity")->GetStringValue());
}

void TestSettingsRoads::aBandwidthChosenInThePanelArrivesEverywhere()
{
    Bench bench;
    Bench::choose(bench.inPanel("Bandwidth"), "30.0 kHz");
    QCOMPARE(bench.inToolBar("DF Bandwidth")->currentText(), QStringLiteral("30.0 kHz"));
    QCOMPARE(config("Bandwidth")->GetCurrentValue(), 30000.0);
    QCOMPARE(device("DeviceDfBandwidth")->GetCurrentValue(), 30000.0);
    QVERIFY(toDriver().contains(element("Bandwidth", "30000")));
    QCOMPARE(inDriver(), toDriver());
    QCOMPARE(bench.session.common().GetParameterSet(componentRoot(), "DF_Settings"), toDriver());
    QCOMPARE(bench.measure().bandwidth, 30000.0);

    const QJsonObject report = settingsJson(bench.session.toolBar(), *bench.session.driver());
    QCOMPARE(report["toolBar"].toObject()["bandwidth"].toString(), QStringLiteral("30.0 kHz"));
    QCOMPARE(report["device"].toObject()["bandwidth"].toDouble(), 30000.0);
    QCOMPARE(report["toDriver"].toString(), toDriver());
    QCOMPARE(report["inDriver"].toString(), inDriver());
    QCOMPARE(report["measured"].toObject()["bandwidth"].toDouble(), 30000.0);
}

void TestSettingsRoads::aBandwidthChosenInTheToolBarArrivesEverywhere()
{
    Bench bench;
    Bench::choose(bench.inToolBar("DF Bandwidth"), "600 Hz");
    QCOMPARE(bench.inPanel("Bandwidth")->currentText(), QStringLiteral("600 Hz"));
    QCOMPARE(device("DeviceDfBandwidth")->GetCurrentValue(), 600.0);
    QVERIFY(toDriver().contains(element("Bandwidth", "600")));
    QCOMPARE(inDriver(), toDriver());
    QCOMPARE(bench.measure().bandwidth, 600.0);
}

void TestSettingsRoads::aModeArrivesInTheDevicesWords()
{
    Bench bench;
    Bench::choose(bench.inPanel("DFMode"), "Cont");
    QCOMPARE(bench.inToolBar("DF Mode")->currentText(), QStringLiteral("Cont"));
    QCOMPARE(device("DeviceDfMode")->GetStringValue(), QStringLiteral("CONTINUOUS"));
    QVERIFY(inDriver().contains(element("DFMode", "Cont")));
    QCOMPARE(bench.measure().mode, DfMode::Continuous);
}

void TestSettingsRoads::thresholdsAreMeasuredWithAndTakenOutOfUseAgain()
{
    Bench bench;
    QVERIFY(!bench.measure().levelThreshold);
    auto* const box = bench.inPanel<QCheckBox>("Detail");
    box->click();
    auto* const level = bench.inPanel<QDoubleSpinBox>("Detail/LevelThreshold");
    level->setFocus();
    level->selectAll();
    QTest::keyClicks(level, "25");
    QTest::keyClick(level, Qt::Key_Return);
    Bench::settle();
    QVERIFY2(inDriver().contains(element("LevelThreshold", "25")), qPrintable(inDriver()));
    QCOMPARE(bench.measure().levelThreshold, std::optional<int>(25));
    box->click();
    Bench::settle();
    QVERIFY(!inDriver().contains("Threshold"));
    QVERIFY(!bench.measure().levelThreshold);
}

void TestSettingsRoads::theDriversCorrectionArrivesEverywhere()
{
    Bench bench;
    QString text = inDriver();
    QVERIFY(text.contains(element("Bandwidth", "12000")));
    text.replace("12000", "14000").replace(element("Averaging", "0"), element("Averaging", "900"));
    at<StringValue>(parameterRoot() + "DFLOCATE/ToDriver")->SetValue(text, nullptr);
    Bench::settle();
    QVERIFY2(inDriver().contains(element("Bandwidth", "15000") + element("Averaging", "1000")), qPrintable(inDriver()));
    QCOMPARE(bench.inPanel("Bandwidth")->currentText(), QStringLiteral("15.0 kHz"));
    QCOMPARE(bench.inPanel("Averaging")->currentText(), QStringLiteral("1s"));
    QCOMPARE(bench.inToolBar("DF Bandwidth")->currentText(), QStringLiteral("15.0 kHz"));
    QCOMPARE(device("DeviceDfBandwidth")->GetCurrentValue(), 15000.0);
    QCOMPARE(device("DeviceDfAveraging")->GetCurrentValue(), 1000.0);
    const DfRequest request = bench.measure();
    QCOMPARE(request.bandwidth, 15000.0);
    QCOMPARE(request.averaging, 1000.0);
}

void TestSettingsRoads::aRefusedTextIsToldAndChangesNothing()
{
    Bench bench;
    const QString before = inDriver();
    at<StringValue>(parameterRoot() + "DFLOCATE/ToDriver")->SetValue("<DF_Settings>", nullptr);
    Bench::settle();
    QCOMPARE(inDriver(), before);
    QVERIFY(bench.window.statusBar()->currentMessage().startsWith("The settings for the driver are refused: "));
    QCOMPARE(bench.measure().bandwidth, 12000.0);
}

void TestSettingsRoads::aParameterSetThatIsLoadedIsMeasuredWith()
{
    Bench bench;
    QString text = inDriver();
    text.replace("12000", "60000").replace("On request", "On trigger");
    QVERIFY(VelmarGui::ParameterSetStore(bench.folder.path()).Save("wide", text).isEmpty());
    auto* const dock = bench.window.findChild<QDockWidget*>("ParameterSetDock");
    dock->hide();
    dock->show();
    auto* const load = dock->findChild<QPushButton*>("LoadParameterSet");
    QTRY_VERIFY(load->isEnabled()); // the sets are listed
    load->click();
    QTRY_COMPARE(bench.inPanel("Bandwidth")->currentText(), QStringLiteral("60.0 kHz"));
    Bench::settle();
    QCOMPARE(bench.inPanel("VCComboBoxWorkflow")->currentText(), QStringLiteral("On trigger"));
    QCOMPARE(bench.inToolBar("DF Bandwidth")->currentText(), QStringLiteral("60.0 kHz"));
    QCOMPARE(device("DeviceDfBandwidth")->GetCurrentValue(), 60000.0);
    QCOMPARE(bench.measure().bandwidth, 60000.0);
}

void TestSettingsRoads::aParameterSetKeepsWhatThePanelShows()
{
    const Bench bench;
    Bench::choose(bench.inPanel("Averaging"), "5s");
    auto* const dock = bench.window.findChild<QDockWidget*>("ParameterSetDock");
    QTest::keyClicks(dock->findChild<QLineEdit*>("ParameterSetName"), "slow");
    dock->findChild<QPushButton*>("SaveParameterSet")->click();
    QTRY_COMPARE(bench.window.statusBar()->currentMessage(), QStringLiteral("Parameter set \"slow\" is saved."));
    const auto loaded = VelmarGui::ParameterSetStore(bench.folder.path()).Load("slow");
    QVERIFY2(loaded.xml, qPrintable(loaded.error));
    QVERIFY(loaded.xml->contains(element("Averaging", "5000")));
}

void TestSettingsRoads::anotherDevicesListsAreOfferedAndMeasuredWith()
{
    Bench bench;
    Bench::choose(bench.inPanel("DFMode"), "Cont");
    QAction* wideband = nullptr;
    for (QAction* const candidate : bench.window.findChildren<QAction*>()) {
        if (candidate->text() == "&2 Wideband")
            wideband = candidate;
    }
    QVERIFY(wideband != nullptr);
    QVERIFY(!wideband->isChecked());
    wideband->trigger();
    Bench::settle();
    QVERIFY(wideband->isChecked());
    for (QComboBox* const combo : {bench.inPanel("Bandwidth"), bench.inToolBar("DF Bandwidth")}) {
        QCOMPARE(combo->count(), 8);
        QCOMPARE(combo->currentText(), QStringLiteral("12.5 kHz"));
    }
    // The device has no continuous mode.
    QCOMPARE(bench.session.driver()->settings().mode, DfMode::Normal);
    QCOMPARE(bench.measure().bandwidth, 12500.0);
    Bench::choose(bench.inPanel("Bandwidth"), "1 MHz");
    QCOMPARE(device("DeviceDfBandwidth")->GetStringValue(), QStringLiteral("1 MHz"));
    QVERIFY(inDriver().contains(element("Bandwidth", "1000000")));
    QCOMPARE(bench.measure().bandwidth, 1000000.0);
}

void TestSettingsRoads::aSpanMeasuresWithTheClosestBandwidth()
{
    Bench bench;
    QSignalSpy published(bench.session.driver(), &DfDriver::resultPublished);
    at<values::DoubleValue>(handlerRoot() + "Config/DFSpan")->SetValue(70000.0, nullptr);
    QTRY_COMPARE(published.count(), 1);
    QCOMPARE(bench.session.driver()->publishedRequest()->bandwidth, 60000.0);
}

void TestSettingsRoads::offlineThePanelIsThereWithItsDefaults()
{
    const Bench bench(nullptr);
    QCOMPARE(bench.inPanel("Bandwidth")->currentText(), QStringLiteral("12.0 kHz"));
    QCOMPARE(bench.inPanel("Averaging")->currentText(), QStringLiteral("Off"));
    QCOMPARE(bench.inPanel("DFMode")->currentText(), QStringLiteral("Normal"));
    QVERIFY(!bench.inPanel<QCheckBox>("Detail")->isChecked());
    QVERIFY(bench.inPanel("Bandwidth")->isVisible());
}

void TestSettingsRoads::offlineEditsAreReportedWhenTheyAreRequested()
{
    const Bench bench(nullptr);
    const auto parameterSet = [&] { return bench.session.common().GetParameterSet(componentRoot(), "DF_Settings"); };
    const auto* const state = bench.window.findChild<QLabel*>("ParameterSetState");
    Bench::choose(bench.inPanel("Bandwidth"), "30.0 kHz");
    QVERIFY(state->text().startsWith("Edited"));
    QVERIFY(parameterSet().contains(element("Bandwidth", "12000")));
    bench.window.findChild<QPushButton*>("RequestParameterSet")->click();
    QVERIFY(!state->text().startsWith("Edited"));
    QVERIFY(parameterSet().contains(element("Bandwidth", "30000")));
    QCOMPARE(config("Bandwidth")->GetCurrentValue(), 30000.0);
}

void TestSettingsRoads::offlineTheToolBarIsDisabledWithItsReason()
{
    const Bench bench(nullptr);
    QVERIFY(!bench.session.toolBar()->isEnabled());
    QCOMPARE(bench.session.toolBar()->toolTip(),
             QStringLiteral("There is no driver to measure with: the workbench was started offline."));
}

void TestSettingsRoads::lockedInputDisablesThePanel()
{
    const Bench bench;
    const auto* const shown = bench.window.findChild<QLabel*>("InputMode");
    QCOMPARE(shown->text(), QStringLiteral("Input: full"));
    for (QAction* const candidate : bench.window.findChildren<QAction*>()) {
        if (candidate->text() == "&Locked")
            candidate->trigger();
    }
    QCOMPARE(shown->text(), QStringLiteral("Input: locked"));
    QVERIFY(!bench.inPanel("Bandwidth")->isEnabled());
}

DFL_TEST_MAIN(TestSettingsRoads)
#include "tst_settingsroads.moc"
