#pragma once

#include <QLatin1String>
#include <QString>

namespace values {
class SelectionItem;
}

namespace VelmarGui {

/// Stands for what is not known or not to be shown.
const QLatin1String nothingToShow("---");

/// A frequency of @p hz (Hz) with its unit, such as "433.92 MHz"; fractions of a Hz are cut off. The unit (Hz, kHz,
/// MHz, GHz) goes by the size. Below 0 reads as 0, beyond 64 bits as the largest number of 64 bits.
///
/// @p fixedDivisor other than 0 divides the number in place of the unit's own factor; the unit still goes by the size.
[[nodiscard]] QString frequencyText(double hz, double fixedDivisor = 0.0);

/// A geographic coordinate of @p degrees in degrees and minutes, such as "-12°15.000'", reduced to above -180 up to
/// 180. More than 360, and what is not a finite number, is no coordinate and gives "---"; any negative number is
/// reduced.
///
/// The sign is that of the whole degrees: between -1 and 0 there is none. Minutes are rounded by themselves and may
/// read 60.000.
[[nodiscard]] QString coordinateText(double degrees);

/// A coordinate that the driver gave as @p text: a number (degrees) as coordinateText() writes it, anything else as it
/// stands.
[[nodiscard]] QString coordinateText(const QString& text);

/// The text of @p item followed directly by @p unit; "---" without an item.
[[nodiscard]] QString textWithUnit(const values::SelectionItem* item, const QString& unit);

} // namespace VelmarGui
