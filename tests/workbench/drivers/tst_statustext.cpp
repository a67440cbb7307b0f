#include "drivers/statustext.h"
#include "support/testmain.h"

using namespace workbench;

class StatusTextTest : public QObject
{
    Q_OBJECT
private slots:
    void withoutStationsTheTextIsEmpty() { QCOMPARE(statusText({}), QString()); }

    void aStationIsToldInTokens()
    {
        StationInfo station;
        station.id = 3;
        station.name = QStringLiteral("North");
        station.position = GeoPosition{50.25, -12.5};
        station.range = FrequencyRange{20e6, 3e9};
        station.scan = true;
        station.wideband = true;
        QCOMPARE(statusText({station}),
                 QStringLiteral("DFID3#N_North#LO-12.500000#LA50.250000#ST49#FB20000000#FE3000000000"));
    }

    void whatIsUnknownHasNoToken()
    {
        StationInfo station;
        station.id = 1;
        station.name = QStringLiteral("A");
        QCOMPARE(statusText({station}), QStringLiteral("DFID1#N_A#ST1"));
    }

    void theStatusWordAddsUpWhatAStationCan()
    {
        StationInfo station;
        station.id = 1;
        station.available = false;
        QCOMPARE(statusText({station}), QStringLiteral("DFID1#N_#ST0"));
        station.scan = true;
        QCOMPARE(statusText({station}), QStringLiteral("DFID1#N_#ST16"));
        station.scan = false;
        station.wideband = true;
        QCOMPARE(statusText({station}), QStringLiteral("DFID1#N_#ST32"));
    }

    void stationsFollowOneAnother()
    {
        StationInfo first;
        first.id = 1;
        StationInfo second;
        second.id = 2;
        QCOMPARE(statusText({first, second}), QStringLiteral("DFID1#N_#ST1#DFID2#N_#ST1"));
    }

    void namesCannotBreakTheText()
    {
        StationInfo station;
        station.id = 1;
        station.name = QStringLiteral("A#B");
        QCOMPARE(statusText({station}), QStringLiteral("DFID1#N_A B#ST1"));
        station.name = QStringLiteral("xDFID7");
        QCOMPARE(statusText({station}), QStringLiteral("DFID1#N_xDF ID7#ST1"));
    }
};

DFL_TEST_MAIN_WITH(StatusTextTest, QCoreApplication)
#include "tst_statustext.moc"
