#pragma once

#include "hostcodes.h"

#include <QString>

namespace VelmarGui {

/// Runs @p operation, the body of an entry that the host or Qt calls. Nothing it throws gets out: neither knows what to
/// do with it. It leaves a trace that names @p entry, as "Class::Operation".
template <typename Operation>
void runEntry(const char* entry, const QString& sourceFile, int line, Operation operation)
{
    try {
        operation();
    } catch (...) {
        traceIfEnabled(QLatin1String("Exception in ") + QLatin1String(entry), sourceFile,
                       static_cast<unsigned short>(line));
    }
}

} // namespace VelmarGui
