#include "ztbase/brix/datetime.h"

#include "faultpoints/faultpoint.h"

#include <QRegularExpression>

namespace Brix {

namespace {

// Qt::ISODate takes a text without zone as local time and a blank only in some releases, so the form is checked here.
const QRegularExpression& isoForm()
{
    static const QRegularExpression form(QRegularExpression::anchoredPattern(
        QStringLiteral("(\\d{4}-\\d{2}-\\d{2})[T ](\\d{2}:\\d{2}:\\d{2})(?:\\.(\\d+))?(Z|[+-]\\d{2}:\\d{2})?")));
    return form;
}

int milliseconds(const QString& fraction)
{
    return fraction.leftJustified(3, QLatin1Char('0'), true).toInt();
}

int zoneOffsetSeconds(const QString& zone)
{
    if (zone.isEmpty() || zone == QLatin1String("Z"))
        return 0;
    const int sign = zone.startsWith(QLatin1Char('-')) ? -1 : 1;
    return sign * (zone.midRef(1, 2).toInt() * 3600 + zone.midRef(4, 2).toInt() * 60);
}

} // namespace

DateTime::DateTime(QDateTime utc)
    : m_utc(std::move(utc))
{
}

DateTime DateTime::fromString(const QString& text)
{
    if (faults::failsByResult("Brix::DateTime::fromString"))
        return {};
    const QRegularExpressionMatch match = isoForm().match(text);
    if (!match.hasMatch())
        return {};
    const QDate date = QDate::fromString(match.captured(1), Qt::ISODate);
    const QTime time = QTime::fromString(match.captured(2), QStringLiteral("hh:mm:ss"));
    if (!date.isValid() || !time.isValid())
        return {};
    const QDateTime asWritten(date, time.addMSecs(milliseconds(match.captured(3))), Qt::UTC);
    return DateTime(asWritten.addSecs(-zoneOffsetSeconds(match.captured(4))));
}

QString DateTime::toString(TimeZone zone) const
{
    faults::mayRaise("Brix::DateTime::toString");
    if (!isValid())
        return {};
    const QDateTime shown = zone == Brix::Local_TimeZone ? m_utc.toLocalTime() : m_utc;
    return shown.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
}

} // namespace Brix
