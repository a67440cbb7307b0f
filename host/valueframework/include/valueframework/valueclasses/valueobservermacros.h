#pragma once

#include "valueframework/tree.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"
#include "ztbase/errorhandler.h"
#include "ztbase/exceptions.h"

#include <memory>
#include <utility>

namespace values {

/// A reference to a value of the tree that becomes null when the value goes.
///
/// A member of the object that uses the value. While bound it is registered as an observer of the value. Binding and
/// unbinding never change the value.
template <typename T>
class ValuePtr : public IObserver
{
public:
    ValuePtr() = default;
    ~ValuePtr() override { Unbind(); }
    ValuePtr(const ValuePtr&) = delete;
    ValuePtr& operator=(const ValuePtr&) = delete;

    /// Lets go of a value that reports its removal; everything else is ignored.
    void Update(Observable* /*source*/, TChangeCode code) override
    {
        if (code == ChangeState && m_value != nullptr && m_value->GetState() == StateRemoved)
            Unbind();
    }

    /// Deletes the bound value from the tree and unbinds. For the one who created the value.
    virtual void Release()
    {
        if (m_value == nullptr)
            return;
        const QString path = m_value->GetPathName();
        Unbind();
        Tree::Instance()->DeleteValue(path);
    }

    /// Binds to @p value, or to none.
    virtual void Assign(T* value)
    {
        if (value == m_value)
            return;
        Unbind();
        Bind(value);
    }

    [[nodiscard]] T* get() const { return m_value; }
    T* operator->() const { return m_value; }
    explicit operator bool() const { return m_value != nullptr; }

protected:
    /// Bound only when registered: a value that cannot tell of its removal must not be held.
    void Bind(T* value)
    {
        if (value != nullptr)
            value->AddObserver(this);
        m_value = value;
    }

    void Unbind()
    {
        if (T* const value = std::exchange(m_value, nullptr))
            value->RemoveObserver(this);
    }

private:
    T* m_value = nullptr;
};

/// A ValuePtr that also keeps its owner registered, so that the owner hears of the value's changes. The owner stands
/// before the pointer in the value's list: told of the removal, it can still reach the value.
template <typename T>
class ValueObservingPtr : public ValuePtr<T>
{
public:
    /// @p owner must outlive the pointer.
    explicit ValueObservingPtr(IObserver* owner)
        : m_owner(owner)
    {
    }

    // The base destructor cannot remove the owner: by then this part is gone.
    ~ValueObservingPtr() override { UnbindOwnerAndSelf(); }

    void Update(Observable* /*source*/, TChangeCode code) override
    {
        T* const value = this->get();
        if (code == ChangeState && value != nullptr && value->GetState() == StateRemoved)
            UnbindOwnerAndSelf();
    }

    void Release() override
    {
        if (T* const value = this->get())
            value->RemoveObserver(m_owner);
        ValuePtr<T>::Release();
    }

    void Assign(T* value) override
    {
        if (value == this->get())
            return;
        UnbindOwnerAndSelf();
        if (value == nullptr)
            return;
        value->AddObserver(m_owner);
        try {
            this->Bind(value);
        } catch (...) {
            value->RemoveObserver(m_owner); // nobody would do it later
            throw;
        }
    }

private:
    void UnbindOwnerAndSelf()
    {
        if (T* const value = this->get())
            value->RemoveObserver(m_owner);
        this->Unbind();
    }

    IObserver* m_owner;
};

namespace detail {

/// A path split at its last "/": the name is what follows it, the parent everything up to and including it.
struct SplitPath
{
    explicit SplitPath(const QString& path)
        : parent(path.left(path.lastIndexOf(QLatin1Char('/')) + 1))
        , name(path.mid(parent.size()))
    {
    }

    QString parent;
    QString name;
};

template <typename T>
std::unique_ptr<T> CreateNamed(const QString& name)
{
    auto value = std::make_unique<T>();
    value->SetName(name, nullptr);
    return value;
}

/// Offers @p value to the tree, which then owns it. A value that it did not take stays in @p value.
template <typename T>
bool InsertBelow(const QString& parentPath, std::unique_ptr<T>& value)
{
    T* const offered = value.get();
    try {
        const bool inserted = Tree::Instance()->InsertValue(parentPath, offered);
        if (inserted)
            static_cast<void>(value.release());
        return inserted;
    } catch (...) {
        if (offered->IsInTree()) // whoever was told of the insertion has failed
            static_cast<void>(value.release());
        throw;
    }
}

} // namespace detail

/// Binds @p pointer to the value at @p path. False, with the pointer null, when there is none of the pointer's kind.
template <typename T>
bool LinkByPath(ValuePtr<T>& pointer, const QString& path)
{
    pointer.Assign(nullptr);
    pointer.Assign(dynamic_cast<T*>(Tree::Instance()->FindValue(path)));
    return static_cast<bool>(pointer);
}

/// The value of kind T at @p path, created when there is none, with @p observer (if any) registered.
///
/// When a value of another kind has the path, the result is a new value outside the tree which nobody owns: callers go
/// on working, and a trace says so.
template <typename T>
T* CreateOrLink(QString path, IObserver* observer = nullptr)
{
    constexpr unsigned short leakTraceLine = 299;
    T* value = dynamic_cast<T*>(Tree::Instance()->FindValue(path));
    if (value == nullptr) {
        const detail::SplitPath split(path);
        std::unique_ptr<T> created = detail::CreateNamed<T>(split.name);
        value = created.get();
        const bool inTree = detail::InsertBelow(split.parent, created);
        static_cast<void>(created.release()); // in the tree, or nobody's
        if (!inTree && (ErrorHandler::Instance()->GetTraceMask() & ErrorHandler::ComponentTraces) != 0) {
            _Q_Trace(
                QStringLiteral("!!!!!!!MEMORY LEAK! The value with the path '%1' could not be created!!! A value of "
                               "this name already exists for a different type!!!!!!!!")
                    .arg(path),
                QStringLiteral("valueframework/valueclasses/valueobservermacros"), leakTraceLine);
        }
    }
    if (observer != nullptr)
        value->AddObserver(observer);
    return value;
}

/// Binds @p pointer to the value at @p path, or to a new one when there is none of its kind; true when it was created.
/// A new value that the tree refuses is bound all the same.
template <typename T>
bool LinkOrCreate(ValuePtr<T>& pointer, const QString& path)
{
    if (LinkByPath(pointer, path))
        return false;
    const detail::SplitPath split(path);
    std::unique_ptr<T> created = detail::CreateNamed<T>(split.name);
    T* const value = created.get();
    try {
        detail::InsertBelow(split.parent, created);
    } catch (const ZTException&) {
        // The pointer works without the tree; whoever looks the value up finds it missing.
    }
    static_cast<void>(created.release()); // in the tree, or nobody's
    pointer.Assign(value);
    return true;
}

} // namespace values
