#pragma once

#include "locate/geoposition.h"

#include <QDateTime>
#include <QMetaType>
#include <QString>

#include <cmath>
#include <optional>
#include <vector>

namespace workbench {

/// Hz, both ends belong to it.
struct FrequencyRange
{
    double low = 0.0;
    double high = 0.0;

    [[nodiscard]] bool contains(double frequency) const { return low <= frequency && frequency <= high; }
};

/// One DF station as its network describes it.
struct StationInfo
{
    int id = 0; ///< the DF identifier, at least 1 and unique in its network
    QString name;
    std::optional<GeoPosition> position;
    std::optional<FrequencyRange> range;
    bool available = true;
    bool scan = false;     ///< can scan
    bool wideband = false; ///< can measure wideband
};

/// Why a station has no bearing, by the numbers that the result values carry.
enum class DfError : int
{
    None = 0,
    NotInScanRange = -1,
    ScanRangeUndefined = -2,
    NotInTimeRange = -3,
    Timeout = -14,
    NoSignal = -17,
};

/// What one station measured. What is absent was not measured or not recorded.
struct StationResult
{
    int stationId = 0;
    QString stationName;
    std::optional<GeoPosition> position; ///< of the station
    std::optional<double> azimuth;       ///< degrees clockwise from true north, 0 <= azimuth < 360
    std::optional<double> sigma;         ///< standard deviation of the azimuth, degrees
    std::optional<double> quality;       ///< percent
    std::optional<double> level;         ///< dBµV
    DfError error = DfError::None;
};

/// A quality as operators see it and compare it with their threshold.
[[nodiscard]] inline int wholePercent(double quality)
{
    return static_cast<int>(std::lround(quality));
}

/// Who really transmitted, where a simulation or a survey knows it.
struct TrueEmitter
{
    QString name;
    GeoPosition position;
};

/// One DF measurement of the whole network.
struct DfResult
{
    std::optional<double> frequency; ///< Hz
    QDate date;                      ///< UTC date; invalid when unknown
    QTime time;                      ///< UTC time of day; invalid when unknown
    std::vector<StationResult> stations;
    std::optional<TrueEmitter> truth;
};

} // namespace workbench

Q_DECLARE_METATYPE(workbench::DfResult)
