#pragma once

#include "drivers/dfresult.h"
#include "drivers/dfsource.h"

#include "valueframework/valueclasses/valueobservermacros.h"

#include <QObject>

#include <optional>
#include <vector>

namespace workbench {

class ProvidedValues;

/// The values below "Values/Result/" that carry the latest result.
///
/// Every result is written in one fixed order, and announced once. The parallel selections follow the selected station:
/// where it has no item they have no current one. Values that are of another kind or vanish are left out. An observer
/// of any of them may delete this object. GUI thread only.
class ResultValues final : public QObject, public IObserver
{
public:
    /// Provides the values below @p root (ends in "/") from @p provided; @p stations can be selected before the first
    /// result.
    ResultValues(ProvidedValues& provided, const QString& root, const std::vector<StationInfo>& stations);

    /// Writes @p result, with the threshold (percent) below which its qualities are poor, and the position computed
    /// from it; without one the average position is not in use. False when an observer has deleted this object
    /// meanwhile.
    [[nodiscard]] bool write(const DfResult& result, int qualityThreshold, const std::optional<GeoPosition>& fix);

    void Update(Observable* changed, TChangeCode code) override;

private:
    using SelectionPtr = values::ValuePtr<values::ValueSelection>;
    using NumberOf = std::optional<double> (*)(const StationResult&);
    using TextOf = QString (*)(double);

    /// All that one result writes.
    struct Content
    {
        const DfResult& result;
        int qualityThreshold;
        const std::optional<GeoPosition>& fix;
    };

    void writeFrequency(const Content& content);
    void writeQualityThreshold(const Content& content);
    void writeAverageLongitude(const Content& content);
    void writeAverageLatitude(const Content& content);
    void writeLatitudes(const Content& content);
    void writeLongitudes(const Content& content);
    void writeLevels(const Content& content);
    void writeStations(const Content& content);
    void writeAzimuths(const Content& content);
    void writeErrors(const Content& content);
    void writeQualities(const Content& content);
    void writeResultTime(const Content& content);
    void announceErrors(const Content& content);
    void writeCoordinate(const values::ValuePtr<values::DoubleValue>& coordinate, std::optional<double> degrees);
    void writeNumbers(const SelectionPtr& selection, const DfResult& result, NumberOf numberOf, TextOf textOf,
                      std::vector<TChangeCode> codes);
    void followSelectedStation();
    [[nodiscard]] int selectedStation() const;

    values::ValuePtr<values::StringValue> m_frequency;
    values::ValuePtr<values::IntValue> m_qualityThreshold;
    values::ValuePtr<values::DoubleValue> m_averageLongitude;
    values::ValuePtr<values::DoubleValue> m_averageLatitude;
    SelectionPtr m_latitude;
    SelectionPtr m_longitude;
    SelectionPtr m_level;
    SelectionPtr m_azimuth;
    SelectionPtr m_errors;
    SelectionPtr m_quality;
    values::ValuePtr<values::StringValue> m_resultTime;
    values::ValueObservingPtr<values::ValueSelection> m_selectedDf{this};
};

} // namespace workbench
