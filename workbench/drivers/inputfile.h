#pragma once

#include "drivers/loaded.h"

#include <QByteArray>

namespace workbench {

/// Bytes. Reading keeps a file in memory several times over. The largest recording has room for a day of cyclic
/// measuring, the longest that the workbench does by itself, with five stations.
constexpr qint64 largestScenario = 4LL * 1024 * 1024;
constexpr qint64 largestRecording = 256LL * 1024 * 1024;

/// All that is in @p file, which may be a pipe too; else the one sentence why it cannot be read, among the reasons that
/// it has more than @p largest bytes.
[[nodiscard]] Loaded<QByteArray> readInput(const QString& file, qint64 largest);

} // namespace workbench
