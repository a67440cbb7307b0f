#include "drivers/csv.h"

#include <QTextCodec>

namespace workbench::csv {

namespace {

constexpr QLatin1Char quote('"');
constexpr QLatin1Char separator(',');
constexpr QLatin1Char lineFeed('\n');
constexpr QLatin1Char carriageReturn('\r');

/// Decodes line by line, so that each line that is no UTF-8 can be named.
QString decoded(QByteArray bytes, std::vector<Flaw>& flaws)
{
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes.remove(0, 3);
    const QTextCodec* utf8 = QTextCodec::codecForName("UTF-8");
    QString text;
    int line = 1;
    for (int begin = 0; begin < bytes.size(); ++line) {
        const int feed = bytes.indexOf('\n', begin);
        const int end = feed < 0 ? bytes.size() : feed + 1;
        QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
        text += utf8->toUnicode(bytes.constData() + begin, end - begin, &state);
        if (state.invalidChars > 0 || state.remainingChars > 0)
            flaws.push_back({line, QStringLiteral("expected UTF-8")});
        begin = end;
    }
    return text;
}

class Parser
{
public:
    Parser(QString text, Table& table)
        : m_text(std::move(text))
        , m_table(table)
    {
    }

    void parse()
    {
        while (!atEnd()) {
            if (skipLineBreak())
                continue;
            readRecord();
        }
    }

private:
    [[nodiscard]] bool atEnd() const { return m_at >= m_text.size(); }
    [[nodiscard]] QChar current() const { return m_text.at(m_at); }

    /// CRLF or LF; a lone CR is an ordinary character.
    [[nodiscard]] bool isLineBreak() const
    {
        return current() == lineFeed ||
               (current() == carriageReturn && m_at + 1 < m_text.size() && m_text.at(m_at + 1) == lineFeed);
    }

    bool skipLineBreak()
    {
        if (atEnd() || !isLineBreak())
            return false;
        m_at += current() == lineFeed ? 1 : 2;
        ++m_line;
        return true;
    }

    [[nodiscard]] bool atEndOfField() const { return atEnd() || current() == separator || isLineBreak(); }

    void readRecord()
    {
        Record record{m_line, {}};
        for (;;) {
            record.fields += !atEnd() && current() == quote ? readQuotedField() : readPlainField();
            if (atEnd() || current() != separator)
                break;
            ++m_at;
        }
        skipLineBreak();
        m_table.records.push_back(std::move(record));
    }

    QString readPlainField()
    {
        const int begin = m_at;
        while (!atEndOfField()) {
            if (current() == quote) {
                flaw(m_line, QStringLiteral("expected quotes only around a whole field"));
                skipToEndOfField();
                break;
            }
            ++m_at;
        }
        return m_text.mid(begin, m_at - begin);
    }

    QString readQuotedField()
    {
        const int firstLine = m_line;
        QString field;
        for (++m_at; !atEnd(); ++m_at) {
            if (current() == quote) {
                ++m_at;
                if (atEnd() || current() != quote) {
                    expectEndOfField();
                    return field;
                }
            }
            if (current() == lineFeed)
                ++m_line;
            field += current();
        }
        flaw(firstLine, QStringLiteral("expected closing quotes for those that open here"));
        return field;
    }

    void expectEndOfField()
    {
        if (atEndOfField())
            return;
        flaw(m_line, QStringLiteral("expected a comma or the end of the line behind closing quotes"));
        skipToEndOfField();
    }

    void skipToEndOfField()
    {
        while (!atEndOfField())
            ++m_at;
    }

    void flaw(int line, const QString& what) { m_table.flaws.push_back({line, what}); }

    QString m_text;
    Table& m_table;
    int m_at = 0;
    int m_line = 1;
};

} // namespace

Table parse(const QByteArray& text)
{
    Table table;
    Parser(decoded(text, table.flaws), table).parse();
    return table;
}

QString quoted(const QString& field)
{
    const bool needsQuotes = field.contains(separator) || field.contains(quote) || field.contains(lineFeed) ||
                             field.contains(carriageReturn);
    if (!needsQuotes)
        return field;
    QString doubled = field;
    doubled.replace(quote, QLatin1String("\"\""));
    return quote + doubled + quote;
}

} // namespace workbench::csv
