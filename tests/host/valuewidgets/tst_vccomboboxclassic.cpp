#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "support/traces.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valueselection.h"
#include "valuewidgets/vccomboboxclassic.h"
#include "ztbase/observation.h"

#include <QAbstractItemView>
#include <QSignalSpy>
#include <QTranslator>
#include <QUndoStack>
#include <QWheelEvent>

#include <memory>

using testsupport::FreshTree;
using testsupport::RecordingObserver;
using values::ValueSelection;

namespace {

using Codes = std::vector<TChangeCode>;

const QString path = QStringLiteral("/GUI/SomeHandler/Config/Mode");

/// Translates everything in the context "Modes", and "Normal" to a text that is another item's raw text.
class ModesTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        if (qstrcmp(context, "Modes") != 0)
            return QString();
        return qstrcmp(text, "Normal") == 0 ? QStringLiteral("Gated") : QLatin1String("* ") + QLatin1String(text);
    }
};

QStringList shownItems(const QComboBox& comboBox)
{
    QStringList items;
    for (int i = 0; i < comboBox.count(); ++i)
        items << comboBox.itemText(i);
    return items;
}

void choose(QComboBox& comboBox, int index)
{
    comboBox.showPopup();
    QAbstractItemView* const view = comboBox.view();
    view->setCurrentIndex(comboBox.model()->index(index, 0));
    QTest::keyClick(view, Qt::Key_Return);
}

void turnWheel(QWidget& widget, int notches)
{
    const QPoint centre = widget.rect().center();
    QWheelEvent event(centre, widget.mapToGlobal(centre), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&widget, &event);
}

} // namespace

class TestVCComboBoxClassic : public QObject
{
    Q_OBJECT

    FreshTree tree;
    std::unique_ptr<VCComboBoxClassic> comboBox;
    ValueSelection* mode = nullptr;

    ValueSelection* addMode(const QString& where = path) const
    {
        auto* selection = tree.add<ValueSelection>(where);
        selection->AddItem("Normal", 0.0, 10);
        selection->AddItem("Continuous", 1.0, 20);
        selection->AddItem("Gated", 2.0, 30);
        selection->Select(20);
        return selection;
    }

    static void remove(const QString& where = path) { QVERIFY(values::Tree::Instance()->DeleteValue(where)); }

private slots:
    void init()
    {
        values::Tree::Instance()->Clear();
        mode = addMode();
        comboBox = std::make_unique<VCComboBoxClassic>();
        comboBox->setToolTip("DF Mode");
        comboBox->SetValueSelection_ValuePath(path);
        comboBox->show();
        QVERIFY(QTest::qWaitForWindowExposed(comboBox.get()));
    }

    void cleanup()
    {
        UndoRecordingControlBase::SetUndoStack(nullptr);
        comboBox.reset();
    }

    // Showing

    void itShowsItemsInTheirOrderAndTheCurrentOne()
    {
        QCOMPARE(comboBox->GetValueSelection(), mode);
        QCOMPARE(shownItems(*comboBox), QStringList({"Normal", "Continuous", "Gated"}));
        QCOMPARE(comboBox->currentText(), "Continuous");
        QVERIFY(comboBox->isEnabled());
    }

    void itFollowsTheCurrentItem()
    {
        mode->Select(30);
        QCOMPARE(comboBox->currentText(), "Gated");
    }

    void itFollowsTheItems()
    {
        mode->AddItem("Timed", 3.0, 5);
        QCOMPARE(shownItems(*comboBox), QStringList({"Normal", "Continuous", "Gated", "Timed"}));
        QCOMPARE(comboBox->currentText(), "Continuous");
        mode->DeleteItem(10);
        QCOMPARE(shownItems(*comboBox), QStringList({"Continuous", "Gated", "Timed"}));
        QCOMPARE(comboBox->currentText(), "Continuous");
    }

    void itsListIsFilledOnlyWithOtherItems()
    {
        QSignalSpy inserted(comboBox->model(), &QAbstractItemModel::rowsInserted);
        mode->HasChanged(ChangeItems, nullptr);
        {
            const values::ValueTransaction transaction = mode->CreateTransaction({ChangeItems}, nullptr);
            values::ValueSelection copy;
            copy.AddItemsFrom(*mode);
            const int key = mode->GetCurrentKey();
            mode->DeleteItems();
            mode->AddItemsFrom(copy);
            mode->Select(key);
        }
        QCOMPARE(inserted.count(), 0);
        QCOMPARE(shownItems(*comboBox), QStringList({"Normal", "Continuous", "Gated"}));
        QCOMPARE(comboBox->currentText(), "Continuous");
        mode->AddItem("Gated, long", 3.0, 30);
        QVERIFY(inserted.count() > 0);
        QCOMPARE(shownItems(*comboBox), QStringList({"Normal", "Continuous", "Gated, long"}));
    }

    void itsListIsFilledAnewForOtherKeys()
    {
        mode->StartTransaction(nullptr);
        mode->DeleteItems();
        mode->AddItem("Normal", 1.0, 11);
        mode->AddItem("Continuous", 2.0, 21);
        mode->AddItem("Gated", 3.0, 31);
        mode->EndTransaction(ChangeItems);
        comboBox->setCurrentIndex(2);
        emit comboBox->activated(2);
        QCOMPARE(mode->GetCurrentKey(), 31);
    }

    void itShowsNoItemWhenNoneIsCurrent()
    {
        mode->DeleteItem(20);
        QCOMPARE(comboBox->currentIndex(), -1);
        QCOMPARE(shownItems(*comboBox), QStringList({"Normal", "Gated"}));
        mode->Select(10);
        QCOMPARE(comboBox->currentText(), "Normal");
    }

    void newItemsSelectNothing()
    {
        mode->DeleteItems();
        QCOMPARE(comboBox->count(), 0);
        mode->AddItems({"a", "b"});
        QCOMPARE(comboBox->currentIndex(), -1);
    }

    void anExchangeInOneTransactionIsShownAtItsEnd()
    {
        mode->StartTransaction(nullptr);
        mode->DeleteItems();
        mode->AddItem("One", 1.0, 1);
        mode->AddItem("Two", 2.0, 2);
        mode->Select(2);
        QCOMPARE(comboBox->currentText(), "Continuous");
        mode->EndTransaction(ChangeItems);
        QCOMPARE(shownItems(*comboBox), QStringList({"One", "Two"}));
        QCOMPARE(comboBox->currentText(), "Two");
    }

    void anItemTheShownListDoesNotHaveYetIsNotMistakenForAnother()
    {
        mode->StartTransaction(nullptr);
        mode->DeleteItems();
        mode->AddItem("One", 1.0, 1);
        mode->Select(1);
        mode->EndTransaction(ChangeContent); // the items have not been announced
        QCOMPARE(comboBox->currentIndex(), -1);
        mode->HasChanged(ChangeItems, nullptr);
        QCOMPARE(comboBox->currentText(), "One");
    }

    void theListIsFilledAnewForItemsOnly()
    {
        int insertions = 0;
        connect(comboBox->model(), &QAbstractItemModel::rowsInserted, comboBox.get(), [&insertions] { ++insertions; });
        mode->Select(30);
        mode->HasChanged(ChangeContent, nullptr);
        mode->HasChanged(ChangeExternal, nullptr);
        mode->HasChanged(ChangeLimits, nullptr);
        mode->SetState(values::StateUnused, nullptr);
        QCOMPARE(insertions, 0);
        mode->AddItem("Timed", 3.0, 5);
        QCOMPARE(insertions, 4);
    }

    void followingWritesNothing()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        RecordingObserver observer;
        const Observation observation(*mode, observer);
        mode->HasChanged(ChangeItems, nullptr);
        mode->HasChanged(ChangeContent, nullptr);
        mode->SetState(values::StateUnused, nullptr);
        QCOMPARE(observer.codes, (Codes{ChangeItems, ChangeContent, ChangeState}));
        QCOMPARE(undo.count(), 0);
    }

    void aProgramsChoiceInTheWidgetIsNoOperatorsChoice()
    {
        comboBox->setCurrentIndex(2);
        QCOMPARE(mode->GetCurrentKey(), 20);
    }

    // Choosing

    void theOperatorsChoiceIsWrittenByKey()
    {
        RecordingObserver observer;
        const Observation observation(*mode, observer);
        choose(*comboBox, 2);
        QCOMPARE(mode->GetCurrentKey(), 30);
        QCOMPARE(comboBox->currentText(), "Gated");
        QCOMPARE(observer.codes, (Codes{ChangeContent, ChangeExternal}));
    }

    void theKeyboardChooses()
    {
        QTest::keyClick(comboBox.get(), Qt::Key_Down);
        QCOMPARE(mode->GetCurrentKey(), 30);
        QTest::keyClick(comboBox.get(), Qt::Key_Home);
        QCOMPARE(mode->GetCurrentKey(), 10);
    }

    void theWheelChooses()
    {
        turnWheel(*comboBox, 1);
        QCOMPARE(mode->GetCurrentKey(), 10);
        turnWheel(*comboBox, -1);
        QCOMPARE(mode->GetCurrentKey(), 20);
    }

    void choosingTheCurrentItemWritesNothing()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        RecordingObserver observer;
        const Observation observation(*mode, observer);
        choose(*comboBox, 1);
        QVERIFY(observer.codes.empty());
        QCOMPARE(undo.count(), 0);
    }

    void twoItemsOfTheSameTextAreToldApart()
    {
        mode->AddItem("Gated", 9.0, 99);
        choose(*comboBox, 3);
        QCOMPARE(mode->GetCurrentKey(), 99);
        QCOMPARE(comboBox->currentIndex(), 3);
        mode->Select(30);
        QCOMPARE(comboBox->currentIndex(), 2);
    }

    void theFirstChoiceOfAllIsWritten()
    {
        mode->DeleteItem(20);
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        choose(*comboBox, 1);
        QCOMPARE(mode->GetCurrentKey(), 30);
        QCOMPARE(undo.count(), 0); // there is nothing to go back to
    }

    void aCorrectionInTheCourseOfTheWriteIsShown()
    {
        RecordingObserver driver([this](Observable*, TChangeCode code) {
            if (code == ChangeContent && mode->GetCurrentKey() == 30)
                mode->Select(10);
        });
        const Observation observation(*mode, driver);
        choose(*comboBox, 2);
        QCOMPARE(mode->GetCurrentKey(), 10);
        QCOMPARE(comboBox->currentText(), "Normal");
    }

    void theValueMayGoInTheCourseOfTheWrite()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        RecordingObserver observer([](Observable*, TChangeCode code) {
            if (code == ChangeContent)
                values::Tree::Instance()->DeleteValue(path);
        });
        const Observation observation(*mode, observer);
        choose(*comboBox, 2);
        QVERIFY(comboBox->GetValueSelection() == nullptr);
        QVERIFY(!comboBox->isEnabled());
        QCOMPARE(comboBox->count(), 0);
    }

    void theWidgetMayGoInTheCourseOfTheWrite()
    {
        RecordingObserver observer([this](Observable*, TChangeCode) { comboBox.reset(); });
        const Observation observation(*mode, observer);
        emit comboBox->activated(2);
        QVERIFY(comboBox == nullptr);
        QCOMPARE(mode->GetCurrentKey(), 30);
    }

    void whatAnObserverRaisesDoesNotGoThroughTheWidget()
    {
        RecordingObserver observer([](Observable*, TChangeCode) { throw 42; });
        const Observation observation(*mode, observer);
        const testsupport::Traces traces;
        choose(*comboBox, 2);
        QCOMPARE(mode->GetCurrentKey(), 30);
        QCOMPARE(comboBox->currentText(), "Gated");
        QCOMPARE(traces.records.size(), std::size_t(1));
        QCOMPARE(traces.records[0].text, "Exception in an observer of an edited value: Mode: Gated");
        QCOMPARE(traces.records[0].sourceFile, "valuewidgets/valueedit");
    }

    // Availability

    void itIsDisabledWhileTheValueIsNotInUse()
    {
        mode->SetState(values::StateUnused, nullptr);
        QVERIFY(!comboBox->isEnabled());
        QVERIFY(!comboBox->statusTip().isEmpty());
        QCOMPARE(comboBox->currentText(), "Continuous");
        mode->SetState(values::StateOrdinary, nullptr);
        QVERIFY(comboBox->isEnabled());
        QVERIFY(comboBox->statusTip().isEmpty());
    }

    void itIsDisabledFromTheStartForAValueNotInUse()
    {
        mode->SetState(values::StateUnused, nullptr);
        VCComboBoxClassic second;
        second.SetValueSelection_ValuePath(path);
        QVERIFY(!second.isEnabled());
        QCOMPARE(second.currentText(), "Continuous");
    }

    void withoutValueItIsEmptyAndDisabledAndSaysWhy()
    {
        VCComboBoxClassic empty;
        QVERIFY(!empty.isEnabled());
        QCOMPARE(empty.count(), 0);
        QVERIFY(empty.GetValueSelection() == nullptr);
        QVERIFY(!empty.statusTip().isEmpty());
        empty.SetValueSelection_ValuePath("/not/there");
        QVERIFY(!empty.isEnabled());
        QVERIFY2(empty.statusTip().contains("/not/there"), qPrintable(empty.statusTip()));
    }

    void itsOwnStatusTipComesBack()
    {
        comboBox->setStatusTip("How bearings are taken");
        mode->SetState(values::StateUnused, nullptr);
        remove();
        QVERIFY(comboBox->statusTip() != "How bearings are taken");
        addMode();
        QCOMPARE(comboBox->statusTip(), "How bearings are taken");
    }

    void itsToolTipNeverChanges()
    {
        mode->SetState(values::StateUnused, nullptr);
        QCOMPARE(comboBox->toolTip(), "DF Mode");
        remove();
        QCOMPARE(comboBox->toolTip(), "DF Mode");
        addMode();
        QCOMPARE(comboBox->toolTip(), "DF Mode");
    }

    // Binding

    void itEmptiesWhenTheValueGoes()
    {
        remove();
        QVERIFY(comboBox->GetValueSelection() == nullptr);
        QVERIFY(!comboBox->isEnabled());
        QCOMPARE(comboBox->count(), 0);
        QCOMPARE(comboBox->currentIndex(), -1);
    }

    void itBindsWhenTheValueComesAndComesBack()
    {
        VCComboBoxClassic waiting;
        waiting.SetValueSelection_ValuePath("/late/Mode");
        tree.add<ValueSelection>("/late/Other");
        QVERIFY(waiting.GetValueSelection() == nullptr);
        auto* late = addMode("/late/Mode");
        QCOMPARE(waiting.GetValueSelection(), late);
        QVERIFY(waiting.isEnabled());
        QCOMPARE(waiting.currentText(), "Continuous");
        remove("/late/Mode");
        QVERIFY(!waiting.isEnabled());
        late = addMode("/late/Mode");
        late->Select(10);
        QCOMPARE(waiting.currentText(), "Normal");
    }

    void thePathMayBeSpeltWithMoreSeparators()
    {
        VCComboBoxClassic second;
        second.SetValueSelection_ValuePath("GUI//SomeHandler/Config/Mode");
        QCOMPARE(second.GetValueSelection(), mode);
        remove();
        addMode();
        QVERIFY(second.GetValueSelection() != nullptr);
    }

    void aValueOfAnotherKindAtThePathIsNotShown()
    {
        VCComboBoxClassic second;
        tree.add<values::StringValue>("/text");
        second.SetValueSelection_ValuePath("/text");
        QVERIFY(second.GetValueSelection() == nullptr);
        QVERIFY(!second.isEnabled());
        remove("/text");
        QCOMPARE(second.GetValueSelection(), nullptr);
        auto* selection = addMode("/text");
        QCOMPARE(second.GetValueSelection(), selection);
    }

    void anotherPathLeavesTheFirstValue()
    {
        auto* other = addMode("/other");
        other->Select(30);
        comboBox->SetValueSelection_ValuePath("/other");
        QCOMPARE(comboBox->currentText(), "Gated");
        QCOMPARE(mode->GetObserverCount(), std::size_t(0));
        mode->Select(10);
        QCOMPARE(comboBox->currentText(), "Gated");
    }

    void aValueHandedInEndsTheBindingByPath()
    {
        ValueSelection own;
        own.AddItems({"a"});
        comboBox->SetValueSelection(&own);
        QCOMPARE(comboBox->GetValueSelection(), &own);
        QCOMPARE(shownItems(*comboBox), QStringList("a"));
        remove();
        addMode();
        QCOMPARE(comboBox->GetValueSelection(), &own);
        choose(*comboBox, 0);
        QCOMPARE(own.GetStringValue(), "a");
        comboBox->SetValueSelection(nullptr);
        QVERIFY(!comboBox->isEnabled());
        QCOMPARE(own.GetObserverCount(), std::size_t(0));
        QVERIFY(comboBox->GetValueSelection() == nullptr);
    }

    void aValueHandedInIsNotFoundAgainByItsPath()
    {
        comboBox->SetValueSelection(mode);
        remove();
        QVERIFY(!comboBox->isEnabled());
        addMode();
        QVERIFY(comboBox->GetValueSelection() == nullptr);
    }

    void aValueHandedInMayBeRenamed()
    {
        comboBox->SetValueSelection(mode);
        mode->SetName("Renamed", nullptr);
        QCOMPARE(comboBox->GetValueSelection(), mode);
        mode->Select(30);
        QCOMPARE(comboBox->currentText(), "Gated");
    }

    void aValueRenamedAwayFromThePathIsLeft()
    {
        mode->SetName("Renamed", nullptr);
        QVERIFY(comboBox->GetValueSelection() == nullptr);
        QCOMPARE(mode->GetObserverCount(), std::size_t(0));
        mode->SetName("Mode", nullptr);
        QCOMPARE(comboBox->GetValueSelection(), mode);
    }

    void aValueDeletedOutrightIsLeft()
    {
        delete mode;
        QVERIFY(comboBox->GetValueSelection() == nullptr);
        QVERIFY(!comboBox->isEnabled());
        auto own = std::make_unique<ValueSelection>();
        own->AddItems({"a", "b"});
        comboBox->SetValueSelection(own.get());
        own.reset();
        QVERIFY(comboBox->GetValueSelection() == nullptr);
        choose(*comboBox, 1); // still shown: nobody told the widget
        QVERIFY(!comboBox->isEnabled());
        QCOMPARE(comboBox->count(), 0);
    }

    void aSuccessorThatTakesThePathDuringTheRemovalIsBound()
    {
        ValueSelection* successor = nullptr;
        RecordingObserver observer([&](Observable*, TChangeCode code) {
            if (code == ChangeState)
                successor = addMode();
        });
        const Observation observation(*mode, observer);
        remove();
        QVERIFY(successor != nullptr);
        QCOMPARE(comboBox->GetValueSelection(), successor);
        successor->Select(30);
        QCOMPARE(comboBox->currentText(), "Gated");
    }

    void theWidgetMayGoFirst()
    {
        comboBox.reset();
        QCOMPARE(mode->GetObserverCount(), std::size_t(0));
        mode->Select(30);
        remove();
        addMode();
    }

    void twoWidgetsShowOneValue()
    {
        VCComboBoxClassic second;
        second.SetValueSelection(mode);
        choose(*comboBox, 2);
        QCOMPARE(second.currentText(), "Gated");
    }

    // Translation

    void textsAreShownTranslatedAndWrittenByKey()
    {
        ModesTranslator translator;
        mode->SetTranslationNamespace("Modes");
        comboBox->SetValueSelection_ValuePath(path);
        QCOMPARE(comboBox->currentText(), "Continuous");
        QCoreApplication::installTranslator(&translator);
        QTRY_COMPARE(shownItems(*comboBox), QStringList({"Gated", "* Continuous", "* Gated"}));
        QCOMPARE(comboBox->currentText(), "* Continuous");
        choose(*comboBox, 0);
        QCOMPARE(mode->GetStringValue(), "Normal");
        QCoreApplication::removeTranslator(&translator);
        QTRY_COMPARE(shownItems(*comboBox), QStringList({"Normal", "Continuous", "Gated"}));
        QCOMPARE(comboBox->currentText(), "Normal");
    }

    void withoutTranslationNamespaceTheRawTextsAreShown()
    {
        ModesTranslator translator;
        QCoreApplication::installTranslator(&translator);
        comboBox->SetValueSelection_ValuePath(path);
        QCOMPARE(shownItems(*comboBox), QStringList({"Normal", "Continuous", "Gated"}));
    }

    // Texts that no list has room for

    void aHugeTextIsShownByItsBeginning()
    {
        const QString text(1024 * 1024, QLatin1Char('N'));
        mode->AddItem(text, 3.0, 40);
        QCOMPARE(comboBox->itemText(3), QString(500, QLatin1Char('N')) + QChar(0x2026));
        choose(*comboBox, 3);
        QCOMPARE(mode->GetCurrentKey(), 40);
        QCOMPARE(mode->GetCurrentItem()->GetName(), text);
        QCOMPARE(comboBox->currentIndex(), 3);
    }

    void aTextThatFitsIsShownWhole()
    {
        const QString text = QStringLiteral("a\nb ") + QString(496, QLatin1Char('N'));
        QCOMPARE(text.size(), 500);
        mode->AddItem(text, 3.0, 40);
        QCOMPARE(comboBox->itemText(3), text);
    }

    // Undo

    void anUndoTextIsAShortLine_data()
    {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("text");
        QTest::newRow("lines") << "North\nResult 2\r\nSouth"
                               << "Mode: North Result 2 South";
        QTest::newRow("huge") << QString(1024 * 1024, QLatin1Char('N'))
                              << QStringLiteral("Mode: ") + QString(73, QLatin1Char('N')) + QChar(0x2026);
    }

    void anUndoTextIsAShortLine()
    {
        QFETCH(QString, item);
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        mode->AddItem(item, 3.0, 40);
        choose(*comboBox, 3);
        QTEST(undo.undoText(), "text");
        QCOMPARE(undo.text(0), undo.undoText());
    }

    void aChoiceCanBeUndoneAndRedone()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        choose(*comboBox, 2);
        QCOMPARE(undo.count(), 1);
        QCOMPARE(undo.undoText(), "Mode: Gated");
        undo.undo();
        QCOMPARE(mode->GetCurrentKey(), 20);
        QCOMPARE(comboBox->currentText(), "Continuous");
        undo.redo();
        QCOMPARE(mode->GetCurrentKey(), 30);
        QCOMPARE(comboBox->currentText(), "Gated");
    }

    void undoNeedsNoWidget()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        choose(*comboBox, 2);
        comboBox.reset();
        undo.undo();
        QCOMPARE(mode->GetCurrentKey(), 20);
        undo.redo();
        QCOMPARE(mode->GetCurrentKey(), 30);
    }

    void undoFindsTheValueAgainByItsPath()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        choose(*comboBox, 2);
        remove();
        mode = addMode();
        mode->Select(30);
        undo.undo();
        QCOMPARE(mode->GetCurrentKey(), 20);
    }

    void undoOfAValueThatIsGoneFallsAway()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        choose(*comboBox, 2);
        remove();
        undo.undo();
        QCOMPARE(undo.count(), 0);
    }

    void undoOfAnItemThatIsGoneFallsAway()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        choose(*comboBox, 2);
        mode->DeleteItem(20);
        undo.undo();
        QCOMPARE(undo.count(), 0);
        QCOMPARE(mode->GetCurrentKey(), 30);
    }

    void undoDoesNotTouchAValueOfAnotherKind()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        choose(*comboBox, 2);
        remove();
        auto* text = tree.add<values::StringValue>(path);
        undo.undo();
        QCOMPARE(undo.count(), 0);
        QCOMPARE(text->GetValue(), QString());
    }

    void aValueOutsideTheTreeCanBeUndoneWhileItLives()
    {
        QUndoStack undo;
        UndoRecordingControlBase::SetUndoStack(&undo);
        auto own = std::make_unique<ValueSelection>();
        own->SetName("Mode", nullptr);
        own->AddItems({"a", "b"});
        own->SelectIndex(0);
        comboBox->SetValueSelection(own.get());
        auto* namesake = addMode("/Mode"); // at the path its bare name would name
        choose(*comboBox, 1);
        QCOMPARE(own->GetStringValue(), "b");
        undo.undo();
        QCOMPARE(own->GetStringValue(), "a");
        own.reset();
        undo.redo();
        QCOMPARE(undo.count(), 0);
        QCOMPARE(namesake->GetCurrentKey(), 20);
    }
};

DFL_TEST_MAIN(TestVCComboBoxClassic)
#include "tst_vccomboboxclassic.moc"
