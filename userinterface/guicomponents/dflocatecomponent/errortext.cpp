#include "errortext.h"

#include <QObject>

namespace VelmarGui {

QString errorText(int code)
{
    switch (code) {
    case -17:
        return QObject::tr("No signal");
    case -14:
        return QObject::tr("Timeout");
    case -3:
        return QObject::tr("Not in time range");
    case -2:
        return QObject::tr("Scan range undefined");
    case -1:
        return QObject::tr("Not in scan range");
    default:
        return QString::number(code);
    }
}

} // namespace VelmarGui
