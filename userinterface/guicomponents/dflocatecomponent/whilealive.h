#pragma once

#include <QObject>
#include <QPointer>

namespace VelmarGui {

/// Runs @p steps in their order for as long as @p object exists: each may tell others of a change, and they may delete
/// it. True when it still exists.
template <typename... Steps>
bool whileAlive(const QObject* object, Steps... steps)
{
    const QPointer<const QObject> alive(object);
    return ((steps(), !alive.isNull()) && ...);
}

} // namespace VelmarGui
