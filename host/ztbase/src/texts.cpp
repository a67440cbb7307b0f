#include "ztbase/brix/texts.h"

#include <QString>

#include <algorithm>

namespace Brix {

namespace {

constexpr QChar ellipsis(0x2026);

/// At most @p length characters of @p text and the ellipsis.
QString cut(const QString& text, int length)
{
    const QString beginning = text.left(length);
    const bool endsInHalf = !beginning.isEmpty() && beginning.at(beginning.size() - 1).isHighSurrogate();
    return (endsInHalf ? beginning.chopped(1) : beginning) + ellipsis;
}

} // namespace

QString Beginning(const QString& text, int longest)
{
    return text.size() <= longest ? text : cut(text, longest);
}

QString OneLine(const QString& text, int longest)
{
    constexpr int blanks = 4; // times what is shown; more of them in a row need not be seen through
    QString line = text.left(blanks * longest);
    std::replace_if(
        line.begin(), line.end(), [](QChar c) { return c.category() == QChar::Other_Control; }, QLatin1Char(' '));
    line = line.simplified();
    const bool isWhole = line.size() <= longest && text.size() <= blanks * longest;
    return isWhole ? line : cut(line, longest - 1);
}

QString MenuText(const QString& text)
{
    return QString(text).replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace Brix
