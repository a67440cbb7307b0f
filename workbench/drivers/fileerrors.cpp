#include "drivers/fileerrors.h"

#include <algorithm>

namespace workbench {

void FileErrors::add(int line, const QString& field, const QString& what)
{
    if (m_errors.size() == mostKept) {
        ++m_more;
        return;
    }
    // Concatenated, because file names and field contents may hold what looks like a place marker.
    m_errors.push_back({line, m_file + QLatin1Char(':') + QString::number(line) + QLatin1String(": ") + field +
                                  QLatin1String(": ") + what});
}

void FileErrors::addUnexpected(int line, const QString& field, const QString& expected, const QString& found)
{
    add(line, field, QLatin1String("expected ") + expected + QLatin1String(", found ") + found);
}

QStringList FileErrors::texts() const
{
    std::vector<Error> sorted = m_errors;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Error& a, const Error& b) { return a.line < b.line; });
    QStringList texts;
    for (const Error& error : sorted)
        texts += error.text;
    if (m_more > 0)
        texts += m_file + QLatin1String(": ") + QString::number(m_more) +
                 QLatin1String(m_more == 1 ? " more error" : " more errors");
    return texts;
}

} // namespace workbench
