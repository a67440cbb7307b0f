#include "settingstext.h"
#include "support/testmain.h"

#include <limits>

using namespace VelmarGui;

class TestSettingsText : public QObject
{
    Q_OBJECT

private slots:
    void onlyADetailElementWithContentCountsAsDetail()
    {
        QVERIFY(hasDetail("<DF_Settings><Detail><QualityThreshold>5</QualityThreshold></Detail></DF_Settings>"));
        QVERIFY(!hasDetail("<DF_Settings><Detail/></DF_Settings>"));
        QVERIFY(!hasDetail("<DF_Settings><detail></detail></DF_Settings>"));
        QVERIFY(!hasDetail(QString()));
    }

    void theFractionOfTheLevelThresholdIsCutOff_data()
    {
        QTest::addColumn<QString>("settings");
        QTest::addColumn<QString>("form");
        QTest::newRow("positive") << "<LevelThreshold>12.5</LevelThreshold>"
                                  << "<LevelThreshold>12</LevelThreshold>";
        QTest::newRow("negative: cut, not rounded") << "<LevelThreshold>-12.7</LevelThreshold>"
                                                    << "<LevelThreshold>-12</LevelThreshold>";
        QTest::newRow("long fraction") << "<LevelThreshold>0.30000000000000004</LevelThreshold>"
                                       << "<LevelThreshold>0</LevelThreshold>";
        QTest::newRow("nothing before the point") << "<LevelThreshold>.5</LevelThreshold>"
                                                  << "<LevelThreshold></LevelThreshold>";
        QTest::newRow("text around") << "<A>1.5</A><LevelThreshold>7.9</LevelThreshold><B>2.5</B>"
                                     << "<A>1.5</A><LevelThreshold>7</LevelThreshold><B>2.5</B>";
        QTest::newRow("only the first") << "<LevelThreshold>1.5</LevelThreshold><LevelThreshold>2.5</LevelThreshold>"
                                        << "<LevelThreshold>1</LevelThreshold><LevelThreshold>2.5</LevelThreshold>";
        // The first point behind the tag counts, wherever it stands, up to the next end tag.
        QTest::newRow("whole number before another with a fraction")
            << "<LevelThreshold>3</LevelThreshold><LevelThreshold>2.5</LevelThreshold>"
            << "<LevelThreshold>3</LevelThreshold><LevelThreshold>2</LevelThreshold>";
    }

    void theFractionOfTheLevelThresholdIsCutOff()
    {
        QFETCH(QString, settings);
        QFETCH(QString, form);
        QCOMPARE(toFormText(settings), form);
    }

    void otherTextsReachTheFormAsTheyAre_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << "";
        QTest::newRow("no threshold") << "<FrequencyOffset>1.5</FrequencyOffset>";
        QTest::newRow("whole number") << "<LevelThreshold>12</LevelThreshold><A>x</A>";
        QTest::newRow("point without end tag") << "<LevelThreshold>12.5";
        QTest::newRow("point behind the last end tag") << "<LevelThreshold>12</LevelThreshold><A>1.5</A>";
        QTest::newRow("other spelling") << "<levelthreshold>12.5</levelthreshold>";
    }

    void otherTextsReachTheFormAsTheyAre()
    {
        QFETCH(QString, text);
        QCOMPARE(toFormText(text), text);
    }

    void emptyDetailsNeverReachTheSettings()
    {
        QCOMPARE(fromFormText("<DF_Settings><Detail/><DFMode>Norm</DFMode><Detail/></DF_Settings>"),
                 QString("<DF_Settings><DFMode>Norm</DFMode></DF_Settings>"));
        QCOMPARE(fromFormText("<detail/><Detail></Detail>"), QString("<detail/><Detail></Detail>"));
    }

    void theSettingsHaveTheirOwnNameForTheFrequencyOffset()
    {
        QCOMPARE(fromFormText("<DFFrequencyOffset>-5</DFFrequencyOffset>"),
                 QString("<FrequencyOffset>-5</FrequencyOffset>"));
        QCOMPARE(fromFormText("<dffrequencyoffset/>"), QString("<dffrequencyoffset/>"));
        QCOMPARE(fromFormText("<FrequencyOffset>1</FrequencyOffset>"), QString("<FrequencyOffset>1</FrequencyOffset>"));
    }

    void halvesAreRoundedUp_data()
    {
        QTest::addColumn<double>("number");
        QTest::addColumn<int>("whole");
        QTest::newRow("2.5") << 2.5 << 3;
        QTest::newRow("-2.5") << -2.5 << -2;
        QTest::newRow("12.5") << 12.5 << 13;
        QTest::newRow("-12.7") << -12.7 << -13;
        QTest::newRow("-12.3") << -12.3 << -12;
        QTest::newRow("0.49") << 0.49 << 0;
        QTest::newRow("0") << 0.0 << 0;
        QTest::newRow("-0.5") << -0.5 << 0;
        QTest::newRow("-1") << -1.0 << -1;
        QTest::newRow("beyond the greatest int") << 1e300 << std::numeric_limits<int>::max();
        QTest::newRow("beyond the least int") << -1e300 << std::numeric_limits<int>::min();
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << std::numeric_limits<int>::max();
        QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << 0;
    }

    void halvesAreRoundedUp()
    {
        QFETCH(double, number);
        QFETCH(int, whole);
        QCOMPARE(roundHalfUp(number), whole);
    }
};

DFL_TEST_MAIN_WITH(TestSettingsText, QCoreApplication)
#include "tst_settingstext.moc"
