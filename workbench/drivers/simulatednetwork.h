#pragma once

#include "drivers/noisegenerator.h"
#include "drivers/pacedsource.h"
#include "drivers/scenario.h"

#include <QElapsedTimer>

#include <complex>
#include <map>

namespace workbench {

/// Measures what the stations of a scenario receive of its emitters.
///
/// A station has no bearing for the first of these reasons that applies: its range is not known (ScanRangeUndefined),
/// the tuned frequency lies outside it (NotInScanRange), it is outside its operating hours (NotInTimeRange), it does
/// not answer (Timeout), there is nothing to measure (NoSignal): no emitter on the air within half the bandwidth around
/// the tuned frequency, or the strongest of them too weak for the station or below the level threshold. The strongest
/// emitter is chosen at each station by itself. A station without a bearing tells no level either.
///
/// Bearing, level and quality follow drivers/propagation.h; the bearing is the forward azimuth of the geodesic from the
/// station to the emitter (WGS84) plus normally distributed noise. DfMode::Gated measures only while the level is above
/// the level threshold, or above 0 dBµV when none is given; DfMode::Continuous averages each station's bearing over
/// successive measurements of the same emitter with the same settings, the latest with a weight of a quarter. The
/// stated accuracy of a bearing is that of its noise.
///
/// The same scenario, seed and requests give the same results on every machine (with Pacing::RealTime the clock has a
/// part in it). The truth of a result is the emitter on which most stations have a bearing, of several the first in the
/// scenario.
class SimulatedNetwork final : public PacedSource
{
    Q_OBJECT
public:
    SimulatedNetwork(Scenario scenario, quint64 seed, Pacing pacing);

    [[nodiscard]] QString name() const override;
    /// A station is available while it has no outage.
    [[nodiscard]] std::vector<StationInfo> stations() const override;
    [[nodiscard]] std::vector<StationInfo> hriStations() const override;
    [[nodiscard]] std::vector<DfDevice> devices() const override;
    [[nodiscard]] std::optional<double> initialFrequency() const override;
    [[nodiscard]] std::optional<int> measurementsLeft() const override;

    /// What the simulated clock shows (UTC). It starts with the scenario; with Pacing::RealTime it runs, with
    /// Pacing::Immediate each answered measurement advances it by its duration.
    [[nodiscard]] QDateTime now() const;

private:
    /// The random numbers of one station in one measurement. They are drawn whether or not they are needed, so that one
    /// station's fate does not change the others' noise.
    struct Chance
    {
        double percent = 0.0; ///< uniform in [0, 100)
        double normal = 0.0;  ///< standard normal
    };
    /// An emitter as one station receives it.
    struct Signal
    {
        const ScenarioEmitter* emitter = nullptr;
        double azimuth = 0.0; ///< true bearing, degrees
        double level = 0.0;   ///< dBµV
    };
    struct MeasuredAzimuth
    {
        double azimuth = 0.0; ///< degrees
        double sigma = 0.0;   ///< standard deviation, degrees
    };
    /// Bearings of one station on one emitter, averaged as directions.
    struct Average
    {
        const ScenarioEmitter* emitter = nullptr;
        std::complex<double> direction;
        double variance = 0.0; ///< degrees²
    };

    void answer(const DfRequest& request) override;
    [[nodiscard]] DfResult measureNow(const DfRequest& request);
    [[nodiscard]] Chance drawChance();
    [[nodiscard]] DfError obstacle(const ScenarioStation& station, double frequency, Chance chance) const;
    [[nodiscard]] std::optional<Signal> strongestSignal(const ScenarioStation& station, const DfRequest& request) const;
    [[nodiscard]] MeasuredAzimuth averaged(int stationId, const ScenarioEmitter* emitter, MeasuredAzimuth latest);
    [[nodiscard]] std::optional<TrueEmitter> truth(const std::vector<const ScenarioEmitter*>& bearingsOn) const;
    [[nodiscard]] double secondsSinceStart() const;

    Scenario m_scenario;
    NoiseGenerator m_noise;
    QElapsedTimer m_realClock;
    qint64 m_simulatedMs = 0;
    std::map<int, Average> m_averages; // by station, in continuous mode
    DfRequest m_averagedRequest;
};

} // namespace workbench
