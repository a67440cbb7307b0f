#include "support/allocations.h"
#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/valueobservermacros.h"

#ifdef DFLOCATE_FAULTS
#include "faultpoints/faultpoint.h"
#endif

#include <cstring>
#include <vector>

using testsupport::allocationsIn;
using testsupport::FreshTree;

namespace {

/// Counts what it is told without remembering it.
class Counter : public IObserver
{
public:
    void Update(Observable* /*source*/, TChangeCode code) override
    {
        if (code == ChangeContent)
            ++contents;
        else
            ++others;
    }
    int contents = 0;
    int others = 0;
};

/// A value of each kind in the tree, with an observer, and a set of what it holds already.
class SettledValues
{
public:
    SettledValues()
        : m_text(QStringLiteral("2026-11-21 23:10:00"))
        , m_bool(m_tree.add<values::BoolValue>(QStringLiteral("/GUI/Bool")))
        , m_int(m_tree.add<values::IntValue>(QStringLiteral("/GUI/Int")))
        , m_double(m_tree.add<values::DoubleValue>(QStringLiteral("/GUI/Double")))
        , m_string(m_tree.add<values::StringValue>(QStringLiteral("/GUI/String")))
        , m_selection(m_tree.add<values::ValueSelection>(QStringLiteral("/GUI/Selection")))
    {
        m_selection->AddItems({QStringLiteral("Off"), QStringLiteral("On")});
        m_name = m_selection->GetItem(1)->GetName();
        set();
        for (values::ValueBase* value : std::vector<values::ValueBase*>{m_bool, m_int, m_double, m_string, m_selection})
            value->AddObserver(&counter);
    }

    void set()
    {
        m_bool->SetValue(true, nullptr);
        m_int->SetValue(42, nullptr);
        m_double->SetValue(0.1, nullptr);
        m_string->SetValue(m_text, nullptr);
        m_selection->Select(1);
    }
    static constexpr int kinds = 5;

    /// By text; the texts exist already.
    void setByText()
    {
        m_string->SetStringValue(m_text, nullptr);
        m_selection->SetStringValue(m_name, nullptr);
    }

    void setState() { m_int->SetState(values::StateOrdinary, nullptr); }
    void setLimits() { m_int->SetMinMax(m_int->GetMin(), m_int->GetMax(), m_int->GetStep(), nullptr); }
    void setItems() { m_selection->AddItem(m_name, 0.0, 1); }

    Counter counter;

private:
    FreshTree m_tree;
    QString m_text;
    QString m_name;
    values::BoolValue* m_bool;
    values::IntValue* m_int;
    values::DoubleValue* m_double;
    values::StringValue* m_string;
    values::ValueSelection* m_selection;
};

} // namespace

/// What operations cost, counted: times would depend on the machine.
class TestCosts : public QObject
{
    Q_OBJECT

private slots:
    void allocationsAreCounted()
    {
        QString text;
        QCOMPARE(allocationsIn([&text] { text.resize(100); }), std::size_t(1));
        std::unique_ptr<int> number;
        QCOMPARE(allocationsIn([&number] { number = std::make_unique<int>(1); }), std::size_t(1));
        QCOMPARE(allocationsIn([&text] { text[0] = QLatin1Char('x'); }), std::size_t(0));
    }

    void aSetThatChangesNothingSendsNoContentChangeAndAllocatesNothing()
    {
        SettledValues settled;
        QCOMPARE(allocationsIn([&settled] { settled.set(); }), std::size_t(0));
        QCOMPARE(settled.counter.contents, 0);
        QCOMPARE(settled.counter.others, SettledValues::kinds); // that somebody set it is told all the same
    }

    void aSetByTextThatChangesNothingAllocatesNothing()
    {
        SettledValues settled;
        QCOMPARE(allocationsIn([&settled] { settled.setByText(); }), std::size_t(0));
        QCOMPARE(settled.counter.contents, 0);
        QCOMPARE(settled.counter.others, 2);
    }

    void statesLimitsAndItemsThatChangeNothingSendAndAllocateNothing()
    {
        SettledValues settled;
        QCOMPARE(allocationsIn([&settled] {
                     settled.setState();
                     settled.setLimits();
                     settled.setItems();
                 }),
                 std::size_t(0));
        QCOMPARE(settled.counter.contents + settled.counter.others, 0);
    }

    void aChangeAllocatesNothing()
    {
        std::vector<Counter> counters(100);
        FreshTree tree;
        auto* number = tree.add<values::DoubleValue>(QStringLiteral("/GUI/Frequency"));
        for (Counter& counter : counters)
            number->AddObserver(&counter);
        QCOMPARE(allocationsIn([number] { number->SetValue(155.5e6, nullptr); }), std::size_t(0));
        QCOMPARE(counters.back().contents, 1);
    }

    void aPathInItsCanonicalFormIsFoundWithoutAllocation()
    {
        FreshTree tree;
        auto* value = tree.add<values::IntValue>(QStringLiteral("/GUI/Int"));
        const QString path = QStringLiteral("/GUI/Int");
        const QString unknown = QStringLiteral("/GUI/Other");
        values::ValueBase* found = nullptr;
        values::ValueBase* notFound = value;
        QCOMPARE(allocationsIn([&] {
                     found = values::Tree::Instance()->FindValue(path);
                     notFound = values::Tree::Instance()->FindValue(unknown);
                 }),
                 std::size_t(0));
        QCOMPARE(found, static_cast<values::ValueBase*>(value));
        QVERIFY(notFound == nullptr);
    }

#ifdef DFLOCATE_FAULTS
    void lookUpsAreCounted()
    {
        FreshTree tree;
        tree.add<values::IntValue>(QStringLiteral("/GUI/Int"));
        values::ValuePtr<values::IntValue> pointer;
        QCOMPARE(lookUpsIn([&pointer] { values::LinkByPath(pointer, QStringLiteral("/GUI/Int")); }), 1);
    }

    void onceBoundNoUpdateLooksAPathUp()
    {
        FreshTree tree;
        auto* frequency = tree.add<values::DoubleValue>(QStringLiteral("/GLOBAL/Frequency"));
        Counter owner;
        values::ValueObservingPtr<values::DoubleValue> pointer(&owner);
        QVERIFY(values::LinkByPath(pointer, QStringLiteral("/GLOBAL/Frequency")));
        QCOMPARE(lookUpsIn([&] {
                     frequency->SetValue(155.5e6, nullptr);
                     pointer->SetValue(162.0e6, &owner);
                     frequency->SetState(values::StateUnused, nullptr);
                     frequency->SetMinMax(0.0, 1e9, 1.0, nullptr);
                 }),
                 0);
        QCOMPARE(owner.contents, 1);
    }

    void aSetThatChangesNothingLooksNoPathUp()
    {
        SettledValues settled;
        QCOMPARE(lookUpsIn([&settled] {
                     settled.set();
                     settled.setByText();
                 }),
                 0);
    }

private:
    template <typename Action>
    static int lookUpsIn(Action action)
    {
        s_lookUps = 0;
        faults::hook = [](const char* operation, faults::Ways, const void*) {
            if (std::strcmp(operation, "Tree::FindValue") == 0)
                ++s_lookUps;
            return false;
        };
        action();
        faults::hook = nullptr;
        return s_lookUps;
    }

    inline static int s_lookUps = 0;
#endif
};

DFL_TEST_MAIN_WITH(TestCosts, QCoreApplication)
#include "tst_costs.moc"
