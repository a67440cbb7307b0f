#include "support/testmain.h"
#include "ztbase/brix/datetime.h"

using Brix::DateTime;

class TestDateTime : public QObject
{
    Q_OBJECT

private slots:
    void textsAreReadAsInstants_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("utc");
        QTest::newRow("T and Z") << "2026-05-04T12:30:15Z"
                                 << "2026-05-04 12:30:15";
        QTest::newRow("blank and Z") << "2026-05-04 12:30:15Z"
                                     << "2026-05-04 12:30:15";
        QTest::newRow("without zone: UTC") << "2026-05-04T12:30:15"
                                           << "2026-05-04 12:30:15";
        QTest::newRow("blank without zone: UTC") << "2026-05-04 12:30:15"
                                                 << "2026-05-04 12:30:15";
        QTest::newRow("fraction") << "2026-05-04T12:30:15.75Z"
                                  << "2026-05-04 12:30:15";
        QTest::newRow("long fraction") << "2026-05-04T12:30:15.123456789"
                                       << "2026-05-04 12:30:15";
        QTest::newRow("zone east") << "2026-05-04T12:30:15+02:30"
                                   << "2026-05-04 10:00:15";
        QTest::newRow("zone west over midnight") << "2026-05-04T23:30:15-01:00"
                                                 << "2026-05-05 00:30:15";
        QTest::newRow("leap day") << "2024-02-29T00:00:00Z"
                                  << "2024-02-29 00:00:00";
    }

    void textsAreReadAsInstants()
    {
        QFETCH(QString, text);
        QFETCH(QString, utc);
        const DateTime time = DateTime::fromString(text);
        QVERIFY(time.isValid());
        QCOMPARE(time.toString(DateTime::Utc_TimeZone), utc);
    }

    void otherTextsAreNoInstant_data()
    {
        QTest::addColumn<QString>("text");
        for (const char* text : {"", "nonsense", "2026-05-04", "12:30:15", "2026-05-04T12:30", "2026-13-04T12:30:15",
                                 "2026-02-29T12:30:15", "2026-05-04T24:30:15", "2026-05-04T12:60:15",
                                 "2026-05-04  12:30:15", " 2026-05-04T12:30:15", "2026-05-04T12:30:15 Z",
                                 "2026-05-04T12:30:15.Z", "2026-05-04T12:30:15Zx", "2026-05-04T12:30:15+0200"})
            QTest::newRow(*text != '\0' ? text : "empty") << QString(text);
    }

    void otherTextsAreNoInstant()
    {
        QFETCH(QString, text);
        const DateTime time = DateTime::fromString(text);
        QVERIFY(!time.isValid());
        QCOMPARE(time.toString(DateTime::Local_TimeZone), QString());
        QCOMPARE(time.toString(DateTime::Utc_TimeZone), QString());
    }

    void localTimeFollowsWinterAndSummerTime()
    {
        QCOMPARE(DateTime::fromString("2026-01-15T12:00:00Z").toString(DateTime::Local_TimeZone),
                 QString("2026-01-15 13:00:00"));
        QCOMPARE(DateTime::fromString("2026-07-15T12:00:00Z").toString(DateTime::Local_TimeZone),
                 QString("2026-07-15 14:00:00"));
        // The hour that local clocks show twice is unambiguous in UTC.
        QCOMPARE(DateTime::fromString("2026-10-25T00:30:00Z").toString(DateTime::Local_TimeZone),
                 QString("2026-10-25 02:30:00"));
        QCOMPARE(DateTime::fromString("2026-10-25T01:30:00Z").toString(DateTime::Local_TimeZone),
                 QString("2026-10-25 02:30:00"));
    }

    void aDefaultDateTimeIsNoInstant()
    {
        QVERIFY(!DateTime().isValid());
        QCOMPARE(DateTime().toString(DateTime::Local_TimeZone), QString());
    }
};

DFL_TEST_MAIN_WITH(TestDateTime, QCoreApplication)
#include "tst_datetime.moc"
