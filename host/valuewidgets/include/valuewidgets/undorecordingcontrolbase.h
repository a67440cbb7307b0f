#pragma once

#include "valuewidgets/valuewidgetsglobal.h"

#include <memory>

class QUndoCommand;
class QUndoStack;

/// Base of the widgets whose operator edits can be undone. GUI thread only.
class VALUEWIDGETS_EXPORT UndoRecordingControlBase
{
public:
    virtual ~UndoRecordingControlBase();
    UndoRecordingControlBase(const UndoRecordingControlBase&) = delete;
    UndoRecordingControlBase& operator=(const UndoRecordingControlBase&) = delete;

    /// For the host: where operator edits are recorded. Null (at first, and when the stack has gone): nowhere.
    static void SetUndoStack(QUndoStack* stack);
    [[nodiscard]] static QUndoStack* GetUndoStack();

protected:
    UndoRecordingControlBase();

    /// Carries @p edit out and records it; without an undo stack, and inside an edit that is being undone or done
    /// again, it is carried out only.
    static void CarryOut(std::unique_ptr<QUndoCommand> edit);
};
