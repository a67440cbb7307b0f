#include "locatestatus.h"

#include <QCoreApplication>
#include <QStringView>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace VelmarGui {

namespace {

/// The texts of the report belong to the translation context of the status display.
struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(VelmarGui::LocateStatusHandler)
};

constexpr QChar delimiter(u'#');
constexpr QStringView stationMark(u"DFID");

/// What a token is about.
enum class Kind
{
    Mark, ///< opens a station
    Name,
    Status,
    RangeLow,
    RangeHigh,
    Other ///< among them the position, "LO" and "LA", which is shown nowhere
};

bool startsWith(QStringView text, QStringView word)
{
    return text.size() >= word.size() &&
           std::memcmp(text.data(), word.data(), static_cast<std::size_t>(word.size()) * sizeof(QChar)) == 0;
}

/// Kind of the token that @p text begins with, as far as its first characters tell.
Kind kindOf(QStringView text)
{
    if (startsWith(text, stationMark))
        return Kind::Mark;
    if (startsWith(text, u"N_"))
        return Kind::Name;
    if (startsWith(text, u"ST"))
        return Kind::Status;
    if (startsWith(text, u"FB"))
        return Kind::RangeLow;
    return startsWith(text, u"FE") ? Kind::RangeHigh : Kind::Other;
}

/// How many characters stand in front of the content.
qsizetype prefixSize(Kind kind)
{
    return kind == Kind::Mark ? stationMark.size() : 2;
}

/// How many digits a number may have for every such number to be exact, as an int or as a double; 0 for a kind that has
/// no number.
qsizetype mostExactDigits(Kind kind)
{
    switch (kind) {
    case Kind::Mark:
    case Kind::Status:
        return 9;
    case Kind::RangeLow:
    case Kind::RangeHigh:
        return 15;
    default:
        return 0;
    }
}

/// A token whose content is a text, or has been read as a number of plain digits already.
struct Token
{
    Kind kind = Kind::Other;
    QStringView text;
    std::optional<qint64> digits;
    qsizetype end = 0; ///< where it ends in the whole text

    /// 0 for what is no number.
    [[nodiscard]] int ToInt() const { return digits ? static_cast<int>(*digits) : BorrowedText().toInt(); }
    /// In Hz; 0 for what is no number, or none that a frequency can be.
    [[nodiscard]] double ToFrequency() const
    {
        const double frequency = digits ? static_cast<double>(*digits) : BorrowedText().toDouble();
        return std::isfinite(frequency) ? frequency : 0;
    }

private:
    /// Only for the length of a call: the characters are not copied.
    [[nodiscard]] QString BorrowedText() const
    {
        return QString::fromRawData(text.data(), static_cast<int>(text.size()));
    }
};

/// One walk through a status text.
///
/// Texts name their stations over and over in the same order, so the next station is looked for beside the last one
/// first. Nothing is copied but a name that has changed.
class StatusTextReader
{
public:
    StatusTextReader(LocateServiceStatus& service, QStringView text)
        : m_service(service)
        , m_text(text)
    {
    }

    /// False when tokens in front of the first mark were dropped: they are about station 0, and there was none.
    bool Read()
    {
        const auto zero = m_service.stations.find(0);
        m_station = zero != m_service.stations.end() ? &zero->second : nullptr;
        bool droppedAny = false;
        for (qsizetype begin = 0; begin <= m_text.size();) {
            const Token token = TokenAt(begin);
            if (token.kind == Kind::Mark)
                OpenStation(token.ToInt());
            else if (m_station != nullptr)
                Apply(token);
            else
                droppedAny = true;
            begin = token.end + 1;
        }
        return !droppedAny;
    }

private:
    [[nodiscard]] Token TokenAt(qsizetype begin)
    {
        Token token;
        token.kind = kindOf(m_text.mid(begin));
        if (ReadDigits(token, begin + prefixSize(token.kind)))
            return token;
        const qsizetype delimiterAt = m_text.indexOf(delimiter, begin);
        token.end = delimiterAt >= 0 ? delimiterAt : m_text.size();
        // Wherever the mark stands in the token, the number is what follows the first four characters.
        if (HasMark(begin, token.end))
            token.kind = Kind::Mark;
        const qsizetype contentBegin = std::min(begin + prefixSize(token.kind), token.end);
        token.text = m_text.mid(contentBegin, token.end - contentBegin);
        return token;
    }

    /// True when nothing but digits follows up to the end of the token. Nearly all numbers are of this kind, and so
    /// nobody looks for their ends first.
    bool ReadDigits(Token& token, qsizetype begin) const
    {
        const qsizetype most = std::min(begin + mostExactDigits(token.kind), m_text.size());
        qint64 number = 0;
        qsizetype at = begin;
        for (; at < most && m_text[at] >= QLatin1Char('0') && m_text[at] <= QLatin1Char('9'); ++at)
            number = 10 * number + (m_text[at].unicode() - u'0');
        if (at <= begin || (at < m_text.size() && m_text[at] != delimiter))
            return false;
        token.digits = number;
        token.end = at;
        return true;
    }

    [[nodiscard]] bool HasMark(qsizetype begin, qsizetype end)
    {
        if (m_nextMark < begin)
            m_nextMark = FindMark(begin);
        return m_nextMark < end;
    }

    /// Where the next mark stands, the end of the text when there is none.
    [[nodiscard]] qsizetype FindMark(qsizetype from) const
    {
        const QChar first = stationMark[0];
        for (qsizetype at = m_text.indexOf(first, from); at >= 0; at = m_text.indexOf(first, at + 1)) {
            if (startsWith(m_text.mid(at), stationMark))
                return at;
        }
        return m_text.size();
    }

    void OpenStation(int id)
    {
        const auto place = m_service.stations.try_emplace(m_next, id);
        m_station = &place->second;
        m_station->id = id;
        m_next = std::next(place);
    }

    void Apply(const Token& token)
    {
        switch (token.kind) {
        case Kind::Name:
            if (m_station->name != token.text)
                m_station->name = token.text.toString();
            break;
        case Kind::Status:
            m_station->status = token.ToInt();
            if ((m_station->status & LocateStationStatus::Available) != 0)
                m_service.anyAvailable = true;
            break;
        case Kind::RangeLow:
            m_station->rangeLow = token.ToFrequency();
            break;
        case Kind::RangeHigh:
            m_station->rangeHigh = token.ToFrequency();
            break;
        default:
            break;
        }
    }

    LocateServiceStatus& m_service;
    QStringView m_text;
    LocateStationStatus* m_station = nullptr; // that the tokens are about
    std::map<int, LocateStationStatus>::iterator m_next = m_service.stations.begin();
    qsizetype m_nextMark = -1;
};

QString connectionText(bool connected)
{
    return connected ? Texts::tr("is connected") : Texts::tr("is not connected");
}

QString stationlessPart(const QString& service, bool connected)
{
    return QStringLiteral("<B>%1 </B>").arg(service) + connectionText(connected);
}

QString tickIf(bool condition)
{
    return condition ? QStringLiteral("<IMG src=\":/icons/OK\" width = 16 height = 16 >") : QStringLiteral(" ");
}

QString rangeCell(const LocateStationStatus& station, double frequency)
{
    constexpr int searching = LocateStationStatus::ScanCapable | LocateStationStatus::WidebandCapable;
    if (station.rangeLow == 0 || station.rangeHigh == 0 || (station.status & searching) == 0)
        return QStringLiteral(" ");
    const QString range =
        station.Covers(frequency) ? QStringLiteral("%1 MHz - %2 MHz") : QStringLiteral("<i>%1 MHz - %2 MHz</i>");
    constexpr double hertzPerMegahertz = 1000000;
    return range.arg(station.rangeLow / hertzPerMegahertz, 0, 'f', 3)
        .arg(station.rangeHigh / hertzPerMegahertz, 0, 'f', 3);
}

// The templates of the two tables and their rows are filled by chained arg() on purpose: what a report shows must not
// depend on which host built it, down to a station name that holds a place marker. The odd attributes are part of that.
// clazy:excludeall=qstring-arg

QString dfTable(const LocateServiceStatus& df)
{
    QString html =
        QStringLiteral("<TABLE border = \"1\" frame = \"hsides\" rules = \"groups\"summary = \"Locate DF status "
                       "display\"of MS Windows.\"><CAPTION><B>%1</B></CAPTION><COLGROUP align = \"center\">"
                       "<THEAD valign = \"top\"><TR><TH>%2<TH>%3<TBODY>")
            .arg(Texts::tr("Locate (Online) is connected"))
            .arg(Texts::tr("DF Station"))
            .arg(Texts::tr("Available"));
    for (const auto& [id, station] : df.stations) {
        html += QStringLiteral("<TR><TD> %1<TD> %2")
                    .arg(station.name)
                    .arg(tickIf((station.status & LocateStationStatus::Available) != 0));
    }
    return html + QStringLiteral("</TABLE>");
}

QString hriTable(const LocateServiceStatus& hri, double frequency)
{
    QString html =
        QStringLiteral("<TABLE border = \"1\" frame = \"hsides\" rules = \"groups\"summary = \"Locate HRI status "
                       "display\"of MS Windows.\"><CAPTION><B>%1</B></CAPTION><COLGROUP align = \"center\">"
                       "<COLGROUP align = \"center\"><COLGROUP align = \"center\"><COLGROUP align = \"center\">"
                       "<THEAD valign = \"top\"><TR><TH>%2<TH>%3<TH>%4<TH>%5<TH>%6<TBODY>")
            .arg(Texts::tr("Locate (HRI) is connected"))
            .arg(Texts::tr("DF Station"))
            .arg(Texts::tr("Available"))
            .arg(Texts::tr("Scan"))
            .arg(Texts::tr("Wideband"))
            .arg(Texts::tr("Range"));
    for (const auto& [id, station] : hri.stations) {
        html += QStringLiteral("<TR><TD> %1<TD> %2<TD> %3<TD> %4<TD> %5")
                    .arg(station.name)
                    .arg(tickIf((station.status & LocateStationStatus::Available) != 0))
                    .arg(tickIf((station.status & LocateStationStatus::ScanCapable) != 0))
                    .arg(tickIf((station.status & LocateStationStatus::WidebandCapable) != 0))
                    .arg(rangeCell(station, frequency));
    }
    return html + QStringLiteral("</TABLE>");
}

} // namespace

bool applyStatusText(LocateServiceStatus& service, const QString& text)
{
    // A text that is held shares its characters with the value it is from: this costs the same for every length.
    if (!text.isEmpty() && text == service.heldText)
        return false;
    service.anyAvailable = false;
    service.connected = !text.isEmpty();
    service.heldText.clear();
    if (!service.connected) {
        service.stations.clear();
        return true;
    }
    // Tokens that were dropped may find their station the next time.
    const bool isHeld = StatusTextReader(service, text).Read() || service.stations.count(0) == 0;
    if (isHeld)
        service.heldText = text;
    return true;
}

FrequencyRanges rangesOf(const LocateServiceStatus& service)
{
    std::vector<FrequencyRanges::Range> ranges;
    ranges.reserve(service.stations.size());
    for (const auto& [id, station] : service.stations)
        ranges.push_back({station.rangeLow, station.rangeHigh});
    return FrequencyRanges(std::move(ranges));
}

QString buildReport(const LocateServiceStatus& df, const LocateServiceStatus& hri, double frequency)
{
    const QString dfPart =
        df.stations.empty() ? stationlessPart(Texts::tr("Locate (Online)"), df.connected) : dfTable(df);
    const QString hriPart =
        hri.stations.empty() ? stationlessPart(Texts::tr("Locate (HRI)"), hri.connected) : hriTable(hri, frequency);
    return dfPart + QStringLiteral("<BR><BR>") + hriPart;
}

} // namespace VelmarGui
