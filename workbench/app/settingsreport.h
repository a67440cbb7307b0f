#pragma once

#include "drivers/dfsettings.h"

#include <QJsonObject>

#include <optional>

class QToolBar;

namespace workbench {

class DfDriver;

/// The settings in all places through which they travel, for programs (docs/headless-output.md): what @p toolBar (may
/// be null) shows, the device lists, the texts to the driver and from it, and what the last result of @p driver was
/// measured with.
[[nodiscard]] QJsonObject settingsJson(const QToolBar* toolBar, const DfDriver& driver);

} // namespace workbench
