#pragma once

#include <QtGlobal>

#include <cstddef>
#include <utility>
#include <vector>

namespace values::detail {

/// A hash table without chains: all its slots lie in one array, and a slot that is taken sends one on to the next.
///
/// A look-up costs the hash and, nearly always, one comparison. A @p Slot holds a key and what belongs to it; made by
/// default it is free. It has IsFree(), and GetHash() with the hash of its key, whose upper bits say where to
/// begin.
template <typename Slot>
class FlatTable
{
public:
    /// The slot whose key has the @p hash and for which @p matches is true; a free one when there is none. Key and
    /// hash must stay as they are. Valid until the table changes.
    template <typename Matches>
    [[nodiscard]] const Slot& Find(uint hash, Matches matches) const
    {
        return m_slots[PlaceOf(hash, matches)];
    }
    template <typename Matches>
    [[nodiscard]] Slot& Find(uint hash, Matches matches)
    {
        return m_slots[PlaceOf(hash, matches)];
    }

    /// Adds @p slot, which is not free and whose key is not in the table.
    void Insert(Slot slot)
    {
        // The fuller the table, the longer the rows of taken slots that look-ups walk; and their lengths, hard to
        // predict, cost more than the steps.
        if (2 * (m_count + 1) > m_slots.size())
            Grow();
        const uint hash = slot.GetHash();
        m_slots[PlaceOf(hash, [](const Slot&) { return false; })] = std::move(slot);
        ++m_count;
    }

    /// Takes out what Find() finds.
    template <typename Matches>
    Slot Take(uint hash, Matches matches)
    {
        std::size_t gap = PlaceOf(hash, matches);
        Slot taken = std::exchange(m_slots[gap], Slot());
        if (taken.IsFree())
            return taken;
        // What follows in the row moves into the gap, unless that would bring it before the place its hash stands for.
        for (std::size_t place = Next(gap); !m_slots[place].IsFree(); place = Next(place)) {
            const std::size_t fromHome = Distance(Home(m_slots[place].GetHash()), place);
            if (fromHome >= Distance(gap, place))
                m_slots[std::exchange(gap, place)] = std::exchange(m_slots[place], Slot());
        }
        --m_count;
        return taken;
    }

    void Clear() { *this = FlatTable(); }

    [[nodiscard]] std::size_t GetCount() const { return m_count; }

    /// Calls @p visit with every slot that is not free, in no particular order.
    template <typename Visit>
    void ForEach(Visit visit) const
    {
        for (const Slot& slot : m_slots) {
            if (!slot.IsFree())
                visit(slot);
        }
    }

private:
    [[nodiscard]] std::size_t Mask() const { return m_slots.size() - 1; }
    [[nodiscard]] std::size_t Home(uint hash) const { return hash >> m_shift; }
    [[nodiscard]] std::size_t Next(std::size_t place) const { return (place + 1) & Mask(); }
    [[nodiscard]] std::size_t Distance(std::size_t from, std::size_t to) const { return (to - from) & Mask(); }

    template <typename Matches>
    [[nodiscard]] std::size_t PlaceOf(uint hash, Matches matches) const
    {
        std::size_t place = Home(hash);
        while (!m_slots[place].IsFree() && !matches(m_slots[place]))
            place = Next(place);
        return place;
    }

    void Grow()
    {
        std::vector<Slot> old(2 * m_slots.size());
        old.swap(m_slots);
        --m_shift;
        for (Slot& slot : old) {
            if (slot.IsFree())
                continue;
            const uint hash = slot.GetHash();
            m_slots[PlaceOf(hash, [](const Slot&) { return false; })] = std::move(slot);
        }
    }

    std::vector<Slot> m_slots = std::vector<Slot>(2); // their number is a power of two; at least one is free
    uint m_shift = 31;                                // leaves as many bits of a hash as number the slots
    std::size_t m_count = 0;
};

} // namespace values::detail
