#include "hostbench.h"

#include "commandtable.h"
#include "faultpoints/faultpoint.h"
#include "kt270/pgxmlsheet.h"
#include "support/recordingobserver.h"

#include <QApplication>
#include <QComboBox>
#include <QDateTime>

namespace testsupport {

using values::BoolValue;
using values::DoubleValue;
using values::IntValue;
using values::StringValue;
using values::ValueSelection;

namespace {

const QString componentRoot = QStringLiteral("/GUI/DFLocateComponent/");
const QString handlerRoot = QStringLiteral("/GUI/DFLocateHandler/");

constexpr int northKey = 3;
constexpr int southKey = 7;

struct Choice
{
    const char* name;
    double number;
};

ValueSelection* fill(ValueSelection* selection, const std::vector<Choice>& choices, int index)
{
    int key = 0;
    for (const Choice& choice : choices)
        selection->AddItem(QString::fromLatin1(choice.name), choice.number, key++);
    selection->SelectIndex(index);
    return selection;
}

/// One item a station, with @p north and @p south as texts.
void setStations(ValueSelection& selection, const QString& north, const QString& south)
{
    selection.StartTransaction(nullptr);
    selection.AddItem(north, 0.0, northKey);
    selection.AddItem(south, 0.0, southKey);
    selection.EndTransaction(ChangeItems);
}

/// Makes a change to @p index that is one in any case.
void selectAnew(ValueSelection& selection, int other, int index)
{
    selection.SelectIndex(other);
    selection.SelectIndex(index);
}

const std::vector<Choice> modes{{"Normal", 0.0}, {"Cont", 0.0}, {"Gate", 0.0}};
const std::vector<Choice> bandwidths{{"120 Hz", 120.0}, {"12.0 kHz", 12000.0}, {"30.0 kHz", 30000.0}};
const std::vector<Choice> averageTimes{{"Off", 0.0}, {"200m", 200.0}, {"2s", 2000.0}};
const std::vector<Choice> workflows{{"On request", 0.0}, {"Continuous", 0.0}, {"On trigger", 0.0}};
const std::vector<Choice> locateTypes{{"No locate", 0.0}, {"Online", 0.0}, {"History", 0.0}};
const std::vector<Choice> activities{{"No DF/Locate", 0.0}, {"DF", 0.0}, {"DF and locate", 0.0}};
const std::vector<Choice> triggers{{"Manual", 0.0}, {"Signal", 0.0}, {"Schedule", 0.0}};

QString settingsText(const char* bandwidth, const char* mode, const char* detail, const char* offset,
                     const char* activity)
{
    return QStringLiteral("<DF_Settings><Bandwidth>%1</Bandwidth><Averaging>200</Averaging><DFMode>%2</DFMode>%3"
                          "<FrequencyOffset>%4</FrequencyOffset><Workflow>On request</Workflow>"
                          "<LocateType>No locate</LocateType><Activity>%5</Activity>"
                          "<ActivityTrigger>Signal</ActivityTrigger></DF_Settings>")
        .arg(QLatin1String(bandwidth), QLatin1String(mode), QLatin1String(detail), QLatin1String(offset),
             QLatin1String(activity));
}

QString driverText(const char* name)
{
    const auto* const text = dynamic_cast<const StringValue*>(
        values::Tree::Instance()->FindValue(componentRoot + QLatin1String("Parameters/") + QLatin1String(name)));
    return text != nullptr ? text->GetValue() : QString();
}

/// The two of them differ in everything that can be shown.
QString settingsText(bool first)
{
    return first ? settingsText("30000", "Gate",
                                "<Detail><QualityThreshold>40</QualityThreshold><LevelThreshold>15</LevelThreshold>"
                                "</Detail>",
                                "250", "DF")
                 : settingsText("120", "Cont", "", "0", "DF and locate");
}

} // namespace

class HostBench::UserInputControl : public QObject, public VelmarGui::IVelmarGuiUserInputControlService
{
    Q_OBJECT
public:
    using IVelmarGuiUserInputControlService = VelmarGui::IVelmarGuiUserInputControlService;

    QObject* GetQObject() override
    {
        return faults::failsByResult("IVelmarGuiUserInputControlService::GetQObject") ? nullptr : this;
    }

signals:
    void si_setUserInputMode(IVelmarGuiUserInputControlService::eUserInputMode mode);
};

HostBench::HostBench(const ComponentLibrary& library, Mode mode)
    : m_library(library)
    , m_mode(mode)
    , m_userInput(std::make_shared<UserInputControl>())
{
    m_common.SetFormFolder(QStringLiteral(FORM_FOLDER));
    m_common.getServiceRegistry()->registerService<VelmarGui::IVelmarGuiUserInputControlService>(m_userInput);
    if (m_mode == Mode::Online)
        addDriverValues();
}

HostBench::~HostBench()
{
    destroy();
}

void HostBench::addDriverValues()
{
    const auto add = [this](auto kind, const char* path) {
        return m_tree.add<std::remove_pointer_t<decltype(kind)>>(handlerRoot + QLatin1String(path));
    };
    BoolValue* const truth = nullptr;
    IntValue* const integer = nullptr;
    DoubleValue* const real = nullptr;
    StringValue* const text = nullptr;
    ValueSelection* const list = nullptr;

    add(truth, "Enabled")->SetValue(true, nullptr);
    add(truth, "Values/DFLocateAllowed")->SetValue(true, nullptr);
    add(truth, "Values/Result/CyclicLocateStarted");
    add(truth, "Values/Status/LocateHRIRunning");
    add(truth, "DFRunning");
    add(real, "Config/DFFrequencyOffset");
    add(real, "Config/DFSpan")->SetMinMax(0.0, 1e9, 1.0, nullptr);
    fill(add(list, "Config/DFLocateWorkflow"), workflows, 0);
    fill(add(list, "Config/DFLocateType"), locateTypes, 0);
    fill(add(list, "Config/DFLocateActivity"), activities, 1);
    fill(add(list, "Config/DFLocateActivityTrigger"), triggers, 0);
    add(truth, "Config/OverwriteThreshold");
    fill(add(list, "Config/Mode"), modes, 0);
    auto* const quality = add(integer, "Config/Quality");
    quality->SetMinMax(1, 100, 1, nullptr);
    quality->SetState(values::StateUnused, nullptr);
    auto* const threshold = add(integer, "Config/Threshold");
    threshold->SetMinMax(-40, 200, 1, nullptr);
    threshold->SetState(values::StateUnused, nullptr);
    fill(add(list, "Config/Bandwidth"), bandwidths, 1);
    fill(add(list, "Config/AverageTime"), averageTimes, 0);

    auto* const commands = add(list, "Values/Commands");
    for (std::size_t key = 0; key < VelmarGui::CommandNames.size(); ++key)
        commands->AddItem(QString::fromLatin1(VelmarGui::CommandNames[key]), 0.0, static_cast<int>(key));
    commands->Select(0);

    for (const char* const path :
         {"Values/Result/SelectedDF", "Values/Result/Azimuth", "Values/Result/Quality", "Values/Result/Level",
          "Values/Result/Errors", "Values/Result/DFLongitude", "Values/Result/DFLatitude"}) {
        auto* const stations = add(list, path);
        setStations(*stations, QStringLiteral("0"), QStringLiteral("0"));
        stations->Select(northKey);
    }
    add(text, "Values/Result/Frequency")->SetValue(QStringLiteral("433920000"), nullptr);
    add(text, "Values/Result/ResultTime");
    add(real, "Values/Result/AveragePositionLongitude");
    add(real, "Values/Result/AveragePositionLatitude");
    add(integer, "Values/Result/QualityThreshold")->SetValue(50, nullptr);
    add(text, "Values/Status/LocateStatus");
    m_tree.add<StringValue>(QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus"));
    m_tree.add<DoubleValue>(QStringLiteral("/GLOBAL/Frequency"))->SetValue(433.92e6, nullptr);
    m_tree.add<StringValue>(componentRoot + QStringLiteral("Parameters/DF_Settings"));
    m_tree.add<StringValue>(componentRoot + QStringLiteral("Parameters/DFLOCATE/ToDriver"));
    fill(m_tree.add<ValueSelection>(QStringLiteral("/GLOBAL/DeviceDfBandwidth")), bandwidths, 1);
    fill(m_tree.add<ValueSelection>(QStringLiteral("/GLOBAL/DeviceDfAveraging")), averageTimes, 0);
    fill(m_tree.add<ValueSelection>(QStringLiteral("/GLOBAL/DeviceDfMode")),
         {{"NORMAL", 0.0}, {"CONTINUOUS", 0.0}, {"GATED", 0.0}}, 0);
}

// The host's calls

void HostBench::create()
{
    m_component.emplace(m_library, L"DFLocateComponent");
}

void HostBench::makeWidgets()
{
    if (m_component && m_component->get() != nullptr)
        m_panel = m_component->get()->CreateWidget(&m_common, componentRoot);
}

void HostBench::connectServices()
{
    if (m_component && m_component->get() != nullptr)
        m_component->get()->ConnectVelmarGuiServices(&m_common);
}

void HostBench::announceTree()
{
    if (!m_component || m_component->get() == nullptr)
        return;
    if (m_mode == Mode::Online)
        m_component->get()->ConnectInterfaceValues();
    else
        m_component->get()->CreateAndConnectInterfaceValues();
}

void HostBench::destroy()
{
    delete m_panel;
    m_component.reset();
    // What the event loop of a host would do now.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::removePostedEvents(nullptr);
}

QToolBar* HostBench::toolBar() const
{
    return m_component && m_component->get() != nullptr ? m_component->get()->GetToolBar() : nullptr;
}

bool HostBench::isComplete() const
{
    return m_panel != nullptr && toolBar() != nullptr;
}

// What operator, driver and host do

template <typename T>
T* HostBench::value(const char* path) const
{
    return dynamic_cast<T*>(values::Tree::Instance()->FindValue(handlerRoot + QLatin1String(path)));
}

values::ValueSelection* HostBench::selection(const char* path) const
{
    return value<ValueSelection>(path);
}

int HostBench::next()
{
    return ++m_step;
}

void HostBench::announceEnabled()
{
    for (const bool enabled : {false, true}) {
        if (auto* const value = this->value<BoolValue>("Enabled"))
            value->SetValue(enabled, nullptr);
    }
}

void HostBench::writeResult()
{
    const int number = next();
    const auto stations = [this](const char* name, const QString& north, const QString& south) {
        setStations(*selection(name), north, south);
    };
    stations("Values/Result/Level", QString::number(number % 90), QStringLiteral("20"));
    stations("Values/Result/SelectedDF", QStringLiteral("North"), QStringLiteral("South"));
    stations("Values/Result/Azimuth", QStringLiteral("%1.5").arg(number % 360), QStringLiteral("271.0"));
    stations("Values/Result/Errors", QString(), QStringLiteral("-14"));
    stations("Values/Result/Quality", QString::number(60 + number % 40), QStringLiteral("40"));
    selection("Values/Result/Quality")->HasChanged(ChangeContent, nullptr);
    m_time = QStringLiteral("2020-06-01 %1:%2:%3")
                 .arg(number / 3600 % 24, 2, 10, QLatin1Char('0'))
                 .arg(number / 60 % 60, 2, 10, QLatin1Char('0'))
                 .arg(number % 60, 2, 10, QLatin1Char('0'));
    value<StringValue>("Values/Result/ResultTime")->SetValue(m_time, nullptr);
    selection("Values/Result/Errors")->HasChanged(ChangeContent, nullptr);
}

void HostBench::measure()
{
    if (QToolButton* const button = startButton())
        button->click();
    if (m_mode == Mode::Offline)
        return;
    value<BoolValue>("DFRunning")->SetValue(true, nullptr);
    writeResult();
    value<BoolValue>("DFRunning")->SetValue(false, nullptr);
}

void HostBench::openDetailedResults()
{
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QLatin1String("DetailedResults"))
            delete window;
    }
    if (auto* const button = toolBar()->findChild<QToolButton*>("DetailedResults"))
        emit button->pressed();
}

void HostBench::openReport()
{
    QWidget* const lamp = toolBar()->findChild<QLabel*>(QStringLiteral("Led Label"));
    QMetaObject::invokeMethod(lamp, "signal_open", Qt::DirectConnection);
}

void HostBench::reportStatus()
{
    const QString status = QStringLiteral("DFID3#N_North#ST%1#FB20000000#FE3000000000").arg(next() % 2 == 0 ? 49 : 0);
    if (auto* const text = value<StringValue>("Values/Status/LocateStatus"))
        text->SetValue(status, nullptr);
    if (auto* const text = dynamic_cast<StringValue*>(
            values::Tree::Instance()->FindValue(QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus"))))
        text->SetValue(status, nullptr);
}

void HostBench::changeStationList()
{
    if (ValueSelection* const stations = selection("Values/Result/SelectedDF"))
        setStations(*stations, QStringLiteral("North %1").arg(next()), QStringLiteral("South"));
    if (ValueSelection* const stations = selection("Values/Result/SelectedDF"))
        selectAnew(*stations, 1, 0);
}

void HostBench::changeSetting()
{
    if (ValueSelection* const bandwidth = selection("Config/Bandwidth"))
        selectAnew(*bandwidth, 2, 1);
    if (ValueSelection* const mode = selection("Config/Mode"))
        mode->SelectIndex((mode->GetCurrentKey() + 1) % 3);
    if (auto* const offset = value<DoubleValue>("Config/DFFrequencyOffset"))
        offset->SetValue(next(), nullptr);
}

void HostBench::changeSpan()
{
    if (auto* const span = value<DoubleValue>("Config/DFSpan"))
        span->SetValue(10000.0 + next(), nullptr);
}

void HostBench::changeWorkflow()
{
    if (ValueSelection* const workflow = selection("Config/DFLocateWorkflow"))
        selectAnew(*workflow, 1, 0);
    if (ValueSelection* const type = selection("Config/DFLocateType"))
        selectAnew(*type, 2, 0);
    if (ValueSelection* const activity = selection("Config/DFLocateActivity"))
        selectAnew(*activity, 0, 1);
}

void HostBench::exchangeDevice()
{
    values::Tree* const tree = values::Tree::Instance();
    if (auto* const device =
            dynamic_cast<ValueSelection*>(tree->FindValue(QStringLiteral("/GLOBAL/DeviceDfBandwidth"))))
        device->SelectIndex(next() % 3);
    if (auto* const ready = dynamic_cast<BoolValue*>(tree->FindValue(QStringLiteral("/GLOBAL/DfDeviceReady"))))
        ready->HasChanged(ChangeContent, nullptr);
}

void HostBench::handParameterSetIn()
{
    m_common.SetParameterSet(componentRoot, QStringLiteral("DF_Settings"), settingsText(next() % 2 == 0));
}

void HostBench::takeParameterSetOut()
{
    if (auto* const sheet = m_panel->findChild<KT270::PgXmlSheet*>()) {
        if (auto* const field = qobject_cast<QComboBox*>(sheet->GetFieldWidget(QStringLiteral("Bandwidth")))) {
            field->setCurrentIndex(next() % 2);
            emit field->activated(field->currentIndex());
        }
    }
    emit m_common.si_parametersRequested();
}

void HostBench::reportDriverSettings()
{
    if (auto* const settings = dynamic_cast<StringValue*>(
            values::Tree::Instance()->FindValue(componentRoot + QStringLiteral("Parameters/DF_Settings"))))
        settings->SetValue(settingsText(next() % 2 == 0), nullptr);
}

void HostBench::switchUserInput()
{
    using Service = VelmarGui::IVelmarGuiUserInputControlService;
    emit m_userInput->si_setUserInputMode(Service::LockedInput);
    emit m_userInput->si_setUserInputMode(Service::FullInput);
}

void HostBench::changeProperties()
{
    emit m_common.si_propertiesChanged();
}

// What is wrong

QString HostBench::parameterSet() const
{
    return m_common.GetParameterSet(componentRoot, QStringLiteral("DF_Settings"));
}

QToolButton* HostBench::startButton() const
{
    return toolBar()->findChild<QToolButton*>(QStringLiteral("DFStarter"));
}

QString HostBench::label(const char* objectName) const
{
    const auto* const label = toolBar()->findChild<QLabel*>(QLatin1String(objectName));
    return label != nullptr ? label->text() : QString();
}

QString HostBench::whatIsWrongWithSettings()
{
    ValueSelection* const mode = selection("Config/Mode");
    if (mode == nullptr)
        return QStringLiteral("no mode");
    if (!m_panel->isEnabled())
        return QStringLiteral("the panel is disabled");
    for (int i = 0; i < 2; ++i) {
        mode->SelectIndex((mode->GetCurrentKey() + 1) % 3);
        const QString text = mode->GetStringValue();
        const QString element = QStringLiteral("<DFMode>%1</DFMode>").arg(text.left(4));
        const QString set = parameterSet();
        if (!set.contains(element))
            return QStringLiteral("mode %1, but the parameter set is %2").arg(text, set);
        if (m_mode == Mode::Online && driverText("DFLOCATE/ToDriver") != set && driverText("DF_Settings") != set)
            return QStringLiteral("the parameter set is %1, but the driver got %2")
                .arg(set, driverText("DFLOCATE/ToDriver"));
        auto* const sheet = m_panel->findChild<KT270::PgXmlSheet*>();
        auto* const field =
            sheet != nullptr ? qobject_cast<QComboBox*>(sheet->GetFieldWidget(QStringLiteral("DFMode"))) : nullptr;
        if (field == nullptr || field->currentText() != text)
            return QStringLiteral("mode %1, but the form shows %2")
                .arg(text, field != nullptr ? field->currentText() : QStringLiteral("nothing"));
    }
    return {};
}

QString HostBench::whatIsWrongWithMeasuring()
{
    // What was missed with a failed notification comes with the next one.
    announceEnabled();
    selectAnew(*selection("Config/DFLocateActivity"), 0, 1);
    selectAnew(*selection("Config/DFLocateWorkflow"), 1, 0);

    ValueSelection* const commands = selection("Values/Commands");
    std::vector<int> heard;
    RecordingObserver driver([&](Observable*, TChangeCode code) {
        if (code == ChangeContent)
            heard.push_back(commands->GetCurrentKey());
    });
    commands->AddObserver(&driver);
    measure();
    commands->RemoveObserver(&driver);
    if (heard != std::vector<int>{VelmarGui::StartSingleDfCommand})
        return QStringLiteral("the driver heard %1 commands").arg(heard.size());

    const QString azimuth = selection("Values/Result/Azimuth")->GetItemNameForKey(northKey) + QStringLiteral("°");
    const QString quality = selection("Values/Result/Quality")->GetItemNameForKey(northKey) + QStringLiteral("%");
    if (label("average bearing") != azimuth || label("average quality") != quality)
        return QStringLiteral("%1 and %2 are shown in place of %3 and %4")
            .arg(label("average bearing"), label("average quality"), azimuth, quality);
    const QString time = QDateTime::fromString(m_time + QLatin1Char('Z'), QStringLiteral("yyyy-MM-dd HH:mm:sst"))
                             .toLocalTime()
                             .toString(QStringLiteral("HH:mm:ss"));
    if (label("LocationFindingTime") != time)
        return QStringLiteral("%1 is shown in place of %2").arg(label("LocationFindingTime"), time);
    return {};
}

} // namespace testsupport

#include "hostbench.moc"
