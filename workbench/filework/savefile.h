#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace workbench {

/// Writes a file as a whole or not at all; the reason as a full sentence when it cannot be written. Any thread.
[[nodiscard]] std::optional<QString> saveFile(const QString& file, const QByteArray& content);

} // namespace workbench
