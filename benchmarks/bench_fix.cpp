// The macros that register benchmarks make globals. clazy:excludeall=non-pod-global-static

// Fixes, against the same search with numerical derivatives: central differences of the residuals in place of the exact
// derivatives of geodesics and great circles.

#include "benchmarkmain.h"

#include "drivers/geodesy.h"
#include "drivers/noisegenerator.h"
#include "locate/ellipsoidlines.h"
#include "locate/gaussnewton.h"
#include "locate/positionfix.h"
#include "locate/spherelines.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

using namespace workbench;

namespace {

/// Bearings of stations around an emitter, 20 to 80 km away from it, with errors of 1 degree.
std::vector<Bearing> bearingsOf(int stations, quint64 seed)
{
    const GeoPosition emitter{48.1, 11.6};
    NoiseGenerator noise(seed);
    std::vector<Bearing> bearings;
    for (int i = 0; i < stations; ++i) {
        const double direction = 2.0 * M_PI * i / stations + 0.3;
        const double distance = 0.2 + 0.6 * (i * 7 % 10) / 10.0; // degrees
        const GeoPosition station{emitter.latitude + distance * std::cos(direction),
                                  emitter.longitude + distance * 1.5 * std::sin(direction)};
        bearings.push_back({station, geodesy::line(station, emitter).azimuth + noise.normal(), 1.0, false});
    }
    return bearings;
}
using Network = std::vector<Bearing>;

/// Different measurements of the same network: no branch of the processor shall learn one of them by heart.
std::vector<Network> networksOf(int stations)
{
    std::vector<Network> networks;
    for (quint64 seed = 1; seed <= 64; ++seed)
        networks.push_back(bearingsOf(stations, seed));
    return networks;
}

/// Lines whose equations come from central differences: the residual of each line on both sides along both axes.
template <typename Lines>
class DifferentiatedLines
{
public:
    using Position = typename Lines::Position;
    static constexpr double longestStep = Lines::longestStep;
    static constexpr double resolution = Lines::resolution;

    explicit DifferentiatedLines(const Network& network)
    {
        for (const Bearing& bearing : network)
            m_lines.emplace_back(bearing);
    }

    [[nodiscard]] locate::NormalEquations equations(const Position& position) const
    {
        const double side = 1e6 * resolution;
        const std::array<Position, 4> around{moved(position, {side, 0.0}), moved(position, {-side, 0.0}),
                                             moved(position, {0.0, side}), moved(position, {0.0, -side})};
        locate::NormalEquations result;
        for (const auto& line : m_lines) {
            const auto slope = [&](const Position& ahead, const Position& behind) {
                return (line.residual(behind) - line.residual(ahead)) / (2.0 * side);
            };
            result.add(line.residual(position), slope(around[0], around[1]), slope(around[2], around[3]));
        }
        return result;
    }
    [[nodiscard]] static Position moved(const Position& position, const locate::Step& step)
    {
        return Lines::moved(position, step);
    }

private:
    std::vector<typename Lines::Single> m_lines;
};

struct Ellipsoid
{
    using Position = GeoPosition;
    static constexpr double longestStep = locate::EllipsoidLines::longestStep;
    static constexpr double resolution = locate::EllipsoidLines::resolution;
    static Position moved(const Position& position, const locate::Step& step)
    {
        return locate::EllipsoidLines::moved(position, step);
    }

    /// In standard deviations.
    struct Single
    {
        Bearing bearing;
        explicit Single(const Bearing& given)
            : bearing(given)
        {
        }
        [[nodiscard]] double residual(const Position& position) const
        {
            return locate::sightOf(bearing.station, bearing.azimuth, position).residual / bearing.sigma;
        }
    };
};

struct Sphere
{
    using Position = locate::Vector;
    static constexpr double longestStep = locate::SphereLines::longestStep;
    static constexpr double resolution = locate::SphereLines::resolution;
    static Position moved(const Position& position, const locate::Step& step)
    {
        return locate::SphereLines::moved(position, step);
    }

    /// In standard deviations.
    struct Single
    {
        locate::Vector ahead;
        locate::Vector right;
        double sigma;

        explicit Single(const Bearing& bearing)
            : sigma(bearing.sigma * M_PI / 180.0)
        {
            locate::SphereLines line;
            line.add(bearing.station, bearing.azimuth, sigma);
            const locate::Vector up = line.station(0);
            const double horizontal = std::hypot(up.x, up.y);
            const locate::Vector east{-up.y / horizontal, up.x / horizontal, 0.0};
            const locate::Vector north{-up.z * east.y, up.z * east.x, horizontal};
            const double sine = std::sin(bearing.azimuth * M_PI / 180.0);
            const double cosine = std::cos(bearing.azimuth * M_PI / 180.0);
            ahead = {east.x * sine + north.x * cosine, east.y * sine + north.y * cosine, north.z * cosine};
            right = {east.x * cosine - north.x * sine, east.y * cosine - north.y * sine, -north.z * sine};
        }
        [[nodiscard]] double residual(const Position& position) const
        {
            return -std::atan2(dot(position, right), dot(position, ahead)) / sigma;
        }
        static double dot(const locate::Vector& a, const locate::Vector& b)
        {
            return a.x * b.x + a.y * b.y + a.z * b.z;
        }
    };
};

/// The same search with numerical derivatives, and without the questions that a position is asked at the end.
std::optional<Covariance> differentiatedFix(const Network& network)
{
    locate::SphereLines lines;
    lines.reserve(network.size());
    for (const Bearing& bearing : network)
        lines.add(bearing.station, bearing.azimuth, bearing.sigma * M_PI / 180.0);

    constexpr std::size_t mostCrossings = 66;
    constexpr std::size_t mostDescents = 8;
    std::vector<std::pair<double, locate::Vector>> starts;
    const std::size_t pairs = network.size() * (network.size() - 1) / 2;
    const std::size_t stride = std::max<std::size_t>(1, pairs / mostCrossings);
    std::size_t pair = 0;
    for (std::size_t first = 0; first < network.size(); ++first) {
        for (std::size_t second = first + 1; second < network.size(); ++second, ++pair) {
            locate::Vector position;
            if (pair % stride == 0 && lines.crossing(first, second, position) == locate::Crossing::InFront)
                starts.emplace_back(lines.chiSquare(position), position);
        }
    }
    const std::size_t kept = std::min(starts.size(), mostDescents);
    std::partial_sort(starts.begin(), starts.begin() + static_cast<std::ptrdiff_t>(kept), starts.end(),
                      [](const auto& a, const auto& b) { return a.first < b.first; });

    const DifferentiatedLines<Sphere> sphere(network);
    std::optional<locate::Descent<locate::Vector>> best;
    for (std::size_t i = 0; i < kept; ++i) {
        const auto descent = locate::descend(sphere, starts[i].second);
        if (!best || descent.equations.chiSquare() < best->equations.chiSquare())
            best = descent;
    }
    if (!best)
        return std::nullopt;
    const DifferentiatedLines<Ellipsoid> ellipsoid(network);
    const auto descent = locate::descend(ellipsoid, locate::SphereLines::onEllipsoid(best->position));
    return ellipsoid.equations(descent.position).covariance();
}

void exactDerivatives(benchmark::State& state)
{
    const std::vector<Network> networks = networksOf(static_cast<int>(state.range(0)));
    std::size_t turn = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(positionFix(networks[turn++ % networks.size()]));
    state.counters["perSecond"] = benchmark::Counter(static_cast<double>(turn), benchmark::Counter::kIsRate);
}

void numericalDerivatives(benchmark::State& state)
{
    const std::vector<Network> networks = networksOf(static_cast<int>(state.range(0)));
    std::size_t turn = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(differentiatedFix(networks[turn++ % networks.size()]));
}

BENCHMARK(exactDerivatives)->Arg(4)->Arg(100);
BENCHMARK(numericalDerivatives)->Arg(4)->Arg(100);

} // namespace

DFL_BENCHMARK_MAIN(QCoreApplication)
