#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"

using testsupport::FreshTree;
using testsupport::RecordingObserver;
using namespace values;

using Codes = std::vector<TChangeCode>;

class TestValueBase : public QObject
{
    Q_OBJECT

private slots:
    void statesHaveTheNumbersOfTheBinaryInterface()
    {
        QCOMPARE(int(StateOrdinary), 0);
        QCOMPARE(int(StateRemoved), 1);
        QCOMPARE(int(StateUnused), 2);
    }

    void aNewValueIsOrdinaryUnnamedAndUnattached()
    {
        const StringValue value;
        QCOMPARE(value.GetState(), StateOrdinary);
        QCOMPARE(value.GetName(), QString());
        QVERIFY(!value.IsInTree());
        QVERIFY(!value.IsTransactionActive());
        QVERIFY(value.GetDeleteObserver() == nullptr);
    }

    void anotherStateSendsCode2AndTheSameNothing()
    {
        StringValue value;
        RecordingObserver observer;
        value.AddObserver(&observer);
        value.SetState(StateUnused, nullptr);
        QCOMPARE(observer.codes, Codes{ChangeState});
        value.SetState(StateUnused, nullptr);
        QCOMPARE(observer.codes, Codes{ChangeState});
        QCOMPARE(value.GetState(), StateUnused);
    }

    void theObserverThatCausesAChangeIsNotTold()
    {
        IntValue value;
        RecordingObserver causing;
        RecordingObserver other;
        value.AddObserver(&causing);
        value.AddObserver(&other);
        value.SetState(StateUnused, &causing);
        value.SetValue(5, &causing);
        value.SetMinMax(0, 10, 1, &causing);
        value.HasChanged(ChangeContent, &causing);
        QVERIFY(causing.codes.empty());
        QCOMPARE(other.codes, (Codes{ChangeState, ChangeContent, ChangeExternal, ChangeLimits, ChangeContent}));
    }

    void aStateNeverBlocksASetByProgram()
    {
        IntValue value;
        value.SetState(StateUnused, nullptr);
        QVERIFY(value.SetValue(7, nullptr));
        QCOMPARE(value.GetValue(), 7);
    }

    void hasChangedSendsItsCodeUnconditionally()
    {
        StringValue value;
        RecordingObserver observer;
        value.AddObserver(&observer);
        value.HasChanged(ChangeContent, nullptr);
        value.HasChanged(ChangeItems, nullptr);
        QCOMPARE(observer.codes, (Codes{ChangeContent, ChangeItems}));
    }

    void nothingIsSentInsideATransactionAndOneCodeAtItsEnd()
    {
        IntValue value;
        RecordingObserver observer;
        value.AddObserver(&observer);
        value.StartTransaction(nullptr);
        QVERIFY(value.IsTransactionActive());
        value.SetValue(1, nullptr);
        value.SetValue(2, nullptr);
        value.SetState(StateUnused, nullptr);
        value.SetMinMax(0, 5, 1, nullptr);
        value.HasChanged(ChangeContent, nullptr);
        QVERIFY(observer.codes.empty());
        value.EndTransaction(ChangeItems);
        QCOMPARE(observer.codes, Codes{ChangeItems});
        QVERIFY(!value.IsTransactionActive());
    }

    void onlyTheOutermostTransactionSpeaks()
    {
        IntValue value;
        RecordingObserver observer;
        value.AddObserver(&observer);
        value.StartTransaction(nullptr);
        value.StartTransaction(nullptr);
        value.EndTransaction(ChangeLimits);
        QVERIFY(observer.codes.empty());
        QVERIFY(value.IsTransactionActive());
        value.EndTransaction(ChangeItems);
        QCOMPARE(observer.codes, Codes{ChangeItems});
    }

    void anEndWithoutAStartDoesNothing()
    {
        IntValue value;
        RecordingObserver observer;
        value.AddObserver(&observer);
        value.EndTransaction(ChangeItems);
        QVERIFY(observer.codes.empty());
        QVERIFY(!value.IsTransactionActive());
        value.SetValue(1, nullptr);
        QCOMPARE(observer.codes, (Codes{ChangeContent, ChangeExternal}));
    }

    void theObserverOfTheOutermostTransactionIsNotTold()
    {
        IntValue value;
        RecordingObserver causing;
        RecordingObserver other;
        value.AddObserver(&causing);
        value.AddObserver(&other);
        value.StartTransaction(&causing);
        value.StartTransaction(&other);
        value.EndTransaction(ChangeItems);
        value.EndTransaction(ChangeItems);
        QVERIFY(causing.codes.empty());
        QCOMPARE(other.codes, Codes{ChangeItems});
        value.SetValue(1, nullptr);
        QCOMPARE(causing.codes, (Codes{ChangeContent, ChangeExternal}));
    }

    void theGuardSendsEachOfItsCodesOnceAtItsEnd()
    {
        IntValue value;
        RecordingObserver observer;
        RecordingObserver causing;
        value.AddObserver(&observer);
        value.AddObserver(&causing);
        {
            const ValueTransaction transaction = value.CreateTransaction({ChangeItems, ChangeContent}, &causing);
            value.SetValue(4, nullptr);
            QVERIFY(observer.codes.empty());
        }
        QCOMPARE(observer.codes, (Codes{ChangeItems, ChangeContent}));
        QVERIFY(causing.codes.empty());
    }

    void aMovedGuardEndsOnce()
    {
        IntValue value;
        RecordingObserver observer;
        value.AddObserver(&observer);
        {
            ValueTransaction first = value.CreateTransaction({ChangeItems}, nullptr);
            const ValueTransaction second = std::move(first);
        }
        QCOMPARE(observer.codes, Codes{ChangeItems});
    }

    void aGuardOutlivesItsValue()
    {
        FreshTree fresh;
        auto* value = fresh.add<IntValue>("A/V");
        const ValueTransaction transaction = value->CreateTransaction({ChangeItems}, nullptr);
        QVERIFY(Tree::Instance()->DeleteValue("A/V"));
    }

    void aValueDeletedByTheFirstCodeOfATransactionSendsNoSecond()
    {
        FreshTree fresh;
        auto* value = fresh.add<IntValue>("A/V");
        RecordingObserver first([](Observable*, TChangeCode code) {
            if (code == ChangeItems)
                Tree::Instance()->DeleteValue("A/V");
        });
        RecordingObserver second;
        value->AddObserver(&first);
        value->AddObserver(&second);
        {
            const ValueTransaction transaction = value->CreateTransaction({ChangeItems, ChangeContent}, nullptr);
        }
        QCOMPARE(second.codes, Codes{ChangeState});
    }

    void theTranslationNamespaceIsKept()
    {
        StringValue value;
        QCOMPARE(value.GetTranslationNamespace(), QString());
        value.SetTranslationNamespace("PITResourceTypes");
        QCOMPARE(value.GetTranslationNamespace(), QString("PITResourceTypes"));
    }

    void theCommandStringIsFilledWithTheContent()
    {
        IntValue value(12);
        QCOMPARE(value.GetCommandStringForTransmission(), QString());
        value.SetCommandString("BWIDTH %1;%1");
        QCOMPARE(value.GetCommandStringForTransmission(), QString("BWIDTH 12;12"));
    }

    void theRecordingLineHoldsPathAndLosslessContent()
    {
        FreshTree fresh;
        auto* text = fresh.add<StringValue>("A/Text");
        text->SetValue("two\nlines\r\\n", nullptr);
        QCOMPARE(text->GetCommandStringForRecording(), QString("/A/Text=two\\nlines\\r\\\\n"));
        auto* number = fresh.add<DoubleValue>("A/Number");
        number->SetValue(0.1, nullptr);
        QCOMPARE(number->GetCommandStringForRecording(), QString("/A/Number=0.1"));
        auto* flag = fresh.add<BoolValue>("A/Flag");
        QCOMPARE(flag->GetCommandStringForRecording(), QString("/A/Flag=false"));
        auto* whole = fresh.add<IntValue>("A/Whole");
        QCOMPARE(whole->GetCommandStringForRecording(), QString("/A/Whole=0"));
        auto* choice = fresh.add<ValueSelection>("A/Choice");
        choice->AddItems({"Normal", "Gate"});
        choice->Select(1);
        QCOMPARE(choice->GetCommandStringForRecording(), QString("/A/Choice=Gate"));
    }

    void anOverrideLastsUntilItsTimeIsOverOrItIsEnded()
    {
        IntValue value;
        QVERIFY(!value.IsOverridden());
        value.OverrideTimer(600000);
        QVERIFY(value.IsOverridden());
        QVERIFY(value.SetValue(3, nullptr));
        value.KillOverrideTimer();
        QVERIFY(!value.IsOverridden());
        value.OverrideTimer(0);
        QVERIFY(!value.IsOverridden());
        value.OverrideTimer(-5);
        QVERIFY(!value.IsOverridden());
        value.OverrideTimer(1);
        QTRY_VERIFY(!value.IsOverridden());
    }

    void theUpdateTimeIsNeverNegative()
    {
        IntValue value;
        QCOMPARE(value.GetUpdateTimerTime(), 0);
        value.SetUpdateTimerTime(250);
        QCOMPARE(value.GetUpdateTimerTime(), 250);
        value.SetUpdateTimerTime(-1);
        QCOMPARE(value.GetUpdateTimerTime(), 0);
    }
};

DFL_TEST_MAIN_WITH(TestValueBase, QCoreApplication)
#include "tst_valuebase.moc"
