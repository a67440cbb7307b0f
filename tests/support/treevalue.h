#pragma once

#include "valueframework/tree.h"

namespace testsupport {

/// The value of kind T at @p path, which is there; a test that is wrong about that ends.
template <typename T>
[[nodiscard]] T* at(const QString& path)
{
    auto* const value = dynamic_cast<T*>(values::Tree::Instance()->FindValue(path));
    if (value == nullptr)
        qFatal("There is no such value: %s", qPrintable(path));
    return value;
}

} // namespace testsupport
