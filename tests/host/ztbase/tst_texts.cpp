#include "support/testmain.h"
#include "ztbase/brix/texts.h"

class TestTexts : public QObject
{
    Q_OBJECT
private slots:
    void aTextThatIsShortEnoughIsWhole()
    {
        QCOMPARE(Brix::Beginning(QString(), 3), QString());
        QCOMPARE(Brix::Beginning(QStringLiteral("a\nb"), 3), QStringLiteral("a\nb"));
    }

    void ofALongerOneTheBeginningIsLeft()
    {
        QCOMPARE(Brix::Beginning(QStringLiteral("Bonn"), 3), QStringLiteral("Bon\u2026"));
    }

    void aTextIsCutBetweenCharacters()
    {
        const QString character = QString::fromUcs4(U"\U0001F4E1");
        QCOMPARE(Brix::Beginning(character.repeated(3), 4), character.repeated(2) + QChar(0x2026));
        QCOMPARE(Brix::Beginning(QLatin1Char('x') + character.repeated(3), 4),
                 QLatin1Char('x') + character + QChar(0x2026));
        QCOMPARE(Brix::OneLine(QStringLiteral("aa") + character, 3), QStringLiteral("aa\u2026"));
        QCOMPARE(Brix::OneLine(QLatin1Char('a') + character + character, 3), QStringLiteral("a\u2026"));
    }

    void aLineHasNoControlCharactersAndSingleBlanks()
    {
        QCOMPARE(Brix::OneLine(QStringLiteral("Bonn"), 4), QStringLiteral("Bonn"));
        QCOMPARE(Brix::OneLine(QStringLiteral(" a\r\n\tb\x01 c "), 10), QStringLiteral("a b c"));
    }

    void aLineIsNoLongerThanAllowedWithItsEllipsis()
    {
        QCOMPARE(Brix::OneLine(QStringLiteral("Bonn a"), 4), QStringLiteral("Bon\u2026"));
        QCOMPARE(Brix::OneLine(QString(1000000, QLatin1Char('a')), 3), QStringLiteral("aa\u2026"));
        QCOMPARE(Brix::OneLine(QString(1000000, QLatin1Char(' ')) + QLatin1Char('a'), 10), QString(QChar(0x2026)));
    }

    void anAmpersandInAMenuIsOne()
    {
        QCOMPARE(Brix::MenuText(QStringLiteral("Search & rescue &&")), QStringLiteral("Search && rescue &&&&"));
    }
};

DFL_TEST_MAIN_WITH(TestTexts, QCoreApplication)
#include "tst_texts.moc"
