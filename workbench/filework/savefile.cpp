#include "filework/savefile.h"

#include "ztbase/brix/files.h"

#include <QCoreApplication>
#include <QSaveFile>

namespace workbench {

std::optional<QString> saveFile(const QString& file, const QByteArray& content)
{
    QSaveFile target(file);
    if (target.open(QIODevice::WriteOnly) && Brix::WriteWhole(target, content) && target.commit())
        return std::nullopt;
    // Both at once: a file's name may hold what looks like a place marker.
    return QCoreApplication::translate("workbench", "%1: the file cannot be written: %2.")
        .arg(file, target.errorString());
}

} // namespace workbench
