#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <vector>

namespace workbench {

/// Where the values of a JSON text stand, which a parsed document no longer knows.
///
/// A value is named by its way from the root: "stations[2].rangeHz.low"; the root itself is "". Values more than 16
/// levels below it count as not there.
class JsonLines
{
public:
    /// A member whose name its object has already.
    struct Duplicate
    {
        QString path;
        int line = 0;
    };

    /// @p json must be well formed.
    explicit JsonLines(const QByteArray& json);

    /// Line, counted from 1, of a member's name, an element's beginning or the root's beginning; for a value that is
    /// not there that of what would hold it.
    [[nodiscard]] int lineOf(QString path) const;
    [[nodiscard]] const std::vector<Duplicate>& duplicates() const { return m_duplicates; }

    [[nodiscard]] static QString member(const QString& object, const QString& name);
    [[nodiscard]] static QString element(const QString& array, int index);
    /// The line in which the byte at @p offset stands.
    [[nodiscard]] static int lineAt(const QByteArray& text, int offset);

private:
    void note(const QString& path, int line);

    QHash<QString, int> m_lines;
    std::vector<Duplicate> m_duplicates;
};

} // namespace workbench
