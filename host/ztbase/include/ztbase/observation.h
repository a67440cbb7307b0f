#pragma once

#include "ztbase/observable.h"

/// Keeps an observer registered with an object for as long as this lives.
///
/// Unlike a bare pointer it may outlive the observed object, also one that is deleted outright and so tells nobody.
/// GUI thread only.
class ZTBASE_EXPORT Observation
{
public:
    /// @p observer must outlive this.
    Observation(Observable& observed, IObserver& observer);
    ~Observation();
    Observation(const Observation&) = delete;
    Observation& operator=(const Observation&) = delete;

    /// True when the observed object no longer exists.
    [[nodiscard]] bool IsOver() const { return m_life.IsOver(); }

private:
    // The base object itself: inside the destructor of a value it is all that is left of it.
    Observable* m_observed;
    Observable::Life m_life;
    IObserver* m_observer;
};
