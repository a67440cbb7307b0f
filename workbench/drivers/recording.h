#pragma once

#include "drivers/loaded.h"
#include "drivers/pacedsource.h"

#include <QTime>

namespace workbench {

/// Measurements read from a file.
struct Recording
{
    QString fileName; ///< without folders
    /// All stations of the file, numbered from 1 in the order in which they first appear, at their first position.
    std::vector<StationInfo> stations;
    std::vector<DfResult> shots; ///< in the order of the file
};

/// Reads recorded bearings (docs/recording-format.md). Reports all errors and loads nothing when there is one.
[[nodiscard]] Loaded<Recording> loadRecording(const QString& file);

/// What the operator states about a recording that does not hold it. What is not stated stays unknown.
struct RecordedDefaults
{
    std::optional<double> frequency; ///< Hz
    std::optional<double> level;     ///< dBµV, of every bearing
    std::optional<double> quality;   ///< percent, of every bearing
    std::optional<double> sigma;     ///< degrees, standard deviation of every bearing
    std::optional<QTime> time;       ///< UTC time of day of every shot
};

/// Plays a recording: each measurement is answered with the next shot, whatever was asked for. Fails behind the last
/// one.
class RecordedNetwork final : public PacedSource
{
    Q_OBJECT
public:
    RecordedNetwork(Recording recording, RecordedDefaults defaults, Pacing pacing);

    [[nodiscard]] QString name() const override;
    [[nodiscard]] std::vector<StationInfo> stations() const override;
    [[nodiscard]] std::vector<StationInfo> hriStations() const override;
    [[nodiscard]] std::optional<double> initialFrequency() const override;
    [[nodiscard]] std::optional<int> measurementsLeft() const override;

private:
    void answer(const DfRequest& request) override;
    void fillIn(DfResult& shot) const;

    Recording m_recording;
    RecordedDefaults m_defaults;
    std::size_t m_next = 0;
};

} // namespace workbench
