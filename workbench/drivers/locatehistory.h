#pragma once

#include "drivers/historyfix.h"

#include <QObject>

namespace workbench {

/// What a driver asks for a fix from earlier bearings. Belongs to the GUI thread and never waits on it.
class LocateHistory : public QObject
{
    Q_OBJECT
public:
    /// False: there is nothing to be expected, now or later.
    [[nodiscard]] virtual bool isUsable() const = 0;
    /// Starts to look for a fix that goes with @p latest, from bearings that are not below @p qualityThreshold
    /// (percent). Answered later, from the event loop, by exactly one located(), unless cancel() or a further locate()
    /// comes first, which drop it.
    virtual void locate(const DfResult& latest, int qualityThreshold) = 0;
    virtual void cancel() = 0; ///< without a locate() under way nothing happens

signals:
    void located(const workbench::HistoryFix& fix); ///< the answer: a fix, or why there is none
    /// isUsable() says something else now.
    void usableChanged();
};

} // namespace workbench
