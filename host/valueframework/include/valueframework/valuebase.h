#pragma once

#include "valueframework/valueframeworkglobal.h"
#include "ztbase/observable.h"

#include <QDeadlineTimer>
#include <QString>

#include <exception>
#include <vector>

namespace values {

class Tree;
class ValueBase;

/// State of a value. It drives the widgets that show the value and never blocks a set by program.
enum TValueState : int
{
    StateOrdinary = 0, ///< in use
    StateRemoved = 1,  ///< being removed: whoever holds the value lets go of it now
    StateUnused = 2,   ///< not in use: its widgets are disabled
};

/// The kinds of value.
enum TValueType : int
{
    TypeBool,
    TypeInt,
    TypeDouble,
    TypeString,
    TypeSelection,
};

/// Guard form of a transaction: nothing is sent while it lives; its end sends one notification for each of its codes.
/// Does nothing more when the value has gone meanwhile. Made by ValueBase::CreateTransaction().
class VALUEFRAMEWORK_EXPORT ValueTransaction
{
public:
    ValueTransaction(ValueTransaction&& other) noexcept;
    ValueTransaction& operator=(ValueTransaction&&) = delete;
    ValueTransaction(const ValueTransaction&) = delete;
    ValueTransaction& operator=(const ValueTransaction&) = delete;
    ~ValueTransaction();

private:
    friend class ValueBase;
    ValueTransaction(ValueBase* value, std::vector<TChangeCode> codes);

    ValueBase* m_value;
    Observable::Life m_life;
    std::vector<TChangeCode> m_codes;
};

/// A named, typed node of the value tree, and what all kinds have in common.
///
/// Every operation that changes a value names the observer that causes the change (or null): that observer is not told
/// of it. Notifications are synchronous; GUI thread only.
///
/// A value that others may hold is deleted with Tree::DeleteValue(), which tells them; the destructor tells nobody.
class VALUEFRAMEWORK_EXPORT ValueBase : public virtual Observable
{
public:
    ~ValueBase() override;

    /// @name Identity
    /// @{

    /// Renames the value. False, and nothing changed, for an empty name and when the value is in the tree and a
    /// neighbour has that name. Nothing is sent.
    virtual bool SetName(const QString& name, IObserver* observer);
    [[nodiscard]] const QString& GetName() const { return m_name; }
    /// The path that finds the value in the tree, beginning with "/"; for a value outside the tree its name.
    [[nodiscard]] QString GetPathName() const;
    [[nodiscard]] bool IsInTree() const { return m_inTree; }

    /// In which translation context the value's texts are shown.
    void SetTranslationNamespace(const QString& translationNamespace);
    [[nodiscard]] const QString& GetTranslationNamespace() const { return m_translationNamespace; }

    [[nodiscard]] virtual TValueType GetType() const = 0;
    /// Name of the kind for people: "bool", "int", "double", "string", "selection".
    [[nodiscard]] virtual QString GetTypeName() const = 0;
    /// @}

    /// @name Content
    /// @{

    /// The content as text; numbers without exponent, in the fewest digits that read back exactly.
    [[nodiscard]] virtual QString GetStringValue() const = 0;
    /// Sets the content from a text. False, and nothing changed or sent, when the text does not fit the kind.
    virtual bool SetStringValue(const QString& text, IObserver* observer) = 0;
    /// Takes the content of @p other over. False, and nothing changed, when it is of another kind or refused.
    virtual bool Assign(const ValueBase& other, IObserver* observer) = 0;
    /// True when @p other is of the same kind with the same content.
    [[nodiscard]] virtual bool Compare(const ValueBase& other) const = 0;
    /// @}

    /// @name State
    /// @{
    [[nodiscard]] TValueState GetState() const { return m_state; }
    /// Sends ChangeState when the state is another one than before. A value that is leaving the tree stays removed.
    void SetState(TValueState state, IObserver* observer);
    /// @}

    /// @name Transactions
    /// Between the outermost start and end nothing is sent. Transactions nest; only the outermost end speaks.
    /// @{

    /// @p observer causes the changes of this transaction and is not told at its end.
    void StartTransaction(IObserver* observer);
    /// Ends one transaction; the outermost end sends exactly one notification, with @p code. Without a start: nothing.
    void EndTransaction(TChangeCode code);
    [[nodiscard]] bool IsTransactionActive() const { return m_transactionDepth > 0; }
    [[nodiscard]] ValueTransaction CreateTransaction(std::vector<TChangeCode> codes, IObserver* observer);
    /// @}

    /// Announces @p code to all but @p observer, whether or not anything changed. Held back by a transaction.
    void HasChanged(TChangeCode code, IObserver* observer);

    /// @name Commands to a device
    /// @{

    /// The text by which the content goes to a device; "%1" in it stands for the content.
    virtual void SetCommandString(const QString& command);
    /// The command filled with the content; empty when no command is set.
    [[nodiscard]] virtual QString GetCommandStringForTransmission() const;
    /// One line for a recording: path name, "=", and the content in its lossless form.
    [[nodiscard]] virtual QString GetCommandStringForRecording() const;
    /// @}

    /// @name Timing hints for drivers
    /// Drivers ask for them before they write what they read back from a device; a set is never refused for them.
    /// @{

    /// For the next @p milliseconds the operator's setting stands above what a device reads back.
    virtual void OverrideTimer(int milliseconds);
    virtual void KillOverrideTimer();
    [[nodiscard]] bool IsOverridden() const;
    /// Least time between two readbacks, in ms; 0 (the default): as often as they come. Negative counts as 0.
    virtual void SetUpdateTimerTime(int milliseconds);
    [[nodiscard]] int GetUpdateTimerTime() const { return m_updateTimerTime; }
    /// @}

    /// The one observer that is told last of the removal from the tree (ChangeState with state "being removed"), even
    /// when it is not registered. Null: nobody.
    virtual void SetDeleteObserver(IObserver* observer);
    [[nodiscard]] virtual IObserver* GetDeleteObserver() const;

protected:
    ValueBase();

    /// Sends ChangeContent when @p changed, then ChangeExternal. Every successful content set ends with this call.
    void AnnounceContentSet(bool changed, IObserver* observer);
    /// The content in a form that loses nothing and holds no line break.
    [[nodiscard]] virtual QString GetRecordingText() const = 0;

private:
    friend class Tree;
    friend class ValueTransaction;

    void EndTransaction(const std::vector<TChangeCode>& codes);
    /// Called by the tree: tells and drops all observers, then deletes the value as soon as nobody is inside it.
    /// Whatever an observer throws does not stop that and is the result.
    std::exception_ptr TakeLeave();

    QString m_name;
    QString m_path;
    QString m_translationNamespace;
    QString m_command;
    QDeadlineTimer m_override;
    IObserver* m_transactionObserver = nullptr;
    IObserver* m_deleteObserver = nullptr;
    int m_transactionDepth = 0;
    int m_updateTimerTime = 0;
    TValueState m_state = StateOrdinary;
    bool m_inTree = false;
    bool m_isLeaving = false;
};

} // namespace values
