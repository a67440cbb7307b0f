#include "errortext.h"

#include "support/testmain.h"

class TestErrorText : public QObject
{
    Q_OBJECT

private slots:
    void knownCodesHaveTexts_data();
    void knownCodesHaveTexts();
    void otherCodesAreShownAsNumbers_data();
    void otherCodesAreShownAsNumbers();
};

void TestErrorText::knownCodesHaveTexts_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");

    QTest::newRow("-17") << -17 << "No signal";
    QTest::newRow("-14") << -14 << "Timeout";
    QTest::newRow("-3") << -3 << "Not in time range";
    QTest::newRow("-2") << -2 << "Scan range undefined";
    QTest::newRow("-1") << -1 << "Not in scan range";
}

void TestErrorText::knownCodesHaveTexts()
{
    QFETCH(int, code);
    QFETCH(QString, text);
    QCOMPARE(VelmarGui::errorText(code), text);
}

void TestErrorText::otherCodesAreShownAsNumbers_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");

    QTest::newRow("0") << 0 << "0";
    QTest::newRow("5") << 5 << "5";
    QTest::newRow("-4") << -4 << "-4";
    QTest::newRow("1000000") << 1000000 << "1000000";
    QTest::newRow("lowest") << std::numeric_limits<int>::min() << "-2147483648";
}

void TestErrorText::otherCodesAreShownAsNumbers()
{
    QFETCH(int, code);
    QFETCH(QString, text);
    QCOMPARE(VelmarGui::errorText(code), text);
}

DFL_TEST_MAIN_WITH(TestErrorText, QCoreApplication)
#include "tst_errortext.moc"
