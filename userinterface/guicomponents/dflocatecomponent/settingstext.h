#pragma once

#include <QString>

namespace VelmarGui {

/// True when the settings text @p xml carries thresholds.
[[nodiscard]] bool hasDetail(const QString& xml);

/// @p xml as the settings form takes it: the form's level threshold is a whole number, so its fraction is cut off.
[[nodiscard]] QString toFormText(QString xml);

/// The form's text as the settings take it: without an empty detail element, and with the settings' own name for the
/// frequency offset.
[[nodiscard]] QString fromFormText(QString xml);

/// The whole number nearest to @p number, of two equally near ones the greater: -2.5 gives -2, 2.5 gives 3. Numbers
/// beyond the range of int give the nearer end of the range, NaN gives 0.
[[nodiscard]] int roundHalfUp(double number);

} // namespace VelmarGui
