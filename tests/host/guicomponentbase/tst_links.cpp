#include "guicomponentbase/guicomponentcommon.h"
#include "guicomponentbase/guicomponenttools.h"
#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"
#include "valuereceiver.h"
#include "ztbase/observation.h"

#include <memory>

using namespace VelmarGui;
using testsupport::FreshTree;
using testsupport::RecordingObserver;
using values::BoolValue;
using values::DoubleValue;
using values::IntValue;
using values::StringValue;
using values::ValueBase;
using values::ValueSelection;

namespace {

const char* const changedSlot = SLOT(Changed(values::ValueBase*));
const QString component = QStringLiteral("/GUI/SomeComponent/");
const QString targetPath = QStringLiteral("/GUI/SomeHandler/Config/Mode");

QStringList itemNames(const ValueSelection& selection)
{
    QStringList names;
    for (int i = 0; i < selection.GetItemCount(); ++i)
        names << selection.GetItem(i)->GetName();
    return names;
}

} // namespace

class TestLinks : public QObject
{
    Q_OBJECT

    FreshTree tree;
    std::unique_ptr<GuiComponentCommon> common;
    std::unique_ptr<GuiComponentTools> tools;
    std::unique_ptr<ValueReceiver> receiver;
    ValueSelection* target = nullptr;
    ValueSelection* local = nullptr;

    ValueBase* link() { return tools->LinkValue("Mode", targetPath, receiver.get(), changedSlot); }

private slots:
    void init()
    {
        values::Tree::Instance()->Clear();
        common = std::make_unique<GuiComponentCommon>();
        tools = std::make_unique<GuiComponentTools>(common.get(), component);
        receiver = std::make_unique<ValueReceiver>();
        target = tree.add<ValueSelection>(targetPath);
        target->AddItem("Normal", 0.0, 10);
        target->AddItem("Continuous", 1.0, 20);
        target->AddItem("Gated", 2.0, 30);
        target->Select(20);
        local = tree.add<ValueSelection>("/GUI/SomeComponent/Mode");
    }

    void cleanup()
    {
        tools.reset();
        receiver.reset();
        common.reset();
    }

    void linkingTakesItemsAndCurrentItemOver()
    {
        local->AddItems({"stale"});
        QCOMPARE(link(), local);
        QCOMPARE(itemNames(*local), QStringList({"Normal", "Continuous", "Gated"}));
        QCOMPARE(local->GetCurrentKey(), 20);
        QCOMPARE(local->GetCurrentValue(), 1.0);
        QVERIFY(receiver->changed.empty()); // the relay is made afterwards
    }

    void theItemsComeBeforeTheCurrentItem()
    {
        RecordingObserver observer;
        const Observation observation(*local, observer);
        link();
        QCOMPARE(observer.codes, (std::vector<TChangeCode>{ChangeItems, ChangeContent, ChangeExternal}));
    }

    void aTargetWithoutCurrentItemLeavesNone()
    {
        target->DeleteItem(20);
        local->AddItems({"stale"});
        local->SelectIndex(0);
        link();
        QCOMPARE(local->GetCurrentKey(), ValueSelection::NoKey);
        QCOMPARE(itemNames(*local), QStringList({"Normal", "Gated"}));
    }

    void theInterfaceFollowsTheTargetsCurrentItem()
    {
        link();
        target->Select(30);
        QCOMPARE(local->GetCurrentKey(), 30);
        QCOMPARE(receiver->texts, QStringList("Gated"));
    }

    void theInterfaceFollowsTheTargetsItems()
    {
        link();
        target->AddItem("Timed", 3.0, 40);
        QCOMPARE(local->GetItemIndex(40), 3);
        QCOMPARE(local->GetCurrentKey(), 20);
        target->DeleteItem(20); // the current one
        QCOMPARE(itemNames(*local), QStringList({"Normal", "Gated", "Timed"}));
        QCOMPARE(local->GetCurrentKey(), ValueSelection::NoKey);
    }

    void theInterfaceFollowsAnExchangeInOneTransaction()
    {
        link();
        target->StartTransaction(nullptr);
        target->DeleteItems();
        target->AddItem("One", 1.0, 1);
        target->AddItem("Two", 2.0, 2);
        target->Select(2);
        QCOMPARE(local->GetCurrentKey(), 20); // nothing has been said yet
        target->EndTransaction(ChangeItems);
        QCOMPARE(itemNames(*local), QStringList({"One", "Two"}));
        QCOMPARE(local->GetCurrentKey(), 2);
    }

    void aSetOfTheSameContentFromOutsideBringsTheInterfaceBack()
    {
        link();
        local->Select(10);
        QCOMPARE(target->GetCurrentKey(), 20);
        target->Select(20); // code 19 only
        QCOMPARE(local->GetCurrentKey(), 20);
    }

    void anAnnouncementOfTheContentBringsTheInterfaceBack()
    {
        link();
        local->Select(10);
        target->HasChanged(ChangeContent, nullptr);
        QCOMPARE(local->GetCurrentKey(), 20);
    }

    void stateAndLimitsDoNotMove()
    {
        link();
        local->Select(10);
        target->SetState(values::StateUnused, nullptr);
        target->HasChanged(ChangeLimits, nullptr);
        QCOMPARE(local->GetState(), values::StateOrdinary);
        QCOMPARE(local->GetCurrentKey(), 10);
    }

    void nothingMovesToTheTargetUntilItIsWrittenBack()
    {
        link();
        RecordingObserver observer;
        const Observation observation(*target, observer);
        local->Select(30);
        QVERIFY(observer.codes.empty());
        tools->WritebackValue("Mode");
        QCOMPARE(target->GetCurrentKey(), 30);
        QCOMPARE(observer.codes, (std::vector<TChangeCode>{ChangeContent, ChangeExternal}));
        QCOMPARE(receiver->texts, QStringList("Gated")); // from the operator's choice, not once more from the target
    }

    void writingBackGoesByKey()
    {
        link();
        local->DeleteItems();
        local->AddItem("Gated", 0.0, 10); // a text the target has under another key
        local->Select(10);
        tools->WritebackValue("Mode");
        QCOMPARE(target->GetCurrentKey(), 10);
        QCOMPARE(target->GetStringValue(), "Normal");
    }

    void writingBackAKeyTheTargetLacksChangesNothing()
    {
        link();
        local->AddItem("Unknown", 0.0, 77);
        local->Select(77);
        RecordingObserver observer;
        const Observation observation(*target, observer);
        tools->WritebackValue("Mode");
        QCOMPARE(target->GetCurrentKey(), 20);
        QVERIFY(observer.codes.empty());
        QCOMPARE(local->GetCurrentKey(), 77);
    }

    void writingBackWithoutACurrentItemChangesNothing()
    {
        link();
        local->DeleteItem(20);
        RecordingObserver observer;
        const Observation observation(*target, observer);
        tools->WritebackValue("Mode");
        QCOMPARE(target->GetCurrentKey(), 20);
        QVERIFY(observer.codes.empty());
    }

    void aCorrectionOfWhatWasWrittenBackIsFollowed()
    {
        link();
        RecordingObserver driver([this](Observable*, TChangeCode code) {
            if (code == ChangeContent && target->GetCurrentKey() == 30)
                target->Select(10);
        });
        const Observation observation(*target, driver);
        local->Select(30);
        tools->WritebackValue("Mode");
        QCOMPARE(target->GetCurrentKey(), 10);
        QCOMPARE(local->GetCurrentKey(), 10);
    }

    void writingBackWithoutALinkDoesNothing()
    {
        local->AddItem("Normal", 0.0, 10);
        local->Select(10);
        tools->WritebackValue("Mode");
        tools->WritebackValue("NeverHeardOf");
        QCOMPARE(target->GetCurrentKey(), 20);
    }

    void theInterfaceIsRelayedAndTheTargetIsNot()
    {
        link();
        local->Select(10);
        QCOMPARE(receiver->changed, std::vector<ValueBase*>{local});
        target->Select(30);
        QCOMPARE(receiver->changed, (std::vector<ValueBase*>{local, local}));
    }

    void aLinkNeedsNoReceiver()
    {
        QCOMPARE(tools->LinkValue("Mode", targetPath, nullptr, nullptr), local);
        target->Select(30);
        QCOMPARE(local->GetCurrentKey(), 30);
    }

    void nothingIsLinkedWithoutTargetOrInterface()
    {
        QVERIFY(tools->LinkValue("Mode", "/not/there", receiver.get(), changedSlot) == nullptr);
        QVERIFY(tools->LinkValue("NotThere", targetPath, receiver.get(), changedSlot) == nullptr);
        QCOMPARE(target->GetObserverCount(), std::size_t(0));
        QCOMPARE(local->GetObserverCount(), std::size_t(0));
    }

    void valuesOfDifferentKindsAreNotLinked()
    {
        tree.add<StringValue>("/GUI/SomeComponent/Text");
        QVERIFY(tools->LinkValue("Text", targetPath, receiver.get(), changedSlot) == nullptr);
        QCOMPARE(target->GetObserverCount(), std::size_t(0));
    }

    void aSecondLinkOfTheSameNameReplacesTheFirst()
    {
        auto* second = tree.add<ValueSelection>("/elsewhere/Mode");
        second->AddItems({"a", "b"});
        second->SelectIndex(1);
        link();
        QCOMPARE(tools->LinkValue("Mode", "/elsewhere/Mode", receiver.get(), changedSlot), local);
        QCOMPARE(itemNames(*local), QStringList({"a", "b"}));
        target->Select(30);
        QCOMPARE(local->GetStringValue(), "b");
        QCOMPARE(target->GetObserverCount(), std::size_t(0));
        receiver->changed.clear();
        second->SelectIndex(0);
        QCOMPARE(receiver->changed.size(), std::size_t(1)); // still one relay
        local->SelectIndex(1);
        tools->WritebackValue("Mode");
        QCOMPARE(second->GetCurrentKey(), 1);
        QCOMPARE(target->GetCurrentKey(), 30);
    }

    void linkingAgainLinksOnce()
    {
        link();
        link();
        QCOMPARE(target->GetObserverCount(), std::size_t(1));
        target->Select(30);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
    }

    void aFailedSecondLinkEndsTheFirst()
    {
        link();
        QVERIFY(tools->LinkValue("Mode", "/not/there", receiver.get(), changedSlot) == nullptr);
        target->Select(30);
        QCOMPARE(local->GetCurrentKey(), 20);
    }

    void twoToolsObjectsOfAComponentShareItsLinks()
    {
        GuiComponentTools others(common.get(), component);
        link();
        local->Select(30);
        others.WritebackValue("Mode");
        QCOMPARE(target->GetCurrentKey(), 30);
        others.LinkValue("Mode", targetPath, nullptr, nullptr); // takes the link over
        tools.reset();
        target->Select(10);
        QCOMPARE(local->GetCurrentKey(), 10);
    }

    void componentsDoNotShareTheirLinks()
    {
        GuiComponentTools foreign(common.get(), "/GUI/OtherComponent/");
        auto* foreignLocal = tree.add<ValueSelection>("/GUI/OtherComponent/Mode");
        link();
        QCOMPARE(foreign.LinkValue("Mode", targetPath, nullptr, nullptr), foreignLocal);
        target->Select(30);
        QCOMPARE(local->GetCurrentKey(), 30);
        QCOMPARE(foreignLocal->GetCurrentKey(), 30);
        foreignLocal->Select(10);
        tools->WritebackValue("Mode");
        QCOMPARE(target->GetCurrentKey(), 30);
    }

    void otherKindsMoveTheirContent()
    {
        auto* number = tree.add<DoubleValue>("/target/Number");
        auto* localNumber = tree.add<DoubleValue>("/GUI/SomeComponent/Number");
        number->SetValue(2.5, nullptr);
        QCOMPARE(tools->LinkValue("Number", "/target/Number", receiver.get(), changedSlot), localNumber);
        QCOMPARE(localNumber->GetValue(), 2.5);
        number->SetValue(3.5, nullptr);
        QCOMPARE(localNumber->GetValue(), 3.5);
        localNumber->SetValue(9.0, nullptr);
        QCOMPARE(number->GetValue(), 3.5);
        tools->WritebackValue("Number");
        QCOMPARE(number->GetValue(), 9.0);

        auto* text = tree.add<StringValue>("/target/Text");
        auto* localText = tree.add<StringValue>("/GUI/SomeComponent/Text");
        tools->LinkValue("Text", "/target/Text", nullptr, nullptr);
        text->SetValue("abc", nullptr);
        QCOMPARE(localText->GetValue(), "abc");
        auto* flag = tree.add<BoolValue>("/target/Flag");
        auto* localFlag = tree.add<BoolValue>("/GUI/SomeComponent/Flag");
        tools->LinkValue("Flag", "/target/Flag", nullptr, nullptr);
        flag->SetValue(true, nullptr);
        QVERIFY(localFlag->GetValue());
    }

    void aRefusedContentMovesNothing()
    {
        auto* number = tree.add<IntValue>("/target/Number");
        auto* localNumber = tree.add<IntValue>("/GUI/SomeComponent/Number");
        number->SetMinMax(0, 10, 1, nullptr);
        tools->LinkValue("Number", "/target/Number", nullptr, nullptr);
        localNumber->SetValue(11, nullptr);
        tools->WritebackValue("Number");
        QCOMPARE(number->GetValue(), 0);
        QCOMPARE(localNumber->GetValue(), 11);
    }

    void valuesLinkedToEachOtherComeToRest()
    {
        auto* first = tree.add<IntValue>("/GUI/SomeComponent/First");
        auto* second = tree.add<IntValue>("/GUI/SomeComponent/Second");
        tools->LinkValue("First", "/GUI/SomeComponent/Second", receiver.get(), changedSlot);
        tools->LinkValue("Second", "/GUI/SomeComponent/First", nullptr, nullptr);
        first->SetValue(4, nullptr);
        QCOMPARE(second->GetValue(), 4);
        second->SetValue(5, nullptr);
        QCOMPARE(first->GetValue(), 5);
        QCOMPARE(receiver->changed.size(), std::size_t(2));
    }

    void aValueMayBeItsOwnInterface()
    {
        QCOMPARE(tools->LinkValue("Mode", "/GUI/SomeComponent/Mode", receiver.get(), changedSlot), local);
        local->AddItems({"a", "b"});
        local->SelectIndex(1);
        tools->WritebackValue("Mode");
        QCOMPARE(itemNames(*local), QStringList({"a", "b"}));
        QCOMPARE(local->GetCurrentKey(), 1);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
    }

    void aLinkEndsWithTheTarget()
    {
        link();
        values::Tree::Instance()->DeleteValue(targetPath);
        tools->WritebackValue("Mode");
        QCOMPARE(local->GetCurrentKey(), 20); // it keeps what it had
        local->Select(10);
        QCOMPARE(receiver->changed.size(), std::size_t(1)); // and its relay
    }

    void aLinkEndsWithTheInterface()
    {
        link();
        values::Tree::Instance()->DeleteValue("/GUI/SomeComponent/Mode");
        QCOMPARE(target->GetObserverCount(), std::size_t(0));
        target->Select(30);
        tools->WritebackValue("Mode");
        QCOMPARE(target->GetCurrentKey(), 30);
    }

    void aNewInterfaceOfThatNameIsNotLinked()
    {
        link();
        values::Tree::Instance()->DeleteValue("/GUI/SomeComponent/Mode");
        auto* successor = tree.add<ValueSelection>("/GUI/SomeComponent/Mode");
        successor->AddItem("Gated", 0.0, 30);
        successor->Select(30);
        tools->WritebackValue("Mode");
        QCOMPARE(target->GetCurrentKey(), 20);
    }

    void aLinkEndsWithValuesThatAreDeletedOutright()
    {
        link();
        delete local;
        target->Select(30);
        tools->WritebackValue("Mode");
        local = tree.add<ValueSelection>("/GUI/SomeComponent/Mode");
        link();
        delete target;
        tools->WritebackValue("Mode");
        QCOMPARE(local->GetCurrentKey(), 30);
    }

    void aLinkEndsWithItsTools()
    {
        link();
        tools.reset();
        QCOMPARE(target->GetObserverCount(), std::size_t(0));
        target->Select(30);
        QCOMPARE(local->GetCurrentKey(), 20);
    }

    void aLinkEndsWithTheSharedObject()
    {
        link();
        common.reset();
        QCOMPARE(target->GetObserverCount(), std::size_t(0));
        tools->WritebackValue("Mode");
        QVERIFY(link() == nullptr);
    }

    void theTargetMayGoWhileItIsFollowed()
    {
        link();
        receiver->onChanged = [] { values::Tree::Instance()->DeleteValue(targetPath); };
        target->Select(30);
        QCOMPARE(local->GetCurrentKey(), 30);
        tools->WritebackValue("Mode");
    }

    void theInterfaceMayGoWhileItFollows()
    {
        link();
        receiver->onChanged = [] { values::Tree::Instance()->DeleteValue("/GUI/SomeComponent/Mode"); };
        target->Select(30);
        QVERIFY(values::Tree::Instance()->FindValue("/GUI/SomeComponent/Mode") == nullptr);
        QCOMPARE(target->GetObserverCount(), std::size_t(0));
    }

    void theInterfaceMayGoWhileItIsLinked()
    {
        RecordingObserver observer([](Observable*, TChangeCode code) {
            if (code == ChangeItems)
                values::Tree::Instance()->DeleteValue("/GUI/SomeComponent/Mode");
        });
        const Observation observation(*local, observer);
        QVERIFY(link() == nullptr);
        QCOMPARE(target->GetObserverCount(), std::size_t(0));
    }

    void theToolsMayGoWhileTheInterfaceIsLinked()
    {
        RecordingObserver observer([this](Observable*, TChangeCode code) {
            if (code == ChangeItems)
                tools.reset();
        });
        const Observation observation(*local, observer);
        QVERIFY(link() == nullptr);
        QVERIFY(tools == nullptr);
        QCOMPARE(target->GetObserverCount(), std::size_t(0));
    }

    void toolsAndSharedObjectMayGoWhileTheInterfaceFollows()
    {
        link();
        receiver->onChanged = [this] {
            tools.reset();
            common.reset();
        };
        target->Select(30);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
        QCOMPARE(target->GetObserverCount(), std::size_t(0));
    }
};

DFL_TEST_MAIN_WITH(TestLinks, QCoreApplication)
#include "tst_links.moc"
