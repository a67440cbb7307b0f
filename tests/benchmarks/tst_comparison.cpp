#include "comparison.h"
#include "support/testmain.h"

#include <cmath>
#include <functional>
#include <stdexcept>

using namespace benchmarks;

namespace {

Goal goalOf(const QString& figure, const QString& measured, const QString& reference)
{
    return {QStringLiteral("tree"), QStringLiteral("a tree"), figure, measured, reference, Goal::Relation::AtMost, 1.0};
}

QByteArray repetition(const char* name, double cpuTime, const char* more = "")
{
    return QByteArray(R"({"name": ")") + name + R"(", "run_name": ")" + name +
           R"(", "run_type": "iteration", "time_unit": "ns", "real_time": 1000, "cpu_time": )" +
           QByteArray::number(cpuTime) + more + "}";
}

Run runOf(const QList<QByteArray>& repetitions)
{
    return Run(R"({"context": {}, "benchmarks": [)" + repetitions.join(',') + "]}");
}

QString failureOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const std::runtime_error& failure) {
        return QString::fromStdString(failure.what());
    }
    return QString();
}

} // namespace

class TestComparison : public QObject
{
    Q_OBJECT

private slots:
    void aLineOfTheTableIsAGoal();
    void emptyLinesAndCommentsAreSkipped();
    void aWrongLineIsNamed_data();
    void aWrongLineIsNamed();

    void theMedianIsTheMiddleOne();
    void theMedianOfAnEvenNumberIsTheMeanOfTheTwoInTheMiddle();
    void thereIsNoMedianOfNothing();

    void theTimeIsTheLeastOfTheRepetitions();
    void timesAreInNanoseconds_data();
    void timesAreInNanoseconds();
    void anUnknownUnitGivesNoTime();
    void realTimeCountsWhereTheNameSaysSo();
    void aggregatesAndFailedRepetitionsDoNotCount();
    void aCounterIsTheMedianOfTheRepetitions();
    void textThatIsNoOutputOfABenchmarkIsRefused();

    void aRatioIsFormedInsideARun();
    void withoutReferenceTheFigureItselfCounts();
    void aMissingBenchmarkGivesNoValue();
    void aReferenceOfZeroGivesNoValue();
    void growthIsTheExponentBetweenTheNumbersInTheNames_data();
    void growthIsTheExponentBetweenTheNumbersInTheNames();
    void growthWithoutNumbersInTheNamesGivesNoValue();

    void theMedianOfTheRunsDecides();
    void aValueMissingInOneRunMissesTheGoal();
    void withoutRunsNoGoalIsMet();
    void theLimitItselfIsMet();
    void atLeastMeansNotLess();
    void theTableShowsGoalsMedianAndRange();
};

void TestComparison::aLineOfTheTableIsAGoal()
{
    const auto goals = readGoals(QStringLiteral("tree; value by path ;time;find/10;bare/10; at least ; 2.5\n"
                                                "fix;fixes in a second;items_per_second;fix;-;at most;1e4"));
    QCOMPARE(goals.size(), std::size_t(2));
    QCOMPARE(goals[0].subject, QStringLiteral("tree"));
    QCOMPARE(goals[0].what, QStringLiteral("value by path"));
    QCOMPARE(goals[0].figure, QStringLiteral("time"));
    QCOMPARE(goals[0].measured, QStringLiteral("find/10"));
    QCOMPARE(goals[0].reference, QStringLiteral("bare/10"));
    QVERIFY(goals[0].relation == Goal::Relation::AtLeast);
    QCOMPARE(goals[0].limit, 2.5);
    QCOMPARE(goals[1].reference, QString());
    QVERIFY(goals[1].relation == Goal::Relation::AtMost);
    QCOMPARE(goals[1].limit, 10000.0);
}

void TestComparison::emptyLinesAndCommentsAreSkipped()
{
    QCOMPARE(readGoals(QStringLiteral("\n# a; comment\n   \n\t# another\n")).size(), std::size_t(0));
}

void TestComparison::aWrongLineIsNamed_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("failure");
    QTest::newRow("columns") << "a;b;time;c;d;at most"
                             << "Line 2: 7 columns expected, 6 found";
    QTest::newRow("empty") << "a;b;time; ;d;at most;1"
                           << "Line 2: an empty column";
    QTest::newRow("relation") << "a;b;time;c;d;below;1"
                              << "Line 2: neither \"at most\" nor \"at least\": below";
    QTest::newRow("limit") << "a;b;time;c;d;at most;one"
                           << "Line 2: not a number: one";
    QTest::newRow("growth") << "a;b;growth;c/10;-;at most;1"
                            << "Line 2: growth needs a reference";
}

void TestComparison::aWrongLineIsNamed()
{
    QFETCH(QString, line);
    QTEST(failureOf([&line] { (void)readGoals(QStringLiteral("# goals\n") + line); }), "failure");
}

void TestComparison::theMedianIsTheMiddleOne()
{
    QCOMPARE(*median({5.0, 1.0, 100.0, 3.0, 4.0}), 4.0);
    QCOMPARE(*median({7.0}), 7.0);
}

void TestComparison::theMedianOfAnEvenNumberIsTheMeanOfTheTwoInTheMiddle()
{
    QCOMPARE(*median({100.0, 1.0, 3.0, 2.0}), 2.5);
}

void TestComparison::thereIsNoMedianOfNothing()
{
    QVERIFY(!median({}));
}

void TestComparison::theTimeIsTheLeastOfTheRepetitions()
{
    const Run run = runOf({repetition("find", 12.0), repetition("find", 9.0), repetition("find", 30.0)});
    QCOMPARE(*run.time(QStringLiteral("find")), 9.0);
}

void TestComparison::timesAreInNanoseconds_data()
{
    QTest::addColumn<QByteArray>("unit");
    QTest::addColumn<double>("time");
    QTest::newRow("ns") << QByteArray("ns") << 3.0;
    QTest::newRow("us") << QByteArray("us") << 3e3;
    QTest::newRow("ms") << QByteArray("ms") << 3e6;
    QTest::newRow("s") << QByteArray("s") << 3e9;
}

void TestComparison::timesAreInNanoseconds()
{
    QFETCH(QByteArray, unit);
    const Run run = runOf({repetition("find", 3.0).replace("\"ns\"", '"' + unit + '"')});
    QTEST(*run.time(QStringLiteral("find")), "time");
}

void TestComparison::anUnknownUnitGivesNoTime()
{
    QVERIFY(!runOf({repetition("find", 3.0).replace("\"ns\"", "\"h\"")}).time(QStringLiteral("find")));
}

void TestComparison::realTimeCountsWhereTheNameSaysSo()
{
    const Run run = runOf({repetition("a/real_time", 3.0), repetition("a/manual_time", 4.0), repetition("a", 5.0)});
    QCOMPARE(*run.time(QStringLiteral("a/real_time")), 1000.0);
    QCOMPARE(*run.time(QStringLiteral("a/manual_time")), 1000.0);
    QCOMPARE(*run.time(QStringLiteral("a")), 5.0);
}

void TestComparison::aggregatesAndFailedRepetitionsDoNotCount()
{
    const Run run = runOf({repetition("find", 9.0), repetition("find", 1.0, ", \"error_occurred\": true"),
                           repetition("find", 2.0).replace("\"iteration\"", "\"aggregate\""),
                           repetition("broken", 3.0, ", \"error_occurred\": true")});
    QCOMPARE(*run.time(QStringLiteral("find")), 9.0);
    QVERIFY(!run.time(QStringLiteral("broken")));
}

void TestComparison::aCounterIsTheMedianOfTheRepetitions()
{
    const Run run = runOf({repetition("a", 1.0, ", \"bytes\": 10"), repetition("a", 1.0, ", \"bytes\": 90"),
                           repetition("a", 1.0, ", \"bytes\": 20"), repetition("b", 1.0)});
    QCOMPARE(*run.counter(QStringLiteral("a"), QStringLiteral("bytes")), 20.0);
    QVERIFY(!run.counter(QStringLiteral("b"), QStringLiteral("bytes")));
    QVERIFY(!run.counter(QStringLiteral("c"), QStringLiteral("bytes")));
}

void TestComparison::textThatIsNoOutputOfABenchmarkIsRefused()
{
    const QString failure = QStringLiteral("Not the output of a benchmark program");
    QCOMPARE(failureOf([] { Run run{QByteArray()}; }), failure);
    QCOMPARE(failureOf([] { Run run(R"({"benchmarks": 3})"); }), failure);
    QCOMPARE(failureOf([] { Run run(R"({"benchmarks": [{"run_ty)"); }), failure);
}

void TestComparison::aRatioIsFormedInsideARun()
{
    const Run run = runOf({repetition("find", 9.0, ", \"bytes\": 10"), repetition("bare", 12.0, ", \"bytes\": 4")});
    const QString find = QStringLiteral("find");
    const QString bare = QStringLiteral("bare");
    QCOMPARE(*run.valueFor(goalOf(QStringLiteral("time"), find, bare)), 0.75);
    QCOMPARE(*run.valueFor(goalOf(QStringLiteral("bytes"), find, bare)), 2.5);
}

void TestComparison::withoutReferenceTheFigureItselfCounts()
{
    const Run run = runOf({repetition("find", 9.0, ", \"bytes\": 10")});
    QCOMPARE(*run.valueFor(goalOf(QStringLiteral("time"), QStringLiteral("find"), QString())), 9.0);
    QCOMPARE(*run.valueFor(goalOf(QStringLiteral("bytes"), QStringLiteral("find"), QString())), 10.0);
}

void TestComparison::aMissingBenchmarkGivesNoValue()
{
    const Run run = runOf({repetition("find", 9.0)});
    const QString time = QStringLiteral("time");
    QVERIFY(!run.valueFor(goalOf(time, QStringLiteral("find"), QStringLiteral("bare"))));
    QVERIFY(!run.valueFor(goalOf(time, QStringLiteral("bare"), QStringLiteral("find"))));
    QVERIFY(!run.valueFor(goalOf(time, QStringLiteral("bare"), QString())));
}

void TestComparison::aReferenceOfZeroGivesNoValue()
{
    const Run run = runOf({repetition("find", 9.0), repetition("none", 0.0), repetition("nothing", 0.0)});
    const QString time = QStringLiteral("time");
    QVERIFY(!run.valueFor(goalOf(time, QStringLiteral("find"), QStringLiteral("none"))));
    QVERIFY(!run.valueFor(goalOf(time, QStringLiteral("nothing"), QStringLiteral("none"))));
    QCOMPARE(*run.valueFor(goalOf(time, QStringLiteral("none"), QStringLiteral("find"))), 0.0);
}

void TestComparison::growthIsTheExponentBetweenTheNumbersInTheNames_data()
{
    QTest::addColumn<QByteArray>("measured");
    QTest::addColumn<QByteArray>("reference");
    QTest::addColumn<double>("exponent");
    QTest::newRow("linear") << repetition("fill/1000", 5000.0) << repetition("fill/10", 50.0) << 1.0;
    QTest::newRow("square") << repetition("fill/1000", 500000.0) << repetition("fill/10", 50.0) << 2.0;
    QTest::newRow("none") << repetition("fill/1000", 50.0) << repetition("fill/10", 50.0) << 0.0;
    QTest::newRow("named numbers") << repetition("fill/rows:1000", 500.0) << repetition("fill/rows:10", 50.0) << 0.5;
    QTest::newRow("kind of time") << repetition("fill/100/process_time", 50.0)
                                  << repetition("fill/10/process_time", 5.0) << 1.0;
}

void TestComparison::growthIsTheExponentBetweenTheNumbersInTheNames()
{
    QFETCH(QByteArray, measured);
    QFETCH(QByteArray, reference);
    const auto nameOf = [](const QByteArray& entry) { return QString::fromLatin1(entry.split('"')[3]); };
    const auto value =
        runOf({measured, reference}).valueFor(goalOf(QStringLiteral("growth"), nameOf(measured), nameOf(reference)));
    QVERIFY(value);
    QTEST(*value, "exponent");
}

void TestComparison::growthWithoutNumbersInTheNamesGivesNoValue()
{
    const Run run = runOf({repetition("fill/1000", 50.0), repetition("fill", 5.0)});
    QVERIFY(!run.valueFor(goalOf(QStringLiteral("growth"), QStringLiteral("fill/1000"), QStringLiteral("fill"))));
    QVERIFY(!run.valueFor(goalOf(QStringLiteral("growth"), QStringLiteral("fill/1000"), QStringLiteral("fill/1000"))));
}

void TestComparison::theMedianOfTheRunsDecides()
{
    const Goal goal = goalOf(QStringLiteral("time"), QStringLiteral("a"), QString());
    const Run disturbed = runOf({repetition("a", 50.0)});
    const Run fast = runOf({repetition("a", 0.5)});
    const Outcome good = outcome(goal, {disturbed, fast, fast});
    QCOMPARE(good.values, (std::vector<double>{0.5, 0.5, 50.0}));
    QCOMPARE(*good.median(), 0.5);
    QVERIFY(good.isMet());
    const Outcome bad = outcome(goal, {disturbed, fast, disturbed});
    QCOMPARE(*bad.median(), 50.0);
    QVERIFY(!bad.isMet());
}

void TestComparison::aValueMissingInOneRunMissesTheGoal()
{
    const Goal goal = goalOf(QStringLiteral("time"), QStringLiteral("a"), QString());
    const Outcome result = outcome(goal, {runOf({repetition("a", 0.5)}), runOf({repetition("b", 0.5)})});
    QVERIFY(!result.median());
    QVERIFY(!result.isMet());
}

void TestComparison::withoutRunsNoGoalIsMet()
{
    QVERIFY(!outcome(goalOf(QStringLiteral("time"), QStringLiteral("a"), QString()), {}).isMet());
}

void TestComparison::theLimitItselfIsMet()
{
    const Goal goal = goalOf(QStringLiteral("time"), QStringLiteral("a"), QString());
    QVERIFY(goal.isMetBy(1.0));
    QVERIFY(goal.isMetBy(0.0));
    QVERIFY(!goal.isMetBy(1.001));
    QVERIFY(!goal.isMetBy(std::nan("")));
}

void TestComparison::atLeastMeansNotLess()
{
    Goal goal = goalOf(QStringLiteral("time"), QStringLiteral("a"), QString());
    goal.relation = Goal::Relation::AtLeast;
    QVERIFY(goal.isMetBy(1.0));
    QVERIFY(goal.isMetBy(1.001));
    QVERIFY(!goal.isMetBy(0.999));
    QVERIFY(!goal.isMetBy(std::nan("")));
}

void TestComparison::theTableShowsGoalsMedianAndRange()
{
    const Goal goal = goalOf(QStringLiteral("time"), QStringLiteral("a"), QString());
    const QString table = toTable({Outcome{goal, {0.25, 0.5, 4.0}}, Outcome{goal, {2.0}}, Outcome{goal, {}}});
    const QStringList lines = table.split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 6); // heading, three goals, the sum and the end
    const auto simplified = [&lines](int line) { return lines[line].simplified(); };
    QCOMPARE(simplified(0), QStringLiteral("subject what goal measured least to greatest result"));
    QCOMPARE(simplified(1), QStringLiteral("tree a tree at most 1 0.5 0.25 to 4 pass"));
    QCOMPARE(simplified(2), QStringLiteral("tree a tree at most 1 2 2 to 2 FAIL"));
    QCOMPARE(simplified(3), QStringLiteral("tree a tree at most 1 missing FAIL"));
    QCOMPARE(simplified(4), QStringLiteral("1 of 3 goals met"));
}

DFL_TEST_MAIN_WITH(TestComparison, QCoreApplication)
#include "tst_comparison.moc"
