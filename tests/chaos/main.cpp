#include "checks.h"
#include "operations.h"
#include "ownclock.h"

#include "app/application.h"

#include <QCommandLineParser>
#include <QHashFunctions>
#include <QThread>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <random>
#include <thread>
#include <unistd.h>

namespace chaos {

namespace {

/// What a report of a crash can be made of without allocating.
struct Progress
{
    quint64 seed = 0;
    std::atomic<const Operations*> operations{nullptr};

    [[nodiscard]] int count() const { return operations != nullptr ? operations.load()->count() : 0; }
    [[nodiscard]] const char* current() const { return operations != nullptr ? operations.load()->current() : ""; }
};
Progress progress;
const char* programName = "chaos";

void printReplay()
{
    char text[400];
    const auto seed = static_cast<unsigned long long>(progress.seed);
    const int length = std::snprintf(text, sizeof text,
                                     "\nchaos: seed %llu ended in operation %d (%s). Once more:\n  %s --seed %llu "
                                     "--operations %d --list\n",
                                     seed, progress.count(), progress.current(), programName, seed, progress.count());
    if (write(STDERR_FILENO, text, static_cast<std::size_t>(length)) < 0)
        std::abort();
}

void onSignal(int signal)
{
    printReplay();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

struct Options
{
    quint64 seed = 0;
    int operations = 0; ///< 0: for so many seconds
    int seconds = USUAL_SECONDS;
    bool list = false;
    bool checkEach = false;
};

/// One run: turns of the event loop with a few operations each, until enough is done or something is wrong.
class Run : public QObject
{
public:
    explicit Run(const Options& options)
        : m_options(options)
        , m_dice(options.seed)
        , m_operations(m_world, m_dice)
        , m_checks(m_world, m_operations)
        , m_started(OwnClock::realSeconds())
    {
        progress.operations = &m_operations;
    }
    ~Run() override { progress.operations = nullptr; }

    int exec()
    {
        QMetaObject::invokeMethod(this, &Run::begin, Qt::QueuedConnection);
        QCoreApplication::exec();
        return m_isFailed || !m_isFinished ? 1 : 0;
    }

private:
    static constexpr int lookEvery = 64;
    static constexpr int probeEvery = 1'000;
    static constexpr int restartEvery = 20'000;

    void begin()
    {
        m_world.complete(m_dice);
        accept(m_checks.tryOut());
        next(&Run::turn);
    }

    void turn()
    {
        if (QThread::currentThread()->loopLevel() > 1) {
            // A box is open that an event has opened, perhaps while a change was being told: first that comes to its
            // end.
            next(&Run::turn);
            return;
        }
        m_operations.languageHasSettled();
        if (isDue(lookEvery, m_lastLook) || m_options.checkEach)
            accept(m_checks.look());
        if (isDue(probeEvery, m_lastProbe))
            accept(m_checks.probe());
        const bool isOver = isDone();
        if (isOver || isDue(restartEvery, m_lastRestart)) {
            endWorld();
            next(isOver ? &Run::finish : &Run::restart);
            return;
        }
        for (int i = m_dice.between(1, 40); i > 0 && !m_isFailed && !isDone(); --i) {
            m_operations.performAny();
            if (m_options.list)
                std::printf("%s\n", qPrintable(m_operations.latest().back()));
            if (m_options.checkEach)
                accept(m_checks.look());
        }
        OwnClock::advance(1);
        next(&Run::turn);
    }

    [[nodiscard]] bool isDue(int every, int& last) const
    {
        if (m_operations.count() - last < every)
            return false;
        last = m_operations.count();
        return true;
    }

    [[nodiscard]] bool isDone() const
    {
        if (m_options.operations > 0)
            return m_operations.count() >= m_options.operations;
        return OwnClock::realSeconds() - m_started >= m_options.seconds;
    }

    void endWorld()
    {
        m_operations.letMeddlersGo();
        m_world.end(m_dice);
    }

    void restart()
    {
        accept(m_checks.lookForLeftovers());
        values::Tree::Instance()->Clear();
        m_operations.makeMeddlers();
        begin();
    }

    void finish()
    {
        accept(m_checks.lookForLeftovers());
        values::Tree::Instance()->Clear();
        if (m_isFailed)
            return;
        m_isFinished = true;
        const double seconds = OwnClock::realSeconds() - m_started;
        std::printf("chaos: seed %llu, %d operations, %d message boxes, %.0f s, %.0f operations a second: nothing is "
                    "wrong.\n",
                    static_cast<unsigned long long>(m_options.seed), m_operations.count(), m_operations.boxesSeen(),
                    seconds, m_operations.count() / seconds);
        QCoreApplication::quit();
    }

    void next(void (Run::*step)())
    {
        if (!m_isFailed)
            QMetaObject::invokeMethod(this, step, Qt::QueuedConnection);
    }

    void accept(QStringList failures)
    {
        failures += Checks::takeComplaints();
        if (failures.isEmpty() || m_isFailed)
            return;
        m_isFailed = true;
        std::fprintf(stderr, "The latest operations, nested ones set in:\n");
        for (const QString& operation : m_operations.latest())
            std::fprintf(stderr, "  %s\n", qPrintable(operation));
        std::fprintf(stderr, "Wrong:\n");
        for (const QString& failure : qAsConst(failures))
            std::fprintf(stderr, "  %s\n", qPrintable(failure));
        std::fprintf(stderr,
                     "chaos: seed %llu fails after operation %d. Once more, looking after every operation:\n"
                     "  %s --seed %llu --operations %d --check-each\n",
                     static_cast<unsigned long long>(m_options.seed), m_operations.count(), programName,
                     static_cast<unsigned long long>(m_options.seed), m_operations.count() + 1);
        std::fflush(stderr);
        QCoreApplication::exit(1);
    }

    Options m_options;
    Dice m_dice;
    World m_world;
    Operations m_operations;
    Checks m_checks;
    double m_started;
    int m_lastLook = 0;
    int m_lastProbe = 0;
    int m_lastRestart = 0;
    bool m_isFailed = false;
    bool m_isFinished = false;
};

Options readOptions()
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Does to the component and its driver whatever may be done to them, by chance, and looks at what they show."));
    parser.addHelpOption();
    const QCommandLineOption seed(QStringLiteral("seed"),
                                  QStringLiteral("What chance begins with; without: another each time."),
                                  QStringLiteral("number"));
    const QCommandLineOption operations(QStringLiteral("operations"), QStringLiteral("How many."),
                                        QStringLiteral("number"));
    const QCommandLineOption seconds(
        QStringLiteral("seconds"),
        QStringLiteral("How long, when no number of operations is given; %1 without.").arg(USUAL_SECONDS),
        QStringLiteral("number"));
    const QCommandLineOption list(QStringLiteral("list"), QStringLiteral("Print each operation."));
    const QCommandLineOption checkEach(QStringLiteral("check-each"), QStringLiteral("Look after every operation."));
    parser.addOptions({seed, operations, seconds, list, checkEach});
    parser.process(*qApp);

    Options options;
    options.seed = parser.isSet(seed) ? parser.value(seed).toULongLong() : std::random_device{}();
    options.operations = parser.value(operations).toInt();
    if (parser.isSet(seconds))
        options.seconds = parser.value(seconds).toInt();
    options.list = parser.isSet(list);
    options.checkEach = parser.isSet(checkEach);
    return options;
}

void endWhenItHangs(int seconds)
{
    std::thread([seconds] {
        int before = -1;
        for (;;) {
            std::this_thread::sleep_for(std::chrono::seconds(seconds));
            const int now = progress.count();
            if (now == before) {
                std::fputs("chaos: nothing has happened for a long time.\n", stderr);
                std::abort();
            }
            before = now;
        }
    }).detach();
}

} // namespace

} // namespace chaos

extern "C" void __sanitizer_set_death_callback(void (*callback)()) __attribute__((weak));

int main(int argc, char** argv)
{
    using namespace chaos;
    programName = argv[0];
    qputenv("QT_NO_GLIB", "1"); // Qt's own event loop knows no other clocks
    qSetGlobalQHashSeed(0);     // the order of everything is that of every other run
    qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    workbench::Application application(argc, argv);
    QApplication::setCursorFlashTime(0);
    QApplication::setQuitOnLastWindowClosed(false);
    QObject::connect(&application, &workbench::Application::exceptionCaught, &Checks::complain);

    const Options options = readOptions();
    progress.seed = options.seed;
    if (options.list)
        std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ); // a crash must not take the latest ones with it
    std::printf("chaos: seed %llu\n", static_cast<unsigned long long>(options.seed));
    std::fflush(stdout);
    std::signal(SIGABRT, onSignal);
    if (__sanitizer_set_death_callback != nullptr)
        __sanitizer_set_death_callback(printReplay);
    else
        std::signal(SIGSEGV, onSignal);
    endWhenItHangs(30);
    return Run(options).exec();
}
