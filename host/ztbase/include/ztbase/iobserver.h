#pragma once

#include "ztbase/ztbaseglobal.h"

class Observable;

/// What has happened to an observed object. The numbers are part of the host's binary interface.
enum TChangeCode : int
{
    ChangeState = 2,     ///< the state changed; with state "being removed" the object is about to go
    ChangeContent = 3,   ///< the content changed, or somebody announced it anew
    ChangeLimits = 4,    ///< minimum, maximum or step changed
    ChangeItems = 7,     ///< the item list of a selection changed
    ChangeExternal = 19, ///< the content was set by somebody else, whether or not it changed
};

/// Something that wants to be told of changes.
///
/// Notifications arrive synchronously inside the call that made the change, on that call's thread (the GUI thread).
/// An observer may add and remove observers, write to the source and ask for its deletion from inside Update().
class ZTBASE_EXPORT IObserver
{
public:
    IObserver() = default;
    virtual ~IObserver();

    /// Called by @p source, which is never null, with what has happened to it.
    virtual void Update(Observable* source, TChangeCode code) = 0;

protected:
    IObserver(const IObserver&) = default;
    IObserver& operator=(const IObserver&) = default;
};
