#include "faultpoints/faultpoint.h"

namespace faults {

std::atomic<Hook> hook{nullptr};

} // namespace faults
