#pragma once

#include "drivers/historyfix.h"

#include <QJsonArray>
#include <QString>

#include <optional>
#include <vector>

class QToolBar;

namespace workbench {

/// One DF station's part of a result, as the result values show it.
struct StationReport
{
    int key = 0; ///< the station's key in the result values
    QString name;
    std::optional<double> azimuth;   ///< degrees clockwise from true north
    std::optional<double> quality;   ///< percent
    std::optional<double> level;     ///< dBµV
    std::optional<int> error;        ///< error code
    std::optional<double> latitude;  ///< degrees, north positive
    std::optional<double> longitude; ///< degrees, east positive
};

/// What an operator sees of one result: the texts of the component's widgets and the result values.
struct ShotReport
{
    /// Texts of the component's widgets; nothing when there is no such widget.
    std::optional<QString> directionFinder;
    std::optional<QString> averageBearing;
    std::optional<QString> averageQuality;
    std::optional<QString> locationFindingTime;

    QString resultTime;              ///< UTC, "yyyy-MM-dd hh:mm:ss"; empty when unknown
    std::optional<double> frequency; ///< Hz
    std::optional<int> qualityThreshold;
    /// The fix; nothing as long as the value is not in use.
    std::optional<double> averageLatitude;
    std::optional<double> averageLongitude;
    /// What the driver knows of the fix beyond its position, or why there is none. It is in no value: whoever has a
    /// driver puts it here.
    std::optional<LocateResult> located;
    /// From which stored results the fix is; nothing when it is from this result alone. As above.
    std::optional<HistoryFix> history;
    std::vector<StationReport> stations; ///< in the order of the stations' list
};

/// Reads what @p toolBar (may be null) and the values below @p resultPath (ends in "/") show now.
[[nodiscard]] ShotReport readShot(const QToolBar* toolBar, const QString& resultPath);

/// @p shot as number @p number for people: lines of text, the last one empty.
[[nodiscard]] QString shotTable(int number, const ShotReport& shot);

/// @p shot as number @p number for programs (docs/headless-output.md).
[[nodiscard]] QJsonObject shotJson(int number, const ShotReport& shot);

} // namespace workbench
