#pragma once

#include "drivers/loaded.h"

#include <QByteArray>

namespace workbench {

/// Bytes. What is larger is no file of its kind, or too much to keep in memory several times over, as reading needs.
constexpr qint64 largestScenario = 4 * 1024 * 1024;
constexpr qint64 largestRecording = 64 * 1024 * 1024;

/// All that is in @p file, which may be a pipe too; else the one sentence why it cannot be read, among the reasons that
/// it has more than @p largest bytes.
[[nodiscard]] Loaded<QByteArray> readInput(const QString& file, qint64 largest);

} // namespace workbench
