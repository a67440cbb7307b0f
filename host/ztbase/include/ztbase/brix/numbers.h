#pragma once

#include "ztbase/ztbaseglobal.h"

class QString;

namespace Brix {

/// Reads a decimal number the way operators write it: surrounding blanks are ignored, and the decimal sign is a point
/// or a comma. Digits are not grouped. @p ok (may be null) tells whether the whole text was a finite number; if not,
/// the result is 0.
ZTBASE_EXPORT double toDoubleEx(const QString& text, bool* ok = nullptr);

} // namespace Brix
