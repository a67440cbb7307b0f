#pragma once

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

/// True when @p source is the value that @p pointer is bound to. An unbound pointer is bound to nothing, and so not to
/// a null source either.
template <typename T>
[[nodiscard]] bool isBoundTo(const values::ValuePtr<T>& pointer, const Observable* source)
{
    return pointer && static_cast<const Observable*>(pointer.get()) == source;
}

} // namespace VelmarGui
