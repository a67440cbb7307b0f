// The macros that register benchmarks make globals. clazy:excludeall=non-pod-global-static

// The locate toolbar built, bound to a driver's values and shown, against a bare toolbar with the same stock widgets;
// and the component out of its library, loaded anew each time, against the same component linked into this program.

#include "benchmarkmain.h"

#include "dflocatetoolbar.h"
#include "drivervalues.h"
#include "guicomponentbase/guicomponentcommon.h"
#include "guicomponentbase/iguicomponent.h"
#include "icons/dfletters.xpm"
#include "icons/magnifier.xpm"

#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLibrary>
#include <QMainWindow>
#include <QToolBar>
#include <QToolButton>

#include <dlfcn.h>

using namespace VelmarGui;
using testsupport::DriverValues;

extern "C" {
IDllInstance* ZTCreate(const wchar_t* name);
void ZTDestroy(IDllInstance* instance);
}

namespace {

const QString componentName = QStringLiteral("/GUI/DFLocateComponent/");

/// What a driver has for the toolbar.
struct Driver : DriverValues
{
    Driver()
    {
        add<values::StringValue>("Values/Status/LocateStatus")
            ->SetValue(QStringLiteral("DFID3#N_North#ST49#FB20000000#FE3000000000"), nullptr);
        tree.add<values::StringValue>(QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus"));
        tree.add<values::DoubleValue>(QStringLiteral("/GLOBAL/Frequency"))->SetValue(100e6, nullptr);
    }
};

void show(QMainWindow& window, QToolBar* toolbar)
{
    window.addToolBar(toolbar);
    window.show();
    QCoreApplication::processEvents();
}

void locateToolbar(benchmark::State& state)
{
    const Driver driver;
    GuiComponentCommon common;
    for (auto _ : state) {
        QMainWindow window;
        auto* const toolbar = new DFLocateToolBar(&common, componentName);
        QMetaObject::invokeMethod(toolbar, "sl_VTConnected", Qt::DirectConnection);
        show(window, toolbar);
    }
}

/// A stock widget in a toolbar, with all that the toolbar's own widgets have and stock widgets can have.
template <typename Widget>
Widget* addWidget(QToolBar& toolbar, const char* name, int width)
{
    auto* const widget = new Widget(&toolbar);
    widget->setObjectName(QLatin1String(name));
    widget->setToolTip(QLatin1String(name));
    if (width > 0)
        widget->setFixedWidth(width);
    toolbar.addWidget(widget);
    return widget;
}

void addLabel(QToolBar& toolbar, const char* name, const char* text, int width)
{
    auto* const label = addWidget<QLabel>(toolbar, name, width);
    label->setText(QLatin1String(text));
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
}

void addSpin(QToolBar& toolbar, const char* name, double minimum, double maximum, double value)
{
    auto* const spin = addWidget<QDoubleSpinBox>(toolbar, name, 40);
    spin->setButtonSymbols(QAbstractSpinBox::NoButtons);
    spin->setRange(minimum, maximum);
    spin->setValue(value);
}

void addCombo(QToolBar& toolbar, const char* name, int width, const QStringList& items)
{
    addWidget<QComboBox>(toolbar, name, width)->addItems(items);
}

/// As wide as its items, for which it makes its list at once.
void addStationCombo(QToolBar& toolbar, const char* name, const QStringList& items)
{
    auto* const combo = addWidget<QComboBox>(toolbar, name, 0);
    combo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    combo->setMaximumWidth(120);
    combo->addItems(items);
}

void bareToolbar(benchmark::State& state)
{
    for (auto _ : state) {
        QMainWindow window;
        auto* const toolbar = new QToolBar;
        addWidget<QToolButton>(*toolbar, "DFStarter", 0)->setIcon(QIcon(QPixmap(dfletters_xpm)));
        toolbar->addSeparator();
        addWidget<QLabel>(*toolbar, "Led Label", 0)
            ->setPixmap(
                QPixmap(QStringLiteral(":/icons/On")).scaled(20, 20, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        toolbar->addSeparator();
        addLabel(*toolbar, "L", "L.", 18);
        addSpin(*toolbar, "Level threshold", -40, 200, 20);
        addLabel(*toolbar, "Q", "Q.", 18);
        addSpin(*toolbar, "Quality threshold", 1, 100, 55);
        addCombo(*toolbar, "DF Mode", 60, {"Normal", "Cont", "Gate"});
        addCombo(*toolbar, "DF Bandwidth", 80, {"120 Hz", "12.0 kHz", "200.0 kHz"});
        addCombo(*toolbar, "DF Averaging", 60, {"Off", "200m", "10s"});
        toolbar->addSeparator();
        addLabel(*toolbar, "leading", "", 0);
        addStationCombo(*toolbar, "direction finder name", {"North", "South"});
        addLabel(*toolbar, "average bearing", "12.5°", 36);
        addLabel(*toolbar, "average quality", "80%", 36);
        addLabel(*toolbar, "LocationFindingTime", "---", 60);
        auto* const button = addWidget<QToolButton>(*toolbar, "DetailedResults", 0);
        button->setIcon(QIcon(QPixmap(magnifier_xpm)));
        button->setText(QStringLiteral("Detailed results"));
        show(window, toolbar);
    }
}

/// A component as a host starts, shows and ends it, with the form of its panel.
void runComponent(ZTCreateFunction create, ZTDestroyFunction destroy)
{
    GuiComponentCommon common;
    common.SetFormFolder(QStringLiteral(FORM_FOLDER));
    IDllInstance* const instance = create(L"DFLocateComponent");
    auto& component = dynamic_cast<IGuiComponent&>(*instance);
    QMainWindow window;
    window.setCentralWidget(component.CreateWidget(&common, componentName));
    component.ConnectInterfaceValues();
    show(window, component.GetToolBar());
    destroy(instance);
}

void linkedIn(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        const Driver driver;
        state.ResumeTiming();
        runComponent(ZTCreate, ZTDestroy);
    }
}

void fromLibrary(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        QLibrary library(QStringLiteral(COMPONENT_LIBRARY));
        {
            const Driver driver;
            state.ResumeTiming();
            const auto create = reinterpret_cast<ZTCreateFunction>(library.resolve("ZTCreate"));
            const auto destroy = reinterpret_cast<ZTDestroyFunction>(library.resolve("ZTDestroy"));
            runComponent(create, destroy);
            state.PauseTiming();
        }
        // Its values have gone, and nothing knows its texts any more.
        if (!library.unload() || dlopen(COMPONENT_LIBRARY, RTLD_LAZY | RTLD_NOLOAD) != nullptr)
            state.SkipWithError("the library stays loaded");
        state.ResumeTiming();
    }
}

BENCHMARK(locateToolbar);
BENCHMARK(bareToolbar);
BENCHMARK(linkedIn);
BENCHMARK(fromLibrary);

} // namespace

DFL_BENCHMARK_MAIN(QApplication)
