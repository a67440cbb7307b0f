#pragma once

#include <QLatin1String>

namespace VelmarGui {

/// @name Result values
/// Names of the values that the driver keeps in its result folder. Those marked with "per station" are selections with
/// one item a DF station, under the station's key.
/// @{
constexpr QLatin1String selectedDfName("SelectedDF");             ///< per station: its name
constexpr QLatin1String azimuthName("Azimuth");                   ///< per station: degrees clockwise from true north
constexpr QLatin1String qualityName("Quality");                   ///< per station: percent
constexpr QLatin1String levelName("Level");                       ///< per station: dBµV
constexpr QLatin1String errorsName("Errors");                     ///< per station: error code, empty without one
constexpr QLatin1String longitudeName("DFLongitude");             ///< per station: degrees
constexpr QLatin1String latitudeName("DFLatitude");               ///< per station: degrees
constexpr QLatin1String frequencyName("Frequency");               ///< text: Hz
constexpr QLatin1String resultTimeName("ResultTime");             ///< text: UTC
constexpr QLatin1String qualityThresholdName("QualityThreshold"); ///< integer: percent
constexpr QLatin1String averageLongitudeName("AveragePositionLongitude"); ///< double: degrees
constexpr QLatin1String averageLatitudeName("AveragePositionLatitude");   ///< double: degrees
/// @}

} // namespace VelmarGui
