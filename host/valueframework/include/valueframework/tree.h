#pragma once

#include "valueframework/valueframeworkglobal.h"

#include <QString>

#include <memory>
#include <vector>

namespace values {

class PathTable;
class ValueBase;

/// Is told of values that come into the tree and leave it.
class VALUEFRAMEWORK_EXPORT ITreeListener
{
public:
    virtual ~ITreeListener();
    /// @p value can be found by its path from now on.
    virtual void ValueInserted(ValueBase* value) = 0;
    /// The value that was at @p path (as GetPathName() gave it) can no longer be found; its observers have been told.
    virtual void ValueRemoved(const QString& path) = 0;

protected:
    ITreeListener() = default;
    ITreeListener(const ITreeListener&) = default;
    ITreeListener& operator=(const ITreeListener&) = default;
};

/// The single value tree: named values under "/"-separated paths.
///
/// A leading "/" and doubled ones make no difference. A path that ends in "/" names a folder and never finds a value.
/// Folders need not be made, and a value may have values below it. The tree owns what it accepted. GUI thread only.
class VALUEFRAMEWORK_EXPORT Tree
{
public:
    /// The one tree, never null.
    static Tree* Instance();

    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    /// The value at @p path, or null.
    [[nodiscard]] virtual ValueBase* FindValue(const QString& path) const;

    /// Puts @p value below @p parentPath under its own name and takes ownership. False, with the value left as it was
    /// and still the caller's, when a value is there already, and for null, a value without name or one in the tree.
    virtual bool InsertValue(const QString& parentPath, ValueBase* value);

    /// Takes the value out of the tree, sets its state to "being removed", tells all its observers once (ChangeState),
    /// drops them and deletes the value; called inside a notification of that value the deletion waits until the
    /// outermost one has returned. Values below it stay. False when there is none.
    virtual bool DeleteValue(const QString& path);

    virtual ~Tree();

    /// The values below @p path (not the one at it), in the order of their paths; an empty path means all.
    [[nodiscard]] std::vector<ValueBase*> ValuesBelow(const QString& path) const;

    /// Deletes every value, as DeleteValue() does.
    void Clear();

    /// Registers @p listener; null and one that is registered already are ignored.
    void AddListener(ITreeListener* listener);
    void RemoveListener(ITreeListener* listener);

private:
    friend class ValueBase;

    Tree();
    bool Rename(ValueBase* value, const QString& name);
    /// A value that is deleted outright tells nobody, but must not be found any more.
    void Forget(const QString& path);
    template <typename Call>
    void TellListeners(Call call);

    std::unique_ptr<PathTable> m_values; // by canonical path
    std::vector<ITreeListener*> m_listeners;
};

} // namespace values
