#pragma once

#include <QStringList>

#include <optional>

namespace workbench {

/// What a loader made of a file: the value, or every reason why there is none. Never both, never neither.
template <typename T>
struct Loaded
{
    std::optional<T> value;
    /// Sentences for people, in the order of the file: "file:line: field: what was expected"; without line and field
    /// when the file cannot be read at all.
    QStringList errors;

    explicit operator bool() const { return value.has_value(); }
};

} // namespace workbench
