#include "app/untrustedplace.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <sys/stat.h>

namespace workbench {

namespace {

/// Its permissions as the file system has them, links followed; nothing when there is no such file.
std::optional<mode_t> modeOf(const QString& path)
{
    struct stat status = {};
    if (stat(QFile::encodeName(path).constData(), &status) != 0)
        return std::nullopt;
    return status.st_mode;
}

bool isWritableByEverybody(const QString& path)
{
    return (modeOf(path).value_or(0) & S_IWOTH) != 0;
}

bool isSticky(const QString& path)
{
    return (modeOf(path).value_or(0) & S_ISVTX) != 0;
}

bool isBelow(const QString& folder, const QString& file)
{
    return file.startsWith(folder + '/');
}

} // namespace

std::optional<QString> writableByEverybody(const QString& file, const QString& program)
{
    if (isWritableByEverybody(file))
        return file;
    constexpr int mostWays = 64; // more links than the system follows
    QStringList ways{QFileInfo(file).absoluteFilePath()};
    for (int i = 0; i < ways.size() && i < mostWays; ++i) {
        const QFileInfo way(ways.at(i));
        const QString folder = way.path();
        for (QFileInfo part = way; !part.isRoot(); part.setFile(part.path())) {
            const QString above = part.path();
            const bool holdsTheFile = above == folder && !way.isDir();
            if (!isBelow(above, program) && isWritableByEverybody(above) && (holdsTheFile || !isSticky(above)))
                return above;
            if (part.isSymLink())
                ways += part.symLinkTarget();
        }
    }
    return std::nullopt;
}

} // namespace workbench
