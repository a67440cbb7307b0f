#include "ztbase/brix/files.h"

#include <QByteArray>
#include <QFileDevice>

namespace Brix {

bool WriteWhole(QFileDevice& file, const QByteArray& bytes)
{
    for (qint64 written = 0; written < bytes.size();) {
        const qint64 taken = file.write(bytes.constData() + written, bytes.size() - written);
        if (taken <= 0)
            return false;
        written += taken;
    }
    return file.flush() || file.flush();
}

} // namespace Brix
