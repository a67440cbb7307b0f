#include "jobxml/df_settings.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/valueselection.h"
#include "ztbase/exceptions.h"

#include <functional>
#include <limits>
#include <memory>

using namespace JobXml;

using Setter = std::function<void(DF_Settings&)>;
Q_DECLARE_METATYPE(Setter)

namespace {

const double notANumber = std::numeric_limits<double>::quiet_NaN();
const double infinity = std::numeric_limits<double>::infinity();

/// The place of the ReportException that @p action raises; empty when it raises none.
template <typename Action>
QString placeOfFailure(Action action)
{
    try {
        action();
    } catch (const ReportException& exception) {
        return exception.GetPlace();
    }
    return QString();
}

} // namespace

class TestDFSettings : public QObject
{
    Q_OBJECT

private slots:
    void newSettingsAreEmpty()
    {
        const DF_Settings settings;
        QVERIFY(!settings.IsBandwidthSet());
        QVERIFY(!settings.IsAveragingSet());
        QVERIFY(!settings.IsDFModeSet());
        QVERIFY(!settings.IsFrequencyOffsetSet());
        QVERIFY(!settings.IsWorkflowSet());
        QVERIFY(!settings.IsLocateTypeSet());
        QVERIFY(!settings.IsActivitySet());
        QVERIFY(!settings.IsActivityTriggerSet());
        QVERIFY(!settings.GetDetail().HasData());
        QVERIFY(!settings.GetBandwidth().IsValueSet());
    }

    void missingFieldsReadAsZeroOrUnset()
    {
        const DF_Settings settings;
        QCOMPARE(settings.GetBandwidth().GetValue(), 0.0);
        QCOMPARE(settings.GetAveraging(), 0.0);
        QCOMPARE(settings.GetFrequencyOffset(), 0.0);
        QCOMPARE(settings.GetDetail().GetQualityThreshold(), 0);
        QCOMPARE(settings.GetDetail().GetLevelThreshold(), 0.0);
        QCOMPARE(settings.GetDFMode(), DF_Settings::DFModeUnset);
        QCOMPARE(settings.GetWorkflow(), DF_Settings::WorkflowUnset);
        QCOMPARE(settings.GetLocateType(), DF_Settings::LocateTypeUnset);
        QCOMPARE(settings.GetActivity(), DF_Settings::ActivityUnset);
        QCOMPARE(settings.GetActivityTrigger(), DF_Settings::ActivityTriggerUnset);
    }

    void everySetterSetsItsFieldAndNoOther_data()
    {
        QTest::addColumn<Setter>("set");
        QTest::addColumn<QString>("field");
        QTest::newRow("bandwidth") << Setter([](DF_Settings& settings) {
            Bandwidth bandwidth;
            bandwidth.SetValue(12000.0);
            settings.SetBandwidth(bandwidth);
        }) << "Bandwidth 12000";
        QTest::newRow("averaging") << Setter([](DF_Settings& settings) { settings.SetAveraging(200.0); })
                                   << "Averaging 200";
        QTest::newRow("mode") << Setter([](DF_Settings& settings) { settings.SetDFMode(DF_Settings::DFModeGate); })
                              << "DFMode 2";
        QTest::newRow("quality") << Setter([](DF_Settings& settings) { settings.GetDetail().SetQualityThreshold(70); })
                                 << "Quality 70";
        QTest::newRow("level") << Setter([](DF_Settings& settings) { settings.GetDetail().SetLevelThreshold(-12.7); })
                               << "Level -12.7";
        QTest::newRow("offset") << Setter([](DF_Settings& settings) { settings.SetFrequencyOffset(-2500.0); })
                                << "Offset -2500";
        QTest::newRow("workflow") << Setter([](DF_Settings& settings) {
            settings.SetWorkflow(DF_Settings::WorkflowContinuous);
        }) << "Workflow 1";
        QTest::newRow("locate type") << Setter([](DF_Settings& settings) {
            settings.SetLocateType(DF_Settings::LocateTypeHistory);
        }) << "LocateType 2";
        QTest::newRow("activity") << Setter([](DF_Settings& settings) {
            settings.SetActivity(DF_Settings::ActivityDF);
        }) << "Activity 1";
        QTest::newRow("activity trigger")
            << Setter([](DF_Settings& settings) { settings.SetActivityTrigger(DF_Settings::ActivityTriggerSignal); })
            << "ActivityTrigger 1";
    }

    void everySetterSetsItsFieldAndNoOther()
    {
        QFETCH(Setter, set);
        QFETCH(QString, field);
        DF_Settings settings;
        set(settings);
        QCOMPARE(fieldsSet(settings), QStringList{field});
    }

    void aChoiceIsTakenAwayByUnset()
    {
        DF_Settings settings;
        settings.SetDFMode(DF_Settings::DFModeCont);
        settings.SetWorkflow(DF_Settings::WorkflowOnTrigger);
        settings.SetLocateType(DF_Settings::LocateTypeOnline);
        settings.SetActivity(DF_Settings::ActivityNone);
        settings.SetActivityTrigger(DF_Settings::ActivityTriggerManual);
        QCOMPARE(fieldsSet(settings).size(), 5);

        settings.SetDFMode(DF_Settings::DFModeUnset);
        settings.SetWorkflow(DF_Settings::WorkflowUnset);
        settings.SetLocateType(DF_Settings::LocateTypeUnset);
        settings.SetActivity(DF_Settings::ActivityUnset);
        settings.SetActivityTrigger(DF_Settings::ActivityTriggerUnset);
        QCOMPARE(fieldsSet(settings), QStringList());
    }

    void aNumberOutsideTheListTakesTheChoiceAway()
    {
        for (const int number : {-2, 3, 1000000}) {
            DF_Settings settings;
            settings.SetDFMode(DF_Settings::DFModeGate);
            settings.SetDFMode(static_cast<DF_Settings::TDFMode>(number));
            settings.SetActivity(DF_Settings::ActivityDFAndLocate);
            settings.SetActivity(static_cast<DF_Settings::TActivity>(number));
            QCOMPARE(fieldsSet(settings), QStringList());
            QCOMPARE(settings.GetActivity(), DF_Settings::ActivityUnset);
        }
    }

    void aBandwidthWithoutValueTakesTheFieldAway()
    {
        DF_Settings settings;
        Bandwidth bandwidth;
        bandwidth.SetValue(120.0);
        QVERIFY(bandwidth.IsValueSet());
        settings.SetBandwidth(bandwidth);
        settings.SetBandwidth(Bandwidth());
        QVERIFY(!settings.IsBandwidthSet());
        QCOMPARE(settings.GetBandwidth().GetValue(), 0.0);
    }

    void zeroIsAContent()
    {
        DF_Settings settings;
        settings.SetAveraging(0.0);
        settings.SetFrequencyOffset(0.0);
        settings.GetDetail().SetLevelThreshold(0.0);
        QCOMPARE(fieldsSet(settings), (QStringList{"Averaging 0", "Level 0", "Offset 0"}));
    }

    void eachThresholdAloneMakesTheDetailHoldData()
    {
        DF_SettingsDetail quality;
        quality.SetQualityThreshold(0);
        QVERIFY(quality.HasData() && quality.IsQualityThresholdSet() && !quality.IsLevelThresholdSet());
        DF_SettingsDetail level;
        level.SetLevelThreshold(0.0);
        QVERIFY(level.HasData() && level.IsLevelThresholdSet() && !level.IsQualityThresholdSet());
    }

    void anythingButAFiniteNumberIsRefusedAndTheFieldKeepsItsNumber()
    {
        for (const double bad : {notANumber, infinity, -infinity}) {
            DF_Settings settings;
            Bandwidth bandwidth;
            bandwidth.SetValue(300.0);
            QCOMPARE(placeOfFailure([&] { bandwidth.SetValue(bad); }), QString("Bandwidth::SetValue"));
            QCOMPARE(bandwidth.GetValue(), 300.0);

            settings.SetAveraging(1.0);
            QCOMPARE(placeOfFailure([&] { settings.SetAveraging(bad); }), QString("DF_Settings::SetAveraging"));
            settings.SetFrequencyOffset(2.0);
            QCOMPARE(placeOfFailure([&] { settings.SetFrequencyOffset(bad); }),
                     QString("DF_Settings::SetFrequencyOffset"));
            settings.GetDetail().SetLevelThreshold(3.0);
            QCOMPARE(placeOfFailure([&] { settings.GetDetail().SetLevelThreshold(bad); }),
                     QString("DF_SettingsDetail::SetLevelThreshold"));
            QCOMPARE(fieldsSet(settings), (QStringList{"Averaging 1", "Level 3", "Offset 2"}));
        }
    }

    void settingsAreValues()
    {
        DF_Settings original;
        original.SetWorkflow(DF_Settings::WorkflowContinuous);
        DF_Settings copy = original;
        copy.SetWorkflow(DF_Settings::WorkflowOnRequest);
        copy.GetDetail().SetQualityThreshold(5);
        QCOMPARE(original.GetWorkflow(), DF_Settings::WorkflowContinuous);
        QVERIFY(!original.GetDetail().HasData());
    }

    void theListsHaveTheirTextsInTheirOrder()
    {
        QCOMPARE(DF_Settings::GetWorkflows(), (QStringList{"On request", "Continuous", "On trigger"}));
        QCOMPARE(DF_Settings::GetLocateTypes(), (QStringList{"No locate", "Online", "History"}));
        QCOMPARE(DF_Settings::GetActivitys(), (QStringList{"No DF/Locate", "DF", "DF and locate"}));
        QCOMPARE(DF_Settings::GetActivityTriggers(), (QStringList{"Manual", "Signal", "Schedule"}));
    }

    void theMembersAreNumberedLikeTheirNames()
    {
        QCOMPARE(DF_Settings::WorkflowToName(DF_Settings::WorkflowOnRequest), QString("On request"));
        QCOMPARE(DF_Settings::WorkflowToName(DF_Settings::WorkflowContinuous), QString("Continuous"));
        QCOMPARE(DF_Settings::WorkflowToName(DF_Settings::WorkflowOnTrigger), QString("On trigger"));
        QCOMPARE(DF_Settings::LocateTypeToName(DF_Settings::LocateTypeNone), QString("No locate"));
        QCOMPARE(DF_Settings::LocateTypeToName(DF_Settings::LocateTypeOnline), QString("Online"));
        QCOMPARE(DF_Settings::LocateTypeToName(DF_Settings::LocateTypeHistory), QString("History"));
        QCOMPARE(DF_Settings::GetActivitys().at(DF_Settings::ActivityNone), QString("No DF/Locate"));
        QCOMPARE(DF_Settings::GetActivitys().at(DF_Settings::ActivityDF), QString("DF"));
        QCOMPARE(DF_Settings::GetActivitys().at(DF_Settings::ActivityDFAndLocate), QString("DF and locate"));
        QCOMPARE(DF_Settings::ActivityTriggerToName(DF_Settings::ActivityTriggerManual), QString("Manual"));
        QCOMPARE(DF_Settings::ActivityTriggerToName(DF_Settings::ActivityTriggerSignal), QString("Signal"));
        QCOMPARE(DF_Settings::ActivityTriggerToName(DF_Settings::ActivityTriggerSchedule), QString("Schedule"));
    }

    void everyNameOfAListLeadsToItsPositionAndBack()
    {
        const QStringList workflows = DF_Settings::GetWorkflows();
        const QStringList types = DF_Settings::GetLocateTypes();
        const QStringList triggers = DF_Settings::GetActivityTriggers();
        for (int position = 0; position < 3; ++position) {
            QCOMPARE(int(DF_Settings::NameToWorkflow(workflows.at(position))), position);
            QCOMPARE(DF_Settings::WorkflowToName(DF_Settings::TWorkflow(position)), workflows.at(position));
            QCOMPARE(int(DF_Settings::NameToLocateType(types.at(position))), position);
            QCOMPARE(DF_Settings::LocateTypeToName(DF_Settings::TLocateType(position)), types.at(position));
            QCOMPARE(int(DF_Settings::NameToActivityTrigger(triggers.at(position))), position);
            QCOMPARE(DF_Settings::ActivityTriggerToName(DF_Settings::TActivityTrigger(position)),
                     triggers.at(position));
        }
    }

    void anUnknownNameIsUnset_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("null") << QString();
        QTest::newRow("empty") << "";
        QTest::newRow("another word") << "Sometimes";
        QTest::newRow("lower case") << "continuous";
        QTest::newRow("begin of a name") << "On";
        QTest::newRow("more than a name") << "Online now";
        QTest::newRow("blank behind") << "Manual ";
        QTest::newRow("lone surrogate") << QString(QChar(0xd800));
        QTest::newRow("control character") << QString(QChar(1));
    }

    void anUnknownNameIsUnset()
    {
        QFETCH(QString, name);
        QCOMPARE(DF_Settings::NameToDFMode(name), DF_Settings::DFModeUnset);
        QCOMPARE(DF_Settings::NameToWorkflow(name), DF_Settings::WorkflowUnset);
        QCOMPARE(DF_Settings::NameToLocateType(name), DF_Settings::LocateTypeUnset);
        QCOMPARE(DF_Settings::NameToActivityTrigger(name), DF_Settings::ActivityTriggerUnset);
    }

    void theNameOfUnsetAndOfAForeignNumberIsEmpty()
    {
        for (const int number : {-1, -2, 3}) {
            QCOMPARE(DF_Settings::DFModeToName(DF_Settings::TDFMode(number)), QString(""));
            QCOMPARE(DF_Settings::WorkflowToName(DF_Settings::TWorkflow(number)), QString(""));
            QCOMPARE(DF_Settings::LocateTypeToName(DF_Settings::TLocateType(number)), QString(""));
            QCOMPARE(DF_Settings::ActivityTriggerToName(DF_Settings::TActivityTrigger(number)), QString(""));
        }
    }

    void modesAreNamedByFourCharacters()
    {
        QCOMPARE(DF_Settings::DFModeToName(DF_Settings::DFModeNorm), QString("Norm"));
        QCOMPARE(DF_Settings::DFModeToName(DF_Settings::DFModeCont), QString("Cont"));
        QCOMPARE(DF_Settings::DFModeToName(DF_Settings::DFModeGate), QString("Gate"));
    }

    void onlyTheFirstFourCharactersOfAModeNameCount()
    {
        QCOMPARE(DF_Settings::NameToDFMode("Norm"), DF_Settings::DFModeNorm);
        QCOMPARE(DF_Settings::NameToDFMode("Normal"), DF_Settings::DFModeNorm);
        QCOMPARE(DF_Settings::NameToDFMode("Normandy"), DF_Settings::DFModeNorm);
        QCOMPARE(DF_Settings::NameToDFMode("Continuous"), DF_Settings::DFModeCont);
        QCOMPARE(DF_Settings::NameToDFMode("Gated"), DF_Settings::DFModeGate);
        QCOMPARE(DF_Settings::NameToDFMode("Nor"), DF_Settings::DFModeUnset);
        QCOMPARE(DF_Settings::NameToDFMode("normal"), DF_Settings::DFModeUnset);
        QCOMPARE(DF_Settings::NameToDFMode(" Norm"), DF_Settings::DFModeUnset);
    }

    void theKeyOfAnActivityItemIsTheNumberOfTheActivity()
    {
        values::ValueSelection selection;
        selection.AddItems(DF_Settings::GetActivitys());
        DF_Settings settings;
        settings.SetActivity(DF_Settings::ActivityDFAndLocate);
        QVERIFY(selection.Select(settings.GetActivity()));
        QCOMPARE(selection.GetStringValue(), QString("DF and locate"));
        settings.SetActivity(static_cast<DF_Settings::TActivity>(values::ValueSelection().GetCurrentKey()));
        QVERIFY(!settings.IsActivitySet());
    }

private:
    /// The fields that are set, with their contents.
    static QStringList fieldsSet(const DF_Settings& settings)
    {
        QStringList fields;
        const auto add = [&fields](bool set, const char* name, double content) {
            if (set)
                fields << QStringLiteral("%1 %2").arg(QLatin1String(name)).arg(content);
        };
        const DF_SettingsDetail& detail = settings.GetDetail();
        add(settings.IsBandwidthSet(), "Bandwidth", settings.GetBandwidth().GetValue());
        add(settings.IsAveragingSet(), "Averaging", settings.GetAveraging());
        add(settings.IsDFModeSet(), "DFMode", settings.GetDFMode());
        add(detail.IsQualityThresholdSet(), "Quality", detail.GetQualityThreshold());
        add(detail.IsLevelThresholdSet(), "Level", detail.GetLevelThreshold());
        add(settings.IsFrequencyOffsetSet(), "Offset", settings.GetFrequencyOffset());
        add(settings.IsWorkflowSet(), "Workflow", settings.GetWorkflow());
        add(settings.IsLocateTypeSet(), "LocateType", settings.GetLocateType());
        add(settings.IsActivitySet(), "Activity", settings.GetActivity());
        add(settings.IsActivityTriggerSet(), "ActivityTrigger", settings.GetActivityTrigger());
        return fields;
    }
};

DFL_TEST_MAIN_WITH(TestDFSettings, QCoreApplication)
#include "tst_df_settings.moc"
