#include "app/valuetreemodel.h"
#include "app/valuetreeview.h"

#include "support/freshtree.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"

#include <QComboBox>
#include <QLineEdit>
#include <QTreeView>

using testsupport::FreshTree;
using workbench::ValueTreeModel;
using workbench::ValueTreeView;

namespace {

/// A view with the focus, as an operator has it.
class ShownView : public ValueTreeView
{
public:
    ShownView()
    {
        resize(800, 400);
        show();
        activateWindow();
        if (!QTest::qWaitForWindowActive(this))
            qFatal("The window does not become active");
    }

    [[nodiscard]] QModelIndex valueIndex(const QString& path) const
    {
        return indexOf(path, ValueTreeModel::ValueColumn);
    }
    [[nodiscard]] bool shows(const QString& path) const { return indexOf(path, ValueTreeModel::NameColumn).isValid(); }

    template <typename Editor>
    Editor* openEditor(const QString& path)
    {
        tree()->setCurrentIndex(indexOf(path, ValueTreeModel::NameColumn));
        tree()->setFocus();
        QTest::keyClick(tree(), Qt::Key_F2);
        return tree()->findChild<Editor*>();
    }
};

} // namespace

class TestValueTreeView : public QObject
{
    Q_OBJECT
private slots:
    void theFilterShowsPathsThatContainTheText();
    void theFilterTakesNewValuesIn();
    void aFoldersNameShowsEverythingBelowIt();
    void newValuesAreVisibleAtOnce();
    void aNumberIsEditedByKeyboard();
    void escapeLeavesTheValueAlone();
    void leavingAnUnchangedFieldWritesNothing();
    void aFieldBeingEditedIsNotOverwritten();
    void aRefusedEditIsReported();
    void aSelectionIsEditedByAListOfItsItems();
    void aTruthValueIsSwitchedByTheSpaceKey();
    void aValueMayGoWhileItIsEdited();
    void aSelectionMayGoWhileItIsEdited();
};

void TestValueTreeView::theFilterShowsPathsThatContainTheText()
{
    const FreshTree tree;
    tree.add<values::IntValue>("/GUI/Config/DFSpan");
    tree.add<values::IntValue>("/GUI/Values/Level");
    ShownView view;
    QTest::keyClicks(view.filterEdit(), "dfsp");
    QVERIFY(view.shows("/GUI"));
    QVERIFY(view.shows("/GUI/Config/DFSpan"));
    QVERIFY(!view.shows("/GUI/Values"));
    QVERIFY(!view.shows("/GUI/Values/Level"));
    view.filterEdit()->clear();
    QVERIFY(view.shows("/GUI/Values/Level"));
}

void TestValueTreeView::theFilterTakesNewValuesIn()
{
    const FreshTree tree;
    ShownView view;
    view.filterEdit()->setText("span");
    tree.add<values::IntValue>("/A/B/Span");
    tree.add<values::IntValue>("/A/B/Other");
    QVERIFY(view.shows("/A/B/Span"));
    QVERIFY(!view.shows("/A/B/Other"));
}

void TestValueTreeView::aFoldersNameShowsEverythingBelowIt()
{
    const FreshTree tree;
    tree.add<values::IntValue>("/GUI/Config/DFSpan");
    tree.add<values::IntValue>("/GUI/Values/Level");
    ShownView view;
    view.filterEdit()->setText("config/");
    QVERIFY(view.shows("/GUI/Config/DFSpan"));
    QVERIFY(!view.shows("/GUI/Values/Level"));
}

void TestValueTreeView::newValuesAreVisibleAtOnce()
{
    const FreshTree tree;
    ShownView view;
    tree.add<values::IntValue>("/A/B/c");
    QTRY_VERIFY(view.tree()->visualRect(view.valueIndex("/A/B/c")).isValid());
}

void TestValueTreeView::aNumberIsEditedByKeyboard()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/A/i");
    ShownView view;
    auto* const edit = view.openEditor<QLineEdit>("/A/i");
    QVERIFY(edit != nullptr);
    QTest::keyClicks(edit, "42");
    QCOMPARE(value->GetValue(), 0);
    QTest::keyClick(edit, Qt::Key_Return);
    QTRY_COMPARE(value->GetValue(), 42);
}

void TestValueTreeView::escapeLeavesTheValueAlone()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/i");
    ShownView view;
    const QPointer<QLineEdit> edit(view.openEditor<QLineEdit>("/i"));
    QVERIFY(edit);
    QTest::keyClicks(edit, "42");
    QTest::keyClick(edit, Qt::Key_Escape);
    QTRY_VERIFY(!edit);
    QCOMPARE(value->GetValue(), 0);
}

void TestValueTreeView::leavingAnUnchangedFieldWritesNothing()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/i");
    value->SetValue(1, nullptr);
    ShownView view;
    const QPointer<QLineEdit> edit(view.openEditor<QLineEdit>("/i"));
    QVERIFY(edit);
    value->SetValue(2, nullptr);
    QTest::keyClick(edit, Qt::Key_Return);
    QTRY_VERIFY(!edit);
    QCOMPARE(value->GetValue(), 2);
}

void TestValueTreeView::aFieldBeingEditedIsNotOverwritten()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/i");
    ShownView view;
    auto* const edit = view.openEditor<QLineEdit>("/i");
    QVERIFY(edit != nullptr);
    QTest::keyClicks(edit, "4");
    QSignalSpy changed(view.model(), &ValueTreeModel::dataChanged);
    value->SetValue(9, nullptr);
    QTRY_VERIFY(!changed.isEmpty());
    QCOMPARE(edit->text(), QStringLiteral("4"));
}

void TestValueTreeView::aRefusedEditIsReported()
{
    const FreshTree tree;
    tree.add<values::IntValue>("/i");
    ShownView view;
    QSignalSpy refused(&view, &ValueTreeView::editRefused);
    auto* const edit = view.openEditor<QLineEdit>("/i");
    QVERIFY(edit != nullptr);
    QTest::keyClicks(edit, "x");
    QTest::keyClick(edit, Qt::Key_Return);
    QTRY_COMPARE(refused.count(), 1);
    QCOMPARE(refused[0][0].toString(), QStringLiteral("/i takes a whole number, not \"x\"."));
}

void TestValueTreeView::aSelectionIsEditedByAListOfItsItems()
{
    const FreshTree tree;
    auto* const selection = tree.add<values::ValueSelection>("/x");
    selection->AddItem("one", 0.0, 10);
    selection->AddItem("two", 0.0, 20);
    selection->Select(10);
    ShownView view;
    auto* const combo = view.openEditor<QComboBox>("/x");
    QVERIFY(combo != nullptr);
    QCOMPARE(combo->count(), 2);
    QCOMPARE(combo->currentText(), QStringLiteral("one"));
    QTest::keyClick(combo, Qt::Key_Down);
    QCOMPARE(selection->GetCurrentKey(), 20);
}

void TestValueTreeView::aTruthValueIsSwitchedByTheSpaceKey()
{
    const FreshTree tree;
    auto* const value = tree.add<values::BoolValue>("/b");
    ShownView view;
    view.tree()->setCurrentIndex(view.indexOf("/b", ValueTreeModel::NameColumn));
    view.tree()->setFocus();
    QTest::keyClick(view.tree(), Qt::Key_Space);
    QVERIFY(value->GetValue());
}

void TestValueTreeView::aValueMayGoWhileItIsEdited()
{
    const FreshTree tree;
    tree.add<values::IntValue>("/A/i");
    ShownView view;
    const QPointer<QLineEdit> edit(view.openEditor<QLineEdit>("/A/i"));
    QVERIFY(edit);
    QTest::keyClicks(edit, "42");
    values::Tree::Instance()->DeleteValue("/A/i");
    QTRY_VERIFY(!edit);
    QVERIFY(!view.shows("/A"));
}

void TestValueTreeView::aSelectionMayGoWhileItIsEdited()
{
    const FreshTree tree;
    tree.add<values::ValueSelection>("/A/x")->AddItems({"one", "two"});
    ShownView view;
    const QPointer<QComboBox> combo(view.openEditor<QComboBox>("/A/x"));
    QVERIFY(combo);
    combo->showPopup();
    values::Tree::Instance()->DeleteValue("/A/x");
    QTRY_VERIFY(!combo);
}

DFL_TEST_MAIN(TestValueTreeView)
#include "tst_valuetreeview.moc"
