#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "ztbase/observable.h"

#include <stdexcept>

using testsupport::RecordingObserver;

namespace {

/// An observable whose deferred deletion can be asked for, as the tree does it for values.
class Source : public Observable
{
public:
    explicit Source(bool* deleted = nullptr)
        : m_deleted(deleted)
    {
    }
    ~Source() override
    {
        if (m_deleted != nullptr)
            *m_deleted = true;
    }
    using Observable::DeleteWhenUnused;

    /// Sends two codes in one operation, as a content set does.
    bool sendTwo()
    {
        Use use(*this);
        NotifyObservers(ChangeContent);
        if (use.IsOver())
            return false;
        NotifyObservers(ChangeExternal);
        return true;
    }

private:
    bool* m_deleted;
};

using Codes = std::vector<TChangeCode>;

} // namespace

class TestObservable : public QObject
{
    Q_OBJECT

private slots:
    void changeCodesHaveTheNumbersOfTheBinaryInterface()
    {
        QCOMPARE(int(ChangeState), 2);
        QCOMPARE(int(ChangeContent), 3);
        QCOMPARE(int(ChangeLimits), 4);
        QCOMPARE(int(ChangeItems), 7);
        QCOMPARE(int(ChangeExternal), 19);
    }

    void nullIsNoObserver()
    {
        Source source;
        QVERIFY(!source.AddObserver(nullptr));
        QCOMPARE(source.GetObserverCount(), std::size_t(0));
        QVERIFY(!source.IsObservedBy(nullptr));
        source.MakeFirstObserver(nullptr);
        source.RemoveObserver(nullptr);
        source.NotifyObservers(ChangeContent);
    }

    void anObserverIsRegisteredOnlyOnce()
    {
        Source source;
        RecordingObserver observer;
        QVERIFY(source.AddObserver(&observer));
        QVERIFY(!source.AddObserver(&observer));
        source.NotifyObservers(ChangeContent);
        QCOMPARE(observer.codes, Codes{ChangeContent});
    }

    void observersAreToldInTheOrderOfRegistration()
    {
        Source source;
        QString told;
        RecordingObserver a([&](Observable*, TChangeCode) { told += 'a'; });
        RecordingObserver b([&](Observable*, TChangeCode) { told += 'b'; });
        RecordingObserver c([&](Observable*, TChangeCode) { told += 'c'; });
        source.AddObserver(&b);
        source.AddObserver(&a);
        source.AddObserver(&c);
        source.NotifyObservers(ChangeContent);
        QCOMPARE(told, QString("bac"));
    }

    void theSourceAndTheCodeArePassedOn()
    {
        Source source;
        Observable* toldBy = nullptr;
        RecordingObserver observer([&](Observable* by, TChangeCode) { toldBy = by; });
        source.AddObserver(&observer);
        source.NotifyObservers(ChangeLimits);
        QCOMPARE(toldBy, static_cast<Observable*>(&source));
        QCOMPARE(observer.codes, Codes{ChangeLimits});
    }

    void theExceptedObserverIsNotTold()
    {
        Source source;
        RecordingObserver causing;
        RecordingObserver other;
        source.AddObserver(&causing);
        source.AddObserver(&other);
        source.NotifyObservers(ChangeContent, &causing);
        QVERIFY(causing.codes.empty());
        QCOMPARE(other.codes, Codes{ChangeContent});
    }

    void theFirstObserverIsToldFirst()
    {
        Source source;
        QString told;
        RecordingObserver a([&](Observable*, TChangeCode) { told += 'a'; });
        RecordingObserver b([&](Observable*, TChangeCode) { told += 'b'; });
        RecordingObserver c([&](Observable*, TChangeCode) { told += 'c'; });
        source.AddObserver(&a);
        source.AddObserver(&b);
        source.MakeFirstObserver(&b);
        source.MakeFirstObserver(&c); // registers it
        source.NotifyObservers(ChangeContent);
        QCOMPARE(told, QString("cba"));
        QCOMPARE(source.GetObserverCount(), std::size_t(3));
    }

    void aNewFirstObserverCountsFromTheNextRoundOn()
    {
        Source source;
        QString told;
        RecordingObserver c([&](Observable*, TChangeCode) { told += 'c'; });
        RecordingObserver a([&](Observable*, TChangeCode) {
            told += 'a';
            source.MakeFirstObserver(&c);
        });
        RecordingObserver b([&](Observable*, TChangeCode) { told += 'b'; });
        source.AddObserver(&a);
        source.AddObserver(&b);
        source.AddObserver(&c);
        source.NotifyObservers(ChangeContent);
        QCOMPARE(told, QString("abc"));
        source.RemoveObserver(&a);
        told.clear();
        source.NotifyObservers(ChangeContent);
        QCOMPARE(told, QString("cb"));
    }

    void anObserverMadeFirstAndRemovedInOneRoundIsGone()
    {
        Source source;
        RecordingObserver other;
        RecordingObserver observer([&](Observable*, TChangeCode) {
            source.MakeFirstObserver(&other);
            source.RemoveObserver(&other);
        });
        source.AddObserver(&observer);
        source.NotifyObservers(ChangeContent);
        source.NotifyObservers(ChangeContent);
        QVERIFY(other.codes.empty());
        QCOMPARE(source.GetObserverCount(), std::size_t(1));
    }

    void anObserverRemovedMeanwhileIsNotCalled()
    {
        Source source;
        RecordingObserver later;
        RecordingObserver first([&](Observable*, TChangeCode) { source.RemoveObserver(&later); });
        source.AddObserver(&first);
        source.AddObserver(&later);
        source.NotifyObservers(ChangeContent);
        QVERIFY(later.codes.empty());
        QCOMPARE(source.GetObserverCount(), std::size_t(1));
    }

    void anObserverMayRemoveItselfAndTheOthersAreStillTold()
    {
        Source source;
        RecordingObserver first;
        RecordingObserver leaving([&](Observable*, TChangeCode) { source.RemoveObserver(&leaving); });
        RecordingObserver last;
        source.AddObserver(&first);
        source.AddObserver(&leaving);
        source.AddObserver(&last);
        source.NotifyObservers(ChangeContent);
        source.NotifyObservers(ChangeContent);
        QCOMPARE(first.codes.size(), std::size_t(2));
        QCOMPARE(leaving.codes.size(), std::size_t(1));
        QCOMPARE(last.codes.size(), std::size_t(2));
    }

    void anObserverAddedMeanwhileIsCalledInTheNextRoundOnly()
    {
        Source source;
        RecordingObserver added;
        RecordingObserver first([&](Observable*, TChangeCode) { source.AddObserver(&added); });
        source.AddObserver(&first);
        source.NotifyObservers(ChangeContent);
        QVERIFY(added.codes.empty());
        source.NotifyObservers(ChangeContent);
        QCOMPARE(added.codes.size(), std::size_t(1));
    }

    void anObserverRemovedAndAddedAgainInOneRoundMovesToTheEnd()
    {
        Source source;
        RecordingObserver moving;
        RecordingObserver first([&](Observable*, TChangeCode) {
            source.RemoveObserver(&moving);
            source.AddObserver(&moving);
        });
        source.AddObserver(&first);
        source.AddObserver(&moving);
        source.NotifyObservers(ChangeContent);
        QVERIFY(moving.codes.empty());
        QCOMPARE(source.GetObserverCount(), std::size_t(2));
    }

    void aNestedRoundIsDeliveredAtOnce()
    {
        Source source;
        RecordingObserver first([&](Observable*, TChangeCode code) {
            if (code == ChangeContent)
                source.NotifyObservers(ChangeState);
        });
        RecordingObserver second;
        source.AddObserver(&first);
        source.AddObserver(&second);
        source.NotifyObservers(ChangeContent);
        QCOMPARE(second.codes, (Codes{ChangeState, ChangeContent}));
    }

    void theRoundsAfterANestedOneStillReachEveryone()
    {
        Source source;
        RecordingObserver leaving([&](Observable*, TChangeCode) { source.RemoveObserver(&leaving); });
        RecordingObserver nesting([&](Observable*, TChangeCode code) {
            if (code == ChangeContent)
                source.NotifyObservers(ChangeState);
        });
        RecordingObserver last;
        source.AddObserver(&leaving);
        source.AddObserver(&nesting);
        source.AddObserver(&last);
        for (int i = 0; i < 3; ++i)
            source.NotifyObservers(ChangeContent);
        QCOMPARE(last.count(ChangeContent), 3);
        QCOMPARE(last.count(ChangeState), 3);
        QCOMPARE(source.GetObserverCount(), std::size_t(2));
    }

    void deletingAllObserversEndsTheRound()
    {
        Source source;
        RecordingObserver later;
        RecordingObserver first([&](Observable*, TChangeCode) { source.DeleteObservers(); });
        source.AddObserver(&first);
        source.AddObserver(&later);
        source.NotifyObservers(ChangeContent);
        QVERIFY(later.codes.empty());
        QCOMPARE(source.GetObserverCount(), std::size_t(0));
        QVERIFY(source.AddObserver(&later));
        source.DeleteObservers();
        QCOMPARE(source.GetObserverCount(), std::size_t(0));
    }

    void theSourceMayBeDeletedInItsOwnRound()
    {
        bool deleted = false;
        auto* source = new Source(&deleted);
        RecordingObserver later;
        RecordingObserver first([&](Observable*, TChangeCode) { delete source; });
        source->AddObserver(&first);
        source->AddObserver(&later);
        source->NotifyObservers(ChangeContent);
        QVERIFY(deleted);
        QVERIFY(later.codes.empty());
    }

    void anOperationIsToldThatTheSourceWasDeletedInIt()
    {
        auto* source = new Source;
        RecordingObserver observer([&](Observable*, TChangeCode) { delete source; });
        source->AddObserver(&observer);
        QVERIFY(!source->sendTwo());
        QCOMPARE(observer.codes, Codes{ChangeContent});
    }

    void aDeferredDeletionWaitsForTheOutermostRound()
    {
        bool deleted = false;
        auto* source = new Source(&deleted);
        bool deletedInside = true;
        RecordingObserver first([&](Observable*, TChangeCode code) {
            if (code == ChangeContent) {
                source->NotifyObservers(ChangeState);
                deletedInside = deleted;
            } else if (code == ChangeState) {
                source->DeleteWhenUnused();
            }
        });
        RecordingObserver second;
        source->AddObserver(&first);
        source->AddObserver(&second);
        QVERIFY(source->sendTwo());
        QVERIFY(!deletedInside);
        QVERIFY(deleted);
        QCOMPARE(second.codes, (Codes{ChangeState, ChangeContent, ChangeExternal}));
    }

    void aDeferredDeletionOutsideARoundHappensAtOnce()
    {
        bool deleted = false;
        (new Source(&deleted))->DeleteWhenUnused();
        QVERIFY(deleted);
    }

    void anObserverThatThrowsDoesNotKeepTheOthersFromBeingTold()
    {
        Source source;
        RecordingObserver before;
        RecordingObserver throwing([](Observable*, TChangeCode) { throw std::runtime_error("first"); });
        RecordingObserver throwingToo([](Observable*, TChangeCode) { throw std::runtime_error("second"); });
        RecordingObserver after;
        for (RecordingObserver* observer : {&before, &throwing, &throwingToo, &after})
            source.AddObserver(observer);
        QByteArray caught;
        try {
            source.NotifyObservers(ChangeContent);
        } catch (const std::runtime_error& error) {
            caught = error.what();
        }
        QCOMPARE(caught, QByteArray("first"));
        QCOMPARE(before.codes.size(), std::size_t(1));
        QCOMPARE(after.codes.size(), std::size_t(1));
        source.RemoveObserver(&throwing);
        source.RemoveObserver(&throwingToo);
        source.NotifyObservers(ChangeContent);
        QCOMPARE(after.codes.size(), std::size_t(2));
    }

    void aLifeTellsWhetherTheObjectStillExists()
    {
        QVERIFY(Observable::Life().IsOver());
        auto* source = new Source;
        const Observable::Life life = source->GetLife();
        const Observable::Life sameLife = source->GetLife();
        QVERIFY(!life.IsOver());
        delete source;
        QVERIFY(life.IsOver());
        QVERIFY(sameLife.IsOver());
    }
};

DFL_TEST_MAIN_WITH(TestObservable, QCoreApplication)
#include "tst_observable.moc"
