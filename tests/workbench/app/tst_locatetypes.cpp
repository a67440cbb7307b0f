#include "app/mainwindow.h"
#include "app/modalboxcloser.h"
#include "app/resulthistory.h"
#include "app/session.h"
#include "fakesource.h"
#include "map/mapview.h"
#include "shippednetwork.h"

#include "support/freshtree.h"
#include "support/testmain.h"
#include "support/treevalue.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"

#include <QLabel>
#include <QTemporaryDir>
#include <QToolBar>
#include <QToolButton>

#include <algorithm>

using namespace workbench;
using testsupport::at;

namespace {

/// The component at work, with a history in @p file if that is not empty.
struct Bench
{
    explicit Bench(const QString& file, std::unique_ptr<DfSource> source = shippedNetwork())
        : session(std::move(source))
    {
        QObject::connect(&closer, &ModalBoxCloser::closed, [this](const QString& text) { boxes += text; });
        window.follow(session);
        if (!file.isEmpty()) {
            history = std::make_unique<ResultHistory>(folder.filePath(file));
            QObject::connect(session.driver(), &DfDriver::measured, history.get(), &ResultHistory::keep);
            session.driver()->setHistory(history.get());
        }
        const auto error = session.start(QStringLiteral(COMPONENT),
                                         [this](QToolBar* toolBar, QWidget* panel) { window.place(toolBar, panel); });
        if (error)
            qFatal("%s", qPrintable(error->text()));
        window.show();
        QObject::connect(session.driver(), &DfDriver::resultPublished, &window, [this] { ++results; });
    }

    static void choose(const char* setting, const QString& text)
    {
        QVERIFY(at<values::ValueSelection>(handlerRoot() + QStringLiteral("Config/") + QLatin1String(setting))
                    ->Select(text, nullptr));
    }
    static void tune(double frequency)
    {
        at<values::DoubleValue>(QStringLiteral("/GLOBAL/Frequency"))->SetValue(frequency, nullptr);
    }
    [[nodiscard]] QToolButton* button(const char* name) const
    {
        return session.toolBar()->findChild<QToolButton*>(QLatin1String(name));
    }
    void measure()
    {
        const int before = results;
        button("DFStarter")->click();
        QTRY_COMPARE(results, before + 1);
    }
    /// A text of the window of detailed results, which is opened first.
    [[nodiscard]] QString detail(const char* name) const
    {
        emit button("DetailedResults")->pressed();
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            if (auto* const label = widget->findChild<QLabel*>(QLatin1String(name)))
                return label->text();
        }
        return QStringLiteral("(no such label)");
    }
    static bool isHriUsable()
    {
        return at<values::BoolValue>(componentRoot() + QStringLiteral("LocateHRIUsableIndicator"))->GetValue();
    }

    testsupport::FreshTree tree;
    QTemporaryDir folder;
    ModalBoxCloser closer;
    QStringList boxes;
    MainWindow window;
    std::unique_ptr<ResultHistory> history;
    Session session;
    int results = 0;
};

const QString file = QStringLiteral("history.sqlite");

} // namespace

class TestLocateTypes : public QObject
{
    Q_OBJECT
private slots:
    void theToolBarLocatesFromTheHistory();
    void theReportNamesTheRemoteStationsTheirRangesAndTheHistory();
    void outsideAllRangesTheToolBarWarnsAndTheDriverTellsWhy();
    void withAHistoryTheTypeIsServedAtEveryFrequency();
    void cyclicMeasuringEndsWithTheHistoryThatItNeeds();
    void aRemoteServiceAloneLetsCyclicMeasuringGoOn();
};

void TestLocateTypes::theToolBarLocatesFromTheHistory()
{
    Bench bench(file);
    bench.measure();
    QCOMPARE(bench.detail("m_pLocateTypeLabel"), QStringLiteral("Online"));
    const QString online = bench.detail("m_pCoordinateLabel");
    QVERIFY2(online.contains(QStringLiteral("11\u00b0")) && online.contains(QStringLiteral("50\u00b0")),
             qPrintable(online));

    Bench::choose("DFLocateType", QStringLiteral("History"));
    bench.measure();
    QCOMPARE(bench.detail("m_pLocateTypeLabel"), QStringLiteral("History"));
    QCOMPARE(bench.session.driver()->publishedHistory()->results, 2);
    QVERIFY(bench.detail("m_pCoordinateLabel") != online);
    const QString onMap = bench.window.findChild<MapView*>()->model()->fixText();
    QVERIFY2(onMap.contains(QStringLiteral("\nStored results: 2, usable bearings: ")), qPrintable(onMap));
    QVERIFY(bench.detail("m_pCoordinateLabel").contains(QStringLiteral("50\u00b0")));

    Bench::choose("DFLocateType", QStringLiteral("Online"));
    bench.measure();
    QCOMPARE(bench.detail("m_pLocateTypeLabel"), QStringLiteral("Online"));
    QCOMPARE(bench.boxes, QStringList());
}

void TestLocateTypes::theReportNamesTheRemoteStationsTheirRangesAndTheHistory()
{
    Bench bench(file);
    const auto labels = bench.session.toolBar()->findChildren<QLabel*>();
    const auto lamp = std::find_if(labels.begin(), labels.end(), [](const QLabel* label) {
        return label->toolTip() == QStringLiteral("Locate states");
    });
    QVERIFY(lamp != labels.end());
    QTest::mouseClick(*lamp, Qt::LeftButton);
    QTRY_COMPARE(bench.boxes.size(), 1);
    for (const char* const text : {"Aldermoor", "Harrow Point", "20.000 MHz - 3000.000 MHz", "Isenmark",
                                   "400.000 MHz - 3000.000 MHz", "Kestrel Ridge", "Stored results"})
        QVERIFY2(bench.boxes[0].contains(QLatin1String(text)), qPrintable(bench.boxes[0]));
}

void TestLocateTypes::outsideAllRangesTheToolBarWarnsAndTheDriverTellsWhy()
{
    Bench bench({});
    Bench::choose("DFLocateType", QStringLiteral("History"));
    QVERIFY(Bench::isHriUsable());
    bench.measure();
    QCOMPARE(bench.boxes, QStringList());
    Bench::tune(5e6); // below the range of every station
    QVERIFY(!Bench::isHriUsable());
    bench.measure();
    QCOMPARE(bench.boxes.size(), 1);
    QVERIFY2(bench.boxes[0].contains(QStringLiteral("Locate(History) is not available")), qPrintable(bench.boxes[0]));
    QCOMPARE(std::get<QString>(*bench.session.driver()->publishedFix()),
             QStringLiteral("No fix: there are no stored results."));
}

void TestLocateTypes::withAHistoryTheTypeIsServedAtEveryFrequency()
{
    Bench bench(file);
    Bench::choose("DFLocateType", QStringLiteral("History"));
    Bench::tune(5e6);
    QVERIFY(Bench::isHriUsable());
    bench.measure();
    QCOMPARE(bench.boxes, QStringList());
}

void TestLocateTypes::cyclicMeasuringEndsWithTheHistoryThatItNeeds()
{
    // Nobody but the history serves the type, and that cannot be opened, which is known a little later.
    Bench bench(QStringLiteral("gone/history.sqlite"), std::make_unique<FakeSource>());
    Bench::choose("DFLocateType", QStringLiteral("History"));
    Bench::choose("DFLocateWorkflow", QStringLiteral("Continuous"));
    QVERIFY(Bench::isHriUsable());
    bench.button("DFStarter")->click();
    QVERIFY(bench.session.driver()->isCyclic());
    QTRY_VERIFY(!Bench::isHriUsable());
    QVERIFY(!bench.button("DFStarter")->isChecked());
    QVERIFY(!bench.session.driver()->isCyclic());
}

void TestLocateTypes::aRemoteServiceAloneLetsCyclicMeasuringGoOn()
{
    Bench bench(QStringLiteral("gone/history.sqlite"));
    Bench::choose("DFLocateType", QStringLiteral("History"));
    Bench::choose("DFLocateWorkflow", QStringLiteral("Continuous"));
    bench.button("DFStarter")->click();
    QTRY_VERIFY(!bench.history->isUsable());
    QTRY_VERIFY(bench.results >= 5);
    QVERIFY(bench.session.driver()->isCyclic());
    QVERIFY(Bench::isHriUsable());
}

DFL_TEST_MAIN(TestLocateTypes)
#include "tst_locatetypes.moc"
