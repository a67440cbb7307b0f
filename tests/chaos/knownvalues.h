#pragma once

#include "valueframework/tree.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"

#include <QString>

#include <memory>
#include <vector>

namespace chaos {

/// A place in the value tree that the component, the driver or both know, with the kind that they expect there.
struct KnownValue
{
    QString path;
    values::TValueType type;
    bool isSetting = false;         ///< a write makes panel, form and driver exchange settings: takes its time
    bool isMadeByComponent = false; ///< the component makes it when there is none
};

[[nodiscard]] const std::vector<KnownValue>& knownValues();

[[nodiscard]] QString handlerPath(const char* name);
[[nodiscard]] QString componentPath();
[[nodiscard]] QString parameterPath(const char* name);

[[nodiscard]] std::unique_ptr<values::ValueBase> makeValue(values::TValueType type);

/// Puts @p value into the tree at @p path; false (and it is gone) when the place is taken.
bool insertValue(const QString& path, std::unique_ptr<values::ValueBase> value);

/// The value at @p path; null when there is none of kind @p T.
template <typename T>
[[nodiscard]] T* find(const QString& path)
{
    return dynamic_cast<T*>(values::Tree::Instance()->FindValue(path));
}

} // namespace chaos
