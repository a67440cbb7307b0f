// The macros that register benchmarks make globals. clazy:excludeall=non-pod-global-static

// The report on stations and services, opened and painted, against a bare message box that shows the same text.

#include "benchmarkmain.h"

#include "guicomponentbase/guicomponentcommon.h"
#include "locatestatushandler.h"
#include "valueframework/tree.h"
#include "valueframework/valueclasses/valueobservermacros.h"

#include <QApplication>
#include <QMessageBox>
#include <QWidget>

#include <map>

using namespace VelmarGui;

namespace {

QString statusText(int stations)
{
    QStringList tokens;
    for (int i = 1; i <= stations; ++i) {
        tokens << QStringLiteral("DFID%1").arg(i) << QStringLiteral("N_Station %1").arg(i) << QStringLiteral("ST49")
               << QStringLiteral("FB20000000") << QStringLiteral("FE3000000000");
    }
    return tokens.join(QLatin1Char('#'));
}

/// Closes every message box once it has been painted, and keeps its text.
class BoxCloser : public QObject
{
public:
    BoxCloser() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::Paint)
            return false;
        auto* const box = qobject_cast<QMessageBox*>(watched);
        if (box != nullptr) {
            text = box->text();
            QMetaObject::invokeMethod(box, "reject", Qt::QueuedConnection);
        }
        return false;
    }
    QString text;
};

/// Two services with @p stations stations each.
struct Display
{
    GuiComponentCommon common;
    QWidget parent;
    LocateStatusHandler handler{&parent, &common, QStringLiteral("/C/"), QStringLiteral("/H/")};

    explicit Display(int stations)
    {
        const QString text = statusText(stations);
        values::CreateOrLink<values::StringValue>(QStringLiteral("/H/Values/Status/LocateStatus"))
            ->SetValue(text, nullptr);
        values::CreateOrLink<values::StringValue>(QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus"))
            ->SetValue(text, nullptr);
        values::CreateOrLink<values::DoubleValue>(QStringLiteral("/GLOBAL/Frequency"))->SetValue(100e6, nullptr);
        handler.SetUpValues();
    }
    ~Display() { values::Tree::Instance()->Clear(); }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    void open() { QMetaObject::invokeMethod(&handler, "slot_open", Qt::DirectConnection); }
};

void report(benchmark::State& state)
{
    Display display(static_cast<int>(state.range(0)));
    const BoxCloser closer;
    for (auto _ : state)
        display.open();
}

/// What the report says; opening it to know takes as long as a measurement.
const QString& reportText(int stations)
{
    static std::map<int, QString> texts;
    QString& text = texts[stations];
    if (text.isEmpty()) {
        const BoxCloser closer;
        Display(stations).open();
        text = closer.text;
    }
    return text;
}

void bareBox(benchmark::State& state)
{
    const QString& text = reportText(static_cast<int>(state.range(0)));
    const BoxCloser closer;
    for (auto _ : state) {
        QMessageBox box;
        box.setWindowTitle(QStringLiteral("Locate states"));
        box.setText(text);
        box.setIconPixmap(QPixmap(QStringLiteral(":/icons/On")));
        box.exec();
    }
}

constexpr int few = 10;
constexpr int many = 1000; // laid out for seconds, so long that a few repetitions tell enough
constexpr int fewRepetitions = 2;

BENCHMARK(report)->Arg(few);
BENCHMARK(report)->Arg(many)->Repetitions(fewRepetitions);
BENCHMARK(bareBox)->Arg(few);
BENCHMARK(bareBox)->Arg(many)->Repetitions(fewRepetitions);

} // namespace

DFL_BENCHMARK_MAIN(QApplication)
