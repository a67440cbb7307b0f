#pragma once

#include <QtGlobal>

#include <random>

namespace workbench {

/// Random numbers that are the same for a seed on every machine.
///
/// The C++ standard fixes the numbers of std::mt19937_64 (M. Matsumoto and T. Nishimura, 64 bit) but not those of its
/// distributions; these are our own.
class NoiseGenerator
{
public:
    explicit NoiseGenerator(quint64 seed);

    /// Uniform in [0, 1), from the upper 53 bits of one number of the generator.
    [[nodiscard]] double uniform();
    /// Standard normal, from two uniform numbers: the cosine branch of G. E. P. Box and M. E. Muller, "A Note on the
    /// Generation of Random Normal Deviates", 1958.
    [[nodiscard]] double normal();

private:
    std::mt19937_64 m_generator;
};

} // namespace workbench
