#include "kt270/pgxmlparser.h"

#include "faultpoints/faultpoint.h"
#include "kt270/pgxmlformular.h"
#include "kt270/pgxmlsheet.h"

#include "descriptionreader.h"
#include "formscript.h"
#include "pgxmlformularprivate.h"

#include <QCoreApplication>
#include <QFile>
#include <QXmlStreamReader>

namespace KT270 {

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("PgXmlParser", text);
}

QSet<QString> fieldNames(const FormDescription& description)
{
    QSet<QString> names;
    for (const FieldDescription& field : description.fields)
        names.insert(field.name);
    return names;
}

} // namespace

PgXmlFormular* PgXmlParser::ParsePGXML(const QString& text)
{
    if (faults::failsByResult("PgXmlParser::ParsePGXML"))
        return nullptr;
    const QString place = QStringLiteral("PGXML");
    if (text.size() > MaxSize)
        return Refuse(place, tr("at most %1 characters expected").arg(MaxSize));
    QXmlStreamReader xml(text);
    return Parse(xml, place);
}

PgXmlFormular* PgXmlParser::ParsePGXMLFile(const QString& fileName)
{
    if (faults::failsByResult("PgXmlParser::ParsePGXMLFile"))
        return nullptr;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return Refuse(fileName, tr("a readable file expected (%1)").arg(file.errorString()));
    const QByteArray bytes = file.read(MaxSize + 1);
    if (file.error() != QFileDevice::NoError)
        return Refuse(fileName, tr("a readable file expected (%1)").arg(file.errorString()));
    if (bytes.size() > MaxSize)
        return Refuse(fileName, tr("at most %1 bytes expected").arg(MaxSize));
    QXmlStreamReader xml(bytes);
    return Parse(xml, fileName);
}

PgXmlFormular* PgXmlParser::Parse(QXmlStreamReader& xml, const QString& place)
{
    DescriptionReader reader(xml, place);
    reader.Read();
    const FormDescription& description = reader.GetDescription();
    auto script = std::make_unique<FormScript>(fieldNames(description));
    const ScriptOutcome start = script->Run(description.script, description.scriptLine);
    if (!start.error.isEmpty())
        reader.AddError(start.line, QStringLiteral("script"), start.error);
    m_errors = reader.GetErrors();
    if (!m_errors.isEmpty())
        return nullptr;
    return new PgXmlFormular(std::make_unique<PgXmlFormular::Private>(description, std::move(script), start.requests));
}

PgXmlFormular* PgXmlParser::Refuse(const QString& place, const QString& reason)
{
    m_errors = QStringList(QStringLiteral("%1:1: XML: %2").arg(place, reason));
    return nullptr;
}

} // namespace KT270
