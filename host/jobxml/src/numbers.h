#pragma once

#include <QString>

namespace JobXml {

/// @p number itself; raises ReportException at @p place when it is not finite, because XML numbers are.
double finite(double number, const char* place);

/// Fixed notation in the fewest digits that read back exactly: 12 is "12", never "1.2e1".
QString toText(int number);
QString toText(double number);

/// Reads digits with an optional sign and, for a double, a decimal point. False, and @p number as it was, for any other
/// text and for a number that does not fit.
bool fromText(const QString& text, int& number);
bool fromText(const QString& text, double& number);

} // namespace JobXml
