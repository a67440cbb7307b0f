#pragma once

#include <QImage>
#include <QString>

#include <optional>

namespace workbench {

/// Saves @p picture as the PNG file @p file, whole or not at all. The reason as a full sentence when that fails. Any
/// thread.
[[nodiscard]] std::optional<QString> saveScreenshot(const QImage& picture, const QString& file);

} // namespace workbench
