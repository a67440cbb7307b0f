#pragma once

#include "valueframework/detail/flattable.h"

#include <QString>

#include <vector>

namespace values {

class ValueBase;

/// The values of a tree by their paths, whose texts it shares with them.
class PathTable
{
public:
    PathTable();

    /// The value at exactly @p path, null when there is none.
    [[nodiscard]] ValueBase* find(const QString& path) const;

    /// @p path must be free; @p value is not null.
    void insert(const QString& path, ValueBase* value);

    /// The value that was at @p path; null, with nothing changed, when there was none.
    ValueBase* take(const QString& path);

    /// All values, in no particular order.
    [[nodiscard]] std::vector<ValueBase*> all() const;

private:
    struct Slot
    {
        QString path;
        ValueBase* value = nullptr;
        uint hash = 0;

        [[nodiscard]] bool IsFree() const { return value == nullptr; }
        [[nodiscard]] uint GetHash() const { return hash; }
    };

    detail::FlatTable<Slot> m_slots;
    uint m_seed;
};

} // namespace values
