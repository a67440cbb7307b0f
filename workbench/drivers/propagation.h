#pragma once

namespace workbench::propagation {

/// Between two powers.
[[nodiscard]] double dBmFromWatt(double watt);

/// Loss in dB between isotropic antennas in free space, ITU-R P.525: 32.45 + 20 log10(f / MHz) + 20 log10(d / km).
/// Never negative: so near that the formula would promise a gain it does not hold.
/// @p frequency in Hz, @p distance in m.
[[nodiscard]] double freeSpaceLoss(double frequency, double distance);

/// Voltage level in dBµV across 50 ohm of a power in dBm: 10 log10(50 ohm * 1 mW / (1 µV)²) = 106.99, rounded to 107 as
/// receivers do.
[[nodiscard]] double levelFromPower(double dBm);

/// Noise level in dBµV of a receiving system: k T0 B with T0 = 290 K, which is -173.98 dBm in 1 Hz, raised by the noise
/// figure (dB). @p bandwidth in Hz; below 1 Hz counts as 1 Hz.
[[nodiscard]] double noiseLevel(double bandwidth, double noiseFigure);

/// The weakest signal that is measured, as distance from the noise in dB.
constexpr double leastSignalToNoise = 6.0;

/// Standard deviation of a bearing in degrees: the square root of accuracy² + 20² / (s N).
///
/// @p accuracy (degrees) is that of site and instrument; averaging does not help against it. s is the signal to noise
/// ratio of @p signalToNoise (dB) as a number: the variance of an angle measured in noise is inversely proportional to
/// it (the Cramér-Rao bound of the angle of arrival). A single look at 0 dB spreads by 20 degrees. N = 1 + @p averaging
/// (ms) / 100 ms is the number of independent looks that are averaged.
[[nodiscard]] double bearingSpread(double accuracy, double signalToNoise, double averaging);

/// Quality in percent, a whole number from 1 to 100, of a bearing with this standard deviation (degrees):
/// 100 exp(-spread / 12), so 92 at one degree, 66 at five and 43 at ten. Falls with the spread.
[[nodiscard]] int qualityFromSpread(double spread);

} // namespace workbench::propagation
