#include "app/application.h"

#include "app/contained.h"
#include "app/displaytext.h"
#include "app/mainwindow.h"
#include "app/measuringjob.h"
#include "app/modalboxcloser.h"
#include "app/options.h"
#include "app/recorder.h"
#include "app/resulthistory.h"
#include "app/screenshot.h"
#include "app/session.h"
#include "app/settingsreport.h"
#include "app/shotreport.h"
#include "app/traceview.h"
#include "drivers/recording.h"
#include "drivers/scenario.h"
#include "drivers/simulatednetwork.h"
#include "map/mapbackground.h"
#include "map/mapview.h"

#include "ztbase/errorhandler.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QToolBar>

#include <cstdio>

// Outside of any namespace, as the macro in it demands.
static void initResources()
{
    Q_INIT_RESOURCE(workbench);
}

namespace workbench {

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("workbench", text);
}

void print(std::FILE* stream, const QString& text)
{
    std::fputs(text.toUtf8().constData(), stream);
    std::fflush(stream);
}

void printError(const QString& sentence)
{
    print(stderr, forTerminal(sentence.trimmed()) + QLatin1Char('\n'));
}

[[nodiscard]] bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

/// The component that comes with the program, in the build folder as well as installed.
QString componentFile(const Options& options)
{
    if (!options.componentFile.isEmpty())
        return options.componentFile;
    const QString prefix = QCoreApplication::applicationDirPath() + QStringLiteral("/../");
    const QString library = QStringLiteral("/libDFLocateComponent.so");
    const QString built = QDir::cleanPath(prefix + QStringLiteral("lib") + library);
    const QString installed = QDir::cleanPath(prefix + QStringLiteral(DFLOCATE_LIBRARY_FOLDER) + library);
    return QFileInfo::exists(installed) ? installed : built;
}

QString parameterSetFolder(const Options& options)
{
    if (!options.parameterSetFolder.isEmpty())
        return options.parameterSetFolder;
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/parameter-sets");
}

/// Where results are stored; empty: nowhere. A window offers it without being asked: who sees "History" among the
/// locate types shall be able to choose it.
QString historyFile(const Options& options)
{
    if (!options.historyFile.isEmpty() || options.headless)
        return options.historyFile;
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(folder); // where that fails, opening the file will tell
    return folder + QStringLiteral("/results.sqlite");
}

template <typename T>
using OrErrors = std::variant<T, QStringList>;

OrErrors<std::unique_ptr<DfSource>> openRecording(const Options& options, Pacing pacing)
{
    Loaded<Recording> recording = loadRecording(options.recordingFile);
    if (!recording)
        return recording.errors;
    const auto available = static_cast<int>(recording.value->shots.size());
    if (options.shots.value_or(0) > available) {
        return QStringList(
            tr("%1: %2 shots are wanted (--shots), but the recording has %3.")
                .arg(options.recordingFile, QString::number(*options.shots), QString::number(available)));
    }
    return std::make_unique<RecordedNetwork>(*std::move(recording.value), options.recordedDefaults, pacing);
}

/// The network that the options ask for; null when offline. Else what is wrong with the files.
OrErrors<std::unique_ptr<DfSource>> openSource(const Options& options)
{
    if (options.offline)
        return nullptr;
    // Nobody waits in front of a window for time to pass; but a recording's only clock is the one on the wall.
    const bool playsCyclic = !options.recordingFile.isEmpty() && options.cyclicSeconds;
    const Pacing pacing = options.headless && !playsCyclic ? Pacing::Immediate : Pacing::RealTime;
    if (!options.recordingFile.isEmpty())
        return openRecording(options, pacing);
    Loaded<Scenario> scenario = loadScenario(
        options.scenarioFile.isEmpty() ? QStringLiteral(":/scenarios/five-stations.json") : options.scenarioFile);
    if (!scenario)
        return scenario.errors;
    return std::make_unique<SimulatedNetwork>(*std::move(scenario.value), options.seed, pacing);
}

std::optional<QString> recordingObstacle(const Options& options)
{
    if (options.recordFile.isEmpty())
        return std::nullopt;
    const QFileInfo played(options.recordingFile);
    if (!options.recordingFile.isEmpty() && played == QFileInfo(options.recordFile))
        return tr("%1: the recording that is played cannot be recorded over.").arg(options.recordFile);
    return Recorder::obstacle(options.recordFile);
}

/// One run of the program after everything from outside has been read.
class Run : public QObject
{
public:
    Run(const Options& options, std::unique_ptr<DfSource> source)
        : m_options(options)
        , m_session(std::move(source))
    {
    }
    ~Run() override { ErrorHandler::Instance()->SetTraceSink(nullptr); }

    int run();

private:
    void showTraces();
    void keepHistory(DfDriver& driver);
    void openBackground();
    void onException(const QString& text);
    void startWork();
    void makeSettings();
    void startJob();
    void endJob();
    void printShot();
    void fail(ExitCode code, const QString& reason);
    void saveFiles();

    const Options& m_options;
    MainWindow m_window; // the session ends first
    std::unique_ptr<ResultHistory> m_history;
    Session m_session;
    std::unique_ptr<Recorder> m_recorder;
    std::unique_ptr<MeasuringJob> m_job;
    QJsonArray m_shots;
    int m_shotCount = 0;
    bool m_isBackgroundBad = false;
    ExitCode m_exitCode = Done;
};

int Run::run()
{
    showTraces();
    m_window.follow(m_session);
    m_window.offerParameterSets(m_session, parameterSetFolder(m_options));
    if (DfDriver* const driver = m_session.driver()) {
        connect(driver, &DfDriver::settingsRefused, this, printError);
        if (!m_options.recordFile.isEmpty())
            m_recorder = std::make_unique<Recorder>(*driver, m_options.recordFile);
        keepHistory(*driver);
        openBackground();
    }
    connect(static_cast<Application*>(qApp), &Application::exceptionCaught, this, &Run::onException);
    connect(&m_window, &MainWindow::closed, qApp, &QCoreApplication::quit);

    const auto error = m_session.start(
        componentFile(m_options), [this](QToolBar* toolBar, QWidget* panel) { m_window.place(toolBar, panel); },
        m_options.allowUnsafeFolder ? LibraryPlace::Any : LibraryPlace::Safe);
    if (error) {
        fail(ComponentFailed, error->text());
        m_window.showComponentFailure(error->text());
    }
    if (m_options.headless && error)
        return m_exitCode;

    if (!m_options.headless || !m_options.screenshotFile.isEmpty())
        m_window.show();
    // From the event loop, when the window has settled; there no exception of the component gets lost either.
    QMetaObject::invokeMethod(
        this, [this] { startWork(); }, Qt::QueuedConnection);
    QCoreApplication::exec();
    saveFiles();
    return m_exitCode == Done && m_isBackgroundBad ? BadOptionsOrFiles : m_exitCode;
}

void Run::showTraces()
{
    ErrorHandler* const handler = ErrorHandler::Instance();
    handler->SetTraceSink([this](const TraceRecord& record) {
        m_window.traceView()->append(record);
        if (m_options.trace)
            printError(QStringLiteral("%1:%2: %3").arg(record.sourceFile, QString::number(record.line), record.text));
    });
}

void Run::keepHistory(DfDriver& driver)
{
    const QString file = historyFile(m_options);
    if (file.isEmpty())
        return;
    m_history = std::make_unique<ResultHistory>(file);
    m_history->setChoice(m_options.historyChoice);
    connect(m_history.get(), &ResultHistory::message, this, printError);
    connect(&driver, &DfDriver::measured, m_history.get(), &ResultHistory::keep);
    driver.setHistory(m_history.get());
    m_window.offerHistory(*m_history);
}

void Run::openBackground()
{
    if (m_options.backgroundFile.isEmpty())
        return;
    MapBackground* const background = m_window.mapView()->background();
    connect(background, &MapBackground::finished, this, [this](bool isShown, const QString& text) {
        if (isShown)
            return;
        printError(text);
        m_isBackgroundBad = true; // the work is done all the same, whenever this is found out
    });
    background->open(m_options.backgroundFile);
}

/// Whoever sits in front of the window sees what happened and decides; else there is no sense in waiting for a result.
void Run::onException(const QString& text)
{
    const bool isUnattended = m_options.headless || !m_options.screenshotFile.isEmpty();
    m_window.showMessage(text);
    if (!isUnattended) {
        printError(text);
        return;
    }
    fail(ComponentFailed, text);
    endJob();
}

void Run::startWork()
{
    m_session.announceEnabled();
    makeSettings();
    // After the driver's answer to the settings, which comes from the event loop too.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_exitCode == Done && (m_options.shots || m_options.cyclicSeconds))
                startJob();
            else
                endJob();
        },
        Qt::QueuedConnection);
}

void Run::makeSettings()
{
    for (const SettingAssignment& setting : m_options.settings) {
        if (const auto refusal = applySetting(setting)) {
            fail(BadOptionsOrFiles, *refusal);
            m_window.showMessage(*refusal);
        }
    }
}

void Run::startJob()
{
    m_job = std::make_unique<MeasuringJob>(m_session);
    connect(m_job.get(), &MeasuringJob::resultShown, this, &Run::printShot);
    connect(m_job.get(), &MeasuringJob::finished, this, &Run::endJob);
    connect(m_job.get(), &MeasuringJob::failed, this, [this](const QString& reason) {
        fail(ComponentFailed, reason);
        m_window.showMessage(reason);
        endJob();
    });
    if (m_options.cyclicSeconds)
        m_job->startCyclic(*m_options.cyclicSeconds);
    else
        m_job->startShots(*m_options.shots);
}

void Run::printShot()
{
    if (!m_options.headless)
        return;
    ++m_shotCount;
    ShotReport shot = readShot(m_session.toolBar(), handlerRoot() + QStringLiteral("Values/Result/"));
    shot.located = m_session.driver()->publishedFix();
    shot.history = m_session.driver()->publishedHistory();
    if (m_options.json) {
        QJsonObject json = shotJson(m_shotCount, shot);
        json.insert(QStringLiteral("settings"), settingsJson(m_session.toolBar(), *m_session.driver()));
        m_shots += json;
    } else
        print(stdout, shotTable(m_shotCount, shot));
}

void Run::endJob()
{
    // A picture shall have the background, and a bad file of it its exit code.
    MapView* const map = m_window.mapView();
    if (map != nullptr && !map->background()->isSettled()) {
        connect(map->background(), &MapBackground::settled, this, &Run::endJob, Qt::UniqueConnection);
        return;
    }
    if (!m_options.screenshotFile.isEmpty()) {
        if (const auto failure = saveScreenshot(m_window.picture(), m_options.screenshotFile))
            fail(BadOptionsOrFiles, *failure);
    }
    if (m_options.headless || !m_options.screenshotFile.isEmpty())
        QCoreApplication::quit();
}

void Run::saveFiles()
{
    if (m_options.json)
        print(stdout, jsonForTerminal(QString::fromUtf8(QJsonDocument(m_shots).toJson())));
    if (m_recorder) {
        if (const auto failure = m_recorder->finish())
            fail(BadOptionsOrFiles, *failure);
    }
    // Who names a file relies on it; of the other one it is enough that the window has told.
    const bool isStored = !m_history || m_history->close();
    if (!isStored && !m_options.historyFile.isEmpty() && m_exitCode == Done)
        m_exitCode = BadOptionsOrFiles;
}

void Run::fail(ExitCode code, const QString& reason)
{
    printError(reason);
    if (m_exitCode == Done)
        m_exitCode = code;
}

} // namespace

bool Application::notify(QObject* receiver, QEvent* event)
{
    bool handled = true;
    const auto deliver = [&] { handled = QApplication::notify(receiver, event); };
    const bool isPaint = event->type() == QEvent::UpdateRequest && receiver->isWidgetType();
    const auto thrown = contained([&] {
        if (isPaint)
            m_paintPace.paint(*static_cast<QWidget*>(receiver), deliver);
        else
            deliver();
    });
    if (thrown)
        emit exceptionCaught(tr("The component let %1 out of an event handler.").arg(*thrown));
    return handled;
}

int runWorkbench(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments += QString::fromLocal8Bit(argv[i]);
    CommandLine commandLine = readCommandLine(arguments);
    if (!commandLine.informationText.isEmpty()) {
        print(stdout, commandLine.informationText);
        return Done;
    }
    for (const QString& error : qAsConst(commandLine.errors))
        printError(error);
    if (!commandLine.errors.isEmpty()) {
        printError(tr("The option --help lists all options."));
        return BadOptionsOrFiles;
    }

    Options& options = commandLine.options;
    if (!options.headless && !hasDisplay()) {
        printError(tr("There is no display (neither DISPLAY nor WAYLAND_DISPLAY is set): working without a window."));
        options.headless = true;
    }
    if (options.headless && !options.shots && !options.cyclicSeconds && !options.offline)
        options.shots = 1;
    if (options.headless)
        qputenv("QT_QPA_PLATFORM", "offscreen");

    Application application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("dflocate-workbench"));
    QCoreApplication::setApplicationVersion(QStringLiteral(DFLOCATE_VERSION));
    initResources();
    if (options.trace)
        ErrorHandler::Instance()->SetTraceMask(ErrorHandler::Instance()->GetTraceMask() |
                                               ErrorHandler::ComponentTraces);

    auto source = openSource(options);
    if (const auto* const errors = std::get_if<QStringList>(&source)) {
        for (const QString& error : *errors)
            printError(error);
        return BadOptionsOrFiles;
    }
    if (const auto obstacle = recordingObstacle(options)) {
        printError(*obstacle);
        return BadOptionsOrFiles;
    }

    std::unique_ptr<ModalBoxCloser> boxCloser;
    if (options.headless) {
        boxCloser = std::make_unique<ModalBoxCloser>();
        QObject::connect(boxCloser.get(), &ModalBoxCloser::closed, printError);
    }
    return Run(options, std::get<std::unique_ptr<DfSource>>(std::move(source))).run();
}

} // namespace workbench
