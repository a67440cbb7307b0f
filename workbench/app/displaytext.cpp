#include "app/displaytext.h"

#include "ztbase/brix/texts.h"

#include <QTextDocument>

namespace workbench {

namespace {

constexpr int mostCharacters = 500;

constexpr QChar replacement(QChar::ReplacementCharacter);
constexpr ushort del = 0x7F;

/// Marks, embeddings, overrides and isolates of a direction, and separators that end a line.
bool changesOrder(QChar c)
{
    const ushort code = c.unicode();
    return code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069);
}

bool isControl(QChar c)
{
    return c.category() == QChar::Other_Control;
}

QChar pictureOf(QChar control)
{
    constexpr ushort firstPicture = 0x2400;
    constexpr ushort pictureOfDel = 0x2421;
    const ushort code = control.unicode();
    if (code < 0x20)
        return QChar(ushort(firstPicture + code));
    return code == del ? QChar(pictureOfDel) : replacement;
}

bool isHalf(const QString& text, int position)
{
    const QChar c = text[position];
    if (c.isHighSurrogate())
        return position + 1 >= text.size() || !text[position + 1].isLowSurrogate();
    return c.isLowSurrogate() && (position == 0 || !text[position - 1].isHighSurrogate());
}

} // namespace

QString beginningOf(const QString& text)
{
    return Brix::Beginning(text, mostCharacters);
}

QString asToolTip(const QString& text)
{
    const QString beginning = beginningOf(text);
    return Qt::mightBeRichText(beginning) ? Qt::convertFromPlainText(beginning) : beginning;
}

QString forTerminal(const QString& text)
{
    QString line = beginningOf(text);
    for (int i = 0; i < line.size(); ++i) {
        const QChar c = line[i];
        if (isControl(c))
            line[i] = pictureOf(c);
        else if (changesOrder(c) || isHalf(line, i))
            line[i] = replacement;
    }
    return line;
}

QString jsonForTerminal(const QString& json)
{
    QString text;
    text.reserve(json.size());
    for (int i = 0; i < json.size(); ++i) {
        const QChar c = json[i];
        const bool isHarmful = (isControl(c) && c != QLatin1Char('\n')) || changesOrder(c) || isHalf(json, i);
        if (isHarmful)
            text += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
        else
            text += c;
    }
    return text;
}

} // namespace workbench
