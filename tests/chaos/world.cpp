#include "world.h"

#include "knownvalues.h"

#include "guicomponentbase/iguicomponent.h"
#include "support/hostiletexts.h"

#include <QCoreApplication>

#include <functional>
#include <limits>

namespace chaos {

QString OtherLanguage::translate(const char* /*context*/, const char* sourceText, const char* /*disambiguation*/,
                                 int /*n*/) const
{
    return QChar(0x00AB) + QString::fromUtf8(sourceText) + QChar(0x00BB);
}

World::World()
{
    makeCommon();
}

World::~World()
{
    Dice anyOrder(0);
    end(anyOrder);
    values::Tree::Instance()->Clear();
    setOtherLanguage(false);
}

void World::makeCommon()
{
    inputControl = std::make_shared<workbench::UserInputControl>();
    common = std::make_unique<VelmarGui::GuiComponentCommon>();
    common->SetFormFolder(QStringLiteral(FORM_FOLDER));
    common->getServiceRegistry()->registerService<workbench::IVelmarGuiUserInputControlService>(inputControl);
}

void World::complete(Dice& dice)
{
    if (!common)
        makeCommon();
    if (!window)
        makeWindow(dice.oneIn(4));
    if (!driver)
        makeDriver(dice);
    if (!component)
        makeComponent();
    if (!toolBar || !panel)
        makeWidgets();
    connectValues();
}

void World::end(Dice& dice)
{
    const auto endWidgets = [this] {
        delete panel;
        delete toolBar;
    };
    const std::function<void()> ways[] = {[this] { window.reset(); }, [this] { driver.reset(); },
                                          [this] { component.reset(); }, endWidgets};
    std::vector<std::function<void()>> order(std::begin(ways), std::end(ways));
    while (!order.empty()) {
        const int next = dice.below(static_cast<int>(order.size()));
        order[static_cast<std::size_t>(next)]();
        order.erase(order.begin() + next);
    }
    common.reset();
    inputControl.reset();
}

void World::makeWindow(bool shown)
{
    window = std::make_unique<workbench::MainWindow>();
    if (shown)
        window->show();
}

void World::makeDriver(Dice& dice)
{
    driver.reset(); // before the new one provides the same values
    driver = std::make_unique<workbench::DfDriver>(std::make_unique<ScriptedSource>(anyStations(dice)), handlerPath(""),
                                                   parameterPath(""));
}

ScriptedSource* World::source() const
{
    return driver ? static_cast<ScriptedSource*>(&driver->source()) : nullptr;
}

void World::makeComponent()
{
    component.reset();
    auto loaded = workbench::loadComponent(QStringLiteral(COMPONENT), QStringLiteral("DFLocateComponent"));
    if (const auto* const error = std::get_if<workbench::ComponentError>(&loaded))
        qFatal("%s", qPrintable(error->text()));
    component = std::move(std::get<std::unique_ptr<workbench::LoadedComponent>>(loaded));
}

/// What the component makes for itself goes astray for ever, as it says in a trace, when a value of another kind is
/// there. The leak check would tell of it each time.
void World::makeRoomForComponent(bool withSettings)
{
    for (const KnownValue& known : knownValues()) {
        const bool isOfOther = known.path.startsWith(handlerPath(""));
        const values::ValueBase* const value = values::Tree::Instance()->FindValue(known.path);
        if (value != nullptr && known.isMadeByComponent && (withSettings || !isOfOther) &&
            value->GetType() != known.type)
            values::Tree::Instance()->DeleteValue(known.path);
    }
}

void World::makeWidgets()
{
    if (!component || !common)
        return;
    makeRoomForComponent(false);
    delete panel; // the host's
    if (toolBar && toolBar->parent() == nullptr)
        delete toolBar; // or else nobody would: one that is in a window goes with it
    QWidget* const newPanel = component->component().CreateWidget(common.get(), componentPath());
    panel = newPanel;
    toolBar = component->component().GetToolBar();
    if (toolBar == nullptr || panel == nullptr)
        qFatal("The component made no widgets");
    component->component().ConnectVelmarGuiServices(common.get());
    if (window)
        window->place(toolBar, panel);
}

void World::connectValues()
{
    if (!component)
        return;
    makeRoomForComponent(false);
    component->component().ConnectInterfaceValues();
}

void World::goOffline()
{
    if (!component)
        return;
    makeRoomForComponent(true);
    component->component().CreateAndConnectInterfaceValues();
}

void World::setOtherLanguage(bool on)
{
    if (on == m_hasOtherLanguage)
        return;
    m_hasOtherLanguage = on;
    if (on)
        QCoreApplication::installTranslator(&m_otherLanguage);
    else
        QCoreApplication::removeTranslator(&m_otherLanguage);
}

QString anyText(Dice& dice)
{
    static const std::vector<testsupport::HostileText> hostile = testsupport::hostileTexts();
    static const char* const ordinary[] = {"North",
                                           "South",
                                           "0",
                                           "-14",
                                           "12.5",
                                           "99",
                                           "1e400",
                                           "nan",
                                           "",
                                           "-17",
                                           "77",
                                           "true",
                                           "Continuous",
                                           "---",
                                           "2026-05-14 09:30:00",
                                           "1970-01-01 00:00:00",
                                           "433920000",
                                           "360.0"};
    return dice.oneIn(4) ? dice.pick(hostile).text : QString::fromLatin1(dice.pick(ordinary));
}

workbench::StationInfo anyStation(Dice& dice, int id)
{
    workbench::StationInfo station;
    station.id = id;
    station.name = dice.oneIn(3) ? anyText(dice) : QStringLiteral("Station %1").arg(id);
    if (!dice.oneIn(4))
        station.position = workbench::GeoPosition{48.0 + 0.1 * dice.below(20), 11.0 + 0.1 * dice.below(20)};
    if (!dice.oneIn(4))
        station.range = workbench::FrequencyRange{20e6, 3000e6};
    station.available = dice.oneIn(2);
    station.scan = dice.oneIn(2);
    station.wideband = dice.oneIn(2);
    return station;
}

std::vector<workbench::StationInfo> anyStations(Dice& dice)
{
    std::vector<workbench::StationInfo> stations;
    const int count = dice.below(6);
    for (int id = 1; id <= count; ++id)
        stations.push_back(anyStation(dice, id));
    return stations;
}

workbench::DfResult anyResult(Dice& dice)
{
    workbench::DfResult result;
    if (!dice.oneIn(5))
        result.frequency = dice.oneIn(10) ? std::numeric_limits<double>::quiet_NaN() : 1e3 * dice.below(3'000'000);
    if (!dice.oneIn(5)) {
        result.date = QDate(2026, 1, 1).addDays(dice.below(365));
        result.time = QTime(0, 0).addSecs(dice.below(86400));
    }
    const int count = dice.below(7);
    for (int id = 1; id <= count; ++id) {
        const workbench::StationInfo info = anyStation(dice, id);
        workbench::StationResult station;
        station.stationId = info.id;
        station.stationName = info.name;
        station.position = info.position;
        if (!dice.oneIn(3)) {
            station.azimuth = 0.1 * dice.below(3600);
            station.quality = dice.below(101);
            station.level = dice.between(-40, 120);
            station.sigma = 0.5 + 0.1 * dice.below(30);
        } else {
            static const workbench::DfError errors[] = {workbench::DfError::NotInScanRange, workbench::DfError::Timeout,
                                                        workbench::DfError::NoSignal};
            station.error = dice.pick(errors);
        }
        result.stations.push_back(std::move(station));
    }
    return result;
}

} // namespace chaos
