#include "drivers/jsonlines.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace workbench {

namespace {

/// An object or array that is being walked through.
struct Level
{
    QString path;
    bool isArray = false;
    int index = 0;            // of the element in an array
    bool awaitsValue = false; // in an array: the element has not begun
    bool awaitsName = false;  // in an object: the next text is a member's name
    QString memberPath;       // of the member whose value follows
};

/// Below so many levels nothing is noted: the ways there are long, and a text may have millions of them.
constexpr std::size_t deepestNoted = 16;

/// The end of the quoted text that begins at @p begin: behind its closing quotes.
int endOfText(const QByteArray& json, int begin)
{
    int i = begin + 1;
    while (i < json.size() && json[i] != '"')
        i += json[i] == '\\' ? 2 : 1;
    return std::min(i + 1, json.size());
}

/// The text that a quoted one stands for.
QString unquoted(const QByteArray& text)
{
    return QJsonDocument::fromJson('[' + text + ']').array().first().toString();
}

} // namespace

JsonLines::JsonLines(const QByteArray& json)
{
    std::vector<Level> levels;
    int line = 1;
    const auto beginValue = [&] {
        if (levels.empty())
            note(QString(), line);
        else if (levels.back().isArray && std::exchange(levels.back().awaitsValue, false) &&
                 levels.size() <= deepestNoted)
            note(element(levels.back().path, levels.back().index), line);
    };
    const auto valuePath = [&] {
        if (levels.empty() || levels.size() > deepestNoted)
            return QString();
        const Level& level = levels.back();
        return level.isArray ? element(level.path, level.index) : level.memberPath;
    };

    for (int i = 0; i < json.size(); ++i) {
        switch (json[i]) {
        case '\n':
            ++line;
            break;
        case ' ':
        case '\t':
        case '\r':
        case ':':
            break;
        case '{':
        case '[': {
            beginValue();
            const bool isArray = json[i] == '[';
            levels.push_back({valuePath(), isArray, 0, isArray, !isArray, {}});
            break;
        }
        case '}':
        case ']':
            levels.pop_back();
            break;
        case ',':
            ++levels.back().index;
            levels.back().awaitsValue = levels.back().isArray;
            levels.back().awaitsName = !levels.back().isArray;
            break;
        case '"': {
            beginValue();
            const int end = endOfText(json, i);
            const QByteArray text = json.mid(i, end - i);
            const bool isName = !levels.empty() && std::exchange(levels.back().awaitsName, false);
            if (isName && levels.size() <= deepestNoted) {
                levels.back().memberPath = member(levels.back().path, unquoted(text));
                note(levels.back().memberPath, line);
            }
            line += text.count('\n');
            i = end - 1;
            break;
        }
        default:
            beginValue();
        }
    }
}

int JsonLines::lineOf(QString path) const
{
    for (;;) {
        const auto known = m_lines.constFind(path);
        if (known != m_lines.constEnd())
            return *known;
        const int holder = std::max(path.lastIndexOf(QLatin1Char('.')), path.lastIndexOf(QLatin1Char('[')));
        if (path.isEmpty())
            return 1;
        path.truncate(std::max(0, holder));
    }
}

QString JsonLines::member(const QString& object, const QString& name)
{
    return object.isEmpty() ? name : object + QLatin1Char('.') + name;
}

QString JsonLines::element(const QString& array, int index)
{
    return array + QLatin1Char('[') + QString::number(index) + QLatin1Char(']');
}

int JsonLines::lineAt(const QByteArray& text, int offset)
{
    return 1 + text.left(offset).count('\n');
}

void JsonLines::note(const QString& path, int line)
{
    if (m_lines.contains(path))
        m_duplicates.push_back({path, line});
    else
        m_lines.insert(path, line);
}

} // namespace workbench
