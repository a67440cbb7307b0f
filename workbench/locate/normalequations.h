#pragma once

#include "locate/errorellipse.h"

#include <cmath>
#include <optional>

namespace workbench::locate {

/// A move in the plane that touches the Earth at a position, along two perpendicular axes of that plane.
struct Step
{
    double first = 0.0;
    double second = 0.0;

    [[nodiscard]] double length() const { return std::hypot(first, second); }
    [[nodiscard]] Step scaled(double factor) const { return {first * factor, second * factor}; }
};

/// The least squares problem of the bearings, made linear around one position.
class NormalEquations
{
public:
    /// Adds a bearing: measured minus computed, and how much the computed one grows for each unit of a move along the
    /// axes, all three divided by the standard deviation.
    void add(double residual, double gradientFirst, double gradientSecond)
    {
        m_chiSquare += residual * residual;
        m_first += gradientFirst * gradientFirst;
        m_second += gradientSecond * gradientSecond;
        m_mixed += gradientFirst * gradientSecond;
        m_right.first += residual * gradientFirst;
        m_right.second += residual * gradientSecond;
    }

    [[nodiscard]] double chiSquare() const { return m_chiSquare; }
    /// By how much the step to the minimum of the linear problem lowers its chi-square; for a part of that step, the
    /// same part of it.
    [[nodiscard]] double gain(const Step& step) const
    {
        return step.first * m_right.first + step.second * m_right.second;
    }
    /// The step to the minimum of the linear problem; none when the bearings leave a direction open.
    [[nodiscard]] std::optional<Step> solution() const;
    /// How far away the end of @p step is, in standard deviations, squared.
    [[nodiscard]] double squaredDeviations(const Step& step) const;
    /// Covariance with the first axis towards east and the second towards north, in units of the axes; none when the
    /// bearings leave a direction open.
    [[nodiscard]] std::optional<Covariance> covariance() const;

private:
    [[nodiscard]] std::optional<double> determinant() const;

    double m_chiSquare = 0.0;
    double m_first = 0.0;
    double m_second = 0.0;
    double m_mixed = 0.0;
    Step m_right;
};

} // namespace workbench::locate
