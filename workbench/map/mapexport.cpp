#include "map/mapexport.h"

#include "drivers/csv.h"
#include "map/geoshapes.h"
#include "map/mapformats.h"
#include "map/mapmodel.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QXmlStreamWriter>

#include <cmath>

namespace workbench {

namespace {

using geoshapes::Line;

QString text(const std::optional<double>& number, int decimals)
{
    return number ? fixedText(*number, decimals) : QString();
}

/// Degrees to a centimetre.
double rounded(double degrees)
{
    return std::round(degrees * 1e7) / 1e7;
}

QString timeText(const DfResult& result)
{
    if (!result.date.isValid() || !result.time.isValid())
        return {};
    return QDateTime(result.date, result.time, Qt::UTC).toString(Qt::ISODate);
}

QJsonArray coordinates(const GeoPosition& position)
{
    return {rounded(std::remainder(position.longitude, 360.0)), rounded(position.latitude)};
}

QJsonArray coordinates(const Line& line)
{
    QJsonArray array;
    for (const GeoPosition& position : line)
        array += coordinates(position);
    return array;
}

QJsonObject lineGeometry(const std::vector<Line>& parts)
{
    if (parts.size() == 1)
        return {{QStringLiteral("type"), QStringLiteral("LineString")},
                {QStringLiteral("coordinates"), coordinates(parts.front())}};
    QJsonArray lines;
    for (const Line& part : parts)
        lines += coordinates(part);
    return {{QStringLiteral("type"), QStringLiteral("MultiLineString")}, {QStringLiteral("coordinates"), lines}};
}

QJsonObject areaGeometry(const std::vector<Line>& parts)
{
    QJsonArray polygons;
    for (const Line& part : parts)
        polygons += QJsonArray{QJsonValue(coordinates(part))}; // of an array alone some compilers make a copy
    if (parts.size() == 1)
        return {{QStringLiteral("type"), QStringLiteral("Polygon")}, {QStringLiteral("coordinates"), polygons.first()}};
    return {{QStringLiteral("type"), QStringLiteral("MultiPolygon")}, {QStringLiteral("coordinates"), polygons}};
}

QJsonObject pointGeometry(const GeoPosition& position)
{
    return {{QStringLiteral("type"), QStringLiteral("Point")}, {QStringLiteral("coordinates"), coordinates(position)}};
}

QJsonObject feature(const QJsonObject& geometry, const QJsonObject& properties)
{
    return {{QStringLiteral("type"), QStringLiteral("Feature")},
            {QStringLiteral("geometry"), geometry},
            {QStringLiteral("properties"), properties}};
}

QJsonValue jsonValue(const std::optional<double>& number)
{
    return number ? QJsonValue(*number) : QJsonValue(QJsonValue::Null);
}

QJsonObject bearingProperties(const MapStation& station)
{
    return {{QStringLiteral("kind"), QStringLiteral("bearing")},
            {QStringLiteral("station"), station.name},
            {QStringLiteral("azimuth_deg"), *station.azimuth},
            {QStringLiteral("quality_percent"), jsonValue(station.quality)},
            {QStringLiteral("level_dbuv"), jsonValue(station.level)},
            {QStringLiteral("use"), useText(station.use)},
            {QStringLiteral("residual_deg"), jsonValue(station.residual)}};
}

std::vector<Line> bearingParts(const MapStation& station, double lineLength)
{
    return geoshapes::splitAtDateLine(geoshapes::bearingLine(*station.position, *station.azimuth, lineLength));
}

class KmlWriter
{
public:
    KmlWriter()
        : m_xml(&m_text)
    {
        m_xml.setAutoFormatting(true);
        m_xml.setAutoFormattingIndent(1);
        m_xml.writeStartDocument();
        m_xml.writeStartElement(QStringLiteral("kml"));
        m_xml.writeDefaultNamespace(QStringLiteral("http://www.opengis.net/kml/2.2"));
        m_xml.writeStartElement(QStringLiteral("Document"));
    }

    void beginFolder(const QString& name)
    {
        m_xml.writeStartElement(QStringLiteral("Folder"));
        m_xml.writeTextElement(QStringLiteral("name"), name);
    }
    void endFolder() { m_xml.writeEndElement(); }

    void addPoint(const QString& name, const QString& description, const GeoPosition& position)
    {
        beginPlacemark(name, description);
        m_xml.writeStartElement(QStringLiteral("Point"));
        addCoordinates({position});
        m_xml.writeEndElement();
        m_xml.writeEndElement();
    }

    void addLine(const QString& name, const QString& description, const std::vector<Line>& parts)
    {
        beginPlacemark(name, description);
        m_xml.writeStartElement(QStringLiteral("MultiGeometry"));
        for (const Line& part : parts) {
            m_xml.writeStartElement(QStringLiteral("LineString"));
            m_xml.writeTextElement(QStringLiteral("tessellate"), QStringLiteral("1"));
            addCoordinates(part);
            m_xml.writeEndElement();
        }
        m_xml.writeEndElement();
        m_xml.writeEndElement();
    }

    void addArea(const QString& name, const QString& description, const std::vector<Line>& parts)
    {
        beginPlacemark(name, description);
        m_xml.writeStartElement(QStringLiteral("MultiGeometry"));
        for (const Line& part : parts) {
            m_xml.writeStartElement(QStringLiteral("Polygon"));
            m_xml.writeTextElement(QStringLiteral("tessellate"), QStringLiteral("1"));
            m_xml.writeStartElement(QStringLiteral("outerBoundaryIs"));
            m_xml.writeStartElement(QStringLiteral("LinearRing"));
            addCoordinates(part);
            m_xml.writeEndElement();
            m_xml.writeEndElement();
            m_xml.writeEndElement();
        }
        m_xml.writeEndElement();
        m_xml.writeEndElement();
    }

    [[nodiscard]] QByteArray finished()
    {
        m_xml.writeEndDocument();
        return m_text;
    }

private:
    void beginPlacemark(const QString& name, const QString& description)
    {
        m_xml.writeStartElement(QStringLiteral("Placemark"));
        m_xml.writeTextElement(QStringLiteral("name"), name);
        m_xml.writeTextElement(QStringLiteral("description"), description);
    }

    void addCoordinates(const Line& line)
    {
        QStringList tuples;
        for (const GeoPosition& position : line)
            tuples += fixedText(std::remainder(position.longitude, 360.0), 7) + QLatin1Char(',') +
                      fixedText(position.latitude, 7);
        m_xml.writeTextElement(QStringLiteral("coordinates"), tuples.join(QLatin1Char(' ')));
    }

    QByteArray m_text;
    QXmlStreamWriter m_xml;
};

QString bearingText(const MapStation& station)
{
    QStringList parts{azimuthText(*station.azimuth)};
    if (station.quality)
        parts += fixedText(*station.quality, 0) + QStringLiteral(" %");
    if (station.level)
        parts += fixedText(*station.level, 1) + QStringLiteral(" dBµV");
    parts += useText(station.use);
    return parts.join(QStringLiteral(", "));
}

} // namespace

QByteArray mapexport::csvText(const MapSnapshot& map)
{
    QString lines =
        QStringLiteral("time_utc,frequency_hz,station,latitude_deg,longitude_deg,azimuth_deg,quality_percent,"
                       "level_dbuv,use,residual_deg,distance_m,fix_latitude_deg,fix_longitude_deg,"
                       "semi_major_m,semi_minor_m,major_axis_deg,probability\r\n");
    QStringList fixFields;
    if (const auto& fix = map.fix) {
        const ErrorEllipse ellipse = *map.ellipse;
        fixFields = QStringList{text(fix->position.latitude, 7), text(fix->position.longitude, 7),
                                text(ellipse.semiMajor, 1),      text(ellipse.semiMinor, 1),
                                text(ellipse.azimuth, 2),        QString::number(map.probability)};
    } else {
        fixFields = QStringList{{}, {}, {}, {}, {}, {}};
    }
    for (const MapStation& station : map.stations) {
        if (!station.azimuth)
            continue;
        QStringList fields{timeText(*map.result), text(map.result->frequency, 0), csv::quoted(station.name)};
        fields += station.position ? text(station.position->latitude, 7) : QString();
        fields += station.position ? text(station.position->longitude, 7) : QString();
        fields += text(station.azimuth, 4);
        fields += text(station.quality, 0);
        fields += text(station.level, 1);
        fields += csv::quoted(useText(station.use));
        fields += text(station.residual, 4);
        fields += text(station.distance, 1);
        lines += (fields + fixFields).join(QLatin1Char(',')) + QStringLiteral("\r\n");
    }
    return lines.toUtf8();
}

QByteArray mapexport::geoJson(const MapSnapshot& map, double lineLength)
{
    QJsonArray features;
    for (const MapStation& station : map.stations) {
        if (station.position) {
            features += feature(pointGeometry(*station.position), {{QStringLiteral("kind"), QStringLiteral("station")},
                                                                   {QStringLiteral("id"), station.id},
                                                                   {QStringLiteral("name"), station.name}});
        }
    }
    for (const MapStation& station : map.stations) {
        if (station.hasLine())
            features += feature(lineGeometry(bearingParts(station, lineLength)), bearingProperties(station));
    }
    if (const auto& fix = map.fix) {
        const ErrorEllipse ellipse = *map.ellipse;
        const QJsonObject size{{QStringLiteral("probability"), map.probability},
                               {QStringLiteral("semi_major_m"), ellipse.semiMajor},
                               {QStringLiteral("semi_minor_m"), ellipse.semiMinor},
                               {QStringLiteral("major_axis_deg"), ellipse.azimuth}};
        QJsonObject fixProperties = size;
        fixProperties.insert(QStringLiteral("kind"), QStringLiteral("fix"));
        fixProperties.insert(QStringLiteral("chi_square"), fix->chiSquare);
        fixProperties.insert(QStringLiteral("degrees_of_freedom"), fix->degreesOfFreedom);
        features += feature(pointGeometry(fix->position), fixProperties);
        QJsonObject ellipseProperties = size;
        ellipseProperties.insert(QStringLiteral("kind"), QStringLiteral("ellipse"));
        const Line outline = geoshapes::ellipseOutline(fix->position, ellipse);
        features += feature(areaGeometry(geoshapes::splitRingAtDateLine(outline)), ellipseProperties);
    }
    const QJsonObject collection{{QStringLiteral("type"), QStringLiteral("FeatureCollection")},
                                 {QStringLiteral("features"), features}};
    return QJsonDocument(collection).toJson();
}

QByteArray mapexport::kml(const MapSnapshot& map, double lineLength)
{
    KmlWriter writer;
    writer.beginFolder(QStringLiteral("Stations"));
    for (const MapStation& station : map.stations) {
        if (station.position)
            writer.addPoint(station.name, positionText(*station.position), *station.position);
    }
    writer.endFolder();
    writer.beginFolder(QStringLiteral("Bearings"));
    for (const MapStation& station : map.stations) {
        if (station.hasLine())
            writer.addLine(station.name, bearingText(station), bearingParts(station, lineLength));
    }
    writer.endFolder();
    if (const auto& fix = map.fix) {
        writer.beginFolder(QStringLiteral("Fix"));
        writer.addPoint(QStringLiteral("Fix"), map.fixText, fix->position);
        const Line outline = geoshapes::ellipseOutline(fix->position, *map.ellipse);
        writer.addArea(percentText(map.probability), sizeText(*map.ellipse), geoshapes::splitRingAtDateLine(outline));
        writer.endFolder();
    }
    return writer.finished();
}

} // namespace workbench
