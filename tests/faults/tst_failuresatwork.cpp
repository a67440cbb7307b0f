#include "../component/boxwatchdog.h"
#include "faultwalk.h"
#include "support/testmain.h"

using testsupport::Fault;
using testsupport::FaultPlan;
using testsupport::FaultWalk;
using testsupport::HostBench;
using testsupport::Mode;
using testsupport::Step;

/// What becomes of a component at work, and at its end, when operations of the host fail.
class TestFailuresAtWork : public QObject
{
    Q_OBJECT

private slots:
    void theHostsOperationsHaveFaultPoints();
    void theComponentWorksOn_data() { everyModeAndFault(); }
    void theComponentWorksOn();
    void theReportOpensOrNot_data() { everyModeAndFault(); }
    void theReportOpensOrNot();
    void theEndIsTheEnd_data() { everyModeAndFault(); }
    void theEndIsTheEnd();

private:
    static void everyModeAndFault();

    FaultWalk m_walk;
};

void TestFailuresAtWork::everyModeAndFault()
{
    QTest::addColumn<Mode>("mode");
    QTest::addColumn<Fault>("fault");
    FaultWalk::addRows("online", Mode::Online);
    FaultWalk::addRows("offline", Mode::Offline);
}

/// Without them, the tests would be content with a host that never fails.
void TestFailuresAtWork::theHostsOperationsHaveFaultPoints()
{
    std::set<QByteArray> reached;
    for (const Mode mode : {Mode::Online, Mode::Offline}) {
        const FaultPlan plan(Fault::InTurn, 0);
        HostBench host(m_walk.library(), mode);
        FaultWalk::setUp(host);
        for (const Step& step : testsupport::workSteps)
            (host.*step.act)();
        host.destroy();
        reached.insert(plan.operations().begin(), plan.operations().end());
    }
    // The component calls about 130; some are inlined, and some can do nothing that fails.
    QVERIFY2(reached.size() > 110, qPrintable(QString::number(reached.size())));
}

void TestFailuresAtWork::theComponentWorksOn()
{
    QFETCH(Mode, mode);
    QFETCH(Fault, fault);
    HostBench host(m_walk.library(), mode);
    FaultWalk::setUp(host);
    const QString atFirst = FaultWalk::whatIsWrong(host);
    QVERIFY2(atFirst.isEmpty(), qPrintable(atFirst));
    for (const Step& step : testsupport::workSteps) {
        FaultWalk::Outcome outcome;
        int failing = 0;
        do {
            ++failing;
            outcome = m_walk.fail(host, step, fault, failing);
            const QString where =
                QStringLiteral("%1, call %2 (%3)").arg(step.name).arg(failing).arg(QLatin1String(outcome.operation));
            QVERIFY2(outcome.out.isEmpty(), qPrintable(where + QStringLiteral(" let out: ") + outcome.out));
            const QString wrong = FaultWalk::whatIsWrong(host);
            QVERIFY2(wrong.isEmpty(), qPrintable(where + QStringLiteral(": ") + wrong));
        } while (outcome.operation != nullptr);
    }
}

void TestFailuresAtWork::theReportOpensOrNot()
{
    QFETCH(Mode, mode);
    QFETCH(Fault, fault);
    HostBench host(m_walk.library(), mode);
    FaultWalk::setUp(host);
    values::Tree::Instance()->DeleteValue(QStringLiteral("/GLOBAL/Frequency"));
    testsupport::BoxWatchdog boxes;
    FaultWalk::Outcome outcome;
    int failing = 0;
    do {
        boxes.seen.clear();
        outcome = m_walk.fail(host, {"open the report", &HostBench::openReport}, fault, ++failing);
        QVERIFY2(outcome.out.isEmpty(), qPrintable(outcome.out));
        const bool isShown = outcome.operation == nullptr || fault == Fault::Result;
        QCOMPARE(boxes.seen.size(), std::size_t(isShown ? 1 : 0));
    } while (outcome.operation != nullptr);
}

void TestFailuresAtWork::theEndIsTheEnd()
{
    QFETCH(Mode, mode);
    QFETCH(Fault, fault);
    FaultWalk::Outcome outcome;
    int failing = 0;
    do {
        HostBench host(m_walk.library(), mode);
        FaultWalk::setUp(host);
        const QPointer<QWidget> toolBar = host.toolBar();
        outcome = m_walk.fail(host, {"destroy", &HostBench::destroy}, fault, ++failing);
        QVERIFY2(outcome.out.isEmpty(), qPrintable(outcome.out));
        QVERIFY(toolBar.isNull());
    } while (outcome.operation != nullptr);
}

DFL_TEST_MAIN(TestFailuresAtWork)
#include "tst_failuresatwork.moc"
