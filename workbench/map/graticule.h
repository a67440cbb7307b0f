#pragma once

#include "map/mapprojection.h"

#include <QPolygonF>
#include <QRectF>
#include <QString>

#include <vector>

namespace workbench {

/// A parallel or meridian of the map.
struct GraticuleLine
{
    QString label; ///< "50.2° N", "7° E"
    bool isMeridian = false;
    QPolygonF points; ///< on the plane of the map
};

/// The parallels and meridians at whole steps through @p area of the plane, at least about 90 pixels apart. Steps are
/// 1, 2 or 5 times a power of ten degrees up to 30. Around a pole and on a map of the whole Earth they go all the way
/// round.
[[nodiscard]] std::vector<GraticuleLine> graticule(const MapProjection& projection, const QRectF& area,
                                                   double metresPerPixel);

/// A length on the map and what is written on it.
struct ScaleBar
{
    double length = 0.0; ///< m
    QString text;        ///< "500 m", "20 km"
};

/// The longest bar of 1, 2 or 5 times a power of ten metres that is no longer than @p longestPixels.
[[nodiscard]] ScaleBar scaleBar(double metresPerPixel, double longestPixels);

} // namespace workbench
