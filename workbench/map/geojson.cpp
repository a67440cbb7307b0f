#include "map/geojson.h"

#include "drivers/jsonlines.h"
#include "ztbase/brix/texts.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <optional>

namespace workbench {

namespace {

using Positions = std::vector<GeoPosition>;

QString tr(const char* text)
{
    return QCoreApplication::translate("workbench::GeoJson", text);
}

/// What is wrong, and where. The place is put together on the way out, from the end to the beginning.
struct Fault
{
    QString place;
    QString reason;
    bool endsAll = false; ///< nothing else is to be read either

    [[nodiscard]] Fault in(const QString& member) const
    {
        const bool needsDot = !place.isEmpty() && !place.startsWith(QLatin1Char('['));
        return {member + (needsDot ? QStringLiteral(".") : QString()) + place, reason, endsAll};
    }
    [[nodiscard]] Fault in(int element) const { return in(QStringLiteral("[%1]").arg(element)); }
    [[nodiscard]] QString text() const { return place.isEmpty() ? reason : place + QStringLiteral(": ") + reason; }
};

using Check = std::optional<Fault>; // nothing: all is well

Fault fault(const QString& reason)
{
    return {{}, reason, false};
}

Fault end(const QString& reason)
{
    return {{}, reason, true};
}

/// A value as people are told of it.
QString described(const QJsonValue& value)
{
    constexpr int longest = 40;
    switch (value.type()) {
    case QJsonValue::Array:
        return tr("an array");
    case QJsonValue::Object:
        return tr("an object");
    case QJsonValue::Double:
        return QString::number(value.toDouble(), 'g', 15);
    case QJsonValue::String:
        return QLatin1Char('"') + Brix::OneLine(value.toString(), longest) + QLatin1Char('"');
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Undefined:
        break;
    }
    return tr("nothing");
}

Fault unexpected(const char* expected, const QJsonValue& found)
{
    return fault(tr("expected %1, found %2").arg(tr(expected), described(found)));
}

QString nameIn(const QJsonValue& properties)
{
    const QString member = QStringLiteral("name");
    const QJsonObject object = properties.toObject();
    const QJsonValue exact = object.value(member);
    if (exact.isString())
        return Brix::OneLine(exact.toString(), GeoJson::longestName);
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (it.key().compare(member, Qt::CaseInsensitive) == 0 && it.value().isString())
            return Brix::OneLine(it.value().toString(), GeoJson::longestName);
    }
    return {};
}

class Reader
{
public:
    explicit Reader(const GeoJsonProgress& goesOn)
        : m_goesOn(goesOn)
    {
    }

    [[nodiscard]] std::variant<GeoJson, QString> read(const QJsonObject& root)
    {
        const QString type = root.value(QLatin1String("type")).toString();
        const Check check = type == QLatin1String("FeatureCollection") ? collection(root)
                            : type == QLatin1String("Feature")         ? feature(root)
                                                                       : bareGeometry(root);
        if (check)
            return check->text();
        return std::move(m_result);
    }

private:
    Check collection(const QJsonObject& root)
    {
        const QString member = QStringLiteral("features");
        const QJsonValue value = root.value(member);
        if (!value.isArray())
            return unexpected("an array", value).in(member);
        const QJsonArray features = value.toArray();
        for (int i = 0; i < features.size(); ++i) {
            m_share = static_cast<double>(i) / features.size();
            Check check = goesOn();
            if (!check)
                check = feature(features.at(i));
            if (!check)
                continue;
            const Fault found = check->in(i).in(member);
            if (found.endsAll || features.size() == 1)
                return found;
            ++m_result.omitted;
            if (m_result.omissions.size() < GeoJson::mostOmissionsTold)
                m_result.omissions += found.text();
        }
        if (m_result.omitted > 0 && m_result.omitted == features.size())
            return fault(tr("no feature can be used; %1").arg(m_result.omissions.first()));
        return std::nullopt;
    }

    Check feature(const QJsonValue& value)
    {
        if (value[QLatin1String("type")] != QLatin1String("Feature"))
            return unexpected("\"Feature\"", value[QLatin1String("type")]).in(QStringLiteral("type"));
        const QString member = QStringLiteral("geometry");
        const QJsonValue geometry = value[member];
        if (geometry.isNull())
            return std::nullopt; // a thing without a place
        std::vector<GeoShape> shapes;
        if (const Check check = addGeometry(geometry, shapes, 0))
            return check->in(member);
        return take(std::move(shapes), nameIn(value[QLatin1String("properties")]));
    }

    Check bareGeometry(const QJsonObject& root)
    {
        std::vector<GeoShape> shapes;
        if (Check check = addGeometry(root, shapes, 0))
            return check;
        return take(std::move(shapes), {});
    }

    Check take(std::vector<GeoShape> shapes, const QString& name)
    {
        if (m_result.shapes.size() + shapes.size() > GeoJson::mostShapes)
            return end(tr("there are more than %1 shapes").arg(GeoJson::mostShapes));
        if (!shapes.empty())
            shapes.front().name = name;
        std::move(shapes.begin(), shapes.end(), std::back_inserter(m_result.shapes));
        return std::nullopt;
    }

    Check addGeometry(const QJsonValue& value, std::vector<GeoShape>& shapes, int depth)
    {
        if (!value.isObject())
            return unexpected("a geometry", value);
        const QString type = value[QLatin1String("type")].toString();
        if (type == QLatin1String("GeometryCollection"))
            return addCollection(value[QLatin1String("geometries")], shapes, depth);
        const QString member = QStringLiteral("coordinates");
        const QJsonValue coordinates = value[member];
        GeoShape shape;
        Check check;
        if (type == QLatin1String("Point"))
            check = isEmpty(coordinates) ? std::nullopt : addPoint(coordinates, shape);
        else if (type == QLatin1String("MultiPoint"))
            check = each(coordinates, [&](const QJsonValue& point) { return addPoint(point, shape); });
        else if (type == QLatin1String("LineString"))
            check = isEmpty(coordinates) ? std::nullopt : addLine(coordinates, shape);
        else if (type == QLatin1String("MultiLineString"))
            check = each(coordinates, [&](const QJsonValue& line) { return addLine(line, shape); });
        else if (type == QLatin1String("Polygon"))
            check = addPolygon(coordinates, shape);
        else if (type == QLatin1String("MultiPolygon"))
            check = each(coordinates, [&](const QJsonValue& polygon) { return addPolygon(polygon, shape); });
        else
            return unexpected("a type of GeoJSON", value[QLatin1String("type")]).in(QStringLiteral("type"));
        if (check)
            return check->in(member);
        if (!shape.parts.empty())
            shapes.push_back(std::move(shape));
        return std::nullopt;
    }

    Check addCollection(const QJsonValue& geometries, std::vector<GeoShape>& shapes, int depth)
    {
        const QString member = QStringLiteral("geometries");
        if (depth >= GeoJson::deepestCollection) {
            return fault(tr("there are more than %1 geometry collections within one another")
                             .arg(GeoJson::deepestCollection))
                .in(member);
        }
        const Check check =
            each(geometries, [&](const QJsonValue& geometry) { return addGeometry(geometry, shapes, depth + 1); });
        return check ? check->in(member) : check;
    }

    /// An empty array stands for no geometry.
    static bool isEmpty(const QJsonValue& coordinates)
    {
        return coordinates.isArray() && coordinates.toArray().isEmpty();
    }

    template <typename Take>
    static Check each(const QJsonValue& value, const Take& take)
    {
        if (!value.isArray())
            return unexpected("an array", value);
        const QJsonArray array = value.toArray();
        for (int i = 0; i < array.size(); ++i) {
            if (const Check check = take(array.at(i)))
                return check->in(i);
        }
        return std::nullopt;
    }

    Check addPoint(const QJsonValue& value, GeoShape& shape)
    {
        GeoPosition position;
        if (Check check = readPosition(value, position))
            return check;
        shape.kind = GeoShape::Kind::Points;
        shape.parts.push_back({position});
        return std::nullopt;
    }

    Check addLine(const QJsonValue& value, GeoShape& shape)
    {
        Positions line;
        if (Check check = readPositions(value, line))
            return check;
        if (line.size() < 2)
            return fault(tr("a line needs at least two positions"));
        shape.kind = GeoShape::Kind::Lines;
        shape.parts.push_back(std::move(line));
        return std::nullopt;
    }

    Check addPolygon(const QJsonValue& value, GeoShape& shape)
    {
        shape.kind = GeoShape::Kind::Area;
        return each(value, [&](const QJsonValue& corners) -> Check {
            Positions ring;
            if (Check check = readPositions(corners, ring))
                return check;
            if (ring.size() < 4)
                return fault(tr("a ring needs at least four positions"));
            if (ring.front().latitude != ring.back().latitude || ring.front().longitude != ring.back().longitude)
                return fault(tr("a ring has to end where it begins"));
            shape.parts.push_back(std::move(ring));
            return std::nullopt;
        });
    }

    Check readPositions(const QJsonValue& value, Positions& positions)
    {
        return each(value, [&](const QJsonValue& numbers) {
            GeoPosition position;
            Check check = readPosition(numbers, position);
            if (!check)
                positions.push_back(position);
            return check;
        });
    }

    Check readPosition(const QJsonValue& value, GeoPosition& position)
    {
        constexpr int stride = 16384; // positions between two reports
        if (m_positions % stride == 0) {
            if (Check check = goesOn())
                return check;
        }
        if (++m_positions > GeoJson::mostPositions)
            return end(tr("there are more than %1 positions").arg(GeoJson::mostPositions));
        if (!value.isArray() || value.toArray().size() < 2)
            return unexpected("a longitude and a latitude", value);
        const QJsonArray numbers = value.toArray();
        if (Check check = readDegrees(numbers.at(0), 360.0, "a longitude from -360 to 360", position.longitude))
            return check->in(0);
        if (Check check = readDegrees(numbers.at(1), 90.0, "a latitude from -90 to 90", position.latitude))
            return check->in(1);
        return std::nullopt;
    }

    static Check readDegrees(const QJsonValue& value, double most, const char* expected, double& degrees)
    {
        degrees = value.toDouble();
        if (!value.isDouble() || !(std::abs(degrees) <= most))
            return unexpected(expected, value);
        return std::nullopt;
    }

    Check goesOn() const
    {
        return !m_goesOn || m_goesOn(m_share) ? std::nullopt : Check(end(tr("reading has been cancelled")));
    }

    const GeoJsonProgress& m_goesOn;
    GeoJson m_result;
    double m_share = 0.0; // of the features
    int m_positions = 0;
};

QString placeOf(const QByteArray& text, int offset)
{
    const QByteArray before = text.left(offset);
    return tr("line %1, column %2").arg(JsonLines::lineAt(text, offset)).arg(offset - before.lastIndexOf('\n'));
}

} // namespace

std::variant<GeoJson, QString> parseGeoJson(const QByteArray& text, const GeoJsonProgress& goesOn)
{
    if (text.size() > GeoJson::largestText)
        return tr("it is larger than %1 bytes").arg(GeoJson::largestText);
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError)
        return Fault{placeOf(text, error.offset), error.errorString(), true}.text();
    if (!document.isObject())
        return unexpected("an object", document.array()).text();
    return Reader(goesOn).read(document.object());
}

} // namespace workbench
