#pragma once

#include "drivers/dfsource.h"

#include <QTimer>

namespace workbench {

/// A source that computes its answers and only has to spend the time a measurement takes.
class PacedSource : public DfSource
{
    Q_OBJECT
public:
    void measure(const DfRequest& request) final;
    void cancel() final;

    /// How long a measurement takes in ms: the time to tune and settle, and the averaging time.
    [[nodiscard]] static int measurementDuration(const DfRequest& request);

protected:
    explicit PacedSource(Pacing pacing);

    [[nodiscard]] Pacing pacing() const { return m_pacing; }
    /// The measurement is over. Emits measured() or failed() as its last action: the receiver may delete the source.
    virtual void answer(const DfRequest& request) = 0;

private:
    Pacing m_pacing;
    DfRequest m_request;
    QTimer m_timer;
};

} // namespace workbench
