#include "valuelink.h"

#include "valueframework/valueclasses/valueselection.h"

namespace VelmarGui {

using values::ValueSelection;

namespace {

/// Moves the content, of a selection the current item only.
void copyContent(const values::ValueBase& from, values::ValueBase& to, IObserver* causer)
{
    const auto* fromSelection = dynamic_cast<const ValueSelection*>(&from);
    auto* toSelection = dynamic_cast<ValueSelection*>(&to);
    if (fromSelection != nullptr && toSelection != nullptr)
        toSelection->Select(fromSelection->GetCurrentKey(), causer);
    else
        to.Assign(from, causer);
}

bool hasSameContent(const values::ValueBase& a, const values::ValueBase& b)
{
    const auto* aSelection = dynamic_cast<const ValueSelection*>(&a);
    const auto* bSelection = dynamic_cast<const ValueSelection*>(&b);
    if (aSelection != nullptr && bSelection != nullptr)
        return aSelection->GetCurrentKey() == bSelection->GetCurrentKey();
    return a.Compare(b);
}

} // namespace

ValueLink::ValueLink(values::ValueBase& target, values::ValueBase& interfaceValue)
    : m_target(&target)
    , m_interface(&interfaceValue)
{
    m_targetObservation.emplace(target, *this);
    m_interfaceObservation.emplace(interfaceValue, *this);
    FollowItems();
}

void ValueLink::Update(Observable* source, TChangeCode code)
{
    if (code == ChangeState) {
        if (IsOver() || m_target->GetState() == values::StateRemoved || m_interface->GetState() == values::StateRemoved)
            End();
        return;
    }
    if (IsOver() || source != m_target)
        return;
    if (code == ChangeItems)
        FollowItems();
    else if (code == ChangeContent || code == ChangeExternal)
        FollowContent();
}

void ValueLink::Writeback()
{
    if (!IsOver())
        copyContent(*m_interface, *m_target, this);
}

bool ValueLink::IsOver() const
{
    return !m_targetObservation || m_targetObservation->IsOver() || m_interfaceObservation->IsOver();
}

void ValueLink::End()
{
    m_targetObservation.reset();
    m_interfaceObservation.reset();
}

// What is the same already is not written again: two values linked to each other would otherwise never come to rest,
// because every set, changed or not, is announced.

void ValueLink::FollowContent()
{
    if (!hasSameContent(*m_interface, *m_target))
        copyContent(*m_target, *m_interface, this);
}

void ValueLink::FollowItems()
{
    if (!m_interface->Compare(*m_target))
        m_interface->Assign(*m_target, this);
}

} // namespace VelmarGui
