#pragma once

#include <QFile>
#include <QTemporaryDir>

namespace testsupport {

/// Files that vanish with this object.
class TextFiles
{
public:
    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }

    /// Writes a file and returns its path.
    [[nodiscard]] QString write(const QString& name, const QByteArray& content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("The file %s cannot be written", qPrintable(file.fileName()));
        return file.fileName();
    }

    [[nodiscard]] static QByteArray content(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            qFatal("The file %s cannot be read", qPrintable(path));
        return file.readAll();
    }

private:
    QTemporaryDir m_folder;
};

} // namespace testsupport
