#pragma once

namespace workbench {

/// WGS84, degrees, north and east positive.
struct GeoPosition
{
    double latitude = 0.0;
    double longitude = 0.0;
};

} // namespace workbench
