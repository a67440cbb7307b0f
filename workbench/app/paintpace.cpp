#include "app/paintpace.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QPointer>
#include <QWidget>

#include <algorithm>
#include <utility>

namespace workbench {

PaintPace::PaintPace(QObject* parent, int frame)
    : QObject(parent)
    , m_frame(frame)
{
}

void PaintPace::paint(QWidget& window, const std::function<void()>& deliver)
{
    Rest& rest = restOf(window);
    if (rest.timer.isActive()) {
        rest.isPaintDue = true;
        return;
    }
    const QPointer<QWidget> alive(&window);
    QElapsedTimer painting;
    painting.start();
    deliver();
    if (!alive)
        return;
    // On a machine that takes long for a paint, a third of the time has to do.
    constexpr qint64 shareOfWork = 2;
    const qint64 spent = painting.elapsed();
    rest.timer.start(static_cast<int>(std::max(m_frame - spent, shareOfWork * spent)));
}

PaintPace::Rest& PaintPace::restOf(QWidget& window)
{
    const auto [place, isNew] = m_rests.try_emplace(&window);
    Rest& rest = place->second;
    if (isNew) {
        rest.timer.setParent(this);
        rest.timer.setSingleShot(true);
        rest.timer.setTimerType(Qt::PreciseTimer);
        connect(&rest.timer, &QTimer::timeout, &window, [&window, &rest] {
            if (std::exchange(rest.isPaintDue, false))
                QCoreApplication::postEvent(&window, new QEvent(QEvent::UpdateRequest), Qt::LowEventPriority);
        });
        connect(&window, &QObject::destroyed, this, [this](const QObject* gone) { m_rests.erase(gone); });
    }
    return rest;
}

} // namespace workbench
