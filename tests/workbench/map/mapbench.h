#pragma once

#include "map/mapmodel.h"

#include <vector>

namespace mapbench {

struct Shot
{
    int id;
    double latitude;
    double longitude;
    double azimuth;
    double quality;
};

inline workbench::DfResult result(const std::vector<Shot>& shots)
{
    workbench::DfResult result;
    result.frequency = 155500000.0;
    result.date = QDate(2026, 5, 14);
    result.time = QTime(9, 30, 5);
    for (const Shot& shot : shots) {
        workbench::StationResult station;
        station.stationId = shot.id;
        station.stationName = QStringLiteral("S%1").arg(shot.id);
        station.position = workbench::GeoPosition{shot.latitude, shot.longitude};
        station.azimuth = shot.azimuth;
        station.quality = shot.quality;
        station.level = 31.5;
        result.stations.push_back(station);
    }
    return result;
}

/// Four stations about 50.09 N, 6.65 E; with sigma 1.5 degrees the fix is at 50.0906117 N, 6.6478048 E.
inline std::vector<Shot> fourStations()
{
    return {{1, 50.0, 6.0, 77.3, 90.0},
            {2, 50.3, 7.0, 227.0, 60.0},
            {3, 49.7, 7.2, 319.1, 75.0},
            {4, 50.5, 6.3, 152.6, 30.0}};
}

/// Three stations on both sides of the date line; the emitter is at 18.5 S, 179.5 W.
inline std::vector<Shot> acrossTheDateLine()
{
    return {{1, -17.5, 177.0, 107.161344, 90.0},
            {2, -16.0, -178.0, 209.745784, 90.0},
            {3, -21.0, -175.5, 302.740650, 90.0}};
}

} // namespace mapbench
