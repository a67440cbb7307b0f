// The macros that register benchmarks make globals. clazy:excludeall=non-pod-global-static

// Telling observers of a change, against a bare loop over them and against other ways to tell.

#include "bareloop.h"
#include "benchmarkmain.h"

#include "ztbase/observable.h"

#include <QCoreApplication>

#include <boost/signals2.hpp>

#include <memory>
#include <vector>

namespace {

class Counter final : public QObject, public IObserver
{
    Q_OBJECT

public:
    void Update(Observable* /*source*/, TChangeCode code) override { m_sum += code; }

public slots:
    void sl_update(Observable* source, int code) { Update(source, static_cast<TChangeCode>(code)); }

private:
    int m_sum = 0;
};

class Sender final : public QObject
{
    Q_OBJECT

signals:
    void si_changed(Observable* source, int code);
};

/// As many observers as the benchmark's argument says, each an allocation of its own as in real life.
std::vector<std::unique_ptr<Counter>> observersFor(const benchmark::State& state)
{
    std::vector<std::unique_ptr<Counter>> observers;
    observers.reserve(static_cast<std::size_t>(state.range(0)));
    for (auto i = state.range(0); i > 0; --i)
        observers.push_back(std::make_unique<Counter>());
    return observers;
}

void observable(benchmark::State& state)
{
    const auto observers = observersFor(state);
    Observable source;
    for (const auto& observer : observers)
        source.AddObserver(observer.get());
    for (auto _ : state)
        source.NotifyObservers(ChangeContent);
}

void bareLoop(benchmark::State& state)
{
    const auto observers = observersFor(state);
    Observable source;
    std::vector<IObserver*> plain;
    plain.reserve(observers.size());
    for (const auto& observer : observers)
        plain.push_back(observer.get());
    for (auto _ : state)
        tellAll(plain, &source, ChangeContent);
}

void qtSignal(benchmark::State& state)
{
    const auto observers = observersFor(state);
    Observable source;
    Sender sender;
    for (const auto& observer : observers)
        QObject::connect(&sender, SIGNAL(si_changed(Observable*, int)), observer.get(),
                         SLOT(sl_update(Observable*, int)));
    for (auto _ : state)
        emit sender.si_changed(&source, ChangeContent);
}

void boostSignal(benchmark::State& state)
{
    const auto observers = observersFor(state);
    Observable source;
    boost::signals2::signal<void(Observable*, TChangeCode)> signal;
    for (const auto& observer : observers)
        signal.connect([told = observer.get()](Observable* changed, TChangeCode code) { told->Update(changed, code); });
    for (auto _ : state)
        signal(&source, ChangeContent);
}

BENCHMARK(observable)->Arg(1)->Arg(10)->Arg(100);
BENCHMARK(bareLoop)->Arg(1)->Arg(10)->Arg(100);
BENCHMARK(qtSignal)->Arg(1)->Arg(10)->Arg(100);
BENCHMARK(boostSignal)->Arg(1)->Arg(10)->Arg(100);

} // namespace

DFL_BENCHMARK_MAIN(QCoreApplication)
#include "bench_notification.moc"
