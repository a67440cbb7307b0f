#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "support/traces.h"
#include "valueframework/valueclasses/valueobservermacros.h"

#include <type_traits>

using testsupport::FreshTree;
using testsupport::RecordingObserver;
using testsupport::Traces;
using namespace values;

using Codes = std::vector<TChangeCode>;

namespace {

const QString leakText =
    QStringLiteral("!!!!!!!MEMORY LEAK! The value with the path '%1' could not be created!!! A value of "
                   "this name already exists for a different type!!!!!!!!");

/// Runs a check for each of the five kinds.
template <template <typename> class Check>
void forEachKind()
{
    Check<BoolValue>::run();
    Check<IntValue>::run();
    Check<DoubleValue>::run();
    Check<StringValue>::run();
    Check<ValueSelection>::run();
}

/// A value of a kind that is not T.
template <typename T>
using OtherKind = std::conditional_t<std::is_same_v<T, IntValue>, BoolValue, IntValue>;

template <typename T>
struct LinksToItsOwnKindOnly
{
    static void run()
    {
        FreshTree fresh;
        T* value = fresh.template add<T>("A/V");
        fresh.template add<OtherKind<T>>("A/Other");
        RecordingObserver owner;
        ValuePtr<T> plain;
        ValueObservingPtr<T> observing(&owner);
        for (ValuePtr<T>* pointer : {&plain, static_cast<ValuePtr<T>*>(&observing)}) {
            QVERIFY(!*pointer);
            QVERIFY(LinkByPath(*pointer, "A/V"));
            QCOMPARE(pointer->get(), value);
            QVERIFY(!LinkByPath(*pointer, "A/Other"));
            QVERIFY(pointer->get() == nullptr);
            LinkByPath(*pointer, "A/V");
            QVERIFY(!LinkByPath(*pointer, "A/Missing"));
            QVERIFY(pointer->get() == nullptr);
        }
        QCOMPARE(value->GetObserverCount(), std::size_t(0));
    }
};

template <typename T>
struct IsCreatedOrLinked
{
    static void run()
    {
        FreshTree fresh;
        T* created = CreateOrLink<T>("Root/Config/V");
        QCOMPARE(Tree::Instance()->FindValue("Root/Config/V"), static_cast<ValueBase*>(created));
        QCOMPARE(created->GetName(), QString("V"));
        QCOMPARE(CreateOrLink<T>("Root/Config/V"), created);
        QCOMPARE(created->GetObserverCount(), std::size_t(0));

        ValuePtr<T> pointer;
        QVERIFY(!LinkOrCreate(pointer, "Root/Config/V"));
        QCOMPARE(pointer.get(), created);
        QVERIFY(LinkOrCreate(pointer, "Root/Config/W"));
        QCOMPARE(Tree::Instance()->FindValue("Root/Config/W"), static_cast<ValueBase*>(pointer.get()));
    }
};

template <typename T>
struct BecomesNullWhenTheValueGoes
{
    static void run()
    {
        FreshTree fresh;
        T* value = fresh.template add<T>("A/V");
        ValuePtr<T> pointer;
        RecordingObserver owner;
        ValueObservingPtr<T> observing(&owner);
        pointer.Assign(value);
        observing.Assign(value);
        Tree::Instance()->DeleteValue("A/V");
        QVERIFY(!pointer);
        QVERIFY(!observing);
        pointer.Release();
        observing.Release();
        QCOMPARE(owner.codes, Codes{ChangeState});
    }
};

} // namespace

class TestValueObserverMacros : public QObject
{
    Q_OBJECT

private slots:
    void linkingFindsItsOwnKindOnly() { forEachKind<LinksToItsOwnKindOnly>(); }
    void createOrLinkAndLinkOrCreateUseAnExistingValue() { forEachKind<IsCreatedOrLinked>(); }
    void everyPointerBecomesNullWhenItsValueGoes() { forEachKind<BecomesNullWhenTheValueGoes>(); }

    void pointersAreNotCopied()
    {
        static_assert(!std::is_copy_constructible_v<ValuePtr<BoolValue>>);
        static_assert(!std::is_copy_assignable_v<ValuePtr<BoolValue>>);
        static_assert(!std::is_copy_constructible_v<ValueObservingPtr<BoolValue>>);
        static_assert(!std::is_convertible_v<ValuePtr<BoolValue>, bool>);
        static_assert(std::is_base_of_v<IObserver, ValuePtr<BoolValue>>);
        static_assert(std::is_base_of_v<ValuePtr<BoolValue>, ValueObservingPtr<BoolValue>>);
    }

    void aBoundPointerIsRegisteredAndItsDestructorUnregistersIt()
    {
        FreshTree fresh;
        auto* value = fresh.add<BoolValue>("A/V");
        RecordingObserver owner;
        {
            ValuePtr<BoolValue> pointer;
            pointer.Assign(value);
            QVERIFY(value->IsObservedBy(&pointer));
            ValueObservingPtr<BoolValue> observing(&owner);
            observing.Assign(value);
            QVERIFY(value->IsObservedBy(&observing));
            QVERIFY(value->IsObservedBy(&owner));
            QCOMPARE(value->GetObserverCount(), std::size_t(3));
        }
        QCOMPARE(value->GetObserverCount(), std::size_t(0));
        QCOMPARE(Tree::Instance()->FindValue("A/V"), static_cast<ValueBase*>(value));
    }

    void assigningTheHeldValueRegistersNothingTwice()
    {
        FreshTree fresh;
        auto* value = fresh.add<BoolValue>("A/V");
        RecordingObserver owner;
        ValueObservingPtr<BoolValue> observing(&owner);
        observing.Assign(value);
        value->RemoveObserver(&owner); // would be registered anew if assigning did anything
        observing.Assign(value);
        QCOMPARE(value->GetObserverCount(), std::size_t(1));
        ValuePtr<BoolValue> plain;
        plain.Assign(nullptr);
        QVERIFY(!plain);
    }

    void assigningAnotherValueLeavesTheOldOne()
    {
        FreshTree fresh;
        auto* first = fresh.add<BoolValue>("A/1");
        auto* second = fresh.add<BoolValue>("A/2");
        RecordingObserver owner;
        ValueObservingPtr<BoolValue> observing(&owner);
        observing.Assign(first);
        observing.Assign(second);
        QCOMPARE(first->GetObserverCount(), std::size_t(0));
        QCOMPARE(second->GetObserverCount(), std::size_t(2));
        observing.Assign(nullptr);
        QCOMPARE(second->GetObserverCount(), std::size_t(0));
    }

    void theOwnerHearsOfChangesAndPrecedesThePointer()
    {
        FreshTree fresh;
        auto* value = fresh.add<BoolValue>("A/V");
        BoolValue* seenWhenRemoved = nullptr;
        RecordingObserver owner;
        ValueObservingPtr<BoolValue> observing(&owner);
        RecordingObserver looking([&](Observable*, TChangeCode code) {
            if (code == ChangeState)
                seenWhenRemoved = observing.get();
        });
        ValueObservingPtr<BoolValue> lookedAt(&looking);
        lookedAt.Assign(value);
        observing.Assign(value);
        value->SetValue(true, nullptr);
        QCOMPARE(owner.codes, (Codes{ChangeContent, ChangeExternal}));
        // "looking" stands first of all: the pointer bound after it still holds the value.
        Tree::Instance()->DeleteValue("A/V");
        QCOMPARE(seenWhenRemoved, value);
    }

    void otherCodesAndStatesDoNotUnbind()
    {
        FreshTree fresh;
        auto* value = fresh.add<BoolValue>("A/V");
        RecordingObserver owner;
        ValuePtr<BoolValue> plain;
        ValueObservingPtr<BoolValue> observing(&owner);
        plain.Assign(value);
        observing.Assign(value);
        value->SetState(StateUnused, nullptr);
        value->SetState(StateOrdinary, nullptr);
        for (const TChangeCode code : {ChangeContent, ChangeLimits, ChangeItems, ChangeExternal})
            value->HasChanged(code, nullptr);
        QCOMPARE(plain.get(), value);
        QCOMPARE(observing.get(), value);
    }

    void stateRemovedUnbindsOnlyWithCode2()
    {
        FreshTree fresh;
        auto* value = fresh.add<BoolValue>("A/V");
        ValuePtr<BoolValue> plain;
        plain.Assign(value);
        value->StartTransaction(nullptr);
        value->SetState(StateRemoved, nullptr);
        value->EndTransaction(ChangeContent);
        QCOMPARE(plain.get(), value);
        value->HasChanged(ChangeState, nullptr);
        QVERIFY(!plain);
        QCOMPARE(value->GetObserverCount(), std::size_t(0));
    }

    void releasingDeletesTheValueFromTheTree()
    {
        FreshTree fresh;
        auto* value = fresh.add<BoolValue>("A/V");
        RecordingObserver owner;
        ValuePtr<BoolValue> other;
        other.Assign(value);
        ValueObservingPtr<BoolValue> observing(&owner);
        observing.Assign(value);
        observing.Release();
        QVERIFY(!observing);
        QVERIFY(!other);
        QVERIFY(Tree::Instance()->FindValue("A/V") == nullptr);
        QVERIFY2(owner.codes.empty(), "who releases a value is not told of its removal");
        ValuePtr<BoolValue> plain;
        plain.Assign(fresh.add<BoolValue>("A/W"));
        plain.Release();
        QVERIFY(Tree::Instance()->FindValue("A/W") == nullptr);
    }

    void aPathWithoutSeparatorIsANameAtTheTop()
    {
        FreshTree fresh;
        BoolValue* value = CreateOrLink<BoolValue>("TopLevel");
        QCOMPARE(value->GetPathName(), QString("/TopLevel"));
        ValuePtr<BoolValue> pointer;
        QVERIFY(LinkOrCreate(pointer, "SecondTop"));
        QCOMPARE(pointer->GetPathName(), QString("/SecondTop"));
    }

    void aPathUnderAnEmptyPrefixSplitsAtItsLastSeparator()
    {
        const detail::SplitPath split(QString() + "Config/DFSpan");
        QCOMPARE(split.name, QString("DFSpan"));
        QCOMPARE(split.parent, QString("Config/"));
        QCOMPARE(detail::SplitPath("DFSpan").parent, QString());
        QCOMPARE(detail::SplitPath("A/B/").name, QString());
    }

    void createOrLinkRegistersTheObserverItIsGiven()
    {
        RecordingObserver observer;
        FreshTree fresh;
        IntValue* value = CreateOrLink<IntValue>("A/V", &observer);
        QVERIFY(value->IsObservedBy(&observer));
        QVERIFY2(observer.codes.empty(), "naming and inserting a new value is no change of it");
    }

    void createOrLinkOverAnotherKindTracesTheLeakAndUsesTheValueAllTheSame()
    {
        FreshTree fresh;
        auto* other = fresh.add<IntValue>("Root/Config/V");
        Traces traces;
        const std::unique_ptr<BoolValue> value(CreateOrLink<BoolValue>("Root/Config/V"));
        QVERIFY(value);
        QVERIFY(!value->IsInTree());
        QCOMPARE(value->GetName(), QString("V"));
        QCOMPARE(Tree::Instance()->FindValue("Root/Config/V"), static_cast<ValueBase*>(other));
        QCOMPARE(traces.records.size(), std::size_t(1));
        QCOMPARE(traces.records[0].text, leakText.arg("Root/Config/V"));
        QCOMPARE(traces.records[0].sourceFile, QString("valueframework/valueclasses/valueobservermacros"));
        QCOMPARE(traces.records[0].line, static_cast<unsigned short>(299));
    }

    void theLeakIsTracedOnlyWhenComponentTracesAreOn()
    {
        FreshTree fresh;
        fresh.add<IntValue>("A/V");
        Traces traces(~ErrorHandler::ComponentTraces);
        const std::unique_ptr<BoolValue> value(CreateOrLink<BoolValue>("A/V"));
        QVERIFY(value);
        QVERIFY(traces.records.empty());
    }

    void linkOrCreateOverAnotherKindBindsAnUnattachedValueWithoutATrace()
    {
        FreshTree fresh;
        fresh.add<IntValue>("A/V");
        Traces traces;
        RecordingObserver owner;
        ValueObservingPtr<BoolValue> pointer(&owner);
        QVERIFY(LinkOrCreate(pointer, "A/V"));
        const std::unique_ptr<BoolValue> unattached(pointer.get());
        QVERIFY(unattached);
        QVERIFY(!unattached->IsInTree());
        QVERIFY(unattached->IsObservedBy(&pointer));
        QVERIFY(unattached->IsObservedBy(&owner));
        QVERIFY(traces.records.empty());
        pointer.Assign(nullptr);
    }

    void aValueWhoseInsertionIsAnsweredByAFailureStaysInTheTree()
    {
        class FailingListener : public values::ITreeListener
        {
        public:
            FailingListener() { Tree::Instance()->AddListener(this); }
            ~FailingListener() override { Tree::Instance()->RemoveListener(this); }
            void ValueInserted(ValueBase* /*value*/) override { throw 42; }
            void ValueRemoved(const QString& /*path*/) override {}
        };
        const FreshTree tree;
        const FailingListener listener;
        ValuePtr<BoolValue> pointer;
        QVERIFY_EXCEPTION_THROWN(LinkOrCreate(pointer, "A/V"), int);
        QVERIFY(!pointer);
        QVERIFY(Tree::Instance()->FindValue("A/V"));
        QVERIFY_EXCEPTION_THROWN(values::CreateOrLink<BoolValue>("A/W"), int);
        QVERIFY(Tree::Instance()->FindValue("A/W"));
        QVERIFY(!LinkOrCreate(pointer, "A/V"));
    }

    void twoPointersOfOneOwnerShareOneRegistration()
    {
        FreshTree fresh;
        auto* value = fresh.add<BoolValue>("A/V");
        RecordingObserver owner;
        ValueObservingPtr<BoolValue> first(&owner);
        ValueObservingPtr<BoolValue> second(&owner);
        first.Assign(value);
        second.Assign(value);
        value->HasChanged(ChangeContent, nullptr);
        QCOMPARE(owner.codes, Codes{ChangeContent});
    }
};

DFL_TEST_MAIN_WITH(TestValueObserverMacros, QCoreApplication)
#include "tst_valueobservermacros.moc"
