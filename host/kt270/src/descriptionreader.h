#pragma once

#include "formdescription.h"

#include <QHash>
#include <QSet>
#include <QStringList>
#include <QXmlStreamReader>

#include <map>
#include <vector>

namespace KT270 {

/// Reads one form description and checks it against the grammar of docs/form-description.md. Goes on after an error, so
/// that all are found; only a text that is no XML ends the reading.
class DescriptionReader
{
public:
    /// @p xml is read from its beginning; @p place stands in front of every error.
    DescriptionReader(QXmlStreamReader& xml, QString place);

    void Read();

    /// Complete only without errors.
    [[nodiscard]] const FormDescription& GetDescription() const { return m_description; }
    /// "place:line: element: what was expected", by line.
    [[nodiscard]] QStringList GetErrors() const;
    /// An error found in the description by somebody else.
    void AddError(qint64 line, const QString& element, const QString& reason);

private:
    using Attributes = QHash<QString, QString>;

    void ReadRoot();
    void ReadRootChild();
    void ReadEnumeration();
    void ReadGroup();
    void ReadField(const QString& group);
    void ReadScript();

    /// Calls @p readChild at the start of each child of the element just begun; it reads that child to its end.
    template <typename ReadChild>
    void ReadChildren(const QString& element, ReadChild readChild);
    void ReadNothingMore(const QString& element);
    void SkipUnknown(const QString& expected);

    /// The attributes of the element just begun.
    [[nodiscard]] Attributes ReadAttributes(const QStringList& required, const QStringList& optional = {});
    /// Notes that @p name, unless it is missing, is in use; an error when it was before.
    void Declare(QSet<QString>& names, const QString& name, const QString& element);
    void CheckName(const QString& name, const QString& element);
    void CheckFieldName(const QString& name, const QString& group);
    [[nodiscard]] int ReadRow(const QString& text, const QString& element);
    [[nodiscard]] FieldType ReadType(const QString& text);
    /// They may be declared behind the fields that use them.
    void CheckEnumerations();

    void Error(const QString& element, const QString& reason) { AddError(m_xml.lineNumber(), element, reason); }

    QXmlStreamReader& m_xml;
    const QString m_place;
    FormDescription m_description;
    std::multimap<qint64, QString> m_errors;

    QSet<QString> m_names; // of fields and groups
    QSet<QString> m_enumerationNames;
    QSet<int> m_rows;
    std::vector<std::pair<qint64, QString>> m_usedEnumerations; // line and name
    bool m_hasScript = false;
};

} // namespace KT270
