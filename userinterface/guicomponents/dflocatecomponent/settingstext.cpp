#include "settingstext.h"

#include <cmath>
#include <limits>

namespace VelmarGui {

bool hasDetail(const QString& xml)
{
    return xml.contains(QLatin1String("<Detail>"));
}

QString toFormText(QString xml)
{
    const QLatin1String start("<LevelThreshold>");
    const int tag = xml.indexOf(start);
    if (tag < 0)
        return xml;
    const int point = xml.indexOf(QLatin1Char('.'), tag + start.size());
    if (point < 0)
        return xml;
    const int end = xml.indexOf(QLatin1String("</LevelThreshold>"), point);
    if (end < 0)
        return xml;
    return xml.remove(point, end - point);
}

QString fromFormText(QString xml)
{
    xml.remove(QLatin1String("<Detail/>"));
    return xml.replace(QLatin1String("DFFrequencyOffset"), QLatin1String("FrequencyOffset"));
}

int roundHalfUp(double number)
{
    using Limits = std::numeric_limits<int>;
    if (std::isnan(number))
        return 0;
    const double rounded = std::floor(number + 0.5);
    if (rounded <= Limits::min())
        return Limits::min();
    if (rounded >= Limits::max())
        return Limits::max();
    return static_cast<int>(rounded);
}

} // namespace VelmarGui
