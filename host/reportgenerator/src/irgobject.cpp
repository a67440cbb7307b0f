#include "reportgenerator/irgobject.h"

namespace REPORTGENERATOR {

// Defined here so that the interface has one type identity across all libraries.
IRGObject::~IRGObject() = default;

} // namespace REPORTGENERATOR
