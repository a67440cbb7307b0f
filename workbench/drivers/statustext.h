#pragma once

#include "drivers/dfresult.h"

namespace workbench {

/// The text by which a service tells of its stations: tokens joined by "#", for each station DFID (identifier), N_
/// (name), LO and LA (position in degrees), ST (1 available + 16 can scan + 32 wideband), FB and FE (range in Hz). What
/// is unknown has no token. Without stations the text is empty, which means that the service is not connected.
[[nodiscard]] QString statusText(const std::vector<StationInfo>& stations);

} // namespace workbench
