#pragma once

#include <QString>

namespace KT270 {

/// @p label without the marks of keyboard short cuts: "&Quality" gives "Quality", "A && B" gives "A & B".
[[nodiscard]] inline QString withoutShortCut(const QString& label)
{
    QString text;
    for (int i = 0; i < label.size(); ++i) {
        if (label.at(i) == QLatin1Char('&') && ++i == label.size())
            break;
        text += label.at(i);
    }
    return text;
}

} // namespace KT270
