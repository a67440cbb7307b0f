#include "app/screenshot.h"

#include "ztbase/brix/files.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QSaveFile>

namespace workbench {

std::optional<QString> saveScreenshot(const QImage& picture, const QString& file)
{
    QBuffer png;
    QSaveFile target(file);
    if (picture.save(&png, "PNG") && target.open(QIODevice::WriteOnly) && Brix::WriteWhole(target, png.data()) &&
        target.commit())
        return std::nullopt;
    return QCoreApplication::translate("workbench", "%1: the picture cannot be written: %2.")
        .arg(file, target.errorString());
}

} // namespace workbench
