#include "locate/positionfix.h"

#include "locate/ellipsoidlines.h"
#include "locate/gaussnewton.h"
#include "locate/significance.h"
#include "locate/spherelines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace workbench {

using namespace locate;

namespace {

constexpr double degree = 0.017453292519943295;

// All pairs of a dozen bearings are looked at; of more bearings a sample of the pairs is enough.
constexpr std::size_t mostCrossings = 66;
constexpr std::size_t mostDescents = 8;

/// A place from which to look for the best position.
struct Start
{
    Vector position;
    double chiSquare = 0.0;

    bool operator<(const Start& other) const { return chiSquare < other.chiSquare; }
};

struct Starts
{
    std::array<Start, mostCrossings> places;
    std::size_t count = 0;
    bool anyBehind = false; ///< some lines meet behind a station
};

/// Where descents ended on the sphere.
struct Minima
{
    std::array<Descent<Vector>, mostDescents> found; ///< different positions
    std::size_t count = 0;
    /// The least chi-square of descents that led round the Earth: what bearings have for a best position that diverge.
    double leastFarAway = std::numeric_limits<double>::infinity();
};

BearingUse useOf(const Bearing& bearing)
{
    if (!isUsable(bearing))
        return BearingUse::Unusable;
    return bearing.excluded ? BearingUse::Excluded : BearingUse::Used;
}

template <typename Lines>
Lines linesOf(const std::vector<Bearing>& bearings)
{
    Lines lines;
    lines.reserve(bearings.size());
    for (const Bearing& bearing : bearings) {
        if (useOf(bearing) == BearingUse::Used)
            lines.add(bearing.station, bearing.azimuth, bearing.sigma * degree);
    }
    return lines;
}

/// The least of the numbers that were added, as many as there are descents.
class LeastOnes
{
public:
    LeastOnes() { m_numbers.fill(std::numeric_limits<double>::infinity()); }
    /// Infinite as long as there are fewer numbers than descents.
    [[nodiscard]] double greatest() const { return m_numbers.back(); }
    void add(double number)
    {
        const auto place = std::upper_bound(m_numbers.begin(), m_numbers.end(), number);
        if (place == m_numbers.end())
            return;
        std::copy_backward(place, m_numbers.end() - 1, m_numbers.end());
        *place = number;
    }

private:
    std::array<double, mostDescents> m_numbers; // ascending
};

/// The crossings of all pairs of lines, or of an even sample of them when there are many.
Starts crossingsOf(const SphereLines& lines)
{
    const std::size_t count = lines.size();
    const std::size_t pairs = count * (count - 1) / 2;
    const std::size_t sample = std::min(pairs, mostCrossings);

    Starts starts;
    LeastOnes leastOnes;
    std::size_t first = 0;
    std::size_t pairsBefore = 0; // those of lines before the first
    for (std::size_t i = 0; i < sample; ++i) {
        const std::size_t pair = i * pairs / sample;
        while (pair - pairsBefore >= count - 1 - first) {
            pairsBefore += count - 1 - first;
            ++first;
        }
        const std::size_t second = first + 1 + (pair - pairsBefore);
        Start& start = starts.places[starts.count];
        switch (lines.crossing(first, second, start.position)) {
        case Crossing::InFront:
            // How far behind the best ones it is does not matter.
            start.chiSquare = lines.chiSquare(start.position, leastOnes.greatest());
            leastOnes.add(start.chiSquare);
            ++starts.count;
            break;
        case Crossing::Behind:
            starts.anyBehind = true;
            break;
        case Crossing::Parallel:
            break;
        }
    }
    return starts;
}

/// Leaves the best starts at the front and says how many.
std::size_t keepBest(Starts& starts)
{
    const std::size_t kept = std::min(starts.count, mostDescents);
    const auto begin = starts.places.begin();
    std::partial_sort(begin, begin + kept, begin + starts.count);
    return kept;
}

/// True when the position is one that is known, as far as the bearings can tell.
bool isKnown(const Minima& minima, const Vector& position)
{
    constexpr double sameDeviations = 0.1;
    const auto end = minima.found.begin() + minima.count;
    return std::any_of(minima.found.begin(), end, [&position](const Descent<Vector>& other) {
        const Step step = SphereLines::stepBetween(other.position, position);
        return other.equations.squaredDeviations(step) < sameDeviations * sameDeviations;
    });
}

Minima minimaOnSphere(const SphereLines& lines, Starts& starts)
{
    Minima minima;
    const std::size_t kept = keepBest(starts);
    for (std::size_t i = 0; i < kept; ++i) {
        const auto descent = descend(lines, starts.places[i].position);
        if (lines.isFarFromAll(descent.position))
            minima.leastFarAway = std::min(minima.leastFarAway, descent.equations.chiSquare());
        else if (!isKnown(minima, descent.position))
            minima.found[minima.count++] = descent;
    }
    return minima;
}

bool isFarAwayBest(const Minima& minima)
{
    return std::none_of(minima.found.begin(), minima.found.begin() + minima.count, [&minima](const auto& descent) {
        return descent.equations.chiSquare() <= minima.leastFarAway;
    });
}

/// The station at which chi-square is less than at all minima, if there is one. Towards a station chi-square falls to a
/// value that no descent reaches, for at the station itself its bearing has no direction.
std::optional<std::size_t> betterStation(const SphereLines& lines, const Minima& minima)
{
    constexpr double negligible = 0.01;
    double least = minima.leastFarAway;
    for (std::size_t i = 0; i < minima.count; ++i) {
        const auto& descent = minima.found[i];
        // One that goes on for ever may have come a little nearer to the station than this can tell.
        const double margin = descent.end == DescentEnd::Converged ? 0.0 : negligible;
        least = std::min(least, descent.equations.chiSquare() + margin);
    }
    std::optional<std::size_t> better;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const double chiSquare = lines.chiSquareAtStation(i, least);
        if (chiSquare < least) {
            least = chiSquare;
            better = i;
        }
    }
    return better;
}

/// The best of the minima, followed on the ellipsoid.
std::variant<GeoPosition, NoFix> bestPosition(const EllipsoidLines& lines, const Minima& minima)
{
    std::optional<Descent<GeoPosition>> best;
    bool anyIndeterminate = false;
    for (std::size_t i = 0; i < minima.count; ++i) {
        const auto descent = descend(lines, SphereLines::onEllipsoid(minima.found[i].position));
        anyIndeterminate = anyIndeterminate || descent.end == DescentEnd::Indeterminate;
        const bool isBetter = !best || descent.equations.chiSquare() < best->equations.chiSquare();
        if (descent.end == DescentEnd::Converged && isBetter)
            best = descent;
    }
    if (best)
        return best->position;
    return anyIndeterminate ? NoFix::ParallelLines : NoFix::NoConvergence;
}

/// All about a position that was found, or why it will not do.
FixResult assessed(const std::vector<Bearing>& bearings, const GeoPosition& position, const FixLimits& limits)
{
    constexpr double ahead = 90.0;     // degrees
    constexpr double atStation = 0.01; // m
    constexpr double mostPull = 3.0;   // standard deviations; 0.3 percent of all errors are greater

    Fix fix;
    fix.position = position;
    fix.bearings.reserve(bearings.size());
    fix.degreesOfFreedom = -2;
    NormalEquations equations;
    double farthest = 0.0;
    bool isBehind = false;
    for (const Bearing& bearing : bearings) {
        BearingCheck& check = fix.bearings.emplace_back();
        check.use = useOf(bearing);
        if (check.use == BearingUse::Unusable)
            continue;
        const Sight sight = sightOf(bearing.station, bearing.azimuth, position);
        check.distance = sight.distance;
        if (sight.distance < atStation) {
            if (check.use == BearingUse::Used)
                check.use = BearingUse::AtFix;
            continue;
        }
        check.residual = sight.residual;
        if (check.use == BearingUse::Excluded)
            continue;
        addTo(equations, sight, bearing.sigma * degree);
        ++fix.degreesOfFreedom;
        farthest = std::max(farthest, sight.distance);
        isBehind = isBehind || std::abs(sight.residual) > ahead;
    }

    const auto covariance = equations.covariance();
    if (!covariance)
        return NoFix::ParallelLines;
    // At a station the other bearings may pull further behind it than their errors explain.
    if (isBehind || equations.gain(*equations.solution()) > mostPull * mostPull)
        return NoFix::BehindStation;
    if (standardEllipse(*covariance).semiMajor * leastSignificance > farthest)
        return NoFix::ParallelLines;
    if (farthest > limits.maxDistance.value_or(farthest))
        return NoFix::OutsideMaxRange;
    fix.covariance = *covariance;
    fix.chiSquare = equations.chiSquare();
    return fix;
}

} // namespace

bool isUsable(const Bearing& bearing)
{
    return std::abs(bearing.station.latitude) <= 90.0 && std::isfinite(bearing.station.longitude) &&
           std::isfinite(bearing.azimuth) && bearing.sigma >= leastSigma && bearing.sigma <= greatestSigma;
}

QString explanation(NoFix reason)
{
    switch (reason) {
    case NoFix::TooFewBearings:
        return QStringLiteral("No fix: it takes usable bearings from at least two different positions.");
    case NoFix::ParallelLines:
        return QStringLiteral("No fix: within their accuracy the lines of bearing are parallel or lie on one line.");
    case NoFix::BehindStation:
        return QStringLiteral("No fix: the lines of bearing do not meet in front of all stations.");
    case NoFix::NoConvergence:
        return QStringLiteral("No fix: the search found no position that fits the bearings best.");
    case NoFix::OutsideMaxRange:
        return QStringLiteral("No fix: the position found is further from a station than allowed.");
    }
    return {};
}

FixResult positionFix(const std::vector<Bearing>& bearings, const FixLimits& limits)
{
    const auto sphere = linesOf<SphereLines>(bearings);
    if (!sphere.haveDifferentStations())
        return NoFix::TooFewBearings;

    Starts starts = crossingsOf(sphere);
    const NoFix noMeeting = starts.anyBehind ? NoFix::BehindStation : NoFix::ParallelLines;
    if (starts.count == 0)
        return noMeeting;

    const Minima minima = minimaOnSphere(sphere, starts);
    if (const auto station = betterStation(sphere, minima))
        return assessed(bearings, SphereLines::onEllipsoid(sphere.station(*station)), limits);
    if (isFarAwayBest(minima))
        return noMeeting;
    const auto position = bestPosition(linesOf<EllipsoidLines>(bearings), minima);
    if (const auto* reason = std::get_if<NoFix>(&position))
        return *reason;
    return assessed(bearings, std::get<GeoPosition>(position), limits);
}

} // namespace workbench
