// The macros that register benchmarks make globals. clazy:excludeall=non-pod-global-static

// Reading the driver's status text, and telling anew what can be located with it.
//
// The peer reads the same text with the text functions of Qt, the floor only looks for the ends of the tokens. A
// network tells its status over and over with a few changes, so each reading meets a record that knows all stations and
// another text than before.

#include "benchmarkmain.h"

#include "guicomponentbase/guicomponentcommon.h"
#include "locatestatus.h"
#include "locatestatushandler.h"
#include "valueframework/tree.h"
#include "valueframework/valueclasses/valueobservermacros.h"

#include <QApplication>
#include <QVector>
#include <QWidget>

#include <array>

using namespace VelmarGui;

namespace {

constexpr int few = 1000;
constexpr int many = 100000;

/// What a driver writes of @p stations stations; one in ten has another status word when @p second.
QString statusText(int stations, bool second)
{
    QString text;
    for (int i = 1; i <= stations; ++i) {
        if (i > 1)
            text += QLatin1Char('#');
        const bool isHf = i % 2 == 0;
        const int status = 49 - (second && i % 10 == 0 ? 1 : 0);
        text += QStringLiteral("DFID%1#N_Station %1#LO%2#LA%3#ST%4#FB%5#FE%6")
                    .arg(i)
                    .arg(6.0 + i % 1000 * 0.001, 0, 'f', 6)
                    .arg(47.0 + i % 997 * 0.002, 0, 'f', 6)
                    .arg(status)
                    .arg(isHf ? 1500000 : 20000000)
                    .arg(isHf ? 30000000LL : 3000000000LL);
    }
    return text;
}

using TwoTexts = std::array<QString, 2>;

TwoTexts statusTexts(int stations)
{
    return {statusText(stations, false), statusText(stations, true)};
}

void status(benchmark::State& state)
{
    const TwoTexts texts = statusTexts(static_cast<int>(state.range(0)));
    LocateServiceStatus service;
    applyStatusText(service, texts[1]);
    std::size_t turn = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(applyStatusText(service, texts[turn++ % 2]));
}

/// The same record by way of Qt's text functions.
void applyByReferences(LocateServiceStatus& service, const QString& text)
{
    service.anyAvailable = false;
    service.connected = !text.isEmpty();
    int id = 0;
    const QVector<QStringRef> tokens = text.splitRef(QLatin1Char('#'));
    for (const QStringRef& token : tokens) {
        if (token.contains(QLatin1String("DFID"))) {
            id = token.mid(4).toInt();
            service.stations[id].id = id;
            continue;
        }
        const auto found = service.stations.find(id);
        if (found == service.stations.end())
            continue;
        LocateStationStatus& station = found->second;
        const QStringRef kind = token.left(2);
        const QStringRef content = token.mid(2);
        if (kind == QLatin1String("N_")) {
            station.name = content.toString();
        } else if (kind == QLatin1String("ST")) {
            station.status = content.toInt();
            service.anyAvailable |= (station.status & LocateStationStatus::Available) != 0;
        } else if (kind == QLatin1String("FB")) {
            station.rangeLow = content.toDouble();
        } else if (kind == QLatin1String("FE")) {
            station.rangeHigh = content.toDouble();
        }
    }
}

void splitReferences(benchmark::State& state)
{
    const TwoTexts texts = statusTexts(static_cast<int>(state.range(0)));
    LocateServiceStatus service;
    applyByReferences(service, texts[1]);
    std::size_t turn = 0;
    for (auto _ : state) {
        applyByReferences(service, texts[turn++ % 2]);
        benchmark::DoNotOptimize(service);
    }
}

void delimiterScan(benchmark::State& state)
{
    const TwoTexts texts = statusTexts(static_cast<int>(state.range(0)));
    std::size_t turn = 0;
    for (auto _ : state) {
        const QString& text = texts[turn++ % 2];
        int tokens = 1;
        for (int at = text.indexOf(QLatin1Char('#')); at >= 0; at = text.indexOf(QLatin1Char('#'), at + 1))
            ++tokens;
        benchmark::DoNotOptimize(tokens);
    }
}

/// A receiver that is tuned while the status stays as it is, from a frequency that all stations cover to one that none
/// does and back.
void frequencyChange(benchmark::State& state)
{
    values::Tree::Instance()->Clear();
    auto* const df = values::CreateOrLink<values::StringValue>(QStringLiteral("/H/Values/Status/LocateStatus"));
    auto* const hri = values::CreateOrLink<values::StringValue>(QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus"));
    auto* const frequency = values::CreateOrLink<values::DoubleValue>(QStringLiteral("/GLOBAL/Frequency"));
    const QString text = statusText(static_cast<int>(state.range(0)), false);
    df->SetValue(text, nullptr);
    hri->SetValue(text, nullptr);
    {
        GuiComponentCommon common;
        QWidget parent;
        LocateStatusHandler handler(&parent, &common, QStringLiteral("/C/"), QStringLiteral("/H/"));
        handler.SetUpValues();
        bool inside = false;
        for (auto _ : state) {
            frequency->SetValue(inside ? 100e6 : 5e9, nullptr);
            inside = !inside;
        }
    }
    values::Tree::Instance()->Clear();
}

BENCHMARK(status)->Arg(few)->Arg(many);
BENCHMARK(splitReferences)->Arg(few)->Arg(many);
BENCHMARK(delimiterScan)->Arg(few)->Arg(many);
BENCHMARK(frequencyChange)->Arg(few)->Arg(many);

} // namespace

DFL_BENCHMARK_MAIN(QApplication)
