// The script that runs the benchmark programs, with programs that only say what they have measured.

#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace {

constexpr const char* oneAndTwo =
    "echo '{\"benchmarks\": ["
    "{\"run_type\": \"iteration\", \"run_name\": \"one\", \"cpu_time\": 1, \"time_unit\": \"ns\"},"
    "{\"run_type\": \"iteration\", \"run_name\": \"two\", \"cpu_time\": 2, \"time_unit\": \"ns\"}"
    "]}'\n";

/// A build folder with the comparison and with programs that are made up.
class Build
{
public:
    Build()
    {
        QDir(m_folder.path()).mkpath(QStringLiteral("benchmarks"));
        QDir(m_folder.path()).mkpath(QStringLiteral("bin"));
        QFile::link(QStringLiteral(COMPARISON), path("bin/compare-benchmarks"));
    }

    void addProgram(const char* subject, const QByteArray& script) const
    {
        write(QByteArray("benchmarks/bench_") + subject, "#!/usr/bin/env bash\n" + script);
    }
    void addGoals(const QByteArray& goals) const { write("goals.csv", goals); }

    struct Outcome
    {
        int exitCode;
        QString table;
        QString messages;
    };
    [[nodiscard]] Outcome measure(const QStringList& subjects) const
    {
        QProcess script;
        script.start(QStringLiteral(MEASURE), QStringList{m_folder.path(), path("goals.csv")} + subjects);
        script.waitForFinished();
        return {script.exitStatus() == QProcess::NormalExit ? script.exitCode() : -1,
                QString::fromUtf8(script.readAllStandardOutput()), QString::fromUtf8(script.readAllStandardError())};
    }
    [[nodiscard]] QStringList measurements() const
    {
        return QDir(path("measurements")).entryList(QDir::Files, QDir::Name);
    }

private:
    [[nodiscard]] QString path(const QByteArray& name) const { return m_folder.filePath(QString::fromUtf8(name)); }
    void write(const QByteArray& name, const QByteArray& content) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.setPermissions(file.permissions() | QFile::ExeOwner);
    }

    QTemporaryDir m_folder;
};

} // namespace

class TestMeasure : public QObject
{
    Q_OBJECT

private slots:
    void everyProgramRunsFiveTimes();
    void aMissedGoalShowsInTheExitCode();
    void aProgramThatFailsMissesItsGoalsAndTheOthersAreStillCompared_data();
    void aProgramThatFailsMissesItsGoalsAndTheOthersAreStillCompared();
    void aProgramThatFailsWithoutGoalsShowsInTheExitCode();
};

void TestMeasure::everyProgramRunsFiveTimes()
{
    const Build build;
    build.addProgram("good", oneAndTwo);
    build.addGoals("good; half; time; one; two; at most; 0.5\n");
    const Build::Outcome outcome = build.measure({"good"});
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY2(outcome.table.contains("1 of 1 goals met"), qPrintable(outcome.table));
    QCOMPARE(build.measurements(),
             (QStringList{"good.1.json", "good.2.json", "good.3.json", "good.4.json", "good.5.json"}));
}

void TestMeasure::aMissedGoalShowsInTheExitCode()
{
    const Build build;
    build.addProgram("good", oneAndTwo);
    build.addGoals("good; too much; time; one; two; at most; 0.4\n");
    QCOMPARE(build.measure({"good"}).exitCode, 1);
}

void TestMeasure::aProgramThatFailsMissesItsGoalsAndTheOthersAreStillCompared_data()
{
    QTest::addColumn<QByteArray>("script");

    QTest::newRow("at once") << QByteArray("exit 3\n");
    QTest::newRow("after it has measured") << QByteArray(oneAndTwo) + "exit 3\n";
    QTest::newRow("in the middle of a line") << QByteArray("echo '{\"benchmarks\": ['\nexit 3\n");
    QTest::newRow("in its second run")
        << QByteArray(oneAndTwo) + "ran=\"$(dirname \"$0\")/ran\"\n[ -e \"$ran\" ] && exit 3\ntouch \"$ran\"\n";
}

void TestMeasure::aProgramThatFailsMissesItsGoalsAndTheOthersAreStillCompared()
{
    QFETCH(QByteArray, script);
    const Build build;
    build.addProgram("bad", script);
    build.addProgram("good", oneAndTwo);
    build.addGoals("bad; half; time; one; two; at most; 0.5\n"
                   "good; half; time; one; two; at most; 0.5\n");
    const Build::Outcome outcome = build.measure({"bad", "good"});
    QCOMPARE(outcome.exitCode, 1);
    QVERIFY2(outcome.table.contains("1 of 2 goals met"), qPrintable(outcome.table));
    QVERIFY2(outcome.table.contains("missing"), qPrintable(outcome.table));
    QVERIFY2(outcome.messages.contains("bad failed with exit code 3"), qPrintable(outcome.messages));
}

void TestMeasure::aProgramThatFailsWithoutGoalsShowsInTheExitCode()
{
    const Build build;
    build.addProgram("bad", "exit 3\n");
    build.addProgram("good", oneAndTwo);
    build.addGoals("good; half; time; one; two; at most; 0.5\n");
    const Build::Outcome outcome = build.measure({"bad", "good"});
    QVERIFY2(outcome.table.contains("1 of 1 goals met"), qPrintable(outcome.table));
    QCOMPARE(outcome.exitCode, 1);
}

DFL_TEST_MAIN_WITH(TestMeasure, QCoreApplication)
#include "tst_measure.moc"
