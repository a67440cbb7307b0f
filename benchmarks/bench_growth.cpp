// The macros that register benchmarks make globals. clazy:excludeall=non-pod-global-static

// How the cost of one result grows with the number of stations and with the number of component instances: from the
// driver's first write until everything is painted.

#include "benchmarkmain.h"

#include "dflocatetoolbar.h"
#include "drivers/providedvalues.h"
#include "drivers/resultvalues.h"
#include "guicomponentbase/guicomponentcommon.h"
#include "support/detailedresults.h"
#include "support/networkresult.h"

#include <QApplication>
#include <QMainWindow>

#include <array>
#include <memory>
#include <vector>

using namespace workbench;
using testsupport::networkResult;

namespace {

const QString resultRoot = QStringLiteral("/GUI/DFLocateHandler/Values/Result/");

/// A component's toolbar in a main window, with its window of all results open.
class Instance
{
public:
    Instance()
        : m_toolbar(new VelmarGui::DFLocateToolBar(&m_common, QStringLiteral("/GUI/DFLocateComponent/")))
    {
        m_main.addToolBar(m_toolbar);
        m_main.resize(1200, 100);
        m_main.show();
        testsupport::openDetailedResults(*m_toolbar);
    }

private:
    VelmarGui::GuiComponentCommon m_common;
    QMainWindow m_main;
    VelmarGui::DFLocateToolBar* m_toolbar; // the main window's
};

void oneResult(benchmark::State& state, int stations, int instances)
{
    values::Tree::Instance()->Clear();
    {
        const std::array<DfResult, 2> results{networkResult(stations, 0), networkResult(stations, 1)};
        ProvidedValues provided;
        ResultValues written(provided, resultRoot, testsupport::stationsOf(results[0]));
        const auto write = [&](std::size_t turn) {
            return written.write(results[turn % 2], 50, GeoPosition{48.1, 11.6});
        };
        (void)write(1);
        std::vector<std::unique_ptr<Instance>> shown;
        shown.reserve(static_cast<std::size_t>(instances));
        for (int i = 0; i < instances; ++i)
            shown.push_back(std::make_unique<Instance>());
        QCoreApplication::processEvents();
        std::size_t turn = 0;
        for (auto _ : state) {
            if (!write(turn++))
                state.SkipWithError("not written");
            QCoreApplication::processEvents();
        }
    }
    values::Tree::Instance()->Clear();
}

void stations(benchmark::State& state)
{
    oneResult(state, static_cast<int>(state.range(0)), 1);
}

void instances(benchmark::State& state)
{
    oneResult(state, 10, static_cast<int>(state.range(0)));
}

BENCHMARK(stations)->RangeMultiplier(10)->Range(10, 10000);
BENCHMARK(instances)->Arg(1)->Arg(20);

} // namespace

DFL_BENCHMARK_MAIN(QApplication)
