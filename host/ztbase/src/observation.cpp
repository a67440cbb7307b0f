#include "ztbase/observation.h"

Observation::Observation(Observable& observed, IObserver& observer)
    : m_observed(&observed)
    , m_life(observed.GetLife())
    , m_observer(&observer)
{
    observed.AddObserver(m_observer);
}

Observation::~Observation()
{
    if (!m_life.IsOver())
        m_observed->RemoveObserver(m_observer);
}
