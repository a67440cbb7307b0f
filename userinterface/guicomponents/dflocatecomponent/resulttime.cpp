#include "resulttime.h"

#include "ztbase/brix/datetime.h"

namespace VelmarGui {

std::optional<QString> localTimeOfDay(const QString& resultTime)
{
    if (resultTime.isEmpty() || resultTime.startsWith(QLatin1String("1970")))
        return std::nullopt;
    QString iso8601 = resultTime;
    iso8601.replace(QLatin1Char(' '), QLatin1Char('T')).append(QLatin1Char('Z'));
    const QString local = Brix::DateTime::fromString(iso8601).toString(Brix::DateTime::Local_TimeZone);
    // Without a blank the search gives -1, and the whole text is taken.
    return local.mid(local.indexOf(QLatin1Char(' ')) + 1);
}

} // namespace VelmarGui
