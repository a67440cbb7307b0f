#pragma once

#include "ztbase/iobserver.h"

#include <cstddef>
#include <memory>
#include <vector>

/// The observed side of the observer pattern.
///
/// Observers are told in the order of their registration. A notification round is safe against everything an observer
/// may do: an observer removed meanwhile is not called, one added meanwhile is first called in the next round, a nested
/// round is delivered at once, and the round ends quietly when the object is deleted in it. When an observer throws,
/// the others are still told; then the first exception goes on to the caller of the notifying operation.
///
/// GUI thread only.
class ZTBASE_EXPORT Observable
{
public:
    Observable();
    virtual ~Observable();
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;

    /// Registers @p observer behind those already there. False for null and for one that is registered already.
    bool AddObserver(IObserver* observer);

    /// Puts @p observer in front of all others, registering it when necessary. Inside a notification round of this
    /// object the new place counts from the next round on. Null is ignored.
    void MakeFirstObserver(IObserver* observer);

    /// Takes @p observer off the list; unknown ones and null are ignored. It is not called again, not even by a round
    /// under way.
    void RemoveObserver(IObserver* observer);

    /// Takes all observers off the list, without telling them.
    void DeleteObservers();

    /// Number of registered observers.
    [[nodiscard]] std::size_t GetObserverCount() const;

    [[nodiscard]] bool IsObservedBy(const IObserver* observer) const;

    /// Tells every observer except @p except of @p code.
    void NotifyObservers(TChangeCode code, const IObserver* except = nullptr);

    /// Knows whether an Observable still exists, for holders that cannot register as its observer. Copies are cheap.
    class ZTBASE_EXPORT Life
    {
    public:
        Life() = default;
        [[nodiscard]] bool IsOver() const { return m_alive.expired(); }

    private:
        friend class Observable;
        explicit Life(std::weak_ptr<void> alive);
        std::weak_ptr<void> m_alive;
    };
    [[nodiscard]] Life GetLife() const;

protected:
    /// While at least one Use exists, DeleteWhenUnused() waits; the last one carries the deletion out. An operation
    /// that notifies more than once holds one, so that an observer may ask for the deletion in between.
    class ZTBASE_EXPORT Use
    {
    public:
        explicit Use(Observable& used);
        ~Use();
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        /// True when the object was deleted outright (not through DeleteWhenUnused()) since this Use began.
        [[nodiscard]] bool IsOver() const { return m_used == nullptr; }

    private:
        friend class Observable;
        Observable* m_used;
        Use* m_outer;
        std::size_t m_end = 0; // where the round that holds this Use ends
    };

    /// Deletes this object now, or as soon as its outermost notification has returned.
    void DeleteWhenUnused();

private:
    void TellRest(const Use& round, std::size_t place, TChangeCode code, const IObserver* except);
    void DoWaitingWork();

    std::vector<IObserver*> m_observers;    // in the place of one removed during a round: nobody
    std::vector<IObserver*> m_pendingFirst; // MakeFirstObserver() during a round
    Use* m_innermostUse = nullptr;
    mutable std::shared_ptr<void> m_alive;
    bool m_workWaits = false; // for the end of the outermost Use: gaps, pending firsts or the deletion
    bool m_deleteWhenUnused = false;
};
