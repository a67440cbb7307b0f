#include "resultcell.h"

#include "columnfitter.h"
#include "support/testmain.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTableWidget>

#include <memory>

using VelmarGui::ColumnFitter;
using VelmarGui::ResultCell;

namespace {

/// A table with one cell.
struct Table : QTableWidget
{
    Table()
        : QTableWidget(1, 1)
    {
        setItem(0, 0, cell);
    }
    [[nodiscard]] int NeededWidth() const { return sizeHintForIndex(model()->index(0, 0)).width(); }

    ResultCell* cell = new ResultCell;
};

} // namespace

class TestResultCell : public QObject
{
    Q_OBJECT

private slots:
    void itShowsItsTextAsEveryCell();
    void aReplacedTextIsNotTold();
    void aTextThatStaysIsNoOther();
    void aTextWithItsUnitIsComparedAsAWhole_data();
    void aTextWithItsUnitIsComparedAsAWhole();
    void aCoordinateIsFormattedOnceForItsText();
    void aCoordinateThatWasReplacedIsFormattedAgain();
    void aTextThatOthersSetIsTold();
    void otherRolesAreKept();
    void aCloneShowsTheSame();

    void aColumnIsWideEnoughForEveryText_data();
    void aColumnIsWideEnoughForEveryText();
    void aColumnIsNeverNarrowed();
    void oneUnusualTextMakesNoOtherTooNarrow_data();
    void oneUnusualTextMakesNoOtherTooNarrow();
    void aLongTextWidensNoFurtherThanItNeeds();
    void aColumnFollowsAnotherFont();
};

void TestResultCell::itShowsItsTextAsEveryCell()
{
    ResultCell cell;
    QVERIFY(cell.Replace(QStringLiteral("12.5°")));
    QCOMPARE(cell.text(), QStringLiteral("12.5°"));
    QCOMPARE(cell.data(Qt::EditRole).toString(), QStringLiteral("12.5°"));
    QCOMPARE(cell.Text(), QStringLiteral("12.5°"));
}

void TestResultCell::aReplacedTextIsNotTold()
{
    Table table;
    QSignalSpy told(table.model(), &QAbstractItemModel::dataChanged);
    table.cell->Replace(QStringLiteral("North"));
    QCOMPARE(told.count(), 0);
    QCOMPARE(table.item(0, 0)->text(), QStringLiteral("North"));
}

void TestResultCell::aTextThatStaysIsNoOther()
{
    ResultCell cell;
    QVERIFY(!cell.Replace(QString()));
    QVERIFY(cell.Replace(QStringLiteral("North")));
    QVERIFY(!cell.Replace(QStringLiteral("North")));
    QVERIFY(cell.Replace(QStringLiteral("South")));
}

void TestResultCell::aTextWithItsUnitIsComparedAsAWhole_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("unit");
    QTest::addColumn<bool>("isAnother");
    QTest::newRow("same") << "12.5%"
                          << "12.5"
                          << "%" << false;
    QTest::newRow("another number of the same length") << "12.5%"
                                                       << "12.6"
                                                       << "%" << true;
    QTest::newRow("another unit of the same length") << "12.5%"
                                                     << "12.5"
                                                     << "'" << true;
    QTest::newRow("longer") << "12.5%"
                            << "112.5"
                            << "%" << true;
    QTest::newRow("without unit") << "12.5"
                                  << "12.5"
                                  << "%" << true;
    QTest::newRow("empty text") << "%"
                                << ""
                                << "%" << false;
    QTest::newRow("split elsewhere") << "12.5%"
                                     << "12"
                                     << ".5%" << false;
}

void TestResultCell::aTextWithItsUnitIsComparedAsAWhole()
{
    QFETCH(QString, before);
    QFETCH(QString, text);
    QFETCH(QString, unit);
    ResultCell cell;
    cell.Replace(before);
    QTEST(cell.Replace(text, unit), "isAnother");
    QCOMPARE(cell.text(), text + unit);
}

void TestResultCell::aCoordinateIsFormattedOnceForItsText()
{
    ResultCell cell;
    QVERIFY(cell.ReplaceByCoordinate(QStringLiteral("8.5")));
    const QChar* const characters = cell.Text().constData();
    QVERIFY(!cell.ReplaceByCoordinate(QStringLiteral("8.5")));
    QCOMPARE(cell.Text().constData(), characters);
    QCOMPARE(cell.text(), QStringLiteral("8°30.000'"));
    QVERIFY(!cell.ReplaceByCoordinate(QStringLiteral("8.50")));
    QVERIFY(cell.ReplaceByCoordinate(QStringLiteral("aboard")));
    QCOMPARE(cell.text(), QStringLiteral("aboard"));
    QVERIFY(cell.ReplaceByCoordinate(QString()));
    QCOMPARE(cell.text(), QString());
}

void TestResultCell::aCoordinateThatWasReplacedIsFormattedAgain()
{
    ResultCell cell;
    cell.ReplaceByCoordinate(QStringLiteral("8.5"));
    cell.Replace(QStringLiteral("---"));
    QVERIFY(cell.ReplaceByCoordinate(QStringLiteral("8.5")));
    cell.Replace(QStringLiteral("8"), QStringLiteral("%"));
    QVERIFY(cell.ReplaceByCoordinate(QStringLiteral("8.5")));
    cell.setText(QStringLiteral("North"));
    QVERIFY(cell.ReplaceByCoordinate(QStringLiteral("8.5")));
    QCOMPARE(cell.text(), QStringLiteral("8°30.000'"));
}

void TestResultCell::aTextThatOthersSetIsTold()
{
    Table table;
    QSignalSpy told(table.model(), &QAbstractItemModel::dataChanged);
    table.cell->setText(QStringLiteral("A"));
    table.cell->setText(QStringLiteral("A"));
    QCOMPARE(told.count(), 1);
    table.cell->Replace(QStringLiteral("B"));
    table.cell->setText(QStringLiteral("A"));
    QCOMPARE(told.count(), 2);
    QCOMPARE(table.cell->text(), QStringLiteral("A"));
    ResultCell alone;
    alone.setText(QStringLiteral("A"));
    QCOMPARE(alone.text(), QStringLiteral("A"));
}

void TestResultCell::otherRolesAreKept()
{
    Table table;
    QSignalSpy told(table.model(), &QAbstractItemModel::dataChanged);
    table.cell->setToolTip(QStringLiteral("explained"));
    QCOMPARE(told.count(), 1);
    table.cell->Replace(QStringLiteral("North"));
    QCOMPARE(table.cell->toolTip(), QStringLiteral("explained"));
    QCOMPARE(table.cell->text(), QStringLiteral("North"));
}

void TestResultCell::aCloneShowsTheSame()
{
    ResultCell cell;
    cell.Replace(QStringLiteral("North"));
    const std::unique_ptr<QTableWidgetItem> clone(cell.clone());
    QCOMPARE(clone->type(), int(ResultCell::Type));
    QCOMPARE(clone->text(), QStringLiteral("North"));
}

void TestResultCell::aColumnIsWideEnoughForEveryText_data()
{
    QTest::addColumn<QString>("alphabet");
    QTest::newRow("numbers") << "0123456789.-+°%' dBµVkMGHz";
    QTest::newRow("sentences") << "ABCDEFTVWYabcdefijlorstvwy .,'";
    QTest::newRow("other scripts") << QString::fromUtf8("a東京éǘ\tß");
}

void TestResultCell::aColumnIsWideEnoughForEveryText()
{
    QFETCH(QString, alphabet);
    QRandomGenerator random(3);
    for (const int pointSize : {7, 9, 13, 24}) {
        Table table;
        QFont font = table.font();
        font.setPointSize(pointSize);
        table.setFont(font);
        auto* const fitter = new ColumnFitter(table);
        table.setColumnWidth(0, 10);
        for (int turn = 0; turn < 200; ++turn) {
            QString text;
            for (int i = random.bounded(12); i >= 0; --i)
                text += alphabet.at(random.bounded(alphabet.size()));
            table.cell->Replace(text);
            fitter->Fit(0, 0, text);
            QVERIFY2(table.columnWidth(0) > table.NeededWidth(), qPrintable(text));
        }
    }
}

void TestResultCell::aColumnIsNeverNarrowed()
{
    Table table;
    auto* const fitter = new ColumnFitter(table);
    table.setColumnWidth(0, 500);
    table.cell->Replace(QStringLiteral("1"));
    fitter->Fit(0, 0, table.cell->Text());
    QCOMPARE(table.columnWidth(0), 500);
}

void TestResultCell::oneUnusualTextMakesNoOtherTooNarrow_data()
{
    QTest::addColumn<QString>("first");
    QTest::newRow("lines") << "12.5 and more\nof it\non further lines";
    QTest::newRow("long") << QString(500, QLatin1Char('i'));
    QTest::newRow("combining") << QString::fromUtf8("e\u0301e\u0301e\u0301e\u0301e\u0301");
}

void TestResultCell::oneUnusualTextMakesNoOtherTooNarrow()
{
    QFETCH(QString, first);
    Table table;
    auto* const fitter = new ColumnFitter(table);
    table.cell->Replace(first);
    fitter->Fit(0, 0, first);
    table.setColumnWidth(0, 10);
    const QString number = QStringLiteral("123.4°");
    table.cell->Replace(number);
    fitter->Fit(0, 0, number);
    QVERIFY(table.columnWidth(0) > table.NeededWidth());
}

void TestResultCell::aLongTextWidensNoFurtherThanItNeeds()
{
    Table table;
    auto* const fitter = new ColumnFitter(table);
    const QString text(500, QLatin1Char('i'));
    table.cell->Replace(text);
    fitter->Fit(0, 0, text);
    QCOMPARE(table.columnWidth(0), table.NeededWidth() + 1);
}

void TestResultCell::aColumnFollowsAnotherFont()
{
    Table table;
    auto* const fitter = new ColumnFitter(table);
    const QString text = QStringLiteral("123.4°");
    table.cell->Replace(text);
    table.setColumnWidth(0, 10);
    fitter->Fit(0, 0, text);
    QFont font = table.font();
    font.setPointSize(40);
    table.setFont(font);
    QVERIFY(table.columnWidth(0) < table.NeededWidth());
    fitter->Fit(0, 0, text);
    QVERIFY(table.columnWidth(0) > table.NeededWidth());
}

DFL_TEST_MAIN(TestResultCell)
#include "tst_resultcell.moc"
