#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"

#include <cmath>
#include <limits>
#include <type_traits>

using testsupport::FreshTree;
using testsupport::RecordingObserver;
using namespace values;

using Codes = std::vector<TChangeCode>;

namespace {
const double notANumber = std::numeric_limits<double>::quiet_NaN();
const double infinity = std::numeric_limits<double>::infinity();
} // namespace

class TestValueKinds : public QObject
{
    Q_OBJECT

private slots:
    void theShortNamesAreTheFullTemplateForms()
    {
        static_assert(std::is_same_v<BoolValue, Value<bool, FormatBool<bool>, StreamFormat<bool>>>);
        static_assert(std::is_same_v<StringValue, Value<QString, FormatString<QString>>>);
        static_assert(std::is_same_v<IntValue, ValueNumeric<int, FormatInt<int>, StreamFormat<int>>>);
        static_assert(std::is_same_v<DoubleValue, ValueNumeric<double, FormatFloat<double>>>);
    }

    void aKindIsNeverTakenForAnother()
    {
        const std::unique_ptr<ValueBase> kinds[] = {std::make_unique<BoolValue>(), std::make_unique<IntValue>(),
                                                    std::make_unique<DoubleValue>(), std::make_unique<StringValue>(),
                                                    std::make_unique<ValueSelection>()};
        for (const auto& kind : kinds) {
            ValueBase* value = kind.get();
            const int matches =
                (dynamic_cast<BoolValue*>(value) != nullptr) + (dynamic_cast<IntValue*>(value) != nullptr) +
                (dynamic_cast<DoubleValue*>(value) != nullptr) + (dynamic_cast<StringValue*>(value) != nullptr) +
                (dynamic_cast<ValueSelection*>(value) != nullptr);
            QCOMPARE(matches, 1);
        }
    }

    void everyKindNamesItself()
    {
        QCOMPARE(BoolValue().GetTypeName(), QString("bool"));
        QCOMPARE(IntValue().GetTypeName(), QString("int"));
        QCOMPARE(DoubleValue().GetTypeName(), QString("double"));
        QCOMPARE(StringValue().GetTypeName(), QString("string"));
        QCOMPARE(ValueSelection().GetTypeName(), QString("selection"));
        QCOMPARE(BoolValue().GetType(), TypeBool);
        QCOMPARE(IntValue().GetType(), TypeInt);
        QCOMPARE(DoubleValue().GetType(), TypeDouble);
        QCOMPARE(StringValue().GetType(), TypeString);
        QCOMPARE(ValueSelection().GetType(), TypeSelection);
    }

    void initialContentsAreEmpty()
    {
        QCOMPARE(BoolValue().GetValue(), false);
        QCOMPARE(IntValue().GetValue(), 0);
        QCOMPARE(DoubleValue().GetValue(), 0.0);
        QCOMPARE(StringValue().GetValue(), QString());
        QCOMPARE(BoolValue(true).GetValue(), true);
        QCOMPARE(StringValue(QString("x")).GetValue(), QString("x"));
        QCOMPARE(DoubleValue(notANumber).GetValue(), 0.0);
    }

    void aSetThatChangesTheContentSendsCode3ThenCode19()
    {
        BoolValue flag;
        IntValue whole;
        DoubleValue number;
        StringValue text;
        RecordingObserver observer;
        for (ValueBase* value : std::initializer_list<ValueBase*>{&flag, &whole, &number, &text})
            value->AddObserver(&observer);
        const Codes both{ChangeContent, ChangeExternal};
        QVERIFY(flag.SetValue(true, nullptr));
        QCOMPARE(std::exchange(observer.codes, {}), both);
        QVERIFY(whole.SetValue(1, nullptr));
        QCOMPARE(std::exchange(observer.codes, {}), both);
        QVERIFY(number.SetValue(0.5, nullptr));
        QCOMPARE(std::exchange(observer.codes, {}), both);
        QVERIFY(text.SetValue("a", nullptr));
        QCOMPARE(std::exchange(observer.codes, {}), both);
    }

    void aSetOfTheSameContentSendsCode19Only()
    {
        BoolValue flag;
        IntValue whole;
        DoubleValue number;
        StringValue text;
        RecordingObserver observer;
        for (ValueBase* value : std::initializer_list<ValueBase*>{&flag, &whole, &number, &text})
            value->AddObserver(&observer);
        QVERIFY(flag.SetValue(false, nullptr));
        QVERIFY(whole.SetValue(0, nullptr));
        QVERIFY(number.SetValue(0.0, nullptr));
        QVERIFY(text.SetValue("", nullptr));
        QCOMPARE(observer.codes, Codes(4, ChangeExternal));
    }

    void limitsHoldInclusively()
    {
        IntValue quality;
        QVERIFY(quality.SetMinMax(1, 100, 1, nullptr));
        QVERIFY(quality.SetValue(1, nullptr));
        QVERIFY(quality.SetValue(100, nullptr));
        QVERIFY(!quality.SetValue(0, nullptr));
        QVERIFY(!quality.SetValue(101, nullptr));
        QCOMPARE(quality.GetValue(), 100);
    }

    void aRefusedSetSendsNothing()
    {
        DoubleValue span;
        span.SetMinMax(0.0, 2147483647.0, 1.0, nullptr);
        span.SetValue(9000.0, nullptr);
        RecordingObserver observer;
        span.AddObserver(&observer);
        for (double refused : {-1.0, 2147483648.0, notANumber, infinity, -infinity})
            QVERIFY(!span.SetValue(refused, nullptr));
        QVERIFY(!span.SetStringValue("-1", nullptr));
        QVERIFY(!span.SetStringValue("nonsense", nullptr));
        QVERIFY(observer.codes.empty());
        QCOMPARE(span.GetValue(), 9000.0);
    }

    void withoutLimitsTheWholeTypeIsAllowed()
    {
        IntValue whole;
        QVERIFY(whole.SetValue(std::numeric_limits<int>::min(), nullptr));
        QVERIFY(whole.SetValue(std::numeric_limits<int>::max(), nullptr));
        DoubleValue number;
        QVERIFY(number.SetValue(-1e300, nullptr));
        QCOMPARE(whole.GetStep(), 1);
    }

    void newLimitsSendCode4Once()
    {
        IntValue value;
        RecordingObserver observer;
        value.AddObserver(&observer);
        QVERIFY(value.SetMinMax(-40, 200, 1, nullptr));
        QCOMPARE(observer.codes, Codes{ChangeLimits});
        QCOMPARE(value.GetMin(), -40);
        QCOMPARE(value.GetMax(), 200);
        QCOMPARE(value.GetStep(), 1);
        QVERIFY(value.SetMinMax(-40, 200, 1, nullptr));
        QCOMPARE(observer.codes, Codes{ChangeLimits});
        QVERIFY(value.SetMin(-30, nullptr));
        QVERIFY(value.SetMax(100, nullptr));
        QVERIFY(value.SetStep(5, nullptr));
        QCOMPARE(observer.codes, Codes(4, ChangeLimits));
        QCOMPARE(value.GetMin(), -30);
        QCOMPARE(value.GetMax(), 100);
        QCOMPARE(value.GetStep(), 5);
    }

    void aContentOutsideNewLimitsMovesToTheNearerBound()
    {
        IntValue value(50);
        RecordingObserver observer;
        value.AddObserver(&observer);
        QVERIFY(value.SetMax(40, nullptr));
        QCOMPARE(value.GetValue(), 40);
        QCOMPARE(observer.codes, (Codes{ChangeLimits, ChangeContent}));
        QVERIFY(value.SetMinMax(60, 70, 1, nullptr));
        QCOMPARE(value.GetValue(), 60);
    }

    void impossibleLimitsAreRefused()
    {
        DoubleValue value;
        value.SetMinMax(0.0, 10.0, 1.0, nullptr);
        RecordingObserver observer;
        value.AddObserver(&observer);
        QVERIFY(!value.SetMinMax(5.0, 4.0, 1.0, nullptr));
        QVERIFY(!value.SetMin(11.0, nullptr));
        QVERIFY(!value.SetMax(notANumber, nullptr));
        QVERIFY(!value.SetMin(-infinity, nullptr));
        QVERIFY(!value.SetStep(-1.0, nullptr));
        QVERIFY(!value.SetStep(notANumber, nullptr));
        QVERIFY(observer.codes.empty());
        QCOMPARE(value.GetMin(), 0.0);
        QCOMPARE(value.GetMax(), 10.0);
        QVERIFY(value.SetStep(0.0, nullptr));
    }

    void contentsAreWrittenAsText_data()
    {
        QTest::addColumn<double>("number");
        QTest::addColumn<QString>("text");
        QTest::newRow("whole") << 433920000.0 << "433920000";
        QTest::newRow("billions without exponent") << 3e9 << "3000000000";
        QTest::newRow("fraction") << 0.1 << "0.1";
        QTest::newRow("seventeen digits") << 0.1 + 0.2 << "0.30000000000000004";
        QTest::newRow("negative") << -12.25 << "-12.25";
        QTest::newRow("small without exponent") << 1e-7 << "0.0000001";
    }

    void contentsAreWrittenAsText()
    {
        QFETCH(double, number);
        QFETCH(QString, text);
        DoubleValue value(number);
        QCOMPARE(value.GetStringValue(), text);
        DoubleValue back;
        QVERIFY(back.SetStringValue(text, nullptr));
        QCOMPARE(back.GetValue(), number);
    }

    void textsAreReadByEachKind()
    {
        BoolValue flag;
        QVERIFY(flag.SetStringValue("true", nullptr));
        QVERIFY(flag.GetValue());
        QCOMPARE(flag.GetStringValue(), QString("true"));
        QVERIFY(flag.SetStringValue(" 0 ", nullptr));
        QVERIFY(!flag.GetValue());
        QVERIFY(flag.SetStringValue("True", nullptr));
        QVERIFY(flag.SetStringValue("FALSE", nullptr));
        QVERIFY(!flag.SetStringValue("yes", nullptr));
        QVERIFY(!flag.SetStringValue("", nullptr));
        IntValue whole;
        QVERIFY(whole.SetStringValue(" -12 ", nullptr));
        QCOMPARE(whole.GetStringValue(), QString("-12"));
        QVERIFY(!whole.SetStringValue("12.5", nullptr));
        QVERIFY(!whole.SetStringValue("99999999999", nullptr));
        QCOMPARE(whole.GetValue(), -12);
        DoubleValue number;
        QVERIFY(number.SetStringValue("1,5", nullptr));
        QCOMPARE(number.GetValue(), 1.5);
        StringValue text;
        QVERIFY(text.SetStringValue(" as it stands ", nullptr));
        QCOMPARE(text.GetStringValue(), QString(" as it stands "));
    }

    void assigningTakesTheContentOfTheSameKindOnly()
    {
        IntValue from(7);
        IntValue to;
        RecordingObserver observer;
        to.AddObserver(&observer);
        QVERIFY(to.Assign(from, nullptr));
        QCOMPARE(to.GetValue(), 7);
        QVERIFY(to.Compare(from));
        QCOMPARE(observer.codes, (Codes{ChangeContent, ChangeExternal}));
        observer.codes.clear();
        QVERIFY(!to.Assign(DoubleValue(3.0), nullptr));
        QVERIFY(!to.Compare(DoubleValue(7.0)));
        QCOMPARE(to.GetValue(), 7);
        QVERIFY(observer.codes.empty());

        to.SetMax(10, nullptr);
        QVERIFY(!to.Assign(IntValue(11), nullptr));

        StringValue text;
        QVERIFY(text.Assign(StringValue(QString("a")), nullptr));
        QVERIFY(!text.Assign(BoolValue(true), nullptr));
        QVERIFY(text.Compare(StringValue(QString("a"))));
        QVERIFY(!text.Compare(StringValue(QString("b"))));
        QVERIFY(!text.Compare(BoolValue()));
    }

    void aValueDeletedByItsObserverInsideASetIsSafe()
    {
        FreshTree fresh;
        auto* value = fresh.add<IntValue>("A/V");
        RecordingObserver observer([](Observable*, TChangeCode code) {
            if (code == ChangeContent)
                Tree::Instance()->DeleteValue("A/V");
        });
        value->AddObserver(&observer);
        QVERIFY(value->SetValue(3, nullptr));
        QCOMPARE(observer.codes, (Codes{ChangeContent, ChangeState}));

        value = fresh.add<IntValue>("A/V");
        value->SetValue(50, nullptr);
        RecordingObserver onLimits([](Observable*, TChangeCode code) {
            if (code == ChangeLimits)
                Tree::Instance()->DeleteValue("A/V");
        });
        value->AddObserver(&onLimits);
        QVERIFY(value->SetMax(40, nullptr));
        QCOMPARE(onLimits.codes, (Codes{ChangeLimits, ChangeState}));
    }

    void aWriteNestedInANotificationIsDelivered()
    {
        IntValue value;
        RecordingObserver correcting([&](Observable*, TChangeCode code) {
            if (code == ChangeContent && value.GetValue() > 10)
                value.SetValue(10, &correcting);
        });
        std::vector<int> seen;
        RecordingObserver watching([&](Observable*, TChangeCode code) {
            if (code == ChangeContent)
                seen.push_back(value.GetValue());
        });
        value.AddObserver(&correcting);
        value.AddObserver(&watching);
        QVERIFY(value.SetValue(50, nullptr));
        QCOMPARE(value.GetValue(), 10);
        QCOMPARE(seen, (std::vector<int>{10, 10}));
    }
};

DFL_TEST_MAIN_WITH(TestValueKinds, QCoreApplication)
#include "tst_valuekinds.moc"
