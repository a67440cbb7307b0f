#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"

using testsupport::FreshTree;
using testsupport::RecordingObserver;
using values::BoolValue;
using values::IntValue;
using values::StringValue;
using values::Tree;
using values::ValueBase;

namespace {

Tree* tree()
{
    return Tree::Instance();
}

StringValue* named(const QString& name)
{
    auto* value = new StringValue;
    value->SetName(name, nullptr);
    return value;
}

/// A value that says when it is deleted.
class Mortal : public StringValue
{
public:
    explicit Mortal(bool* deleted)
        : m_deleted(deleted)
    {
        SetName(QStringLiteral("Mortal"), nullptr);
    }
    ~Mortal() override { *m_deleted = true; }

private:
    bool* m_deleted;
};

class Listener : public values::ITreeListener
{
public:
    Listener() { tree()->AddListener(this); }
    ~Listener() override { tree()->RemoveListener(this); }
    void ValueInserted(ValueBase* value) override { events << "+" + value->GetPathName(); }
    void ValueRemoved(const QString& path) override { events << "-" + path; }
    QStringList events;
};

} // namespace

class TestTree : public QObject
{
    Q_OBJECT

private slots:
    void thereIsOneTreeAndItIsNeverNull()
    {
        QVERIFY(Tree::Instance() != nullptr);
        QCOMPARE(Tree::Instance(), Tree::Instance());
    }

    void aValueIsFoundByThePathItWasInsertedAt()
    {
        FreshTree fresh;
        StringValue* value = named("Mode");
        QVERIFY(tree()->InsertValue("/GUI/Handler/Config/", value));
        QCOMPARE(tree()->FindValue("/GUI/Handler/Config/Mode"), static_cast<ValueBase*>(value));
        QVERIFY(value->IsInTree());
    }

    void leadingAndDoubledSeparatorsMakeNoDifference_data()
    {
        QTest::addColumn<QString>("parent");
        for (const char* parent : {"/A/B/", "A/B/", "//A//B//", "A/B", "/A/B"})
            QTest::newRow(parent) << QString(parent);
    }

    void leadingAndDoubledSeparatorsMakeNoDifference()
    {
        FreshTree fresh;
        QFETCH(QString, parent);
        StringValue* value = named("V");
        QVERIFY(tree()->InsertValue(parent, value));
        for (const char* path : {"/A/B/V", "A/B/V", "//A/B/V", "A//B///V"})
            QCOMPARE(tree()->FindValue(path), static_cast<ValueBase*>(value));
        QCOMPARE(value->GetPathName(), QString("/A/B/V"));
    }

    void pathsAreCaseSensitive()
    {
        FreshTree fresh;
        fresh.add<StringValue>("A/V");
        QVERIFY(tree()->FindValue("a/V") == nullptr);
        QVERIFY(tree()->FindValue("A/v") == nullptr);
    }

    void unknownPathsAndFoldersFindNothing()
    {
        FreshTree fresh;
        fresh.add<StringValue>("A/B/V");
        for (const char* path : {"", "/", "A", "A/B", "A/B/", "A/B/V/", "A/B/W", "A/B/V/X"})
            QVERIFY2(tree()->FindValue(path) == nullptr, path);
    }

    void aValueWithoutParentPathLiesAtTheTop()
    {
        FreshTree fresh;
        StringValue* value = named("Top");
        QVERIFY(tree()->InsertValue(QString(), value));
        QCOMPARE(value->GetPathName(), QString("/Top"));
        QCOMPARE(tree()->FindValue("Top"), static_cast<ValueBase*>(value));
    }

    void aTakenNameIsRefusedAndTheCallerKeepsTheValue()
    {
        FreshTree fresh;
        ValueBase* first = fresh.add<IntValue>("A/V");
        std::unique_ptr<StringValue> second(named("V"));
        QVERIFY(!tree()->InsertValue("A/", second.get()));
        QCOMPARE(tree()->FindValue("A/V"), first);
        QVERIFY(!second->IsInTree());
        QCOMPARE(second->GetPathName(), QString("V"));
    }

    void aFolderIsNotATakenName()
    {
        FreshTree fresh;
        ValueBase* child = fresh.add<StringValue>("P/DF_Settings/PGXML");
        ValueBase* parent = fresh.add<StringValue>("P/DF_Settings");
        QCOMPARE(tree()->FindValue("P/DF_Settings"), parent);
        QCOMPARE(tree()->FindValue("P/DF_Settings/PGXML"), child);
    }

    void aValueMayGetChildren()
    {
        FreshTree fresh;
        fresh.add<StringValue>("P/DF_Settings");
        QVERIFY(fresh.add<StringValue>("P/DF_Settings/PGXML") != nullptr);
    }

    void nullNamelessAndAttachedValuesAreRefused()
    {
        FreshTree fresh;
        QVERIFY(!tree()->InsertValue("A/", nullptr));
        StringValue nameless;
        QVERIFY(!tree()->InsertValue("A/", &nameless));
        ValueBase* attached = fresh.add<StringValue>("A/V");
        QVERIFY(!tree()->InsertValue("B/", attached));
        QVERIFY(tree()->FindValue("B/V") == nullptr);
    }

    void anUnattachedValueHasItsNameAsPath()
    {
        StringValue value;
        QCOMPARE(value.GetPathName(), QString());
        QVERIFY(value.SetName("Alone", nullptr));
        QCOMPARE(value.GetPathName(), QString("Alone"));
    }

    void aRenamedValueIsFoundUnderItsNewName()
    {
        FreshTree fresh;
        ValueBase* value = fresh.add<StringValue>("A/Old");
        QVERIFY(value->SetName("New", nullptr));
        QCOMPARE(tree()->FindValue("A/New"), value);
        QVERIFY(tree()->FindValue("A/Old") == nullptr);
        QCOMPARE(value->GetPathName(), QString("/A/New"));
        QCOMPARE(value->GetName(), QString("New"));
    }

    void aValueIsNotRenamedToItsNeighboursNameNorToNone()
    {
        FreshTree fresh;
        ValueBase* value = fresh.add<StringValue>("A/One");
        ValueBase* neighbour = fresh.add<StringValue>("A/Two");
        QVERIFY(!value->SetName("Two", nullptr));
        QVERIFY(!value->SetName("", nullptr));
        QVERIFY(value->SetName("One", nullptr));
        QCOMPARE(tree()->FindValue("A/One"), value);
        QCOMPARE(tree()->FindValue("A/Two"), neighbour);
    }

    void deletingTellsEveryObserverOnceWithStateRemoved()
    {
        FreshTree fresh;
        auto* value = fresh.add<StringValue>("A/V");
        int state = -1;
        QString path;
        RecordingObserver observer([&](Observable*, TChangeCode) {
            state = value->GetState();
            path = value->GetPathName();
        });
        RecordingObserver second;
        value->AddObserver(&observer);
        value->AddObserver(&second);
        QVERIFY(tree()->DeleteValue("A/V"));
        QCOMPARE(observer.codes, std::vector<TChangeCode>{ChangeState});
        QCOMPARE(second.codes, std::vector<TChangeCode>{ChangeState});
        QCOMPARE(state, int(values::StateRemoved));
        QCOMPARE(path, QString("/A/V"));
        QVERIFY(tree()->FindValue("A/V") == nullptr);
    }

    void aValueThatIsLeavingStaysRemovedWhateverAnObserverSets()
    {
        FreshTree fresh;
        auto* value = fresh.add<StringValue>("A/V");
        RecordingObserver busy([&](Observable*, TChangeCode) { value->SetState(values::StateOrdinary, nullptr); });
        int stateAfterwards = -1;
        RecordingObserver second([&](Observable*, TChangeCode) { stateAfterwards = value->GetState(); });
        value->AddObserver(&busy);
        value->AddObserver(&second);
        QVERIFY(tree()->DeleteValue("A/V"));
        QCOMPARE(stateAfterwards, int(values::StateRemoved));
        QCOMPARE(second.codes, std::vector<TChangeCode>{ChangeState});
    }

    void deletingDeletesTheValue()
    {
        FreshTree fresh;
        bool deleted = false;
        QVERIFY(tree()->InsertValue("A/", new Mortal(&deleted)));
        QVERIFY(tree()->DeleteValue("/A/Mortal"));
        QVERIFY(deleted);
    }

    void deletingAnUnknownPathIsFalse()
    {
        FreshTree fresh;
        fresh.add<StringValue>("A/B/V");
        QVERIFY(!tree()->DeleteValue("A/B"));
        QVERIFY(!tree()->DeleteValue("A/W"));
        QVERIFY(!tree()->DeleteValue(QString()));
        QVERIFY(tree()->DeleteValue("A/B/V"));
        QVERIFY(!tree()->DeleteValue("A/B/V"));
    }

    void childrenStayWhenTheirParentIsDeleted()
    {
        FreshTree fresh;
        fresh.add<StringValue>("P/DF_Settings");
        ValueBase* child = fresh.add<StringValue>("P/DF_Settings/PGXML");
        QVERIFY(tree()->DeleteValue("P/DF_Settings"));
        QCOMPARE(tree()->FindValue("P/DF_Settings/PGXML"), child);
    }

    void aTransactionDoesNotHoldTheFarewellBack()
    {
        FreshTree fresh;
        auto* value = fresh.add<StringValue>("A/V");
        RecordingObserver observer;
        value->AddObserver(&observer);
        value->StartTransaction(nullptr);
        tree()->DeleteValue("A/V");
        QCOMPARE(observer.codes, std::vector<TChangeCode>{ChangeState});
    }

    void deletionInsideANotificationWaitsForItsEnd()
    {
        FreshTree fresh;
        bool deleted = false;
        auto* value = new Mortal(&deleted);
        tree()->InsertValue("A/", value);
        bool deletedInside = true;
        RecordingObserver first([&](Observable*, TChangeCode code) {
            if (code != ChangeContent)
                return;
            QVERIFY(tree()->DeleteValue("A/Mortal"));
            QVERIFY(tree()->FindValue("A/Mortal") == nullptr);
            deletedInside = deleted;
        });
        RecordingObserver second;
        value->AddObserver(&first);
        value->AddObserver(&second);
        QVERIFY(value->SetValue("new", nullptr));
        QVERIFY(!deletedInside);
        QVERIFY(deleted);
        // Told of the farewell, then dropped: neither the rest of the round nor "set from outside" arrives.
        QCOMPARE(second.codes, std::vector<TChangeCode>{ChangeState});
    }

    void theNameIsFreeAgainInsideTheFarewell()
    {
        FreshTree fresh;
        auto* value = fresh.add<StringValue>("A/V");
        bool inserted = false;
        RecordingObserver observer([&](Observable*, TChangeCode) { inserted = tree()->InsertValue("A/", named("V")); });
        value->AddObserver(&observer);
        tree()->DeleteValue("A/V");
        QVERIFY(inserted);
        QVERIFY(tree()->FindValue("A/V") != nullptr);
    }

    void aThrowingObserverDoesNotKeepTheValueAlive()
    {
        FreshTree fresh;
        bool deleted = false;
        auto* value = new Mortal(&deleted);
        tree()->InsertValue("A/", value);
        RecordingObserver observer([](Observable*, TChangeCode) { throw 1; });
        value->AddObserver(&observer);
        Listener listener;
        bool thrown = false;
        try {
            tree()->DeleteValue("A/Mortal");
        } catch (int) {
            thrown = true;
        }
        QVERIFY(thrown);
        QVERIFY(deleted);
        QCOMPARE(listener.events, QStringList{"-/A/Mortal"});
        QVERIFY(tree()->FindValue("A/Mortal") == nullptr);
    }

    void theDeleteObserverIsToldOnceEvenWithoutRegistration()
    {
        FreshTree fresh;
        RecordingObserver deleteObserver;
        auto* value = fresh.add<StringValue>("A/V");
        value->SetDeleteObserver(&deleteObserver);
        QCOMPARE(value->GetDeleteObserver(), static_cast<IObserver*>(&deleteObserver));
        value->SetValue("x", nullptr);
        QVERIFY(deleteObserver.codes.empty());
        tree()->DeleteValue("A/V");
        QCOMPARE(deleteObserver.codes, std::vector<TChangeCode>{ChangeState});

        deleteObserver.codes.clear();
        value = fresh.add<StringValue>("A/V");
        value->SetDeleteObserver(&deleteObserver);
        value->AddObserver(&deleteObserver);
        tree()->DeleteValue("A/V");
        QCOMPARE(deleteObserver.codes, std::vector<TChangeCode>{ChangeState});
    }

    void aValueDeletedOutrightIsNotFoundAndTellsNobody()
    {
        FreshTree fresh;
        auto* value = fresh.add<StringValue>("A/V");
        RecordingObserver observer;
        value->AddObserver(&observer);
        delete value;
        QVERIFY(tree()->FindValue("A/V") == nullptr);
        QVERIFY(observer.codes.empty());
    }

    void valuesBelowAPathComeInTheOrderOfTheirPaths()
    {
        FreshTree fresh;
        ValueBase* c = fresh.add<StringValue>("A/C");
        ValueBase* b = fresh.add<StringValue>("A/B/X");
        fresh.add<StringValue>("AB/Y");
        fresh.add<StringValue>("A");
        const std::vector<ValueBase*> below{b, c};
        QCOMPARE(tree()->ValuesBelow("A"), below);
        QCOMPARE(tree()->ValuesBelow("/A/"), below);
        QCOMPARE(tree()->ValuesBelow("").size(), std::size_t(4));
        QVERIFY(tree()->ValuesBelow("Q").empty());
    }

    void clearingDeletesAndTells()
    {
        FreshTree fresh;
        bool deleted = false;
        auto* value = new Mortal(&deleted);
        tree()->InsertValue("A/", value);
        fresh.add<StringValue>("A/V");
        RecordingObserver observer;
        value->AddObserver(&observer);
        tree()->Clear();
        QVERIFY(deleted);
        QCOMPARE(observer.codes, std::vector<TChangeCode>{ChangeState});
        QVERIFY(tree()->ValuesBelow("").empty());
    }

    void listenersAreToldOfComingGoingAndRenaming()
    {
        FreshTree fresh;
        Listener listener;
        tree()->AddListener(&listener); // registered already: no second call
        auto* value = fresh.add<StringValue>("A/V");
        value->SetName("W", nullptr);
        tree()->DeleteValue("A/W");
        delete fresh.add<StringValue>("A/X");
        QCOMPARE(listener.events, (QStringList{"+/A/V", "-/A/V", "+/A/W", "-/A/W", "+/A/X", "-/A/X"}));
    }

    void aListenerMayLeaveAndDeleteInItsCall()
    {
        FreshTree fresh;
        class Deleting : public values::ITreeListener
        {
        public:
            void ValueInserted(ValueBase* value) override { tree()->DeleteValue(value->GetPathName()); }
            void ValueRemoved(const QString&) override { tree()->RemoveListener(this); }
        } deleting;
        tree()->AddListener(&deleting);
        tree()->AddListener(nullptr);
        Listener after;
        QVERIFY(tree()->InsertValue("A/", named("V")));
        QVERIFY(tree()->FindValue("A/V") == nullptr);
        QCOMPARE(after.events, QStringList{"-/A/V"});
        tree()->InsertValue("A/", named("V"));
        QCOMPARE(after.events, (QStringList{"-/A/V", "+/A/V"}));
    }

    void aRenamedValueThatAListenerDeletesIsNotAnnouncedUnderItsNewName()
    {
        FreshTree fresh;
        auto* value = fresh.add<StringValue>("A/V");
        class Deleting : public Listener
        {
        public:
            void ValueRemoved(const QString& path) override
            {
                Listener::ValueRemoved(path);
                tree()->DeleteValue("A/W");
            }
        } deleting;
        Listener after;
        QVERIFY(value->SetName("W", nullptr));
        QVERIFY(tree()->FindValue("A/W") == nullptr);
        QCOMPARE(deleting.events, (QStringList{"-/A/V", "-/A/W"}));
        QCOMPARE(after.events, (QStringList{"-/A/W", "-/A/V"}));
    }
};

DFL_TEST_MAIN_WITH(TestTree, QCoreApplication)
#include "tst_tree.moc"
