#pragma once

#include <QString>

namespace VelmarGui {

/// What an operator reads for a station's error @p code: the code's own text, or the number itself for a code without
/// one. Code 0 (no error) has no text of its own here: every display decides for itself how it shows that nothing is
/// wrong.
[[nodiscard]] QString errorText(int code);

} // namespace VelmarGui
