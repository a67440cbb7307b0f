#include "historybench.h"
#include "historytest.h"
#include "support/testmain.h"

#include <QProcess>

using namespace historybench;

namespace {

constexpr int manyStations = 400; // so that most of the time a result is being written

/// A program that stores results FIRST, FIRST + 1, ...
class Writer
{
public:
    Writer(const QString& path, int first, int count, int stations)
    {
        m_process.setProcessChannelMode(QProcess::SeparateChannels);
        m_process.start(QStringLiteral(WRITER),
                        {path, QString::number(first), QString::number(count), QString::number(stations)});
    }

    /// How many results it has said are stored.
    int stored()
    {
        m_output += m_process.readAllStandardOutput();
        return m_output.count("stored\n");
    }

    bool waitForStored(int count)
    {
        while (stored() < count) {
            if (!m_process.waitForReadyRead(60000))
                return false;
        }
        return true;
    }

    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    bool waitForSuccess()
    {
        m_process.waitForFinished(60000);
        if (m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0)
            return true;
        qWarning("%s", m_process.readAllStandardError().constData());
        return false;
    }

private:
    QProcess m_process;
    QByteArray m_output;
};

bool areWhole(const std::vector<DfResult>& results, int stations)
{
    return std::all_of(results.begin(), results.end(), [stations](const DfResult& result) {
        bool isWhole = static_cast<int>(result.stations.size()) == stations;
        for (std::size_t i = 0; isWhole && i < result.stations.size(); ++i)
            isWhole = result.stations[i].stationId == static_cast<int>(i) + 1;
        return isWhole;
    });
}

} // namespace

class TestResultStoreProcesses : public HistoryTest
{
    Q_OBJECT

private slots:
    void aProcessKilledWhileItStoresLeavesWholeResults()
    {
        int first = 1;
        for (int round = 1; round <= 8; ++round) {
            Writer writer(path(), first, 1000000, manyStations);
            QVERIFY(writer.waitForStored(2 * round));
            writer.kill();
            const int told = first - 1 + writer.stored();

            const std::vector<DfResult> found = allOf(path());
            const int last = static_cast<int>(found.size());
            QVERIFY2(last >= told, "a result is lost that was said to be stored");
            QCOMPARE(frequencies(found), ascending(1, last));
            QVERIFY(areWhole(found, manyStations));
            const OtherConnection other(path());
            QCOMPARE(other.run(QStringLiteral("SELECT count(*) FROM station_result")).toInt(), last * manyStations);
            QCOMPARE(other.run(QStringLiteral("PRAGMA integrity_check")).toString(), QStringLiteral("ok"));
            first = last + 1;
        }
    }

    void aProcessKilledAtItsStartLeavesAFileThatOpens()
    {
        for (int round = 0; round < 10; ++round) {
            Writer writer(path(), 1, 1000000, 1);
            // Somewhere between an empty file and a few results.
            QTRY_VERIFY(QFileInfo::exists(path()));
            writer.kill();
            QVERIFY(areWhole(allOf(path()), 1));
            for (const QString& name : QDir(folderPath()).entryList(QDir::Files))
                QVERIFY(QFile::remove(inFolder(name)));
        }
    }

    void twoProcessesStoreIntoOneFile()
    {
        Writer one(path(), 1, 200, 20);
        Writer two(path(), 201, 200, 20);
        // A third one reads meanwhile.
        QVERIFY(one.waitForStored(10));
        QVERIFY(areWhole(allOf(path()), 20));
        QVERIFY(one.waitForSuccess());
        QVERIFY(two.waitForSuccess());
        const std::vector<DfResult> found = allOf(path());
        QCOMPARE(frequencies(found), ascending(1, 400));
        QVERIFY(areWhole(found, 20));
    }
};

DFL_TEST_MAIN_WITH(TestResultStoreProcesses, QCoreApplication)
#include "tst_resultstore_processes.moc"
