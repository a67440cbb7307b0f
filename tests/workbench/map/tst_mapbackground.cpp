#include "map/mapbackground.h"

#include "map/mapcanvas.h"
#include "map/mapitems.h"
#include "map/mapscene.h"
#include "map/mapview.h"

#include "mapbench.h"
#include "workbench/filework/busydisk.h"

#include <QFileDialog>
#include <QPushButton>

#include <memory>

using namespace workbench;
using testsupport::BusyDisk;
using testsupport::settleFileWork;

namespace {

/// Written with single quotes, which JSON does not know.
QByteArray json(QByteArray text)
{
    return text.replace('\'', '"');
}

const QByteArray river = json("{'type':'Feature','properties':{'name':'Mosel'},"
                              "'geometry':{'type':'LineString','coordinates':[[6.3,49.5],[6.6,49.8],[7.6,50.4]]}}");
const QByteArray region = json("{'type':'Feature','properties':{'name':'Eifel'},'geometry':{'type':'Polygon',"
                               "'coordinates':[[[6,50],[7,50],[7,50.5],[6,50.5],[6,50]]]}}");
const QByteArray town = json("{'type':'Feature','properties':{'name':'Trier'},"
                             "'geometry':{'type':'Point','coordinates':[6.64,49.75]}}");
const QByteArray bad = json("{'type':'Feature','geometry':{'type':'Point','coordinates':[400,1]}}");

QByteArray collection(const QByteArrayList& features)
{
    return json("{'type':'FeatureCollection','features':[") + features.join(',') + "]}";
}

struct Bench
{
    Bench()
    {
        view.resize(1000, 700);
        view.show();
        view.model()->addResult(mapbench::result(mapbench::fourStations()));
    }

    [[nodiscard]] QString write(const QString& name, const QByteArray& content) const
    {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("%s cannot be written", qPrintable(file.fileName()));
        return file.fileName();
    }
    /// Opens a file; what is told of it.
    QString opened(const QString& file)
    {
        QSignalSpy messages(&view, &MapView::message);
        background().open(file);
        return QTest::qWaitFor([&] { return !messages.isEmpty(); }, 60000) ? messages[0][0].toString()
                                                                           : QStringLiteral("nothing is told");
    }
    [[nodiscard]] MapBackground& background() const { return *view.background(); }
    [[nodiscard]] const std::vector<PlaneShape>& shapes() const
    {
        for (QGraphicsItem* const item : view.scene()->items()) {
            if (const auto* const found = qgraphicsitem_cast<BackgroundItem*>(item))
                return found->shapes();
        }
        qFatal("The map has no background item");
    }
    [[nodiscard]] QStringList names() const
    {
        QStringList names;
        for (const PlaneShape& shape : shapes())
            names += shape.name;
        return names;
    }
    [[nodiscard]] QWidget* readingBar() const { return view.findChild<QWidget*>(QStringLiteral("MapReading")); }
    [[nodiscard]] QImage picture() const { return view.canvas()->viewport()->grab().toImage(); }

    const QTemporaryDir folder;
    MapView view{[] { return 0; }, nullptr};
};

} // namespace

class TestMapBackground : public QObject
{
    Q_OBJECT
private slots:
    void aFileIsShownBehindTheStations()
    {
        Bench bench;
        const QImage before = bench.picture();
        const QString file = bench.write("a %1.geojson", collection({river, region, town}));
        QCOMPARE(bench.opened(file), file + QStringLiteral(": shown as background (shapes: 3)."));
        QCOMPARE(bench.names(), QStringList({"Mosel", "Eifel", "Trier"}));
        const QPointF expected = bench.view.scene()->projection().toMap({49.75, 6.64});
        QVERIFY(QLineF(bench.shapes()[2].points[0], expected).length() < 1e-3);
        QVERIFY(bench.background().isShown());
        QVERIFY(bench.picture() != before);
        for (QGraphicsItem* const item : bench.view.scene()->items()) {
            if (qgraphicsitem_cast<BackgroundItem*>(item) == nullptr)
                QVERIFY(item->zValue() > BackgroundLayer);
        }
    }

    void aBadFileLeavesThePresentBackground_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("reason");
        QTest::newRow("no JSON") << QByteArray("{") << QStringLiteral("line 1, column 2: unterminated object");
        QTest::newRow("nothing good") << collection({bad})
                                      << QStringLiteral(
                                             "features[0].geometry.coordinates[0]: expected a longitude from "
                                             "-360 to 360, found 400");
        QTest::newRow("too large") << QByteArray(GeoJson::largestText + 1, ' ')
                                   << QStringLiteral("it is larger than 67108864 bytes");
    }

    void aBadFileLeavesThePresentBackground()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, reason);
        Bench bench;
        QVERIFY(bench.opened(bench.write("good", collection({river}))).contains("(shapes: 1)"));
        const QString file = bench.write("bad", content);
        QCOMPARE(bench.opened(file), file + QStringLiteral(": the background cannot be shown: ") + reason + '.');
        QCOMPARE(bench.names(), QStringList("Mosel"));
        QVERIFY(bench.background().isShown());
    }

    void whatIsNoFileIsRefused()
    {
        Bench bench;
        const QString missing = bench.folder.filePath("missing");
        QCOMPARE(bench.opened(missing),
                 missing + QStringLiteral(": the background cannot be shown: No such file or directory."));
        QCOMPARE(bench.opened(bench.folder.path()),
                 bench.folder.path() + QStringLiteral(": the background cannot be shown: it is not a file."));
        // Reading it would never end.
        QCOMPARE(bench.opened(QStringLiteral("/dev/zero")),
                 QStringLiteral("/dev/zero: the background cannot be shown: it is not a file."));
        QVERIFY(!bench.background().isShown());
    }

    void whatIsLeftOutIsTold()
    {
        Bench bench;
        const QString file = bench.write("half", collection({river, bad}));
        QCOMPARE(bench.opened(file),
                 file + QStringLiteral(": shown as background (shapes: 1). Left out: 1 ("
                                       "features[1].geometry.coordinates[0]: expected a longitude from -360 to 360, "
                                       "found 400)."));
        QCOMPARE(bench.names(), QStringList("Mosel"));
    }

    void anotherFileTakesThePlaceOfTheFirst()
    {
        Bench bench;
        bench.opened(bench.write("a", collection({river})));
        bench.opened(bench.write("b", collection({town, region})));
        QCOMPARE(bench.names(), QStringList({"Trier", "Eifel"}));
    }

    void theBackgroundCanBeTakenAway()
    {
        Bench bench;
        const QImage before = bench.picture();
        bench.opened(bench.write("a", collection({river, region})));
        QSignalSpy shown(&bench.background(), &MapBackground::shownChanged);
        bench.background().remove();
        QVERIFY(bench.shapes().empty());
        QCOMPARE(bench.picture(), before);
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown[0][0].toBool(), false);
    }

    void readingIsSeenAndCanBeCancelled()
    {
        Bench bench;
        bench.opened(bench.write("a", collection({river})));
        QVERIFY(!bench.readingBar()->isVisible());
        QSignalSpy messages(&bench.view, &MapView::message);
        BusyDisk disk;
        bench.background().open(bench.write("b", collection({town})));
        QVERIFY(bench.readingBar()->isVisible());
        bench.view.findChild<QPushButton*>(QStringLiteral("MapReadingCancel"))->click();
        QVERIFY(!bench.readingBar()->isVisible());
        QVERIFY(!bench.background().isReading());
        disk.release();
        settleFileWork();
        QCOMPARE(bench.names(), QStringList("Mosel"));
        QVERIFY(messages.isEmpty());
    }

    void theLastOfTwoFilesCounts()
    {
        Bench bench;
        QSignalSpy messages(&bench.view, &MapView::message);
        BusyDisk disk;
        bench.background().open(bench.write("a", collection({river})));
        const QString last = bench.write("b", collection({town}));
        bench.background().open(last);
        QVERIFY(bench.readingBar()->isVisible());
        disk.release();
        QTRY_COMPARE(messages.count(), 1);
        QCOMPARE(messages[0][0].toString(), last + QStringLiteral(": shown as background (shapes: 1)."));
        QCOMPARE(bench.names(), QStringList("Trier"));
        QVERIFY(!bench.readingBar()->isVisible());
    }

    void theProgressIsTold()
    {
        Bench bench;
        QByteArrayList features;
        for (int i = 0; i < 20000; ++i)
            features += river;
        const QString file = bench.write("long", collection(features));
        QSignalSpy progress(&bench.background(), &MapBackground::progressed);
        QVERIFY(bench.opened(file).contains("(shapes: 20000)"));
        QVERIFY(!progress.isEmpty());
        int before = 0;
        for (const auto& each : progress) {
            QVERIFY(each[0].toInt() >= before && each[0].toInt() <= 100);
            before = each[0].toInt();
        }
        QVERIFY(before > 0);
    }

    void theBackgroundFollowsTheProjection()
    {
        Bench bench;
        bench.opened(bench.write("a", collection({town})));
        bench.view.model()->setStations({});
        bench.view.model()->addResult(mapbench::result(mapbench::acrossTheDateLine()));
        QVERIFY(bench.shapes().empty()); // where they were they are wrong
        QTRY_COMPARE(bench.names(), QStringList("Trier"));
        const QPointF expected = bench.view.scene()->projection().toMap({49.75, 6.64});
        QVERIFY(QLineF(bench.shapes()[0].points[0], expected).length() < 1e-3);
    }

    void aProjectionThatChangesWhileAFileIsReadIsFollowed()
    {
        Bench bench;
        QSignalSpy messages(&bench.view, &MapView::message);
        BusyDisk disk;
        bench.background().open(bench.write("a", collection({town})));
        bench.view.model()->setStations({});
        bench.view.model()->addResult(mapbench::result(mapbench::acrossTheDateLine()));
        disk.release();
        QTRY_COMPARE(messages.count(), 1);
        QTRY_COMPARE(bench.names(), QStringList("Trier"));
        const QPointF expected = bench.view.scene()->projection().toMap({49.75, 6.64});
        QVERIFY(QLineF(bench.shapes()[0].points[0], expected).length() < 1e-3);
    }

    void theViewMayGoWhileAFileIsRead()
    {
        auto bench = std::make_unique<Bench>();
        BusyDisk disk;
        bench->background().open(bench->write("a", collection({town})));
        bench.reset();
        disk.release();
        settleFileWork();
    }

    void theFileIsChosenInADialog()
    {
        Bench bench;
        bench.view.chooseBackground();
        const QPointer<QFileDialog> dialog = bench.view.findChild<QFileDialog*>(QStringLiteral("MapBackgroundDialog"));
        QVERIFY(dialog != nullptr);
        emit dialog->fileSelected(bench.write("a", collection({town})));
        dialog->close();
        QTRY_COMPARE(bench.names(), QStringList("Trier"));
        QTRY_VERIFY(dialog == nullptr);
    }

    void everyScaleIsPainted()
    {
        Bench bench;
        QByteArrayList features{river, region};
        for (int i = 0; i < 400; ++i) // names that have no room side by side
            features += json("{'type':'Feature','properties':{'name':'A place with a long name'},'geometry':"
                             "{'type':'MultiPoint','coordinates':[[") +
                        QByteArray::number(6.0 + 0.01 * i) + ",50],[7,50.2]]}}";
        bench.opened(bench.write("a", collection(features)));
        QVERIFY(bench.shapes().size() == 402);
        for (int i = 0; i < 20; ++i) {
            QVERIFY(!bench.picture().isNull());
            bench.view.canvas()->zoomOut();
        }
        for (int i = 0; i < 40; ++i) {
            QVERIFY(!bench.picture().isNull());
            bench.view.canvas()->zoomIn();
        }
    }

    void aPictureIsExportedWithItsBackground()
    {
        Bench bench;
        bench.opened(bench.write("a", collection({town})));
        const QString file = bench.folder.filePath("map.svg");
        QSignalSpy messages(&bench.view, &MapView::message);
        bench.view.exportTo(file);
        QTRY_COMPARE(messages.count(), 1);
        QFile svg(file);
        QVERIFY(svg.open(QIODevice::ReadOnly));
        QVERIFY(svg.readAll().contains(">Trier<"));
    }
};

DFL_TEST_MAIN(TestMapBackground)
#include "tst_mapbackground.moc"
