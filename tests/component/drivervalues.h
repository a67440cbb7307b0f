#pragma once

#include "commandtable.h"
#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "valueframework/valueclasses/valueobservermacros.h"

#include <QStringList>

#include <vector>

namespace testsupport {

/// The values that a driver of two DF stations offers, in a tree of their own. At first DF may be started, by workflow
/// "On request" and with a locate type that needs no service; the stations have no result.
class DriverValues
{
public:
    static constexpr int North = 3; ///< key of the first station
    static constexpr int South = 7; ///< key of the second station

    /// A value whose path below @p root is in @p without is left out; its pointer is null.
    explicit DriverValues(QStringList without = {}, QString root = QStringLiteral("/GUI/DFLocateHandler/"))
        : m_without(std::move(without))
        , m_root(std::move(root))
    {
        addStartValues();
        addSettings();
        addResults();
    }

    FreshTree tree;
    values::BoolValue* enabled = nullptr;
    values::BoolValue* allowed = nullptr;
    values::BoolValue* cyclicStarted = nullptr;
    values::BoolValue* running = nullptr;
    values::ValueSelection* workflow = nullptr;
    values::ValueSelection* locateType = nullptr;
    values::ValueSelection* activity = nullptr;
    values::ValueSelection* commands = nullptr;

    values::IntValue* levelThreshold = nullptr;
    values::IntValue* qualitySetting = nullptr;
    values::ValueSelection* mode = nullptr;
    values::ValueSelection* bandwidth = nullptr;
    values::ValueSelection* averageTime = nullptr;

    values::ValueSelection* selectedDf = nullptr;
    values::ValueSelection* azimuth = nullptr;
    values::ValueSelection* quality = nullptr;
    values::ValueSelection* errors = nullptr;
    values::ValueSelection* longitude = nullptr;
    values::ValueSelection* latitude = nullptr;
    values::IntValue* qualityThreshold = nullptr;
    values::StringValue* resultTime = nullptr;
    values::StringValue* frequency = nullptr;

    template <typename T>
    T* add(const char* name)
    {
        return m_without.contains(QLatin1String(name)) ? nullptr : tree.add<T>(m_root + QLatin1String(name));
    }
    bool remove(const char* name) { return values::Tree::Instance()->DeleteValue(m_root + QLatin1String(name)); }

private:
    values::BoolValue* addBool(const char* name, bool content)
    {
        auto* const value = add<values::BoolValue>(name);
        if (value != nullptr)
            value->SetValue(content, nullptr);
        return value;
    }

    values::IntValue* addInt(const char* name, int content)
    {
        auto* const value = add<values::IntValue>(name);
        if (value != nullptr)
            value->SetValue(content, nullptr);
        return value;
    }

    values::ValueSelection* addSelection(const char* name, const QStringList& items, int index)
    {
        auto* const value = add<values::ValueSelection>(name);
        if (value != nullptr) {
            value->AddItems(items);
            value->SelectIndex(index);
        }
        return value;
    }

    values::ValueSelection* addStations(const char* name, const QString& north, const QString& south)
    {
        auto* const value = add<values::ValueSelection>(name);
        if (value != nullptr) {
            value->AddItem(north, 0.0, North);
            value->AddItem(south, 0.0, South);
            value->Select(North);
        }
        return value;
    }

    void addStartValues()
    {
        enabled = addBool("Enabled", true);
        allowed = addBool("Values/DFLocateAllowed", true);
        cyclicStarted = addBool("Values/Result/CyclicLocateStarted", false);
        running = addBool("DFRunning", false);
        workflow = addSelection("Config/DFLocateWorkflow", {"On request", "Continuous", "On trigger"}, 0);
        locateType = addSelection("Config/DFLocateType", {"No locate", "Online", "History"}, 0);
        activity = addSelection("Config/DFLocateActivity", {"No DF/Locate", "DF", "DF and locate"}, 1);
        QStringList commandNames;
        for (const char* name : VelmarGui::CommandNames)
            commandNames << QLatin1String(name);
        commands = addSelection("Values/Commands", commandNames, 0);
    }

    void addSettings()
    {
        levelThreshold = addInt("Config/Threshold", 20);
        if (levelThreshold != nullptr)
            levelThreshold->SetMinMax(-40, 200, 1, nullptr);
        qualitySetting = addInt("Config/Quality", 55);
        if (qualitySetting != nullptr)
            qualitySetting->SetMinMax(1, 100, 1, nullptr);
        mode = addSelection("Config/Mode", {"Normal", "Cont", "Gate"}, 0);
        bandwidth = addSelection("Config/Bandwidth", {"120 Hz", "12.0 kHz", "200.0 kHz"}, 1);
        averageTime = addSelection("Config/AverageTime", {"Off", "200m", "10s"}, 0);
    }

    void addResults()
    {
        selectedDf = addStations("Values/Result/SelectedDF", "North", "South");
        azimuth = addStations("Values/Result/Azimuth", "12.5", "271.0");
        quality = addStations("Values/Result/Quality", "80", "40");
        errors = addStations("Values/Result/Errors", "", "-14");
        longitude = addStations("Values/Result/DFLongitude", "11.6", "11.7");
        latitude = addStations("Values/Result/DFLatitude", "48.1", "48.2");
        qualityThreshold = addInt("Values/Result/QualityThreshold", 50);
        resultTime = add<values::StringValue>("Values/Result/ResultTime");
        frequency = add<values::StringValue>("Values/Result/Frequency");
        if (frequency != nullptr)
            frequency->SetValue("433920000", nullptr);
    }

    QStringList m_without;
    QString m_root;
};

/// What a driver hears on the command value.
class CommandLog
{
public:
    explicit CommandLog(values::ValueSelection* commands)
        : m_observer([this](Observable*, TChangeCode code) {
            if (code == ChangeContent)
                keys.push_back(m_commands->GetCurrentKey());
        })
    {
        m_commands.Assign(commands);
    }

    /// The commands in their order, each as often as it was heard.
    std::vector<int> keys;
    /// All change codes, among them those that carry no command.
    [[nodiscard]] const std::vector<TChangeCode>& codes() const { return m_observer.codes; }

private:
    RecordingObserver m_observer;
    values::ValueObservingPtr<values::ValueSelection> m_commands{&m_observer};
};

} // namespace testsupport
