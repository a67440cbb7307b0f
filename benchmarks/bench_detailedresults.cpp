// The macros that register benchmarks make globals. clazy:excludeall=non-pod-global-static

// The table with the results of all stations, filled from the result values.
//
// The peer formats and sets the same cells one after the other, as a table is filled plainly. Two results take turns,
// and each is painted before the next one comes. In "newNumbers" the measured numbers and errors differ, as from one
// result to the next; in "allNew" the stations and their positions as well.

#include "benchmarkmain.h"

#include "dfdetailedresults.h"
#include "errortext.h"
#include "resultformats.h"
#include "resultnames.h"
#include "valueframework/tree.h"
#include "valueframework/valueclasses/valueobservermacros.h"
#include "ztbase/brix/numbers.h"

#include <QApplication>
#include <QTableWidget>

#include <array>
#include <map>
#include <memory>

using namespace VelmarGui;

namespace {

const QString resultPrefix = QStringLiteral("/H/Values/Result/");

enum class Difference
{
    Numbers,
    All
};

QString fixed(double number, int decimals)
{
    return QString::number(number, 'f', decimals);
}

/// The result values of one result for @p stations stations. Only @p turn tells one result from another.
class Result
{
public:
    Result(int stations, int turn, Difference difference)
    {
        const int other = difference == Difference::All ? turn : 0;
        for (int key = 1; key <= stations; ++key) {
            const auto add = [&](QLatin1String name, const QString& text) { m_values[name].AddItem(text, 0.0, key); };
            add(selectedDfName, QStringLiteral("Station %1").arg(key + other));
            add(azimuthName, fixed((key * 37 % 3600 + turn) / 10.0, 1));
            add(qualityName, QString::number(40 + (key * 7 + turn) % 60));
            add(levelName, fixed((key * 13 % 600 + turn) / 10.0, 1));
            add(errorsName, (key + turn) % 10 == 0 ? QStringLiteral("-14") : QString());
            add(longitudeName, fixed(6.0 + key % 1000 * 0.001 + other, 6));
            add(latitudeName, fixed(47.0 + key % 997 * 0.002 + other, 6));
        }
    }

    void publish() const
    {
        for (const auto& [name, value] : m_values)
            values::CreateOrLink<values::ValueSelection>(resultPrefix + name)->Assign(value, nullptr);
    }

private:
    std::map<QString, values::ValueSelection> m_values;
};

/// Results that take turns, and the values that they share.
class Driver
{
public:
    Driver(int stations, Difference difference)
        : m_results{Result(stations, 0, difference), Result(stations, 1, difference)}
    {
        values::Tree::Instance()->Clear();
        text(frequencyName, QStringLiteral("433920000"));
        text(resultTimeName, QStringLiteral("2026-01-15 11:00:00"));
        values::CreateOrLink<values::IntValue>(resultPrefix + qualityThresholdName)->SetValue(50, nullptr);
        m_results[1].publish();
    }
    ~Driver() { values::Tree::Instance()->Clear(); }
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    void publishNext() { m_results[m_turn++ % 2].publish(); }
    /// The last thing that a driver writes of a result; the window fills its table.
    void announce()
    {
        values::CreateOrLink<values::StringValue>(resultPrefix + resultTimeName)->HasChanged(ChangeContent, nullptr);
    }

private:
    static void text(QLatin1String name, const QString& content)
    {
        values::CreateOrLink<values::StringValue>(resultPrefix + name)->SetValue(content, nullptr);
    }

    std::array<Result, 2> m_results;
    std::size_t m_turn = 0;
};

void showAndPaint(QWidget& window)
{
    window.show();
    QCoreApplication::processEvents();
}

enum class Changes
{
    Some,
    None
};

void fillWindow(benchmark::State& state, Difference difference, Changes changes)
{
    Driver driver(static_cast<int>(state.range(0)), difference);
    DFDetailedResults window(resultPrefix);
    showAndPaint(window);
    for (auto _ : state) {
        state.PauseTiming();
        if (changes == Changes::Some)
            driver.publishNext();
        QCoreApplication::processEvents();
        state.ResumeTiming();
        driver.announce();
    }
}

const values::SelectionItem* itemOf(const values::ValueSelection& selection, int key)
{
    return selection.GetItem(selection.GetItemIndex(key));
}

/// Fills a table cell by cell.
class PlainFill
{
public:
    explicit PlainFill(QTableWidget& table)
        : m_table(table)
    {
    }

    void operator()()
    {
        const double frequency = Brix::toDoubleEx(find<values::StringValue>(frequencyName).GetValue());
        const int threshold = find<values::IntValue>(qualityThresholdName).GetValue();
        const auto& stations = find<values::ValueSelection>(selectedDfName);
        const auto& azimuths = find<values::ValueSelection>(azimuthName);
        const auto& qualities = find<values::ValueSelection>(qualityName);
        const auto& levels = find<values::ValueSelection>(levelName);
        const auto& errors = find<values::ValueSelection>(errorsName);
        const auto& longitudes = find<values::ValueSelection>(longitudeName);
        const auto& latitudes = find<values::ValueSelection>(latitudeName);
        for (int row = 0; row < m_table.rowCount(); ++row) {
            const values::SelectionItem& station = *stations.GetItem(row);
            const int key = station.GetKey();
            const bool goodEnough = itemOf(qualities, key)->GetName().toInt() >= threshold;
            const int error = itemOf(errors, key)->GetName().toInt();
            const QString nothing = nothingToShow;
            set(row, 0, station.GetName());
            set(row, 1, frequency != 0.0 ? frequencyText(frequency) : nothing);
            set(row, 2, goodEnough ? textWithUnit(itemOf(azimuths, key), QStringLiteral("°")) : nothing);
            set(row, 3, frequency != 0.0 ? textWithUnit(itemOf(levels, key), QStringLiteral(" dBµV")) : nothing);
            set(row, 4, goodEnough ? textWithUnit(itemOf(qualities, key), QStringLiteral("%")) : nothing);
            set(row, 5, coordinateText(itemOf(longitudes, key)->GetName()));
            set(row, 6, coordinateText(itemOf(latitudes, key)->GetName()));
            set(row, 7, error != 0 ? errorText(error) : nothing);
        }
    }

private:
    template <typename T>
    static T& find(QLatin1String name)
    {
        return *values::CreateOrLink<T>(resultPrefix + name);
    }
    void set(int row, int column, const QString& text) { m_table.item(row, column)->setText(text); }

    QTableWidget& m_table;
};

void fillPlainly(benchmark::State& state, Difference difference)
{
    Driver driver(static_cast<int>(state.range(0)), difference);
    QWidget window;
    Ui::DFLocateDetailedResultsWidget form;
    form.setupUi(&window);
    QTableWidget& table = *form.m_pTable;
    table.setRowCount(static_cast<int>(state.range(0)));
    for (int row = 0; row < table.rowCount(); ++row) {
        for (int column = 0; column < table.columnCount(); ++column)
            table.setItem(row, column, new QTableWidgetItem);
    }
    PlainFill fill(table);
    fill();
    showAndPaint(window);
    for (auto _ : state) {
        state.PauseTiming();
        driver.publishNext();
        QCoreApplication::processEvents();
        state.ResumeTiming();
        fill();
    }
}

void newNumbers(benchmark::State& state)
{
    fillWindow(state, Difference::Numbers, Changes::Some);
}
void allNew(benchmark::State& state)
{
    fillWindow(state, Difference::All, Changes::Some);
}
void unchanged(benchmark::State& state)
{
    fillWindow(state, Difference::Numbers, Changes::None);
}
void newNumbersPlainly(benchmark::State& state)
{
    fillPlainly(state, Difference::Numbers);
}
void allNewPlainly(benchmark::State& state)
{
    fillPlainly(state, Difference::All);
}

BENCHMARK(newNumbers)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(newNumbersPlainly)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000);
BENCHMARK(allNew)->Arg(1000);
BENCHMARK(allNewPlainly)->Arg(1000);
BENCHMARK(unchanged)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000);

} // namespace

DFL_BENCHMARK_MAIN(QApplication)
