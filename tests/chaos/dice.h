#pragma once

#include <QtGlobal>

#include <cstddef>

namespace chaos {

/// The one source of chance: the same seed throws the same numbers on every machine.
class Dice
{
public:
    explicit Dice(quint64 seed)
        : m_state(seed)
    {
    }

    /// Any 64 bits (SplitMix64).
    quint64 bits()
    {
        quint64 z = (m_state += 0x9E3779B97F4A7C15u);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }

    /// 0 to @p count - 1.
    int below(int count) { return static_cast<int>(bits() % static_cast<quint64>(count)); }
    int between(int low, int high) { return low + below(high - low + 1); }
    bool oneIn(int count) { return below(count) == 0; }

    template <typename List>
    auto& pick(List& list)
    {
        return list[static_cast<decltype(list.size())>(below(static_cast<int>(list.size())))];
    }
    template <typename T, std::size_t Count>
    T& pick(T (&list)[Count])
    {
        return list[static_cast<std::size_t>(below(static_cast<int>(Count)))];
    }

private:
    quint64 m_state;
};

} // namespace chaos
