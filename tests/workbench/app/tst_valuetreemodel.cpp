#include "app/valuetreemodel.h"

#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"

#include <QAbstractItemModelTester>

using testsupport::FreshTree;
using testsupport::RecordingObserver;
using workbench::ValueTreeModel;

namespace {

QString text(const ValueTreeModel& model, const QString& path, int column)
{
    return model.indexOf(path, column).data().toString();
}

QStringList childNames(const ValueTreeModel& model, const QModelIndex& parent = {})
{
    QStringList names;
    for (int row = 0; row < model.rowCount(parent); ++row)
        names += model.index(row, ValueTreeModel::NameColumn, parent).data().toString();
    return names;
}

} // namespace

class TestValueTreeModel : public QObject
{
    Q_OBJECT
private slots:
    void valuesThatAreThereAlreadyAreRows();
    void eachKindShowsNameValueStateAndKind();
    void insertedValuesComeInOrderOfTheirNames();
    void oneInsertionInsertsOneBranch();
    void removedValuesGoWithTheirEmptyFolders();
    void aValueWithValuesBelowItStaysAsAFolder();
    void aFolderThatBecomesAValueIsDrawnAnew();
    void aRenamedValueMovesAndIsStillFollowed();
    void aValueDeletedOutrightGoes();
    void aValueDeletedInItsOwnNotificationGoes();
    void theWholeTreeMayBeCleared();
    void aChangedValueIsDrawnAnew();
    void aChangedStateIsDrawnAnew();
    void manyChangesInOneFrameAreDrawnOnce();
    void onlyTheChangedRowIsDrawn();
    void aValueThatGoesInTheFrameOfItsChangeIsNotDrawn();
    void theModelRegistersOnceWithEachValueAndLeaves();
    void anEditSetsTheValueAsAnOutsiderDoes_data();
    void anEditSetsTheValueAsAnOutsiderDoes();
    void aTruthValueIsEditedByItsCheckMark();
    void aSelectionIsEditedByKeyOrText();
    void aRefusedEditSaysWhy_data();
    void aRefusedEditSaysWhy();
    void anEditOfAValueThatHasGoneIsRefused();
    void anObserverMayDeleteTheValueDuringTheEdit();
    void onlyTheValueColumnOfValuesCanBeEdited();
    void otherRolesAndColumnsAreNotSet();
    void valuesNotInUseAreShownPaler();
    void toolTipsTellPathKindAndRange();
};

void TestValueTreeModel::valuesThatAreThereAlreadyAreRows()
{
    const FreshTree tree;
    tree.add<values::IntValue>("/A/B/c");
    tree.add<values::IntValue>("/A/d");
    ValueTreeModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QCOMPARE(childNames(model), QStringList("A"));
    QCOMPARE(childNames(model, model.indexOf("/A")), QStringList({"B", "d"}));
    QCOMPARE(childNames(model, model.indexOf("/A/B")), QStringList("c"));
    QCOMPARE(model.indexOf("/A/B/c").data(ValueTreeModel::PathRole).toString(), QStringLiteral("/A/B/c"));
    QVERIFY(!model.indexOf("/A/x").isValid());
}

void TestValueTreeModel::eachKindShowsNameValueStateAndKind()
{
    const FreshTree tree;
    tree.add<values::BoolValue>("/b")->SetValue(true, nullptr);
    tree.add<values::IntValue>("/i")->SetValue(-5, nullptr);
    tree.add<values::DoubleValue>("/d")->SetValue(0.1, nullptr);
    tree.add<values::StringValue>("/s")->SetValue("text", nullptr);
    auto* const selection = tree.add<values::ValueSelection>("/x");
    selection->AddItems({"first", "second"});
    selection->Select(1);
    selection->SetState(values::StateUnused, nullptr);
    const ValueTreeModel model;
    const auto row = [&model](const QString& path) {
        return QStringList{text(model, path, 0), text(model, path, 1), text(model, path, 2), text(model, path, 3)};
    };
    QCOMPARE(row("/b"), QStringList({"b", "true", "0 in use", "bool"}));
    QCOMPARE(model.indexOf("/b", ValueTreeModel::ValueColumn).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
    QCOMPARE(row("/i"), QStringList({"i", "-5", "0 in use", "int"}));
    QCOMPARE(row("/d"), QStringList({"d", "0.1", "0 in use", "double"}));
    QCOMPARE(row("/s"), QStringList({"s", "text", "0 in use", "string"}));
    QCOMPARE(row("/x"), QStringList({"x", "second", "2 not in use", "selection"}));
    const QModelIndex index = model.indexOf("/x", ValueTreeModel::ValueColumn);
    QCOMPARE(index.data(ValueTreeModel::ItemNamesRole).toStringList(), QStringList({"first", "second"}));
    QCOMPARE(index.data(ValueTreeModel::ItemKeysRole).toList(), QVariantList({0, 1}));
    QCOMPARE(index.data(ValueTreeModel::CurrentKeyRole).toInt(), 1);
    QCOMPARE(model.headerData(0, Qt::Horizontal, Qt::DisplayRole).toString(), QStringLiteral("Name"));
    QCOMPARE(model.headerData(3, Qt::Horizontal, Qt::DisplayRole).toString(), QStringLiteral("Kind"));
}

void TestValueTreeModel::insertedValuesComeInOrderOfTheirNames()
{
    const FreshTree tree;
    ValueTreeModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    for (const char* const name : {"m", "a", "z", "k"})
        tree.add<values::IntValue>(QStringLiteral("/F/") + name);
    QCOMPARE(childNames(model, model.indexOf("/F")), QStringList({"a", "k", "m", "z"}));
}

void TestValueTreeModel::oneInsertionInsertsOneBranch()
{
    const FreshTree tree;
    tree.add<values::IntValue>("/A/a");
    ValueTreeModel model;
    QSignalSpy inserted(&model, &ValueTreeModel::rowsInserted);
    tree.add<values::IntValue>("/A/B/C/d");
    QCOMPARE(inserted.count(), 3);
    QCOMPARE(inserted[0][0].toModelIndex(), model.indexOf("/A"));
    QCOMPARE(inserted[1][0].toModelIndex(), model.indexOf("/A/B"));
    QCOMPARE(inserted[2][0].toModelIndex(), model.indexOf("/A/B/C"));
}

void TestValueTreeModel::removedValuesGoWithTheirEmptyFolders()
{
    const FreshTree tree;
    tree.add<values::IntValue>("/A/B/C/d");
    tree.add<values::IntValue>("/A/e");
    ValueTreeModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QSignalSpy removed(&model, &ValueTreeModel::rowsRemoved);
    QVERIFY(values::Tree::Instance()->DeleteValue("/A/B/C/d"));
    QCOMPARE(removed.count(), 1);
    QCOMPARE(childNames(model, model.indexOf("/A")), QStringList("e"));
    QVERIFY(!model.indexOf("/A/B/C").isValid());
    QVERIFY(values::Tree::Instance()->DeleteValue("/A/e"));
    QCOMPARE(model.rowCount(), 0);
}

void TestValueTreeModel::aValueWithValuesBelowItStaysAsAFolder()
{
    const FreshTree tree;
    tree.add<values::StringValue>("/S")->SetValue("text", nullptr);
    tree.add<values::IntValue>("/S/a");
    tree.add<values::IntValue>("/S/b");
    ValueTreeModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QVERIFY(values::Tree::Instance()->DeleteValue("/S"));
    QCOMPARE(childNames(model), QStringList("S"));
    QCOMPARE(text(model, "/S", ValueTreeModel::ValueColumn), QString());
    QCOMPARE(childNames(model, model.indexOf("/S")), QStringList({"a", "b"}));
    QVERIFY(values::Tree::Instance()->DeleteValue("/S/a"));
    QCOMPARE(childNames(model, model.indexOf("/S")), QStringList("b"));
}

void TestValueTreeModel::aFolderThatBecomesAValueIsDrawnAnew()
{
    const FreshTree tree;
    tree.add<values::IntValue>("/S/a");
    ValueTreeModel model;
    QSignalSpy changed(&model, &ValueTreeModel::dataChanged);
    tree.add<values::StringValue>("/S")->SetValue("text", nullptr);
    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(text(model, "/S", ValueTreeModel::ValueColumn), QStringLiteral("text"));
    QCOMPARE(model.rowCount(), 1);
}

void TestValueTreeModel::aRenamedValueMovesAndIsStillFollowed()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/A/old");
    ValueTreeModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QVERIFY(value->SetName("new", nullptr));
    QCOMPARE(childNames(model, model.indexOf("/A")), QStringList("new"));
    QCOMPARE(value->GetObserverCount(), std::size_t(1));
    QSignalSpy changed(&model, &ValueTreeModel::dataChanged);
    value->SetValue(5, nullptr);
    QTRY_COMPARE(changed.count(), 1);
}

void TestValueTreeModel::aValueDeletedOutrightGoes()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/A/a");
    ValueTreeModel model;
    delete value;
    QCOMPARE(model.rowCount(), 0);
}

void TestValueTreeModel::aValueDeletedInItsOwnNotificationGoes()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/A/a");
    RecordingObserver deleter([](Observable*, TChangeCode code) {
        if (code == ChangeContent)
            values::Tree::Instance()->DeleteValue("/A/a");
    });
    value->AddObserver(&deleter);
    ValueTreeModel model;
    value->SetValue(1, nullptr);
    QCOMPARE(model.rowCount(), 0);
    QCoreApplication::processEvents();
}

void TestValueTreeModel::theWholeTreeMayBeCleared()
{
    const FreshTree tree;
    for (int i = 0; i < 50; ++i)
        tree.add<values::IntValue>(QStringLiteral("/%1/%2/v").arg(i % 5).arg(i));
    ValueTreeModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    values::Tree::Instance()->Clear();
    QCOMPARE(model.rowCount(), 0);
}

void TestValueTreeModel::aChangedValueIsDrawnAnew()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/A/a");
    const ValueTreeModel model;
    QSignalSpy changed(&model, &ValueTreeModel::dataChanged);
    value->SetValue(9, nullptr);
    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(changed.last()[0].toModelIndex(), model.indexOf("/A/a", ValueTreeModel::NameColumn));
    QCOMPARE(changed.last()[1].toModelIndex(), model.indexOf("/A/a", ValueTreeModel::KindColumn));
    QCOMPARE(text(model, "/A/a", ValueTreeModel::ValueColumn), QStringLiteral("9"));
}

void TestValueTreeModel::aChangedStateIsDrawnAnew()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/a");
    const ValueTreeModel model;
    QSignalSpy changed(&model, &ValueTreeModel::dataChanged);
    value->SetState(values::StateUnused, nullptr);
    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(text(model, "/a", ValueTreeModel::StateColumn), QStringLiteral("2 not in use"));
}

void TestValueTreeModel::manyChangesInOneFrameAreDrawnOnce()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/a");
    const ValueTreeModel model;
    QSignalSpy changed(&model, &ValueTreeModel::dataChanged);
    for (int i = 1; i <= 1000; ++i)
        value->SetValue(i, nullptr);
    QCOMPARE(changed.count(), 0);
    QTRY_COMPARE(changed.count(), 1);
}

void TestValueTreeModel::onlyTheChangedRowIsDrawn()
{
    const FreshTree tree;
    for (int i = 0; i < 20; ++i)
        tree.add<values::IntValue>(QStringLiteral("/F/%1").arg(i));
    const ValueTreeModel model;
    QSignalSpy changed(&model, &ValueTreeModel::dataChanged);
    values::Tree::Instance()->FindValue("/F/7")->SetStringValue("1", nullptr);
    values::Tree::Instance()->FindValue("/F/9")->SetStringValue("1", nullptr);
    QTRY_COMPARE(changed.count(), 2);
}

void TestValueTreeModel::aValueThatGoesInTheFrameOfItsChangeIsNotDrawn()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/A/a");
    auto* const other = tree.add<values::IntValue>("/b");
    const ValueTreeModel model;
    QSignalSpy changed(&model, &ValueTreeModel::dataChanged);
    value->SetValue(3, nullptr);
    values::Tree::Instance()->DeleteValue("/A/a");
    other->SetValue(3, nullptr);
    QTRY_COMPARE(changed.count(), 1);
    QCOMPARE(changed.last()[0].toModelIndex(), model.indexOf("/b"));
}

void TestValueTreeModel::theModelRegistersOnceWithEachValueAndLeaves()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/a");
    {
        const ValueTreeModel model;
        QCOMPARE(value->GetObserverCount(), std::size_t(1));
        tree.add<values::IntValue>("/a/below");
        QCOMPARE(value->GetObserverCount(), std::size_t(1));
    }
    QCOMPARE(value->GetObserverCount(), std::size_t(0));
    tree.add<values::IntValue>("/later"); // the model no longer listens
}

void TestValueTreeModel::anEditSetsTheValueAsAnOutsiderDoes_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("newText");
    QTest::newRow("bool") << "/b"
                          << "true";
    QTest::newRow("int") << "/i"
                         << "42";
    QTest::newRow("double") << "/d"
                            << "2.5";
    QTest::newRow("string") << "/s"
                            << "new text";
    QTest::newRow("selection") << "/x"
                               << "second";
}

void TestValueTreeModel::anEditSetsTheValueAsAnOutsiderDoes()
{
    QFETCH(QString, path);
    QFETCH(QString, newText);
    const FreshTree tree;
    tree.add<values::BoolValue>("/b");
    tree.add<values::IntValue>("/i");
    tree.add<values::DoubleValue>("/d");
    tree.add<values::StringValue>("/s");
    tree.add<values::ValueSelection>("/x")->AddItems({"first", "second"});
    ValueTreeModel model;
    QSignalSpy refused(&model, &ValueTreeModel::editRefused);
    RecordingObserver observer;
    values::ValueBase* const value = values::Tree::Instance()->FindValue(path);
    value->AddObserver(&observer);
    QVERIFY(model.setData(model.indexOf(path, ValueTreeModel::ValueColumn), newText));
    QCOMPARE(value->GetStringValue(), newText);
    QCOMPARE(observer.codes, std::vector<TChangeCode>({ChangeContent, ChangeExternal}));
    QCOMPARE(refused.count(), 0);
    value->RemoveObserver(&observer);
}

void TestValueTreeModel::aTruthValueIsEditedByItsCheckMark()
{
    const FreshTree tree;
    auto* const value = tree.add<values::BoolValue>("/b");
    ValueTreeModel model;
    const QModelIndex index = model.indexOf("/b", ValueTreeModel::ValueColumn);
    QVERIFY(model.setData(index, Qt::Checked, Qt::CheckStateRole));
    QVERIFY(value->GetValue());
    QVERIFY(model.setData(index, Qt::Unchecked, Qt::CheckStateRole));
    QVERIFY(!value->GetValue());
}

void TestValueTreeModel::aSelectionIsEditedByKeyOrText()
{
    const FreshTree tree;
    auto* const selection = tree.add<values::ValueSelection>("/x");
    selection->AddItem("same", 0.0, 10);
    selection->AddItem("same", 0.0, 20);
    ValueTreeModel model;
    const QModelIndex index = model.indexOf("/x", ValueTreeModel::ValueColumn);
    QVERIFY(model.setData(index, 20));
    QCOMPARE(selection->GetCurrentKey(), 20);
    QVERIFY(model.setData(index, "same"));
    QCOMPARE(selection->GetCurrentKey(), 10);
}

void TestValueTreeModel::aRefusedEditSaysWhy_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QVariant>("edit");
    QTest::addColumn<QString>("reason");
    QTest::newRow("bool") << "/b" << QVariant("maybe") << "/b takes \"true\" or \"false\", not \"maybe\".";
    QTest::newRow("int") << "/i" << QVariant("1.5") << "/i takes a whole number, not \"1.5\".";
    QTest::newRow("int out of range") << "/limited" << QVariant("101")
                                      << "/limited takes a whole number from 0 to 100, not \"101\".";
    QTest::newRow("double") << "/d" << QVariant("x") << "/d takes a number, not \"x\".";
    QTest::newRow("double out of range") << "/quality" << QVariant("-1")
                                         << "/quality takes a number from 0 to 99.5, not \"-1\".";
    QTest::newRow("selection") << "/x" << QVariant("third") << "/x has no item \"third\".";
    QTest::newRow("selection by key") << "/x" << QVariant(7) << "/x has no item with the key 7.";
    QTest::newRow("place markers") << "/%1 %2" << QVariant(7) << "/%1 %2 has no item with the key 7.";
}

void TestValueTreeModel::aRefusedEditSaysWhy()
{
    QFETCH(QString, path);
    QFETCH(QVariant, edit);
    QFETCH(QString, reason);
    const FreshTree tree;
    tree.add<values::BoolValue>("/b");
    tree.add<values::IntValue>("/i");
    tree.add<values::IntValue>("/limited")->SetMinMax(0, 100, 1, nullptr);
    tree.add<values::DoubleValue>("/d");
    tree.add<values::DoubleValue>("/quality")->SetMinMax(0.0, 99.5, 1.0, nullptr);
    tree.add<values::ValueSelection>("/x")->AddItems({"first", "second"});
    tree.add<values::ValueSelection>("/%1 %2");
    ValueTreeModel model;
    QSignalSpy refused(&model, &ValueTreeModel::editRefused);
    const QString before = values::Tree::Instance()->FindValue(path)->GetStringValue();
    QVERIFY(!model.setData(model.indexOf(path, ValueTreeModel::ValueColumn), edit));
    QCOMPARE(values::Tree::Instance()->FindValue(path)->GetStringValue(), before);
    QCOMPARE(refused.count(), 1);
    QCOMPARE(refused[0][0].toString(), reason);
}

void TestValueTreeModel::anEditOfAValueThatHasGoneIsRefused()
{
    const FreshTree tree;
    tree.add<values::IntValue>("/S");
    tree.add<values::IntValue>("/S/a");
    ValueTreeModel model;
    QSignalSpy refused(&model, &ValueTreeModel::editRefused);
    const QPersistentModelIndex index = model.indexOf("/S", ValueTreeModel::ValueColumn);
    values::Tree::Instance()->DeleteValue("/S");
    QVERIFY(!model.setData(index, "5"));
    QCOMPARE(refused.count(), 1);
    QCOMPARE(refused[0][0].toString(), QStringLiteral("/S is no longer there."));
    values::Tree::Instance()->DeleteValue("/S/a");
    QVERIFY(!model.setData(index, "5"));
}

void TestValueTreeModel::anObserverMayDeleteTheValueDuringTheEdit()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/a");
    RecordingObserver deleter([](Observable*, TChangeCode code) {
        if (code == ChangeContent)
            values::Tree::Instance()->DeleteValue("/a");
    });
    value->AddObserver(&deleter);
    ValueTreeModel model;
    model.setData(model.indexOf("/a", ValueTreeModel::ValueColumn), "5");
    QCOMPARE(model.rowCount(), 0);
}

void TestValueTreeModel::onlyTheValueColumnOfValuesCanBeEdited()
{
    const FreshTree tree;
    tree.add<values::IntValue>("/F/i");
    tree.add<values::BoolValue>("/F/b");
    const ValueTreeModel model;
    QVERIFY(model.flags(model.indexOf("/F/i", ValueTreeModel::ValueColumn)) & Qt::ItemIsEditable);
    QVERIFY(model.flags(model.indexOf("/F/b", ValueTreeModel::ValueColumn)) & Qt::ItemIsUserCheckable);
    QVERIFY(!(model.flags(model.indexOf("/F/b", ValueTreeModel::ValueColumn)) & Qt::ItemIsEditable));
    QVERIFY(!(model.flags(model.indexOf("/F/i", ValueTreeModel::NameColumn)) & Qt::ItemIsEditable));
    QVERIFY(!(model.flags(model.indexOf("/F/i", ValueTreeModel::StateColumn)) & Qt::ItemIsEditable));
    QVERIFY(!(model.flags(model.indexOf("/F", ValueTreeModel::ValueColumn)) & Qt::ItemIsEditable));
}

void TestValueTreeModel::otherRolesAndColumnsAreNotSet()
{
    const FreshTree tree;
    auto* const value = tree.add<values::IntValue>("/i");
    ValueTreeModel model;
    QSignalSpy refused(&model, &ValueTreeModel::editRefused);
    QVERIFY(!model.setData(model.indexOf("/i", ValueTreeModel::NameColumn), "5"));
    QVERIFY(!model.setData(model.indexOf("/i", ValueTreeModel::ValueColumn), "5", Qt::DisplayRole));
    QVERIFY(!model.setData({}, "5"));
    QCOMPARE(value->GetValue(), 0);
    QCOMPARE(refused.count(), 0);
}

void TestValueTreeModel::valuesNotInUseAreShownPaler()
{
    const FreshTree tree;
    tree.add<values::IntValue>("/used");
    tree.add<values::IntValue>("/unused")->SetState(values::StateUnused, nullptr);
    const ValueTreeModel model;
    QVERIFY(!model.indexOf("/used").data(Qt::ForegroundRole).isValid());
    QCOMPARE(model.indexOf("/unused").data(Qt::ForegroundRole).value<QBrush>().color(),
             QGuiApplication::palette().color(QPalette::PlaceholderText));
}

void TestValueTreeModel::toolTipsTellPathKindAndRange()
{
    const FreshTree tree;
    tree.add<values::IntValue>("/F/i")->SetMinMax(-3, 7, 1, nullptr);
    tree.add<values::StringValue>("/F/s");
    const ValueTreeModel model;
    QCOMPARE(model.indexOf("/F/i").data(Qt::ToolTipRole).toString(), QStringLiteral("/F/i\nint from -3 to 7"));
    QCOMPARE(model.indexOf("/F/s").data(Qt::ToolTipRole).toString(), QStringLiteral("/F/s\nstring"));
    QCOMPARE(model.indexOf("/F").data(Qt::ToolTipRole).toString(), QStringLiteral("/F"));
}

DFL_TEST_MAIN(TestValueTreeModel)
#include "tst_valuetreemodel.moc"
