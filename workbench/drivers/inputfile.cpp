#include "drivers/inputfile.h"

#include <QFile>

namespace workbench {

Loaded<QByteArray> readInput(const QString& fileName, qint64 largest)
{
    const auto refused = [&fileName](const QString& reason) -> Loaded<QByteArray> {
        // Concatenated, because file names may hold what looks like a place marker.
        return {std::nullopt, {fileName + QLatin1String(": cannot be read: ") + reason}};
    };
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return refused(file.errorString());
    if (file.size() > largest)
        return refused(
            QStringLiteral("it is too large: %1 bytes, at most %2 are allowed").arg(file.size()).arg(largest));

    constexpr qint64 block = 1048576; // bytes
    QByteArray bytes;
    for (QByteArray next = file.read(block); !next.isEmpty() && bytes.size() <= largest; next = file.read(block))
        bytes += next;
    if (file.error() != QFileDevice::NoError)
        return refused(file.errorString());
    // A pipe tells no size before it has been read.
    if (bytes.size() > largest)
        return refused(QStringLiteral("it is too large: at most %1 bytes are allowed").arg(largest));
    return {std::move(bytes), {}};
}

} // namespace workbench
