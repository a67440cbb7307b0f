#include "locate/normalequations.h"

namespace workbench::locate {

std::optional<double> NormalEquations::determinant() const
{
    constexpr double roundingError = 1e-14;
    const double product = m_first * m_second;
    const double value = product - m_mixed * m_mixed;
    const double trace = m_first + m_second;
    // Written so that a NaN is refused too.
    if (!(value > roundingError * trace * trace))
        return std::nullopt;
    return value;
}

std::optional<Step> NormalEquations::solution() const
{
    const auto det = determinant();
    if (!det)
        return std::nullopt;
    return Step{(m_second * m_right.first - m_mixed * m_right.second) / *det,
                (m_first * m_right.second - m_mixed * m_right.first) / *det};
}

double NormalEquations::squaredDeviations(const Step& step) const
{
    return m_first * step.first * step.first + 2.0 * m_mixed * step.first * step.second +
           m_second * step.second * step.second;
}

std::optional<Covariance> NormalEquations::covariance() const
{
    const auto det = determinant();
    if (!det)
        return std::nullopt;
    return Covariance{m_second / *det, m_first / *det, -m_mixed / *det};
}

} // namespace workbench::locate
