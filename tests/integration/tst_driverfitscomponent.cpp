// The component and the driver spell their paths independently, as two products do: here they are held against each
// other.

#include "dflocatecomponent.h"
#include "drivers/dfdriver.h"
#include "drivers/scenario.h"
#include "drivers/simulatednetwork.h"
#include "resultnames.h"
#include "settingstable.h"
#include "support/freshtree.h"
#include "support/testmain.h"
#include "support/traces.h"

#include "guicomponentbase/guicomponentcommon.h"

using testsupport::FreshTree;
using testsupport::Traces;
using values::Tree;

namespace {

const QString componentRoot = QStringLiteral("/GUI/DFLocateComponent/");
const QString handlerRoot = QStringLiteral("/GUI/DFLocateHandler/");
const QString parameterRoot = QStringLiteral("/GUI/DFLocateComponent/Parameters/");

std::unique_ptr<workbench::DfDriver> makeDriver()
{
    using namespace workbench;
    Scenario scenario = *loadScenario(QStringLiteral(SCENARIO)).value;
    return std::make_unique<DfDriver>(std::make_unique<SimulatedNetwork>(std::move(scenario), 1, Pacing::Immediate),
                                      handlerRoot, parameterRoot);
}

template <typename T>
bool isOfKind(const QString& path)
{
    return dynamic_cast<T*>(Tree::Instance()->FindValue(path)) != nullptr;
}

} // namespace

class TestDriverFitsComponent : public QObject
{
    Q_OBJECT

private slots:
    void everySettingIsInTheDriversTreeInItsKindWithItsLimits()
    {
        FreshTree fresh;
        const auto driver = makeDriver();
        VelmarGui::ConfigValues settings;
        for (const VelmarGui::ConfigEntry& entry : VelmarGui::ConfigTable) {
            values::ValueBase* const value = VelmarGui::bindConfigValue(entry, settings, handlerRoot);
            QVERIFY2(value != nullptr, entry.path);
            if (const auto* number = dynamic_cast<values::DoubleValue*>(value)) {
                QCOMPARE(number->GetMin(), entry.range.min);
                QCOMPARE(number->GetMax(), entry.range.max);
                QCOMPARE(number->GetStep(), entry.range.step);
            }
            if (const auto* number = dynamic_cast<values::IntValue*>(value)) {
                QCOMPARE(double(number->GetMin()), entry.range.min);
                QCOMPARE(double(number->GetMax()), entry.range.max);
                QCOMPARE(double(number->GetStep()), entry.range.step);
            }
        }
    }

    void theListsOfTheSettingsAreThoseTheComponentWouldMakeItself()
    {
        FreshTree fresh;
        const auto driver = makeDriver();
        for (const VelmarGui::ConfigEntry& entry : VelmarGui::ConfigTable) {
            if (entry.addItems == nullptr)
                continue;
            values::ValueSelection own;
            entry.addItems(own);
            const auto* drivers = dynamic_cast<values::ValueSelection*>(
                Tree::Instance()->FindValue(handlerRoot + QLatin1String(entry.path)));
            QVERIFY2(drivers != nullptr, entry.path);
            QCOMPARE(drivers->GetItemCount(), own.GetItemCount());
            for (int i = 0; i < own.GetItemCount(); ++i)
                QVERIFY2(*drivers->GetItem(i) == *own.GetItem(i), qPrintable(own.GetItem(i)->GetName()));
        }
    }

    void everyValueOfTheToolbarsIsInTheDriversTreeInItsKind()
    {
        FreshTree fresh;
        const auto driver = makeDriver();
        for (const char* path : {"Enabled", "DFRunning", "Values/DFLocateAllowed", "Values/Result/CyclicLocateStarted",
                                 "Values/Status/LocateHRIRunning"})
            QVERIFY2(isOfKind<values::BoolValue>(handlerRoot + path), path);
        QVERIFY(isOfKind<values::ValueSelection>(handlerRoot + "Values/Commands"));
        QVERIFY(isOfKind<values::StringValue>(handlerRoot + "Values/Status/LocateStatus"));
        QVERIFY(isOfKind<values::StringValue>("/DRV/DRIVER/DFLOCATE/LocateHRIStatus"));
        QVERIFY(isOfKind<values::DoubleValue>("/GLOBAL/Frequency"));
        for (const char* name : {"DeviceDfBandwidth", "DeviceDfAveraging", "DeviceDfMode"})
            QVERIFY2(isOfKind<values::ValueSelection>(QStringLiteral("/GLOBAL/") + name), name);
        for (const char* name : {"DF_Settings", "DFLOCATE/ToDriver"})
            QVERIFY2(isOfKind<values::StringValue>(parameterRoot + name), name);
    }

    void everyResultValueIsInTheDriversTreeInItsKind()
    {
        using namespace VelmarGui;
        FreshTree fresh;
        const auto driver = makeDriver();
        const QString results = handlerRoot + "Values/Result/";
        for (const QLatin1String name :
             {selectedDfName, azimuthName, qualityName, levelName, errorsName, longitudeName, latitudeName})
            QVERIFY2(isOfKind<values::ValueSelection>(results + name), name.data());
        for (const QLatin1String name : {frequencyName, resultTimeName})
            QVERIFY2(isOfKind<values::StringValue>(results + name), name.data());
        for (const QLatin1String name : {averageLongitudeName, averageLatitudeName})
            QVERIFY2(isOfKind<values::DoubleValue>(results + name), name.data());
        QVERIFY(isOfKind<values::IntValue>(results + qualityThresholdName));
    }

    void theComponentMissesNothingInTheDriversTree()
    {
        FreshTree fresh;
        const auto driver = makeDriver();
        VelmarGui::GuiComponentCommon common;
        common.SetFormFolder(QStringLiteral(FORM_FOLDER));
        const Traces traces;
        VelmarGui::DFLocateComponent component(QStringLiteral("DFLocateComponent"));
        const std::unique_ptr<QWidget> panel(component.CreateWidget(&common, componentRoot));
        component.ConnectInterfaceValues();
        QStringList texts;
        for (const TraceRecord& record : traces.records)
            texts << record.text;
        QVERIFY2(texts.isEmpty(), qPrintable(texts.join('\n')));
        QVERIFY(panel != nullptr);
    }
};

DFL_TEST_MAIN(TestDriverFitsComponent)
#include "tst_driverfitscomponent.moc"
