#include "guicomponentbase/parametersetstore.h"

#include "ztbase/brix/files.h"

#include <QCoreApplication>
#include <QDir>
#include <QSaveFile>
#include <QTextCodec>
#include <QXmlStreamReader>

#include <algorithm>

namespace VelmarGui {

namespace {

const QString suffix = QStringLiteral(".xml");

QString tr(const char* text)
{
    return QCoreApplication::translate("VelmarGui::ParameterSetStore", text);
}

QString failure(const QString& file, const QString& reason)
{
    return QStringLiteral("%1: %2.").arg(QDir::toNativeSeparators(file), reason);
}

/// What keeps @p xml from being kept as a set; empty: nothing.
QString obstacle(const QString& xml)
{
    if (xml.toUtf8().size() > ParameterSetStore::MaxSize)
        return tr("it is larger than %1 bytes").arg(ParameterSetStore::MaxSize);
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        // Parameter sets have none, and the entities in one may grow beyond all bounds.
        if (reader.readNext() == QXmlStreamReader::DTD)
            return tr("it has a document type declaration");
    }
    if (reader.hasError())
        return tr("it is no XML (line %1: %2)").arg(reader.lineNumber()).arg(reader.errorString());
    return {};
}

} // namespace

ParameterSetStore::ParameterSetStore(const QString& folder)
    : m_folder(folder)
{
}

ParameterSetStore::Error ParameterSetStore::CheckName(const QString& name)
{
    // With the suffix, and the ending that a file has while it is written, within what file systems allow.
    constexpr int maxBytes = 200;
    if (name.isEmpty())
        return tr("A parameter set needs a name.");
    if (name != name.trimmed())
        return tr("The name of a parameter set neither begins nor ends with a blank.");
    if (name.startsWith(QLatin1Char('.')))
        return tr("The name of a parameter set does not begin with a dot.");
    const bool hasForbidden = std::any_of(name.begin(), name.end(), [](QChar c) {
        return c == QLatin1Char('/') || c == QLatin1Char('\\') || c.category() == QChar::Other_Control;
    });
    if (hasForbidden)
        return tr("The name of a parameter set contains no slash, backslash or control character.");
    if (name.toUtf8().size() > maxBytes)
        return tr("The name of a parameter set has no more than %1 bytes.").arg(maxBytes);
    return {};
}

QString ParameterSetStore::GetFile(const QString& name) const
{
    return QDir(m_folder).filePath(name + suffix);
}

QStringList ParameterSetStore::GetNames() const
{
    QStringList names;
    const QStringList files = QDir(m_folder).entryList({QLatin1Char('*') + suffix}, QDir::Files | QDir::CaseSensitive);
    for (const QString& file : files) {
        const QString name = file.chopped(suffix.size());
        if (CheckName(name).isEmpty())
            names += name;
    }
    std::sort(names.begin(), names.end(), [](const QString& a, const QString& b) {
        const int order = a.compare(b, Qt::CaseInsensitive);
        return order != 0 ? order < 0 : a < b;
    });
    return names;
}

bool ParameterSetStore::Contains(const QString& name) const
{
    return CheckName(name).isEmpty() && QFile::exists(GetFile(name));
}

ParameterSetStore::Loaded ParameterSetStore::Load(const QString& name) const
{
    if (Error error = CheckName(name); !error.isEmpty())
        return {std::nullopt, error};
    QFile file(GetFile(name));
    if (!file.open(QIODevice::ReadOnly))
        return {std::nullopt, failure(file.fileName(), file.errorString())};
    // One byte more tells a file that is too large from one that just fits.
    const QByteArray bytes = file.read(MaxSize + 1);
    if (file.error() != QFileDevice::NoError)
        return {std::nullopt, failure(file.fileName(), file.errorString())};
    if (bytes.size() > MaxSize)
        return {std::nullopt, failure(file.fileName(), tr("it is larger than %1 bytes").arg(MaxSize))};
    QTextCodec::ConverterState state;
    const QString xml = QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state).trimmed();
    if (state.invalidChars > 0 || state.remainingChars > 0)
        return {std::nullopt, failure(file.fileName(), tr("it is no UTF-8 text"))};
    if (const QString reason = obstacle(xml); !reason.isEmpty())
        return {std::nullopt, failure(file.fileName(), reason)};
    return {xml, {}};
}

ParameterSetStore::Error ParameterSetStore::Save(const QString& name, const QString& xml) const
{
    if (Error error = CheckName(name); !error.isEmpty())
        return error;
    const QString content = xml.trimmed();
    QSaveFile file(GetFile(name));
    if (const QString reason = obstacle(content); !reason.isEmpty())
        return failure(file.fileName(), reason);
    if (!QDir().mkpath(m_folder))
        return failure(m_folder, tr("the folder cannot be made"));
    if (!file.open(QIODevice::WriteOnly))
        return failure(file.fileName(), file.errorString());
    if (!Brix::WriteWhole(file, content.toUtf8()) || !file.commit())
        return failure(file.fileName(), file.errorString());
    return {};
}

ParameterSetStore::Error ParameterSetStore::Rename(const QString& name, const QString& newName) const
{
    for (const QString& each : {name, newName}) {
        if (Error error = CheckName(each); !error.isEmpty())
            return error;
    }
    QFile file(GetFile(name));
    if (!file.exists())
        return failure(file.fileName(), tr("there is no such parameter set"));
    if (name == newName)
        return {};
    if (Contains(newName))
        return failure(GetFile(newName), tr("there is such a parameter set already"));
    if (!file.rename(GetFile(newName)))
        return failure(GetFile(name), file.errorString());
    return {};
}

ParameterSetStore::Error ParameterSetStore::Delete(const QString& name) const
{
    if (Error error = CheckName(name); !error.isEmpty())
        return error;
    QFile file(GetFile(name));
    if (!file.exists())
        return failure(file.fileName(), tr("there is no such parameter set"));
    if (!file.remove())
        return failure(file.fileName(), file.errorString());
    return {};
}

} // namespace VelmarGui
