#include "commandtable.h"

#include "support/recordingobserver.h"
#include "support/testmain.h"

#include <QStringList>

using testsupport::RecordingObserver;
using namespace VelmarGui;

class TestCommandTable : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void theTwentyCommandsStandInTheHostsOrder();
    void theIssuedCommandsHaveTheirKeys();
    void anotherCommandIsSelected();
    void theSameCommandIsAnnouncedAnew();
    void issuedTwiceItReachesTheHostTwice();
    void theIssuerHearsItsOwnCommand();
    void aCommandTheHostDoesNotKnowChangesNothing();
    void aHostThatAnswersInsideTheNotificationIsHeard();

private:
    std::unique_ptr<values::ValueSelection> m_commands;
};

void TestCommandTable::init()
{
    QStringList names;
    for (const char* const name : CommandNames)
        names.append(QLatin1String(name));
    m_commands = std::make_unique<values::ValueSelection>();
    m_commands->AddItems(names);
    m_commands->Select(0);
}

void TestCommandTable::theTwentyCommandsStandInTheHostsOrder()
{
    const QStringList expected{
        QStringLiteral("No command"),
        QStringLiteral("Start job"),
        QStringLiteral("Stop job"),
        QStringLiteral("Terminate job"),
        QStringLiteral("Edit job"),
        QStringLiteral("Start scan"),
        QStringLiteral("Stop scan"),
        QStringLiteral("To report"),
        QStringLiteral("To database"),
        QStringLiteral("Start single DF"),
        QStringLiteral("Start cyclic DF"),
        QStringLiteral("Stop cyclic DF"),
        QStringLiteral("To job"),
        QStringLiteral("Continue Scan"),
        QStringLiteral("Pause Scan"),
        QStringLiteral("Start MScan"),
        QStringLiteral("Show Locate"),
        QStringLiteral("Start new job"),
        QStringLiteral("Add to report history"),
        QStringLiteral("Save before report"),
    };
    QCOMPARE(m_commands->GetItemCount(), 20);
    for (int key = 0; key < expected.size(); ++key)
        QCOMPARE(m_commands->GetItemNameForKey(key), expected.at(key));
}

void TestCommandTable::theIssuedCommandsHaveTheirKeys()
{
    QCOMPARE(StartSingleDfCommand, 9);
    QCOMPARE(StartCyclicDfCommand, 10);
    QCOMPARE(StopCyclicDfCommand, 11);
}

void TestCommandTable::anotherCommandIsSelected()
{
    RecordingObserver host;
    m_commands->AddObserver(&host);
    issueCommand(*m_commands, 9);
    QCOMPARE(m_commands->GetCurrentKey(), 9);
    QCOMPARE(host.codes, (std::vector<TChangeCode>{ChangeContent, ChangeExternal}));
}

void TestCommandTable::theSameCommandIsAnnouncedAnew()
{
    m_commands->Select(10);
    RecordingObserver host;
    m_commands->AddObserver(&host);
    issueCommand(*m_commands, 10);
    QCOMPARE(m_commands->GetCurrentKey(), 10);
    // Not set once more: the host would hear of a setting from outside.
    QCOMPARE(host.codes, (std::vector<TChangeCode>{ChangeContent}));
}

void TestCommandTable::issuedTwiceItReachesTheHostTwice()
{
    RecordingObserver host;
    m_commands->AddObserver(&host);
    issueCommand(*m_commands, 11);
    issueCommand(*m_commands, 11);
    QCOMPARE(host.count(ChangeContent), 2);
    QCOMPARE(host.count(ChangeExternal), 1);
}

void TestCommandTable::theIssuerHearsItsOwnCommand()
{
    RecordingObserver everyone[3];
    for (RecordingObserver& observer : everyone)
        m_commands->AddObserver(&observer);
    issueCommand(*m_commands, 9);
    issueCommand(*m_commands, 9);
    for (const RecordingObserver& observer : everyone)
        QCOMPARE(observer.count(ChangeContent), 2);
}

void TestCommandTable::aCommandTheHostDoesNotKnowChangesNothing()
{
    m_commands->DeleteItem(9);
    RecordingObserver host;
    m_commands->AddObserver(&host);
    issueCommand(*m_commands, 9);
    QCOMPARE(m_commands->GetCurrentKey(), 0);
    QVERIFY(host.codes.empty());
}

void TestCommandTable::aHostThatAnswersInsideTheNotificationIsHeard()
{
    std::vector<int> keys;
    RecordingObserver host([&](Observable*, TChangeCode code) {
        if (code != ChangeContent)
            return;
        keys.push_back(m_commands->GetCurrentKey());
        if (keys.size() == 1)
            issueCommand(*m_commands, 11);
    });
    m_commands->AddObserver(&host);
    issueCommand(*m_commands, 10);
    QCOMPARE(keys, (std::vector<int>{10, 11}));
    QCOMPARE(m_commands->GetCurrentKey(), 11);
}

DFL_TEST_MAIN_WITH(TestCommandTable, QCoreApplication)
#include "tst_commandtable.moc"
