#pragma once

#include "hostcodes.h"

#include "valueframework/valueclasses/valueobservermacros.h"

#include <QString>

namespace VelmarGui {

/// The value at @p path, null when there is none of kind @p T.
template <typename T>
[[nodiscard]] T* findValue(const QString& path)
{
    return dynamic_cast<T*>(values::Tree::Instance()->FindValue(path));
}

/// Text of the current item, empty when there is none.
[[nodiscard]] inline QString currentItemText(const values::ValueSelection& selection)
{
    const values::SelectionItem* const item = selection.GetCurrentItem();
    return item != nullptr ? item->GetName() : QString();
}

/// Exchanges the items of @p selection by @p exchange in one transaction: nobody sees, or fails on, a list half filled.
/// Whatever fails, the transaction ends: one left open would silence the value for ever.
template <typename Exchange>
void exchangeItems(values::ValueSelection& selection, Exchange exchange)
{
    values::ValuePtr<values::ValueSelection> alive; // whoever is told of the items may delete the value, and then fail
    alive.Assign(&selection);
    const bool isNested = selection.IsTransactionActive();
    selection.StartTransaction(nullptr);
    try {
        exchange(selection);
        selection.EndTransaction(ItemsChanged);
    } catch (...) {
        if (alive && !isNested && alive->IsTransactionActive())
            alive->EndTransaction(ItemsChanged);
        throw;
    }
}

/// True when @p source is the value that @p pointer is bound to. An unbound pointer is bound to nothing, and so not to
/// a null source either.
template <typename T>
[[nodiscard]] bool isBoundTo(const values::ValuePtr<T>& pointer, const Observable* source)
{
    return pointer && static_cast<const Observable*>(pointer.get()) == source;
}

} // namespace VelmarGui
