#include "app/tracemodel.h"
#include "app/traceview.h"

#include "support/testmain.h"

#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>

using workbench::TraceModel;
using workbench::TraceView;

namespace {

const QDateTime noon(QDate(2024, 5, 6), QTime(12, 0, 0, 5));

TraceRecord trace(const QString& text)
{
    return {text, QStringLiteral("some/unit"), 142};
}

QString textAt(const TraceModel& model, int row)
{
    return model.index(row, TraceModel::TextColumn).data().toString();
}

} // namespace

class TestTraceView : public QObject
{
    Q_OBJECT
private slots:
    void aTraceIsARowWithTimeTextSourceAndLine();
    void theOldestTracesGo();
    void whilePausedNothingMovesAndNothingIsLost();
    void whilePausedTheOldestTracesGoToo();
    void clearForgetsShownAndHeldBackTraces();
    void copiedTracesAreLinesWithTabulators();
    void theViewCopiesTheSelectionElseEverything();
    void theCheckBoxSwitchesTheComponentsBitOnly();
    void theCheckBoxStartsWithTheMask();
    void theViewSaysHowManyTracesAreHeldBack();
    void theViewFollowsTheEndUnlessScrolledBack();
};

void TestTraceView::aTraceIsARowWithTimeTextSourceAndLine()
{
    TraceModel model;
    model.append(trace("Missing DF Value Enabled"), noon);
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(model.columnCount(), 4);
    const QStringList headers{"Time", "Text", "Source", "Line"};
    const QStringList texts{"12:00:00.005", "Missing DF Value Enabled", "some/unit", "142"};
    for (int column = 0; column < 4; ++column) {
        QCOMPARE(model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString(), headers[column]);
        QCOMPARE(model.index(0, column).data().toString(), texts[column]);
    }
}

void TestTraceView::theOldestTracesGo()
{
    TraceModel model;
    for (int i = 0; i <= TraceModel::MaximumCount; ++i)
        model.append(trace(QString::number(i)), noon);
    QCOMPARE(model.rowCount(), int(TraceModel::MaximumCount));
    QCOMPARE(textAt(model, 0), QStringLiteral("1"));
    QCOMPARE(textAt(model, model.rowCount() - 1), QString::number(TraceModel::MaximumCount));
}

void TestTraceView::whilePausedNothingMovesAndNothingIsLost()
{
    TraceModel model;
    QSignalSpy inserted(&model, &TraceModel::rowsInserted);
    model.append(trace("a"), noon);
    model.setPaused(true);
    model.append(trace("b"), noon);
    model.append(trace("c"), noon);
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(model.heldBackCount(), 2);
    model.setPaused(false);
    QCOMPARE(model.heldBackCount(), 0);
    QCOMPARE(model.rowCount(), 3);
    QCOMPARE(textAt(model, 2), QStringLiteral("c"));
    QCOMPARE(inserted.count(), 2);
}

void TestTraceView::whilePausedTheOldestTracesGoToo()
{
    TraceModel model;
    model.append(trace("first"), noon);
    model.setPaused(true);
    for (int i = 0; i <= TraceModel::MaximumCount; ++i)
        model.append(trace(QString::number(i)), noon);
    QCOMPARE(model.heldBackCount(), int(TraceModel::MaximumCount));
    model.setPaused(false);
    QCOMPARE(model.rowCount(), int(TraceModel::MaximumCount));
    QCOMPARE(textAt(model, 0), QStringLiteral("1"));
}

void TestTraceView::clearForgetsShownAndHeldBackTraces()
{
    TraceModel model;
    model.append(trace("a"), noon);
    model.setPaused(true);
    model.append(trace("b"), noon);
    model.clear();
    QCOMPARE(model.rowCount(), 0);
    model.setPaused(false);
    QCOMPARE(model.rowCount(), 0);
}

void TestTraceView::copiedTracesAreLinesWithTabulators()
{
    TraceModel model;
    model.append(trace("a"), noon);
    model.append(trace("b"), noon);
    QCOMPARE(model.textOf({1}), QStringLiteral("12:00:00.005\tb\tsome/unit\t142\n"));
    QCOMPARE(model.textOf({}), QString());
}

void TestTraceView::theViewCopiesTheSelectionElseEverything()
{
    TraceView view;
    view.append(trace("a"));
    view.append(trace("b"));
    auto* const copy = view.findChild<QPushButton*>("CopyTraces");
    copy->click();
    QCOMPARE(QApplication::clipboard()->text().count('\n'), 2);
    view.findChild<QTableView*>("Traces")->selectRow(1);
    copy->click();
    QCOMPARE(QApplication::clipboard()->text().count('\n'), 1);
    QVERIFY(QApplication::clipboard()->text().contains("\tb\t"));
}

void TestTraceView::theCheckBoxSwitchesTheComponentsBitOnly()
{
    ErrorHandler::Instance()->SetTraceMask(0x41);
    TraceView view;
    auto* const box = view.findChild<QCheckBox*>("ComponentTraces");
    QVERIFY(!box->isChecked());
    box->setChecked(true);
    QCOMPARE(ErrorHandler::Instance()->GetTraceMask(), 0x61);
    box->setChecked(false);
    QCOMPARE(ErrorHandler::Instance()->GetTraceMask(), 0x41);
    ErrorHandler::Instance()->SetTraceMask(0);
}

void TestTraceView::theCheckBoxStartsWithTheMask()
{
    ErrorHandler::Instance()->SetTraceMask(ErrorHandler::ComponentTraces);
    const TraceView view;
    QVERIFY(view.findChild<QCheckBox*>("ComponentTraces")->isChecked());
    ErrorHandler::Instance()->SetTraceMask(0);
}

void TestTraceView::theViewSaysHowManyTracesAreHeldBack()
{
    TraceView view;
    auto* const pause = view.findChild<QCheckBox*>("PauseTraces");
    const auto* const label = view.findChild<QLabel*>("HeldBack");
    pause->setChecked(true);
    view.append(trace("a"));
    QCOMPARE(label->text(), QStringLiteral("1 held back"));
    pause->setChecked(false);
    QCOMPARE(label->text(), QString());
    QCOMPARE(view.model()->rowCount(), 1);
}

void TestTraceView::theViewFollowsTheEndUnlessScrolledBack()
{
    TraceView view;
    view.resize(600, 200);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    const auto* const table = view.findChild<QTableView*>("Traces");
    for (int i = 0; i < 100; ++i)
        view.append(trace(QString::number(i)));
    QTRY_VERIFY(table->verticalScrollBar()->maximum() > 0);
    QTRY_COMPARE(table->verticalScrollBar()->value(), table->verticalScrollBar()->maximum());
    table->verticalScrollBar()->setValue(3);
    view.append(trace("further"));
    QCoreApplication::processEvents();
    QCOMPARE(table->verticalScrollBar()->value(), 3);
}

DFL_TEST_MAIN(TestTraceView)
#include "tst_traceview.moc"
