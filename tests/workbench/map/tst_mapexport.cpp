#include "map/mapexport.h"
#include "map/mapmodel.h"

#include "drivers/csv.h"
#include "drivers/geodesy.h"
#include "mapbench.h"
#include "support/testmain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QXmlStreamReader>

#include <cmath>

using namespace workbench;
using mapbench::fourStations;
using mapbench::result;

namespace {

QJsonArray featuresOf(const MapModel& model, const QString& kind)
{
    QJsonArray found;
    const QJsonObject collection = QJsonDocument::fromJson(mapexport::geoJson(model.snapshot(), 200e3)).object();
    if (collection.value(QStringLiteral("type")) != QStringLiteral("FeatureCollection"))
        return found;
    for (const QJsonValue each : collection.value(QStringLiteral("features")).toArray()) {
        if (each[QStringLiteral("properties")][QStringLiteral("kind")] == kind)
            found += each;
    }
    return found;
}

/// The texts of all elements of a name; empty when the document is no XML.
QStringList elementTexts(const QByteArray& xml, const QString& name)
{
    QStringList texts;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == name)
            texts += reader.readElementText(QXmlStreamReader::IncludeChildElements);
    }
    return reader.hasError() ? QStringList() : texts;
}

} // namespace

class TestMapExport : public QObject
{
    Q_OBJECT
private slots:
    void theResultsHoldEveryBearingWithTheFix()
    {
        MapModel model;
        model.setAssumedSigma(1.5);
        model.addResult(result(fourStations()));
        model.setExcluded(2, true);
        const csv::Table table = csv::parse(mapexport::csvText(model.snapshot()));
        QVERIFY(table.flaws.empty());
        QCOMPARE(table.records.size(), std::size_t(5));
        QCOMPARE(table.records[0].fields.join(QLatin1Char(',')),
                 QStringLiteral("time_utc,frequency_hz,station,latitude_deg,longitude_deg,azimuth_deg,quality_percent,"
                                "level_dbuv,use,residual_deg,distance_m,fix_latitude_deg,fix_longitude_deg,"
                                "semi_major_m,semi_minor_m,major_axis_deg,probability"));
        const QStringList second = table.records[2].fields;
        QCOMPARE(second.mid(0, 9).join(QLatin1Char(',')),
                 QStringLiteral("2026-05-14T09:30:05Z,155500000,S2,50.3000000,7.0000000,227.0000,60,31.5,excluded"));
        QCOMPARE(second.size(), 17);
        QCOMPARE(second[11], QString::number(model.fix()->position.latitude, 'f', 7));
        QCOMPARE(second[13], QString::number(model.ellipse()->semiMajor, 'f', 1));
        QCOMPARE(second[16], QStringLiteral("0.95"));
    }

    void whatIsNotKnownIsEmptyInTheResults()
    {
        MapModel model;
        DfResult bare;
        bare.stations.resize(2);
        bare.stations[0].stationId = 1;
        bare.stations[0].stationName = QStringLiteral("One, \"the first\"");
        bare.stations[0].azimuth = 12.0;
        bare.stations[1].stationId = 2; // without a bearing: no row
        model.addResult(bare);
        const csv::Table table = csv::parse(mapexport::csvText(model.snapshot()));
        QCOMPARE(table.records.size(), std::size_t(2));
        QCOMPARE(table.records[1].fields.join(QLatin1Char('|')),
                 QStringLiteral("||One, \"the first\"|||12.0000|||unusable||||||||"));
    }

    void withoutAResultThereIsOnlyTheHeader()
    {
        const MapModel model;
        QCOMPARE(csv::parse(mapexport::csvText(model.snapshot())).records.size(), std::size_t(1));
        QVERIFY(QJsonDocument::fromJson(mapexport::geoJson(model.snapshot(), 1e5))
                    .object()
                    .value(QStringLiteral("features"))
                    .isArray());
        QCOMPARE(elementTexts(mapexport::kml(model.snapshot(), 1e5), QStringLiteral("Folder")).size(), 2);
    }

    void geoJsonHoldsStationsBearingsFixAndEllipse()
    {
        MapModel model;
        model.setAssumedSigma(1.5);
        model.addResult(result(fourStations()));
        const QJsonArray stations = featuresOf(model, QStringLiteral("station"));
        QCOMPARE(stations.size(), 4);
        QCOMPARE(stations[1][QStringLiteral("geometry")][QStringLiteral("coordinates")],
                 QJsonValue(QJsonArray{7.0, 50.3}));
        const QJsonArray bearings = featuresOf(model, QStringLiteral("bearing"));
        QCOMPARE(bearings.size(), 4);
        QCOMPARE(bearings[0][QStringLiteral("geometry")][QStringLiteral("type")].toString(),
                 QStringLiteral("LineString"));
        QCOMPARE(bearings[0][QStringLiteral("properties")][QStringLiteral("azimuth_deg")].toDouble(), 77.3);
        QCOMPARE(bearings[0][QStringLiteral("properties")][QStringLiteral("use")].toString(), QStringLiteral("used"));
        const QJsonArray fixes = featuresOf(model, QStringLiteral("fix"));
        QCOMPARE(fixes.size(), 1);
        const QJsonArray place = fixes[0][QStringLiteral("geometry")][QStringLiteral("coordinates")].toArray();
        QVERIFY(geodesy::line({place[1].toDouble(), place[0].toDouble()}, {50.0906117, 6.6478048}).distance < 1.0);
        QCOMPARE(fixes[0][QStringLiteral("properties")][QStringLiteral("degrees_of_freedom")].toInt(), 2);
        const QJsonArray ellipses = featuresOf(model, QStringLiteral("ellipse"));
        QCOMPARE(ellipses.size(), 1);
        const QJsonValue shape = ellipses[0][QStringLiteral("geometry")];
        QCOMPARE(shape[QStringLiteral("type")].toString(), QStringLiteral("Polygon"));
        const QJsonArray ring = shape[QStringLiteral("coordinates")][0].toArray();
        QCOMPARE(ring.size(), 73);
        QCOMPARE(ring.first(), ring.last());
    }

    void withoutAFixGeoJsonHasNone()
    {
        MapModel model;
        model.addResult(result({fourStations().front()}));
        QCOMPARE(featuresOf(model, QStringLiteral("bearing")).size(), 1);
        QVERIFY(featuresOf(model, QStringLiteral("fix")).isEmpty());
        QVERIFY(featuresOf(model, QStringLiteral("ellipse")).isEmpty());
    }

    void geoJsonIsCutAtTheDateLine()
    {
        MapModel model;
        DfResult across = result(mapbench::acrossTheDateLine());
        across.stations[0].position = GeoPosition{-18.5, 179.5};
        across.stations[0].azimuth = 90.0;
        model.addResult(across);
        const QJsonValue line = featuresOf(model, QStringLiteral("bearing")).at(0)[QStringLiteral("geometry")];
        QCOMPARE(line[QStringLiteral("type")].toString(), QStringLiteral("MultiLineString"));
        const QJsonArray parts = line[QStringLiteral("coordinates")].toArray();
        QCOMPARE(parts.size(), 2);
        const QJsonArray firstPart = parts[0].toArray();
        QCOMPARE(firstPart.last()[0].toDouble(), 180.0);
        QCOMPARE(parts[1][0][0].toDouble(), -180.0);
    }

    void anEllipseOnTheDateLineIsCut()
    {
        MapModel model;
        model.setAssumedSigma(20.0); // wide enough to reach the date line, half a degree away
        model.addResult(result(mapbench::acrossTheDateLine()));
        QVERIFY(model.fix() != nullptr);
        const QJsonValue shape = featuresOf(model, QStringLiteral("ellipse")).at(0)[QStringLiteral("geometry")];
        QCOMPARE(shape[QStringLiteral("type")].toString(), QStringLiteral("MultiPolygon"));
        QCOMPARE(shape[QStringLiteral("coordinates")].toArray().size(), 2);
    }

    void kmlHoldsStationsBearingsAndTheFix()
    {
        MapModel model;
        DfResult marked = result(fourStations());
        marked.stations[0].stationName = QStringLiteral("A & <B>");
        model.addResult(marked);
        const QByteArray text = mapexport::kml(model.snapshot(), 200e3);
        const QStringList names = elementTexts(text, QStringLiteral("name"));
        QCOMPARE(names.join(QLatin1Char('|')),
                 QStringLiteral("Stations|A & <B>|S2|S3|S4|Bearings|A & <B>|S2|S3|S4|Fix|Fix|95 %"));
        QCOMPARE(elementTexts(text, QStringLiteral("LineString")).size(), 4);
        QCOMPARE(elementTexts(text, QStringLiteral("coordinates")).first(), QStringLiteral("6.0000000,50.0000000"));
        const QStringList descriptions = elementTexts(text, QStringLiteral("description"));
        QVERIFY(descriptions.contains(QStringLiteral("227.0°, 60 %, 31.5 dBµV, used")));
        QVERIFY(descriptions.contains(model.fixText()));
        const QStringList ring =
            elementTexts(text, QStringLiteral("LinearRing")).first().simplified().split(QLatin1Char(' '));
        QCOMPARE(ring.size(), 73);
        QVERIFY(text.contains("xmlns=\"http://www.opengis.net/kml/2.2\""));
    }
};

DFL_TEST_MAIN_WITH(TestMapExport, QCoreApplication)
#include "tst_mapexport.moc"
