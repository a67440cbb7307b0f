#include "valueframework/valuebase.h"

#include "faultpoints/faultpoint.h"
#include "valueframework/tree.h"

#include <algorithm>
#include <utility>

namespace values {

ValueTransaction::ValueTransaction(ValueBase* value, std::vector<TChangeCode> codes)
    : m_value(value)
    , m_life(value->GetLife())
    , m_codes(std::move(codes))
{
}

ValueTransaction::ValueTransaction(ValueTransaction&& other) noexcept
    : m_value(std::exchange(other.m_value, nullptr))
    , m_life(std::move(other.m_life))
    , m_codes(std::move(other.m_codes))
{
}

ValueTransaction::~ValueTransaction()
{
    if (m_value != nullptr && !m_life.IsOver())
        m_value->EndTransaction(m_codes);
}

ValueBase::ValueBase() = default;

ValueBase::~ValueBase()
{
    if (m_inTree)
        Tree::Instance()->Forget(m_path);
}

bool ValueBase::SetName(const QString& name, IObserver* /*observer*/)
{
    if (faults::failsByResult("ValueBase::SetName"))
        return false;
    if (name.isEmpty())
        return false;
    if (m_inTree)
        return Tree::Instance()->Rename(this, name);
    m_name = name;
    return true;
}

QString ValueBase::GetPathName() const
{
    faults::mayRaise("ValueBase::GetPathName");
    // A value just taken out keeps its path, so that those who are told of it know which one it was.
    return m_path.isEmpty() ? m_name : m_path;
}

void ValueBase::SetTranslationNamespace(const QString& translationNamespace)
{
    faults::mayRaise("ValueBase::SetTranslationNamespace");
    m_translationNamespace = translationNamespace;
}

void ValueBase::SetState(TValueState state, IObserver* observer)
{
    faults::mayRaise("ValueBase::SetState");
    // Whoever is told of the removal after this has to find the value removed, or would hold on to it.
    if (state == m_state || m_isLeaving)
        return;
    m_state = state;
    HasChanged(ChangeState, observer);
}

void ValueBase::StartTransaction(IObserver* observer)
{
    faults::mayRaise("ValueBase::StartTransaction");
    if (m_transactionDepth++ == 0)
        m_transactionObserver = observer;
}

void ValueBase::EndTransaction(TChangeCode code)
{
    faults::mayRaise("ValueBase::EndTransaction");
    EndTransaction(std::vector<TChangeCode>{code});
}

void ValueBase::EndTransaction(const std::vector<TChangeCode>& codes)
{
    if (m_transactionDepth == 0 || --m_transactionDepth > 0)
        return;
    IObserver* const observer = std::exchange(m_transactionObserver, nullptr);
    Use use(*this);
    for (std::size_t i = 0; i < codes.size() && !use.IsOver(); ++i)
        HasChanged(codes[i], observer);
}

ValueTransaction ValueBase::CreateTransaction(std::vector<TChangeCode> codes, IObserver* observer)
{
    StartTransaction(observer);
    return ValueTransaction(this, std::move(codes));
}

void ValueBase::HasChanged(TChangeCode code, IObserver* observer)
{
    faults::mayRaise("ValueBase::HasChanged");
    if (!IsTransactionActive())
        NotifyObservers(code, observer);
}

void ValueBase::AnnounceContentSet(bool changed, IObserver* observer)
{
    Use use(*this);
    if (changed)
        HasChanged(ChangeContent, observer);
    if (!use.IsOver())
        HasChanged(ChangeExternal, observer);
}

void ValueBase::SetCommandString(const QString& command)
{
    m_command = command;
}

QString ValueBase::GetCommandStringForTransmission() const
{
    QString command = m_command;
    return command.replace(QLatin1String("%1"), GetStringValue());
}

QString ValueBase::GetCommandStringForRecording() const
{
    return GetPathName() + QLatin1Char('=') + GetRecordingText();
}

void ValueBase::OverrideTimer(int milliseconds)
{
    m_override.setRemainingTime(std::max(0, milliseconds));
}

void ValueBase::KillOverrideTimer()
{
    m_override = QDeadlineTimer();
}

bool ValueBase::IsOverridden() const
{
    return !m_override.hasExpired();
}

void ValueBase::SetUpdateTimerTime(int milliseconds)
{
    m_updateTimerTime = std::max(0, milliseconds);
}

void ValueBase::SetDeleteObserver(IObserver* observer)
{
    m_deleteObserver = observer;
}

IObserver* ValueBase::GetDeleteObserver() const
{
    return m_deleteObserver;
}

std::exception_ptr ValueBase::TakeLeave()
{
    std::exception_ptr failure;
    Use use(*this);
    m_inTree = false;
    m_isLeaving = true;
    m_state = StateRemoved;
    const bool toldAsObserver = IsObservedBy(m_deleteObserver);
    try {
        NotifyObservers(ChangeState);
        if (!use.IsOver() && m_deleteObserver != nullptr && !toldAsObserver)
            m_deleteObserver->Update(this, ChangeState);
    } catch (...) {
        failure = std::current_exception();
    }
    if (!use.IsOver()) {
        DeleteObservers();
        DeleteWhenUnused();
    }
    return failure;
}

} // namespace values
