#include "regression.h"
#include "steadysource.h"

#include "app/application.h"
#include "app/mainwindow.h"
#include "app/resulthistory.h"
#include "app/session.h"
#include "valueframework/valueclasses/valueobservermacros.h"

#include <QAbstractButton>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QMetaEnum>
#include <QTemporaryDir>
#include <QToolBar>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <ctime>
#include <malloc.h>
#include <map>
#include <thread>
#include <tuple>

namespace soak {

namespace {

constexpr double kilobyte = 1024.0;
constexpr int samplePeriod = 500;       // ms
constexpr double warmUpShare = 0.25;    // of the whole time
constexpr double longestWarmUp = 120.0; // s
constexpr int samplesOfOneBottom = 4;

/// What a run is judged by.
struct Limits
{
    double slope;   ///< kB a minute
    double block;   ///< ms of processor time for one event
    double results; ///< a second
};

/// In a few minutes caches are still being filled, and other tests have the processors and their caches: a short run
/// finds what is lost with every result, from a third of a kilobyte on, a long one every drop and every result that
/// comes too late.
Limits limitsOf(double minutes)
{
    constexpr double longRun = 10.0; // minutes
    constexpr double nearlyAll = 0.98 * SteadySource::resultsPerSecond;
    return minutes < longRun ? Limits{1000.0, 150.0, 1.0} : Limits{1.0, 50.0, nearlyAll};
}

/// Time that the calling thread has had on a processor, in ms. Neighbours on the machine have no part in it.
double threadMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

/// What the program holds at present, in bytes: not what it has once taken from the system, which never goes back
/// whole.
double liveBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

int openHandles()
{
    return static_cast<int>(QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System).size());
}

int observerCount()
{
    std::size_t count = 0;
    for (const values::ValueBase* const value : values::Tree::Instance()->ValuesBelow(QString()))
        count += value->GetObserverCount();
    return static_cast<int>(count);
}

template <typename T>
T* find(const char* path)
{
    return dynamic_cast<T*>(values::Tree::Instance()->FindValue(workbench::handlerRoot() + QLatin1String(path)));
}

/// Events of one type to objects of one class, and of parents of one class: a timer alone says nothing.
struct EventKind
{
    const char* receiver; ///< the name of the class
    const char* parent;   ///< that of the parent's class; null without a parent
    int type;

    friend bool operator<(const EventKind& a, const EventKind& b)
    {
        return std::tie(a.receiver, a.parent, a.type) < std::tie(b.receiver, b.parent, b.type);
    }
};

EventKind kindOf(const QObject& receiver, const QEvent& event)
{
    const QObject* const parent = receiver.parent();
    return {receiver.metaObject()->className(), parent != nullptr ? parent->metaObject()->className() : nullptr,
            event.type()};
}

/// Processor time in ms, with all that is done within the events.
struct EventCost
{
    double longest = 0.0; ///< for one event
    double total = 0.0;
    int count = 0;
};

QString nameOf(const EventKind& kind)
{
    const char* const type = QMetaEnum::fromType<QEvent::Type>().valueToKey(kind.type);
    const QString event = type != nullptr ? QString::fromLatin1(type) : QStringLiteral("type %1").arg(kind.type);
    const QString name = event + QStringLiteral(" to ") + QString::fromLatin1(kind.receiver);
    return kind.parent != nullptr ? name + QStringLiteral(" of ") + QString::fromLatin1(kind.parent) : name;
}

/// Knows what the single events cost the GUI thread.
class MeasuredApplication final : public workbench::Application
{
public:
    using workbench::Application::Application;
    using Costs = std::map<EventKind, EventCost>;

    bool notify(QObject* receiver, QEvent* event) override
    {
        if (m_isInside)
            return workbench::Application::notify(receiver, event);
        m_isInside = true;
        // Before: the receiver may end with the event. Names of classes last.
        EventCost& cost = m_costs[kindOf(*receiver, *event)];
        const double begin = threadMilliseconds();
        const bool result = workbench::Application::notify(receiver, event);
        const double spent = threadMilliseconds() - begin;
        m_isInside = false;
        cost.longest = std::max(cost.longest, spent);
        cost.total += spent;
        ++cost.count;
        return result;
    }

    [[nodiscard]] const Costs& costs() const { return m_costs; }
    /// Begins anew. The event within which this is called still counts.
    void forgetCosts()
    {
        for (auto& [kind, cost] : m_costs)
            cost = {};
    }

private:
    bool m_isInside = false;
    Costs m_costs;
};

/// Asks the event loop again and again, from outside, how long an answer takes.
class LatencyWatch
{
public:
    explicit LatencyWatch(QObject& gui)
        : m_gui(gui)
        , m_thread([this] { watch(); })
    {
    }
    ~LatencyWatch()
    {
        m_isOver = true;
        m_thread.join();
    }
    LatencyWatch(const LatencyWatch&) = delete;
    LatencyWatch& operator=(const LatencyWatch&) = delete;

    void reset() { m_longest = 0; }
    [[nodiscard]] qint64 longest() const { return m_longest; } ///< ms

private:
    void watch()
    {
        while (!m_isOver) {
            QElapsedTimer sinceAsked;
            sinceAsked.start();
            m_isAnswered = false;
            QMetaObject::invokeMethod(
                &m_gui, [this] { m_isAnswered = true; }, Qt::QueuedConnection);
            while (!m_isAnswered && !m_isOver)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            m_longest = std::max(m_longest.load(), sinceAsked.elapsed());
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

    QObject& m_gui;
    std::atomic<bool> m_isAnswered{false};
    std::atomic<bool> m_isOver{false};
    std::atomic<qint64> m_longest{0};
    std::thread m_thread; // last: it uses the others
};

struct Sample
{
    double minutes;
    double bytes;
    int handles;
    int observers;
};

/// The workbench at work, with everything in it that can grow.
class Soak : public QObject
{
public:
    Soak(MeasuredApplication& application, double minutes)
        : m_application(application)
        , m_minutes(minutes)
        , m_source(new SteadySource)
        , m_history(m_folder.filePath(QStringLiteral("results.sqlite")), nullptr, workbench::ResultQuery().limit,
                    storeLimits())
        , m_session(std::unique_ptr<workbench::DfSource>(m_source))
    {
        // At once, lest they grow themselves.
        m_samples.reserve(static_cast<std::size_t>(m_minutes * 60e3 / (2.0 * samplePeriod)) + 2 * samplesOfOneBottom);
    }

    int exec()
    {
        m_window.follow(m_session);
        workbench::DfDriver& driver = *m_session.driver();
        connect(&driver, &workbench::DfDriver::measured, &m_history, &workbench::ResultHistory::keep);
        driver.setHistory(&m_history);
        m_window.offerHistory(m_history);
        const auto error = m_session.start(
            QStringLiteral(COMPONENT), [this](QToolBar* toolBar, QWidget* panel) { m_window.place(toolBar, panel); });
        if (error) {
            std::fprintf(stderr, "%s\n", qPrintable(error->text()));
            return 1;
        }
        m_window.show();
        m_session.announceEnabled();
        find<values::ValueSelection>("Config/DFLocateWorkflow")->Select(QStringLiteral("Continuous"));
        m_session.toolBar()->findChild<QAbstractButton*>(QStringLiteral("DetailedResults"))->pressed();
        m_session.toolBar()->findChild<QAbstractButton*>(QStringLiteral("DFStarter"))->click();

        LatencyWatch latency(*this);
        m_latency = &latency;
        m_time.start();
        connect(&m_sampling, &QTimer::timeout, this, &Soak::takeSample);
        m_sampling.start(samplePeriod);
        QCoreApplication::exec();
        return report();
    }

private:
    /// Reached while warming up: from then on results go as others come.
    static workbench::HistoryLimits storeLimits()
    {
        workbench::HistoryLimits limits;
        limits.maxResults = 500;
        return limits;
    }

    [[nodiscard]] double minutesNow() const { return static_cast<double>(m_time.elapsed()) / 60e3; }
    [[nodiscard]] double warmUpMinutes() const { return std::min(warmUpShare * m_minutes, longestWarmUp / 60.0); }

    void takeSample()
    {
        ++m_round;
        if (m_round % 2 == 0) {
            changeTree();
            return;
        }
        // The tree is as it was at every sample before.
        m_samples.push_back({minutesNow(), liveBytes(), openHandles(), observerCount()});
        if (minutesNow() < warmUpMinutes()) {
            m_samples.clear();
            m_latency->reset();
            m_application.forgetCosts();
            m_answersAtFirst = m_source->answers();
        } else if (minutesNow() >= m_minutes) {
            m_longestLatency = m_latency->longest();
            m_measuredMinutes = minutesNow() - warmUpMinutes();
            QCoreApplication::quit();
        }
    }

    /// Values come, change and go, and settings change; in the end everything is as before.
    void changeTree()
    {
        values::Tree* const tree = values::Tree::Instance();
        const QString folder = QStringLiteral("/SOAK/Folder %1/").arg(m_round % 7);
        for (int i = 0; i < 20; ++i) {
            auto* const value = values::CreateOrLink<values::IntValue>(folder + QString::number(i));
            value->SetValue(i, nullptr);
        }
        auto* const bandwidth = find<values::ValueSelection>("Config/Bandwidth");
        const int before = bandwidth->GetCurrentKey();
        bandwidth->SelectIndex(m_round % bandwidth->GetItemCount());
        bandwidth->Select(before);
        auto* const threshold = find<values::IntValue>("Config/Quality");
        threshold->SetState(values::StateOrdinary, nullptr);
        threshold->SetValue(30 + m_round % 2, nullptr);
        m_session.driver()->selectDevice(0);
        for (values::ValueBase* const value : tree->ValuesBelow(folder))
            tree->DeleteValue(value->GetPathName());
    }

    int report()
    {
        // What is held for a moment only, such as a text on its way, stands on top of what is held for good.
        std::vector<std::pair<double, double>> bottoms;
        for (std::size_t i = 0; i + samplesOfOneBottom <= m_samples.size(); i += samplesOfOneBottom) {
            const auto first = m_samples.begin() + static_cast<std::ptrdiff_t>(i);
            const auto lowest = std::min_element(first, first + samplesOfOneBottom,
                                                 [](const Sample& a, const Sample& b) { return a.bytes < b.bytes; });
            bottoms.emplace_back(lowest->minutes, lowest->bytes / kilobyte);
        }
        if (bottoms.size() < 3) {
            std::fprintf(stderr, "soak: too short to say anything.\n");
            return 1;
        }
        const Line memory = fitLine(bottoms);
        const Sample& first = m_samples.front();
        const Sample& last = m_samples.back();
        const double results = (m_source->answers() - m_answersAtFirst) / (60.0 * m_measuredMinutes);
        std::printf("soak: %.1f minutes after %.1f of warming up, %.1f results a second with %d stations\n",
                    m_measuredMinutes, warmUpMinutes(), results, SteadySource::stationCount);
        std::printf("  memory: %.0f kB at first, %.0f kB at last, slope %.2f kB a minute, standard error %.2f\n",
                    bottoms.front().second, bottoms.back().second, memory.slope, memory.slopeError);
        std::printf("  handles: %d at first, %d at last; observers: %d at first, %d at last\n", first.handles,
                    last.handles, first.observers, last.observers);
        const double longestEvent = reportEvents();

        int failures = 0;
        const auto judge = [&failures](bool isGood, const char* what) {
            if (!isGood) {
                std::fprintf(stderr, "soak: %s\n", what);
                ++failures;
            }
        };
        const Limits limits = limitsOf(m_minutes);
        // A slope is known the better the longer it was measured: it fails when the growth is beyond doubt.
        judge(memory.slope - 2.0 * memory.slopeError < limits.slope, "the memory grows.");
        judge(last.handles <= first.handles, "the number of open handles grows.");
        judge(last.observers <= first.observers, "the number of observers grows.");
        judge(longestEvent <= limits.block, "an event has kept the GUI thread busy for too long.");
        judge(results >= limits.results, "there were too few results.");
        judge(m_history.close(), "results are not stored.");
        return failures == 0 ? 0 : 1;
    }

    /// Prints which events have kept the GUI thread busy; the cost of the longest one in ms.
    double reportEvents() const
    {
        constexpr std::size_t mostShown = 5;
        std::vector<std::pair<EventKind, EventCost>> costs(m_application.costs().begin(), m_application.costs().end());
        const auto print = [&](const char* title, double EventCost::*order) {
            std::sort(costs.begin(), costs.end(),
                      [order](const auto& a, const auto& b) { return a.second.*order > b.second.*order; });
            std::printf("  %s\n", title);
            for (std::size_t i = 0; i < std::min(mostShown, costs.size()); ++i) {
                const auto& [kind, cost] = costs[i];
                std::printf("    %-64s %7d times, longest %6.1f ms, in all %5.1f ms a second\n",
                            qPrintable(nameOf(kind)), cost.count, cost.longest,
                            cost.total / (60.0 * m_measuredMinutes));
            }
        };
        print("most of the GUI thread's processor time:", &EventCost::total);
        print("longest events, in processor time:", &EventCost::longest);
        double total = 0.0;
        for (const auto& [kind, cost] : costs)
            total += cost.total;
        std::printf("  in all %.0f ms a second; longest wait for the event loop: %lld ms on the wall\n",
                    total / (60.0 * m_measuredMinutes), static_cast<long long>(m_longestLatency));
        return costs.empty() ? 0.0 : costs.front().second.longest;
    }

    MeasuredApplication& m_application;
    double m_minutes;
    SteadySource* m_source; // the session's
    QTemporaryDir m_folder;
    workbench::MainWindow m_window; // the session ends first
    workbench::ResultHistory m_history;
    workbench::Session m_session;
    LatencyWatch* m_latency = nullptr;
    QElapsedTimer m_time;
    QTimer m_sampling{this};
    std::vector<Sample> m_samples;
    int m_round = 0;
    int m_answersAtFirst = 0;
    qint64 m_longestLatency = 0;
    double m_measuredMinutes = 0.0;
};

} // namespace

} // namespace soak

int main(int argc, char** argv)
{
    soak::MeasuredApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Lets the workbench measure for a long time and looks whether anything grows or blocks."));
    parser.addHelpOption();
    const QCommandLineOption minutes(QStringLiteral("minutes"), QStringLiteral("How long; a minute without."),
                                     QStringLiteral("number"), QStringLiteral("1"));
    parser.addOption(minutes);
    parser.process(application);
    return soak::Soak(application, parser.value(minutes).toDouble()).exec();
}
