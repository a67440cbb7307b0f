#include "frequencyranges.h"

#include "support/testmain.h"

#include <QRandomGenerator>

#include <algorithm>
#include <limits>

using VelmarGui::FrequencyRanges;
using Ranges = std::vector<FrequencyRanges::Range>;

class TestFrequencyRanges : public QObject
{
    Q_OBJECT

private slots:
    void noRangesHoldNothing();
    void bothEndsBelongToARange();
    void aRangeOfOneFrequencyHoldsIt();
    void aRangeWithItsEndsExchangedHoldsNothing();
    void theGapBetweenRangesIsOutside();
    void aRangeWithinAnotherTakesNothingAway();
    void whatIsNoNumberIsNotHeld();
    void theyHoldWhatAnyOfThemHolds();
};

void TestFrequencyRanges::noRangesHoldNothing()
{
    QVERIFY(!FrequencyRanges().Hold(0));
    QVERIFY(!FrequencyRanges(Ranges{}).Hold(0));
}

void TestFrequencyRanges::bothEndsBelongToARange()
{
    const FrequencyRanges ranges(Ranges{{10, 20}});
    QVERIFY(!ranges.Hold(9.999));
    QVERIFY(ranges.Hold(10));
    QVERIFY(ranges.Hold(20));
    QVERIFY(!ranges.Hold(20.001));
}

void TestFrequencyRanges::aRangeOfOneFrequencyHoldsIt()
{
    QVERIFY(FrequencyRanges(Ranges{{0, 0}}).Hold(0));
}

void TestFrequencyRanges::aRangeWithItsEndsExchangedHoldsNothing()
{
    const FrequencyRanges ranges(Ranges{{10, 20}, {40, 15}});
    QVERIFY(!ranges.Hold(30));
    QVERIFY(ranges.Hold(18));
}

void TestFrequencyRanges::theGapBetweenRangesIsOutside()
{
    const FrequencyRanges ranges(Ranges{{30, 40}, {10, 20}});
    QVERIFY(ranges.Hold(15));
    QVERIFY(!ranges.Hold(25));
    QVERIFY(ranges.Hold(35));
}

void TestFrequencyRanges::aRangeWithinAnotherTakesNothingAway()
{
    const FrequencyRanges ranges(Ranges{{10, 40}, {15, 20}});
    QVERIFY(ranges.Hold(30));
}

void TestFrequencyRanges::whatIsNoNumberIsNotHeld()
{
    QVERIFY(!FrequencyRanges(Ranges{{10, 40}}).Hold(std::numeric_limits<double>::quiet_NaN()));
}

void TestFrequencyRanges::theyHoldWhatAnyOfThemHolds()
{
    QRandomGenerator random(7);
    for (int turn = 0; turn < 500; ++turn) {
        Ranges all;
        for (int i = random.bounded(12); i > 0; --i)
            all.push_back({double(random.bounded(40)), double(random.bounded(40))});
        const FrequencyRanges ranges(all);
        for (double frequency = -1; frequency <= 41; frequency += 0.5) {
            const bool isHeld = std::any_of(all.begin(), all.end(), [frequency](const FrequencyRanges::Range& range) {
                return range.low <= frequency && frequency <= range.high;
            });
            QCOMPARE(ranges.Hold(frequency), isHeld);
        }
    }
}

DFL_TEST_MAIN(TestFrequencyRanges)
#include "tst_frequencyranges.moc"
