#pragma once

#include "locate/geoposition.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <variant>
#include <vector>

namespace workbench {

/// Something on the Earth's surface that a map can show behind everything else. Between two positions a line is
/// straight on a plate of longitudes and latitudes.
struct GeoShape
{
    enum class Kind
    {
        Points, ///< each part is one position
        Lines,  ///< each part is a line of at least two positions
        Area,   ///< each part is a closed ring of at least four; what lies within an odd number of them belongs to it
    };

    Kind kind = Kind::Points;
    QString name; ///< one line, at most GeoJson::longestName characters; may be empty
    std::vector<std::vector<GeoPosition>> parts;
};

/// What a GeoJSON text holds.
struct GeoJson
{
    static constexpr int largestText = 64 * 1024 * 1024; ///< bytes
    static constexpr int mostPositions = 1000000;
    static constexpr int mostShapes = 100000;
    static constexpr int deepestCollection = 8; ///< geometry collections within one another
    static constexpr int longestName = 100;     ///< characters
    static constexpr int mostOmissionsTold = 10;

    std::vector<GeoShape> shapes;
    int omitted = 0;       ///< number of features that are not among the shapes because something is wrong with them
    QStringList omissions; ///< where the first of these are wrong, and what it is
};

/// Told how much is done, from 0 to 1; false: there shall be no more.
using GeoJsonProgress = std::function<bool(double share)>;

/// Reads a GeoJSON text (RFC 7946): a geometry, a feature or a collection of features. What is left of a feature whose
/// geometry is partly wrong is nothing: it is told among the omissions, and the others are read. Latitudes are from -90
/// to 90 and longitudes from -360 to 360; heights and members that the format does not know are passed over. The first
/// shape of a feature carries the text of its property "name", in whichever case that is written.
///
/// Else why nothing of the text can be used: it is no JSON or no GeoJSON, one of the bounds of GeoJson is exceeded, no
/// feature is right, or @p goesOn wants no more. The place is a line and column, or a path such as
/// "features[3].geometry.coordinates[0]"; no full stop at the end. Any thread.
[[nodiscard]] std::variant<GeoJson, QString> parseGeoJson(const QByteArray& text, const GeoJsonProgress& goesOn = {});

} // namespace workbench
