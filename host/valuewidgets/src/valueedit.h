#pragma once

#include "valueframework/tree.h"
#include "valueframework/valuebase.h"
#include "ztbase/brix/texts.h"
#include "ztbase/errorhandler.h"

#include <QUndoCommand>

#include <utility>

/// Finds a value again, however long after: by its path, or, when it was never in the tree, as long as it lives.
class ValueReference
{
public:
    explicit ValueReference(values::ValueBase& value)
        : m_value(&value)
        , m_life(value.GetLife())
        , m_path(value.IsInTree() ? value.GetPathName() : QString())
    {
    }

    [[nodiscard]] values::ValueBase* Find() const
    {
        if (!m_path.isEmpty())
            return values::Tree::Instance()->FindValue(m_path);
        return m_life.IsOver() ? nullptr : m_value;
    }

private:
    values::ValueBase* m_value;
    Observable::Life m_life;
    QString m_path;
};

/// An operator's edit of one value, for the undo stack. Becomes obsolete when it can no longer be written.
///
/// @p Content is what the edit exchanges. A function `bool Write(const ValueReference&, const Content&, IObserver*)`
/// found with it writes it and is false when that is impossible.
template <typename Content>
class ValueEdit final : public QUndoCommand
{
public:
    /// @p causer is named as the cause of the edit itself; it may be gone when the edit is undone.
    ValueEdit(values::ValueBase& value, Content before, Content after, IObserver* causer, const QString& text)
        : QUndoCommand(Brix::OneLine(text, longestText))
        , m_value(value)
        , m_before(std::move(before))
        , m_after(std::move(after))
        , m_causer(causer)
    {
    }

    void undo() override { setObsolete(!WriteContained(m_before, nullptr)); }
    void redo() override { setObsolete(!WriteContained(m_after, std::exchange(m_causer, nullptr))); }

private:
    /// Who edits is an operator: what an observer of the value raises would go through the widgets and the undo stack,
    /// which know nothing of it. The value has its new content by then.
    [[nodiscard]] bool WriteContained(const Content& content, IObserver* causer) const
    {
        try {
            return Write(m_value, content, causer);
        } catch (...) {
            if ((ErrorHandler::Instance()->GetTraceMask() & ErrorHandler::ComponentTraces) != 0)
                _Q_Trace(QStringLiteral("Exception in an observer of an edited value: %1").arg(text()),
                         QStringLiteral("valuewidgets/valueedit"), __LINE__);
            return true;
        }
    }

    // Characters, in one line: menus show it, and of a text with a line break only what is behind that.
    static constexpr int longestText = 80;

    ValueReference m_value;
    Content m_before;
    Content m_after;
    IObserver* m_causer;
};
