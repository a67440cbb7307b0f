#include "descriptionreader.h"

#include <QCoreApplication>
#include <QRegularExpression>

namespace KT270 {

namespace {

constexpr int largestRow = 999;

QString tr(const char* text)
{
    return QCoreApplication::translate("PgXmlParser", text);
}

QString quoted(const QStringList& words)
{
    return QLatin1Char('"') + words.join(QStringLiteral("\", \"")) + QLatin1Char('"');
}

} // namespace

DescriptionReader::DescriptionReader(QXmlStreamReader& xml, QString place)
    : m_xml(xml)
    , m_place(std::move(place))
{
}

void DescriptionReader::Read()
{
    while (!m_xml.atEnd()) {
        const QXmlStreamReader::TokenType token = m_xml.readNext();
        if (token == QXmlStreamReader::DTD) {
            Error(QStringLiteral("DOCTYPE"), tr("no document type declaration expected"));
            return;
        }
        if (token == QXmlStreamReader::StartElement)
            ReadRoot();
    }
    if (m_xml.hasError())
        Error(QStringLiteral("XML"), tr("well-formed XML expected (%1)").arg(m_xml.errorString()));
    CheckEnumerations();
}

QStringList DescriptionReader::GetErrors() const
{
    QStringList errors;
    for (const auto& [line, error] : m_errors)
        errors.append(QStringLiteral("%1:%2: %3").arg(m_place, QString::number(line), error));
    return errors;
}

void DescriptionReader::AddError(qint64 line, const QString& element, const QString& reason)
{
    m_errors.emplace(line, element + QStringLiteral(": ") + reason);
}

void DescriptionReader::ReadRoot()
{
    const QString element = m_xml.qualifiedName().toString();
    if (element != QLatin1String("pgxml")) {
        SkipUnknown(quoted({QStringLiteral("pgxml")}));
        return;
    }
    const Attributes attributes =
        ReadAttributes({QStringLiteral("name"), QStringLiteral("title"), QStringLiteral("context")});
    m_description.name = attributes.value(QStringLiteral("name"));
    m_description.title = attributes.value(QStringLiteral("title"));
    m_description.context = attributes.value(QStringLiteral("context"));
    CheckName(m_description.name, element);
    ReadChildren(element, [this] { ReadRootChild(); });
}

void DescriptionReader::ReadRootChild()
{
    const QStringRef element = m_xml.qualifiedName();
    if (element == QLatin1String("enumeration"))
        ReadEnumeration();
    else if (element == QLatin1String("group"))
        ReadGroup();
    else if (element == QLatin1String("field"))
        ReadField(QString());
    else if (element == QLatin1String("script"))
        ReadScript();
    else
        SkipUnknown(quoted({QStringLiteral("enumeration"), QStringLiteral("field"), QStringLiteral("group"),
                            QStringLiteral("script")}));
}

void DescriptionReader::ReadEnumeration()
{
    const QString element = QStringLiteral("enumeration");
    const QString name = ReadAttributes({QStringLiteral("name")}).value(QStringLiteral("name"));
    CheckName(name, element);
    Declare(m_enumerationNames, name, element);
    m_description.enumerations.append(name);
    ReadNothingMore(element);
}

void DescriptionReader::ReadGroup()
{
    const QString element = QStringLiteral("group");
    const qint64 line = m_xml.lineNumber();
    const Attributes attributes =
        ReadAttributes({QStringLiteral("name"), QStringLiteral("label"), QStringLiteral("row")});
    GroupDescription group;
    group.name = attributes.value(QStringLiteral("name"));
    group.label = attributes.value(QStringLiteral("label"));
    group.row = ReadRow(attributes.value(QStringLiteral("row")), element);
    CheckName(group.name, element);
    Declare(m_names, group.name, element);
    m_description.groups.push_back(group);

    const std::size_t fieldsBefore = m_description.fields.size();
    ReadChildren(element, [this, &group] {
        if (m_xml.qualifiedName() == QLatin1String("field"))
            ReadField(group.name);
        else
            SkipUnknown(quoted({QStringLiteral("field")}));
    });
    if (m_description.fields.size() == fieldsBefore)
        AddError(line, element, tr("at least one field expected"));
}

void DescriptionReader::ReadField(const QString& group)
{
    const QString element = QStringLiteral("field");
    const Attributes attributes =
        ReadAttributes({QStringLiteral("name"), QStringLiteral("type"), QStringLiteral("label"), QStringLiteral("row")},
                       {QStringLiteral("unit"), QStringLiteral("enumeration")});
    FieldDescription field;
    field.name = attributes.value(QStringLiteral("name"));
    field.type = ReadType(attributes.value(QStringLiteral("type")));
    field.enumeration = attributes.value(QStringLiteral("enumeration"));
    field.label = attributes.value(QStringLiteral("label"));
    field.unit = attributes.value(QStringLiteral("unit"));
    field.row = ReadRow(attributes.value(QStringLiteral("row")), element);

    CheckFieldName(field.name, group);
    Declare(m_names, field.name, element);
    if (field.type != FieldType::Enumeration && !field.enumeration.isEmpty())
        Error(element, tr("attribute \"enumeration\" expected only with type \"enumeration\""));
    else if (field.type == FieldType::Enumeration && field.enumeration.isEmpty())
        Error(element, tr("attribute \"enumeration\" expected"));
    else if (field.type == FieldType::Enumeration)
        m_usedEnumerations.emplace_back(m_xml.lineNumber(), field.enumeration);
    m_description.fields.push_back(field);
    ReadNothingMore(element);
}

void DescriptionReader::ReadScript()
{
    const QString element = QStringLiteral("script");
    if (std::exchange(m_hasScript, true))
        Error(element, tr("at most one script expected"));
    static_cast<void>(ReadAttributes({}));
    m_description.scriptLine = static_cast<int>(m_xml.lineNumber());
    m_description.script.clear();
    while (!m_xml.atEnd() && m_xml.readNext() != QXmlStreamReader::EndElement) {
        if (m_xml.isStartElement())
            SkipUnknown(tr("only text"));
        else if (m_xml.isCharacters())
            m_description.script += m_xml.text();
    }
    if (m_xml.hasError())
        m_description.script.clear(); // half of it would give errors that are none
}

template <typename ReadChild>
void DescriptionReader::ReadChildren(const QString& element, ReadChild readChild)
{
    while (!m_xml.atEnd() && m_xml.readNext() != QXmlStreamReader::EndElement) {
        if (m_xml.isStartElement())
            readChild();
        else if (m_xml.isCharacters() && !m_xml.isWhitespace())
            Error(element, tr("no text expected"));
    }
}

void DescriptionReader::ReadNothingMore(const QString& element)
{
    ReadChildren(element, [this] { SkipUnknown(tr("nothing")); });
}

void DescriptionReader::SkipUnknown(const QString& expected)
{
    Error(m_xml.qualifiedName().toString(), tr("unknown element, %1 expected").arg(expected));
    m_xml.skipCurrentElement();
}

DescriptionReader::Attributes DescriptionReader::ReadAttributes(const QStringList& required,
                                                                const QStringList& optional)
{
    const QString element = m_xml.qualifiedName().toString();
    Attributes attributes;
    const QXmlStreamAttributes present = m_xml.attributes();
    for (const QXmlStreamAttribute& attribute : present) {
        const QString name = attribute.qualifiedName().toString();
        if (required.contains(name) || optional.contains(name))
            attributes.insert(name, attribute.value().toString().trimmed());
        else
            Error(element, tr("unknown attribute \"%1\"").arg(name));
    }
    for (const QString& name : required) {
        if (attributes.value(name).isEmpty())
            Error(element, tr("attribute \"%1\" expected").arg(name));
    }
    return attributes;
}

void DescriptionReader::Declare(QSet<QString>& names, const QString& name, const QString& element)
{
    if (names.contains(name))
        Error(element, tr("another name than \"%1\" expected, it is taken").arg(name));
    else if (!name.isEmpty())
        names.insert(name);
}

void DescriptionReader::CheckName(const QString& name, const QString& element)
{
    static const QRegularExpression wellFormed(QStringLiteral("\\A[A-Za-z_][A-Za-z0-9_]*\\z"));
    if (!name.isEmpty() && !wellFormed.match(name).hasMatch())
        Error(element, tr("a name of letters, digits and \"_\" expected, not \"%1\"").arg(name));
}

void DescriptionReader::CheckFieldName(const QString& name, const QString& group)
{
    const QString element = QStringLiteral("field");
    const QString prefix = group.isEmpty() ? QString() : group + QLatin1Char('/');
    if (name.isEmpty())
        return;
    if (!name.startsWith(prefix) || name == prefix)
        Error(element, tr("a name that begins with \"%1\" expected, not \"%2\"").arg(prefix, name));
    else
        CheckName(name.mid(prefix.size()), element);
}

int DescriptionReader::ReadRow(const QString& text, const QString& element)
{
    if (text.isEmpty())
        return 0; // reported as missing
    bool ok = false;
    const int row = text.toInt(&ok);
    if (!ok || row < 1 || row > largestRow)
        Error(element, tr("a row from 1 to %1 expected, not \"%2\"").arg(QString::number(largestRow), text));
    else if (m_rows.contains(row))
        Error(element, tr("another row than %1 expected, it is taken").arg(row));
    else
        m_rows.insert(row);
    return row;
}

FieldType DescriptionReader::ReadType(const QString& text)
{
    if (text == QLatin1String("number"))
        return FieldType::Number;
    if (text == QLatin1String("enumeration"))
        return FieldType::Enumeration;
    if (!text.isEmpty() && text != QLatin1String("integer"))
        Error(QStringLiteral("field"),
              tr("type \"integer\", \"number\" or \"enumeration\" expected, not \"%1\"").arg(text));
    return FieldType::Integer;
}

void DescriptionReader::CheckEnumerations()
{
    for (const auto& [line, name] : m_usedEnumerations) {
        if (!m_enumerationNames.contains(name))
            AddError(line, QStringLiteral("field"), tr("a declared enumeration expected, not \"%1\"").arg(name));
    }
}

} // namespace KT270
