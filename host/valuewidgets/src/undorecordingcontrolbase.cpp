#include "valuewidgets/undorecordingcontrolbase.h"

#include <QPointer>
#include <QScopeGuard>
#include <QUndoStack>

#include <utility>

namespace {

QPointer<QUndoStack>& undoStack()
{
    static QPointer<QUndoStack> stack;
    return stack;
}

/// How many edits are being undone or done again, one inside the other.
int& replays()
{
    static int count = 0;
    return count;
}

/// An edit that was carried out before it came to the stack.
class RecordedEdit final : public QUndoCommand
{
public:
    explicit RecordedEdit(std::unique_ptr<QUndoCommand> edit)
        : QUndoCommand(edit->text())
        , m_edit(std::move(edit))
    {
    }

    void undo() override { Replay(&QUndoCommand::undo); }
    void redo() override
    {
        if (std::exchange(m_isOnStack, true))
            Replay(&QUndoCommand::redo);
    }

private:
    void Replay(void (QUndoCommand::*step)())
    {
        ++replays();
        const auto end = qScopeGuard([] { --replays(); });
        ((*m_edit).*step)();
        setObsolete(m_edit->isObsolete());
    }

    std::unique_ptr<QUndoCommand> m_edit;
    bool m_isOnStack = false;
};

} // namespace

UndoRecordingControlBase::UndoRecordingControlBase() = default;
UndoRecordingControlBase::~UndoRecordingControlBase() = default;

void UndoRecordingControlBase::SetUndoStack(QUndoStack* stack)
{
    undoStack() = stack;
}

QUndoStack* UndoRecordingControlBase::GetUndoStack()
{
    return undoStack();
}

void UndoRecordingControlBase::CarryOut(std::unique_ptr<QUndoCommand> edit)
{
    edit->redo();
    // Now, because whoever is told of the edit may have taken the stack away. A stack that is at work takes nothing:
    // its edit at hand might be among those that the new one displaces.
    QUndoStack* const stack = GetUndoStack();
    if (stack != nullptr && replays() == 0 && !edit->isObsolete())
        stack->push(new RecordedEdit(std::move(edit)));
}
