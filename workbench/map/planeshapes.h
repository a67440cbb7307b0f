#pragma once

#include "map/geojson.h"
#include "map/mapprojection.h"

#include <QPainterPath>
#include <QPolygonF>
#include <QRectF>

#include <array>
#include <optional>
#include <vector>

namespace workbench {

/// A GeoShape on the plane of the map, ready to be painted.
struct PlaneShape
{
    /// What to paint at a scale.
    struct Drawing
    {
        QPainterPath area;            ///< to be filled, even-odd; no outline
        std::vector<QPolygonF> lines; ///< lines, and the outlines of areas
    };
    /// How far (m) neighbouring points of a drawing are apart at least, from fine to coarse.
    static constexpr std::array<double, 4> details{0.0, 250.0, 2500.0, 25000.0};

    GeoShape::Kind kind = GeoShape::Kind::Points;
    QString name;
    QPointF namePlace;
    QRectF bounds;
    QPolygonF points;                             ///< of GeoShape::Kind::Points
    std::array<Drawing, details.size()> drawings; ///< of the others

    /// The coarsest one that looks the same at this scale.
    [[nodiscard]] const Drawing& drawingAt(double metresPerPixel) const;
};

/// Puts shapes on the plane of a map. A line is straight on a plate of longitudes and latitudes, as GeoJSON has it (RFC
/// 7946, section 3.1.1), and so mostly curved here. From one position to the next it takes the shorter way round the
/// Earth; a full turn goes round it. A ring around the Earth encloses the pole of the hemisphere in which it begins.
/// Where an area was cut along the date line or at a pole it has no outline.
///
/// Nothing when @p goesOn wants no more. Any thread.
[[nodiscard]] std::optional<std::vector<PlaneShape>>
onPlane(const std::vector<GeoShape>& shapes, const MapProjection& projection, const GeoJsonProgress& goesOn = {});

} // namespace workbench
