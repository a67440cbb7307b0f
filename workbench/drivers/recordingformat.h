#pragma once

#include <array>

namespace workbench::recordingformat {

/// The columns of a recording, in the order in which they are written.
enum Column
{
    Shot,
    Date,
    Transmitter,
    Station,
    Latitude,
    Longitude,
    Azimuth,
    TrueLatitude,
    TrueLongitude,
};

constexpr std::array<const char*, 9> columnNames{
    "shot",
    "date",
    "transmitter",
    "station",
    "latitude_deg",
    "longitude_deg",
    "azimuth_deg",
    "true_latitude_deg",
    "true_longitude_deg",
};

constexpr const char* dateFormat = "yyyy-MM-dd";

} // namespace workbench::recordingformat
