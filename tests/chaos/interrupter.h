#pragma once

#include "valueframework/tree.h"
#include "valueframework/valueclasses/valueselection.h"

#include <functional>

namespace chaos {

/// Hears every change of every value and does something in the middle of one of them.
class Interrupter final : public IObserver, public values::ITreeListener
{
public:
    enum class Place
    {
        First, ///< before the others are told
        Last,  ///< after those who came before it
    };
    using Action = std::function<void(values::ValueBase& changed)>;

    /// @p action is done once, at the @p at-th change (from 1) that is told; 0: never.
    Interrupter(Place place, int at, Action action);
    ~Interrupter() override;
    Interrupter(const Interrupter&) = delete;
    Interrupter& operator=(const Interrupter&) = delete;

    /// How many changes have been told so far.
    [[nodiscard]] int count() const { return m_count; }

    void Update(Observable* source, TChangeCode code) override;
    void ValueInserted(values::ValueBase* value) override;
    void ValueRemoved(const QString& /*path*/) override {}

private:
    Place m_place;
    int m_at;
    Action m_action;
    int m_count = 0;
};

} // namespace chaos
