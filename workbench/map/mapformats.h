#pragma once

#include "drivers/dfresult.h"
#include "locate/errorellipse.h"

#include <QString>

/// How the map writes numbers.
namespace workbench {

/// The name of a station for the screen, as one line of bounded length.
[[nodiscard]] QString stationText(const QString& name);
/// A number with so many decimals; what rounds to zero has no sign.
[[nodiscard]] QString fixedText(double number, int decimals);
/// "77.3°", at least 0 and less than 360.
[[nodiscard]] QString azimuthText(double azimuth);
/// "50.09061° N  6.64780° E", about a metre.
[[nodiscard]] QString positionText(const GeoPosition& position);
/// "50.0906117, 6.6478048", latitude first, north and east positive: what other programs take.
[[nodiscard]] QString coordinatesText(const GeoPosition& position);
/// "50.2° N" with the decimals that multiples of @p step (degrees) need; "0°" on the equator.
[[nodiscard]] QString latitudeText(double latitude, double step);
/// The same from -180 to 180: "7° E", "0°", "180°".
[[nodiscard]] QString longitudeText(double longitude, double step);
/// The semi axes of an ellipse: "2369 m × 1832 m".
[[nodiscard]] QString sizeText(const ErrorEllipse& ellipse);
/// A probability as "95 %".
[[nodiscard]] QString percentText(double probability);

} // namespace workbench
