#pragma once

#include "locate/normalequations.h"

#include <algorithm>

namespace workbench::locate {

enum class DescentEnd
{
    Converged,
    Indeterminate, ///< the bearings leave a direction open
    Exhausted,     ///< too many iterations, or no step that lowers chi-square
};

/// Where a descent ended.
template <typename Position>
struct Descent
{
    Position position;
    NormalEquations equations; ///< at the position, or a negligible step before it
    DescentEnd end = DescentEnd::Exhausted;
};

/// Damped Gauss-Newton iteration (J. Nocedal and S. J. Wright, "Numerical Optimization", 2006, sections 3.1 and 10.3):
/// each step solves the linear problem, and is halved until chi-square falls by a fair part of what that promises.
///
/// @p Lines has a Position, equations(Position), moved(Position, Step), and the constants longestStep (no step goes
/// further) and resolution (no step matters that is shorter), both in units of the axes. Allocates nothing.
template <typename Lines>
Descent<typename Lines::Position> descend(const Lines& lines, const typename Lines::Position& start)
{
    constexpr int mostIterations = 50;
    constexpr int mostHalvings = 20;
    constexpr double fairPart = 1e-4;
    // The last step is made, so what is left is smaller by the rate of convergence: far below 1e-4 standard deviations.
    constexpr double negligibleGain = 1e-8;

    Descent<typename Lines::Position> result{start, lines.equations(start), DescentEnd::Exhausted};
    for (int iteration = 0; iteration < mostIterations; ++iteration) {
        const NormalEquations here = result.equations;
        auto step = here.solution();
        if (!step) {
            result.end = DescentEnd::Indeterminate;
            return result;
        }
        const double length = step->length();
        if (length < Lines::resolution || here.gain(*step) < negligibleGain * (1.0 + here.chiSquare())) {
            result.position = lines.moved(result.position, *step);
            result.end = DescentEnd::Converged;
            return result;
        }
        *step = step->scaled(std::min(1.0, Lines::longestStep / length));

        bool falls = false;
        for (int halving = 0; halving < mostHalvings && !falls; ++halving) {
            const auto trial = lines.moved(result.position, *step);
            const NormalEquations there = lines.equations(trial);
            falls = there.chiSquare() <= here.chiSquare() - fairPart * here.gain(*step);
            if (falls) {
                result.position = trial;
                result.equations = there;
            }
            *step = step->scaled(0.5);
        }
        if (!falls)
            return result;
    }
    return result;
}

} // namespace workbench::locate
