#include "valueframework/valueclasses/formats.h"

#include "ztbase/brix/numbers.h"

#include <QLocale>

namespace values {

QString FormatBool<bool>::ToText(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

bool FormatBool<bool>::FromText(const QString& text, bool& value)
{
    const QString word = text.trimmed().toLower();
    if (word == QLatin1String("true") || word == QLatin1String("1"))
        value = true;
    else if (word == QLatin1String("false") || word == QLatin1String("0"))
        value = false;
    else
        return false;
    return true;
}

QString FormatInt<int>::ToText(int value)
{
    return QString::number(value);
}

bool FormatInt<int>::FromText(const QString& text, int& value)
{
    bool ok = false;
    const int number = text.trimmed().toInt(&ok);
    if (ok)
        value = number;
    return ok;
}

QString FormatFloat<double>::ToText(double value)
{
    return QString::number(value, 'f', QLocale::FloatingPointShortest);
}

bool FormatFloat<double>::FromText(const QString& text, double& value)
{
    bool ok = false;
    const double number = Brix::toDoubleEx(text, &ok);
    if (ok)
        value = number;
    return ok;
}

QString FormatString<QString>::ToText(const QString& value)
{
    return value;
}

bool FormatString<QString>::FromText(const QString& text, QString& value)
{
    value = text;
    return true;
}

template <>
QString StreamFormat<bool>::ToText(const bool& value)
{
    return FormatBool<bool>::ToText(value);
}

template <>
QString StreamFormat<int>::ToText(const int& value)
{
    return FormatInt<int>::ToText(value);
}

template <>
QString StreamFormat<double>::ToText(const double& value)
{
    return FormatFloat<double>::ToText(value);
}

template <>
QString StreamFormat<QString>::ToText(const QString& value)
{
    QString line = value;
    line.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    line.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    line.replace(QLatin1Char('\r'), QLatin1String("\\r"));
    return line;
}

} // namespace values
