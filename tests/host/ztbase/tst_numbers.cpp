#include "support/testmain.h"
#include "ztbase/brix/numbers.h"

class TestNumbers : public QObject
{
    Q_OBJECT

private slots:
    void decimalTextsAreRead_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("number");
        QTest::newRow("whole") << "87" << 87.0;
        QTest::newRow("point") << "278.4" << 278.4;
        QTest::newRow("comma") << "278,4" << 278.4;
        QTest::newRow("blanks around") << "  12.5 \t" << 12.5;
        QTest::newRow("negative") << "-0,25" << -0.25;
        QTest::newRow("exponent") << "1e3" << 1000.0;
        QTest::newRow("leading point") << ".5" << 0.5;
        QTest::newRow("plus") << "+7" << 7.0;
    }

    void decimalTextsAreRead()
    {
        QFETCH(QString, text);
        QFETCH(double, number);
        bool ok = false;
        QCOMPARE(Brix::toDoubleEx(text, &ok), number);
        QVERIFY(ok);
    }

    void otherTextsAreNoNumber_data()
    {
        QTest::addColumn<QString>("text");
        for (const char* text :
             {"", "   ", "abc", "12x", "1 2", "1,2,3", "1,234.5", "1.234,5", "nan", "inf", "-inf", "1e999", "0x10"})
            QTest::newRow(*text != '\0' ? text : "empty") << QString(text);
    }

    void otherTextsAreNoNumber()
    {
        QFETCH(QString, text);
        bool ok = true;
        QCOMPARE(Brix::toDoubleEx(text, &ok), 0.0);
        QVERIFY(!ok);
    }

    void theReportIsOptional()
    {
        QCOMPARE(Brix::toDoubleEx("1,5"), 1.5);
        QCOMPARE(Brix::toDoubleEx("x"), 0.0);
    }
};

DFL_TEST_MAIN_WITH(TestNumbers, QCoreApplication)
#include "tst_numbers.moc"
