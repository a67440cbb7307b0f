#pragma once

#include <QLatin1String>

namespace VelmarGui {

/// @name Result values
/// Names of the values that the driver keeps in its result folder. Those marked with "per station" are selections with
/// one item a DF station, under the station's key.
/// @{
const QLatin1String selectedDfName("SelectedDF");             ///< per station: its name
const QLatin1String azimuthName("Azimuth");                   ///< per station: degrees clockwise from true north
const QLatin1String qualityName("Quality");                   ///< per station: percent
const QLatin1String levelName("Level");                       ///< per station: dBµV
const QLatin1String errorsName("Errors");                     ///< per station: error code, empty without one
const QLatin1String longitudeName("DFLongitude");             ///< per station: degrees
const QLatin1String latitudeName("DFLatitude");               ///< per station: degrees
const QLatin1String frequencyName("Frequency");               ///< text: Hz
const QLatin1String resultTimeName("ResultTime");             ///< text: UTC
const QLatin1String qualityThresholdName("QualityThreshold"); ///< integer: percent
const QLatin1String averageLongitudeName("AveragePositionLongitude"); ///< double: degrees
const QLatin1String averageLatitudeName("AveragePositionLatitude");   ///< double: degrees
/// @}

} // namespace VelmarGui
