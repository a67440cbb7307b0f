#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valueselection.h"

#include <functional>
#include <limits>

using testsupport::FreshTree;
using testsupport::RecordingObserver;
using values::SelectionItem;
using values::ValueSelection;

using Codes = std::vector<TChangeCode>;

namespace {

void fillBandwidths(ValueSelection& selection)
{
    selection.AddItem("7.5 kHz", 7500.0, 6);
    selection.AddItem("12.0 kHz", 12000.0, 7);
    selection.AddItem("15.0 kHz", 15000.0, 8);
}

} // namespace

Q_DECLARE_METATYPE(std::function<bool(ValueSelection&)>)

class TestValueSelection : public QObject
{
    Q_OBJECT

private slots:
    void withoutACurrentItemKeyValueAndTextAreEmpty()
    {
        ValueSelection selection;
        fillBandwidths(selection);
        QCOMPARE(selection.GetCurrentKey(), -1);
        QCOMPARE(selection.GetCurrentValue(), 0.0);
        QVERIFY(selection.GetCurrentItem() == nullptr);
        QCOMPARE(selection.GetStringValue(), QString());
    }

    void itemsAreFoundByIndexKeyAndName()
    {
        ValueSelection selection;
        fillBandwidths(selection);
        QCOMPARE(selection.GetItemCount(), 3);
        QCOMPARE(selection.GetItem(1)->GetName(), QString("12.0 kHz"));
        QCOMPARE(selection.GetItem(1)->GetValue(), 12000.0);
        QCOMPARE(selection.GetItem(1)->GetKey(), 7);
        QVERIFY(selection.GetItem(-1) == nullptr);
        QVERIFY(selection.GetItem(3) == nullptr);
        QCOMPARE(selection.GetItemIndex(8), 2);
        QCOMPARE(selection.GetItemIndex(9), -1);
        QCOMPARE(selection.GetItemNameForKey(6), QString("7.5 kHz"));
        QCOMPARE(selection.GetItemNameForKey(9), QString());
        QCOMPARE(selection.GetKeyForItemName("15.0 kHz"), 8);
        QCOMPARE(selection.GetKeyForItemName("nothing"), -1);
    }

    void addingItemsSendsCode7AndSelectsNothing()
    {
        ValueSelection selection;
        RecordingObserver observer;
        selection.AddObserver(&observer);
        QVERIFY(selection.AddItem("a", 1.0, 5));
        QCOMPARE(observer.codes, Codes{ChangeItems});
        selection.AddItems({"b", "c"});
        QCOMPARE(observer.codes, Codes(2, ChangeItems));
        QCOMPARE(selection.GetCurrentKey(), -1);
    }

    void namesAloneGetTheirPositionsAsKeys()
    {
        ValueSelection selection;
        selection.AddItems({"On request", "Continuous"});
        selection.AddItems({"On trigger"});
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(selection.GetItem(i)->GetKey(), i);
            QCOMPARE(selection.GetItem(i)->GetValue(), 0.0);
        }
    }

    void aSecondItemWithTheSameKeyReplacesTheFirstInItsPlace()
    {
        ValueSelection selection;
        fillBandwidths(selection);
        selection.Select(7);
        RecordingObserver observer;
        selection.AddObserver(&observer);
        QVERIFY(selection.AddItem("12.5 kHz", 12500.0, 7));
        QCOMPARE(selection.GetItemCount(), 3);
        QCOMPARE(selection.GetItem(1)->GetName(), QString("12.5 kHz"));
        QCOMPARE(selection.GetCurrentKey(), 7);
        QCOMPARE(selection.GetStringValue(), QString("12.5 kHz"));
        QCOMPARE(observer.codes, Codes{ChangeItems});
    }

    void itemsThatChangeNothingSendNothing()
    {
        ValueSelection selection;
        fillBandwidths(selection);
        RecordingObserver observer;
        selection.AddObserver(&observer);
        QVERIFY(selection.AddItem("12.0 kHz", 12000.0, 7));
        selection.AddItems({});
        selection.AddItemsFrom(selection);
        selection.AddItemsFrom(ValueSelection());
        QVERIFY(!selection.DeleteItem(99));
        QVERIFY(observer.codes.empty());
        ValueSelection empty;
        empty.AddObserver(&observer);
        empty.DeleteItems();
        QVERIFY(observer.codes.empty());
    }

    void theKeyOfNoItemAndNaNAreRefused()
    {
        ValueSelection selection;
        QVERIFY(!selection.AddItem("none", 0.0, -1));
        QVERIFY(!selection.AddItem("nan", std::numeric_limits<double>::quiet_NaN(), 1));
        QCOMPARE(selection.GetItemCount(), 0);
        QVERIFY(selection.AddItem("negative keys are keys", 0.0, -2));
        QVERIFY(selection.Select(-2));
    }

    void itemsOfAnotherSelectionKeepKeysAndNumbers()
    {
        ValueSelection from;
        fillBandwidths(from);
        from.Select(8);
        ValueSelection to;
        RecordingObserver observer;
        to.AddObserver(&observer);
        to.AddItemsFrom(from);
        QCOMPARE(observer.codes, Codes{ChangeItems});
        QCOMPARE(to.GetItemCount(), 3);
        QVERIFY(*to.GetItem(2) == *from.GetItem(2));
        QCOMPARE(to.GetCurrentKey(), -1);
    }

    void deletingAnotherItemKeepsTheCurrentOne()
    {
        ValueSelection selection;
        fillBandwidths(selection);
        selection.Select(8);
        RecordingObserver observer;
        selection.AddObserver(&observer);
        QVERIFY(selection.DeleteItem(6));
        QCOMPARE(observer.codes, Codes{ChangeItems});
        QCOMPARE(selection.GetCurrentKey(), 8);
        QCOMPARE(selection.GetItemIndex(8), 1);
        QCOMPARE(selection.GetItemIndex(6), -1);
        QVERIFY(selection.DeleteItem(8));
        QCOMPARE(selection.GetItemNameForKey(7), QString("12.0 kHz"));
    }

    void deletingTheCurrentItemLeavesNone()
    {
        ValueSelection selection;
        fillBandwidths(selection);
        selection.Select(7);
        RecordingObserver observer;
        selection.AddObserver(&observer);
        QVERIFY(selection.DeleteItem(7));
        QCOMPARE(selection.GetCurrentKey(), -1);
        QCOMPARE(observer.codes, (Codes{ChangeItems, ChangeContent}));
    }

    void deletingAllItemsLeavesNone()
    {
        ValueSelection selection;
        fillBandwidths(selection);
        RecordingObserver observer;
        selection.AddObserver(&observer);
        selection.DeleteItems();
        QCOMPARE(observer.codes, Codes{ChangeItems});
        fillBandwidths(selection);
        selection.Select(7);
        observer.codes.clear();
        selection.DeleteItems();
        QCOMPARE(observer.codes, (Codes{ChangeItems, ChangeContent}));
        QCOMPARE(selection.GetItemCount(), 0);
        QCOMPARE(selection.GetCurrentKey(), -1);
        QCOMPARE(selection.GetItemIndex(7), -1);
    }

    void exchangingTheItemsInATransactionSendsOneCode()
    {
        ValueSelection device;
        fillBandwidths(device);
        ValueSelection selection;
        selection.AddItems({"a", "b"});
        selection.Select(0);
        RecordingObserver observer;
        selection.AddObserver(&observer);
        selection.StartTransaction(nullptr);
        selection.DeleteItems();
        selection.AddItemsFrom(device);
        selection.EndTransaction(ChangeItems);
        QCOMPARE(observer.codes, Codes{ChangeItems});
        QCOMPARE(selection.GetItemCount(), 3);
    }

    void itemsAreSelectedByKeyTextWideTextIndexAndNumber()
    {
        ValueSelection selection;
        fillBandwidths(selection);
        QVERIFY(selection.Select(8));
        QCOMPARE(selection.GetCurrentKey(), 8);
        QVERIFY(selection.Select(QString("7.5 kHz")));
        QCOMPARE(selection.GetCurrentKey(), 6);
        QVERIFY(selection.Select(L"12.0 kHz"));
        QCOMPARE(selection.GetCurrentKey(), 7);
        QVERIFY(selection.SelectIndex(0));
        QCOMPARE(selection.GetCurrentKey(), 6);
        QVERIFY(selection.Select(15000.0, nullptr, true));
        QCOMPARE(selection.GetCurrentKey(), 8);
        QVERIFY(selection.Select(13000.0, nullptr, false));
        QCOMPARE(selection.GetCurrentKey(), 7);
        QVERIFY(selection.SetStringValue("15.0 kHz", nullptr));
        QCOMPARE(selection.GetStringValue(), QString("15.0 kHz"));
        QCOMPARE(selection.GetCurrentValue(), 15000.0);
    }

    void withoutAMatchNothingChangesAndNothingIsSent()
    {
        ValueSelection selection;
        fillBandwidths(selection);
        selection.Select(7);
        RecordingObserver observer;
        selection.AddObserver(&observer);
        QVERIFY(!selection.Select(99));
        QVERIFY(!selection.Select(-1));
        QVERIFY(!selection.Select(QString("12.0 KHZ")));
        QVERIFY(!selection.Select(static_cast<const wchar_t*>(nullptr)));
        QVERIFY(!selection.SelectIndex(3));
        QVERIFY(!selection.SelectIndex(-1));
        QVERIFY(!selection.Select(12000.5, nullptr, true));
        QVERIFY(!selection.SelectClosestValue(std::numeric_limits<double>::quiet_NaN()));
        QVERIFY(!ValueSelection().SelectClosestValue(1.0));
        QCOMPARE(selection.GetCurrentKey(), 7);
        QVERIFY(observer.codes.empty());
    }

    void selectingSendsCode3OnlyWhenTheItemChangesAndAlwaysCode19()
    {
        ValueSelection selection;
        fillBandwidths(selection);
        RecordingObserver observer;
        selection.AddObserver(&observer);
        QVERIFY(selection.Select(7));
        QCOMPARE(observer.codes, (Codes{ChangeContent, ChangeExternal}));
        observer.codes.clear();
        QVERIFY(selection.Select(7));
        QCOMPARE(observer.codes, Codes{ChangeExternal});
        observer.codes.clear();
        QVERIFY(selection.Select(8, &observer));
        QVERIFY(observer.codes.empty());
    }

    void ofTwoEquallyCloseItemsTheFirstIsSelected()
    {
        ValueSelection selection;
        fillBandwidths(selection);
        QVERIFY(selection.SelectClosestValue(9750.0)); // 2250 from both
        QCOMPARE(selection.GetCurrentKey(), 6);
        QVERIFY(selection.SelectClosestValue(9750.5));
        QCOMPARE(selection.GetCurrentKey(), 7);
        QVERIFY(selection.SelectClosestValue(1e12));
        QCOMPARE(selection.GetCurrentKey(), 8);
        QVERIFY(selection.SelectClosestValue(-5.0));
        QCOMPARE(selection.GetCurrentKey(), 6);
    }

    void ofSeveralItemsWithOneTextTheFirstIsMeant()
    {
        ValueSelection selection;
        selection.AddItem("same", 1.0, 3);
        selection.AddItem("same", 2.0, 1);
        QVERIFY(selection.Select(QString("same")));
        QCOMPARE(selection.GetCurrentKey(), 3);
        QCOMPARE(selection.GetKeyForItemName("same"), 3);
    }

    void assigningTakesItemsAndCurrentItem()
    {
        ValueSelection from;
        fillBandwidths(from);
        from.Select(8);
        ValueSelection to;
        to.AddItems({"a"});
        RecordingObserver observer;
        to.AddObserver(&observer);
        QVERIFY(!to.Compare(from));
        QVERIFY(to.Assign(from, nullptr));
        QCOMPARE(observer.codes, (Codes{ChangeItems, ChangeContent, ChangeExternal}));
        QVERIFY(to.Compare(from));
        QCOMPARE(to.GetItemIndex(8), 2);
        observer.codes.clear();
        QVERIFY(to.Assign(from, nullptr));
        QCOMPARE(observer.codes, Codes{ChangeExternal});
        observer.codes.clear();
        QVERIFY(to.Assign(to, nullptr));
        QVERIFY(observer.codes.empty());
    }

    void aValueOfAnotherKindIsNeitherAssignedNorEqual()
    {
        ValueSelection selection;
        fillBandwidths(selection);
        selection.Select(7);
        RecordingObserver observer;
        selection.AddObserver(&observer);
        const values::StringValue text(QStringLiteral("15.0 kHz"));
        QVERIFY(!selection.Assign(text, nullptr));
        QCOMPARE(selection.GetCurrentKey(), 7);
        QCOMPARE(selection.GetItemCount(), 3);
        QVERIFY(observer.codes.empty());
        QVERIFY(!selection.Compare(values::StringValue(QStringLiteral("12.0 kHz"))));
    }

    void selectionsWithTheSameItemsDifferByTheirCurrentOne()
    {
        ValueSelection a;
        fillBandwidths(a);
        ValueSelection b;
        fillBandwidths(b);
        QVERIFY(a.Compare(b));
        b.Select(8);
        QVERIFY(!a.Compare(b));
    }

    void itemsDifferByKeyNumberAndName()
    {
        const SelectionItem item(QStringLiteral("a"), 1.0, 1);
        QVERIFY(item == SelectionItem(QStringLiteral("a"), 1.0, 1));
        QVERIFY(!(item == SelectionItem(QStringLiteral("a"), 1.0, 2)));
        QVERIFY(!(item == SelectionItem(QStringLiteral("a"), 2.0, 1)));
        QVERIFY(!(item == SelectionItem(QStringLiteral("b"), 1.0, 1)));
    }

    void lookingUpAKeyInALongListAgreesWithTheList()
    {
        ValueSelection selection;
        for (int i = 0; i < 1000; ++i)
            selection.AddItem(QString::number(i), i, (i * 7919) % 1000003);
        for (int i = 0; i < 1000; i += 3)
            QVERIFY(selection.DeleteItem((i * 7919) % 1000003));
        QCOMPARE(selection.GetItemCount(), 666);
        for (int index = 0; index < selection.GetItemCount(); ++index)
            QCOMPARE(selection.GetItemIndex(selection.GetItem(index)->GetKey()), index);
    }

    void aSelectionDeletedByItsObserverIsSafe()
    {
        FreshTree fresh;
        for (const TChangeCode when : {ChangeItems, ChangeContent}) {
            auto* selection = fresh.add<ValueSelection>("A/S");
            fillBandwidths(*selection);
            selection->Select(7);
            RecordingObserver observer([when](Observable*, TChangeCode code) {
                if (code == when)
                    values::Tree::Instance()->DeleteValue("A/S");
            });
            selection->AddObserver(&observer);
            if (when == ChangeItems)
                selection->DeleteItems();
            else
                QVERIFY(selection->Select(8));
            QCOMPARE(observer.codes, (Codes{when, ChangeState}));
        }
    }

    void aSelectionDeletedWhenToldOfItsItemsSendsNothingMore_data()
    {
        QTest::addColumn<std::function<bool(ValueSelection&)>>("change");
        QTest::newRow("current item deleted")
            << std::function([](ValueSelection& selection) { return selection.DeleteItem(7); });
        QTest::newRow("another one assigned") << std::function([](ValueSelection& selection) {
            ValueSelection other;
            other.AddItems({QStringLiteral("a")});
            return selection.Assign(other, nullptr);
        });
    }

    void aSelectionDeletedWhenToldOfItsItemsSendsNothingMore()
    {
        QFETCH(std::function<bool(ValueSelection&)>, change);
        FreshTree fresh;
        auto* selection = fresh.add<ValueSelection>("A/S");
        fillBandwidths(*selection);
        selection->Select(7);
        RecordingObserver observer([](Observable*, TChangeCode code) {
            if (code == ChangeItems)
                values::Tree::Instance()->DeleteValue("A/S");
        });
        selection->AddObserver(&observer);
        QVERIFY(change(*selection));
        QCOMPARE(observer.codes, (Codes{ChangeItems, ChangeState}));
    }
};

DFL_TEST_MAIN_WITH(TestValueSelection, QCoreApplication)
#include "tst_valueselection.moc"
