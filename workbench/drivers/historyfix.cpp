#include "drivers/historyfix.h"

#include <cmath>
#include <complex>
#include <map>
#include <utility>

namespace workbench {

namespace {

constexpr double radiansPerDegree = 3.14159265358979323846 / 180.0;
constexpr double fullCircle = 360.0; // degrees

/// The bearings of one place. Their mean, weighted by their accuracy, and its accuracy say all that they say of any
/// position; how far they scatter around it says only whether they agree.
class Place
{
public:
    void add(const Bearing& bearing)
    {
        m_bearings.push_back(bearing);
        m_direction += std::polar(weightOf(bearing), bearing.azimuth * radiansPerDegree);
    }

    [[nodiscard]] int count() const { return static_cast<int>(m_bearings.size()); }

    [[nodiscard]] Bearing mean() const
    {
        // Somewhere among the bearings: differences from it do not run round the circle.
        const double middle = std::arg(m_direction) / radiansPerDegree;
        double weights = 0.0;
        double turn = 0.0;
        for (const Bearing& bearing : m_bearings) {
            weights += weightOf(bearing);
            turn += weightOf(bearing) * std::remainder(bearing.azimuth - middle, fullCircle);
        }
        Bearing mean = m_bearings.front();
        mean.azimuth = middle + turn / weights;
        mean.sigma = std::max(1.0 / std::sqrt(weights), leastSigma);
        return mean;
    }

    /// What the bearings add to chi-square, whatever the position.
    [[nodiscard]] double scatter() const
    {
        const double azimuth = mean().azimuth;
        double sum = 0.0;
        for (const Bearing& bearing : m_bearings) {
            const double residual = std::remainder(bearing.azimuth - azimuth, fullCircle);
            sum += weightOf(bearing) * residual * residual;
        }
        return sum;
    }

private:
    static double weightOf(const Bearing& bearing) { return 1.0 / (bearing.sigma * bearing.sigma); }

    std::vector<Bearing> m_bearings;
    std::complex<double> m_direction;
};

/// Counts the bearings that were combined as what they are, except where they say nothing about the position.
void countScatter(Fix& fix, const std::vector<Place>& places)
{
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (fix.bearings[i].use != BearingUse::Used)
            continue;
        fix.chiSquare += places[i].scatter();
        fix.degreesOfFreedom += places[i].count() - 1;
    }
}

} // namespace

HistoryFix historyFix(const std::vector<DfResult>& results, int qualityThreshold)
{
    HistoryFix history;
    history.results = static_cast<int>(results.size());
    if (results.empty()) {
        history.located = QStringLiteral("No fix: there are no stored results of the chosen time span and frequency.");
        return history;
    }
    std::vector<Place> places;
    std::map<std::pair<double, double>, std::size_t> indices; // of the places, by latitude and longitude
    for (const DfResult& result : results) {
        for (const Bearing& bearing : bearingsForFix(result, qualityThreshold)) {
            if (bearing.excluded || !isUsable(bearing))
                continue;
            ++history.bearings;
            const auto position = std::make_pair(bearing.station.latitude, bearing.station.longitude);
            const auto [found, isNew] = indices.try_emplace(position, places.size());
            if (isNew)
                places.emplace_back();
            places[found->second].add(bearing);
        }
    }

    std::vector<Bearing> means;
    means.reserve(places.size());
    for (const Place& place : places)
        means.push_back(place.mean());
    FixResult fix = positionFix(means);
    if (const auto* const reason = std::get_if<NoFix>(&fix)) {
        history.located = explanation(*reason);
        return history;
    }
    countScatter(std::get<Fix>(fix), places);
    history.located = std::get<Fix>(std::move(fix));
    return history;
}

} // namespace workbench
