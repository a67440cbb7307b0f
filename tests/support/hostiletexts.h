#pragma once

#include <QString>

#include <vector>

namespace testsupport {

struct HostileText
{
    const char* name;
    QString text;
};

/// Texts that a station, a driver or a file may send and that no view may be brought down, deceived or led outside by.
/// None of them holds a "#", which would end a token of a status text.
inline std::vector<HostileText> hostileTexts()
{
    const QChar escape(0x1B);
    const QChar rightToLeft(0x202E);
    const QChar loneHigh(0xD83D);
    const QChar loneLow(0xDE00);
    return {
        {"picture", QStringLiteral("<img src=\"file:///etc/passwd\"> <b>North</b>")},
        {"open tags", QStringLiteral("</TABLE><SCRIPT>x()</SCRIPT><H1>")},
        {"entities", QStringLiteral("&lt;b&gt; &amp; &bogus;")},
        {"terminal controls",
         QString(escape) + QStringLiteral("[2J") + escape + QStringLiteral("]0;title\a North\b\b")},
        {"line breaks", QStringLiteral("North\nResult 2\r\nSouth\tWest")},
        {"null character", QStringLiteral("North") + QChar(0) + QStringLiteral("South")},
        {"right to left", rightToLeft + QStringLiteral("htroN 12.5")},
        {"lone surrogates", QString(loneHigh) + QStringLiteral("North") + loneLow + loneLow + loneHigh},
        {"place markers", QStringLiteral("%1 %2 %L3 %99 %n %s")},
        {"combining marks", QString(QLatin1Char('N')) + QString(200, QChar(0x0301))},
        {"long", QString(5000, QLatin1Char('W'))},
    };
}

/// A name of a megabyte.
inline QString hugeText()
{
    return QString(1024 * 1024, QLatin1Char('N'));
}

} // namespace testsupport
