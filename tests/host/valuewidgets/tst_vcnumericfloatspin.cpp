#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "support/traces.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valuewidgets/vcnumericfloatspin.h"
#include "ztbase/observation.h"

#include <QDialog>
#include <QLineEdit>
#include <QPointer>
#include <QStyle>
#include <QStyleOptionSpinBox>
#include <QUndoStack>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <limits>
#include <memory>
#include <stdexcept>

using testsupport::FreshTree;
using testsupport::RecordingObserver;
using values::DoubleValue;
using values::IntValue;

namespace {

using Codes = std::vector<TChangeCode>;

const QString path = QStringLiteral("/GUI/SomeHandler/Config/Threshold");

QLineEdit* fieldOf(const QWidget& spin)
{
    return spin.findChild<QLineEdit*>();
}

QString shownText(const QWidget& spin)
{
    return fieldOf(spin)->text();
}

/// Types over what is there, without finishing.
void type(QWidget& spin, const QString& text)
{
    fieldOf(spin)->selectAll();
    if (text.isEmpty())
        QTest::keyClick(&spin, Qt::Key_Delete);
    QTest::keyClicks(&spin, text);
}

void enter(QWidget& spin, const QString& text)
{
    type(spin, text);
    QTest::keyClick(&spin, Qt::Key_Return);
}

void turnWheel(QWidget& widget, int notches)
{
    const QPoint centre = widget.rect().center();
    QWheelEvent event(centre, widget.mapToGlobal(centre), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&widget, &event);
}

} // namespace

class TestVCNumericFloatSpin : public QObject
{
    Q_OBJECT

    FreshTree tree;
    std::unique_ptr<QWidget> window;
    VCNumericFloatSpin* spin = nullptr;
    QLineEdit* elsewhere = nullptr; // where the operator goes on leaving the spin box
    IntValue* level = nullptr;

    IntValue* addLevel(const QString& where = path) const
    {
        auto* value = tree.add<IntValue>(where);
        value->SetMinMax(-20, 100, 5, nullptr);
        value->SetValue(30, nullptr);
        return value;
    }

    DoubleValue* showDouble(double number, double min = -1000.0, double max = 1000.0, double step = 0.1)
    {
        auto* value = tree.add<DoubleValue>("/double");
        value->SetMinMax(min, max, step, nullptr);
        value->SetValue(number, nullptr);
        spin->SetNumeric_ValuePath("/double");
        return value;
    }

    void show(bool editableWhenUnused)
    {
        delete spin;
        spin = new VCNumericFloatSpin(window.get(), editableWhenUnused);
        spin->SetNumeric_ValuePath(path);
        window->layout()->addWidget(spin);
        spin->show();
        spin->setFocus();
        QVERIFY(spin->hasFocus());
    }

    /// The button that adds a step.
    [[nodiscard]] QRect buttonUp() const
    {
        QStyleOptionSpinBox option;
        option.initFrom(spin);
        option.subControls = QStyle::SC_All;
        return spin->style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxUp, spin);
    }

    static void remove(const QString& where = path) { QVERIFY(values::Tree::Instance()->DeleteValue(where)); }

private slots:
    void init()
    {
        values::Tree::Instance()->Clear();
        level = addLevel();
        window = std::make_unique<QWidget>();
        new QVBoxLayout(window.get());
        elsewhere = new QLineEdit;
        window->layout()->addWidget(elsewhere);
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        show(false);
    }

    void cleanup()
    {
        UndoRecordingControlBase::SetUndoStack(nullptr);
        window.reset();
        spin = nullptr;
    }

    // Showing

    void itShowsNumberLimitsAndStep()
    {
        QCOMPARE(spin->GetNumeric(), level);
        QCOMPARE(spin->value(), 30.0);
        QCOMPARE(shownText(*spin), "30");
        QCOMPARE(spin->minimum(), -20.0);
        QCOMPARE(spin->maximum(), 100.0);
        QCOMPARE(spin->singleStep(), 5.0);
        QCOMPARE(spin->decimals(), 0);
        QVERIFY(spin->isEnabled());
        QVERIFY(!spin->keyboardTracking());
    }

    void itFollowsTheNumber()
    {
        level->SetValue(-7, nullptr);
        QCOMPARE(shownText(*spin), "-7");
    }

    void itFollowsTheLimits()
    {
        level->SetMinMax(40, 60, 2, nullptr);
        QCOMPARE(spin->minimum(), 40.0);
        QCOMPARE(spin->maximum(), 60.0);
        QCOMPARE(shownText(*spin), "40");
        level->SetMinMax(0, 10, 1, nullptr);
        QCOMPARE(shownText(*spin), "10");
    }

    void doublesAreShownInTheFewestDigitsThatAreExact_data()
    {
        QTest::addColumn<double>("number");
        QTest::addColumn<QString>("text");
        QTest::newRow("whole") << 12.0 << "12";
        QTest::newRow("tenths") << 0.1 << "0.1";
        QTest::newRow("negative") << -3.25 << "-3.25";
        QTest::newRow("many digits") << 0.1234567890123456 << "0.1234567890123456";
        QTest::newRow("thousands without grouping") << 1234567.5 << "1234567.5";
        QTest::newRow("small without exponent") << 1e-9 << "0.000000001";
        QTest::newRow("large without exponent") << 1e20 << "100000000000000000000";
        QTest::newRow("sum of tenths") << 0.1 + 0.2 << "0.30000000000000004";
    }

    void doublesAreShownInTheFewestDigitsThatAreExact()
    {
        QFETCH(double, number);
        QFETCH(QString, text);
        auto* value = showDouble(number, -1e300, 1e300, 1.0);
        QCOMPARE(shownText(*spin), text);
        QCOMPARE(spin->value(), number);
        QCOMPARE(value->GetValue(), number);
    }

    void theLocaleMakesNoDifferenceToWhatIsShown()
    {
        spin->setLocale(QLocale(QLocale::German));
        showDouble(1234.5, 0.0, 1e6);
        QCOMPARE(shownText(*spin), "1234.5");
    }

    void defaultLimitsMakeNoMonsterOfTheWidget()
    {
        auto* value = tree.add<DoubleValue>("/double");
        value->SetValue(std::numeric_limits<double>::max(), nullptr);
        spin->SetNumeric_ValuePath("/double");
        QCOMPARE(spin->value(), std::numeric_limits<double>::max());
        QVERIFY(spin->sizeHint().width() < spin->fontMetrics().horizontalAdvance(QString(40, '0')));
        value->SetValue(std::numeric_limits<double>::lowest(), nullptr);
        QCOMPARE(spin->value(), std::numeric_limits<double>::lowest());
        value->SetValue(0.25, nullptr);
        QCOMPARE(shownText(*spin), "0.25");
    }

    void intsOfAnySizeAreExact()
    {
        auto* value = tree.add<IntValue>("/int");
        spin->SetNumeric_ValuePath("/int");
        value->SetValue(std::numeric_limits<int>::max(), nullptr);
        QCOMPARE(shownText(*spin), "2147483647");
        enter(*spin, "-2147483648");
        QCOMPARE(value->GetValue(), std::numeric_limits<int>::min());
    }

    void followingWritesNothing()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        RecordingObserver observer;
        const Observation observation(*level, observer);
        level->SetValue(50, nullptr);
        level->SetMinMax(60, 70, 1, nullptr);
        level->SetState(values::StateUnused, nullptr);
        level->SetState(values::StateOrdinary, nullptr);
        QCOMPARE(observer.codes,
                 (Codes{ChangeContent, ChangeExternal, ChangeLimits, ChangeContent, ChangeState, ChangeState}));
        QCOMPARE(undo.count(), 0);
    }

    void rebindingWritesNothing()
    {
        auto* value = showDouble(2.75);
        RecordingObserver levelObserver;
        RecordingObserver doubleObserver;
        const Observation levelObservation(*level, levelObserver);
        const Observation doubleObservation(*value, doubleObserver);
        spin->SetNumeric_ValuePath(path);
        spin->SetNumeric(value);
        spin->SetNumeric(nullptr);
        spin->SetNumeric(level);
        QVERIFY(levelObserver.codes.empty());
        QVERIFY(doubleObserver.codes.empty());
        QCOMPARE(shownText(*spin), "30");
    }

    // Typing

    void anEditIsWrittenWhenItIsFinishedAndNotByTheKeyStroke()
    {
        RecordingObserver observer;
        const Observation observation(*level, observer);
        type(*spin, "75");
        QVERIFY(observer.codes.empty());
        QTest::keyClick(spin, Qt::Key_Return);
        QCOMPARE(level->GetValue(), 75);
        QCOMPARE(observer.codes, (Codes{ChangeContent, ChangeExternal}));
        QCOMPARE(shownText(*spin), "75");
    }

    void theNumberBlocksEnterKeyFinishesToo()
    {
        type(*spin, "75");
        QTest::keyClick(spin, Qt::Key_Enter);
        QCOMPARE(level->GetValue(), 75);
    }

    void leavingTheFieldFinishesAnEdit()
    {
        RecordingObserver observer;
        const Observation observation(*level, observer);
        type(*spin, "75");
        elsewhere->setFocus();
        QCOMPARE(level->GetValue(), 75);
        QCOMPARE(observer.codes, (Codes{ChangeContent, ChangeExternal}));
    }

    void hidingTheFieldFinishesAnEdit()
    {
        RecordingObserver observer;
        const Observation observation(*level, observer);
        type(*spin, "75");
        spin->hide();
        QCOMPARE(level->GetValue(), 75);
        QCOMPARE(observer.codes, (Codes{ChangeContent, ChangeExternal}));
    }

    void hidingTheFieldFinishesAnEditAsLeavingItDoes()
    {
        type(*spin, "75");
        spin->hide();
        QCOMPARE(level->GetValue(), 75);
        QCOMPARE(shownText(*spin), QStringLiteral("75"));
    }

    void hidingTheFieldAfterAnEditWithoutAChangeShowsTheLatestValue()
    {
        type(*spin, "30");
        level->SetValue(44, nullptr);
        QCOMPARE(shownText(*spin), QStringLiteral("30"));
        spin->hide();
        QCOMPARE(level->GetValue(), 44);
        QCOMPARE(shownText(*spin), QStringLiteral("44"));
    }

    void leavingWithoutAChangeWritesNothing()
    {
        RecordingObserver observer;
        const Observation observation(*level, observer);
        elsewhere->setFocus();
        spin->setFocus();
        QTest::keyClick(spin, Qt::Key_Return);
        elsewhere->setFocus();
        QVERIFY(observer.codes.empty());
    }

    void typingTheSameNumberWritesNothing()
    {
        RecordingObserver observer;
        const Observation observation(*level, observer);
        enter(*spin, "030");
        QVERIFY(observer.codes.empty());
        QCOMPARE(shownText(*spin), "30");
    }

    void aFieldBeingEditedIsNotOverwritten()
    {
        type(*spin, "7");
        level->SetValue(50, nullptr);
        QCOMPARE(shownText(*spin), "7");
        level->SetMinMax(-10, 90, 1, nullptr);
        QCOMPARE(shownText(*spin), "7");
        QTest::keyClicks(spin, "5");
        QTest::keyClick(spin, Qt::Key_Return);
        QCOMPARE(level->GetValue(), 75);
    }

    void aFieldWithFocusThatIsNotEditedFollows()
    {
        level->SetValue(50, nullptr);
        QCOMPARE(shownText(*spin), "50");
    }

    void leavingAnUnchangedTextShowsTheLatestValue()
    {
        RecordingObserver observer;
        const Observation observation(*level, observer);
        type(*spin, "30"); // what it showed
        level->SetValue(50, nullptr);
        observer.codes.clear();
        elsewhere->setFocus();
        QVERIFY(observer.codes.empty());
        QCOMPARE(level->GetValue(), 50);
        QCOMPARE(shownText(*spin), "50");
    }

    void escapeReturnsToTheLatestValue()
    {
        RecordingObserver observer;
        const Observation observation(*level, observer);
        type(*spin, "75");
        level->SetValue(50, nullptr);
        observer.codes.clear();
        QTest::keyClick(spin, Qt::Key_Escape);
        QCOMPARE(shownText(*spin), "50");
        elsewhere->setFocus();
        QVERIFY(observer.codes.empty());
        QCOMPARE(level->GetValue(), 50);
    }

    void escapeEndsTheEditBeforeTheDialog()
    {
        QDialog dialog;
        auto* inDialog = new VCNumericFloatSpin(&dialog);
        inDialog->SetNumeric(level);
        dialog.show();
        dialog.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        inDialog->setFocus();
        type(*inDialog, "75");
        QTest::keyClick(inDialog, Qt::Key_Escape);
        QVERIFY(dialog.isVisible());
        QTest::keyClick(inDialog, Qt::Key_Escape);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(level->GetValue(), 30);
    }

    void numbersOutsideTheLimitsCannotBeEntered()
    {
        enter(*spin, "101"); // the last digit is not taken
        QCOMPARE(level->GetValue(), 10);
        enter(*spin, "-21");
        QCOMPARE(level->GetValue(), -2);
        level->SetMinMax(50, 100, 1, nullptr);
        RecordingObserver observer;
        const Observation observation(*level, observer);
        enter(*spin, "7"); // might have become 70
        QVERIFY(observer.codes.empty());
        QCOMPARE(shownText(*spin), "50");
    }

    void newLimitsCountForAnEditUnderWay()
    {
        type(*spin, "75");
        level->SetMinMax(0, 60, 1, nullptr);
        QTest::keyClick(spin, Qt::Key_Return);
        QCOMPARE(level->GetValue(), 30);
        QCOMPARE(shownText(*spin), "30");
        type(*spin, "5");
        level->SetMinMax(0, 500, 1, nullptr);
        QTest::keyClicks(spin, "00");
        QTest::keyClick(spin, Qt::Key_Return);
        QCOMPARE(level->GetValue(), 500);
    }

    void whatIsNoNumberCannotBeTyped()
    {
        RecordingObserver observer;
        const Observation observation(*level, observer);
        type(*spin, "abc");
        QCOMPARE(shownText(*spin), "30");
        enter(*spin, "1e1"); // no exponents
        QCOMPARE(level->GetValue(), 11);
        enter(*spin, "4.2"); // no decimals of an integer
        QCOMPARE(level->GetValue(), 42);
        enter(*spin, "1-2");
        QCOMPARE(level->GetValue(), 12);
    }

    void anEmptyOrUnfinishedTextWritesNothing()
    {
        RecordingObserver observer;
        const Observation observation(*level, observer);
        for (const char* text : {"", "-"}) {
            type(*spin, text);
            QCOMPARE(shownText(*spin), text);
            QTest::keyClick(spin, Qt::Key_Return);
            QCOMPARE(shownText(*spin), "30");
        }
        QVERIFY(observer.codes.empty());
    }

    void aMinusIsTakenOnlyWhereNumbersCanBeNegative()
    {
        level->SetMinMax(0, 100, 1, nullptr);
        enter(*spin, "-5");
        QCOMPARE(level->GetValue(), 5);
    }

    void decimalsAreTypedWithPointOrComma()
    {
        auto* value = showDouble(1.0);
        enter(*spin, "2.125");
        QCOMPARE(value->GetValue(), 2.125);
        enter(*spin, "3,5");
        QCOMPARE(value->GetValue(), 3.5);
        QCOMPARE(shownText(*spin), "3.5");
        enter(*spin, ".5");
        QCOMPARE(value->GetValue(), 0.5);
        enter(*spin, "7,");
        QCOMPARE(value->GetValue(), 7.0);
        enter(*spin, "-0.25");
        QCOMPARE(value->GetValue(), -0.25);
    }

    void aNumberIsTypedWithAsManyDecimalsAsWanted()
    {
        auto* value = showDouble(1.0);
        enter(*spin, "0.000000123456789");
        QCOMPARE(value->GetValue(), 0.000000123456789);
        QCOMPARE(shownText(*spin), "0.000000123456789");
    }

    void prefixAndSuffixAreNoPartOfTheNumber()
    {
        spin->setPrefix("L ");
        spin->setSuffix(" %");
        QCOMPARE(shownText(*spin), "L 30 %");
        QTest::keyClick(spin, Qt::Key_Home);
        fieldOf(*spin)->setSelection(2, 2);
        QTest::keyClicks(spin, "45");
        QTest::keyClick(spin, Qt::Key_Return);
        QCOMPARE(level->GetValue(), 45);
        QCOMPARE(shownText(*spin), "L 45 %");
    }

    // Stepping

    void arrowsAndPageKeysWriteAtOnce()
    {
        QTest::keyClick(spin, Qt::Key_Up);
        QCOMPARE(level->GetValue(), 35);
        QTest::keyClick(spin, Qt::Key_Down);
        QTest::keyClick(spin, Qt::Key_Down);
        QCOMPARE(level->GetValue(), 25);
        QTest::keyClick(spin, Qt::Key_PageUp);
        QCOMPARE(level->GetValue(), 75);
        QCOMPARE(shownText(*spin), "75");
    }

    void theWheelWritesAtOnce()
    {
        turnWheel(*spin, 2);
        QCOMPARE(level->GetValue(), 40);
        turnWheel(*spin, -1);
        QCOMPARE(level->GetValue(), 35);
    }

    void theButtonsWriteAtOnce()
    {
        QTest::mouseClick(spin, Qt::LeftButton, Qt::NoModifier, buttonUp().center());
        QCOMPARE(level->GetValue(), 35);
    }

    void aStepIsOneWrite()
    {
        RecordingObserver observer;
        const Observation observation(*level, observer);
        spin->stepBy(1);
        QCOMPARE(observer.codes, (Codes{ChangeContent, ChangeExternal}));
    }

    void aStepStopsAtTheLimit()
    {
        spin->stepBy(1000);
        QCOMPARE(level->GetValue(), 100);
        RecordingObserver observer;
        const Observation observation(*level, observer);
        spin->stepBy(1);
        QTest::keyClick(spin, Qt::Key_Up);
        QVERIFY(observer.codes.empty());
        spin->stepBy(-1000);
        QCOMPARE(level->GetValue(), -20);
    }

    void aStepGoesOnFromWhatWasTyped()
    {
        RecordingObserver observer;
        const Observation observation(*level, observer);
        type(*spin, "42");
        QTest::keyClick(spin, Qt::Key_Up);
        QCOMPARE(level->GetValue(), 47);
        QCOMPARE(observer.codes, (Codes{ChangeContent, ChangeExternal}));
    }

    void aStepGoesOnFromTheLatestValue()
    {
        level->StartTransaction(nullptr);
        level->SetValue(60, nullptr);
        spin->stepBy(1);
        level->EndTransaction(ChangeContent);
        QCOMPARE(level->GetValue(), 65);
        QCOMPARE(shownText(*spin), "65");
    }

    void decimalStepsStayDecimal()
    {
        auto* value = showDouble(0.0);
        for (int i = 0; i < 3; ++i)
            spin->stepBy(1);
        QCOMPARE(shownText(*spin), "0.3");
        QVERIFY(value->GetValue() == 0.3);
        enter(*spin, "0.25");
        spin->stepBy(-1);
        QCOMPARE(shownText(*spin), "0.15");
    }

    void withoutStepItGoesByOne()
    {
        auto* value = showDouble(0.5, 0.0, 10.0, 0.0);
        spin->stepBy(1);
        QCOMPARE(value->GetValue(), 1.5);
    }

    void aStepAtTheEndOfAllNumbersStaysThere()
    {
        auto* value = tree.add<DoubleValue>("/double");
        value->SetMinMax(value->GetMin(), value->GetMax(), std::numeric_limits<double>::max(), nullptr);
        spin->SetNumeric_ValuePath("/double");
        spin->stepBy(2);
        QCOMPARE(value->GetValue(), std::numeric_limits<double>::max());
    }

    void anAssistantsOrProgramsNewNumberIsAnEdit()
    {
        spin->setValue(55.0);
        QCOMPARE(level->GetValue(), 55);
        type(*spin, "66");
        spin->interpretText();
        QCOMPARE(level->GetValue(), 66);
    }

    // In the course of the write

    void aCorrectionInTheCourseOfTheWriteIsShown()
    {
        RecordingObserver driver([this](Observable*, TChangeCode code) {
            if (code == ChangeContent && level->GetValue() == 75)
                level->SetValue(70, nullptr);
        });
        const Observation observation(*level, driver);
        enter(*spin, "75");
        QCOMPARE(level->GetValue(), 70);
        QCOMPARE(shownText(*spin), "70");
    }

    void leavingTheFieldInTheCourseOfTheWriteWritesNoSecondTime()
    {
        show(true);
        level->SetState(values::StateUnused, nullptr);
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        RecordingObserver observer([this](Observable*, TChangeCode code) {
            if (code == ChangeState)
                elsewhere->setFocus(); // as a message box would do
        });
        const Observation observation(*level, observer);
        enter(*spin, "75");
        QCOMPARE(observer.codes, (Codes{ChangeState, ChangeContent, ChangeExternal}));
        QCOMPARE(undo.count(), 1);
        QCOMPARE(level->GetValue(), 75);
    }

    void theValueMayGoInTheCourseOfTheWrite()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        RecordingObserver observer([](Observable*, TChangeCode code) {
            if (code == ChangeContent)
                values::Tree::Instance()->DeleteValue(path);
        });
        const Observation observation(*level, observer);
        enter(*spin, "75");
        QVERIFY(spin->GetNumeric() == nullptr);
        QVERIFY(!spin->isEnabled());
        QCOMPARE(shownText(*spin), "");
    }

    void theWidgetMayGoInTheCourseOfTheWrite()
    {
        RecordingObserver observer([this](Observable*, TChangeCode) {
            delete spin;
            spin = nullptr;
        });
        const Observation observation(*level, observer);
        type(*spin, "75");
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QCoreApplication::sendEvent(spin, &press);
        QVERIFY(spin == nullptr);
        QCOMPARE(level->GetValue(), 75);
    }

    void theWidgetMayGoInTheCourseOfAStep_data()
    {
        QTest::addColumn<int>("event");
        QTest::newRow("arrow key") << int(QEvent::KeyPress);
        QTest::newRow("wheel") << int(QEvent::Wheel);
        QTest::newRow("button") << int(QEvent::MouseButtonPress);
        QTest::newRow("button held down") << int(QEvent::Timer);
    }
    void theWidgetMayGoInTheCourseOfAStep()
    {
        QFETCH(int, event);
        const QRect up = buttonUp();
        if (event == QEvent::Timer)
            QTest::mousePress(spin, Qt::LeftButton, Qt::NoModifier, up.center());
        const int before = level->GetValue();
        RecordingObserver observer([this](Observable*, TChangeCode) {
            delete spin;
            spin = nullptr;
        });
        const Observation observation(*level, observer);
        QPointer<QWidget> widget(spin);
        if (event == QEvent::KeyPress) {
            QKeyEvent press(QEvent::KeyPress, Qt::Key_Up, Qt::NoModifier);
            QCoreApplication::sendEvent(spin, &press);
        } else if (event == QEvent::Wheel) {
            turnWheel(*spin, 1);
        } else if (event == QEvent::MouseButtonPress) {
            QMouseEvent press(QEvent::MouseButtonPress, up.center(), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(spin, &press);
        }
        QTRY_VERIFY(widget.isNull()); // for the button held down: its timer
        QCOMPARE(level->GetValue(), before + 5);
    }

    /// As a form does that the Return key closes.
    void theWidgetMayGoWithTheReturnKey()
    {
        connect(spin->findChild<QLineEdit*>(), &QLineEdit::returnPressed, this, [this] {
            delete spin;
            spin = nullptr;
        });
        type(*spin, "75");
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QCoreApplication::sendEvent(spin, &press);
        QVERIFY(spin == nullptr);
        QCOMPARE(level->GetValue(), 75);
    }

    void whatAnObserverRaisesDoesNotGoThroughTheWidget()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        show(true);
        level->SetState(values::StateUnused, nullptr);
        RecordingObserver observer([](Observable*, TChangeCode) { throw std::runtime_error("observer"); });
        const Observation observation(*level, observer);
        const testsupport::Traces traces;
        spin->stepBy(1);
        QCOMPARE(level->GetValue(), 35);
        QCOMPARE(level->GetState(), values::StateOrdinary);
        QCOMPARE(shownText(*spin), "35");
        QCOMPARE(undo.count(), 1);
        undo.undo();
        QCOMPARE(level->GetValue(), 30);
        QCOMPARE(traces.records.size(), std::size_t(2));
        QCOMPARE(traces.records[0].text, "Exception in an observer of an edited value: Threshold: 35");
    }

    void theNumberIsWrittenWhateverIsRaisedWhenTheValueIsBroughtIntoUse()
    {
        show(true);
        level->SetState(values::StateUnused, nullptr);
        RecordingObserver observer([](Observable*, TChangeCode code) {
            if (code == ChangeState)
                throw std::runtime_error("observer");
        });
        const Observation observation(*level, observer);
        const testsupport::Traces traces;
        spin->stepBy(1);
        QCOMPARE(level->GetState(), values::StateOrdinary);
        QCOMPARE(level->GetValue(), 35);
        QCOMPARE(traces.records.size(), std::size_t(1));
        QCOMPARE(traces.records[0].text, "Exception in an observer of an edited value: Threshold: 35");
    }

    // Availability

    void itIsDisabledWhileTheValueIsNotInUse()
    {
        level->SetState(values::StateUnused, nullptr);
        QVERIFY(!spin->isEnabled());
        QVERIFY(!spin->statusTip().isEmpty());
        QCOMPARE(shownText(*spin), "30");
        level->SetState(values::StateOrdinary, nullptr);
        QVERIFY(spin->isEnabled());
        QVERIFY(spin->statusTip().isEmpty());
    }

    void anEditUnderWayIsDroppedWhenTheValueGoesOutOfUse()
    {
        RecordingObserver observer;
        const Observation observation(*level, observer);
        type(*spin, "75");
        level->SetState(values::StateUnused, nullptr);
        QCOMPARE(observer.codes, Codes{ChangeState});
        QCOMPARE(level->GetValue(), 30);
        QCOMPARE(shownText(*spin), "30");
    }

    void anEditUnderWayIsDroppedWhenTheValueGoes()
    {
        type(*spin, "75");
        remove();
        QVERIFY(!spin->isEnabled());
        level = addLevel();
        QCOMPARE(level->GetValue(), 30);
        QCOMPARE(shownText(*spin), "30");
    }

    void withoutValueItIsEmptyAndDisabledAndSaysWhy()
    {
        VCNumericFloatSpin empty;
        empty.setToolTip("Level threshold");
        QVERIFY(!empty.isEnabled());
        QCOMPARE(shownText(empty), "");
        QVERIFY(empty.GetNumeric() == nullptr);
        QVERIFY(!empty.statusTip().isEmpty());
        empty.SetNumeric_ValuePath("/not/there");
        QVERIFY2(empty.statusTip().contains("/not/there"), qPrintable(empty.statusTip()));
        QCOMPARE(empty.toolTip(), "Level threshold");
        empty.stepBy(1);
        empty.setValue(5);
        QCOMPARE(shownText(empty), "");
    }

    // Editable when unused

    void itStaysEditableWhileTheValueIsNotInUse()
    {
        show(true);
        level->SetState(values::StateUnused, nullptr);
        QVERIFY(spin->isEnabled());
        QVERIFY(spin->statusTip().isEmpty());
        QCOMPARE(shownText(*spin), "30");
    }

    void anEditFirstBringsTheValueIntoUse()
    {
        show(true);
        level->SetState(values::StateUnused, nullptr);
        RecordingObserver observer([this](Observable*, TChangeCode code) {
            if (code == ChangeState)
                QCOMPARE(level->GetValue(), 30);
        });
        const Observation observation(*level, observer);
        enter(*spin, "75");
        QCOMPARE(level->GetState(), values::StateOrdinary);
        QCOMPARE(level->GetValue(), 75);
        QCOMPARE(observer.codes, (Codes{ChangeState, ChangeContent, ChangeExternal}));
    }

    void aStepBringsTheValueIntoUse()
    {
        show(true);
        level->SetState(values::StateUnused, nullptr);
        QTest::keyClick(spin, Qt::Key_Up);
        QCOMPARE(level->GetState(), values::StateOrdinary);
        QCOMPARE(level->GetValue(), 35);
    }

    void lookingAtItDoesNotBringTheValueIntoUse()
    {
        show(true);
        level->SetState(values::StateUnused, nullptr);
        elsewhere->setFocus();
        spin->setFocus();
        enter(*spin, "30"); // the number it has
        type(*spin, "75");
        QTest::keyClick(spin, Qt::Key_Escape);
        elsewhere->setFocus();
        QCOMPARE(level->GetState(), values::StateUnused);
        QCOMPARE(level->GetValue(), 30);
    }

    void anEditUnderWayIsKeptWhenTheValueGoesOutOfUse()
    {
        show(true);
        type(*spin, "75");
        level->SetState(values::StateUnused, nullptr);
        QCOMPARE(shownText(*spin), "75");
        QTest::keyClick(spin, Qt::Key_Return);
        QCOMPARE(level->GetState(), values::StateOrdinary);
        QCOMPARE(level->GetValue(), 75);
    }

    void theValueMayGoWhenItIsBroughtIntoUse()
    {
        show(true);
        level->SetState(values::StateUnused, nullptr);
        RecordingObserver observer([](Observable*, TChangeCode) { values::Tree::Instance()->DeleteValue(path); });
        const Observation observation(*level, observer);
        enter(*spin, "75");
        QVERIFY(spin->GetNumeric() == nullptr);
        QVERIFY(!spin->isEnabled());
    }

    void withoutValueEvenThisOneIsDisabled()
    {
        show(true);
        remove();
        QVERIFY(!spin->isEnabled());
    }

    // Binding

    void itBindsWhenTheValueComesAndComesBack()
    {
        remove();
        QVERIFY(spin->GetNumeric() == nullptr);
        QVERIFY(!spin->isEnabled());
        QCOMPARE(shownText(*spin), "");
        level = addLevel();
        QCOMPARE(spin->GetNumeric(), level);
        QVERIFY(spin->isEnabled());
        QCOMPARE(shownText(*spin), "30");
        level->SetValue(31, nullptr);
        QCOMPARE(shownText(*spin), "31");
    }

    void zeroIsShownAfterNothing()
    {
        remove();
        auto* value = tree.add<IntValue>(path);
        QCOMPARE(shownText(*spin), "0");
        value->SetValue(1, nullptr);
        QCOMPARE(shownText(*spin), "1");
    }

    void aValueOfAnotherKindAtThePathIsNotShown()
    {
        auto* text = tree.add<values::StringValue>("/text");
        text->SetValue("5", nullptr);
        spin->SetNumeric_ValuePath("/text");
        QVERIFY(spin->GetNumeric() == nullptr);
        QVERIFY(!spin->isEnabled());
        remove("/text");
        addLevel("/text");
        QCOMPARE(shownText(*spin), "30");
        spin->SetNumeric(nullptr);
        values::StringValue own;
        spin->SetNumeric(&own);
        QVERIFY(spin->GetNumeric() == nullptr);
        QCOMPARE(own.GetObserverCount(), std::size_t(0));
    }

    void anIntMayBecomeADoubleAtThePath()
    {
        remove();
        auto* value = tree.add<DoubleValue>(path);
        value->SetValue(2.5, nullptr);
        QCOMPARE(shownText(*spin), "2.5");
        enter(*spin, "2.75");
        QCOMPARE(value->GetValue(), 2.75);
        remove();
        level = addLevel();
        QCOMPARE(shownText(*spin), "30");
        QCOMPARE(spin->decimals(), 0);
    }

    void aValueHandedInEndsTheBindingByPath()
    {
        DoubleValue own;
        own.SetValue(1.5, nullptr);
        spin->SetNumeric(&own);
        remove();
        level = addLevel();
        QCOMPARE(spin->GetNumeric(), &own);
        enter(*spin, "2.5");
        QCOMPARE(own.GetValue(), 2.5);
        spin->SetNumeric(nullptr);
        QVERIFY(!spin->isEnabled());
        QCOMPARE(own.GetObserverCount(), std::size_t(0));
    }

    void aValueDeletedOutrightIsLeft()
    {
        delete level;
        QVERIFY(spin->GetNumeric() == nullptr);
        QVERIFY(!spin->isEnabled());
        auto own = std::make_unique<DoubleValue>();
        spin->SetNumeric(own.get());
        own.reset();
        QVERIFY(spin->GetNumeric() == nullptr);
        spin->stepBy(1);
        spin->setFocus();
        QTest::keyClick(spin, Qt::Key_Up);
        QTest::keyClicks(spin, "5");
        QTest::keyClick(spin, Qt::Key_Return);
    }

    void theWidgetMayGoFirst()
    {
        delete spin;
        spin = nullptr;
        QCOMPARE(level->GetObserverCount(), std::size_t(0));
        level->SetValue(1, nullptr);
        remove();
        addLevel();
    }

    void twoWidgetsShowOneValue()
    {
        VCNumericFloatSpin second;
        second.SetNumeric(level);
        enter(*spin, "75");
        QCOMPARE(shownText(second), "75");
    }

    // Undo

    void anUndoTextIsAShortLine()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        auto* const value = tree.add<values::IntValue>(QStringLiteral("/a\nb ") + QString(5000, QLatin1Char('N')));
        spin->SetNumeric(value);
        enter(*spin, "75");
        QCOMPARE(undo.undoText(), QStringLiteral("a b ") + QString(75, QLatin1Char('N')) + QChar(0x2026));
    }

    void anEditCanBeUndoneAndRedone()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        enter(*spin, "75");
        QCOMPARE(undo.count(), 1);
        QCOMPARE(undo.undoText(), "Threshold: 75");
        undo.undo();
        QCOMPARE(level->GetValue(), 30);
        QCOMPARE(shownText(*spin), "30");
        undo.redo();
        QCOMPARE(level->GetValue(), 75);
        QCOMPARE(shownText(*spin), "75");
    }

    void eachStepCanBeUndone()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        spin->stepBy(1);
        spin->stepBy(1);
        undo.undo();
        QCOMPARE(level->GetValue(), 35);
        undo.undo();
        QCOMPARE(level->GetValue(), 30);
    }

    void undoRestoresNumberAndState()
    {
        show(true);
        level->SetState(values::StateUnused, nullptr);
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        enter(*spin, "75");
        undo.undo();
        QCOMPARE(level->GetState(), values::StateUnused);
        QCOMPARE(level->GetValue(), 30);
        undo.redo();
        QCOMPARE(level->GetState(), values::StateOrdinary);
        QCOMPARE(level->GetValue(), 75);
    }

    void undoLeavesAStateTheEditDidNotTouch()
    {
        show(true);
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        enter(*spin, "75");
        level->SetState(values::StateUnused, nullptr);
        undo.undo();
        QCOMPARE(level->GetState(), values::StateUnused);
        QCOMPARE(level->GetValue(), 30);
    }

    void undoFindsTheValueAgainByItsPathAndNeedsNoWidget()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        enter(*spin, "75");
        delete spin;
        spin = nullptr;
        remove();
        level = addLevel();
        level->SetValue(75, nullptr);
        undo.undo();
        QCOMPARE(level->GetValue(), 30);
    }

    void undoOfAValueThatIsGoneOrRefusesFallsAway()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        enter(*spin, "75");
        level->SetMinMax(50, 100, 1, nullptr);
        undo.undo(); // 30 is not possible any more
        QCOMPARE(undo.count(), 0);
        QCOMPARE(level->GetValue(), 75);
        enter(*spin, "80");
        remove();
        undo.undo();
        QCOMPARE(undo.count(), 0);
    }
};

DFL_TEST_MAIN(TestVCNumericFloatSpin)
#include "tst_vcnumericfloatspin.moc"
