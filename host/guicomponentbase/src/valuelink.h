#pragma once

#include "valueframework/valuebase.h"
#include "ztbase/observation.h"

#include <optional>

namespace VelmarGui {

/// Makes one value the interface to another of the same kind: the interface follows the target, and is written to it on
/// request. Ends when either value goes.
class ValueLink final : public IObserver
{
public:
    /// @p target and @p interfaceValue are of one kind. Takes the target's content over at once.
    ValueLink(values::ValueBase& target, values::ValueBase& interfaceValue);

    void Update(Observable* source, TChangeCode code) override;
    /// Does nothing once the link is over.
    void Writeback();
    [[nodiscard]] bool IsOver() const;

private:
    void End();
    void FollowContent();
    void FollowItems();

    values::ValueBase* m_target;
    values::ValueBase* m_interface;
    std::optional<Observation> m_targetObservation;
    std::optional<Observation> m_interfaceObservation;
};

} // namespace VelmarGui
