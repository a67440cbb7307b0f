#include "resulttime.h"

#include "support/testmain.h"

using VelmarGui::localTimeOfDay;

class TestResultTime : public QObject
{
    Q_OBJECT

private slots:
    void utcBecomesTheLocalTimeOfDay_data();
    void utcBecomesTheLocalTimeOfDay();
    void noResultYetIsNoTime_data();
    void noResultYetIsNoTime();
    void aTextThatCannotBeReadIsAnEmptyTime_data();
    void aTextThatCannotBeReadIsAnEmptyTime();
};

// The tests run in a zone one hour ahead of UTC, two in summer.
void TestResultTime::utcBecomesTheLocalTimeOfDay_data()
{
    QTest::addColumn<QString>("utc");
    QTest::addColumn<QString>("local");

    QTest::newRow("winter") << "2026-01-15 10:20:30"
                            << "11:20:30";
    QTest::newRow("summer") << "2026-07-15 10:20:30"
                            << "12:20:30";
    QTest::newRow("past midnight") << "2026-01-15 23:20:30"
                                   << "00:20:30";
    QTest::newRow("last second of winter time") << "2026-03-29 00:59:59"
                                                << "01:59:59";
    QTest::newRow("first second of summer time") << "2026-03-29 01:00:00"
                                                 << "03:00:00";
    QTest::newRow("with a fraction") << "2026-01-15 10:20:30.999"
                                     << "11:20:30";
    QTest::newRow("with T") << "2026-01-15T10:20:30"
                            << "11:20:30";
    QTest::newRow("the year before the first clocks") << "1969-12-31 10:20:30"
                                                      << "11:20:30";
}

void TestResultTime::utcBecomesTheLocalTimeOfDay()
{
    QFETCH(QString, utc);
    QFETCH(QString, local);
    const std::optional<QString> time = localTimeOfDay(utc);
    QVERIFY(time.has_value());
    QCOMPARE(*time, local);
}

void TestResultTime::noResultYetIsNoTime_data()
{
    QTest::addColumn<QString>("utc");

    QTest::newRow("nothing") << QString();
    QTest::newRow("empty") << "";
    QTest::newRow("the first second") << "1970-01-01 00:00:00";
    QTest::newRow("the last day") << "1970-12-31 23:59:59";
    QTest::newRow("the year alone") << "1970";
    QTest::newRow("a longer number") << "19700";
}

void TestResultTime::noResultYetIsNoTime()
{
    QFETCH(QString, utc);
    QVERIFY(!localTimeOfDay(utc).has_value());
}

void TestResultTime::aTextThatCannotBeReadIsAnEmptyTime_data()
{
    QTest::addColumn<QString>("utc");

    QTest::newRow("a word") << "now";
    QTest::newRow("a date alone") << "2026-01-15";
    QTest::newRow("two blanks") << "2026-01-15  10:20:30";
    QTest::newRow("a blank at the end") << "2026-01-15 10:20:30 ";
    QTest::newRow("a zone of its own") << "2026-01-15 10:20:30Z";
    QTest::newRow("a blank before 1970") << " 1970-01-01 00:00:00";
    QTest::newRow("no such day") << "2026-02-30 10:20:30";
}

void TestResultTime::aTextThatCannotBeReadIsAnEmptyTime()
{
    QFETCH(QString, utc);
    const std::optional<QString> time = localTimeOfDay(utc);
    QVERIFY(time.has_value());
    QCOMPARE(*time, QString());
}

DFL_TEST_MAIN_WITH(TestResultTime, QCoreApplication)
#include "tst_resulttime.moc"
