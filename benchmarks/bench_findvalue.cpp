// The macros that register benchmarks make globals. clazy:excludeall=non-pod-global-static

// Looking values up by their paths, against a bare hash table with the same keys. PATHS says how many there are.

#include "benchmarkmain.h"

#include "valueframework/tree.h"
#include "valueframework/valueclasses/valuenumeric.h"

#include <QCoreApplication>
#include <QHash>

#include <algorithm>
#include <random>
#include <vector>

namespace {

/// Paths as components have them: long common beginnings, differences at the end.
QString pathOf(int number)
{
    return QStringLiteral("/GUI/DFLocateHandler/Values/Result/Level/%1").arg(number, 7, 10, QLatin1Char('0'));
}

/// The values below their paths, in the tree and in a table of its own.
class Values
{
public:
    Values()
    {
        m_table.reserve(PATHS);
        m_queries.reserve(PATHS);
        for (int i = 0; i < PATHS; ++i) {
            const QString path = pathOf(i);
            auto* value = new values::IntValue;
            const int nameStart = path.lastIndexOf(QLatin1Char('/')) + 1;
            value->SetName(path.mid(nameStart), nullptr);
            values::Tree::Instance()->InsertValue(path.left(nameStart), value);
            m_table.insert(path, value);
            // A copy: who looks a value up has made the path up himself.
            m_queries.emplace_back(path.constData(), path.size());
        }
        std::shuffle(m_queries.begin(), m_queries.end(), std::mt19937(1));
    }

    template <typename Find>
    void lookUp(benchmark::State& state, Find find) const
    {
        std::size_t next = 0;
        for (auto _ : state) {
            benchmark::DoNotOptimize(find(m_queries[next]));
            if (++next == m_queries.size())
                next = 0;
        }
    }

    [[nodiscard]] const QHash<QString, values::ValueBase*>& table() const { return m_table; }

private:
    QHash<QString, values::ValueBase*> m_table;
    std::vector<QString> m_queries;
};

const Values& allValues()
{
    static const Values all;
    return all;
}

void tree(benchmark::State& state)
{
    allValues().lookUp(state, [tree = values::Tree::Instance()](const QString& path) { return tree->FindValue(path); });
}

void bareHash(benchmark::State& state)
{
    allValues().lookUp(state, [&table = allValues().table()](const QString& path) { return table.value(path); });
}

BENCHMARK(tree);
BENCHMARK(bareHash);

} // namespace

DFL_BENCHMARK_MAIN(QCoreApplication)
