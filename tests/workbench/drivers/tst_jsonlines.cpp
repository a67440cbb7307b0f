#include "drivers/jsonlines.h"
#include "support/testmain.h"

using workbench::JsonLines;

class TestJsonLines : public QObject
{
    Q_OBJECT

private slots:
    void aValueIsFoundByItsWay()
    {
        const JsonLines lines("{\n\"a\": [\n1,\n{\"b\":\n2}]}");
        QCOMPARE(lines.lineOf(QString()), 1);
        QCOMPARE(lines.lineOf("a"), 2);
        QCOMPARE(lines.lineOf("a[0]"), 3);
        QCOMPARE(lines.lineOf("a[1]"), 4);
        QCOMPARE(lines.lineOf("a[1].b"), 4);
    }

    void whatIsNotThereIsWhereItsHolderIs()
    {
        const JsonLines lines("{\n\"a\": [\n1]}");
        QCOMPARE(lines.lineOf("a[7]"), 2);
        QCOMPARE(lines.lineOf("a[0].b.c"), 3);
        QCOMPARE(lines.lineOf("z"), 1);
    }

    void aMemberThatIsThereTwiceIsTold()
    {
        const JsonLines lines("{\"a\": 1,\n\"b\": {\"a\": 2},\n\"a\": 3}");
        QCOMPARE(lines.duplicates().size(), std::size_t(1));
        QCOMPARE(lines.duplicates()[0].path, QString("a"));
        QCOMPARE(lines.duplicates()[0].line, 3);
    }

    /// The ways of a text that is nested a thousand times would take a thousand times the memory of the text.
    void farBelowTheRootTheHolderStandsForAll()
    {
        QByteArray json;
        QString way;
        for (int level = 0; level < 40; ++level) {
            json += "[\n";
            way += "[0]";
        }
        json += QByteArray(40, ']');
        const JsonLines lines(json);
        QCOMPARE(lines.lineOf(way.left(3 * 16)), 17);
        QCOMPARE(lines.lineOf(way), 17);
        QVERIFY(lines.duplicates().empty());
    }

    void millionsOfDeepValuesTakeNoMoreRoomThanTheText()
    {
        const QByteArray json =
            QByteArray(1000, '[') + QByteArray("1,").repeated(2000000) + '1' + QByteArray(1000, ']');
        QVERIFY(JsonLines(json).duplicates().empty());
    }
};

DFL_TEST_MAIN_WITH(TestJsonLines, QCoreApplication)
#include "tst_jsonlines.moc"
