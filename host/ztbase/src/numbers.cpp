#include "ztbase/brix/numbers.h"

#include "faultpoints/faultpoint.h"

#include <QLocale>
#include <QString>

#include <cmath>

namespace Brix {

double toDoubleEx(const QString& text, bool* ok)
{
    faults::mayRaise("Brix::toDoubleEx");
    QString number = text.trimmed();
    // "1,5" is a decimal comma; a text with both signs is no number, so that "1,234.5" is not read as something else.
    if (number.count(QLatin1Char(',')) == 1 && !number.contains(QLatin1Char('.')))
        number.replace(QLatin1Char(','), QLatin1Char('.'));
    static const QLocale withoutGroups = [] {
        QLocale locale = QLocale::c();
        locale.setNumberOptions(QLocale::RejectGroupSeparator);
        return locale;
    }();
    bool read = false;
    const double value = withoutGroups.toDouble(number, &read);
    const bool good = read && std::isfinite(value);
    if (ok != nullptr)
        *ok = good;
    return good ? value : 0.0;
}

} // namespace Brix
