#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace workbench {

/// One setting that is to be made in the operator's place.
struct SettingAssignment
{
    QString name; ///< one of settingNames()
    QString value;
};

/// What can be set: the tuned frequency, and the settings that the toolbar and the panel show.
[[nodiscard]] QStringList settingNames();

/// Sets the value of the tree as an operator does: of a list the item with this text, or with this number where the
/// items have numbers (Hz, ms); a number within its limits; and a threshold comes into use. Else the sentence that says
/// what is allowed.
[[nodiscard]] std::optional<QString> applySetting(const SettingAssignment& setting);

} // namespace workbench
