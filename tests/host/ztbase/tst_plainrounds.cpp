#include "support/testmain.h"
#include "ztbase/observable.h"

#include <QStringList>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

/// The rules of notification rounds, written down as plainly as possible.
class PlainObservable
{
public:
    bool AddObserver(IObserver* observer)
    {
        if (observer == nullptr || find(observer) != m_registrations.end())
            return false;
        m_registrations.push_back({observer, m_nextId++});
        return true;
    }

    void RemoveObserver(IObserver* observer)
    {
        const auto found = find(observer);
        if (found != m_registrations.end())
            m_registrations.erase(found);
        m_first.erase(std::remove(m_first.begin(), m_first.end(), observer), m_first.end());
    }

    void DeleteObservers()
    {
        m_registrations.clear();
        m_first.clear();
    }

    void MakeFirstObserver(IObserver* observer)
    {
        AddObserver(observer);
        m_first.push_back(observer);
        if (m_rounds == 0)
            moveToFront();
    }

    [[nodiscard]] std::size_t GetObserverCount() const { return m_registrations.size(); }

    void NotifyObservers(TChangeCode code, const IObserver* except)
    {
        ++m_rounds;
        bool failed = false;
        const std::vector<Registration> atBegin = m_registrations;
        for (const Registration& registration : atBegin) {
            const auto isThis = [&registration](const Registration& other) { return other.id == registration.id; };
            if (registration.observer == except || std::none_of(m_registrations.begin(), m_registrations.end(), isThis))
                continue;
            try {
                registration.observer->Update(nullptr, code);
            } catch (const std::runtime_error&) {
                failed = true;
            }
        }
        if (--m_rounds == 0)
            moveToFront();
        if (failed)
            throw std::runtime_error("an observer has failed");
    }

private:
    struct Registration
    {
        IObserver* observer;
        int id;
    };

    std::vector<Registration>::iterator find(const IObserver* observer)
    {
        return std::find_if(m_registrations.begin(), m_registrations.end(),
                            [observer](const Registration& other) { return other.observer == observer; });
    }

    void moveToFront()
    {
        for (IObserver* observer : std::exchange(m_first, {})) {
            const auto found = find(observer);
            std::rotate(m_registrations.begin(), found, found + 1);
        }
    }

    std::vector<Registration> m_registrations;
    std::vector<IObserver*> m_first;
    int m_nextId = 0;
    int m_rounds = 0;
};

/// Lets observers do what dice say when they are told, and writes down who was told what. The same seed gives the same
/// story as long as the source tells the same.
template <typename Source>
class Story
{
public:
    explicit Story(unsigned seed)
        : m_dice(seed)
    {
        for (int i = 0; i < observerCount; ++i)
            m_observers.push_back(std::make_unique<Actor>(this, i));
    }

    QStringList tell()
    {
        for (int step = 0; step < 400; ++step) {
            m_budget = 12; // else rounds in rounds might never end
            act();
            m_log << QStringLiteral("count %1").arg(m_source.GetObserverCount());
        }
        return m_log;
    }

private:
    static constexpr int observerCount = 9;

    class Actor : public IObserver
    {
    public:
        Actor(Story* story, int number)
            : m_story(story)
            , m_number(number)
        {
        }
        void Update(Observable* /*source*/, TChangeCode code) override { m_story->told(m_number, code); }

    private:
        Story* m_story;
        int m_number;
    };

    int roll(int count) { return static_cast<int>(m_dice() % static_cast<std::uint32_t>(count)); }

    IObserver* anyone() { return m_observers[static_cast<std::size_t>(roll(observerCount))].get(); }

    void told(int number, TChangeCode code)
    {
        m_log << QStringLiteral("%1 told %2").arg(number).arg(code);
        if (roll(3) == 0)
            act();
        if (roll(15) == 0)
            throw std::runtime_error("an observer fails");
    }

    void act()
    {
        if (--m_budget < 0)
            return;
        switch (roll(12)) {
        case 0:
        case 1:
        case 2:
        case 3:
            m_log << (m_source.AddObserver(anyone()) ? QStringLiteral("added") : QStringLiteral("not added"));
            break;
        case 4:
        case 5:
            m_source.RemoveObserver(anyone());
            break;
        case 6:
            m_source.MakeFirstObserver(anyone());
            break;
        case 7:
            if (roll(6) == 0)
                m_source.DeleteObservers();
            break;
        default:
            notify();
            break;
        }
    }

    void notify()
    {
        const TChangeCode code = roll(2) == 0 ? ChangeContent : ChangeItems;
        IObserver* const except = roll(2) == 0 ? anyone() : nullptr;
        try {
            m_source.NotifyObservers(code, except);
            m_log << QStringLiteral("round");
        } catch (const std::runtime_error&) {
            m_log << QStringLiteral("round failed");
        }
    }

    Source m_source;
    std::vector<std::unique_ptr<Actor>> m_observers;
    std::mt19937 m_dice;
    QStringList m_log;
    int m_budget = 0;
};

} // namespace

class TestPlainRounds : public QObject
{
    Q_OBJECT

private slots:
    void roundsTellWhomThePlainRulesTellInTheSameOrder()
    {
        int tellings = 0;
        int failures = 0;
        for (unsigned seed = 1; seed <= 200; ++seed) {
            const QStringList expected = Story<PlainObservable>(seed).tell();
            QCOMPARE(Story<Observable>(seed).tell(), expected);
            tellings += expected.filter(QStringLiteral("told")).size();
            failures += expected.count(QStringLiteral("round failed"));
        }
        // The stories are no good when nothing happens in them.
        QVERIFY(tellings > 100000);
        QVERIFY(failures > 1000);
    }
};

DFL_TEST_MAIN_WITH(TestPlainRounds, QCoreApplication)
#include "tst_plainrounds.moc"
