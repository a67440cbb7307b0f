#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "ztbase/observation.h"

#include <memory>
#include <optional>

using testsupport::RecordingObserver;

class TestObservation : public QObject
{
    Q_OBJECT
private slots:
    void theObserverIsRegisteredForItsLife();
    void theObservedObjectMayGoFirst();
    void theObservedObjectIsLeftEvenWhenOnlyItsBaseIsLeft();
    void itMayEndInsideItsOwnNotification();
};

void TestObservation::theObserverIsRegisteredForItsLife()
{
    Observable observed;
    RecordingObserver observer;
    {
        const Observation observation(observed, observer);
        QVERIFY(!observation.IsOver());
        observed.NotifyObservers(ChangeContent);
        QCOMPARE(observer.codes.size(), std::size_t(1));
    }
    observed.NotifyObservers(ChangeContent);
    QCOMPARE(observer.codes.size(), std::size_t(1));
    QCOMPARE(observed.GetObserverCount(), std::size_t(0));
}

void TestObservation::theObservedObjectMayGoFirst()
{
    auto observed = std::make_unique<Observable>();
    RecordingObserver observer;
    const Observation observation(*observed, observer);
    observed.reset();
    QVERIFY(observation.IsOver());
}

void TestObservation::theObservedObjectIsLeftEvenWhenOnlyItsBaseIsLeft()
{
    struct Value : public virtual Observable
    {
        ~Value() override
        {
            onDestruction();
            remaining = GetObserverCount();
        }
        std::function<void()> onDestruction;
        std::size_t& remaining;
        explicit Value(std::size_t& count)
            : remaining(count)
        {
        }
    };
    std::size_t remaining = 99;
    auto value = std::make_unique<Value>(remaining);
    RecordingObserver observer;
    std::optional<Observation> observation;
    observation.emplace(*value, observer);
    value->onDestruction = [&observation] { observation.reset(); };
    value.reset();
    QCOMPARE(remaining, std::size_t(0));
}

void TestObservation::itMayEndInsideItsOwnNotification()
{
    Observable observed;
    std::optional<Observation> observation;
    RecordingObserver observer([&observation](Observable*, TChangeCode) { observation.reset(); });
    RecordingObserver next;
    observation.emplace(observed, observer);
    observed.AddObserver(&next);
    observed.NotifyObservers(ChangeContent);
    QCOMPARE(next.codes.size(), std::size_t(1));
    QCOMPARE(observed.GetObserverCount(), std::size_t(1));
}

DFL_TEST_MAIN_WITH(TestObservation, QCoreApplication)
#include "tst_observation.moc"
