#include "drivers/pacedsource.h"

#include <cmath>

namespace workbench {

PacedSource::PacedSource(Pacing pacing)
    : m_pacing(pacing)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] { answer(m_request); });
}

void PacedSource::measure(const DfRequest& request)
{
    m_request = request;
    m_timer.start(m_pacing == Pacing::Immediate ? 0 : measurementDuration(request));
}

void PacedSource::cancel()
{
    m_timer.stop();
}

int PacedSource::measurementDuration(const DfRequest& request)
{
    constexpr int settlingTime = 250; // ms
    return settlingTime + static_cast<int>(std::lround(request.averaging));
}

} // namespace workbench
