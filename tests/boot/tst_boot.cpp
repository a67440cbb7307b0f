// Boots the real workbench with the real component library in a real X window, presses real keys and buttons through
// the X server, and compares what is shown with the values.

#include "app/application.h"
#include "app/mainwindow.h"
#include "app/session.h"
#include "map/mapcanvas.h"
#include "map/mapitems.h"
#include "map/mapscene.h"
#include "map/mapview.h"
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
#include <QTableView>
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

void clickAt(const QWidget* widget, const QPoint& place)
{
    const QPoint onScreen = widget->mapToGlobal(place);
    operate({"mousemove", "--sync", QString::number(onScreen.x()), QString::number(onScreen.y()), "click", "1"});
}

void click(const QWidget* widget)
{
    clickAt(widget, widget->rect().center());
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

    void theMapShowsTheBearingsTheFixAndItsEllipse()
    {
        const auto* stations = handlerValue<values::ValueSelection>("Values/Result/SelectedDF");
        QTRY_COMPARE(int(items<workbench::BearingItem>().size()), stations->GetItemCount());
        QCOMPARE(int(items<workbench::StationItem>().size()), stations->GetItemCount());
        const auto fixes = items<workbench::FixItem>();
        QCOMPARE(fixes.size(), std::size_t(1));
        QCOMPARE(items<workbench::EllipseItem>().size(), std::size_t(1));
        // The position that the driver publishes and the one on the map are the same.
        const double latitude = handlerValue<values::DoubleValue>("Values/Result/AveragePositionLatitude")->GetValue();
        const double longitude =
            handlerValue<values::DoubleValue>("Values/Result/AveragePositionLongitude")->GetValue();
        const QPointF published = map().scene()->projection().toMap({latitude, longitude});
        QVERIFY(QLineF(fixes[0]->pos(), published).length() < 1.0);
        for (const workbench::StationItem* station : items<workbench::StationItem>())
            QVERIFY(isInSight(station->pos()));
        QVERIFY(isInSight(fixes[0]->pos()));
        keepScreenshot("2-map");
    }

    void aBearingPickedInTheTableIsMarkedOnTheMap()
    {
        const QTableView* table = map().table();
        for (const int row : {1, 2}) {
            const QModelIndex cell = table->model()->index(row, workbench::MapModel::BearingColumn);
            clickAt(table->viewport(), table->visualRect(cell).center());
            const int id = map().model()->stations()[std::size_t(row)].id;
            QTRY_COMPARE(map().scene()->marked(), std::optional<int>(id));
            for (const workbench::BearingItem* bearing : items<workbench::BearingItem>())
                QCOMPARE(bearing->isMarked(), bearing->stationId() == id);
            for (const workbench::StationItem* station : items<workbench::StationItem>())
                QCOMPARE(station->isMarked(), station->stationId() == id);
        }
        keepScreenshot("2-map-picked");
    }

    void aBearingExcludedByAClickLeavesTheFixAtOnce()
    {
        const QPointF before = items<workbench::FixItem>().at(0)->pos();
        const QString size = items<workbench::FixItem>().at(0)->text();
        const workbench::MapStation& station = map().model()->stations().at(1);
        QCOMPARE(workbench::useText(station.use), QString("used"));
        clickAt(map().table()->viewport(), checkBox(1).center());
        QTRY_VERIFY(map().model()->station(station.id)->excluded);
        const auto fixes = items<workbench::FixItem>();
        QCOMPARE(fixes.size(), std::size_t(1));
        QVERIFY(QLineF(fixes[0]->pos(), before).length() > 1.0);
        QVERIFY(fixes[0]->text() != size);
        for (const workbench::BearingItem* bearing : items<workbench::BearingItem>())
            QCOMPARE(bearing->pen().style() == Qt::DotLine, bearing->stationId() == station.id);
        keepScreenshot("2-map-excluded");
        // By keys: another click there could count as the second of a double one.
        const QRect name = map().table()->visualRect(map().model()->index(1, workbench::MapModel::StationColumn));
        clickAt(map().table()->viewport(), {name.right() - 10, name.center().y()});
        QTRY_COMPARE(map().scene()->marked(), std::optional<int>(station.id));
        press("space");
        QTRY_VERIFY(!map().model()->station(station.id)->excluded);
        QVERIFY(QLineF(items<workbench::FixItem>().at(0)->pos(), before).length() < 1e-3);
    }

    void theWheelAndTheKeysZoomTheMap()
    {
        workbench::MapCanvas* canvas = map().canvas();
        const double before = canvas->metresPerPixel();
        const QPoint place = canvas->viewport()->mapToGlobal(canvas->viewport()->rect().center());
        operate({"mousemove", "--sync", QString::number(place.x()), QString::number(place.y()), "click", "4"});
        QTRY_VERIFY(canvas->metresPerPixel() < 0.9 * before);
        clickAt(canvas->viewport(), {30, 60}); // takes the focus
        QTRY_VERIFY(canvas->hasFocus());
        press("f");
        QTRY_COMPARE(canvas->metresPerPixel(), before);
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
    [[nodiscard]] workbench::MapView& map() const { return *m_window->mapView(); }

    /// The visible ones on the map; of bearings those of the latest result.
    template <typename Item>
    [[nodiscard]] std::vector<Item*> items() const
    {
        std::vector<Item*> found;
        for (QGraphicsItem* item : map().scene()->items()) {
            auto* candidate = qgraphicsitem_cast<Item*>(item);
            if (candidate == nullptr || !candidate->isVisible())
                continue;
            if constexpr (std::is_same_v<Item, workbench::BearingItem>) {
                if (!candidate->isLatest())
                    continue;
            }
            found.push_back(candidate);
        }
        return found;
    }

    [[nodiscard]] bool isInSight(const QPointF& place) const
    {
        const workbench::MapCanvas* canvas = map().canvas();
        return canvas->viewport()->rect().contains(canvas->mapFromScene(place));
    }

    /// Where the check box of a station's row is.
    [[nodiscard]] QRect checkBox(int row) const
    {
        const QTableView* table = map().table();
        QStyleOptionViewItem option;
        option.initFrom(table);
        option.rect = table->visualRect(table->model()->index(row, workbench::MapModel::StationColumn));
        option.features = QStyleOptionViewItem::HasCheckIndicator | QStyleOptionViewItem::HasDisplay;
        return table->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, table);
    }

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
