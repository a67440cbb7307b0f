// The macros that register benchmarks make globals. clazy:excludeall=non-pod-global-static

// One result of 100 stations, from the driver's first write until the toolbar and the window with all results are
// painted, against painting both alone.

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

using namespace workbench;

namespace {

constexpr int stationCount = 100;
const QString handlerRoot = QStringLiteral("/GUI/DFLocateHandler/");

/// What the network measured; a tenth of the stations, others in every turn, did not answer.
DfResult resultOf(int turn)
{
    DfResult result = testsupport::networkResult(stationCount, turn);
    for (StationResult& station : result.stations)
        station.error = (station.stationId + turn) % 10 == 0 ? DfError::Timeout : DfError::None;
    return result;
}

/// Counts what is painted, so that nothing is measured that was not.
class PaintCounter : public QObject
{
public:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
    int paints = 0;
};

/// The toolbar in a main window and the window with the results of all stations, both shown, as on an operator's
/// screen.
class Screen
{
public:
    Screen()
        : m_results(m_provided, handlerRoot + QStringLiteral("Values/Result/"), testsupport::stationsOf(results[0]))
    {
        write(1);
        auto* const toolbar = new VelmarGui::DFLocateToolBar(&m_common, QStringLiteral("/GUI/DFLocateComponent/"));
        m_main.addToolBar(toolbar);
        m_main.resize(1200, 100);
        m_main.show();
        testsupport::openDetailedResults(*toolbar);
        const QWidgetList windows = QApplication::topLevelWidgets();
        for (QWidget* const window : windows) {
            if (window->objectName() == QStringLiteral("DetailedResults"))
                m_window = window;
        }
        m_window->resize(900, 700);
        QCoreApplication::processEvents();
        toolbar->findChild<QWidget*>(QStringLiteral("LocationFindingTime"))->installEventFilter(&counter);
        m_window->findChild<QWidget*>(QStringLiteral("qt_scrollarea_viewport"))->installEventFilter(&counter);
    }

    void write(std::size_t turn) { (void)m_results.write(results[turn % 2], 50, GeoPosition{48.1, 11.6}); }
    void paintAll()
    {
        for (QWidget* const window : {static_cast<QWidget*>(&m_main), m_window}) {
            window->update();
            const QList<QWidget*> children = window->findChildren<QWidget*>();
            for (QWidget* const child : children)
                child->update();
        }
    }

    const std::array<DfResult, 2> results{resultOf(0), resultOf(1)};
    PaintCounter counter;

private:
    VelmarGui::GuiComponentCommon m_common;
    ProvidedValues m_provided;
    ResultValues m_results;
    QMainWindow m_main;
    QWidget* m_window = nullptr;
};

template <typename Change>
void measure(benchmark::State& state, Change change)
{
    values::Tree::Instance()->Clear();
    {
        Screen screen;
        std::size_t turn = 0;
        screen.counter.paints = 0;
        for (auto _ : state) {
            change(screen, turn++);
            QCoreApplication::processEvents();
        }
        if (screen.counter.paints < 2 * static_cast<int>(turn))
            state.SkipWithError("not everything was painted");
    }
    values::Tree::Instance()->Clear();
}

void writtenAndPainted(benchmark::State& state)
{
    measure(state, [](Screen& screen, std::size_t turn) { screen.write(turn); });
}

void paintedAlone(benchmark::State& state)
{
    measure(state, [](Screen& screen, std::size_t /*turn*/) { screen.paintAll(); });
}

BENCHMARK(writtenAndPainted);
BENCHMARK(paintedAlone);

} // namespace

DFL_BENCHMARK_MAIN(QApplication)
