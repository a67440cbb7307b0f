#include "drivers/propagation.h"

#include <algorithm>
#include <cmath>

namespace workbench::propagation {

double dBmFromWatt(double watt)
{
    return 10.0 * std::log10(watt) + 30.0;
}

double freeSpaceLoss(double frequency, double distance)
{
    return std::max(0.0, 32.45 + 20.0 * std::log10(frequency / 1e6) + 20.0 * std::log10(distance / 1e3));
}

double levelFromPower(double dBm)
{
    return dBm + 107.0;
}

double noiseLevel(double bandwidth, double noiseFigure)
{
    constexpr double boltzmann = 1.380649e-23; // J/K
    constexpr double temperature = 290.0;      // K
    return levelFromPower(dBmFromWatt(boltzmann * temperature * std::max(1.0, bandwidth)) + noiseFigure);
}

double bearingSpread(double accuracy, double signalToNoise, double averaging)
{
    constexpr double spreadOfOneLook = 20.0;    // degrees, at 0 dB
    constexpr double durationOfOneLook = 100.0; // ms
    const double looks = 1.0 + averaging / durationOfOneLook;
    const double ratio = std::pow(10.0, signalToNoise / 10.0);
    return std::sqrt(accuracy * accuracy + spreadOfOneLook * spreadOfOneLook / (ratio * looks));
}

int qualityFromSpread(double spread)
{
    return std::max(1, static_cast<int>(std::lround(100.0 * std::exp(-spread / 12.0))));
}

} // namespace workbench::propagation
