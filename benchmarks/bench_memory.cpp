// The macros that register benchmarks make globals. clazy:excludeall=non-pod-global-static

// The memory that a value of the tree and a station of a locate service take, against the bare texts that say the same.

#include "benchmarkmain.h"

#include "locatestatus.h"
#include "valueframework/tree.h"
#include "valueframework/valueclasses/valuenumeric.h"

#include <QCoreApplication>

#include <malloc.h>

#include <vector>

namespace {

constexpr std::size_t count = 10000;

std::size_t bytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// Calls @p make, which returns something that holds what is measured, and tells how many bytes each of it takes.
template <typename Make>
void measure(benchmark::State& state, Make make)
{
    for (auto _ : state) {
        const std::size_t before = bytesInUse();
        [[maybe_unused]] const auto holder = make();
        state.counters["bytes"] = static_cast<double>(bytesInUse() - before) / static_cast<double>(count);
    }
    values::Tree::Instance()->Clear();
}

const QString folder = QStringLiteral("/GUI/DFLocateHandler/Values/Result/Level/");

QString nameOf(int number)
{
    return QStringLiteral("%1").arg(number, 7, 10, QLatin1Char('0'));
}

double contentOf(int number)
{
    return 155.5e6 + 12500.0 * number;
}

void valueInTree(benchmark::State& state)
{
    values::Tree::Instance()->Clear();
    measure(state, [] {
        for (int i = 0; i < static_cast<int>(count); ++i) {
            auto* const value = new values::DoubleValue(contentOf(i));
            value->SetName(nameOf(i), nullptr);
            values::Tree::Instance()->InsertValue(folder, value);
        }
        return 0;
    });
}

/// The path and the content of each value.
void textsOfValue(benchmark::State& state)
{
    measure(state, [] {
        std::vector<QString> texts;
        texts.reserve(2 * count);
        for (int i = 0; i < static_cast<int>(count); ++i) {
            texts.push_back(folder + nameOf(i));
            texts.push_back(QString::number(contentOf(i), 'f', 0));
        }
        return texts;
    });
}

QString statusText()
{
    QString text;
    for (int i = 1; i <= static_cast<int>(count); ++i) {
        text += QStringLiteral("#DFID%1#N_Station %1#LO%2#LA%3#ST49#FB20000000#FE3000000000")
                    .arg(i)
                    .arg(6.0 + i * 0.001, 0, 'f', 6)
                    .arg(47.0 + i * 0.0002, 0, 'f', 6);
    }
    text.squeeze();
    return text;
}

void stationInTable(benchmark::State& state)
{
    const QString text = statusText();
    measure(state, [&text] {
        VelmarGui::LocateServiceStatus service;
        applyStatusText(service, text);
        return service;
    });
}

void textOfStation(benchmark::State& state)
{
    measure(state, [] { return statusText(); });
}

BENCHMARK(valueInTree)->Iterations(1);
BENCHMARK(textsOfValue)->Iterations(1);
BENCHMARK(stationInTable)->Iterations(1);
BENCHMARK(textOfStation)->Iterations(1);

} // namespace

DFL_BENCHMARK_MAIN(QCoreApplication)
