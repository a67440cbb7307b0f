// How good fixes are: simulated bearings with normally distributed errors on known positions.
//
// For each network it compares the root mean square error of the fixes with the Cramér-Rao bound, below which no
// unbiased estimate comes, and counts how often the error ellipses hold the true position. Ends with 1 when a goal is
// missed.

#include "drivers/geodesy.h"
#include "drivers/noisegenerator.h"
#include "locate/ellipsoidlines.h"
#include "locate/positionfix.h"

#include <array>
#include <cmath>
#include <cstdio>

using namespace workbench;

namespace {

constexpr double sigma = 1.0; // degrees, of all bearings
constexpr int fixesPerNetwork = 20000;
constexpr std::array<double, 3> probabilities{0.50, 0.90, 0.95};
constexpr double greatestRatio = 1.05;      // root mean square error to bound
constexpr double greatestShareError = 0.01; // share of truths within an ellipse

struct Network
{
    const char* name;
    std::vector<GeoPosition> stations;
    GeoPosition emitter;
};

struct Statistics
{
    double bound = 0.0;             ///< m
    double rms = 0.0;               ///< m
    std::array<double, 3> shares{}; ///< of truths within the ellipses
    int withoutFix = 0;
};

std::vector<Network> networks()
{
    return {
        {"four stations around", {{50.0, 6.0}, {50.3, 7.0}, {49.7, 7.2}, {50.5, 6.3}}, {50.1, 6.65}},
        {"two stations, right angle", {{48.0, 11.0}, {48.0, 11.5}}, {48.17, 11.25}},
        {"four stations to one side", {{40.0, -4.0}, {40.0, -3.8}, {40.05, -3.6}, {39.97, -3.4}}, {40.3, -3.7}},
        {"date line and south", {{-17.5, 177.0}, {-16.0, -178.0}, {-21.0, -175.5}}, {-18.5, -179.5}},
        {"round the pole", {{88.0, 0.0}, {88.5, 100.0}, {88.2, 200.0}, {89.0, 300.0}}, {89.8, 40.0}},
    };
}

/// Square of the length of the error a bound allows: the trace of the covariance at the true position.
double boundOf(const Network& network)
{
    locate::NormalEquations equations;
    for (const GeoPosition& station : network.stations)
        locate::addTo(equations, locate::sightOf(station, 0.0, network.emitter), sigma * M_PI / 180.0);
    const auto covariance = equations.covariance();
    return covariance ? std::sqrt(covariance->east + covariance->north) : 0.0;
}

/// How many standard deviations the true position is away from a fix, squared.
double squaredDeviations(const Fix& fix, const geodesy::Line& error)
{
    const double east = error.distance * std::sin(error.azimuth * M_PI / 180.0);
    const double north = error.distance * std::cos(error.azimuth * M_PI / 180.0);
    const Covariance& c = fix.covariance;
    return (c.north * east * east - 2.0 * c.eastNorth * east * north + c.east * north * north) /
           (c.east * c.north - c.eastNorth * c.eastNorth);
}

Statistics simulate(const Network& network, quint64 seed)
{
    NoiseGenerator noise(seed);
    std::vector<Bearing> bearings;
    std::vector<double> azimuths;
    for (const GeoPosition& station : network.stations) {
        azimuths.push_back(geodesy::line(station, network.emitter).azimuth);
        bearings.push_back({station, 0.0, sigma, false});
    }

    Statistics statistics;
    statistics.bound = boundOf(network);
    double squares = 0.0;
    for (int i = 0; i < fixesPerNetwork; ++i) {
        for (std::size_t k = 0; k < bearings.size(); ++k)
            bearings[k].azimuth = azimuths[k] + sigma * noise.normal();
        const FixResult result = positionFix(bearings);
        const auto* fix = std::get_if<Fix>(&result);
        if (!fix) {
            ++statistics.withoutFix;
            continue;
        }
        const geodesy::Line error = geodesy::line(fix->position, network.emitter);
        squares += error.distance * error.distance;
        const double deviations = squaredDeviations(*fix, error);
        for (std::size_t k = 0; k < probabilities.size(); ++k) {
            if (deviations <= -2.0 * std::log1p(-probabilities[k]))
                statistics.shares[k] += 1.0 / fixesPerNetwork;
        }
    }
    statistics.rms = std::sqrt(squares / (fixesPerNetwork - statistics.withoutFix));
    return statistics;
}

bool meetsGoals(const Statistics& statistics)
{
    // Written so that a NaN fails.
    bool meets = statistics.withoutFix == 0 && statistics.rms <= greatestRatio * statistics.bound;
    for (std::size_t k = 0; k < probabilities.size(); ++k)
        meets = meets && std::abs(statistics.shares[k] - probabilities[k]) <= greatestShareError;
    return meets;
}

} // namespace

int main()
{
    std::printf("%d fixes for each network, bearings with a standard deviation of %g degree\n\n", fixesPerNetwork,
                sigma);
    std::printf("%-28s %9s %9s %7s %7s %7s %7s %7s\n", "network", "bound/m", "rms/m", "ratio", "50 %", "90 %", "95 %",
                "no fix");
    bool allMeet = true;
    quint64 seed = 1;
    for (const Network& network : networks()) {
        const Statistics statistics = simulate(network, seed++);
        const bool meets = meetsGoals(statistics);
        std::printf("%-28s %9.1f %9.1f %7.3f %7.2f %7.2f %7.2f %7d%s\n", network.name, statistics.bound, statistics.rms,
                    statistics.rms / statistics.bound, 100.0 * statistics.shares[0], 100.0 * statistics.shares[1],
                    100.0 * statistics.shares[2], statistics.withoutFix, meets ? "" : "  missed");
        allMeet = allMeet && meets;
    }
    std::printf("\nGoals: ratio at most %.2f, shares within %.0f percentage point, a fix every time: %s\n",
                greatestRatio, 100.0 * greatestShareError, allMeet ? "met" : "missed");
    return allMeet ? 0 : 1;
}
