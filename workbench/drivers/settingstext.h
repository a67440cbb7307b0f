#pragma once

#include "drivers/dfsettings.h"
#include "jobxml/df_settings.h"

#include <optional>
#include <variant>

namespace workbench {

/// Why a settings text is refused; the end of a sentence for people.
struct SettingsTextError
{
    QString reason;
};

/// Reads a DF_Settings text, whole or not at all.
[[nodiscard]] std::variant<JobXml::DF_Settings, SettingsTextError> readSettingsText(const QString& xml);

/// What @p text makes of @p settings. What it does not name stays, but for the thresholds: without one in the text it
/// is not in use. An unknown mode becomes DfMode::Normal; a level threshold is rounded half up to a whole number.
[[nodiscard]] DfSettings settingsAfter(const DfSettings& settings, const JobXml::DF_Settings& text);

/// @p text with all of @p settings in it and the rest as it was.
[[nodiscard]] QString textWithSettings(JobXml::DF_Settings text, const DfSettings& settings);

} // namespace workbench
