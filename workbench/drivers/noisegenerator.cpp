#include "drivers/noisegenerator.h"

#include <cmath>

namespace workbench {

NoiseGenerator::NoiseGenerator(quint64 seed)
    : m_generator(seed)
{
}

double NoiseGenerator::uniform()
{
    constexpr double unit = 1.0 / 9007199254740992.0; // 2^-53
    return static_cast<double>(m_generator() >> 11) * unit;
}

double NoiseGenerator::normal()
{
    constexpr double fullCircle = 6.283185307179586;
    const double radius = std::sqrt(-2.0 * std::log(1.0 - uniform())); // 1 - u is never 0
    return radius * std::cos(fullCircle * uniform());
}

} // namespace workbench
