#include "formtext.h"

#include <QStringList>
#include <QXmlStreamReader>

namespace KT270 {

namespace {

constexpr int maxLevels = 32;

// A hundred times what forms need. The parser's time grows with the square of the number of attributes: texts that are
// as long as a description may be would hold up the GUI thread for minutes.
constexpr int maxCharacters = 65536;

class FormTextReader
{
public:
    FormTextReader(const QString& xml, QString root, const QSet<QString>& fields)
        : m_xml(xml)
        , m_root(std::move(root))
        , m_fields(fields)
    {
    }

    std::optional<FormText> Read()
    {
        bool isGood = true;
        while (isGood && !m_xml.atEnd())
            isGood = Take(m_xml.readNext());
        if (!isGood || m_xml.hasError())
            return std::nullopt;
        return m_contents;
    }

private:
    bool Take(QXmlStreamReader::TokenType token)
    {
        switch (token) {
        case QXmlStreamReader::DTD:
            return false;
        case QXmlStreamReader::StartElement:
            return Begin(m_xml.qualifiedName().toString());
        case QXmlStreamReader::Characters:
            m_text += m_xml.text();
            return true;
        case QXmlStreamReader::EndElement:
            return End();
        default:
            return true;
        }
    }

    bool Begin(const QString& element)
    {
        if (m_levels.isEmpty() && element != m_root)
            return false;
        m_levels.append(element);
        m_text.clear();
        m_isLeaf = true;
        return m_levels.size() <= maxLevels;
    }

    bool End()
    {
        const QString path = QStringList(m_levels.mid(1)).join(QLatin1Char('/'));
        m_levels.removeLast();
        if (!std::exchange(m_isLeaf, false) || !m_fields.contains(path))
            return true;
        const bool isFirst = !m_contents.contains(path);
        m_contents.insert(path, m_text.trimmed());
        return isFirst;
    }

    QXmlStreamReader m_xml;
    const QString m_root;
    const QSet<QString>& m_fields;
    QStringList m_levels;
    QString m_text;
    bool m_isLeaf = false; // no element has ended since the last one began
    FormText m_contents;
};

} // namespace

std::optional<FormText> readFormText(const QString& xml, const QString& root, const QSet<QString>& fields)
{
    if (xml.size() > maxCharacters)
        return std::nullopt;
    return FormTextReader(xml, root, fields).Read();
}

} // namespace KT270
