#include "drivers/simulatednetwork.h"

#include "drivers/geodesy.h"
#include "drivers/propagation.h"

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

constexpr double radiansPerDegree = 3.14159265358979323846 / 180.0;

bool hasOutage(const ScenarioStation& station, double seconds)
{
    return std::any_of(station.outages.begin(), station.outages.end(),
                       [seconds](const TimeSpan& outage) { return outage.contains(seconds); });
}

bool haveSameSettings(const DfRequest& a, const DfRequest& b)
{
    return a.frequency == b.frequency && a.bandwidth == b.bandwidth && a.averaging == b.averaging && a.mode == b.mode;
}

/// Whether a signal is strong enough for the mode and the operator's level threshold.
bool isLevelSufficient(double level, const DfRequest& request)
{
    if (request.mode == DfMode::Gated)
        return level > request.levelThreshold.value_or(0);
    return !request.levelThreshold || level >= *request.levelThreshold;
}

} // namespace

SimulatedNetwork::SimulatedNetwork(Scenario scenario, quint64 seed, Pacing pacing)
    : PacedSource(pacing)
    , m_scenario(std::move(scenario))
    , m_noise(seed)
{
    m_realClock.start();
}

QString SimulatedNetwork::name() const
{
    return QLatin1String("Simulation ") + m_scenario.name;
}

std::vector<StationInfo> SimulatedNetwork::stations() const
{
    std::vector<StationInfo> stations;
    for (const ScenarioStation& station : m_scenario.stations) {
        stations.push_back(station.info);
        stations.back().available = !hasOutage(station, secondsSinceStart());
    }
    return stations;
}

std::vector<StationInfo> SimulatedNetwork::hriStations() const
{
    return m_scenario.hriStations;
}

std::vector<DfDevice> SimulatedNetwork::devices() const
{
    return m_scenario.devices;
}

std::optional<double> SimulatedNetwork::initialFrequency() const
{
    return m_scenario.frequency;
}

std::optional<int> SimulatedNetwork::measurementsLeft() const
{
    return std::nullopt;
}

QDateTime SimulatedNetwork::now() const
{
    return m_scenario.start.addMSecs(pacing() == Pacing::RealTime ? m_realClock.elapsed() : m_simulatedMs);
}

double SimulatedNetwork::secondsSinceStart() const
{
    return static_cast<double>(m_scenario.start.msecsTo(now())) / 1000.0;
}

void SimulatedNetwork::answer(const DfRequest& request)
{
    m_simulatedMs += measurementDuration(request);
    emit measured(measureNow(request));
}

DfResult SimulatedNetwork::measureNow(const DfRequest& request)
{
    if (!haveSameSettings(request, m_averagedRequest))
        m_averages.clear();
    m_averagedRequest = request;

    DfResult result;
    if (request.frequency > 0.0)
        result.frequency = request.frequency;
    result.date = now().date();
    result.time = now().time();
    std::vector<const ScenarioEmitter*> bearingsOn;
    for (const ScenarioStation& station : m_scenario.stations) {
        const Chance chance = drawChance();
        StationResult& measurement = result.stations.emplace_back();
        measurement.stationId = station.info.id;
        measurement.stationName = station.info.name;
        measurement.position = station.info.position;
        measurement.error = obstacle(station, request.frequency, chance);
        const std::optional<Signal> signal =
            measurement.error == DfError::None ? strongestSignal(station, request) : std::nullopt;
        if (!signal) {
            if (measurement.error == DfError::None)
                measurement.error = DfError::NoSignal;
            m_averages.erase(station.info.id);
            continue;
        }
        const double noise = propagation::noiseLevel(request.bandwidth, station.noiseFigure);
        const double spread =
            propagation::bearingSpread(station.bearingAccuracy, signal->level - noise, request.averaging);
        MeasuredAzimuth bearing{signal->azimuth + spread * chance.normal, spread};
        if (request.mode == DfMode::Continuous)
            bearing = averaged(station.info.id, signal->emitter, bearing);
        measurement.azimuth = geodesy::normalizedAzimuth(bearing.azimuth);
        measurement.sigma = bearing.sigma;
        measurement.quality = propagation::qualityFromSpread(spread);
        measurement.level = signal->level;
        bearingsOn.push_back(signal->emitter);
    }
    result.truth = truth(bearingsOn);
    return result;
}

SimulatedNetwork::Chance SimulatedNetwork::drawChance()
{
    const double percent = 100.0 * m_noise.uniform();
    return {percent, m_noise.normal()};
}

DfError SimulatedNetwork::obstacle(const ScenarioStation& station, double frequency, Chance chance) const
{
    if (!station.info.range)
        return DfError::ScanRangeUndefined;
    if (!station.info.range->contains(frequency))
        return DfError::NotInScanRange;
    if (station.operatingHours && !station.operatingHours->contains(now().time()))
        return DfError::NotInTimeRange;
    if (hasOutage(station, secondsSinceStart()) || chance.percent < station.timeoutPercent)
        return DfError::Timeout;
    return DfError::None;
}

std::optional<SimulatedNetwork::Signal> SimulatedNetwork::strongestSignal(const ScenarioStation& station,
                                                                          const DfRequest& request) const
{
    const double seconds = secondsSinceStart();
    std::optional<Signal> strongest;
    for (const ScenarioEmitter& emitter : m_scenario.emitters) {
        const bool isInBand = std::abs(emitter.frequency - request.frequency) <= request.bandwidth / 2.0;
        if (!isInBand || !emitter.transmitsAt(seconds))
            continue;
        const geodesy::Line line =
            geodesy::line(*station.info.position, geodesy::positionOnTrack(emitter.track, seconds));
        const double loss = propagation::freeSpaceLoss(emitter.frequency, line.distance);
        const double level = propagation::levelFromPower(emitter.eirp - loss);
        if (!strongest || level > strongest->level)
            strongest = Signal{&emitter, line.azimuth, level};
    }
    const double least =
        propagation::noiseLevel(request.bandwidth, station.noiseFigure) + propagation::leastSignalToNoise;
    if (!strongest || strongest->level < least || !isLevelSufficient(strongest->level, request))
        return std::nullopt;
    return strongest;
}

SimulatedNetwork::MeasuredAzimuth SimulatedNetwork::averaged(int stationId, const ScenarioEmitter* emitter,
                                                             MeasuredAzimuth latest)
{
    constexpr double weightOfLatest = 0.25;
    Average& average = m_averages[stationId];
    const double weight = average.emitter == emitter ? weightOfLatest : 1.0;
    average.emitter = emitter;
    average.direction =
        (1.0 - weight) * average.direction + weight * std::polar(1.0, latest.azimuth * radiansPerDegree);
    average.variance =
        (1.0 - weight) * (1.0 - weight) * average.variance + weight * weight * latest.sigma * latest.sigma;
    return {std::arg(average.direction) / radiansPerDegree, std::sqrt(average.variance)};
}

std::optional<TrueEmitter> SimulatedNetwork::truth(const std::vector<const ScenarioEmitter*>& bearingsOn) const
{
    const ScenarioEmitter* mostHeard = nullptr;
    std::ptrdiff_t most = 0;
    for (const ScenarioEmitter& emitter : m_scenario.emitters) {
        const auto count = std::count(bearingsOn.begin(), bearingsOn.end(), &emitter);
        if (count > most) {
            most = count;
            mostHeard = &emitter;
        }
    }
    if (mostHeard == nullptr)
        return std::nullopt;
    return TrueEmitter{mostHeard->name, geodesy::positionOnTrack(mostHeard->track, secondsSinceStart())};
}

} // namespace workbench
