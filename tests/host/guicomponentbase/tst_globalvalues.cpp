#include "guicomponentbase/guicomponentcommon.h"
#include "guicomponentbase/guicomponenttools.h"
#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valuereceiver.h"
#include "ztbase/observation.h"

#include <memory>

using namespace VelmarGui;
using testsupport::FreshTree;
using testsupport::RecordingObserver;
using values::BoolValue;
using values::ValueBase;

namespace {

const char* const changedSlot = SLOT(Changed(values::ValueBase*));
const QString component = QStringLiteral("/GUI/SomeComponent/");

} // namespace

class TestGlobalValues : public QObject
{
    Q_OBJECT

    FreshTree tree;
    std::unique_ptr<GuiComponentCommon> common;
    std::unique_ptr<GuiComponentTools> tools;
    std::unique_ptr<GuiComponentTools> others; // of another component
    ValueReceiver* receiver = nullptr;
    BoolValue* value = nullptr;

private slots:
    void init()
    {
        values::Tree::Instance()->Clear();
        common = std::make_unique<GuiComponentCommon>();
        tools = std::make_unique<GuiComponentTools>(common.get(), component);
        others = std::make_unique<GuiComponentTools>(common.get(), "/GUI/OtherComponent/");
        receiver = new ValueReceiver;
        value = tree.add<BoolValue>("/GUI/SomeComponent/Trigger");
    }

    void cleanup()
    {
        tools.reset();
        others.reset();
        common.reset();
        delete receiver;
    }

    void aPublishedValueIsFoundByAllComponents()
    {
        tools->AddGlobalValue(value, "Trigger", nullptr, nullptr);
        QCOMPARE(tools->GetGlobalValue("Trigger"), value);
        QCOMPARE(others->GetGlobalValue("Trigger"), value);
        QCOMPARE(value->GetObserverCount(), std::size_t(0));
    }

    void publishingRelaysToTheReceiver()
    {
        tools->AddGlobalValue(value, "Trigger", receiver, changedSlot);
        QVERIFY(receiver->changed.empty());
        value->SetValue(true, nullptr);
        QCOMPARE(receiver->changed, std::vector<ValueBase*>{value});
    }

    void publishingAgainAddsTheRelayOnly()
    {
        tools->AddGlobalValue(value, "Trigger", nullptr, nullptr);
        tools->AddGlobalValue(value, "Trigger", receiver, changedSlot);
        tools->AddGlobalValue(value, "Trigger", receiver, changedSlot);
        QCOMPARE(others->GetGlobalValue("Trigger"), value);
        value->SetValue(true, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
    }

    void anotherValueTakesTheNameOver()
    {
        auto* successor = tree.add<BoolValue>("/GUI/OtherComponent/Trigger");
        tools->AddGlobalValue(value, "Trigger", nullptr, nullptr);
        others->AddGlobalValue(successor, "Trigger", nullptr, nullptr);
        QCOMPARE(tools->GetGlobalValue("Trigger"), successor);
    }

    void aValueMayHaveSeveralNames()
    {
        tools->AddGlobalValue(value, "One", nullptr, nullptr);
        tools->AddGlobalValue(value, "Two", nullptr, nullptr);
        QCOMPARE(tools->GetGlobalValue("One"), value);
        QCOMPARE(tools->GetGlobalValue("Two"), value);
    }

    void aValueOutsideTheTreeCanBePublished()
    {
        BoolValue outside;
        tools->AddGlobalValue(&outside, "Outside", nullptr, nullptr);
        QCOMPARE(others->GetGlobalValue("Outside"), &outside);
    }

    void nullIsNotPublished()
    {
        tools->AddGlobalValue(value, "Trigger", nullptr, nullptr);
        tools->AddGlobalValue(nullptr, "Trigger", receiver, changedSlot);
        QCOMPARE(tools->GetGlobalValue("Trigger"), value);
    }

    void anUnpublishedNameIsLookedUpInTheGlobalFolder()
    {
        auto* ready = tree.add<BoolValue>("/GLOBAL/DfDeviceReady");
        QCOMPARE(tools->GetGlobalValue("DfDeviceReady"), ready);
        QCOMPARE(tools->ConnectGlobalValue("DfDeviceReady", receiver, changedSlot), ready);
        ready->SetValue(true, nullptr);
        QCOMPARE(receiver->changed, std::vector<ValueBase*>{ready});
    }

    void aPublishedValueStandsBeforeTheGlobalFolder()
    {
        auto* inFolder = tree.add<BoolValue>("/GLOBAL/Trigger");
        QCOMPARE(tools->GetGlobalValue("Trigger"), inFolder);
        tools->AddGlobalValue(value, "Trigger", nullptr, nullptr);
        QCOMPARE(tools->GetGlobalValue("Trigger"), value);
        values::Tree::Instance()->DeleteValue("/GUI/SomeComponent/Trigger");
        QCOMPARE(tools->GetGlobalValue("Trigger"), inFolder);
    }

    void connectingFindsAndRelays()
    {
        tools->AddGlobalValue(value, "Trigger", nullptr, nullptr);
        QCOMPARE(others->ConnectGlobalValue("Trigger", receiver, changedSlot), value);
        QVERIFY(receiver->changed.empty());
        value->SetValue(true, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
    }

    void connectingNeedsNoReceiver()
    {
        tools->AddGlobalValue(value, "Trigger", nullptr, nullptr);
        QCOMPARE(others->ConnectGlobalValue("Trigger", nullptr, nullptr), value);
        QCOMPARE(value->GetObserverCount(), std::size_t(0));
    }

    void anUnknownNameIsNullAndNotRemembered()
    {
        QVERIFY(tools->GetGlobalValue("Trigger") == nullptr);
        QVERIFY(tools->ConnectGlobalValue("Trigger", receiver, changedSlot) == nullptr);
        tools->AddGlobalValue(value, "Trigger", nullptr, nullptr);
        value->SetValue(true, nullptr);
        QVERIFY(receiver->changed.empty()); // asking before the value came counts for nothing
    }

    void namesAreCaseSensitive()
    {
        tools->AddGlobalValue(value, "Trigger", nullptr, nullptr);
        QVERIFY(tools->GetGlobalValue("trigger") == nullptr);
    }

    void aNameEndsWithItsValue()
    {
        tools->AddGlobalValue(value, "Trigger", nullptr, nullptr);
        values::Tree::Instance()->DeleteValue("/GUI/SomeComponent/Trigger");
        QVERIFY(tools->GetGlobalValue("Trigger") == nullptr);
        auto* successor = tree.add<BoolValue>("/GUI/SomeComponent/Trigger");
        QVERIFY(tools->GetGlobalValue("Trigger") == nullptr); // the name went with the old one
        tools->AddGlobalValue(successor, "Trigger", nullptr, nullptr);
        QCOMPARE(tools->GetGlobalValue("Trigger"), successor);
    }

    void aNameEndsWhenItsValueReportsItsRemoval()
    {
        tools->AddGlobalValue(value, "Trigger", nullptr, nullptr);
        const ValueBase* found = value;
        RecordingObserver observer([&](Observable*, TChangeCode) { found = tools->GetGlobalValue("Trigger"); });
        const Observation observation(*value, observer);
        values::Tree::Instance()->DeleteValue("/GUI/SomeComponent/Trigger");
        QVERIFY(found == nullptr);
    }

    void aNameEndsWithAValueThatIsDeletedOutright()
    {
        auto outside = std::make_unique<BoolValue>();
        tools->AddGlobalValue(outside.get(), "Outside", nullptr, nullptr);
        outside.reset();
        QVERIFY(tools->GetGlobalValue("Outside") == nullptr);
    }

    void aNameOutlivesTheToolsThatPublishedIt()
    {
        tools->AddGlobalValue(value, "Trigger", nullptr, nullptr);
        tools.reset();
        QCOMPARE(others->GetGlobalValue("Trigger"), value);
    }

    void withoutTheSharedObjectOnlyTheGlobalFolderIsLeft()
    {
        auto* inFolder = tree.add<BoolValue>("/GLOBAL/Other");
        tools->AddGlobalValue(value, "Trigger", nullptr, nullptr);
        common.reset();
        QVERIFY(tools->GetGlobalValue("Trigger") == nullptr);
        tools->AddGlobalValue(value, "Trigger", receiver, changedSlot);
        QVERIFY(tools->GetGlobalValue("Trigger") == nullptr);
        value->SetValue(true, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1)); // relays need no shared object
        QCOMPARE(tools->GetGlobalValue("Other"), inFolder);
    }
};

DFL_TEST_MAIN_WITH(TestGlobalValues, QCoreApplication)
#include "tst_globalvalues.moc"
