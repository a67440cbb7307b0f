#pragma once

#include "kt270/kt270global.h"

#include <QString>
#include <QStringList>

class QXmlStreamReader;

namespace KT270 {

class PgXmlFormular;

/// Makes forms from form descriptions (docs/form-description.md). GUI thread only.
///
/// A description is checked as a whole before anything is built. Refused are, besides what the grammar does not know,
/// document type declarations (so no entity is ever expanded or fetched) and texts above MaxSize.
class KT270_EXPORT PgXmlParser
{
public:
    /// Most characters (of a file: bytes) a description may have.
    static constexpr int MaxSize = 1024 * 1024;

    /// A new form, owned by the caller, or null when the description is bad: GetErrors() then tells all that is wrong.
    [[nodiscard]] PgXmlFormular* ParsePGXML(const QString& text);
    /// The same for a file in the encoding that its XML declaration names, UTF-8 without one. Null also when it cannot
    /// be read.
    [[nodiscard]] PgXmlFormular* ParsePGXMLFile(const QString& fileName);

    /// The errors of the last parse in the order of their lines, each as "place:line: element: what was expected", the
    /// place being the file's name, or "PGXML" for a text.
    [[nodiscard]] const QStringList& GetErrors() const { return m_errors; }

private:
    PgXmlFormular* Parse(QXmlStreamReader& xml, const QString& place);
    PgXmlFormular* Refuse(const QString& place, const QString& reason);

    QStringList m_errors;
};

} // namespace KT270
