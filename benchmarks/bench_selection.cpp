// The macros that register benchmarks make globals. clazy:excludeall=non-pod-global-static

// Finding a selection's item by its key, against a bare hash table with the same keys.

#include "benchmarkmain.h"

#include "valueframework/valueclasses/valueselection.h"

#include <QCoreApplication>
#include <QHash>

#include <algorithm>
#include <random>
#include <vector>

namespace {

/// Every second bandwidth is offered, so keys are no positions.
constexpr int keyOf(int index)
{
    return 2 * index + 1;
}

std::vector<int> shuffledKeys(int count)
{
    std::vector<int> keys;
    keys.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        keys.push_back(keyOf(i));
    std::shuffle(keys.begin(), keys.end(), std::mt19937(1));
    return keys;
}

template <typename Find>
void lookUp(benchmark::State& state, Find find)
{
    const std::vector<int> keys = shuffledKeys(static_cast<int>(state.range(0)));
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(find(keys[next]));
        if (++next == keys.size())
            next = 0;
    }
}

void selection(benchmark::State& state)
{
    values::ValueSelection items;
    for (int i = 0; i < state.range(0); ++i)
        items.AddItem(QString::number(i), i, keyOf(i));
    lookUp(state, [&items](int key) { return items.GetItemIndex(key); });
}

void bareHash(benchmark::State& state)
{
    QHash<int, int> indices;
    for (int i = 0; i < state.range(0); ++i)
        indices.insert(keyOf(i), i);
    lookUp(state, [&indices](int key) { return indices.value(key, -1); });
}

BENCHMARK(selection)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(bareHash)->RangeMultiplier(10)->Range(10, 10000);

} // namespace

DFL_BENCHMARK_MAIN(QCoreApplication)
