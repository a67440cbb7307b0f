#include "settingstable.h"
#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "valuetools.h"
#include "ztbase/observation.h"

using namespace VelmarGui;
using testsupport::FreshTree;
using testsupport::RecordingObserver;
using values::Tree;
using values::ValueBase;

namespace {

const QString root = QStringLiteral("/GUI/DFLocateHandler/");

template <typename T>
T* created(const char* path)
{
    for (const ConfigEntry& entry : ConfigTable) {
        if (qstrcmp(entry.path, path) == 0)
            createConfigValue(entry, root);
    }
    return dynamic_cast<T*>(Tree::Instance()->FindValue(root + path));
}

using Items = std::vector<values::SelectionItem>;

Items itemsOf(const values::ValueSelection& selection)
{
    Items items;
    for (int i = 0; i < selection.GetItemCount(); ++i)
        items.push_back(*selection.GetItem(i));
    return items;
}

Items averaging(const QString& list)
{
    values::ValueSelection selection;
    addAveragingItems(selection, list);
    return itemsOf(selection);
}

} // namespace

class TestSettingsTable : public QObject
{
    Q_OBJECT

private slots:
    void theTableHasAllSettingsInTheOrderOfTheirCreation()
    {
        QStringList paths;
        for (const ConfigEntry& entry : ConfigTable)
            paths << entry.path;
        QCOMPARE(paths, (QStringList{"Config/DFFrequencyOffset", "Config/DFSpan", "Config/DFLocateWorkflow",
                                     "Config/DFLocateType", "Config/DFLocateActivity", "Config/DFLocateActivityTrigger",
                                     "Config/OverwriteThreshold", "Config/Mode", "Config/Quality", "Config/Threshold",
                                     "Config/Bandwidth", "Config/AverageTime"}));
    }

    void anExchangeOfItemsThatFailsEndsItsTransactionAndIsTold()
    {
        const FreshTree tree;
        auto* const mode = tree.add<values::ValueSelection>("/mode");
        mode->AddItem("Normal", 0.0, 0);
        RecordingObserver observer;
        const Observation observation(*mode, observer);
        const auto failing = [](values::ValueSelection& items) {
            items.DeleteItems();
            throw 42;
        };
        QVERIFY_EXCEPTION_THROWN(exchangeItems(*mode, failing), int);
        QVERIFY(!mode->IsTransactionActive());
        QCOMPARE(observer.codes, std::vector<TChangeCode>{ChangeItems});
    }

    void anExchangeOfItemsMayEndTheValueAndFailThen()
    {
        const FreshTree tree;
        auto* const mode = tree.add<values::ValueSelection>("/mode");
        RecordingObserver observer([](Observable*, TChangeCode code) {
            if (code == ChangeItems) {
                Tree::Instance()->DeleteValue("/mode");
                throw 42;
            }
        });
        const Observation observation(*mode, observer);
        const auto exchange = [](values::ValueSelection& items) { items.AddItem("Normal", 0.0, 0); };
        QVERIFY_EXCEPTION_THROWN(exchangeItems(*mode, exchange), int);
        QVERIFY(!Tree::Instance()->FindValue("/mode"));
    }

    void theSlotsAreThoseOfTheSettings()
    {
        for (const ConfigEntry& entry : ConfigTable) {
            const QString path = entry.path;
            QString slot = "1ValueChanged(values::ValueBase*)";
            if (path == "Config/DFFrequencyOffset")
                slot = "1OffsetValueChanged(values::ValueBase*)";
            if (path == "Config/DFSpan")
                slot = "1SpanValueChanged(values::ValueBase*)";
            if (path.startsWith("Config/DFLocate")) {
                QVERIFY(entry.slot == nullptr);
                QCOMPARE("Config/" + QString(entry.interfaceName), path);
            } else {
                QCOMPARE(QString(entry.slot), slot);
                QVERIFY(entry.interfaceName == nullptr);
            }
        }
    }

    void frequencyOffsetAndSpanAreDoublesWithTheirLimits()
    {
        FreshTree fresh;
        const auto* offset = created<values::DoubleValue>("Config/DFFrequencyOffset");
        QVERIFY(offset != nullptr);
        QCOMPARE(offset->GetMin(), -2147483647.0);
        QCOMPARE(offset->GetMax(), 2147483647.0);
        QCOMPARE(offset->GetStep(), 1.0);
        QCOMPARE(offset->GetValue(), 0.0);
        QCOMPARE(int(offset->GetState()), 0);
        auto* span = created<values::DoubleValue>("Config/DFSpan");
        QVERIFY(span != nullptr);
        QCOMPARE(span->GetMin(), 0.0);
        QCOMPARE(span->GetMax(), 2147483647.0);
        QCOMPARE(span->GetStep(), 1.0);
        QCOMPARE(span->GetValue(), 0.0);
        QCOMPARE(int(span->GetState()), 0);
        QVERIFY(!span->SetValue(-1.0, nullptr));
    }

    void theThresholdsStartOutOfUse()
    {
        FreshTree fresh;
        auto* quality = created<values::IntValue>("Config/Quality");
        QVERIFY(quality != nullptr);
        QCOMPARE(quality->GetMin(), 1);
        QCOMPARE(quality->GetMax(), 100);
        QCOMPARE(quality->GetStep(), 1);
        QCOMPARE(quality->GetValue(), 1);
        QCOMPARE(int(quality->GetState()), 2);
        QVERIFY(!quality->SetValue(0, nullptr));
        QVERIFY(!quality->SetValue(101, nullptr));
        auto* threshold = created<values::IntValue>("Config/Threshold");
        QVERIFY(threshold != nullptr);
        QCOMPARE(threshold->GetMin(), -40);
        QCOMPARE(threshold->GetMax(), 200);
        QCOMPARE(threshold->GetStep(), 1);
        QCOMPARE(threshold->GetValue(), 0);
        QCOMPARE(int(threshold->GetState()), 2);
        QVERIFY(!threshold->SetValue(-41, nullptr));
        QVERIFY(!threshold->SetValue(201, nullptr));
    }

    void overwritingThresholdsIsOffAndKeepsItsState()
    {
        FreshTree fresh;
        auto* existing = fresh.add<values::BoolValue>(root + "Config/OverwriteThreshold");
        existing->SetValue(true, nullptr);
        existing->SetState(NotInUseState, nullptr);
        const auto* overwrite = created<values::BoolValue>("Config/OverwriteThreshold");
        QCOMPARE(overwrite, existing);
        QCOMPARE(overwrite->GetValue(), false);
        QCOMPARE(int(overwrite->GetState()), 2);
    }

    void theModesAreNormalContAndGate()
    {
        FreshTree fresh;
        const auto* mode = created<values::ValueSelection>("Config/Mode");
        QVERIFY(mode != nullptr);
        QVERIFY(itemsOf(*mode) == (Items{{"Normal", 0.0, 0}, {"Cont", 0.0, 1}, {"Gate", 0.0, 2}}));
        QCOMPARE(mode->GetCurrentKey(), 0);
        QCOMPARE(int(mode->GetState()), 0);
    }

    void theBandwidthsAreInHertzAndTwelveKilohertzIsCurrent()
    {
        FreshTree fresh;
        const auto* bandwidth = created<values::ValueSelection>("Config/Bandwidth");
        QVERIFY(bandwidth != nullptr);
        QVERIFY(itemsOf(*bandwidth) == (Items{{"120 Hz", 120.0, 0},
                                              {"300 Hz", 300.0, 1},
                                              {"600 Hz", 600.0, 2},
                                              {"1.2 kHz", 1200.0, 3},
                                              {"3.0 kHz", 3000.0, 4},
                                              {"5.0 kHz", 5000.0, 5},
                                              {"7.5 kHz", 7500.0, 6},
                                              {"12.0 kHz", 12000.0, 7},
                                              {"15.0 kHz", 15000.0, 8},
                                              {"30.0 kHz", 30000.0, 9},
                                              {"60.0 kHz", 60000.0, 10},
                                              {"100.0 kHz", 100000.0, 11},
                                              {"150.0 kHz", 150000.0, 12},
                                              {"200.0 kHz", 200000.0, 13}}));
        QCOMPARE(bandwidth->GetStringValue(), QString("12.0 kHz"));
        QCOMPARE(bandwidth->GetCurrentValue(), 12000.0);
        QCOMPARE(int(bandwidth->GetState()), 0);
    }

    void theAveragingTimesAreInMillisecondsAndOffIsCurrent()
    {
        FreshTree fresh;
        const auto* averageTime = created<values::ValueSelection>("Config/AverageTime");
        QVERIFY(averageTime != nullptr);
        QVERIFY(itemsOf(*averageTime) == (Items{{"Off", 0.0, 0},
                                                {"200m", 200.0, 1},
                                                {"500m", 500.0, 2},
                                                {"1s", 1000.0, 3},
                                                {"2s", 2000.0, 4},
                                                {"5s", 5000.0, 5},
                                                {"10s", 10000.0, 6}}));
        QCOMPARE(averageTime->GetCurrentKey(), 0);
        QCOMPARE(int(averageTime->GetState()), 0);
    }

    void theListsHaveTheirPositionsAsKeysAndTheFirstItemCurrent()
    {
        FreshTree fresh;
        const QHash<QString, QStringList> lists{{"Config/DFLocateWorkflow", {"On request", "Continuous", "On trigger"}},
                                                {"Config/DFLocateType", {"No locate", "Online", "History"}},
                                                {"Config/DFLocateActivity", {"No DF/Locate", "DF", "DF and locate"}},
                                                {"Config/DFLocateActivityTrigger", {"Manual", "Signal", "Schedule"}}};
        for (auto list = lists.begin(); list != lists.end(); ++list) {
            const auto* selection = created<values::ValueSelection>(qPrintable(list.key()));
            QVERIFY(selection != nullptr);
            QCOMPARE(selection->GetItemCount(), list->size());
            for (int i = 0; i < list->size(); ++i) {
                QCOMPARE(selection->GetItem(i)->GetName(), list->at(i));
                QCOMPARE(selection->GetItem(i)->GetKey(), i);
            }
            QCOMPARE(selection->GetCurrentKey(), 0);
            QCOMPARE(int(selection->GetState()), 0);
        }
    }

    void everyEntryIsCreatedAndBoundInItsKind()
    {
        FreshTree fresh;
        for (const ConfigEntry& entry : ConfigTable)
            createConfigValue(entry, root);
        ConfigValues values;
        for (const ConfigEntry& entry : ConfigTable) {
            ValueBase* bound = bindConfigValue(entry, values, root);
            QVERIFY2(bound != nullptr, entry.path);
            QCOMPARE(bound, Tree::Instance()->FindValue(root + entry.path));
            const bool isBound = std::visit([&](auto member) { return (values.*member).get() == bound; }, entry.member);
            QVERIFY2(isBound, entry.path);
        }
        QCOMPARE(Tree::Instance()->ValuesBelow(root).size(), ConfigTable.size());
    }

    void aMissingValueAndOneOfAnotherKindAreNotBound()
    {
        FreshTree fresh;
        ConfigValues values;
        for (const ConfigEntry& entry : ConfigTable)
            QVERIFY2(bindConfigValue(entry, values, root) == nullptr, entry.path);
        for (const ConfigEntry& entry : ConfigTable)
            fresh.add<values::StringValue>(root + entry.path);
        for (const ConfigEntry& entry : ConfigTable)
            QVERIFY2(bindConfigValue(entry, values, root) == nullptr, entry.path);
    }

    void existingValuesGetTheirItemsAndDefaultsAnew()
    {
        FreshTree fresh;
        auto* mode = fresh.add<values::ValueSelection>(root + "Config/Mode");
        mode->AddItem("Wideband", 5.0, 17);
        mode->Select(17);
        QCOMPARE(created<values::ValueSelection>("Config/Mode"), mode);
        QCOMPARE(mode->GetItemCount(), 3);
        QCOMPARE(mode->GetItemIndex(17), -1);
        QCOMPARE(mode->GetCurrentKey(), 0);
        QCOMPARE(created<values::ValueSelection>("Config/Mode")->GetItemCount(), 3);
    }

    void whoeverDeletesAValueThatIsBeingPreparedEndsItsPreparation()
    {
        for (const ConfigEntry& entry : ConfigTable) {
            const QString path = root + entry.path;
            int told = 0;
            for (int deletedAt = 1; told + 1 >= deletedAt; ++deletedAt) {
                FreshTree fresh;
                createConfigValue(entry, root);
                auto* const value = Tree::Instance()->FindValue(path);
                if (auto* const selection = dynamic_cast<values::ValueSelection*>(value))
                    selection->DeleteItems(); // so that there is something to tell
                else if (auto* const integer = dynamic_cast<values::IntValue*>(value))
                    integer->SetMinMax(-1, 1, 1, nullptr);
                else if (auto* const number = dynamic_cast<values::DoubleValue*>(value))
                    number->SetMinMax(-1.0, 1.0, 0.5, nullptr);
                value->SetState(values::StateUnused, nullptr);
                told = 0;
                RecordingObserver deleting([&](Observable*, TChangeCode code) {
                    if (code == ChangeState && Tree::Instance()->FindValue(path) == nullptr)
                        return;
                    if (++told == deletedAt)
                        Tree::Instance()->DeleteValue(path);
                });
                value->MakeFirstObserver(&deleting);
                createConfigValue(entry, root);
                QCOMPARE(Tree::Instance()->FindValue(path) == nullptr, told >= deletedAt);
                QVERIFY2(told <= deletedAt, entry.path);
                if (auto* const left = Tree::Instance()->FindValue(path))
                    left->RemoveObserver(&deleting);
            }
            QVERIFY2(told > 0, entry.path);
        }
    }

    void unitsOfAveragingTimesAreRead_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("milliseconds");
        QTest::newRow("blank and capital unit") << "2 S" << 2000.0;
        QTest::newRow("no unit") << "250" << 250000.0;
        QTest::newRow("milliseconds") << "250m" << 250.0;
        QTest::newRow("capital milliseconds") << " 2 5 0 M" << 250.0;
        QTest::newRow("off in any case") << " o F f " << 0.0;
        QTest::newRow("another unit means seconds") << "3x" << 3000.0;
        QTest::newRow("no number") << "m" << 0.0;
        QTest::newRow("only blanks") << " " << 0.0;
    }

    void unitsOfAveragingTimesAreRead()
    {
        QFETCH(QString, text);
        QFETCH(double, milliseconds);
        QVERIFY(averaging(text) == (Items{{text, milliseconds, 0}}));
    }

    void emptyPartsOfTheAveragingListTakeNoKey()
    {
        QVERIFY(averaging(",1s,,2s,") == (Items{{"1s", 1000.0, 0}, {"2s", 2000.0, 1}}));
        QVERIFY(averaging(QString()).empty());
    }
};

DFL_TEST_MAIN_WITH(TestSettingsTable, QCoreApplication)
#include "tst_settingstable.moc"
