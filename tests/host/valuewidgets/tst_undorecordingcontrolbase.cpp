#include "support/testmain.h"
#include "valuewidgets/undorecordingcontrolbase.h"

#include <QUndoStack>

#include <functional>
#include <type_traits>

namespace {

class Control : public UndoRecordingControlBase
{
public:
    using UndoRecordingControlBase::CarryOut;
};

class Edit : public QUndoCommand
{
public:
    explicit Edit(int& number)
        : m_number(number)
    {
    }
    void undo() override
    {
        --m_number;
        if (onUndo)
            onUndo();
    }
    void redo() override
    {
        ++m_number;
        if (onRedo)
            onRedo();
    }

    std::function<void()> onUndo;
    std::function<void()> onRedo;

private:
    int& m_number;
};

} // namespace

class TestUndoRecordingControlBase : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { UndoRecordingControlBase::SetUndoStack(nullptr); }

    void thereIsNoStackAtFirst() { QVERIFY(UndoRecordingControlBase::GetUndoStack() == nullptr); }

    void aControlCanBeDestroyedThroughThisBase() { QVERIFY(std::has_virtual_destructor_v<UndoRecordingControlBase>); }

    void anEditIsCarriedOutOnceAndRecorded()
    {
        int number = 0;
        QUndoStack stack;
        UndoRecordingControlBase::SetUndoStack(&stack);
        QCOMPARE(UndoRecordingControlBase::GetUndoStack(), &stack);
        Control::CarryOut(std::make_unique<Edit>(number));
        QCOMPARE(number, 1);
        QCOMPARE(stack.count(), 1);
        stack.undo();
        QCOMPARE(number, 0);
    }

    void withoutStackAnEditIsCarriedOutOnly()
    {
        int number = 0;
        Control::CarryOut(std::make_unique<Edit>(number));
        QCOMPARE(number, 1);
    }

    void anEditInsideOneThatIsUndoneOrDoneAgainIsCarriedOutOnly()
    {
        int number = 0;
        int inner = 0;
        QUndoStack stack;
        UndoRecordingControlBase::SetUndoStack(&stack);
        Control::CarryOut(std::make_unique<Edit>(number));
        auto edit = std::make_unique<Edit>(number);
        edit->onUndo = [&] { Control::CarryOut(std::make_unique<Edit>(inner)); };
        edit->onRedo = edit->onUndo;
        Control::CarryOut(std::move(edit));
        QCOMPARE(stack.count(), 3); // inside an edit that is new it is recorded
        QCOMPARE(inner, 1);
        stack.undo();
        QCOMPARE(number, 1);
        QCOMPARE(inner, 2);
        QCOMPARE(stack.count(), 3);
        QCOMPARE(stack.index(), 2);
        stack.redo();
        QCOMPARE(number, 2);
        QCOMPARE(inner, 3);
        QCOMPARE(stack.count(), 3);
        QCOMPARE(stack.index(), 3);
        Control::CarryOut(std::make_unique<Edit>(number));
        QCOMPARE(stack.count(), 4);
    }

    void theStackMayGoInsideAnEdit()
    {
        int number = 0;
        auto stack = std::make_unique<QUndoStack>();
        UndoRecordingControlBase::SetUndoStack(stack.get());
        auto edit = std::make_unique<Edit>(number);
        edit->onRedo = [&] { stack.reset(); };
        Control::CarryOut(std::move(edit));
        QCOMPARE(number, 1);
    }

    void theStackMayGo()
    {
        int number = 0;
        auto stack = std::make_unique<QUndoStack>();
        UndoRecordingControlBase::SetUndoStack(stack.get());
        Control::CarryOut(std::make_unique<Edit>(number));
        stack.reset();
        QVERIFY(UndoRecordingControlBase::GetUndoStack() == nullptr);
        Control::CarryOut(std::make_unique<Edit>(number));
        QCOMPARE(number, 2);
    }
};

DFL_TEST_MAIN_WITH(TestUndoRecordingControlBase, QCoreApplication)
#include "tst_undorecordingcontrolbase.moc"
