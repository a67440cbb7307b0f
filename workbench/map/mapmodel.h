#pragma once

#include "drivers/dfresult.h"
#include "drivers/historyfix.h"
#include "locate/positionfix.h"

#include <QAbstractTableModel>
#include <QHash>

#include <functional>
#include <optional>
#include <vector>

namespace workbench {

/// What becomes of a station's bearing.
enum class MapUse
{
    NoBearing,
    Used,
    BelowThreshold, ///< its quality; shown, but no part of the fix
    Excluded,       ///< by the operator
    Unusable,       ///< a number is missing or none
    AtFix,          ///< its station is where the fix is: it says nothing about the position
    Compared,       ///< with a fix from stored results
};

/// For people: "used", "excluded", ...
[[nodiscard]] QString useText(MapUse use);

/// A station and its bearing in the latest result.
struct MapStation
{
    int id = 0;
    QString name;                        ///< never empty
    std::optional<GeoPosition> position; ///< on Earth
    std::optional<double> azimuth;       ///< degrees, finite
    std::optional<double> sigma;         ///< standard deviation of the azimuth, degrees
    std::optional<double> quality;       ///< percent
    std::optional<double> level;         ///< dBµV
    DfError error = DfError::None;
    bool excluded = false; ///< stays from result to result
    MapUse use = MapUse::NoBearing;
    std::optional<double> residual; ///< degrees, measured minus direction of the fix
    std::optional<double> distance; ///< m, to the fix

    [[nodiscard]] bool hasLine() const { return position.has_value() && azimuth.has_value(); }
};

/// A bearing of an earlier result.
struct EarlierBearing
{
    int stationId = 0;
    GeoPosition position; ///< of the station at that time
    double azimuth = 0.0; ///< degrees
    int result = 0;       ///< the number of that result
    qint64 time = 0;      ///< by the model's clock
};

/// A copy of what the map shows of the latest result, for another thread.
struct MapSnapshot
{
    std::vector<MapStation> stations;
    std::optional<DfResult> result; ///< without its stations
    std::optional<Fix> fix;
    std::optional<ErrorEllipse> ellipse; ///< of the fix
    double probability = 0.0;            ///< that the ellipse holds the position
    QString fixText;
};

/// What the map shows: stations, bearings and the fix of the latest result, and bearings of earlier ones. As a table it
/// has one row a station; the check box of the first column includes and excludes the station's bearing.
///
/// The fix is made of the latest result alone, of the bearings that are not excluded and reach the quality threshold,
/// compared as whole percent; a missing quality counts as 0. One from stored results is shown as it was computed; the
/// bearings are only compared with it. GUI thread only.
class MapModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        StationColumn,
        BearingColumn,
        QualityColumn,
        ResidualColumn,
        UseColumn,
        ColumnCount
    };
    /// Milliseconds that only go forward.
    using Clock = std::function<qint64()>;

    static constexpr double defaultProbability = 0.95;
    /// For how long (ms) a bearing fades; the latest ones do not disappear.
    static constexpr qint64 lifetime = 60000;
    static constexpr std::size_t mostEarlierBearings = 500;

    explicit MapModel(QObject* parent = nullptr);
    MapModel(Clock clock, QObject* parent);

    /// Begins anew with these stations, without bearings.
    void setStations(const std::vector<StationInfo>& stations);
    /// Stations that were unknown are added. What a result does not tell of a station's name and position stays as it
    /// was. @p history: the fix from stored results that goes with it, instead of one from its bearings.
    void addResult(const DfResult& result, const std::optional<HistoryFix>& history = std::nullopt);
    /// The same for several that have come together, at least one; the fix and its @p history are those of the last
    /// one.
    void addResults(const std::vector<DfResult>& results, const std::optional<HistoryFix>& history);
    /// Percent; nothing: all bearings are good enough.
    void setQualityThreshold(std::optional<int> threshold);
    /// The standard deviation (degrees, as Bearing::sigma) of bearings of which nobody states it; false and no change
    /// when it can be none.
    bool setAssumedSigma(double sigma);
    /// That the ellipse holds the position: more than 0 and less than 1; false and no change otherwise.
    bool setProbability(double probability);
    /// False for an unknown station.
    bool setExcluded(int stationId, bool excluded);
    /// Lets go of the earlier bearings that have faded.
    void forgetFaded();

    [[nodiscard]] const std::vector<MapStation>& stations() const { return m_stations; }
    [[nodiscard]] const MapStation* station(int id) const;
    [[nodiscard]] std::optional<int> rowOf(int stationId) const;
    [[nodiscard]] const std::vector<EarlierBearing>& earlierBearings() const { return m_earlier; }
    [[nodiscard]] std::optional<int> qualityThreshold() const { return m_qualityThreshold; }
    [[nodiscard]] double assumedSigma() const { return m_assumedSigma; }
    [[nodiscard]] double probability() const { return m_probability; }
    /// Null without one.
    [[nodiscard]] const Fix* fix() const;
    /// The error ellipse of the fix for probability().
    [[nodiscard]] std::optional<ErrorEllipse> ellipse() const;
    /// The fix in sentences, or why there is none.
    [[nodiscard]] QString fixText() const;
    /// The latest one without its stations; nothing before the first.
    [[nodiscard]] const std::optional<DfResult>& result() const { return m_result; }
    [[nodiscard]] MapSnapshot snapshot() const;
    /// How much is left of a bearing: 1 when new, 0 after its lifetime.
    [[nodiscard]] double freshness(qint64 time) const;
    /// When the latest result came.
    [[nodiscard]] qint64 resultTime() const { return m_resultTime; }
    /// Results are numbered as they come; that of the latest one.
    [[nodiscard]] int resultNumber() const { return m_resultNumber; }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

signals:
    /// Stations have come, gone or moved.
    void stationsChanged();
    /// There are other bearings, and perhaps another fix.
    void bearingsChanged();
    /// The same bearings are used otherwise, and the fix is another one.
    void useChanged();
    /// Earlier bearings have been let go.
    void earlierForgotten();

private:
    [[nodiscard]] double sigmaOf(const MapStation& station) const;
    [[nodiscard]] bool isBelowThreshold(const MapStation& station) const;
    [[nodiscard]] QString valueText(const MapStation& station, int column) const;
    void keepAsEarlier();
    bool takeOver(const DfResult& result);
    bool merge(const StationResult& result);
    void insert(std::vector<MapStation> stations);
    void computeFix();
    void locateByBearings();
    void compareWithHistory();
    void leaveOut(MapStation& station) const;
    void announceUse();
    [[nodiscard]] QString originText(const Fix& fix) const;

    Clock m_clock;
    std::vector<MapStation> m_stations;
    QHash<int, int> m_rows; // by station
    std::vector<EarlierBearing> m_earlier;
    std::optional<DfResult> m_result;
    qint64 m_resultTime = 0;
    int m_resultNumber = 0;
    std::optional<int> m_qualityThreshold;
    double m_assumedSigma = workbench::assumedSigma;
    double m_probability = defaultProbability;
    std::optional<FixResult> m_fix;
    std::optional<HistoryFix> m_history; // of the latest result; counts instead of the fix above
};

} // namespace workbench
