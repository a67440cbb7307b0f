#pragma once

#include <QByteArray>

namespace workbench {

struct MapSnapshot;

/// What the map shows, for other programs. WGS84; bearings as geodesics, cut at the date line together with the
/// ellipse. Bearings of earlier results are not part of it. @p lineLength: of the bearings, in metres. Any thread.
namespace mapexport {

/// One row for each station with a bearing, in the order of the stations; the fix stands in every row. RFC 4180 with a
/// header line; a field that is not known is empty. Columns: time_utc, frequency_hz, station, latitude_deg,
/// longitude_deg, azimuth_deg, quality_percent, level_dbuv, use, residual_deg, distance_m, fix_latitude_deg,
/// fix_longitude_deg, semi_major_m, semi_minor_m, major_axis_deg, probability.
[[nodiscard]] QByteArray csvText(const MapSnapshot& map);

/// A feature collection (RFC 7946). The property "kind" tells "station", "bearing", "fix" and "ellipse" apart.
[[nodiscard]] QByteArray geoJson(const MapSnapshot& map, double lineLength);

/// KML 2.2 with the folders "Stations", "Bearings" and "Fix".
[[nodiscard]] QByteArray kml(const MapSnapshot& map, double lineLength);

} // namespace mapexport

} // namespace workbench
