#include "map/mapview.h"

#include "map/mapcanvas.h"
#include "map/mapformats.h"
#include "map/mapitems.h"
#include "map/mapscene.h"

#include "mapbench.h"
#include "workbench/filework/busydisk.h"

#include <QClipboard>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QXmlStreamReader>

#include <cmath>
#include <limits>
#include <memory>

using namespace workbench;
using mapbench::fourStations;
using mapbench::result;
using mapbench::Shot;
using testsupport::BusyDisk;

namespace {

/// A shown map whose clock stands still until it is moved.
struct Bench
{
    explicit Bench(const std::vector<Shot>& shots = {})
    {
        view.resize(1000, 700);
        view.show();
        if (!shots.empty())
            model().addResult(result(shots));
    }

    MapModel& model() const { return *view.model(); }
    MapScene& scene() const { return *view.scene(); }
    MapCanvas& canvas() const { return *view.canvas(); }

    template <typename Item>
    [[nodiscard]] std::vector<Item*> items() const
    {
        std::vector<Item*> found;
        const QList<QGraphicsItem*> all = scene().items();
        for (QGraphicsItem* const item : all) {
            if (auto* const candidate = qgraphicsitem_cast<Item*>(item); candidate != nullptr && candidate->isVisible())
                found.push_back(candidate);
        }
        return found;
    }

    [[nodiscard]] StationItem* station(int id) const
    {
        for (StationItem* const item : items<StationItem>()) {
            if (item->stationId() == id)
                return item;
        }
        return nullptr;
    }

    /// Of the latest result.
    [[nodiscard]] BearingItem* bearing(int id) const
    {
        for (BearingItem* const item : items<BearingItem>()) {
            if (item->stationId() == id && item->isLatest())
                return item;
        }
        return nullptr;
    }

    [[nodiscard]] QPoint onScreen(const QPointF& place) const { return canvas().mapFromScene(place); }
    /// A place on the line of a bearing, away from its station and the others.
    [[nodiscard]] QPoint onLine(int id) const { return onScreen(bearing(id)->path().pointAtPercent(0.12)); }
    void click(const QPoint& place) const
    {
        QTest::mouseClick(canvas().viewport(), Qt::LeftButton, Qt::NoModifier, place);
    }
    void turnWheel(const QPoint& place, int angle) const
    {
        QWheelEvent event(place, canvas().viewport()->mapToGlobal(place), QPoint(), QPoint(0, angle), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(canvas().viewport(), &event);
    }
    /// Exports to a file; what is told of it.
    [[nodiscard]] QString exported(const QString& file)
    {
        QSignalSpy messages(&view, &MapView::message);
        view.exportTo(file);
        return QTest::qWaitFor([&] { return !messages.isEmpty(); }) ? messages[0][0].toString()
                                                                    : QStringLiteral("nothing is told");
    }
    [[nodiscard]] bool isInSight(const QPointF& place) const
    {
        return canvas().viewport()->rect().contains(onScreen(place));
    }

    qint64 now = 0;
    MapView view{[this] { return now; }, nullptr};
};

QByteArray contentOf(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestMapView : public QObject
{
    Q_OBJECT
private slots:
    void everyStationWithAPositionHasASignWithItsName()
    {
        Bench bench(fourStations());
        QCOMPARE(bench.items<StationItem>().size(), std::size_t(4));
        QCOMPARE(bench.station(2)->text(), QStringLiteral("S2"));
        const QPointF expected = bench.scene().projection().toMap({50.3, 7.0});
        QVERIFY(QLineF(bench.station(2)->pos(), expected).length() < 1e-3);
    }

    void aLineBeginsAtItsStationAndGoesAlongTheGeodesic()
    {
        Bench bench(fourStations());
        QCOMPARE(bench.items<BearingItem>().size(), std::size_t(4));
        const QPolygonF line = bench.bearing(1)->line();
        QVERIFY(QLineF(line.first(), bench.station(1)->pos()).length() < 1e-3);
        // Measured at the station on the ellipsoid, not on the plane.
        const auto end = bench.scene().projection().toEarth(line.last());
        QVERIFY(end.has_value());
        const double length = QLineF(line.first(), line.last()).length();
        QVERIFY(std::abs(length - bench.scene().lineLength()) < 0.001 * length);
        QVERIFY(end->longitude > 7.5);
    }

    void aLineAcrossTheDateLineIsOneOnTheMap()
    {
        Bench bench(mapbench::acrossTheDateLine());
        const QPolygonF line = bench.bearing(1)->line();
        const double piece = QLineF(line[0], line[1]).length();
        for (int i = 2; i < line.size(); ++i)
            QVERIFY(std::abs(QLineF(line[i - 1], line[i]).length() - piece) < 0.01 * piece);
        QCOMPARE(bench.items<FixItem>().size(), std::size_t(1));
    }

    void theFixStandsWhereItIsWithItsEllipseAndSize()
    {
        Bench bench;
        bench.model().setAssumedSigma(1.5);
        bench.model().addResult(result(fourStations()));
        const auto fixes = bench.items<FixItem>();
        QCOMPARE(fixes.size(), std::size_t(1));
        const QPointF expected = bench.scene().projection().toMap({50.0906117, 6.6478048});
        QVERIFY(QLineF(fixes[0]->pos(), expected).length() < 1.0);
        QCOMPARE(fixes[0]->text(), QStringLiteral("2369 m × 1832 m (95 %)"));
        const auto ellipses = bench.items<EllipseItem>();
        QCOMPARE(ellipses.size(), std::size_t(1));
        double longest = 0.0;
        const QPolygonF outline = ellipses[0]->path().toFillPolygon();
        for (const QPointF& corner : outline)
            longest = std::max(longest, QLineF(corner, fixes[0]->pos()).length());
        QVERIFY(std::abs(longest - bench.model().ellipse()->semiMajor) < 1.0);
        QCOMPARE(bench.view.findChild<QLabel*>(QStringLiteral("FixText"))->text(), bench.model().fixText());
    }

    void withoutAFixNoneIsShownAndTheReasonIsSaid()
    {
        Bench bench({fourStations().front()});
        QVERIFY(bench.items<FixItem>().empty());
        QVERIFY(bench.items<EllipseItem>().empty());
        QVERIFY(
            bench.view.findChild<QLabel*>(QStringLiteral("FixText"))->text().startsWith(QStringLiteral("No fix: ")));
        QVERIFY(!bench.view.findChild<QPushButton*>(QStringLiteral("MapCopyFix"))->isEnabled());
    }

    void aBearingIsColouredByItsQuality()
    {
        Bench bench(fourStations());
        bench.model().setQualityThreshold(40);
        const MapColors& colors = bench.scene().colors();
        QCOMPARE(bench.bearing(1)->pen().color(), colors.ofQuality(90.0, 40));
        QCOMPARE(bench.bearing(2)->pen().color(), colors.ofQuality(60.0, 40));
        QCOMPARE(bench.bearing(1)->pen().style(), Qt::SolidLine);
    }

    void aBearingBelowTheThresholdIsGreyAndStillThere()
    {
        Bench bench(fourStations());
        bench.model().setQualityThreshold(40);
        BearingItem* const poor = bench.bearing(4);
        QVERIFY(poor != nullptr);
        QCOMPARE(poor->pen().color(), bench.scene().colors().unused);
        QCOMPARE(poor->pen().style(), Qt::DashLine);
        bench.model().setQualityThreshold(20);
        QVERIFY(poor->pen().color() != bench.scene().colors().unused);
    }

    void linesFadeWithAgeAndEarlierOnesGo()
    {
        Bench bench(fourStations());
        QCOMPARE(bench.bearing(1)->opacity(), 1.0);
        bench.now = MapModel::lifetime / 2;
        bench.scene().refreshAges();
        const double half = bench.bearing(1)->opacity();
        QVERIFY(half < 0.9 && half > 0.5);

        bench.model().addResult(result(fourStations()));
        QCOMPARE(bench.items<BearingItem>().size(), std::size_t(8));
        for (const BearingItem* const item : bench.items<BearingItem>())
            QVERIFY(item->isLatest() ? item->opacity() == 1.0 : item->opacity() < half);
        bench.now = MapModel::lifetime;
        bench.scene().refreshAges();
        QCOMPARE(bench.items<BearingItem>().size(), std::size_t(4));
        bench.now = 10 * MapModel::lifetime;
        bench.scene().refreshAges();
        QVERIFY(bench.bearing(1)->opacity() > 0.3);
    }

    void onlyTheLatestOfVeryManyLinesAreSmooth()
    {
        Bench bench;
        const auto countSmooth = [&bench](bool latest) {
            const auto lines = bench.items<BearingItem>();
            return std::count_if(lines.begin(), lines.end(), [latest](const BearingItem* item) {
                return item->isLatest() == latest && item->isSmooth();
            });
        };
        for (int i = 0; i < 51; ++i)
            bench.model().addResult(result(fourStations()));
        QCOMPARE(countSmooth(false), 200);
        bench.model().addResult(result(fourStations()));
        QCOMPARE(countSmooth(false), 0);
        QCOMPARE(countSmooth(true), 4);
        bench.now = MapModel::lifetime; // all have faded
        bench.model().addResult(result(fourStations()));
        bench.model().addResult(result(fourStations()));
        QCOMPARE(countSmooth(false), 4);
    }

    void linesFadeByThemselves()
    {
        Bench bench(fourStations());
        bench.now = MapModel::lifetime / 2;
        QTRY_VERIFY(bench.bearing(1)->opacity() < 0.9);
    }

    void aStationPickedOnTheMapIsMarkedInBoth()
    {
        Bench bench(fourStations());
        bench.click(bench.onScreen(bench.station(3)->pos()));
        QVERIFY(bench.station(3)->isMarked());
        QVERIFY(bench.bearing(3)->isMarked());
        QVERIFY(!bench.station(1)->isMarked() && !bench.bearing(1)->isMarked());
        const QModelIndexList rows = bench.view.table()->selectionModel()->selectedRows();
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows[0].row(), 2);
    }

    void aBearingPickedOnTheMapIsMarkedInBoth()
    {
        Bench bench(fourStations());
        bench.click(bench.onLine(2));
        QVERIFY(bench.bearing(2)->isMarked());
        QVERIFY(bench.bearing(2)->pen().widthF() > bench.bearing(1)->pen().widthF());
        QCOMPARE(bench.view.table()->selectionModel()->selectedRows().value(0).row(), 1);
    }

    void aStationPickedInTheTableIsMarkedOnTheMap()
    {
        Bench bench(fourStations());
        bench.view.table()->selectRow(3);
        QVERIFY(bench.station(4)->isMarked());
        QVERIFY(bench.bearing(4)->isMarked());
        bench.model().addResult(result(fourStations()));
        QVERIFY(bench.bearing(4)->isMarked()); // stays with the next result
    }

    void aClickOnTheGroundMarksNothing()
    {
        Bench bench(fourStations());
        bench.view.pick(1);
        bench.click({3, bench.canvas().viewport()->height() / 2 + 100});
        QVERIFY(!bench.station(1)->isMarked());
        QVERIFY(bench.view.table()->selectionModel()->selectedRows().isEmpty());
    }

    void otherStationsAreNotMarked()
    {
        Bench bench(fourStations());
        bench.view.pick(1);
        bench.model().setStations({});
        QVERIFY(!bench.scene().marked().has_value());
        QVERIFY(bench.items<StationItem>().empty());
        QVERIFY(bench.items<BearingItem>().empty());
        QVERIFY(bench.items<FixItem>().empty());
    }

    void aDoubleClickOnALineExcludesItsBearingAndMovesTheFixAtOnce()
    {
        Bench bench(fourStations());
        const QPointF before = bench.items<FixItem>()[0]->pos();
        const QPoint place = bench.onLine(3);
        QTest::mouseDClick(bench.canvas().viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QVERIFY(bench.model().station(3)->excluded);
        QVERIFY(QLineF(before, bench.items<FixItem>()[0]->pos()).length() > 10.0);
        QCOMPARE(bench.bearing(3)->pen().style(), Qt::DotLine);
        QTest::mouseDClick(bench.canvas().viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QVERIFY(!bench.model().station(3)->excluded);
        QVERIFY(QLineF(before, bench.items<FixItem>()[0]->pos()).length() < 1e-3);
    }

    void aClickOnTheCheckBoxExcludesTheBearing()
    {
        Bench bench(fourStations());
        QTableView* const table = bench.view.table();
        QStyleOptionViewItem option;
        option.initFrom(table);
        option.rect = table->visualRect(bench.model().index(0, MapModel::StationColumn));
        option.features = QStyleOptionViewItem::HasCheckIndicator | QStyleOptionViewItem::HasDisplay;
        const QRect box = table->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, table);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, box.center());
        QVERIFY(bench.model().station(1)->excluded);
        QCOMPARE(bench.bearing(1)->pen().color(), bench.scene().colors().unused);
    }

    void theSpaceBarExcludesThePickedBearing()
    {
        Bench bench(fourStations());
        QTest::keyClick(&bench.canvas(), Qt::Key_Space);
        QVERIFY(!bench.model().station(2)->excluded);
        bench.view.pick(2);
        QTest::keyClick(&bench.canvas(), Qt::Key_Space);
        QVERIFY(bench.model().station(2)->excluded);
    }

    void theSpaceBarExcludesTheBearingOfARowWhicheverOfItsCellsIsCurrent_data()
    {
        QTest::addColumn<int>("column");
        QTest::newRow("station") << int(MapModel::StationColumn);
        QTest::newRow("bearing") << int(MapModel::BearingColumn);
        QTest::newRow("quality") << int(MapModel::QualityColumn);
        QTest::newRow("off fix") << int(MapModel::ResidualColumn);
        QTest::newRow("use") << int(MapModel::UseColumn);
    }

    void theSpaceBarExcludesTheBearingOfARowWhicheverOfItsCellsIsCurrent()
    {
        QFETCH(int, column);
        Bench bench(fourStations());
        bench.view.table()->setCurrentIndex(bench.model().index(1, column));
        QTest::keyClick(bench.view.table(), Qt::Key_Space);
        QVERIFY(bench.model().station(2)->excluded);
        QVERIFY(!bench.model().station(1)->excluded);
        QTest::keyClick(bench.view.table(), Qt::Key_Space);
        QVERIFY(!bench.model().station(2)->excluded);
        QCOMPARE(bench.view.table()->currentIndex().column(), column);
    }

    void theSpaceBarExcludesNothingWithoutACurrentRow()
    {
        Bench bench(fourStations());
        bench.view.table()->setCurrentIndex({});
        QTest::keyClick(bench.view.table(), Qt::Key_Space);
        for (const MapStation& station : bench.model().stations())
            QVERIFY(!station.excluded);
    }

    void theWheelZoomsAboutTheMouse()
    {
        Bench bench(fourStations());
        const double before = bench.canvas().metresPerPixel();
        const QPoint place(150, 120);
        const auto position = bench.canvas().positionAt(place);
        bench.turnWheel(place, 240);
        QVERIFY(std::abs(bench.canvas().metresPerPixel() / before - 0.5) < 1e-6);
        const QPointF moved = bench.canvas().mapFromScene(bench.scene().projection().toMap(*position)) - place;
        QVERIFY(moved.manhattanLength() <= 2.0);
        bench.turnWheel(place, -240);
        QVERIFY(std::abs(bench.canvas().metresPerPixel() / before - 1.0) < 1e-6);
    }

    void zoomEndsAtBothLimits()
    {
        Bench bench(fourStations());
        for (int i = 0; i < 60; ++i)
            bench.turnWheel({100, 100}, 240);
        QVERIFY(std::abs(bench.canvas().metresPerPixel() / MapCanvas::finestScale - 1.0) < 1e-6);
        for (int i = 0; i < 60; ++i)
            bench.turnWheel({100, 100}, -240);
        QVERIFY(std::abs(bench.canvas().metresPerPixel() / MapCanvas::coarsestScale - 1.0) < 1e-6);
        QVERIFY(!bench.view.grab().isNull()); // the whole Earth, with what lies beyond its edge
    }

    void keysZoomAndFit()
    {
        Bench bench(fourStations());
        const double before = bench.canvas().metresPerPixel();
        QTest::keyClick(&bench.canvas(), Qt::Key_Plus);
        QVERIFY(bench.canvas().metresPerPixel() < before);
        QTest::keyClick(&bench.canvas(), Qt::Key_Minus);
        QVERIFY(std::abs(bench.canvas().metresPerPixel() / before - 1.0) < 1e-6);
        for (const Qt::Key key : {Qt::Key_F, Qt::Key_0}) {
            QTest::keyClick(&bench.canvas(), Qt::Key_Minus);
            QVERIFY(!bench.canvas().isFollowing());
            QTest::keyClick(&bench.canvas(), key);
            QVERIFY(bench.canvas().isFollowing());
            QCOMPARE(bench.canvas().metresPerPixel(), before);
        }
    }

    void arrowKeysMoveTheView_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<QPoint>("direction"); // of what is seen
        QTest::newRow("left") << int(Qt::Key_Left) << QPoint(1, 0);
        QTest::newRow("right") << int(Qt::Key_Right) << QPoint(-1, 0);
        QTest::newRow("up") << int(Qt::Key_Up) << QPoint(0, 1);
        QTest::newRow("down") << int(Qt::Key_Down) << QPoint(0, -1);
    }

    void arrowKeysMoveTheView()
    {
        QFETCH(int, key);
        QFETCH(QPoint, direction);
        Bench bench(fourStations());
        const QPointF place = bench.station(1)->pos();
        const QPoint before = bench.onScreen(place);
        QTest::keyClick(&bench.canvas(), static_cast<Qt::Key>(key));
        const QPoint moved = bench.onScreen(place) - before;
        QVERIFY(QPoint::dotProduct(moved, direction) > 20);
        QVERIFY(std::abs(moved.x() * direction.y()) + std::abs(moved.y() * direction.x()) <= 1);
    }

    void draggingMovesTheMapAndPicksNothing()
    {
        Bench bench(fourStations());
        const QPointF place = bench.station(1)->pos();
        const QPoint before = bench.onScreen(place);
        QWidget* const viewport = bench.canvas().viewport();
        QTest::mousePress(viewport, Qt::LeftButton, Qt::NoModifier, before);
        QMouseEvent drag(QEvent::MouseMove, before + QPoint(60, 40), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport, &drag);
        QTest::mouseRelease(viewport, Qt::LeftButton, Qt::NoModifier, before + QPoint(60, 40));
        QVERIFY((bench.onScreen(place) - before - QPoint(60, 40)).manhattanLength() <= 1);
        QVERIFY(!bench.station(1)->isMarked());
    }

    void theProjectionStaysWhenTheMapIsMovedAndZoomedAndResultsCome()
    {
        Bench bench(fourStations());
        QSignalSpy projections(&bench.scene(), &MapScene::projectionChanged);
        const QPainterPath line = bench.bearing(1)->path();
        for (const Qt::Key key : {Qt::Key_Plus, Qt::Key_Left, Qt::Key_Minus, Qt::Key_Down, Qt::Key_F})
            QTest::keyClick(&bench.canvas(), key);
        bench.turnWheel({100, 100}, 480);
        QCOMPARE(bench.bearing(1)->path(), line);
        bench.model().addResult(result(fourStations()));
        auto shots = fourStations();
        shots[0].latitude += 0.2; // the centre moves by 6 km
        bench.model().addResult(result(shots));
        QCOMPARE(projections.count(), 0);
    }

    void theProjectionFollowsStationsElsewhere()
    {
        Bench bench(fourStations());
        QSignalSpy projections(&bench.scene(), &MapScene::projectionChanged);
        bench.model().setStations({});
        bench.model().addResult(result(mapbench::acrossTheDateLine()));
        QCOMPARE(projections.count(), 1);
        for (const StationItem* const item : bench.items<StationItem>())
            QVERIFY(bench.isInSight(item->pos()));
    }

    void theMapKeepsTheDataInSightUntilTheOperatorMovesIt()
    {
        Bench bench(fourStations());
        auto shots = fourStations();
        shots.push_back({5, 50.0, 12.0, 270.0, 80.0});
        bench.model().addResult(result(shots));
        QVERIFY(bench.isInSight(bench.station(5)->pos()));
        QTest::keyClick(&bench.canvas(), Qt::Key_Plus);
        const QTransform mine = bench.canvas().viewportTransform();
        shots.push_back({6, 50.0, 3.0, 90.0, 80.0});
        bench.model().addResult(result({shots[0], shots[1], shots[2], shots[3], shots[4]}));
        QCOMPARE(bench.canvas().viewportTransform(), mine);
    }

    void theMapDoesNotJumpAtEveryResult()
    {
        Bench bench(fourStations());
        const QTransform before = bench.canvas().viewportTransform();
        auto shots = fourStations();
        shots[0].azimuth += 0.5;
        bench.model().addResult(result(shots));
        QCOMPARE(bench.canvas().viewportTransform(), before);
    }

    void theMapDoesNotFollowALittleGrowth()
    {
        Bench bench(fourStations());
        const QTransform before = bench.canvas().viewportTransform();
        auto shots = fourStations();
        shots[2].longitude += 0.02;
        bench.model().addResult(result(shots));
        QCOMPARE(bench.canvas().viewportTransform(), before);
        shots[2].longitude += 0.4;
        bench.model().addResult(result(shots));
        QVERIFY(bench.canvas().viewportTransform() != before);
    }

    void oneStationIsShownWithItsSurroundings()
    {
        Bench bench({{1, 50.0, 6.0, 77.0, 90.0}});
        QVERIFY(bench.isInSight(bench.station(1)->pos()));
        QVERIFY(bench.canvas().metresPerPixel() * bench.canvas().viewport()->height() >= 9999.0);
    }

    void oddNetworksAreShown_data()
    {
        QTest::addColumn<int>("network");
        QTest::newRow("none") << 0;
        QTest::newRow("one place") << 1;
        QTest::newRow("north pole") << 2;
        QTest::newRow("antipodes") << 3;
        QTest::newRow("no numbers") << 4;
        QTest::newRow("opposite bearings") << 5;
        QTest::newRow("one station") << 6;
        QTest::newRow("south pole") << 7;
    }

    void oddNetworksAreShown()
    {
        QFETCH(int, network);
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const std::vector<std::vector<Shot>> networks{
            {},
            {{1, 50.0, 6.0, 77.0, 90.0}, {2, 50.0, 6.0, 170.0, 90.0}},
            {{1, 90.0, 0.0, 180.0, 90.0}, {2, 85.0, 30.0, 270.0, 90.0}, {3, 88.0, -120.0, 10.0, 90.0}},
            {{1, 10.0, 20.0, 90.0, 90.0}, {2, -10.0, -160.0, 90.0, 90.0}},
            {{1, nan, 20.0, 90.0, 90.0}, {2, 10.0, 20.0, nan, nan}, {3, 91.0, nan, 1.0, 2.0}},
            {{1, 0.0, 6.0, 90.0, 90.0}, {2, 0.0, 8.0, 270.0, 90.0}},
            {{1, 50.0, 6.0, 77.0, 90.0}},
            {{1, -90.0, 12.0, 0.0, 90.0}, {2, -89.0, 170.0, 200.0, 90.0}, {3, -89.5, -60.0, 90.0, 90.0}},
        };
        Bench bench(networks[static_cast<std::size_t>(network)]);
        bench.model().addResult(result(networks[static_cast<std::size_t>(network)]));
        std::size_t placed = 0;
        for (const MapStation& station : bench.model().stations())
            placed += station.position ? 1 : 0;
        QCOMPARE(bench.items<StationItem>().size(), placed);
        for (const StationItem* const item : bench.items<StationItem>()) {
            QVERIFY(std::isfinite(item->x()) && std::isfinite(item->y()));
            QVERIFY(bench.isInSight(item->pos()));
        }
        QVERIFY(!bench.view.grab().isNull());
    }

    void theTableNeedsNoScrollBarToTheSide()
    {
        Bench bench(fourStations());
        bench.view.resize(1200, 700);
        QTRY_COMPARE(bench.view.table()->horizontalHeader()->length(), bench.view.table()->viewport()->width());
        bench.view.resize(1000, 700);
        QTRY_COMPARE(bench.view.table()->horizontalHeader()->length(), bench.view.table()->viewport()->width());
        QVERIFY(!bench.view.table()->horizontalScrollBar()->isVisible());
    }

    void aStationsNameIsCutAndHasNoControlCharacters()
    {
        Bench bench;
        DfResult odd = result(fourStations());
        odd.stations[0].stationName = QString(1000000, QLatin1Char('x'));
        odd.stations[1].stationName = QStringLiteral("a\nb\x07");
        bench.model().addResult(odd);
        QCOMPARE(bench.station(1)->text(), QString(59, QLatin1Char('x')) + QChar(0x2026));
        QCOMPARE(bench.station(2)->text(), QStringLiteral("a b"));
        QCOMPARE(bench.model().index(0, MapModel::StationColumn).data().toString(), bench.station(1)->text());
        QVERIFY(!bench.view.grab().isNull());
    }

    void signsGrowWithTheFontOfTheApplication()
    {
        Bench bench(fourStations());
        const QFont before = QApplication::font();
        const double width = bench.station(1)->boundingRect().width();
        QFont large = before;
        large.setPointSizeF(2.0 * before.pointSizeF());
        QApplication::setFont(large);
        const double grown = bench.station(1)->boundingRect().width();
        QApplication::setFont(before);
        QVERIFY(grown > width);
        QCOMPARE(bench.station(1)->boundingRect().width(), width);
    }

    void aSignIsPaintedAnewWhenItsLookChanges()
    {
        Bench bench(fourStations());
        const QImage plain = bench.canvas().viewport()->grab().toImage();
        bench.view.pick(3);
        const QImage marked = bench.canvas().viewport()->grab().toImage();
        QVERIFY(marked != plain);
        bench.view.pick(std::nullopt);
        QCOMPARE(bench.canvas().viewport()->grab().toImage(), plain);
    }

    void aThousandStationsAreShownEachAtItsPlace()
    {
        std::vector<Shot> shots;
        for (int i = 0; i < 1000; ++i)
            shots.push_back({i + 1, 45.0 + 0.01 * (i % 40), 6.0 + 0.02 * (i / 40), (i * 37) % 360 + 0.5, 90.0});
        Bench bench(shots);
        QCOMPARE(bench.items<StationItem>().size(), std::size_t(1000));
        QCOMPARE(bench.items<BearingItem>().size(), std::size_t(1000));
        QCOMPARE(bench.view.table()->model()->rowCount(), 1000);
        bench.click(bench.onScreen(bench.station(437)->pos()));
        QVERIFY(bench.station(437)->isMarked());
        bench.model().addResult(result(shots));
        QCOMPARE(bench.items<BearingItem>().size(), 1000 + MapModel::mostEarlierBearings);
    }

    void theCoordinatesOfTheFixAreCopied()
    {
        Bench bench(fourStations());
        QSignalSpy messages(&bench.view, &MapView::message);
        bench.view.findChild<QPushButton*>(QStringLiteral("MapCopyFix"))->click();
        const QString expected = coordinatesText(bench.model().fix()->position);
        QCOMPARE(QGuiApplication::clipboard()->text(), expected);
        QCOMPARE(messages.count(), 1);
        QCOMPARE(messages[0][0].toString(), QStringLiteral("Copied: ") + expected);
    }

    void theMenuCopiesThePlaceUnderTheMouseAndExcludesTheBearingThere()
    {
        Bench bench(fourStations());
        const QPoint place = bench.onLine(2);
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, bench.canvas().viewport()->mapToGlobal(place));
        QApplication::sendEvent(bench.canvas().viewport(), &event);
        QPointer<QMenu> menu = bench.view.findChild<QMenu*>(QStringLiteral("MapMenu"));
        QVERIFY(menu != nullptr);
        QCOMPARE(menu->actions().first()->text(), QStringLiteral("&Exclude bearing of S2"));
        menu->actions().first()->trigger();
        QVERIFY(bench.model().station(2)->excluded);
        QVERIFY(bench.station(2)->isMarked());
        menu->actions().at(2)->trigger();
        QCOMPARE(QGuiApplication::clipboard()->text(), coordinatesText(*bench.canvas().positionAt(place)));
        menu->close();
        QTRY_VERIFY(menu == nullptr);
    }

    void thePositionUnderTheMouseIsTold()
    {
        Bench bench(fourStations());
        const QPoint place(200, 150);
        QMouseEvent move(QEvent::MouseMove, place, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(bench.canvas().viewport(), &move);
        auto* const label = bench.view.findChild<QLabel*>(QStringLiteral("PointedAt"));
        QCOMPARE(label->text(), positionText(*bench.canvas().positionAt(place)));
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(bench.canvas().viewport(), &leave);
        QCOMPARE(label->text(), QStringLiteral("Point at the map for a position."));
    }

    void sigmaAndProbabilityAreChosenAboveTheMap()
    {
        Bench bench(fourStations());
        auto* const sigma = bench.view.findChild<QDoubleSpinBox*>(QStringLiteral("MapSigma"));
        QCOMPARE(sigma->value(), assumedSigma);
        const double before = bench.items<EllipseItem>()[0]->path().boundingRect().width();
        sigma->setValue(2.0 * assumedSigma);
        QVERIFY(std::abs(bench.items<EllipseItem>()[0]->path().boundingRect().width() / before - 2.0) < 0.01);
        auto* const probability = bench.view.findChild<QComboBox*>(QStringLiteral("MapProbability"));
        QCOMPARE(probability->currentText(), QStringLiteral("95 %"));
        probability->setCurrentIndex(probability->findText(QStringLiteral("50 %")));
        QVERIFY(bench.items<FixItem>()[0]->text().endsWith(QStringLiteral("(50 %)")));
    }

    void eachKindOfFileIsExported()
    {
        Bench bench(fourStations());
        const QTemporaryDir folder;
        const auto exported = [&](const QString& name) {
            const QString file = folder.filePath(name);
            const QString told = bench.exported(file);
            return told == file + QStringLiteral(": the file is saved.") ? contentOf(file) : told.toUtf8();
        };
        const QImage picture = QImage::fromData(exported(QStringLiteral("map.PNG")), "PNG");
        QCOMPARE(picture.size(), bench.canvas().viewport()->size());
        QVERIFY(exported(QStringLiteral("map.csv")).startsWith("time_utc,"));
        QVERIFY(exported(QStringLiteral("map.geojson")).contains("FeatureCollection"));
        QVERIFY(exported(QStringLiteral("map.kml")).contains("<kml"));

        QXmlStreamReader svg(exported(QStringLiteral("map.svg")));
        int paths = 0;
        QString description;
        while (!svg.atEnd()) {
            if (svg.readNext() != QXmlStreamReader::StartElement)
                continue;
            if (svg.name() == QLatin1String("desc"))
                description = svg.readElementText();
            else if (svg.name() == QLatin1String("path") || svg.name() == QLatin1String("polyline"))
                ++paths;
        }
        QVERIFY2(!svg.hasError(), qPrintable(svg.errorString()));
        QVERIFY(paths > 20);
        QCOMPARE(description, bench.model().fixText());
    }

    void anExportHoldsWhatWasShownWhenItWasAskedFor()
    {
        Bench bench(fourStations());
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("map.csv"));
        QSignalSpy messages(&bench.view, &MapView::message);
        BusyDisk disk;
        bench.view.exportTo(file);
        bench.model().setStations({});
        QVERIFY(messages.isEmpty());
        disk.release();
        QTRY_COMPARE(messages.count(), 1);
        QCOMPARE(contentOf(file).count("\r\n"), 5);
    }

    void aViewThatGoesWhileAFileIsWrittenWaitsForNothingAndLosesNothing()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("map.kml"));
        BusyDisk disk;
        {
            Bench bench(fourStations());
            bench.view.exportTo(file);
        }
        QVERIFY(!QFileInfo::exists(file)); // the view is gone, and the disk still busy
        disk.release();
        QTRY_VERIFY(QFileInfo::exists(file));
        QVERIFY(contentOf(file).contains("</kml>"));
    }

    void aFileOfAnotherKindOrInNoFolderIsRefusedByName()
    {
        Bench bench(fourStations());
        const QTemporaryDir folder;
        const QString other = folder.filePath(QStringLiteral("map.txt"));
        QCOMPARE(bench.exported(other),
                 other + QStringLiteral(": the name of the file has to end in .png, .svg, .csv, .geojson or .kml."));
        QVERIFY(!QFileInfo::exists(other));
        for (const char* const suffix : {"png", "svg", "csv", "geojson", "kml"}) {
            const QString nowhere = folder.filePath(QStringLiteral("none/map.") + QLatin1String(suffix));
            QVERIFY(bench.exported(nowhere).startsWith(nowhere + QStringLiteral(": the file cannot be written: ")));
        }
    }

    void theExportDialogSavesWhatIsChosen()
    {
        Bench bench(fourStations());
        const QTemporaryDir folder;
        QSignalSpy messages(&bench.view, &MapView::message);
        bench.view.findChild<QPushButton*>(QStringLiteral("MapExport"))->click();
        QPointer<QFileDialog> dialog = bench.view.findChild<QFileDialog*>(QStringLiteral("MapExportDialog"));
        QVERIFY(dialog != nullptr);
        QCOMPARE(dialog->defaultSuffix(), QStringLiteral("png"));
        emit dialog->filterSelected(dialog->nameFilters().at(3));
        QCOMPARE(dialog->defaultSuffix(), QStringLiteral("geojson"));
        const QString file = folder.filePath(QStringLiteral("a %1.kml"));
        emit dialog->fileSelected(file);
        QTRY_COMPARE(messages.count(), 1);
        QVERIFY(contentOf(file).contains("<kml"));
        QCOMPARE(messages.value(0).value(0).toString(), file + QStringLiteral(": the file is saved."));
        dialog->close();
        QTRY_VERIFY(dialog == nullptr);
    }

    void graticuleAndScaleBarAreDrawn()
    {
        Bench bench;
        QImage picture = bench.canvas().viewport()->grab().toImage();
        const QColor ground = bench.scene().colors().ground;
        // The bar stands 12 pixels above the lower edge and begins 12 pixels from the left one.
        QVERIFY(picture.pixelColor(40, picture.height() - 12) != ground);
        int lines = 0;
        for (int x = 1; x < picture.width(); ++x)
            lines += picture.pixelColor(x, picture.height() / 2 + 7) != ground;
        QVERIFY(lines > 0 && lines < picture.width() / 3);
    }

    void theScaleBarFollowsZoomFontAndSize()
    {
        Bench bench(fourStations());
        const auto bar = [&bench] {
            const QImage picture = bench.canvas().viewport()->grab().toImage();
            return picture.copy(0, picture.height() - 40, 300, 40);
        };
        const QImage first = bar();
        QCOMPARE(bar(), first);
        bench.canvas().zoomIn();
        const QImage zoomed = bar();
        QVERIFY(zoomed != first);
        QFont large = bench.canvas().font();
        large.setPointSizeF(1.5 * large.pointSizeF());
        bench.canvas().setFont(large);
        QVERIFY(bar() != zoomed);

        const QColor ground = bench.scene().colors().ground;
        bench.view.resize(1000, 500);
        QCoreApplication::processEvents();
        const QImage lower = bench.canvas().viewport()->grab().toImage();
        QVERIFY(lower.pixelColor(40, lower.height() - 12) != ground);
    }

    void theLabelsMoveWithTheirLines()
    {
        Bench bench(fourStations());
        const auto picture = [&bench] { return bench.canvas().viewport()->grab().toImage(); };
        const QImage before = picture();
        QTest::keyClick(&bench.canvas(), Qt::Key_Left);
        const QImage moved = picture();
        QVERIFY(moved != before);
        QEvent anew(QEvent::LanguageChange); // all is painted from scratch
        QCoreApplication::sendEvent(&bench.canvas(), &anew);
        QCOMPARE(picture(), moved);
    }

    void theMapFollowsThePaletteOfTheDesktop()
    {
        Bench bench(fourStations());
        QPalette dark;
        dark.setColor(QPalette::Window, QColor(40, 40, 40));
        bench.canvas().setPalette(dark);
        QVERIFY(bench.scene().colors().ground.lightness() < 60);
        const QImage picture = bench.canvas().viewport()->grab().toImage();
        QVERIFY(picture.pixelColor(picture.width() - 2, picture.height() - 2).lightness() < 100);
    }

    void theViewCanGoWithItsFileDialogOpen()
    {
        auto bench = std::make_unique<Bench>(fourStations());
        bench->view.findChild<QPushButton*>(QStringLiteral("MapExport"))->click();
        const QPointer<QFileDialog> dialog = bench->view.findChild<QFileDialog*>(QStringLiteral("MapExportDialog"));
        QVERIFY(dialog != nullptr);
        bench.reset();
        QVERIFY(dialog == nullptr);
    }
};

DFL_TEST_MAIN(TestMapView)
#include "tst_mapview.moc"
