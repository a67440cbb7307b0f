#pragma once

#include "ztbase/ztbaseglobal.h"

class QString;

namespace Brix {

/// @p text as it is when it has no more than @p longest characters (at least 1), else that many of its beginning and an
/// ellipsis. For texts from outside where they are shown: what is behind it could not be seen, but would be laid out.
/// A surrogate pair is not cut.
[[nodiscard]] ZTBASE_EXPORT QString Beginning(const QString& text, int longest);

/// @p text as one line of at most @p longest characters (at least 1), the ellipsis of one that is cut among them:
/// without control characters, and with single blanks. A surrogate pair is not cut.
[[nodiscard]] ZTBASE_EXPORT QString OneLine(const QString& text, int longest);

/// @p text for a menu, where a single ampersand would underline what is behind it.
[[nodiscard]] ZTBASE_EXPORT QString MenuText(const QString& text);

} // namespace Brix
