#pragma once

#include "valueframework/tree.h"
#include "valueframework/valuebase.h"

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
        : QUndoCommand(text)
        , m_value(value)
        , m_before(std::move(before))
        , m_after(std::move(after))
        , m_causer(causer)
    {
    }

    void undo() override { setObsolete(!Write(m_value, m_before, nullptr)); }
    void redo() override { setObsolete(!Write(m_value, m_after, std::exchange(m_causer, nullptr))); }

private:
    ValueReference m_value;
    Content m_before;
    Content m_after;
    IObserver* m_causer;
};
