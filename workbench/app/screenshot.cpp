#include "app/screenshot.h"

#include <QCoreApplication>
#include <QPixmap>
#include <QSaveFile>
#include <QWidget>

namespace workbench {

std::optional<QString> saveScreenshot(QWidget& window, const QString& file)
{
    QSaveFile picture(file);
    if (picture.open(QIODevice::WriteOnly) && window.grab().save(&picture, "PNG") && picture.commit())
        return std::nullopt;
    return QCoreApplication::translate("workbench", "%1: the picture cannot be written: %2.")
        .arg(file, picture.errorString());
}

} // namespace workbench
