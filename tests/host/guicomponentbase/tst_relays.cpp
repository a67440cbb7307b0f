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
#include <optional>

using namespace VelmarGui;
using testsupport::FreshTree;
using testsupport::RecordingObserver;
using values::IntValue;
using values::ValueBase;

namespace {

const char* const changedSlot = SLOT(Changed(values::ValueBase*));
const char* const otherSlot = SLOT(OtherChanged(values::ValueBase*));
const QString component = QStringLiteral("/GUI/SomeComponent/");

} // namespace

class TestRelays : public QObject
{
    Q_OBJECT

    FreshTree tree;
    std::optional<GuiComponentCommon> common;
    std::unique_ptr<GuiComponentTools> tools;
    std::unique_ptr<ValueReceiver> receiver;
    IntValue* value = nullptr;

private slots:
    void init()
    {
        values::Tree::Instance()->Clear();
        common.emplace();
        tools = std::make_unique<GuiComponentTools>(&*common, component);
        receiver = std::make_unique<ValueReceiver>();
        value = tree.add<IntValue>("/GUI/SomeComponent/Span");
    }

    void cleanup()
    {
        tools.reset();
        receiver.reset();
        common.reset();
    }

    void aRelayCallsItsSlotWithTheValueThatChanged()
    {
        tools->AddValue(value, receiver.get(), changedSlot);
        value->SetValue(5, nullptr);
        QCOMPARE(receiver->changed, std::vector<ValueBase*>{value});
        QCOMPARE(receiver->texts, QStringList("5"));
    }

    void makingARelayCallsNothing()
    {
        value->SetValue(5, nullptr);
        tools->AddValue(value, receiver.get(), changedSlot);
        QVERIFY(receiver->changed.empty());
    }

    void onlyContentIsRelayed()
    {
        tools->AddValue(value, receiver.get(), changedSlot);
        for (TChangeCode code : {ChangeState, ChangeLimits, ChangeItems, ChangeExternal})
            value->HasChanged(code, nullptr);
        value->SetState(values::StateUnused, nullptr);
        value->SetMinMax(-10, 10, 2, nullptr);
        value->SetValue(0, nullptr); // as before: code 19 only
        QVERIFY(receiver->changed.empty());
        value->HasChanged(ChangeContent, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
    }

    void itemsOfASelectionAreNotRelayed()
    {
        auto* selection = tree.add<values::ValueSelection>("/GUI/SomeComponent/Mode");
        tools->AddValue(selection, receiver.get(), changedSlot);
        selection->AddItems({"Normal", "Gated"});
        QVERIFY(receiver->changed.empty());
        selection->Select(1);
        QCOMPARE(receiver->texts, QStringList("Gated"));
    }

    void theCausingObserverOfAChangeDoesNotSilenceTheRelay()
    {
        RecordingObserver writer;
        const Observation observation(*value, writer);
        tools->AddValue(value, receiver.get(), changedSlot);
        value->SetValue(7, &writer);
        QVERIFY(writer.codes.empty());
        QCOMPARE(receiver->changed.size(), std::size_t(1));
    }

    void theSameRelayIsMadeOnceHoweverOftenItIsAskedFor()
    {
        for (int i = 0; i < 3; ++i)
            tools->AddValue(value, receiver.get(), changedSlot);
        tools->AddGlobalValue(value, "Span", receiver.get(), changedSlot);
        tools->ConnectGlobalValue("Span", receiver.get(), changedSlot);
        value->SetValue(1, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
        QCOMPARE(value->GetObserverCount(), std::size_t(1));
    }

    void theSpellingOfTheSlotMakesNoDifference()
    {
        tools->AddValue(value, receiver.get(), changedSlot);
        tools->AddValue(value, receiver.get(), "1Changed( values::ValueBase * )");
        value->SetValue(1, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
    }

    void theSlotTextIsCopied()
    {
        QByteArray text(changedSlot);
        tools->AddValue(value, receiver.get(), text.constData());
        text.fill('x');
        tools->AddValue(value, receiver.get(), changedSlot);
        value->SetValue(1, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
    }

    void anotherSlotReceiverOrValueIsAnotherRelay()
    {
        ValueReceiver second;
        auto* other = tree.add<IntValue>("/GUI/SomeComponent/Offset");
        tools->AddValue(value, receiver.get(), changedSlot);
        tools->AddValue(value, receiver.get(), otherSlot);
        tools->AddValue(value, &second, changedSlot);
        tools->AddValue(other, receiver.get(), changedSlot);
        value->SetValue(1, nullptr);
        QCOMPARE(receiver->changed, std::vector<ValueBase*>{value});
        QCOMPARE(receiver->otherChanged, std::vector<ValueBase*>{value});
        QCOMPARE(second.changed, std::vector<ValueBase*>{value});
        other->SetValue(1, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(2));
        QCOMPARE(receiver->changed.back(), other);
    }

    void twoToolsObjectsOfAComponentRelayOnTheirOwn()
    {
        GuiComponentTools others(&*common, component);
        tools->AddValue(value, receiver.get(), changedSlot);
        others.AddValue(value, receiver.get(), changedSlot);
        value->SetValue(1, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(2));
        tools.reset();
        value->SetValue(2, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(3));
    }

    void aValueOutsideTheTreeIsRelayedAndNotOwned()
    {
        IntValue outside;
        tools->AddValue(&outside, receiver.get(), changedSlot);
        outside.SetValue(3, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
        tools.reset();
        outside.SetValue(4, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
        QCOMPARE(outside.GetObserverCount(), std::size_t(0));
    }

    void nothingIsRelayedWithoutValueReceiverOrSlot()
    {
        tools->AddValue(nullptr, receiver.get(), changedSlot);
        tools->AddValue(value, nullptr, changedSlot);
        tools->AddValue(value, receiver.get(), nullptr);
        tools->AddValue(value, nullptr, nullptr);
        value->SetValue(1, nullptr);
        QVERIFY(receiver->changed.empty());
        QCOMPARE(value->GetObserverCount(), std::size_t(0));
    }

    void aSlotTheReceiverDoesNotHaveIsWarnedOf_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::addColumn<QRegularExpression>("warning");
        QTest::newRow("missing") << QByteArray(SLOT(Missing(values::ValueBase*)))
                                 << QRegularExpression("No such slot ValueReceiver::Missing\\(values::ValueBase\\*\\)");
        QTest::newRow("other argument") << QByteArray(SLOT(Changed(int)))
                                        << QRegularExpression("Incompatible|No such slot");
        QTest::newRow("not written with SLOT()")
            << QByteArray("Changed(values::ValueBase*)") << QRegularExpression("Use the SLOT or SIGNAL macro");
        QTest::newRow("empty") << QByteArray("") << QRegularExpression("Use the SLOT or SIGNAL macro");
    }

    void aSlotTheReceiverDoesNotHaveIsWarnedOf()
    {
        QFETCH(QByteArray, slot);
        QFETCH(QRegularExpression, warning);
        QTest::ignoreMessage(QtWarningMsg, warning);
        tools->AddValue(value, receiver.get(), slot.constData());
        QCOMPARE(value->GetObserverCount(), std::size_t(0));
        value->SetValue(1, nullptr);
        QVERIFY(receiver->changed.empty());
    }

    void aRelayEndsWithTheReceiver()
    {
        tools->AddValue(value, receiver.get(), changedSlot);
        receiver.reset();
        QCOMPARE(value->GetObserverCount(), std::size_t(0));
        value->SetValue(1, nullptr);
    }

    void aRelayEndsWithTheTools()
    {
        tools->AddValue(value, receiver.get(), changedSlot);
        tools.reset();
        QCOMPARE(value->GetObserverCount(), std::size_t(0));
        value->SetValue(1, nullptr);
        QVERIFY(receiver->changed.empty());
    }

    void aRelayEndsWithTheRemovalOfTheValue()
    {
        tools->AddValue(value, receiver.get(), changedSlot);
        QVERIFY(values::Tree::Instance()->DeleteValue("/GUI/SomeComponent/Span"));
        QVERIFY(receiver->changed.empty());
        receiver.reset();
        tools.reset();
    }

    void aRelayEndsWhenItsValueReportsItsRemoval()
    {
        tools->AddValue(value, receiver.get(), changedSlot);
        value->SetState(values::StateRemoved, nullptr);
        QCOMPARE(value->GetObserverCount(), std::size_t(0));
        value->SetValue(1, nullptr);
        QVERIFY(receiver->changed.empty());
    }

    void aRelayEndsWithAValueThatIsDeletedOutright()
    {
        auto outside = std::make_unique<IntValue>();
        tools->AddValue(outside.get(), receiver.get(), changedSlot);
        outside.reset();
        tools->AddValue(value, receiver.get(), changedSlot);
        value->SetValue(1, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
    }

    void aNewValueAtTheAddressOfADeletedOneIsRelayed()
    {
        alignas(IntValue) unsigned char room[sizeof(IntValue)];
        auto* first = new (room) IntValue;
        tools->AddValue(first, receiver.get(), changedSlot);
        first->~IntValue();
        auto* second = new (room) IntValue;
        tools->AddValue(second, receiver.get(), changedSlot);
        second->SetValue(1, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
        second->~IntValue();
    }

    void aRelayOutlivesTheSharedObject()
    {
        tools->AddValue(value, receiver.get(), changedSlot);
        common.reset();
        value->SetValue(1, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
        tools->AddValue(value, receiver.get(), otherSlot);
        value->SetValue(2, nullptr);
        QCOMPARE(receiver->otherChanged.size(), std::size_t(1));
    }

    void aSlotMayDeleteTheValueFromTheTree()
    {
        RecordingObserver next;
        tools->AddValue(value, receiver.get(), changedSlot);
        const Observation observation(*value, next);
        receiver->onChanged = [] { values::Tree::Instance()->DeleteValue("/GUI/SomeComponent/Span"); };
        value->SetValue(1, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
        QVERIFY(values::Tree::Instance()->FindValue("/GUI/SomeComponent/Span") == nullptr);
        QCOMPARE(next.codes, std::vector<TChangeCode>{ChangeState});
    }

    void aSlotMayDeleteTheValueOutright()
    {
        auto outside = std::make_unique<IntValue>();
        tools->AddValue(outside.get(), receiver.get(), changedSlot);
        receiver->onChanged = [&outside] { outside.reset(); };
        outside->HasChanged(ChangeContent, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
        QVERIFY(outside == nullptr);
    }

    void aSlotMayDeleteTheReceiver()
    {
        tools->AddValue(value, receiver.get(), changedSlot);
        receiver->onChanged = [this] { receiver.reset(); };
        value->SetValue(1, nullptr);
        QVERIFY(receiver == nullptr);
        QCOMPARE(value->GetObserverCount(), std::size_t(0));
    }

    void aSlotMayDeleteTheTools()
    {
        ValueReceiver second;
        tools->AddValue(value, receiver.get(), changedSlot);
        tools->AddValue(value, &second, changedSlot);
        receiver->onChanged = [this] { tools.reset(); };
        value->SetValue(1, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
        QVERIFY(second.changed.empty()); // its relay ended before its turn
        QCOMPARE(value->GetObserverCount(), std::size_t(0));
    }

    void aSlotMayDeleteAllOfThem()
    {
        tools->AddValue(value, receiver.get(), changedSlot);
        receiver->onChanged = [this] {
            values::Tree::Instance()->DeleteValue("/GUI/SomeComponent/Span");
            tools.reset();
            common.reset();
            receiver.reset();
        };
        value->SetValue(1, nullptr);
        QVERIFY(receiver == nullptr);
    }

    void aSlotMayWriteItsValueAgain()
    {
        tools->AddValue(value, receiver.get(), changedSlot);
        receiver->onChanged = [this] {
            if (value->GetValue() < 3)
                value->SetValue(value->GetValue() + 1, nullptr);
        };
        value->SetValue(1, nullptr);
        QCOMPARE(receiver->texts, QStringList({"1", "2", "3"}));
    }

    void aSlotMayMakeFurtherRelays()
    {
        tools->AddValue(value, receiver.get(), changedSlot);
        receiver->onChanged = [this] { tools->AddValue(value, receiver.get(), otherSlot); };
        value->SetValue(1, nullptr);
        QVERIFY(receiver->otherChanged.empty()); // from the next change on
        value->SetValue(2, nullptr);
        QCOMPARE(receiver->otherChanged.size(), std::size_t(1));
    }

    void toolsWorkWithoutASharedObject()
    {
        GuiComponentTools alone(nullptr, component);
        alone.AddValue(value, receiver.get(), changedSlot);
        value->SetValue(1, nullptr);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
    }
};

DFL_TEST_MAIN_WITH(TestRelays, QCoreApplication)
#include "tst_relays.moc"
