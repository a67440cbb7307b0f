#pragma once

#include <QHash>
#include <QSet>
#include <QString>

#include <optional>

namespace KT270 {

/// Contents of a form's fields by their path, such as "Detail/LevelThreshold".
using FormText = QHash<QString, QString>;

/// Reads a form's text: the contents of those of @p fields that are there as elements without elements below them.
/// Nothing when the text is not well-formed, has another root than @p root, a document type declaration, a field twice,
/// too many levels or too many characters.
[[nodiscard]] std::optional<FormText> readFormText(const QString& xml, const QString& root,
                                                   const QSet<QString>& fields);

} // namespace KT270
