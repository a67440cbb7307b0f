#include "knownvalues.h"

namespace chaos {

namespace {

using values::TValueType;

const QString componentFolder = QStringLiteral("/GUI/DFLocateComponent/");
const QString handlerFolder = QStringLiteral("/GUI/DFLocateHandler/");

std::vector<KnownValue> makeTable()
{
    std::vector<KnownValue> table;
    const auto add = [&table](const QString& folder, TValueType type, std::initializer_list<const char*> names,
                              bool isSetting, bool isMadeByComponent) {
        for (const char* const name : names)
            table.push_back({folder + QLatin1String(name), type, isSetting, isMadeByComponent});
    };
    add(handlerFolder, values::TypeBool,
        {"Enabled", "Values/DFLocateAllowed", "DFRunning", "Values/Result/CyclicLocateStarted",
         "Values/Status/LocateHRIRunning"},
        false, false);
    add(handlerFolder, values::TypeSelection,
        {"Values/Commands", "Values/Result/SelectedDF", "Values/Result/Azimuth", "Values/Result/Quality",
         "Values/Result/Level", "Values/Result/Errors", "Values/Result/DFLatitude", "Values/Result/DFLongitude"},
        false, false);
    add(handlerFolder, values::TypeString,
        {"Values/Result/Frequency", "Values/Result/ResultTime", "Values/Status/LocateStatus"}, false, false);
    add(handlerFolder, values::TypeDouble,
        {"Values/Result/AveragePositionLongitude", "Values/Result/AveragePositionLatitude"}, false, false);
    add(handlerFolder, values::TypeInt, {"Values/Result/QualityThreshold"}, false, false);
    add(QStringLiteral("/DRV/DRIVER/DFLOCATE/"), values::TypeString, {"LocateHRIStatus"}, false, false);
    add(QStringLiteral("/GLOBAL/"), values::TypeDouble, {"Frequency"}, false, false);

    add(handlerFolder, values::TypeDouble, {"Config/DFFrequencyOffset", "Config/DFSpan"}, true, true);
    add(handlerFolder, values::TypeInt, {"Config/Quality", "Config/Threshold"}, true, true);
    add(handlerFolder, values::TypeBool, {"Config/OverwriteThreshold"}, true, true);
    add(handlerFolder, values::TypeSelection,
        {"Config/DFLocateWorkflow", "Config/DFLocateType", "Config/DFLocateActivity", "Config/DFLocateActivityTrigger",
         "Config/Mode", "Config/Bandwidth", "Config/AverageTime"},
        true, true);
    add(QStringLiteral("/GLOBAL/"), values::TypeSelection, {"DeviceDfBandwidth", "DeviceDfAveraging", "DeviceDfMode"},
        true, false);
    add(QStringLiteral("/GLOBAL/"), values::TypeBool, {"DfDeviceReady"}, true, true);
    add(componentFolder, values::TypeSelection,
        {"DFLocateWorkflow", "DFLocateType", "DFLocateActivity", "DFLocateActivityTrigger"}, true, true);
    add(componentFolder + QLatin1String("Parameters/"), values::TypeString,
        {"DF_Settings", "DF_Settings/PGXML", "DFLOCATE/ToDriver"}, true, false);

    add(componentFolder, values::TypeBool,
        {"TriggerLocateStart", "LocateDFConnectedIndicator", "LocateHRIConnectedIndicator", "LocateDFUsableIndicator",
         "LocateHRIUsableIndicator"},
        false, true);
    return table;
}

} // namespace

const std::vector<KnownValue>& knownValues()
{
    static const std::vector<KnownValue> table = makeTable();
    return table;
}

QString handlerPath(const char* name)
{
    return handlerFolder + QLatin1String(name);
}

QString componentPath()
{
    return componentFolder;
}

QString parameterPath(const char* name)
{
    return componentFolder + QLatin1String("Parameters/") + QLatin1String(name);
}

std::unique_ptr<values::ValueBase> makeValue(TValueType type)
{
    switch (type) {
    case values::TypeBool:
        return std::make_unique<values::BoolValue>();
    case values::TypeInt:
        return std::make_unique<values::IntValue>();
    case values::TypeDouble:
        return std::make_unique<values::DoubleValue>();
    case values::TypeString:
        return std::make_unique<values::StringValue>();
    case values::TypeSelection:
        break;
    }
    return std::make_unique<values::ValueSelection>();
}

bool insertValue(const QString& path, std::unique_ptr<values::ValueBase> value)
{
    const int nameStart = path.lastIndexOf(QLatin1Char('/')) + 1;
    value->SetName(path.mid(nameStart), nullptr);
    if (!values::Tree::Instance()->InsertValue(path.left(nameStart), value.get()))
        return false;
    value.release(); // the tree's now
    return true;
}

} // namespace chaos
