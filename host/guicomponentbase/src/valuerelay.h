#pragma once

#include "slotcaller.h"
#include "ztbase/observation.h"

namespace VelmarGui {

/// Calls a slot whenever a value announces its content. Deletes itself when the value is removed or the receiver goes,
/// and with its QObject parent; a slot may bring about any of the three.
class ValueRelay final : public SlotCaller, public IObserver
{
    Q_OBJECT
public:
    explicit ValueRelay(values::ValueBase& value);

    void Update(Observable* source, TChangeCode code) override;

    [[nodiscard]] bool Observes(const values::ValueBase* value) const { return m_value == value; }
    /// True when the value was deleted outright: this then only takes up room.
    [[nodiscard]] bool IsOver() const { return m_observation.IsOver(); }

private:
    values::ValueBase* m_value;
    Observation m_observation;
};

} // namespace VelmarGui
