#pragma once

#include "drivers/dfresult.h"

#include <vector>

namespace testsupport {

/// What a network of @p stations measured in a turn (0 to 59), each station something; every turn has other bearings,
/// qualities and levels. For programs that link the drivers.
inline workbench::DfResult networkResult(int stations, int turn)
{
    workbench::DfResult result;
    result.frequency = 433.92e6;
    result.date = QDate(2026, 1, 15);
    result.time = QTime(11, 0, turn);
    for (int id = 1; id <= stations; ++id) {
        workbench::StationResult& station = result.stations.emplace_back();
        station.stationId = id;
        station.stationName = QStringLiteral("Station %1").arg(id);
        station.position = workbench::GeoPosition{47.0 + 0.0001 * id, 6.0 + 0.0001 * id};
        station.azimuth = (id * 31 + turn * 10) % 3600 / 10.0;
        station.quality = 40 + (id + turn) % 60;
        station.level = 20.0 + (id + turn) % 50;
    }
    return result;
}

/// The network that measured @p result.
inline std::vector<workbench::StationInfo> stationsOf(const workbench::DfResult& result)
{
    std::vector<workbench::StationInfo> stations;
    for (const workbench::StationResult& station : result.stations) {
        workbench::StationInfo& info = stations.emplace_back();
        info.id = station.stationId;
        info.name = station.stationName;
    }
    return stations;
}

} // namespace testsupport
