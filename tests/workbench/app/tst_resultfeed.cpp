#include "app/resultfeed.h"

#include "app/session.h"
#include "drivers/dfdriver.h"
#include "fakesource.h"

#include "support/freshtree.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/valuenumeric.h"

using testsupport::FreshTree;
using workbench::DfDriver;
using workbench::DfResult;
using workbench::ResultBatch;
using workbench::ResultFeed;

namespace {

struct Bench
{
    Bench()
    {
        QObject::connect(&feed, &ResultFeed::arrived, &feed,
                         [this](const ResultBatch& batch) { batches.push_back(batch); });
    }

    void publish(int second)
    {
        DfResult result = FakeSource::result();
        result.time = QTime(0, 0, second);
        emit driver.resultPublished(result);
    }

    /// The seconds of all results that have arrived, a list for each batch.
    [[nodiscard]] QList<QList<int>> seconds() const
    {
        QList<QList<int>> all;
        for (const ResultBatch& batch : batches) {
            QList<int> each;
            for (const DfResult& result : batch.results)
                each += result.time.second();
            all += each;
        }
        return all;
    }

    FreshTree tree;
    DfDriver driver{std::make_unique<FakeSource>(), workbench::handlerRoot(), workbench::parameterRoot()};
    ResultFeed feed{driver};
    std::vector<ResultBatch> batches;
};

using Seconds = QList<QList<int>>;

} // namespace

class TestResultFeed : public QObject
{
    Q_OBJECT
private slots:
    void aResultArrivesAtOnce();
    void thoseOfAFrameArriveTogetherAndInTheirOrder();
    void aFlushHandsOnWhatWaits();
    void aBatchSaysWhatWasInUseForItsLastResult();
};

void TestResultFeed::aResultArrivesAtOnce()
{
    Bench bench;
    bench.publish(1);
    QCOMPARE(bench.seconds(), (Seconds{{1}}));
}

void TestResultFeed::thoseOfAFrameArriveTogetherAndInTheirOrder()
{
    Bench bench;
    for (int second = 1; second <= 4; ++second)
        bench.publish(second);
    QCOMPARE(bench.seconds(), (Seconds{{1}}));
    QTRY_COMPARE(bench.seconds(), (Seconds{{1}, {2, 3, 4}}));
    bench.publish(5);
    QTRY_COMPARE(bench.seconds(), (Seconds{{1}, {2, 3, 4}, {5}}));
}

void TestResultFeed::aFlushHandsOnWhatWaits()
{
    Bench bench;
    bench.feed.flush();
    QVERIFY(bench.batches.empty());
    bench.publish(1);
    bench.publish(2);
    bench.feed.flush();
    QCOMPARE(bench.seconds(), (Seconds{{1}, {2}}));
    bench.feed.flush();
    QCOMPARE(bench.batches.size(), std::size_t(2));
    bench.publish(3); // within the frame that has begun with the flush
    QCOMPARE(bench.batches.size(), std::size_t(2));
    QTRY_COMPARE(bench.seconds(), (Seconds{{1}, {2}, {3}}));
}

void TestResultFeed::aBatchSaysWhatWasInUseForItsLastResult()
{
    Bench bench;
    auto* const threshold = dynamic_cast<values::IntValue*>(
        values::Tree::Instance()->FindValue(workbench::handlerRoot() + QStringLiteral("Config/Quality")));
    QVERIFY(threshold != nullptr);
    bench.publish(1);
    QVERIFY(!bench.batches.back().qualityThreshold.has_value());
    threshold->SetState(values::StateOrdinary, nullptr);
    for (const int percent : {30, 40}) {
        threshold->SetValue(percent, nullptr);
        bench.publish(percent);
    }
    threshold->SetValue(50, nullptr);
    bench.feed.flush();
    QCOMPARE(bench.batches.back().qualityThreshold, std::optional(40));
    QVERIFY(!bench.batches.back().history.has_value());
}

DFL_TEST_MAIN(TestResultFeed)
#include "tst_resultfeed.moc"
