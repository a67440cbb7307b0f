#include "ztbase/observable.h"

#include "faultpoints/faultpoint.h"

#include <algorithm>
#include <exception>

IObserver::~IObserver() = default;

Observable::Observable() = default;

Observable::~Observable()
{
    for (Use* use = m_innermostUse; use != nullptr; use = use->m_outer)
        use->m_used = nullptr;
}

bool Observable::AddObserver(IObserver* observer)
{
    faults::mayRaise("Observable::AddObserver");
    if (observer == nullptr || IsObservedBy(observer))
        return false;
    m_observers.push_back(observer);
    return true;
}

void Observable::MakeFirstObserver(IObserver* observer)
{
    if (observer == nullptr)
        return;
    AddObserver(observer);
    // A round under way counts positions, so the order may change only between rounds.
    m_pendingFirst.push_back(observer);
    if (m_innermostUse == nullptr)
        TidyUp();
}

void Observable::RemoveObserver(IObserver* observer)
{
    if (observer == nullptr)
        return;
    const auto found = std::find(m_observers.begin(), m_observers.end(), observer);
    if (found == m_observers.end())
        return;
    m_pendingFirst.erase(std::remove(m_pendingFirst.begin(), m_pendingFirst.end(), observer), m_pendingFirst.end());
    if (m_innermostUse == nullptr) {
        m_observers.erase(found);
    } else {
        *found = nullptr;
        m_hasGaps = true;
    }
}

void Observable::DeleteObservers()
{
    m_pendingFirst.clear();
    if (m_innermostUse == nullptr) {
        m_observers.clear();
    } else {
        std::fill(m_observers.begin(), m_observers.end(), nullptr);
        m_hasGaps = true;
    }
}

std::size_t Observable::GetObserverCount() const
{
    return m_observers.size() - static_cast<std::size_t>(std::count(m_observers.begin(), m_observers.end(),
                                                                    static_cast<IObserver*>(nullptr)));
}

bool Observable::IsObservedBy(const IObserver* observer) const
{
    return observer != nullptr && std::find(m_observers.begin(), m_observers.end(), observer) != m_observers.end();
}

void Observable::NotifyObservers(TChangeCode code, const IObserver* except)
{
    Use use(*this);
    std::exception_ptr firstFailure;
    const std::size_t count = m_observers.size();
    for (std::size_t i = 0; i < count && !use.IsOver(); ++i) {
        IObserver* const observer = m_observers[i];
        if (observer == nullptr || observer == except)
            continue;
        try {
            observer->Update(this, code);
        } catch (...) {
            if (!firstFailure)
                firstFailure = std::current_exception();
        }
    }
    if (firstFailure)
        std::rethrow_exception(firstFailure);
}

Observable::Life Observable::GetLife() const
{
    if (!m_alive)
        m_alive = std::make_shared<char>();
    return Life(m_alive);
}

Observable::Life::Life(std::weak_ptr<void> alive)
    : m_alive(std::move(alive))
{
}

Observable::Use::Use(Observable& used)
    : m_used(&used)
    , m_outer(used.m_innermostUse)
{
    used.m_innermostUse = this;
}

Observable::Use::~Use()
{
    if (m_used == nullptr)
        return;
    m_used->m_innermostUse = m_outer;
    if (m_outer != nullptr)
        return;
    if (m_used->m_deleteWhenUnused)
        delete m_used;
    else
        m_used->TidyUp();
}

void Observable::DeleteWhenUnused()
{
    if (m_innermostUse == nullptr)
        delete this;
    else
        m_deleteWhenUnused = true;
}

void Observable::TidyUp()
{
    if (m_hasGaps) {
        m_observers.erase(std::remove(m_observers.begin(), m_observers.end(), nullptr), m_observers.end());
        m_hasGaps = false;
    }
    for (IObserver* first : m_pendingFirst) {
        const auto found = std::find(m_observers.begin(), m_observers.end(), first);
        std::rotate(m_observers.begin(), found, found + 1);
    }
    m_pendingFirst.clear();
}
