#include "app/historyview.h"
#include "app/mainwindow.h"
#include "app/session.h"
#include "fakesource.h"

#include "support/freshtree.h"
#include "support/testmain.h"

#include <QAction>
#include <QCheckBox>
#include <QDateTimeEdit>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QStatusBar>
#include <QTemporaryDir>

using workbench::DfResult;
using workbench::HistoryChoice;
using workbench::HistoryView;
using workbench::ResultHistory;

namespace {

QDateTime noon()
{
    return {QDate(2026, 5, 14), QTime(12, 0), Qt::UTC};
}

DfResult resultAt(const QDateTime& time, double frequency)
{
    DfResult result = FakeSource::result();
    result.date = time.date();
    result.time = time.time();
    result.frequency = frequency;
    return result;
}

/// A view on a history of its own.
struct Bench
{
    explicit Bench(const HistoryChoice& choice = {}, const QString& file = QStringLiteral("history.sqlite"),
                   int limit = 100)
        : history(std::make_unique<ResultHistory>(folder.filePath(file), nullptr, limit))
    {
        history->setChoice(choice);
        view = std::make_unique<HistoryView>(*history);
        view->show();
    }

    template <typename T>
    [[nodiscard]] T* field(const char* name) const
    {
        T* const found = view->findChild<T*>(QLatin1String(name));
        if (found == nullptr)
            qFatal("There is no %s", name);
        return found;
    }
    [[nodiscard]] QCheckBox* box(const char* name) const { return field<QCheckBox>(name); }
    [[nodiscard]] QDateTimeEdit* time(const char* name) const { return field<QDateTimeEdit>(name); }
    [[nodiscard]] QDoubleSpinBox* hertz(const char* name) const { return field<QDoubleSpinBox>(name); }
    [[nodiscard]] QString text(const char* name) const { return field<QLabel>(name)->text(); }

    QTemporaryDir folder;
    std::unique_ptr<ResultHistory> history;
    std::unique_ptr<HistoryView> view;
};

} // namespace

class TestHistoryView : public QObject
{
    Q_OBJECT
private slots:
    void theChoiceIsShownAsItIs();
    void withoutAChoiceNothingIsCheckedAndTheEditsAreDisabled();
    void whatIsNotCheckedFollowsTheLatestResultAndIsNotChosen();
    void whatIsCheckedStaysWhenResultsCome();
    void whatALatestResultDoesNotTellStaysAsItWas();
    void everyFieldIsPartOfTheChoice();
    void aTypedTimeCountsWhenItIsEntered();
    void everyFieldHasItsKey();
    void theFieldsGrowWithTheFont();
    void whatIsStoredAndFoundIsSaid();
    void anIncompleteAnswerIsSaid();
    void aHistoryThatCannotBeUsedDisablesTheFieldsWithTheReason();
    void theHistoryMayGoBeforeTheView();

    void theWindowHasADockForIt();
    void theStatusBarSaysWhetherResultsAreStored();
};

void TestHistoryView::theChoiceIsShownAsItIs()
{
    const HistoryChoice choice{noon(), noon().addSecs(3661), 155.5e6, 250.0};
    const Bench bench(choice);
    QVERIFY(bench.box("HistoryHasFrom")->isChecked() && bench.box("HistoryHasTo")->isChecked());
    QVERIFY(bench.box("HistoryHasFrequency")->isChecked());
    QCOMPARE(bench.time("HistoryFrom")->text(), QStringLiteral("2026-05-14 12:00:00"));
    QCOMPARE(bench.time("HistoryTo")->text(), QStringLiteral("2026-05-14 13:01:01"));
    QCOMPARE(bench.hertz("HistoryFrequency")->text(), QStringLiteral("155500000 Hz"));
    QCOMPARE(bench.hertz("HistoryTolerance")->text(), QStringLiteral("250 Hz"));
    QVERIFY(bench.history->choice() == choice);
}

void TestHistoryView::withoutAChoiceNothingIsCheckedAndTheEditsAreDisabled()
{
    const Bench bench;
    for (const char* const name : {"HistoryHasFrom", "HistoryHasTo", "HistoryHasFrequency"}) {
        QVERIFY(!bench.box(name)->isChecked());
        QVERIFY(bench.box(name)->toolTip().startsWith(QStringLiteral("Unchecked: ")));
    }
    for (const char* const name : {"HistoryFrom", "HistoryTo", "HistoryFrequency"})
        QVERIFY(!bench.field<QWidget>(name)->isEnabled());
    QVERIFY(bench.hertz("HistoryTolerance")->isEnabled());
    QCOMPARE(bench.hertz("HistoryTolerance")->value(), 1000.0);
}

void TestHistoryView::whatIsNotCheckedFollowsTheLatestResultAndIsNotChosen()
{
    const Bench bench;
    bench.view->follow(resultAt(noon(), 98.5e6));
    QCOMPARE(bench.time("HistoryFrom")->dateTime(), noon());
    QCOMPARE(bench.time("HistoryTo")->dateTime(), noon());
    QCOMPARE(bench.hertz("HistoryFrequency")->value(), 98.5e6);
    QVERIFY(bench.history->choice() == HistoryChoice());
}

void TestHistoryView::whatIsCheckedStaysWhenResultsCome()
{
    const Bench bench;
    bench.view->follow(resultAt(noon(), 98.5e6));
    bench.box("HistoryHasFrom")->click();
    bench.box("HistoryHasFrequency")->click();
    bench.view->follow(resultAt(noon().addSecs(60), 5e6));
    QCOMPARE(bench.time("HistoryFrom")->dateTime(), noon());
    QCOMPARE(bench.time("HistoryTo")->dateTime(), noon().addSecs(60));
    QCOMPARE(bench.hertz("HistoryFrequency")->value(), 98.5e6);
    QVERIFY((bench.history->choice() == HistoryChoice{noon(), {}, 98.5e6, 1000.0}));
    bench.box("HistoryHasFrom")->click();
    bench.box("HistoryHasFrequency")->click();
    QVERIFY(bench.history->choice() == HistoryChoice());
}

void TestHistoryView::whatALatestResultDoesNotTellStaysAsItWas()
{
    const Bench bench;
    bench.view->follow(resultAt(noon(), 98.5e6));
    DfResult unknown = resultAt(noon().addSecs(60), 5e6);
    unknown.time = QTime();
    unknown.frequency.reset();
    bench.view->follow(unknown);
    QCOMPARE(bench.time("HistoryFrom")->dateTime(), noon());
    QCOMPARE(bench.hertz("HistoryFrequency")->value(), 98.5e6);
}

void TestHistoryView::everyFieldIsPartOfTheChoice()
{
    const Bench bench({noon(), noon(), 98.5e6, 0.0});
    bench.time("HistoryFrom")->setDateTime(noon().addSecs(-5));
    QCOMPARE(bench.history->choice().from, noon().addSecs(-5));
    bench.time("HistoryTo")->setDateTime(noon().addSecs(5));
    QCOMPARE(bench.history->choice().to, noon().addSecs(5));
    bench.hertz("HistoryFrequency")->setValue(7e6);
    QCOMPARE(bench.history->choice().frequency.value(), 7e6);
    bench.hertz("HistoryTolerance")->setValue(33.0);
    QCOMPARE(bench.history->choice().tolerance, 33.0);
}

void TestHistoryView::aTypedTimeCountsWhenItIsEntered()
{
    const Bench bench({noon(), {}, {}, 0.0});
    QDateTimeEdit* const from = bench.time("HistoryFrom");
    from->setCurrentSection(QDateTimeEdit::HourSection);
    from->setSelectedSection(QDateTimeEdit::HourSection);
    QTest::keyClicks(from, "07");
    QCOMPARE(bench.history->choice().from, noon());
    QTest::keyClick(from, Qt::Key_Return);
    QCOMPARE(bench.history->choice().from, noon().addSecs(-5 * 3600));
}

void TestHistoryView::everyFieldHasItsKey()
{
    const Bench bench;
    QStringList keys;
    for (const QCheckBox* const box : bench.view->findChildren<QCheckBox*>())
        keys += QKeySequence::mnemonic(box->text()).toString();
    for (const QLabel* const label : bench.view->findChildren<QLabel*>()) {
        if (label->buddy() != nullptr)
            keys += QKeySequence::mnemonic(label->text()).toString();
    }
    QCOMPARE(keys.size(), 4);
    QVERIFY(!keys.contains(QString()));
    QCOMPARE(keys.removeDuplicates(), 0);
}

void TestHistoryView::theFieldsGrowWithTheFont()
{
    const Bench bench;
    QFont font = bench.view->font();
    font.setPointSize(24);
    bench.view->setFont(font);
    bench.view->adjustSize();
    const QDateTimeEdit* const from = bench.time("HistoryFrom");
    QVERIFY(from->width() > from->fontMetrics().horizontalAdvance(QStringLiteral("2026-05-14 12:00:00")));
    QVERIFY(from->height() >= from->fontMetrics().height());
}

void TestHistoryView::whatIsStoredAndFoundIsSaid()
{
    const Bench bench;
    QCOMPARE(bench.text("HistoryFound"), QStringLiteral("No position has been computed from stored results yet."));
    QCOMPARE(bench.text("HistoryState"), bench.history->file() + QStringLiteral(": results stored since the start: 0"));
    bench.history->keep(resultAt(noon(), 98.5e6));
    QTRY_COMPARE(bench.text("HistoryState"),
                 bench.history->file() + QStringLiteral(": results stored since the start: 1"));
    bench.history->locate(resultAt(noon(), 98.5e6), 0);
    QTRY_COMPARE(bench.text("HistoryFound"), explanation(workbench::NoFix::TooFewBearings));

    DfResult located = resultAt(noon(), 5e6);
    located.stations[0].position = workbench::GeoPosition{0.0, 0.0};
    located.stations[0].azimuth = 26.7;
    located.stations[1].position = workbench::GeoPosition{0.0, 1.0};
    located.stations[1].azimuth = 333.3;
    bench.history->keep(located);
    bench.history->locate(located, 0);
    QTRY_COMPARE(bench.text("HistoryFound"),
                 QStringLiteral("Position computed. Stored results: 1, usable bearings: 2."));
    bench.box("HistoryHasFrom")->click();
    QCOMPARE(bench.text("HistoryFound"), QStringLiteral("No position has been computed from stored results yet."));
}

void TestHistoryView::anIncompleteAnswerIsSaid()
{
    const Bench bench({}, QStringLiteral("history.sqlite"), 1);
    DfResult located = resultAt(noon(), 5e6);
    located.stations[0].position = workbench::GeoPosition{0.0, 0.0};
    located.stations[0].azimuth = 26.7;
    located.stations[1].position = workbench::GeoPosition{0.0, 1.0};
    located.stations[1].azimuth = 333.3;
    bench.history->keep(located);
    bench.history->keep(located);
    bench.history->locate(located, 0);
    QTRY_COMPARE(bench.text("HistoryFound"), QStringLiteral("Position computed. Stored results: 1, usable bearings: 2. "
                                                            "There are more results; these are the newest."));
}

void TestHistoryView::aHistoryThatCannotBeUsedDisablesTheFieldsWithTheReason()
{
    const Bench bench({}, QStringLiteral("gone/history.sqlite"));
    QVERIFY(bench.hertz("HistoryTolerance")->isEnabled());
    QTRY_VERIFY(!bench.hertz("HistoryTolerance")->isEnabled());
    QVERIFY(!bench.box("HistoryHasFrom")->isEnabled());
    QVERIFY2(bench.text("HistoryState").contains(QStringLiteral("there is no folder")),
             qPrintable(bench.text("HistoryState")));
    QCOMPARE(bench.hertz("HistoryTolerance")->parentWidget()->toolTip(), bench.text("HistoryState"));
}

void TestHistoryView::theHistoryMayGoBeforeTheView()
{
    Bench bench;
    bench.history.reset();
    QVERIFY(!bench.hertz("HistoryTolerance")->isEnabled());
    QCOMPARE(bench.text("HistoryState"), QStringLiteral("Results are not stored any more."));
    bench.box("HistoryHasFrom")->setChecked(true);
    bench.view->follow(resultAt(noon(), 5e6));
}

void TestHistoryView::theWindowHasADockForIt()
{
    const testsupport::FreshTree tree;
    const QTemporaryDir folder;
    workbench::MainWindow window;
    ResultHistory history(folder.filePath("history.sqlite"));
    workbench::Session session(std::make_unique<FakeSource>());
    window.follow(session);
    window.offerHistory(history);
    auto* const dock = window.findChild<QDockWidget*>("HistoryDock");
    QVERIFY(dock != nullptr);
    QCOMPARE(dock->toggleViewAction()->text(), QStringLiteral("&History"));
    emit session.driver()->resultPublished(resultAt(noon(), 7e6));
    QCOMPARE(window.findChild<QDoubleSpinBox*>("HistoryFrequency")->value(), 7e6);
}

void TestHistoryView::theStatusBarSaysWhetherResultsAreStored()
{
    const testsupport::FreshTree tree;
    const QTemporaryDir folder;
    workbench::MainWindow window;
    {
        ResultHistory history(folder.filePath("history.sqlite"));
        workbench::Session session(std::make_unique<FakeSource>());
        window.follow(session);
        window.offerHistory(history);
        auto* const summary = window.findChild<QLabel*>("HistorySummary");
        QCOMPARE(summary->text(), QStringLiteral("Stored: 0"));
        QCOMPARE(summary->toolTip(), history.file());
        history.keep(resultAt(noon(), 7e6));
        QTRY_COMPARE(summary->text(), QStringLiteral("Stored: 1"));

        DfResult timeless = resultAt(noon(), 7e6);
        timeless.time = QTime();
        history.keep(timeless);
        emit session.driver()->resultPublished(timeless); // clears what was said before
        QCOMPARE(summary->text(), QStringLiteral("Not stored"));
        QVERIFY(summary->toolTip().endsWith(QStringLiteral("the result has no time of day")));
        QTRY_COMPARE(window.statusBar()->currentMessage(), summary->toolTip());
    }
    QCoreApplication::processEvents(); // history and session may go before the window
}

DFL_TEST_MAIN(TestHistoryView)
#include "tst_historyview.moc"
