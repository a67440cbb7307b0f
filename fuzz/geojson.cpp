// GeoJSON: shapes keep the bounds of the format and read the same when they are written anew; and what the map exports
// of stations at such places can be read.

#include "map/geojson.h"
#include "fuzz/fuzzing.h"
#include "fuzz/jsonleaks.h"
#include "map/mapexport.h"
#include "map/mapmodel.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>

using namespace workbench;

namespace {

bool isOneLine(const QString& name)
{
    return std::none_of(name.begin(), name.end(), [](QChar c) { return c.category() == QChar::Other_Control; });
}

void requireBounds(const GeoJson& json)
{
    FUZZ_REQUIRE(json.omitted >= 0);
    FUZZ_REQUIRE(json.omissions.size() == std::min(json.omitted, GeoJson::mostOmissionsTold));
    for (const GeoShape& shape : json.shapes) {
        FUZZ_REQUIRE(shape.name.size() <= GeoJson::longestName && isOneLine(shape.name));
        FUZZ_REQUIRE(!shape.parts.empty());
        for (const std::vector<GeoPosition>& part : shape.parts) {
            FUZZ_REQUIRE(shape.kind == GeoShape::Kind::Points  ? part.size() == 1
                         : shape.kind == GeoShape::Kind::Lines ? part.size() >= 2
                                                               : part.size() >= 4);
            for (const GeoPosition& position : part)
                FUZZ_REQUIRE(std::abs(position.latitude) <= 90.0 && std::abs(position.longitude) <= 360.0);
        }
    }
}

QJsonArray coordinates(const GeoPosition& position)
{
    return {position.longitude, position.latitude};
}

QJsonArray coordinates(const std::vector<GeoPosition>& part)
{
    QJsonArray array;
    for (const GeoPosition& position : part)
        array += coordinates(position);
    return array;
}

QJsonObject geometry(const GeoShape& shape)
{
    QJsonArray parts;
    for (const std::vector<GeoPosition>& part : shape.parts) {
        switch (shape.kind) {
        case GeoShape::Kind::Points:
            parts += coordinates(part.front());
            break;
        case GeoShape::Kind::Lines:
            parts += coordinates(part);
            break;
        case GeoShape::Kind::Area:
            parts += QJsonArray{QJsonValue(coordinates(part))};
        }
    }
    const QString type = shape.kind == GeoShape::Kind::Points  ? QStringLiteral("MultiPoint")
                         : shape.kind == GeoShape::Kind::Lines ? QStringLiteral("MultiLineString")
                                                               : QStringLiteral("MultiPolygon");
    return {{QStringLiteral("type"), type}, {QStringLiteral("coordinates"), parts}};
}

QByteArray written(const std::vector<GeoShape>& shapes)
{
    QJsonArray features;
    for (const GeoShape& shape : shapes)
        features += QJsonObject{{QStringLiteral("type"), QStringLiteral("Feature")},
                                {QStringLiteral("geometry"), geometry(shape)},
                                {QStringLiteral("properties"), QJsonObject{{QStringLiteral("name"), shape.name}}}};
    return QJsonDocument(QJsonObject{{QStringLiteral("type"), QStringLiteral("FeatureCollection")},
                                     {QStringLiteral("features"), features}})
        .toJson();
}

void requireSame(const GeoShape& a, const GeoShape& b)
{
    FUZZ_REQUIRE(a.kind == b.kind);
    FUZZ_REQUIRE(a.name == b.name);
    FUZZ_REQUIRE(a.parts.size() == b.parts.size());
    for (std::size_t i = 0; i < a.parts.size(); ++i) {
        FUZZ_REQUIRE(std::equal(a.parts[i].begin(), a.parts[i].end(), b.parts[i].begin(), b.parts[i].end(),
                                [](const GeoPosition& p, const GeoPosition& q) {
                                    return p.latitude == q.latitude && p.longitude == q.longitude;
                                }));
    }
}

/// Stations at the points of @p shapes, with bearings all round.
DfResult resultAt(const std::vector<GeoShape>& shapes)
{
    constexpr std::size_t mostStations = 10;
    DfResult result;
    result.frequency = 100e6;
    for (const GeoShape& shape : shapes) {
        if (shape.kind != GeoShape::Kind::Points || result.stations.size() >= mostStations)
            continue;
        StationResult& station = result.stations.emplace_back();
        station.stationId = static_cast<int>(result.stations.size());
        station.stationName = QStringLiteral("Station %1").arg(station.stationId);
        station.position = shape.parts.front().front();
        station.azimuth = std::fmod(37.0 * station.stationId, 360.0);
        station.quality = 90.0;
    }
    return result;
}

void requireExport(const std::vector<GeoShape>& shapes)
{
    const DfResult result = resultAt(shapes);
    MapModel model;
    model.addResult(result);
    const std::variant<GeoJson, QString> read = parseGeoJson(mapexport::geoJson(model.snapshot(), 5e6));
    FUZZ_REQUIRE(std::holds_alternative<GeoJson>(read));
    const GeoJson& json = std::get<GeoJson>(read);
    FUZZ_REQUIRE(json.omitted == 0 && json.shapes.size() >= 2 * result.stations.size());
    for (std::size_t i = 0; i < result.stations.size(); ++i) {
        const GeoPosition& expected = *result.stations[i].position;
        const GeoPosition& position = json.shapes[i].parts.front().front();
        FUZZ_REQUIRE(json.shapes[i].name == result.stations[i].stationName);
        FUZZ_REQUIRE(std::abs(position.latitude - expected.latitude) <= 1e-7);
        FUZZ_REQUIRE(std::abs(std::remainder(position.longitude - expected.longitude, 360.0)) <= 1e-7);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray text = fuzzing::bytes(data, size);
    const fuzzing::JsonLeaks leaks(text);
    const std::variant<GeoJson, QString> read = parseGeoJson(text);
    if (const QString* const reason = std::get_if<QString>(&read)) {
        FUZZ_REQUIRE(!reason->isEmpty() && !reason->endsWith(QLatin1Char('.')));
        return 0;
    }
    const GeoJson& json = std::get<GeoJson>(read);
    requireBounds(json);
    const std::variant<GeoJson, QString> again = parseGeoJson(written(json.shapes));
    FUZZ_REQUIRE(std::holds_alternative<GeoJson>(again));
    const std::vector<GeoShape>& shapes = std::get<GeoJson>(again).shapes;
    FUZZ_REQUIRE(std::get<GeoJson>(again).omitted == 0 && shapes.size() == json.shapes.size());
    for (std::size_t i = 0; i < shapes.size(); ++i)
        requireSame(json.shapes[i], shapes[i]);
    requireExport(shapes);
    return 0;
}
