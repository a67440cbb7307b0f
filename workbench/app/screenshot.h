#pragma once

#include <QString>

#include <optional>

class QWidget;

namespace workbench {

/// Saves a picture of @p window as the PNG file @p file, whole or not at all. The reason as a full sentence when that
/// fails.
[[nodiscard]] std::optional<QString> saveScreenshot(QWidget& window, const QString& file);

} // namespace workbench
