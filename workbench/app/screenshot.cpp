#include "app/screenshot.h"

#include <QCoreApplication>
#include <QSaveFile>

namespace workbench {

std::optional<QString> saveScreenshot(const QImage& picture, const QString& file)
{
    QSaveFile target(file);
    // Flushed first: what commit() itself cannot write on a full disk it leaves out, and puts the rest in place.
    if (target.open(QIODevice::WriteOnly) && picture.save(&target, "PNG") && target.flush() && target.commit())
        return std::nullopt;
    return QCoreApplication::translate("workbench", "%1: the picture cannot be written: %2.")
        .arg(file, target.errorString());
}

} // namespace workbench
