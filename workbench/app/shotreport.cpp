#include "app/shotreport.h"

#include "app/displaytext.h"
#include "drivers/dfresult.h"

#include "valueframework/tree.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QJsonObject>
#include <QLabel>
#include <QToolBar>

#include <algorithm>
#include <functional>

namespace workbench {

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("workbench::ShotReport", text);
}

std::optional<QString> labelText(const QToolBar* toolBar, const char* name)
{
    const auto* const label = toolBar ? toolBar->findChild<QLabel*>(QLatin1String(name)) : nullptr;
    return label ? std::optional(label->text()) : std::nullopt;
}

std::optional<QString> comboText(const QToolBar* toolBar, const char* name)
{
    const auto* const combo = toolBar ? toolBar->findChild<QComboBox*>(QLatin1String(name)) : nullptr;
    return combo ? std::optional(combo->currentText()) : std::nullopt;
}

std::optional<double> number(const QString& text)
{
    bool ok = false;
    const double result = text.toDouble(&ok);
    return ok ? std::optional(result) : std::nullopt;
}

/// The number of @p item as it was measured; of a driver that gives its items no numbers, what the text says.
std::optional<double> numberOf(const values::SelectionItem& item)
{
    return item.GetValue() != 0.0 ? std::optional(item.GetValue()) : number(item.GetName());
}

/// The values of one result.
class ResultValues
{
public:
    explicit ResultValues(QString path)
        : m_path(std::move(path))
    {
    }

    template <typename Kind>
    [[nodiscard]] const Kind* find(const char* name) const
    {
        return dynamic_cast<const Kind*>(values::Tree::Instance()->FindValue(m_path + QLatin1String(name)));
    }

    [[nodiscard]] QString text(const char* name) const
    {
        const auto* const value = find<values::StringValue>(name);
        return value ? value->GetValue() : QString();
    }

    /// Text of a station's item in one of the parallel selections; empty when the station has none there.
    [[nodiscard]] QString text(const char* selectionName, int key) const
    {
        const auto* const selection = find<values::ValueSelection>(selectionName);
        return selection ? selection->GetItemNameForKey(key) : QString();
    }

    /// Number of a station's item in one of the parallel selections; nothing when the station has none there.
    [[nodiscard]] std::optional<double> number(const char* selectionName, int key) const
    {
        const auto* const selection = find<values::ValueSelection>(selectionName);
        const values::SelectionItem* const item =
            selection ? selection->GetItem(selection->GetItemIndex(key)) : nullptr;
        return item ? numberOf(*item) : std::nullopt;
    }

    [[nodiscard]] std::optional<double> coordinate(const char* name) const
    {
        const auto* const value = find<values::DoubleValue>(name);
        const bool inUse = value != nullptr && value->GetState() == values::StateOrdinary;
        return inUse ? std::optional(value->GetValue()) : std::nullopt;
    }

private:
    QString m_path;
};

StationReport readStation(const ResultValues& result, const values::SelectionItem& item)
{
    StationReport station;
    station.key = item.GetKey();
    station.name = item.GetName();
    station.azimuth = result.number("Azimuth", station.key);
    station.quality = result.number("Quality", station.key);
    station.level = result.number("Level", station.key);
    station.latitude = result.number("DFLatitude", station.key);
    station.longitude = result.number("DFLongitude", station.key);
    bool isCode = false;
    const int code = result.text("Errors", station.key).toInt(&isCode);
    if (isCode)
        station.error = code;
    return station;
}

const QString missing = QStringLiteral("---");

constexpr double ellipseProbability = 0.95;

template <typename T, typename Format>
QString orMissing(const std::optional<T>& value, Format format)
{
    return value ? format(*value) : missing;
}

auto fixed(int decimals, const char* unit)
{
    return [decimals, unit](double value) { return QString::number(value, 'f', decimals) + QString::fromUtf8(unit); };
}

QString nonEmpty(const std::optional<QString>& text)
{
    return text && !text->isEmpty() ? *text : missing;
}

QString position(const std::optional<double>& latitude, const std::optional<double>& longitude)
{
    return latitude && longitude ? fixed(6, "")(*latitude) + QLatin1String(", ") + fixed(6, "")(*longitude) : missing;
}

/// What is known of the fix that the values show.
const Fix* fixOf(const ShotReport& shot)
{
    const bool isShown = shot.averageLatitude && shot.averageLongitude;
    return isShown && shot.located ? std::get_if<Fix>(&*shot.located) : nullptr;
}

/// Why there is no fix; empty when there is one or nobody says.
QString noFixReason(const ShotReport& shot)
{
    const auto* const reason = shot.located ? std::get_if<QString>(&*shot.located) : nullptr;
    return reason != nullptr ? *reason : QString();
}

QString ellipseText(const Fix& fix)
{
    const ErrorEllipse ellipse = confidenceEllipse(fix.covariance, ellipseProbability);
    return tr("semi-axes %1 m and %2 m, major axis at %3°")
        .arg(ellipse.semiMajor, 0, 'f', 0)
        .arg(ellipse.semiMinor, 0, 'f', 0)
        .arg(ellipse.azimuth, 0, 'f', 1);
}

QString errorText(int code)
{
    const auto named = [code](const char* name) { return QStringLiteral("%1 (%2)").arg(tr(name)).arg(code); };
    switch (static_cast<DfError>(code)) {
    case DfError::NotInScanRange:
        return named("Not in scan range");
    case DfError::ScanRangeUndefined:
        return named("Scan range undefined");
    case DfError::NotInTimeRange:
        return named("Not in time range");
    case DfError::Timeout:
        return named("Timeout");
    case DfError::NoSignal:
        return named("No signal");
    case DfError::None:
        break;
    }
    return QString::number(code);
}

struct Column
{
    const char* title;
    bool toTheRight; ///< numbers stand below one another
    std::function<QString(const StationReport&)> text;
};

std::vector<Column> stationColumns()
{
    return {
        {"DF station", false, [](const StationReport& s) { return s.name; }},
        {"Azimuth", true, [](const StationReport& s) { return orMissing(s.azimuth, fixed(1, "°")); }},
        {"Quality", true, [](const StationReport& s) { return orMissing(s.quality, fixed(0, " %")); }},
        {"Level", true, [](const StationReport& s) { return orMissing(s.level, fixed(1, " dBµV")); }},
        {"Error", false, [](const StationReport& s) { return orMissing(s.error, errorText); }},
        {"Position", false, [](const StationReport& s) { return position(s.latitude, s.longitude); }},
    };
}

QString stationTable(const std::vector<StationReport>& stations)
{
    const std::vector<Column> columns = stationColumns();
    std::vector<QStringList> rows(stations.size() + 1);
    for (const Column& column : columns) {
        rows[0] += tr(column.title);
        for (std::size_t i = 0; i < stations.size(); ++i)
            rows[i + 1] += forTerminal(column.text(stations[i]));
    }

    QString table;
    for (const QStringList& row : rows) {
        QString line;
        for (int i = 0; i < row.size(); ++i) {
            int width = 0;
            for (const QStringList& other : rows)
                width = std::max(width, other[i].size());
            line += QLatin1String("  ") +
                    (columns[i].toTheRight ? row[i].rightJustified(width) : row[i].leftJustified(width));
        }
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        table += line + QLatin1Char('\n');
    }
    return table;
}

template <typename T>
QJsonValue orNull(const std::optional<T>& value)
{
    return value ? QJsonValue(*value) : QJsonValue();
}

QJsonObject stationJson(const StationReport& station)
{
    return {{QStringLiteral("key"), station.key},
            {QStringLiteral("name"), station.name},
            {QStringLiteral("azimuth"), orNull(station.azimuth)},
            {QStringLiteral("quality"), orNull(station.quality)},
            {QStringLiteral("level"), orNull(station.level)},
            {QStringLiteral("error"), orNull(station.error)},
            {QStringLiteral("latitude"), orNull(station.latitude)},
            {QStringLiteral("longitude"), orNull(station.longitude)}};
}

QJsonValue ellipseJson(const Fix& fix)
{
    const ErrorEllipse ellipse = confidenceEllipse(fix.covariance, ellipseProbability);
    return QJsonObject{{QStringLiteral("probability"), ellipseProbability},
                       {QStringLiteral("semiMajor"), ellipse.semiMajor},
                       {QStringLiteral("semiMinor"), ellipse.semiMinor},
                       {QStringLiteral("azimuth"), ellipse.azimuth}};
}

QJsonValue fixJson(const ShotReport& shot)
{
    if (!shot.averageLatitude || !shot.averageLongitude)
        return {};
    const Fix* const fix = fixOf(shot);
    return QJsonObject{{QStringLiteral("latitude"), *shot.averageLatitude},
                       {QStringLiteral("longitude"), *shot.averageLongitude},
                       {QStringLiteral("ellipse"), fix ? ellipseJson(*fix) : QJsonValue()},
                       {QStringLiteral("chiSquare"), fix ? QJsonValue(fix->chiSquare) : QJsonValue()},
                       {QStringLiteral("degreesOfFreedom"), fix ? QJsonValue(fix->degreesOfFreedom) : QJsonValue()}};
}

QString historyText(const HistoryFix& history)
{
    const QString results = QString::number(history.results);
    const QString usable = tr("usable bearings: %1").arg(history.bearings);
    return (history.isComplete ? results : tr("%1 (the newest of more)").arg(results)) + QLatin1String(", ") + usable;
}

QJsonValue historyJson(const std::optional<HistoryFix>& history)
{
    if (!history)
        return {};
    return QJsonObject{{QStringLiteral("results"), history->results},
                       {QStringLiteral("bearings"), history->bearings},
                       {QStringLiteral("complete"), history->isComplete}};
}

} // namespace

ShotReport readShot(const QToolBar* toolBar, const QString& resultPath)
{
    ShotReport shot;
    shot.directionFinder = comboText(toolBar, "direction finder name");
    shot.averageBearing = labelText(toolBar, "average bearing");
    shot.averageQuality = labelText(toolBar, "average quality");
    shot.locationFindingTime = labelText(toolBar, "LocationFindingTime");

    const ResultValues result(resultPath);
    shot.resultTime = result.text("ResultTime");
    shot.frequency = number(result.text("Frequency"));
    if (const auto* const threshold = result.find<values::IntValue>("QualityThreshold"))
        shot.qualityThreshold = threshold->GetValue();
    shot.averageLatitude = result.coordinate("AveragePositionLatitude");
    shot.averageLongitude = result.coordinate("AveragePositionLongitude");
    if (const auto* const stations = result.find<values::ValueSelection>("SelectedDF")) {
        for (int i = 0; i < stations->GetItemCount(); ++i)
            shot.stations.push_back(readStation(result, *stations->GetItem(i)));
    }
    return shot;
}

QString shotTable(int number, const ShotReport& shot)
{
    const auto percent = [](int value) { return QString::number(value) + QLatin1String(" %"); };
    QString text = tr("Result %1").arg(number) + QLatin1Char('\n');
    const auto line = [&text](const QString& name, const QString& value) {
        constexpr int nameWidth = 22;
        text += QLatin1String("  ") + name.leftJustified(nameWidth) + forTerminal(value) + QLatin1Char('\n');
    };
    line(tr("Shown DF station"), nonEmpty(shot.directionFinder));
    line(tr("Shown bearing"), nonEmpty(shot.averageBearing));
    line(tr("Shown quality"), nonEmpty(shot.averageQuality));
    line(tr("Shown time or error"), nonEmpty(shot.locationFindingTime));
    line(tr("Result time (UTC)"), nonEmpty(shot.resultTime));
    line(tr("Frequency"), orMissing(shot.frequency, fixed(0, " Hz")));
    line(tr("Quality threshold"), orMissing(shot.qualityThreshold, percent));
    const QString reason = noFixReason(shot);
    line(tr("Fix"), reason.isEmpty() ? position(shot.averageLatitude, shot.averageLongitude) : reason);
    if (const Fix* const fix = fixOf(shot)) {
        line(tr("Error ellipse (95 %)"), ellipseText(*fix));
        line(tr("Chi-square"),
             tr("%1, degrees of freedom: %2").arg(fix->chiSquare, 0, 'f', 2).arg(fix->degreesOfFreedom));
    }
    if (shot.history)
        line(tr("Stored results"), historyText(*shot.history));
    return text + QLatin1Char('\n') + stationTable(shot.stations) + QLatin1Char('\n');
}

QJsonObject shotJson(int number, const ShotReport& shot)
{
    QJsonArray stations;
    for (const StationReport& station : shot.stations)
        stations += stationJson(station);
    const QJsonObject widgets{{QStringLiteral("directionFinder"), orNull(shot.directionFinder)},
                              {QStringLiteral("averageBearing"), orNull(shot.averageBearing)},
                              {QStringLiteral("averageQuality"), orNull(shot.averageQuality)},
                              {QStringLiteral("locationFindingTime"), orNull(shot.locationFindingTime)}};
    const QString reason = noFixReason(shot);
    return {{QStringLiteral("shot"), number},
            {QStringLiteral("widgets"), widgets},
            {QStringLiteral("resultTime"), shot.resultTime.isEmpty() ? QJsonValue() : QJsonValue(shot.resultTime)},
            {QStringLiteral("frequency"), orNull(shot.frequency)},
            {QStringLiteral("qualityThreshold"), orNull(shot.qualityThreshold)},
            {QStringLiteral("fix"), fixJson(shot)},
            {QStringLiteral("noFix"), reason.isEmpty() ? QJsonValue() : QJsonValue(reason)},
            {QStringLiteral("history"), historyJson(shot.history)},
            {QStringLiteral("stations"), stations}};
}

} // namespace workbench
