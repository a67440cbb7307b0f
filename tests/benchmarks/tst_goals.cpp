#include "comparison.h"
#include "support/testmain.h"

#include <QFile>
#include <QProcess>

#include <algorithm>

using namespace benchmarks;

/// The table of goals and the benchmark programs belong together; nobody runs them all day to find out.
class TestGoals : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everyGoalNamesBenchmarksOfItsProgram_data();
    void everyGoalNamesBenchmarksOfItsProgram();
    void everyProgramHasAGoal();

private:
    std::vector<Goal> m_goals;
};

void TestGoals::initTestCase()
{
    QFile file(QStringLiteral(GOALS));
    QVERIFY(file.open(QIODevice::ReadOnly));
    m_goals = readGoals(QString::fromUtf8(file.readAll()));
    QVERIFY(!m_goals.empty());
}

void TestGoals::everyGoalNamesBenchmarksOfItsProgram_data()
{
    QTest::addColumn<QString>("subject");
    QStringList subjects;
    for (const Goal& goal : m_goals)
        subjects << goal.subject;
    subjects.removeDuplicates();
    for (const QString& subject : subjects)
        QTest::addRow("%s", qPrintable(subject)) << subject;
}

void TestGoals::everyGoalNamesBenchmarksOfItsProgram()
{
    QFETCH(QString, subject);
    QProcess program;
    program.start(QStringLiteral(BENCHMARK_FOLDER "/bench_") + subject, {QStringLiteral("--benchmark_list_tests")});
    QVERIFY2(program.waitForFinished(-1), qPrintable(program.errorString()));
    QCOMPARE(program.exitCode(), 0);
    const QStringList known = QString::fromUtf8(program.readAllStandardOutput()).split(QLatin1Char('\n'));
    for (const Goal& goal : m_goals) {
        if (goal.subject != subject)
            continue;
        QVERIFY2(known.contains(goal.measured), qPrintable(goal.measured));
        QVERIFY2(goal.reference.isEmpty() || known.contains(goal.reference), qPrintable(goal.reference));
    }
}

void TestGoals::everyProgramHasAGoal()
{
    const QStringList subjects = QStringLiteral(SUBJECTS).split(QLatin1Char(' '));
    for (const QString& subject : subjects) {
        const auto isAboutSubject = [&subject](const Goal& goal) { return goal.subject == subject; };
        QVERIFY2(std::any_of(m_goals.begin(), m_goals.end(), isAboutSubject), qPrintable(subject));
    }
}

DFL_TEST_MAIN_WITH(TestGoals, QCoreApplication)
#include "tst_goals.moc"
