// Boots the real workbench with the real component library in a real X window, presses real keys and buttons through
// the X server, and compares what is shown with the values.

#include "app/application.h"
#include "app/mainwindow.h"
#include "app/session.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/valueobservermacros.h"
#include "ztbase/brix/datetime.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>
#include <QTableWidget>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

#include <cmath>
#include <cstdio>

using testsupport::RecordingObserver;

namespace {

template <typename T>
T* handlerValue(const char* path)
{
    auto* const value = dynamic_cast<T*>(values::Tree::Instance()->FindValue(workbench::handlerRoot() + path));
    if (value == nullptr)
        qFatal("The driver has no value %s of this kind", path);
    return value;
}

/// Has the X server do what a person at the keyboard and mouse does.
void operate(const QStringList& xdotoolArguments)
{
    // Not waited for: what it sets off may open a modal box before it has ended.
    if (!QProcess::startDetached(QStringLiteral("xdotool"), xdotoolArguments))
        qFatal("xdotool cannot be started");
}

void press(const QString& keys)
{
    operate({"key", "--clearmodifiers", keys});
}

void click(QWidget* widget, int button = 1)
{
    const QPoint centre = widget->mapToGlobal(widget->rect().center());
    operate({"mousemove", "--sync", QString::number(centre.x()), QString::number(centre.y()), "click",
             QString::number(button)});
}

/// Keeps a picture of the whole screen among the artefacts of the build.
void keepScreenshot(const QString& name)
{
    const QPixmap picture = QGuiApplication::primaryScreen()->grabWindow(0);
    const QString file = qEnvironmentVariable("DFLOCATE_SCREENSHOTS") + '/' + name + ".png";
    QVERIFY2(picture.save(file), qPrintable(file));
}

} // namespace

class TestBoot : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* window = qobject_cast<workbench::MainWindow*>(widget))
                m_window = window;
        }
        QVERIFY(m_window != nullptr);
        QVERIFY(QTest::qWaitForWindowActive(m_window));
        m_toolBar = m_window->findChild<QToolBar*>("DFLocateToolBar");
        QVERIFY(m_toolBar != nullptr);
        QTRY_VERIFY(m_toolBar->isEnabled());
        QCOMPARE(QGuiApplication::platformName(), QString("xcb"));
    }

    void nothingIsShownBeforeTheFirstDf()
    {
        QCOMPARE(label("average bearing"), QString("---"));
        QCOMPARE(label("average quality"), QString("---"));
        QCOMPARE(label("LocationFindingTime"), QString("---"));
        keepScreenshot("1-started");
    }

    void controlDStartsASingleDfAndItsResultIsShown()
    {
        auto* time = handlerValue<values::StringValue>("Values/Result/ResultTime");
        RecordingObserver results;
        time->AddObserver(&results);
        press("ctrl+d");
        QTRY_COMPARE(results.count(ChangeContent), 1);
        time->RemoveObserver(&results);

        QCOMPARE(handlerValue<values::ValueSelection>("Values/Commands")->GetCurrentKey(), 9);
        QTRY_VERIFY(!handlerValue<values::BoolValue>("DFRunning")->GetValue());
        QCOMPARE(label("average bearing"), text("Values/Result/Azimuth") + QChar(0x00B0));
        QCOMPARE(label("average quality"), text("Values/Result/Quality") + "%");
        const QString local = Brix::DateTime::fromString(time->GetValue()).toString(Brix::DateTime::Local_TimeZone);
        QCOMPARE(label("LocationFindingTime"), local.mid(11));
        keepScreenshot("2-single-df");
    }

    void theSameKeysAgainStartAnotherDf()
    {
        auto* time = handlerValue<values::StringValue>("Values/Result/ResultTime");
        RecordingObserver results;
        time->AddObserver(&results);
        press("ctrl+d");
        QTRY_COMPARE(results.count(ChangeContent), 1);
        time->RemoveObserver(&results);
    }

    void aClickOnTheLampOpensTheReport()
    {
        auto* lamp = m_toolBar->findChild<QLabel*>("Led Label");
        QVERIFY(lamp != nullptr);
        QString title;
        QString report;
        QTimer watch;
        connect(&watch, &QTimer::timeout, this, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box == nullptr || !box->isActiveWindow() || !report.isEmpty())
                return;
            title = box->windowTitle();
            report = box->text();
            keepScreenshot("3-report");
            press("Return");
        });
        watch.start(20);
        click(lamp);
        QTRY_VERIFY(!report.isEmpty());
        QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
        QCOMPARE(title, QString("Locate states"));
        const auto* stations = handlerValue<values::ValueSelection>("Values/Result/SelectedDF");
        QVERIFY(stations->GetItemCount() >= 2);
        for (int i = 0; i < stations->GetItemCount(); ++i)
            QVERIFY2(report.contains("<TD> " + stations->GetItem(i)->GetName()), qPrintable(report));
        QVERIFY(QTest::qWaitForWindowActive(m_window));
    }

    void theDetailedResultsShowEveryStationsValues()
    {
        click(m_toolBar->findChild<QToolButton*>("DetailedResults"));
        QWidget* window = nullptr;
        QTRY_VERIFY((window = topLevel("DetailedResults")) != nullptr);
        QVERIFY(QTest::qWaitForWindowActive(window));
        compareWithValues(*window);
        keepScreenshot("4-detailed-results");

        // The next result is shown at once, and the hot key works from this window too.
        auto* time = handlerValue<values::StringValue>("Values/Result/ResultTime");
        RecordingObserver results;
        time->AddObserver(&results);
        press("ctrl+d");
        QTRY_COMPARE(results.count(ChangeContent), 1);
        time->RemoveObserver(&results);
        compareWithValues(*window);
        window->close();
        QVERIFY(QTest::qWaitForWindowActive(m_window));
    }

    void aQualityThresholdTypedIntoTheToolbarReachesTheNextResult()
    {
        auto* spin = m_toolBar->findChild<QAbstractSpinBox*>("Quality threshold");
        QVERIFY(spin != nullptr);
        auto* threshold = handlerValue<values::IntValue>("Config/Quality");
        QCOMPARE(threshold->GetState(), values::StateUnused);
        click(spin);
        QTRY_VERIFY(spin->hasFocus());
        operate({"key", "ctrl+a", "1", "0", "0", "Return"});
        QTRY_COMPARE(threshold->GetValue(), 100);
        QCOMPARE(threshold->GetState(), values::StateOrdinary);
        press("ctrl+d");
        QTRY_COMPARE(handlerValue<values::IntValue>("Values/Result/QualityThreshold")->GetValue(), 100);
        QTRY_COMPARE(label("average bearing"), QString("---"));
        QCOMPARE(label("average quality"), QString("---"));
        keepScreenshot("5-below-threshold");
    }

    void inWorkflowContinuousControlDSwitchesCyclicDfOnAndOff()
    {
        auto* workflow = handlerValue<values::ValueSelection>("Config/DFLocateWorkflow");
        QVERIFY(workflow->Select(QString("Continuous"), nullptr));
        auto* button = m_toolBar->findChild<QToolButton*>("DFStarter");
        auto* started = handlerValue<values::BoolValue>("Values/Result/CyclicLocateStarted");
        auto* time = handlerValue<values::StringValue>("Values/Result/ResultTime");
        RecordingObserver results;
        time->AddObserver(&results);
        press("ctrl+d");
        QTRY_VERIFY(results.count(ChangeContent) >= 3);
        QVERIFY(button->isChecked());
        QVERIFY(started->GetValue());
        keepScreenshot("6-cyclic");
        press("ctrl+d");
        QTRY_VERIFY(!started->GetValue());
        QTRY_VERIFY(!handlerValue<values::BoolValue>("DFRunning")->GetValue());
        QVERIFY(!button->isChecked());
        QCOMPARE(handlerValue<values::ValueSelection>("Values/Commands")->GetCurrentKey(), 11);
        time->RemoveObserver(&results);
    }

private:
    [[nodiscard]] QString label(const char* objectName) const
    {
        const auto* shown = m_toolBar->findChild<QLabel*>(objectName);
        return shown != nullptr ? shown->text() : QStringLiteral("no such label");
    }

    [[nodiscard]] static QString text(const char* path)
    {
        return handlerValue<values::ValueSelection>(path)->GetStringValue();
    }

    [[nodiscard]] static QString text(const char* path, int key)
    {
        return handlerValue<values::ValueSelection>(path)->GetItemNameForKey(key);
    }

    [[nodiscard]] static QWidget* topLevel(const char* objectName)
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == QLatin1String(objectName))
                return widget;
        }
        return nullptr;
    }

    /// Compares the window of detailed results with the driver's values.
    static void compareWithValues(const QWidget& window)
    {
        const QString resultTime = handlerValue<values::StringValue>("Values/Result/ResultTime")->GetValue();
        QCOMPARE(window.findChild<QLabel*>("m_pDateTimeLabel")->text(),
                 Brix::DateTime::fromString(resultTime).toString(Brix::DateTime::Local_TimeZone));
        const auto* stations = handlerValue<values::ValueSelection>("Values/Result/SelectedDF");
        const auto* table = window.findChild<QTableWidget*>("m_pTable");
        QVERIFY(stations->GetItemCount() >= 2);
        QCOMPARE(table->rowCount(), stations->GetItemCount());
        for (int row = 0; row < table->rowCount(); ++row) {
            QStringList shown;
            for (int column = 0; column < table->columnCount(); ++column)
                shown << table->item(row, column)->text();
            QCOMPARE(shown.mid(0, 5), measurementsOf(*stations->GetItem(row)));
            const int key = stations->GetItem(row)->GetKey();
            compareCoordinate(shown.at(5), text("Values/Result/DFLongitude", key));
            compareCoordinate(shown.at(6), text("Values/Result/DFLatitude", key));
            QCOMPARE(shown.at(7) == "---", text("Values/Result/Errors", key).toInt() == 0);
        }
    }

    /// Name, frequency, azimuth, level and quality as the operator is to read them.
    [[nodiscard]] static QStringList measurementsOf(const values::SelectionItem& station)
    {
        const double hz = handlerValue<values::StringValue>("Values/Result/Frequency")->GetValue().toDouble();
        const QString quality = text("Values/Result/Quality", station.GetKey());
        const int threshold = handlerValue<values::IntValue>("Values/Result/QualityThreshold")->GetValue();
        const bool goodEnough = quality.toInt() >= threshold;
        return {station.GetName(), QString::number(hz / 1e6, 'g', 15) + " MHz",
                goodEnough ? text("Values/Result/Azimuth", station.GetKey()) + QStringLiteral("°") : "---",
                text("Values/Result/Level", station.GetKey()) + QStringLiteral(" dBµV"),
                goodEnough ? quality + "%" : "---"};
    }

    /// Compares degrees and minutes with a number of degrees, to what three decimals of a minute can tell.
    static void compareCoordinate(const QString& shown, const QString& degrees)
    {
        static const QRegularExpression form(QStringLiteral("^(-?)(\\d+)°(\\d+\\.\\d{3})'$"));
        const QRegularExpressionMatch match = form.match(shown);
        QVERIFY2(match.hasMatch(), qPrintable(shown));
        const double size = match.captured(2).toDouble() + match.captured(3).toDouble() / 60.0;
        const double value = match.captured(1).isEmpty() ? size : -size;
        QVERIFY2(std::abs(value - degrees.toDouble()) < 0.001 / 60.0, qPrintable(shown + " is not " + degrees));
    }

    workbench::MainWindow* m_window = nullptr;
    QToolBar* m_toolBar = nullptr;
};

namespace {

int testResult = -1;

/// Runs the tests inside the program, once its event loop turns and its window is up.
void runTestsInTheProgram()
{
    QTimer::singleShot(0, qApp, [] {
        TestBoot test;
        testResult = QTest::qExec(&test);
        QCoreApplication::quit();
    });
}
Q_COREAPP_STARTUP_FUNCTION(runTestsInTheProgram)

} // namespace

int main(int argc, char** argv)
{
    testsupport::prepareProcess(150);
    const int exitCode = workbench::runWorkbench(argc, argv);
    if (exitCode != workbench::Done)
        std::fprintf(stderr, "The workbench ended with exit code %d.\n", exitCode);
    return testResult != 0 ? testResult : exitCode;
}

#include "tst_boot.moc"
