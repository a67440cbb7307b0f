#include "settingsreader.h"

#include "jobxml/df_settings.h"

namespace JobXml {

// The parser's time grows with the square of the number of attributes, so a long text does not even reach it; like
// every text that ends too early, the empty one in its place is refused.
SettingsReader::SettingsReader(const QString& xml)
    : m_xml(xml.size() <= DF_Settings::MaxXmlLength ? xml : QString())
{
    // Settings know no namespaces; an element is what its name says as it is written.
    m_xml.setNamespaceProcessing(false);
}

QXmlStreamReader::TokenType SettingsReader::next()
{
    const QXmlStreamReader::TokenType token = m_xml.readNext();
    if (token == QXmlStreamReader::StartElement && ++m_depth > DF_Settings::MaxXmlDepth)
        refuse(QStringLiteral("nested too deeply"));
    else if (token == QXmlStreamReader::EndElement)
        --m_depth;
    else if (token == QXmlStreamReader::DTD)
        refuse(QStringLiteral("document type declaration"));
    return m_xml.tokenType();
}

bool SettingsReader::nextChild()
{
    while (!m_xml.atEnd()) {
        const QXmlStreamReader::TokenType token = next();
        if (token == QXmlStreamReader::StartElement)
            return true;
        if (token == QXmlStreamReader::EndElement)
            return false;
    }
    return false;
}

void SettingsReader::skip()
{
    while (nextChild())
        skip();
}

QString SettingsReader::readText()
{
    QString text = m_xml.readElementText(QXmlStreamReader::ErrorOnUnexpectedElement).trimmed();
    --m_depth;
    return text;
}

bool SettingsReader::finish()
{
    while (!m_xml.atEnd())
        next();
    return !m_xml.hasError();
}

} // namespace JobXml
