#include "faultwalk.h"
#include "support/testmain.h"

using testsupport::Fault;
using testsupport::FaultWalk;
using testsupport::HostBench;
using testsupport::Mode;
using testsupport::Step;

/// What becomes of a component when operations of the host fail while it is made and bound.
///
/// Each call needs a component of its own, which takes its time: all exceptions but the one that binding treats in a
/// way of its own take turns. With DFLOCATE_ALL_FAULTS=1 in the environment each call raises each of them.
class TestFailuresAtSetUp : public QObject
{
    Q_OBJECT

private slots:
    void theHostAsksAgain_data();
    void theHostAsksAgain();

public:
    static bool raisesEach() { return qEnvironmentVariableIsSet("DFLOCATE_ALL_FAULTS"); }

private:
    FaultWalk m_walk;
};

void TestFailuresAtSetUp::theHostAsksAgain_data()
{
    QTest::addColumn<Mode>("mode");
    QTest::addColumn<Fault>("fault");
    for (const auto& [modeName, mode] : {std::pair("online", Mode::Online), std::pair("offline", Mode::Offline)}) {
        if (raisesEach()) {
            FaultWalk::addRows(modeName, mode);
            continue;
        }
        QTest::addRow("%s, host exception", modeName) << mode << Fault::HostException;
        QTest::addRow("%s, exceptions in turn", modeName) << mode << Fault::InTurn;
        QTest::addRow("%s, null or false", modeName) << mode << Fault::Result;
    }
}

void TestFailuresAtSetUp::theHostAsksAgain()
{
    QFETCH(Mode, mode);
    QFETCH(Fault, fault);
    for (const Step& failingStep : testsupport::setUpSteps) {
        const auto upTo = [&](HostBench& host) {
            for (const Step& step : testsupport::setUpSteps) {
                if (step.act == failingStep.act)
                    return;
                (host.*step.act)();
            }
        };
        std::vector<const char*> calls;
        {
            HostBench host(m_walk.library(), mode);
            upTo(host);
            calls = FaultWalk::callsOf(host, failingStep, fault);
        }
        for (int failing = 1; failing <= static_cast<int>(calls.size()); ++failing) {
            HostBench host(m_walk.library(), mode);
            upTo(host);
            const auto [operation, out] = m_walk.fail(host, failingStep, fault, failing, calls);
            const QString where =
                QStringLiteral("%1, call %2 (%3)").arg(failingStep.name).arg(failing).arg(QLatin1String(operation));
            QVERIFY2(operation != nullptr, qPrintable(where));
            QVERIFY2(out.isEmpty(), qPrintable(where + QStringLiteral(" let out: ") + out));
            // A toolbar binds when it is made and a component that could not be made is none: that takes a new one. The
            // rest is only announced again.
            if (failingStep.act == &HostBench::create || failingStep.act == &HostBench::makeWidgets) {
                host.connectServices();
                host.announceTree();
                host.destroy();
                host.create();
                host.makeWidgets();
            }
            host.connectServices();
            host.announceTree();
            const QString wrong = FaultWalk::whatIsWrong(host);
            QVERIFY2(wrong.isEmpty(), qPrintable(where + QStringLiteral(": ") + wrong));
        }
    }
}

// Twice as many faults, and a run that nobody waits for.
DFL_TEST_MAIN_WITHIN(TestFailuresAtSetUp, QApplication, TestFailuresAtSetUp::raisesEach() ? 3600 : 150)
#include "tst_failuresatsetup.moc"
