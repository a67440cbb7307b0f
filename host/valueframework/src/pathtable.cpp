#include "pathtable.h"

#include <QHash>

#include <cstring>

namespace values {

namespace {

/// Compares with the paths of slots. The hash comes first: to see a slot's path costs a look elsewhere in memory.
auto isAt(const QString& path, uint hash)
{
    return [&path, hash](const auto& slot) {
        return slot.hash == hash && slot.path.size() == path.size() &&
               std::memcmp(slot.path.constData(), path.constData(),
                           static_cast<std::size_t>(path.size()) * sizeof(QChar)) == 0;
    };
}

} // namespace

PathTable::PathTable()
    : m_seed(static_cast<uint>(qGlobalQHashSeed()))
{
}

ValueBase* PathTable::find(const QString& path) const
{
    const uint hash = qHash(path, m_seed);
    return m_slots.Find(hash, isAt(path, hash)).value;
}

void PathTable::insert(const QString& path, ValueBase* value)
{
    m_slots.Insert({path, value, qHash(path, m_seed)});
}

ValueBase* PathTable::take(const QString& path)
{
    const uint hash = qHash(path, m_seed);
    return m_slots.Take(hash, isAt(path, hash)).value;
}

std::vector<ValueBase*> PathTable::all() const
{
    std::vector<ValueBase*> values;
    values.reserve(m_slots.GetCount());
    m_slots.ForEach([&values](const Slot& slot) { values.push_back(slot.value); });
    return values;
}

} // namespace values
