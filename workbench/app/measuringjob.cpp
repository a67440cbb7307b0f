#include "app/measuringjob.h"

#include "app/session.h"
#include "drivers/dfdriver.h"
#include "drivers/dfsource.h"

#include "valueframework/tree.h"
#include "valueframework/valueclasses/valueselection.h"

#include <QToolBar>
#include <QToolButton>

#include <cmath>

namespace workbench {

namespace {

using values::ValueSelection;

constexpr double millisecondsPerSecond = 1000.0;
const QString continuousWorkflow = QStringLiteral("Continuous");

/// What a press of the start button does; null when nobody says.
ValueSelection* workflow()
{
    return dynamic_cast<ValueSelection*>(
        values::Tree::Instance()->FindValue(handlerRoot() + QStringLiteral("Config/DFLocateWorkflow")));
}

} // namespace

MeasuringJob::MeasuringJob(Session& session, QObject* parent)
    : QObject(parent)
    , m_session(session)
    , m_driver(*session.driver())
{
    m_wallClock.setSingleShot(true);
    connect(&m_wallClock, &QTimer::timeout, this, &MeasuringJob::stopCyclic);
    connect(&m_driver, &DfDriver::resultPublished, this, &MeasuringJob::onResult);
    connect(&m_driver, &DfDriver::measurementFailed, this, &MeasuringJob::onMeasurementFailed);
}

void MeasuringJob::startShots(int count)
{
    m_active = true;
    m_shotsLeft = count;
    m_cyclicSeconds.reset();
    const ValueSelection* const chosen = workflow();
    if (chosen != nullptr && chosen->GetStringValue() == continuousWorkflow) {
        endWithFailure(tr("In the workflow \"Continuous\" no single measurements can be made."));
        return;
    }
    press();
}

void MeasuringJob::startCyclic(double seconds)
{
    m_active = true;
    m_cyclicSeconds = seconds;
    m_firstResultTime = {};
    m_firstResultShown = false;
    if (!selectContinuousWorkflow()) {
        endWithFailure(tr("The workflow \"Continuous\" cannot be selected."));
        return;
    }
    press();
}

void MeasuringJob::press()
{
    QToolButton* const button = usableButton();
    if (button == nullptr)
        return;
    button->click();
    if (m_active && !m_driver.isRunning())
        endWithFailure(tr("The start button of the component was pressed, but the driver got no command to measure."));
}

QToolButton* MeasuringJob::usableButton()
{
    const QToolBar* const toolBar = m_session.toolBar();
    auto* const button = toolBar ? toolBar->findChild<QToolButton*>(QStringLiteral("DFStarter")) : nullptr;
    if (button == nullptr) {
        endWithFailure(tr("The component's toolbar has no start button named DFStarter."));
        return nullptr;
    }
    if (!button->isEnabled()) {
        endWithFailure(tr("The start button of the component is disabled."));
        return nullptr;
    }
    return button;
}

bool MeasuringJob::selectContinuousWorkflow()
{
    ValueSelection* const chosen = workflow();
    return chosen != nullptr && chosen->Select(continuousWorkflow, nullptr);
}

void MeasuringJob::onResult(const DfResult& result)
{
    if (!m_active)
        return;
    m_firstResultShown = true;
    emit resultShown(result);
    if (!m_cyclicSeconds) {
        --m_shotsLeft;
        // The next press comes from the event loop: here the driver is still busy with this result.
        QMetaObject::invokeMethod(
            this, [this] { m_shotsLeft > 0 ? press() : end(); }, Qt::QueuedConnection);
        return;
    }

    const double wantedMilliseconds = *m_cyclicSeconds * millisecondsPerSecond;
    if (playsRecording()) {
        if (!m_wallClock.isActive())
            m_wallClock.start(static_cast<int>(std::lround(wantedMilliseconds)));
        return;
    }
    const QDateTime time(result.date, result.time, Qt::UTC);
    if (!m_firstResultTime.isValid())
        m_firstResultTime = time;
    if (static_cast<double>(m_firstResultTime.msecsTo(time)) >= wantedMilliseconds)
        QMetaObject::invokeMethod(this, &MeasuringJob::stopCyclic, Qt::QueuedConnection);
}

bool MeasuringJob::playsRecording() const
{
    return m_driver.source().measurementsLeft().has_value();
}

void MeasuringJob::stopCyclic()
{
    if (!m_active)
        return;
    if (!m_driver.isCyclic()) { // somebody else was faster, and a further press would start it again
        end();
        return;
    }
    QToolButton* const button = usableButton();
    if (button == nullptr)
        return;
    button->click();
    if (m_driver.isCyclic())
        endWithFailure(tr("The start button of the component was pressed again, but the driver measures on."));
    else
        end();
}

void MeasuringJob::onMeasurementFailed(const QString& reason)
{
    if (m_cyclicSeconds && m_firstResultShown && m_driver.source().measurementsLeft() == 0)
        end();
    else
        endWithFailure(reason);
}

void MeasuringJob::end()
{
    if (!std::exchange(m_active, false))
        return;
    m_wallClock.stop();
    emit finished();
}

void MeasuringJob::endWithFailure(const QString& reason)
{
    if (!std::exchange(m_active, false))
        return;
    m_wallClock.stop();
    emit failed(reason);
}

} // namespace workbench
