#include "map/geojson.h"
#include "map/mapexport.h"
#include "map/mapmodel.h"

#include "mapbench.h"
#include "support/testmain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <variant>

using namespace workbench;

namespace {

/// Written with single quotes, which JSON does not know.
QByteArray json(QByteArray text)
{
    return text.replace('\'', '"');
}

GeoJson shapesOf(const QByteArray& text)
{
    auto content = parseGeoJson(text);
    if (const auto* const reason = std::get_if<QString>(&content)) {
        qWarning("Refused: %s", qPrintable(*reason));
        return {};
    }
    return std::get<GeoJson>(std::move(content));
}

/// Why nothing of the text can be used.
QString refusal(const QByteArray& text)
{
    const auto content = parseGeoJson(text);
    const auto* const reason = std::get_if<QString>(&content);
    return reason != nullptr ? *reason : QStringLiteral("not refused");
}

QByteArray feature(const QByteArray& geometry, const QByteArray& properties = "null")
{
    return json("{'type':'Feature','geometry':") + geometry + json(",'properties':") + properties + '}';
}

QByteArrayList times(int count, const QByteArray& text)
{
    QByteArrayList texts;
    for (int i = 0; i < count; ++i)
        texts += text;
    return texts;
}

QByteArray collection(const QByteArrayList& features)
{
    return json("{'type':'FeatureCollection','features':[") + features.join(',') + "]}";
}

const QByteArray goodPoint = json("{'type':'Point','coordinates':[7.1,50.7]}");
const QByteArray badPoint = json("{'type':'Point','coordinates':[7.1]}");

QByteArray lineOf(int positions)
{
    QByteArray text = json("{'type':'LineString','coordinates':[");
    for (int i = 0; i < positions; ++i)
        text += "[1,2],";
    text.chop(1);
    return text + "]}";
}

} // namespace

class TestGeoJson : public QObject
{
    Q_OBJECT
private slots:
    void aPointIsLongitudeAndLatitudeAndPerhapsAHeight()
    {
        const GeoJson content = shapesOf(json("{'type':'Point','coordinates':[7.1,50.7,312.5]}"));
        QCOMPARE(content.shapes.size(), std::size_t(1));
        QVERIFY(content.shapes[0].kind == GeoShape::Kind::Points);
        QCOMPARE(content.shapes[0].parts.size(), std::size_t(1));
        QCOMPARE(content.shapes[0].parts[0].size(), std::size_t(1));
        QCOMPARE(content.shapes[0].parts[0][0].longitude, 7.1);
        QCOMPARE(content.shapes[0].parts[0][0].latitude, 50.7);
    }

    void everyGeometryIsRead_data()
    {
        using Kind = GeoShape::Kind;
        QTest::addColumn<QByteArray>("geometry");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QVector<int>>("sizes");
        QTest::newRow("MultiPoint") << json("{'type':'MultiPoint','coordinates':[[1,2],[3,4]]}") << int(Kind::Points)
                                    << QVector<int>{1, 1};
        QTest::newRow("LineString") << json("{'type':'LineString','coordinates':[[1,2],[3,4],[5,6]]}")
                                    << int(Kind::Lines) << QVector<int>{3};
        QTest::newRow("MultiLineString")
            << json("{'type':'MultiLineString','coordinates':[[[1,2],[3,4]],[[5,6],[7,8],[9,1]]]}") << int(Kind::Lines)
            << QVector<int>{2, 3};
        QTest::newRow("Polygon with a hole")
            << QByteArray(
                   json("{'type':'Polygon','coordinates':[[[0,0],[9,0],[9,9],[0,0]],[[5,1],[7,1],[7,2],[5,2],[5,1]]]}"))
            << int(Kind::Area) << QVector<int>{4, 5};
        QTest::newRow("MultiPolygon") << (json("{'type':'MultiPolygon','coordinates':[[[[0,0],[9,0],[9,9],[0,"
                                               "0]]],[[[20,0],[29,0],[29,9],[20,0]]]]}"))
                                      << int(Kind::Area) << QVector<int>{4, 4};
    }

    void everyGeometryIsRead()
    {
        QFETCH(QByteArray, geometry);
        QFETCH(int, kind);
        QFETCH(QVector<int>, sizes);
        for (const QByteArray& text : {geometry, feature(geometry), collection({feature(geometry)})}) {
            const GeoJson content = shapesOf(text);
            QCOMPARE(content.shapes.size(), std::size_t(1));
            QCOMPARE(int(content.shapes[0].kind), kind);
            QVector<int> found;
            for (const auto& part : content.shapes[0].parts)
                found += static_cast<int>(part.size());
            QCOMPARE(found, sizes);
            QCOMPARE(content.omitted, 0);
        }
    }

    void aCollectionOfGeometriesBecomesOneShapeEach()
    {
        const GeoJson content =
            shapesOf(feature(json("{'type':'GeometryCollection','geometries':[") + goodPoint +
                                 json(",{'type':'GeometryCollection','geometries':[") + lineOf(2) + "]}]}",
                             json("{'name':'Harbour'}")));
        QCOMPARE(content.shapes.size(), std::size_t(2));
        QVERIFY(content.shapes[0].kind == GeoShape::Kind::Points);
        QVERIFY(content.shapes[1].kind == GeoShape::Kind::Lines);
        // The name once, not at each of them.
        QCOMPARE(content.shapes[0].name, QStringLiteral("Harbour"));
        QCOMPARE(content.shapes[1].name, QString());
    }

    void theNameIsThatOfThePropertyInAnyCase_data()
    {
        QTest::addColumn<QByteArray>("properties");
        QTest::addColumn<QString>("name");
        QTest::newRow("name") << json("{'name':'Bonn','NAME':'other'}") << QStringLiteral("Bonn");
        QTest::newRow("NAME") << json("{'NAME':'Bonn'}") << QStringLiteral("Bonn");
        QTest::newRow("none") << json("{'title':'Bonn'}") << QString();
        QTest::newRow("null") << QByteArray("null") << QString();
        QTest::newRow("a number") << json("{'name':5}") << QString();
        QTest::newRow("lines and control characters")
            << json("{'name':'  a\\n\\tb\\u0000c\\u0007 '}") << QStringLiteral("a b c");
        QTest::newRow("too long") << json("{'name':'") + QByteArray(1000, 'x') + json("'}")
                                  << QString(GeoJson::longestName - 1, 'x') + QChar(0x2026);
        QTest::newRow("not cut within a character")
            << json("{'name':'") + QByteArray(GeoJson::longestName - 2, 'x') + "\xf0\x9f\x93\xa1yy" + json("'}")
            << QString(GeoJson::longestName - 2, 'x') + QChar(0x2026);
    }

    void theNameIsThatOfThePropertyInAnyCase()
    {
        QFETCH(QByteArray, properties);
        QFETCH(QString, name);
        const GeoJson content = shapesOf(feature(goodPoint, properties));
        QCOMPARE(content.shapes.size(), std::size_t(1));
        QCOMPARE(content.shapes[0].name, name);
    }

    void nothingToShowIsNoFault_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("no features") << collection({});
        QTest::newRow("no place") << feature("null");
        QTest::newRow("empty point") << json("{'type':'Point','coordinates':[]}");
        QTest::newRow("empty line") << json("{'type':'LineString','coordinates':[]}");
        QTest::newRow("empty polygon") << json("{'type':'Polygon','coordinates':[]}");
        QTest::newRow("empty lines") << json("{'type':'MultiLineString','coordinates':[]}");
        QTest::newRow("no geometries") << json("{'type':'GeometryCollection','geometries':[]}");
    }

    void nothingToShowIsNoFault()
    {
        QFETCH(QByteArray, text);
        const auto content = parseGeoJson(text);
        QVERIFY(std::holds_alternative<GeoJson>(content));
        QVERIFY(std::get<GeoJson>(content).shapes.empty());
    }

    void whatTheFormatDoesNotKnowIsPassedOver()
    {
        const GeoJson content = shapesOf(
            "\xef\xbb\xbf" + collection({feature(goodPoint)})
                                 .replace("{\"type\":\"FeatureCollection\"",
                                          json("{'crs':{'x':[1]},'bbox':[1,2,3,4],'type':'FeatureCollection'")));
        QCOMPARE(content.shapes.size(), std::size_t(1));
    }

    void whatIsWrongIsToldWithItsPlace_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("reason");
        QTest::newRow("nothing") << QByteArray() << QStringLiteral("line 1, column 1: illegal value");
        QTest::newRow("broken off") << QByteArray("{\n \"type\": \"Point\",\n \"coordinates\": [1,\n")
                                    << QStringLiteral("line 4, column 1: unterminated array");
        QTest::newRow("no object") << QByteArray("[]") << QStringLiteral("expected an object, found an array");
        QTest::newRow("no type") << QByteArray("{}")
                                 << QStringLiteral("type: expected a type of GeoJSON, found nothing");
        QTest::newRow("another type") << json("{'type':'Topology'}")
                                      << QStringLiteral("type: expected a type of GeoJSON, found \"Topology\"");
        QTest::newRow("no features") << json("{'type':'FeatureCollection'}")
                                     << QStringLiteral("features: expected an array, found nothing");
        QTest::newRow("no feature") << collection({goodPoint})
                                    << QStringLiteral("features[0].type: expected \"Feature\", found \"Point\"");
        QTest::newRow("a number as feature")
            << collection({"5"}) << QStringLiteral("features[0].type: expected \"Feature\", found nothing");
        QTest::newRow("no geometry") << feature("true") << QStringLiteral("geometry: expected a geometry, found true");
        QTest::newRow("half a position")
            << feature(badPoint)
            << QStringLiteral("geometry.coordinates: expected a longitude and a latitude, found an array");
        QTest::newRow("metres") << collection({feature(
                                       json("{'type':'MultiPoint','coordinates':[[1,2],[365000.5,5600000]]}"))})
                                << QStringLiteral("features[0].geometry.coordinates[1][0]: expected a longitude from "
                                                  "-360 to 360, found 365000.5");
        QTest::newRow("beyond the pole") << json("{'type':'Point','coordinates':[1,90.001]}")
                                         << QStringLiteral(
                                                "coordinates[1]: expected a latitude from -90 to 90, found 90.001");
        QTest::newRow("a text for a number")
            << json("{'type':'Point','coordinates':['1',2]}")
            << QStringLiteral("coordinates[0]: expected a longitude from -360 to 360, found \"1\"");
        QTest::newRow("one position") << json("{'type':'LineString','coordinates':[[1,2]]}")
                                      << QStringLiteral("coordinates: a line needs at least two positions");
        QTest::newRow("short ring") << json("{'type':'Polygon','coordinates':[[[1,2],[3,4],[1,2]]]}")
                                    << QStringLiteral("coordinates[0]: a ring needs at least four positions");
        QTest::newRow("open ring") << QByteArray(
                                          json("{'type':'MultiPolygon','coordinates':[[[[1,2],[3,4],[5,2],[1,2.5]]]]}"))
                                   << QStringLiteral("coordinates[0][0]: a ring has to end where it begins");
        QTest::newRow("in a collection")
            << json("{'type':'GeometryCollection','geometries':[") + goodPoint + ',' + badPoint + "]}"
            << QStringLiteral("geometries[1].coordinates: expected a longitude and a latitude, found an array");
        QTest::newRow("a long text")
            << json("{'type':'") + QByteArray(5000, 'x') + json("'}")
            << QStringLiteral("type: expected a type of GeoJSON, found \"%1\"").arg(QString(39, 'x') + QChar(0x2026));
    }

    void whatIsWrongIsToldWithItsPlace()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, reason);
        QCOMPARE(refusal(text), reason);
    }

    void aBadFeatureIsToldAndTheOthersAreRead()
    {
        const GeoJson content =
            shapesOf(collection({feature(goodPoint), feature(badPoint), feature(lineOf(2)), "null"}));
        QCOMPARE(content.shapes.size(), std::size_t(2));
        QCOMPARE(content.omitted, 2);
        QCOMPARE(content.omissions,
                 QStringList({"features[1].geometry.coordinates: expected a longitude and a latitude, found an array",
                              "features[3].type: expected \"Feature\", found nothing"}));
    }

    void nothingIsKeptOfAFeatureThatIsPartlyWrong()
    {
        const QByteArray half = json("{'type':'GeometryCollection','geometries':[") + goodPoint + ',' + badPoint + "]}";
        const GeoJson content = shapesOf(collection({feature(half), feature(goodPoint)}));
        QCOMPARE(content.shapes.size(), std::size_t(1));
        QCOMPARE(content.omitted, 1);
    }

    void manyBadFeaturesAreCountedAndTheFirstAreTold()
    {
        QByteArrayList features = times(25, feature(badPoint));
        features += feature(goodPoint);
        const GeoJson content = shapesOf(collection(features));
        QCOMPARE(content.omitted, 25);
        QCOMPARE(content.omissions.size(), GeoJson::mostOmissionsTold);
    }

    void aTextWithoutOneGoodFeatureIsRefused()
    {
        QCOMPARE(refusal(collection({feature(badPoint), feature(badPoint)})),
                 QStringLiteral("no feature can be used; features[0].geometry.coordinates: expected a longitude and a "
                                "latitude, found an array"));
    }

    void collectionsWithinOneAnotherAreBounded()
    {
        const auto nested = [](int depth) {
            QByteArray text = goodPoint;
            for (int i = 0; i < depth; ++i)
                text = json("{'type':'GeometryCollection','geometries':[") + text + "]}";
            return text;
        };
        QCOMPARE(shapesOf(nested(GeoJson::deepestCollection)).shapes.size(), std::size_t(1));
        QVERIFY(refusal(nested(GeoJson::deepestCollection + 1))
                    .endsWith(QStringLiteral(": there are more than 8 geometry collections within one another")));
        QVERIFY(refusal(QByteArray(200000, '[')).startsWith(QStringLiteral("line 1, column ")));
    }

    void positionsShapesAndSizeAreBounded()
    {
        // The place tells that a million have been taken.
        QCOMPARE(refusal(lineOf(GeoJson::mostPositions + 1)),
                 QStringLiteral("coordinates[1000000]: there are more than 1000000 positions"));
        QCOMPARE(refusal(collection(times(GeoJson::mostShapes + 1, feature(goodPoint)))),
                 QStringLiteral("features[100000]: there are more than 100000 shapes"));
        QCOMPARE(refusal(QByteArray(GeoJson::largestText + 1, ' ')),
                 QStringLiteral("it is larger than 67108864 bytes"));
    }

    void readingTellsItsProgressAndCanBeCancelled()
    {
        const QByteArray text = collection(times(10, feature(goodPoint)));
        std::vector<double> shares;
        const auto whole = parseGeoJson(text, [&](double share) {
            shares.push_back(share);
            return true;
        });
        QVERIFY(std::holds_alternative<GeoJson>(whole));
        QVERIFY(shares.size() >= 10);
        QVERIFY(std::is_sorted(shares.begin(), shares.end()));
        QVERIFY(shares.front() == 0.0 && shares.back() > 0.8 && shares.back() <= 1.0);

        int calls = 0;
        const auto cancelled = parseGeoJson(text, [&](double) { return ++calls < 4; });
        QVERIFY(std::holds_alternative<QString>(cancelled));
        QVERIFY(std::get<QString>(cancelled).endsWith(QStringLiteral("reading has been cancelled")));
        QCOMPARE(calls, 4);
    }

    void aLongLineCanBeCancelledToo()
    {
        int calls = 0;
        const auto cancelled = parseGeoJson(lineOf(100000), [&](double) { return ++calls < 3; });
        QVERIFY(std::holds_alternative<QString>(cancelled));
        QCOMPARE(calls, 3);
    }

    void whatTheMapExportsIsReadBack()
    {
        MapModel model;
        model.addResult(mapbench::result(mapbench::acrossTheDateLine()));
        const GeoJson content = shapesOf(mapexport::geoJson(model.snapshot(), 900e3));
        QCOMPARE(content.omitted, 0);
        QCOMPARE(content.shapes.size(), std::size_t(3 + 3 + 2));
        QCOMPARE(content.shapes[0].name, QStringLiteral("S1"));
        QCOMPARE(content.shapes[0].parts[0][0].latitude, -17.5);
        QCOMPARE(content.shapes[0].parts[0][0].longitude, 177.0);
        QVERIFY(content.shapes[3].kind == GeoShape::Kind::Lines);
        QCOMPARE(content.shapes[3].parts.size(), std::size_t(2)); // cut at the date line
        QVERIFY(content.shapes[7].kind == GeoShape::Kind::Area);
    }
};

DFL_TEST_MAIN(TestGeoJson)
#include "tst_geojson.moc"
