#include "kt270/pgxmlsheet.h"
#include "support/testmain.h"

#include <QLabel>
#include <QSignalSpy>
#include <QSpinBox>
#include <QToolButton>

using KT270::PgXmlSheet;

namespace {

/// The object names of the widgets that Tab visits, beginning behind @p first.
QStringList keyboardOrder(QWidget& window, QWidget* first)
{
    QStringList names;
    first->setFocus();
    for (;;) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QWidget* const now = QApplication::focusWidget();
        if (now == first || now == nullptr || names.contains(now->objectName()))
            return names;
        names.append(now->objectName());
        if (names.size() > window.findChildren<QWidget*>().size())
            qFatal("The keyboard does not come back");
    }
}

QSpinBox* spin(const char* name)
{
    auto* const box = new QSpinBox;
    box->setObjectName(QLatin1String(name));
    return box;
}

QToolButton* titleOf(const PgXmlSheet& sheet)
{
    return sheet.findChild<QToolButton*>("title");
}

QLabel* markOf(const PgXmlSheet& sheet)
{
    return sheet.findChild<QLabel*>("modifiedMark");
}

QLabel* labelOf(const PgXmlSheet& sheet, const QWidget* widget)
{
    for (QLabel* label : sheet.findChildren<QLabel*>()) {
        if (label->buddy() == widget)
            return label;
    }
    return nullptr;
}

void turnWheel(QWidget* widget)
{
    const QPointF middle = widget->rect().center();
    QWheelEvent event(middle, widget->mapToGlobal(middle.toPoint()), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(widget, &event);
}

} // namespace

class TestPgXmlSheet : public QObject
{
    Q_OBJECT
private slots:
    void rowsStandAndAreVisitedByTheirNumbersWhateverTheOrderOfInsertion()
    {
        PgXmlSheet sheet("Title");
        sheet.InsertWidget("C", "fieldC", spin("c"), 30);
        sheet.InsertWidget("A", "fieldA", spin("a"), 1);
        sheet.InsertWidget("D", "fieldD", spin("d"), 31);
        sheet.InsertWidget(QString(), "fieldB", spin("b"), 7);
        sheet.show();
        sheet.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&sheet));
        QCOMPARE(keyboardOrder(sheet, titleOf(sheet)), QStringList({"a", "b", "c", "d"}));
        int above = -1;
        for (const char* const name : {"a", "b", "c", "d"}) {
            const auto* const widget = sheet.findChild<QSpinBox*>(name);
            const int top = widget->mapTo(&sheet, QPoint()).y();
            QVERIFY(top > above);
            above = top;
        }
    }

    void ofWidgetsWithTheSameRowTheFirstInsertedStandsFirst()
    {
        PgXmlSheet sheet("Title");
        sheet.InsertWidget("A", "fieldA", spin("a"), 2);
        sheet.InsertWidget("B", "fieldB", spin("b"), 2);
        sheet.InsertWidget("C", "fieldC", spin("c"), 1);
        sheet.show();
        sheet.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&sheet));
        QCOMPARE(keyboardOrder(sheet, titleOf(sheet)), QStringList({"c", "a", "b"}));
    }

    void aLabelIsTheBuddyAndTheAccessibleNameOfItsWidget()
    {
        PgXmlSheet sheet("Title");
        QSpinBox* const widget = spin("a");
        sheet.InsertWidget("&Quality [%]", "fieldA", widget, 1);
        QVERIFY(labelOf(sheet, widget) != nullptr);
        QCOMPARE(labelOf(sheet, widget)->text(), QString("&Quality [%]"));
        QCOMPARE(widget->accessibleName(), QString("Quality [%]"));
        QCOMPARE(widget->objectName(), QString("a"));
        QSpinBox* const other = spin("b");
        sheet.InsertWidget("This && &that", "fieldB", other, 2);
        QCOMPARE(other->accessibleName(), QString("This & that"));
    }

    void aLabelIsEnabledWithItsWidget()
    {
        PgXmlSheet sheet("Title");
        QSpinBox* const widget = spin("a");
        widget->setEnabled(false);
        sheet.InsertWidget("A", "fieldA", widget, 1);
        QVERIFY(!labelOf(sheet, widget)->isEnabled());
        widget->setEnabled(true);
        QVERIFY(labelOf(sheet, widget)->isEnabled());
    }

    void theFieldNameFindsTheWidget()
    {
        PgXmlSheet sheet("Title");
        QSpinBox* const widget = spin("a");
        sheet.InsertWidget("A", "fieldA", widget, 1);
        QCOMPARE(sheet.GetFieldWidget("fieldA"), widget);
        QVERIFY(sheet.GetFieldWidget("a") == nullptr);
        sheet.InsertWidget("B", "fieldB", nullptr, 1);
        QVERIFY(sheet.GetFieldWidget("fieldB") == nullptr);
    }

    void aRowEndsWithItsWidget()
    {
        PgXmlSheet sheet("Title");
        QSpinBox* const widget = spin("a");
        sheet.InsertWidget("A", "fieldA", widget, 1);
        const QPointer<QLabel> label = labelOf(sheet, widget);
        delete widget;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!label);
        QVERIFY(sheet.GetFieldWidget("fieldA") == nullptr);
        sheet.EnableInput(true, 1);
        sheet.InsertWidget("B", "fieldB", spin("b"), 1);
        QVERIFY(sheet.GetFieldWidget("fieldB") != nullptr);
    }

    void theMarkShowsModificationsAndEveryOneIsAnnounced()
    {
        PgXmlSheet sheet("Title");
        sheet.show();
        QSignalSpy announced(&sheet, &PgXmlSheet::si_modified);
        QVERIFY(!sheet.isModified());
        QVERIFY(!markOf(sheet)->isVisible());
        sheet.setModified(true);
        sheet.setModified(true);
        QVERIFY(sheet.isModified());
        QVERIFY(markOf(sheet)->isVisible());
        QVERIFY(markOf(sheet)->text().contains("Modified"));
        QCOMPARE(markOf(sheet)->accessibleName(), QString("Modified"));
        QCOMPARE(announced.count(), 2);
        sheet.setModified(false);
        QVERIFY(!sheet.isModified());
        QVERIFY(!markOf(sheet)->isVisible());
        QCOMPARE(announced.count(), 2);
    }

    void theMarkDoesNotMoveTheRows()
    {
        PgXmlSheet sheet("Title");
        sheet.show();
        const QSize before = sheet.minimumSizeHint();
        sheet.setModified(true);
        QCoreApplication::sendPostedEvents();
        QCOMPARE(sheet.minimumSizeHint(), before);
    }

    void inputIsForbiddenToTheWholeSheetOrToOneRow()
    {
        PgXmlSheet sheet("Title");
        QSpinBox* const a = spin("a");
        QSpinBox* const b = spin("b");
        QSpinBox* const ownReason = spin("c");
        ownReason->setEnabled(false);
        sheet.InsertWidget("A", "fieldA", a, 1);
        sheet.InsertWidget("B", "fieldB", b, 2);
        sheet.InsertWidget("C", "fieldC", ownReason, 3);
        sheet.EnableInput(false, 0);
        QVERIFY(!a->isEnabled() && !b->isEnabled());
        QVERIFY(titleOf(sheet)->isEnabled());
        QVERIFY(!labelOf(sheet, a)->isEnabled());
        sheet.EnableInput(true, 0);
        QVERIFY(a->isEnabled() && b->isEnabled() && labelOf(sheet, a)->isEnabled());
        QVERIFY(!ownReason->isEnabled());
        sheet.EnableInput(false, 2);
        QVERIFY(a->isEnabled() && !b->isEnabled());
        sheet.EnableInput(true, 2);
        QVERIFY(b->isEnabled());
        sheet.EnableInput(true, 3);
        QVERIFY(!ownReason->isEnabled());
    }

    void theTitleCollapsesTheSheetByMouseKeyboardAndProgram()
    {
        PgXmlSheet sheet("Title");
        QSpinBox* const a = spin("a");
        sheet.InsertWidget("A", "fieldA", a, 1);
        sheet.show();
        QSignalSpy changed(&sheet, &PgXmlSheet::si_collapsedChanged);
        titleOf(sheet)->click();
        QVERIFY(sheet.isCollapsed());
        QVERIFY(!a->isVisible());
        QTest::keyClick(titleOf(sheet), Qt::Key_Space);
        QVERIFY(!sheet.isCollapsed());
        QVERIFY(a->isVisible());
        sheet.setCollapsed(true);
        sheet.setCollapsed(true);
        QVERIFY(!a->isVisible());
        QCOMPARE(changed.count(), 3);
        QCOMPARE(changed.last().first().toBool(), true);
    }

    void theWheelChangesOnlyAWidgetThatHasTheFocus()
    {
        PgXmlSheet sheet("Title");
        QSpinBox* const a = spin("a");
        sheet.InsertWidget("A", "fieldA", a, 1);
        sheet.show();
        sheet.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&sheet));
        titleOf(sheet)->setFocus();
        QCOMPARE(a->focusPolicy(), Qt::StrongFocus); // else the wheel itself would take the focus
        turnWheel(a);
        QCOMPARE(a->value(), 0);
        a->setFocus();
        turnWheel(a);
        QCOMPARE(a->value(), 1);
    }

    void labelsBreakInANarrowWindow()
    {
        PgXmlSheet sheet("T");
        QSpinBox* const widget = spin("a");
        sheet.InsertWidget("Some words that take much room", "fieldA", widget, 1);
        sheet.resize(sheet.sizeHint().width() * 2, sheet.sizeHint().height());
        sheet.show();
        const int wide = labelOf(sheet, widget)->heightForWidth(labelOf(sheet, widget)->width());
        sheet.resize(sheet.minimumSizeHint().width(), sheet.height() * 2);
        QCOMPARE(labelOf(sheet, widget)->height(),
                 labelOf(sheet, widget)->heightForWidth(labelOf(sheet, widget)->width()));
        QVERIFY(labelOf(sheet, widget)->height() >= wide * 2);
    }
};

DFL_TEST_MAIN(TestPgXmlSheet)
#include "tst_pgxmlsheet.moc"
