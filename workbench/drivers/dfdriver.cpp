#include "drivers/dfdriver.h"

#include "drivers/configtable.h"
#include "drivers/dfsource.h"
#include "drivers/locatehistory.h"
#include "drivers/providedvalues.h"
#include "drivers/resultvalues.h"
#include "drivers/settingstext.h"
#include "drivers/statustext.h"

#include "valueframework/valueclasses/valueobservermacros.h"
#include "ztbase/errorhandler.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>

#include <algorithm>

namespace workbench {

namespace {

using values::BoolValue;
using values::DoubleValue;
using values::IntValue;
using values::StringValue;
using values::ValueSelection;

const QLatin1String globalRoot("/GLOBAL/");
const QLatin1String hriStatusPath("/DRV/DRIVER/DFLOCATE/LocateHRIStatus");

/// At most one result a frame is written: more nobody can see.
constexpr int frameMs = 16;

/// The sizes of the item lists are known, so creation needs no look at what is there: a value that was there before
/// gets the same content as a new one. Who hears of the first items may delete the value; the driver goes without then.
void setUpList(ValueSelection* selection, const ItemList& list, int currentKey)
{
    if (selection == nullptr)
        return;
    const Observable::Life life = selection->GetLife();
    selection->DeleteItems();
    for (int key = 0; key < list.count && !life.IsOver(); ++key)
        selection->AddItem(QString::fromLatin1(list.items[key].text), list.items[key].number, key);
    if (!life.IsOver())
        selection->Select(currentKey);
    if (!life.IsOver())
        selection->SetState(values::StateOrdinary, nullptr);
}

/// The text @p textOf gives for each entry, with its number and its position as key, and the entry at @p current
/// current. Observers are told of the items only.
template <typename Entry, typename NumberOf>
void setUpDeviceList(const values::ValuePtr<ValueSelection>& selection, const std::vector<Entry>& entries,
                     NumberOf numberOf, int current, IObserver* observer)
{
    if (!selection)
        return;
    const values::ValueTransaction transaction = selection->CreateTransaction({ChangeItems}, observer);
    selection->DeleteItems(observer);
    int key = 0;
    for (const Entry& entry : entries)
        selection->AddItem(entry.text, numberOf(entry), key++, observer);
    selection->SelectIndex(current, observer);
}

int positionOf(const std::vector<DeviceMode>& modes, DfMode wanted)
{
    const auto found =
        std::find_if(modes.begin(), modes.end(), [wanted](const DeviceMode& mode) { return mode.mode == wanted; });
    return static_cast<int>(found - modes.begin());
}

/// The number of the current item. Nothing without one: a list that is being filled says nothing.
std::optional<double> currentNumber(const values::ValuePtr<ValueSelection>& selection)
{
    const values::SelectionItem* const item = selection ? selection->GetCurrentItem() : nullptr;
    return item != nullptr ? std::optional(item->GetValue()) : std::nullopt;
}

std::optional<DfMode> currentMode(const values::ValuePtr<ValueSelection>& selection)
{
    const values::SelectionItem* const item = selection ? selection->GetCurrentItem() : nullptr;
    return item != nullptr ? modeFromText(item->GetName()) : std::nullopt;
}

std::optional<int> thresholdInUse(const values::ValuePtr<IntValue>& threshold)
{
    const bool isInUse = threshold && threshold->GetState() == values::StateOrdinary;
    return isInUse ? std::optional(threshold->GetValue()) : std::nullopt;
}

/// A history as one station of the remote service. It counts at all frequencies while it is available and at none
/// while it is not: readers keep what they are not told again, and look at ranges without looking at availability.
StationInfo stationOf(const LocateHistory& history, const std::vector<StationInfo>& others)
{
    constexpr FrequencyRange allFrequencies{0.0, 1e15};
    constexpr FrequencyRange noFrequency{0.0, 0.0};
    StationInfo station;
    for (const StationInfo& other : others)
        station.id = std::max(station.id, other.id);
    ++station.id;
    station.name = QStringLiteral("Stored results");
    station.available = history.isUsable();
    station.range = station.available ? allFrequencies : noFrequency;
    return station;
}

template <typename Number, typename NumericValue>
void setUpNumber(NumericValue* value, const ConfigEntry& entry)
{
    if (value == nullptr)
        return;
    const Observable::Life life = value->GetLife();
    value->SetMinMax(static_cast<Number>(entry.min), static_cast<Number>(entry.max), static_cast<Number>(entry.step),
                     nullptr);
    if (!life.IsOver())
        value->SetValue(static_cast<Number>(entry.initial), nullptr);
    if (!life.IsOver())
        value->SetState(entry.state, nullptr);
}

} // namespace

class DfDriver::Private final : public IObserver
{
public:
    Private(DfDriver* driver, std::unique_ptr<DfSource> source, const QString& handlerRoot,
            const QString& parameterRoot);
    ~Private() override;

    void Update(Observable* changed, TChangeCode code) override;

    [[nodiscard]] DfSource& source() const { return *m_source; }
    [[nodiscard]] bool isRunning() const { return m_isMeasuring || m_isCyclic; }
    [[nodiscard]] bool isCyclic() const { return m_isCyclic; }
    [[nodiscard]] const DfSettings& settings() const { return m_settings; }
    [[nodiscard]] const std::optional<DfRequest>& publishedRequest() const { return m_publishedRequest; }
    [[nodiscard]] const std::optional<LocateResult>& publishedFix() const { return m_publishedFix; }
    [[nodiscard]] const std::optional<HistoryFix>& publishedHistory() const { return m_publishedHistory; }
    void setHistory(LocateHistory* history);
    [[nodiscard]] int currentDevice() const { return m_currentDevice; }
    void selectDevice(int index);

private:
    using SelectionPtr = values::ValuePtr<ValueSelection>;

    // Every write below may be answered by an observer that deletes this driver: whoever does something after a write
    // looks at this first.
    using Alive = QPointer<DfDriver>;

    void provideConfig(const QString& handlerRoot);
    void provideGlobals();
    void provideDeviceLists();

    [[nodiscard]] const DfDevice& device() const { return m_devices.at(static_cast<std::size_t>(m_currentDevice)); }
    void takeSettingsText();
    void takeWord(const Observable* value, TChangeCode code);
    void bringIntoForce(const DfSettings& wanted);
    void answerLater();
    void answer();
    void showSettingsText();
    void showSettingsInDeviceLists();

    void obey(int command);
    void startSingle();
    void startCyclic();
    void stopCyclic();
    void beginMeasurement();
    [[nodiscard]] DfRequest request() const;

    void onMeasured(const DfResult& result);
    void onFailed(const QString& reason);
    void publishPending();
    void locate(const DfResult& result);
    void onLocated(const HistoryFix& fix);
    void dropLocate();
    void publish(const DfResult& result, const LocateResult& located, const std::optional<HistoryFix>& history);
    [[nodiscard]] bool isLocateWanted() const;
    [[nodiscard]] bool isHistoryWanted() const;
    [[nodiscard]] LocateResult locateOnline(const DfResult& result) const;
    [[nodiscard]] int qualityThreshold() const { return m_settings.qualityThreshold.value_or(0); }

    void writeStatus();
    void writeRunning();
    void writeHriRunning(bool isRunning);
    void writeCyclicStarted();

    DfDriver* m_driver;
    std::unique_ptr<DfSource> m_source;
    QPointer<LocateHistory> m_history;
    std::optional<DfResult> m_toLocate; // while the history looks for its fix
    QElapsedTimer m_frameClock;         // frames follow one another from its start on
    QTimer m_frame;                     // runs from the begin of writing a result to the end of the frame
    std::optional<DfResult> m_pending;
    bool m_isMeasuring = false;
    bool m_isCyclic = false;
    bool m_isPublishing = false;

    std::vector<DfDevice> m_devices;
    int m_currentDevice = 0;
    DfSettings m_settings; // in force, always such as the device can do
    DfRequest m_request;   // of the measurement under way
    std::optional<DfRequest> m_publishedRequest;
    std::optional<LocateResult> m_publishedFix;
    std::optional<HistoryFix> m_publishedHistory;
    std::optional<JobXml::DF_Settings> m_acceptedText; // for what is in it beside the settings
    bool m_textIsDue = false;
    bool m_answerIsDue = false;

    ProvidedValues m_provided;
    std::unique_ptr<ResultValues> m_results;
    values::ValueObservingPtr<ValueSelection> m_commands{this};
    values::ValuePtr<DoubleValue> m_frequency;
    values::ValueObservingPtr<DoubleValue> m_frequencyOffset{this};
    values::ValueObservingPtr<IntValue> m_configQuality{this};
    values::ValueObservingPtr<IntValue> m_configThreshold{this};
    SelectionPtr m_locateType;
    SelectionPtr m_activity;
    values::ValueObservingPtr<ValueSelection> m_mode{this};
    values::ValueObservingPtr<ValueSelection> m_bandwidth{this};
    values::ValueObservingPtr<ValueSelection> m_averageTime{this};
    values::ValueObservingPtr<ValueSelection> m_deviceMode{this};
    values::ValueObservingPtr<ValueSelection> m_deviceBandwidth{this};
    values::ValueObservingPtr<ValueSelection> m_deviceAveraging{this};
    values::ValueObservingPtr<StringValue> m_toDriver{this};
    values::ValuePtr<StringValue> m_settingsText;
    values::ValuePtr<BoolValue> m_deviceReady;
    values::ValuePtr<BoolValue> m_running;
    values::ValuePtr<BoolValue> m_cyclicStarted;
    values::ValuePtr<BoolValue> m_hriRunning;
    values::ValuePtr<StringValue> m_status;
    values::ValuePtr<StringValue> m_hriStatus;
};

DfDriver::Private::Private(DfDriver* driver, std::unique_ptr<DfSource> source, const QString& handlerRoot,
                           const QString& parameterRoot)
    : m_driver(driver)
    , m_source(std::move(source))
    , m_frame(driver)
    , m_devices(m_source->devices())
{
    m_frameClock.start();
    m_frame.setSingleShot(true);
    m_frame.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_frame, &QTimer::timeout, m_driver, [this] { publishPending(); });
    QObject::connect(m_source.get(), &DfSource::measured, m_driver,
                     [this](const DfResult& result) { onMeasured(result); });
    QObject::connect(m_source.get(), &DfSource::failed, m_driver, [this](const QString& reason) { onFailed(reason); });

    provideConfig(handlerRoot);
    m_results =
        std::make_unique<ResultValues>(m_provided, handlerRoot + QLatin1String("Values/Result/"), m_source->stations());
    for (const char* name : {"Enabled", "Values/DFLocateAllowed"}) {
        if (auto* value = m_provided.provide<BoolValue>(handlerRoot + QLatin1String(name)))
            value->SetValue(true, nullptr);
    }
    const QString commandsPath = handlerRoot + QLatin1String("Values/Commands");
    setUpList(m_provided.provide<ValueSelection>(commandsPath), listOf(commandItems), commandNone);
    m_running.Assign(m_provided.provide<BoolValue>(handlerRoot + QLatin1String("DFRunning")));
    m_cyclicStarted.Assign(
        m_provided.provide<BoolValue>(handlerRoot + QLatin1String("Values/Result/CyclicLocateStarted")));
    m_hriRunning.Assign(m_provided.provide<BoolValue>(handlerRoot + QLatin1String("Values/Status/LocateHRIRunning")));
    writeHriRunning(false);
    writeRunning();
    writeCyclicStarted();
    m_status.Assign(m_provided.provide<StringValue>(handlerRoot + QLatin1String("Values/Status/LocateStatus")));
    m_hriStatus.Assign(m_provided.provide<StringValue>(hriStatusPath));
    writeStatus();
    m_settingsText.Assign(m_provided.provide<StringValue>(parameterRoot + QLatin1String("DF_Settings")));
    m_toDriver.Assign(m_provided.provide<StringValue>(parameterRoot + QLatin1String("DFLOCATE/ToDriver")));
    // Looked for anew: whoever hears of what was provided since may have deleted it.
    m_commands.Assign(dynamic_cast<ValueSelection*>(values::Tree::Instance()->FindValue(commandsPath)));
    provideGlobals();
}

DfDriver::Private::~Private()
{
    m_commands.Assign(nullptr);
    m_toDriver.Assign(nullptr);
    m_results.reset();
    m_source->disconnect(m_driver);
    m_frame.stop();
    m_source->cancel();
    if (m_history)
        m_history->disconnect(m_driver);
    dropLocate();
    if (m_deviceReady)
        m_deviceReady->SetValue(false, this);
    m_provided.release();
}

void DfDriver::Private::provideConfig(const QString& handlerRoot)
{
    for (const ConfigEntry& entry : configTable) {
        const QString path = handlerRoot + QLatin1String(entry.path);
        switch (entry.type) {
        case values::TypeBool:
            if (auto* value = m_provided.provide<BoolValue>(path))
                value->SetValue(entry.initial != 0.0, nullptr);
            break;
        case values::TypeInt:
            setUpNumber<int>(m_provided.provide<IntValue>(path), entry);
            break;
        case values::TypeDouble:
            setUpNumber<double>(m_provided.provide<DoubleValue>(path), entry);
            break;
        case values::TypeSelection:
            setUpList(m_provided.provide<ValueSelection>(path), entry.list, static_cast<int>(entry.initial));
            break;
        case values::TypeString:
            break;
        }
    }
    const QString configRoot = handlerRoot + QLatin1String("Config/");
    LinkByPath(m_frequencyOffset, configRoot + QLatin1String("DFFrequencyOffset"));
    LinkByPath(m_configQuality, configRoot + QLatin1String("Quality"));
    LinkByPath(m_configThreshold, configRoot + QLatin1String("Threshold"));
    LinkByPath(m_locateType, configRoot + QLatin1String("DFLocateType"));
    LinkByPath(m_activity, configRoot + QLatin1String("DFLocateActivity"));
    LinkByPath(m_mode, configRoot + QLatin1String("Mode"));
    LinkByPath(m_bandwidth, configRoot + QLatin1String("Bandwidth"));
    LinkByPath(m_averageTime, configRoot + QLatin1String("AverageTime"));

    DfSettings wanted;
    wanted.bandwidth = currentNumber(m_bandwidth).value_or(0.0);
    wanted.averaging = currentNumber(m_averageTime).value_or(0.0);
    wanted.mode = currentMode(m_mode).value_or(DfMode::Normal);
    wanted.qualityThreshold = thresholdInUse(m_configQuality);
    wanted.levelThreshold = thresholdInUse(m_configThreshold);
    wanted.frequencyOffset = m_frequencyOffset ? m_frequencyOffset->GetValue() : 0.0;
    m_settings = device().corrected(wanted);
}

void DfDriver::Private::provideGlobals()
{
    m_frequency.Assign(m_provided.provide<DoubleValue>(globalRoot + QLatin1String("Frequency")));
    if (m_frequency)
        m_frequency->SetMin(0.0, nullptr);
    if (m_frequency)
        m_frequency->SetValue(m_source->initialFrequency().value_or(0.0), nullptr);
    m_deviceBandwidth.Assign(m_provided.provide<ValueSelection>(globalRoot + QLatin1String("DeviceDfBandwidth")));
    m_deviceAveraging.Assign(m_provided.provide<ValueSelection>(globalRoot + QLatin1String("DeviceDfAveraging")));
    m_deviceMode.Assign(m_provided.provide<ValueSelection>(globalRoot + QLatin1String("DeviceDfMode")));
    provideDeviceLists();
    // Last: whoever is told that the device is ready reads its lists.
    m_deviceReady.Assign(m_provided.provide<BoolValue>(globalRoot + QLatin1String("DfDeviceReady")));
    if (m_deviceReady)
        m_deviceReady->SetValue(true, this);
}

void DfDriver::Private::provideDeviceLists()
{
    const auto numberOf = [](const DeviceStep& step) { return step.number; };
    const auto noNumber = [](const DeviceMode&) { return 0.0; };
    const Alive alive(m_driver);
    const std::vector<DeviceStep>& bandwidths = device().bandwidths;
    const std::vector<DeviceStep>& averagingTimes = device().averagingTimes;
    const std::vector<DeviceMode>& modes = device().modes;
    setUpDeviceList(m_deviceBandwidth, bandwidths, numberOf, nearestStep(bandwidths, m_settings.bandwidth), this);
    if (alive)
        setUpDeviceList(m_deviceAveraging, averagingTimes, numberOf, nearestStep(averagingTimes, m_settings.averaging),
                        this);
    if (alive)
        setUpDeviceList(m_deviceMode, modes, noNumber, positionOf(modes, m_settings.mode), this);
}

void DfDriver::Private::selectDevice(int index)
{
    if (index == m_currentDevice)
        return;
    const Alive alive(m_driver);
    m_currentDevice = index;
    m_settings = device().corrected(m_settings);
    m_textIsDue = m_acceptedText.has_value();
    answerLater();
    provideDeviceLists();
    if (!alive || !m_deviceReady)
        return;
    const values::ValueTransaction transaction =
        m_deviceReady->CreateTransaction({ChangeContent, ChangeExternal}, this);
    m_deviceReady->SetValue(true, this);
}

void DfDriver::Private::Update(Observable* changed, TChangeCode code)
{
    // Set again, the same text is sent again: its sender may have gone back to what was corrected the last time.
    if (changed == m_toDriver.get() && code == ChangeExternal) {
        takeSettingsText();
        return;
    }
    if (code == ChangeContent && changed == m_commands.get())
        obey(m_commands->GetCurrentKey());
    else
        takeWord(changed, code);
}

void DfDriver::Private::takeSettingsText()
{
    const auto read = readSettingsText(m_toDriver->GetValue());
    if (const auto* const error = std::get_if<SettingsTextError>(&read)) {
        const QString reason = QStringLiteral("The settings for the driver are refused: %1.").arg(error->reason);
        if ((ErrorHandler::Instance()->GetTraceMask() & ErrorHandler::ComponentTraces) != 0)
            _Q_Trace(reason, QStringLiteral("workbench/drivers/dfdriver"), __LINE__);
        emit m_driver->settingsRefused(reason);
        return;
    }
    m_acceptedText = std::get<JobXml::DF_Settings>(read);
    m_textIsDue = true;
    bringIntoForce(settingsAfter(m_settings, *m_acceptedText));
    answerLater();
}

/// Takes over what a Config value or a device list says for its setting.
void DfDriver::Private::takeWord(const Observable* value, TChangeCode code)
{
    DfSettings wanted = m_settings;
    const auto takeThreshold = [&](std::optional<int>& setting, const values::ValuePtr<IntValue>& threshold) {
        const bool isInUse = threshold->GetState() == values::StateOrdinary;
        const bool isTakenOutOfUse = code == ChangeState && threshold->GetState() == values::StateUnused;
        if (isInUse || isTakenOutOfUse)
            setting = thresholdInUse(threshold);
    };
    if (value == m_configQuality.get())
        takeThreshold(wanted.qualityThreshold, m_configQuality);
    else if (value == m_configThreshold.get())
        takeThreshold(wanted.levelThreshold, m_configThreshold);
    else if (code != ChangeContent)
        return;
    else if (value == m_frequencyOffset.get())
        wanted.frequencyOffset = m_frequencyOffset->GetValue();
    else if (value == m_bandwidth.get())
        wanted.bandwidth = currentNumber(m_bandwidth).value_or(wanted.bandwidth);
    else if (value == m_deviceBandwidth.get())
        wanted.bandwidth = currentNumber(m_deviceBandwidth).value_or(wanted.bandwidth);
    else if (value == m_averageTime.get())
        wanted.averaging = currentNumber(m_averageTime).value_or(wanted.averaging);
    else if (value == m_deviceAveraging.get())
        wanted.averaging = currentNumber(m_deviceAveraging).value_or(wanted.averaging);
    else if (value == m_mode.get())
        wanted.mode = currentMode(m_mode).value_or(wanted.mode);
    else if (value == m_deviceMode.get())
        wanted.mode = currentMode(m_deviceMode).value_or(wanted.mode);
    bringIntoForce(wanted);
}

void DfDriver::Private::bringIntoForce(const DfSettings& wanted)
{
    const DfSettings settings = device().corrected(wanted);
    if (settings == m_settings && settings == wanted)
        return;
    m_settings = settings;
    answerLater();
}

/// From the event loop, once for all that comes until then: an answer in the middle of an exchange would be taken for a
/// part of it.
void DfDriver::Private::answerLater()
{
    if (std::exchange(m_answerIsDue, true))
        return;
    QMetaObject::invokeMethod(
        m_driver, [this] { answer(); }, Qt::QueuedConnection);
}

void DfDriver::Private::answer()
{
    const Alive alive(m_driver);
    m_answerIsDue = false;
    // The text first: a component that follows it sets the device lists too, and all at once. One list alone it would
    // take for the operator's choice and send it together with the old rest.
    if (std::exchange(m_textIsDue, false))
        showSettingsText();
    if (alive)
        showSettingsInDeviceLists();
}

void DfDriver::Private::showSettingsText()
{
    if (!m_settingsText)
        return;
    const values::ValueTransaction transaction =
        m_settingsText->CreateTransaction({ChangeContent, ChangeExternal}, this);
    m_settingsText->SetValue(textWithSettings(*m_acceptedText, m_settings), this);
}

void DfDriver::Private::showSettingsInDeviceLists()
{
    const Alive alive(m_driver);
    const auto show = [&](const SelectionPtr& list, int index) {
        if (list && list->GetItemIndex(list->GetCurrentKey()) != index)
            list->SelectIndex(index, this);
    };
    show(m_deviceBandwidth, nearestStep(device().bandwidths, m_settings.bandwidth));
    if (alive)
        show(m_deviceAveraging, nearestStep(device().averagingTimes, m_settings.averaging));
    if (alive)
        show(m_deviceMode, positionOf(device().modes, m_settings.mode));
}

void DfDriver::Private::obey(int command)
{
    switch (command) {
    case commandStartSingleDf:
        startSingle();
        break;
    case commandStartCyclicDf:
        startCyclic();
        break;
    case commandStopCyclicDf:
        stopCyclic();
        break;
    default:
        break;
    }
}

void DfDriver::Private::startSingle()
{
    const Alive alive(m_driver);
    beginMeasurement();
    if (alive)
        writeRunning();
}

void DfDriver::Private::startCyclic()
{
    const Alive alive(m_driver);
    m_isCyclic = true;
    beginMeasurement();
    if (alive)
        writeCyclicStarted();
    if (alive)
        writeRunning();
}

void DfDriver::Private::stopCyclic()
{
    if (!m_isCyclic)
        return;
    const Alive alive(m_driver);
    m_isCyclic = false;
    m_isMeasuring = false;
    m_pending.reset();
    m_source->cancel();
    dropLocate();
    writeCyclicStarted();
    if (alive)
        writeRunning();
}

/// A measurement under way is as good as a new one.
void DfDriver::Private::beginMeasurement()
{
    if (m_isMeasuring)
        return;
    m_isMeasuring = true;
    m_request = request();
    m_source->measure(m_request);
    writeHriRunning(isHistoryWanted());
}

DfRequest DfDriver::Private::request() const
{
    DfRequest request{m_settings};
    if (m_frequency && m_frequency->GetValue() > 0.0)
        request.frequency = m_frequency->GetValue() + m_settings.frequencyOffset;
    return request;
}

void DfDriver::Private::onMeasured(const DfResult& result)
{
    if (!m_isMeasuring)
        return;
    m_pending = result;
    if (!m_frame.isActive())
        publishPending();
}

void DfDriver::Private::onFailed(const QString& reason)
{
    if (!m_isMeasuring)
        return;
    const Alive alive(m_driver);
    m_isMeasuring = false;
    m_isCyclic = false;
    m_pending.reset();
    dropLocate();
    writeCyclicStarted();
    if (alive)
        writeRunning();
    if (alive)
        emit m_driver->measurementFailed(reason);
}

void DfDriver::Private::publishPending()
{
    // An observer of a result may run an event loop of its own; what comes meanwhile waits for its turn.
    if (m_isPublishing || !m_pending)
        return;
    const Alive alive(m_driver);
    const DfResult result = *std::exchange(m_pending, std::nullopt);
    m_isPublishing = true;
    emit m_driver->measured(result);
    if (!alive)
        return;
    m_isPublishing = false;
    if (m_isMeasuring) // not stopped by somebody who was told
        locate(result);
}

/// Publishes @p result with its fix; with one from the history as soon as that answers.
void DfDriver::Private::locate(const DfResult& result)
{
    dropLocate();
    if (!isHistoryWanted()) {
        publish(result, locateOnline(result), std::nullopt);
        return;
    }
    m_toLocate = result;
    if (m_history)
        m_history->locate(result, qualityThreshold());
    else
        onLocated({QStringLiteral("No fix: there are no stored results.")});
}

void DfDriver::Private::onLocated(const HistoryFix& fix)
{
    if (m_toLocate)
        publish(*std::exchange(m_toLocate, std::nullopt), fix.located, fix);
}

void DfDriver::Private::dropLocate()
{
    if (!m_toLocate)
        return;
    m_toLocate.reset();
    if (m_history)
        m_history->cancel();
}

void DfDriver::Private::setHistory(LocateHistory* history)
{
    const Alive alive(m_driver);
    const std::optional<DfResult> toLocate = m_toLocate;
    dropLocate();
    if (m_history)
        m_history->disconnect(m_driver);
    m_history = history;
    if (history != nullptr) {
        QObject::connect(history, &LocateHistory::located, m_driver, [this](const HistoryFix& fix) { onLocated(fix); });
        QObject::connect(history, &LocateHistory::usableChanged, m_driver, [this] { writeStatus(); });
        // As good as an answer: whoever has asked waits for one.
        QObject::connect(history, &QObject::destroyed, m_driver, [this] { setHistory(nullptr); });
    }
    writeStatus();
    if (alive && toLocate)
        locate(*toLocate);
}

void DfDriver::Private::publish(const DfResult& result, const LocateResult& located,
                                const std::optional<HistoryFix>& history)
{
    const Alive alive(m_driver);
    m_isMeasuring = false;
    m_isPublishing = true;
    m_publishedRequest = m_request;
    m_publishedFix = located;
    m_publishedHistory = history;
    const auto* const fix = std::get_if<Fix>(&located);
    m_frame.start(static_cast<int>(frameMs - m_frameClock.elapsed() % frameMs)); // writing is a part of it
    // Before the result: whoever is told of that looks here for where its position is from.
    writeHriRunning(history.has_value());
    if (!alive ||
        !m_results->write(result, qualityThreshold(), fix != nullptr ? std::optional(fix->position) : std::nullopt))
        return;
    m_isPublishing = false;
    if (!m_frame.isActive())
        m_frame.start(0); // for what has come meanwhile
    writeStatus();
    if (!alive)
        return;
    if (m_isCyclic)
        beginMeasurement();
    if (alive)
        writeRunning();
    if (alive)
        emit m_driver->resultPublished(result);
}

bool DfDriver::Private::isLocateWanted() const
{
    return m_activity && m_activity->GetCurrentKey() == activityDfAndLocate;
}

bool DfDriver::Private::isHistoryWanted() const
{
    return isLocateWanted() && m_locateType && m_locateType->GetCurrentKey() == locateTypeHistory;
}

LocateResult DfDriver::Private::locateOnline(const DfResult& result) const
{
    const int type = m_locateType ? m_locateType->GetCurrentKey() : static_cast<int>(ValueSelection::NoKey);
    if (type != locateTypeOnline && type != locateTypeHistory)
        return QStringLiteral("No fix: the locate type is neither \"Online\" nor \"History\".");
    if (!isLocateWanted())
        return QStringLiteral("No fix: the activity is not \"DF and locate\".");
    return onlineFix(result, qualityThreshold());
}

void DfDriver::Private::writeStatus()
{
    const Alive alive(m_driver);
    const QString status = statusText(m_source->stations());
    std::vector<StationInfo> hriStations = m_source->hriStations();
    if (m_history)
        hriStations.push_back(stationOf(*m_history, hriStations));
    const QString hriStatus = statusText(hriStations);
    if (m_status && m_status->GetValue() != status)
        m_status->SetValue(status, this);
    if (alive && m_hriStatus && m_hriStatus->GetValue() != hriStatus)
        m_hriStatus->SetValue(hriStatus, this);
}

void DfDriver::Private::writeRunning()
{
    if (m_running && m_running->GetValue() != isRunning())
        m_running->SetValue(isRunning(), this);
}

void DfDriver::Private::writeHriRunning(bool isRunning)
{
    if (m_hriRunning && m_hriRunning->GetValue() != isRunning)
        m_hriRunning->SetValue(isRunning, this);
}

void DfDriver::Private::writeCyclicStarted()
{
    if (m_cyclicStarted && m_cyclicStarted->GetValue() != m_isCyclic)
        m_cyclicStarted->SetValue(m_isCyclic, this);
}

DfDriver::DfDriver(std::unique_ptr<DfSource> source, const QString& handlerRoot, const QString& parameterRoot,
                   QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>(this, std::move(source), handlerRoot, parameterRoot))
{
}

DfDriver::~DfDriver() = default;

DfSource& DfDriver::source() const
{
    return d->source();
}

bool DfDriver::isRunning() const
{
    return d->isRunning();
}

bool DfDriver::isCyclic() const
{
    return d->isCyclic();
}

const DfSettings& DfDriver::settings() const
{
    return d->settings();
}

const std::optional<DfRequest>& DfDriver::publishedRequest() const
{
    return d->publishedRequest();
}

const std::optional<LocateResult>& DfDriver::publishedFix() const
{
    return d->publishedFix();
}

const std::optional<HistoryFix>& DfDriver::publishedHistory() const
{
    return d->publishedHistory();
}

void DfDriver::setHistory(LocateHistory* history)
{
    d->setHistory(history);
}

int DfDriver::currentDevice() const
{
    return d->currentDevice();
}

void DfDriver::selectDevice(int index)
{
    d->selectDevice(index);
}

} // namespace workbench
