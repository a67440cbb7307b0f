#pragma once

#include <QStringList>

#include <vector>

namespace workbench {

/// Collects what is wrong with a file.
class FileErrors
{
public:
    /// How many errors are told in full: as many as anybody reads. A large file with nothing right in it has millions.
    static constexpr std::size_t mostKept = 1000;

    explicit FileErrors(QString file)
        : m_file(std::move(file))
    {
    }

    /// @p line counts from 1.
    void add(int line, const QString& field, const QString& what);
    /// For @p found instead of what the field should hold.
    void addUnexpected(int line, const QString& field, const QString& expected, const QString& found);
    [[nodiscard]] bool isEmpty() const { return m_errors.empty(); }
    /// "file:line: field: what", ordered by lines; the errors of one line in the order in which they were found. Last,
    /// where there were more than mostKept, "file: N more errors".
    [[nodiscard]] QStringList texts() const;

private:
    struct Error
    {
        int line;
        QString text;
    };

    QString m_file;
    std::vector<Error> m_errors;
    int m_more = 0; // that are not kept
};

} // namespace workbench
