#pragma once

#include <QString>
#include <QStringList>

#include <algorithm>
#include <vector>

namespace KT270 {

enum class FieldType
{
    Integer,
    Number,
    Enumeration,
};

/// A field as described. The name is its path in the form's text: "Bandwidth", or "Detail/LevelThreshold" in a group.
struct FieldDescription
{
    QString name;
    FieldType type = FieldType::Integer;
    QString enumeration; ///< of an enumeration field
    QString label;       ///< untranslated, with "&" before the letter of its short cut
    QString unit;        ///< may be empty
    int row = 0;

    /// Name of the group the field is in; empty when it is in none.
    [[nodiscard]] QString Group() const { return name.left(std::max(0, name.indexOf(QLatin1Char('/')))); }
    [[nodiscard]] QString ElementName() const { return name.mid(name.indexOf(QLatin1Char('/')) + 1); }
};

/// Fields that hang together by a check box.
struct GroupDescription
{
    QString name;
    QString label;
    int row = 0;
};

/// What a form is made from. The fields are in the order of the form's text, those of a group beside one another.
struct FormDescription
{
    QString name; ///< root element of the form's text
    QString title;
    QString context; ///< translation context of title and labels
    QStringList enumerations;
    std::vector<GroupDescription> groups;
    std::vector<FieldDescription> fields;
    QString script;
    int scriptLine = 1;
};

} // namespace KT270
