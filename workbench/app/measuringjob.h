#pragma once

#include "drivers/dfresult.h"

#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <optional>

class QToolButton;

namespace workbench {

class DfDriver;
class Session;

/// Measures as an operator does: presses the start button of the component's toolbar and waits for the results.
///
/// All signals come from the event loop or from start(); exactly one finished() or failed() comes per start().
class MeasuringJob : public QObject
{
    Q_OBJECT
public:
    /// @p session has a driver, and both outlive the job.
    MeasuringJob(Session& session, QObject* parent = nullptr);

    /// Presses the button @p count times, each time after the result before has come. Fails in the continuous workflow,
    /// where a press does not measure once.
    void startShots(int count);
    /// Selects the continuous workflow, presses the button, and presses it again when @p seconds of measuring time have
    /// passed since the first result: by the times of the results, which may run faster than the clock on the wall. The
    /// times in a recording tell nothing about this measuring; there the clock on the wall counts, and the end of the
    /// recording is an end as well.
    void startCyclic(double seconds);

signals:
    /// The component has been told of all values of @p result.
    void resultShown(const workbench::DfResult& result);
    /// All that was to be measured is shown.
    void finished();
    /// @p reason is a full sentence.
    void failed(const QString& reason);

private:
    void press();
    void stopCyclic();
    void onResult(const DfResult& result);
    void onMeasurementFailed(const QString& reason);
    void end();
    void endWithFailure(const QString& reason);
    [[nodiscard]] QToolButton* usableButton();
    [[nodiscard]] bool selectContinuousWorkflow();
    [[nodiscard]] bool playsRecording() const;

    Session& m_session;
    DfDriver& m_driver;
    bool m_active = false;
    int m_shotsLeft = 0;
    std::optional<double> m_cyclicSeconds;
    bool m_firstResultShown = false;
    QDateTime m_firstResultTime;
    QTimer m_wallClock;
};

} // namespace workbench
