#pragma once

#include "drivers/dfdevice.h"
#include "drivers/dfresult.h"

#include <QObject>

namespace workbench {

/// A network of DF stations that can be asked for measurements: simulated, recorded or real.
///
/// Lives on the GUI thread; a source that does I/O does it on a thread of its own.
class DfSource : public QObject
{
    Q_OBJECT
public:
    /// What the source is, for people: "Simulation <name>", "Recording <file name>".
    [[nodiscard]] virtual QString name() const = 0;
    [[nodiscard]] virtual std::vector<StationInfo> stations() const = 0; ///< as they are now
    /// The stations of the remote service; often none.
    [[nodiscard]] virtual std::vector<StationInfo> hriStations() const = 0;
    /// The devices that the network can be equipped with; at least one. The first is in use at first.
    [[nodiscard]] virtual std::vector<DfDevice> devices() const { return {standardDevice()}; }
    /// To which frequency (Hz) the network is tuned at first; nothing when unknown.
    [[nodiscard]] virtual std::optional<double> initialFrequency() const = 0;
    /// How many more measurements there are; nothing when there is no end.
    [[nodiscard]] virtual std::optional<int> measurementsLeft() const = 0;

    /// Starts a measurement. Answered later, from the event loop, by exactly one measured() or failed(), unless
    /// cancel() or a further measure() comes first, which drop it.
    virtual void measure(const DfRequest& request) = 0;
    virtual void cancel() = 0; ///< without a measurement under way nothing happens

signals:
    void measured(const workbench::DfResult& result); ///< every station has answered or failed to
    /// There is no result and there will be none; @p reason is a sentence for people.
    void failed(const QString& reason);
};

/// How a source spends the time its measurements take.
enum class Pacing
{
    RealTime,  ///< as long as it would take a real network
    Immediate, ///< at the next turn of the event loop; the source's clock advances all the same
};

} // namespace workbench
