#include "valuewidgets/undorecordingcontrolbase.h"

#include <QPointer>
#include <QUndoStack>

namespace {

QPointer<QUndoStack>& undoStack()
{
    static QPointer<QUndoStack> stack;
    return stack;
}

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
    if (QUndoStack* const stack = GetUndoStack())
        stack->push(edit.release()); // carries it out
    else
        edit->redo();
}
