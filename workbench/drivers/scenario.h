#pragma once

#include "drivers/dfdevice.h"
#include "drivers/dfresult.h"
#include "drivers/loaded.h"

#include <QDateTime>
#include <QTime>

namespace workbench {

/// Seconds since the start of the scenario, the end not included.
struct TimeSpan
{
    double from = 0.0;
    double to = 0.0;

    [[nodiscard]] bool contains(double seconds) const { return from <= seconds && seconds < to; }
};

/// The hours (UTC) of every day in which a station measures, the end not included; past midnight when they end before
/// they begin.
struct OperatingHours
{
    QTime from;
    QTime to;

    [[nodiscard]] bool contains(QTime time) const
    {
        return from < to ? from <= time && time < to : from <= time || time < to;
    }
};

/// One DF station of a scenario.
struct ScenarioStation
{
    StationInfo info;             ///< with a position
    double bearingAccuracy = 1.0; ///< standard deviation of site and instrument in degrees, whatever the signal
    double noiseFigure = 10.0;    ///< dB, of the whole receiving system with the noise that its antenna picks up
    std::optional<OperatingHours> operatingHours; ///< without: always
    std::vector<TimeSpan> outages;                ///< when the station does not answer
    double timeoutPercent = 0.0;                  ///< how many of the other measurements it does not answer
};

/// Where an emitter is at a time.
struct TrackPoint
{
    double time = 0.0; ///< seconds since the start of the scenario
    GeoPosition position;
};

/// One transmitter of a scenario.
struct ScenarioEmitter
{
    QString name;
    double frequency = 0.0; ///< Hz
    double eirp = 0.0;      ///< dBm, the same in all directions
    /// In ascending time and never empty. Between two points the emitter moves along the geodesic at constant speed;
    /// before the first and behind the last it stands still.
    std::vector<TrackPoint> track;
    std::vector<TimeSpan> onAir; ///< when it transmits; empty: always

    [[nodiscard]] bool transmitsAt(double seconds) const;
};

/// A network of DF stations and what there is to hear.
struct Scenario
{
    QString name;
    QDateTime start;        ///< UTC; what the simulated clock shows at first
    double frequency = 0.0; ///< Hz, to which the network is tuned at first
    std::vector<ScenarioStation> stations;
    std::vector<StationInfo> hriStations; ///< the stations of the remote service
    std::vector<ScenarioEmitter> emitters;
    std::vector<DfDevice> devices{
        standardDevice()}; ///< that the network can be equipped with; the first is in use at first
};

/// Reads a scenario file (docs/scenario-format.md). Reports all errors and loads nothing when there is one.
[[nodiscard]] Loaded<Scenario> loadScenario(const QString& file);

} // namespace workbench
