#pragma once

#include "numbers.h"

#include <QXmlStreamReader>

#include <optional>

namespace JobXml {

/// Reads a settings text element by element. Whatever is wrong with the text ends the reading: from then on there are
/// no further elements, and finish() is false.
class SettingsReader
{
public:
    explicit SettingsReader(const QString& xml);

    /// Goes to the next child of the current element, at first to the root. False at the end of the current element;
    /// its parent is the current element then.
    bool nextChild();
    [[nodiscard]] QStringRef name() const { return m_xml.qualifiedName(); }

    /// Leave the current element, which nextChild() has just entered.
    /// @{
    void skip();
    [[nodiscard]] QString readText();
    template <typename Number>
    void readNumber(std::optional<Number>& field);
    /// @}

    /// Sets @p field. A field that is set already was given twice, and the text is refused.
    template <typename T>
    void assign(std::optional<T>& field, T value);

    void refuse(const QString& reason) { m_xml.raiseError(reason); }

    /// Goes to the end of the text. True when all of it was good.
    [[nodiscard]] bool finish();

private:
    QXmlStreamReader::TokenType next();

    QXmlStreamReader m_xml;
    int m_depth = 0;
};

template <typename Number>
void SettingsReader::readNumber(std::optional<Number>& field)
{
    Number number{};
    if (fromText(readText(), number))
        assign(field, number);
    else
        refuse(QStringLiteral("not a number"));
}

template <typename T>
void SettingsReader::assign(std::optional<T>& field, T value)
{
    if (field)
        refuse(QStringLiteral("given twice"));
    else
        field = value;
}

} // namespace JobXml
