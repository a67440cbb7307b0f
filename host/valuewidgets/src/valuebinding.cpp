#include "valuebinding.h"

#include <QCoreApplication>
#include <QWidget>

ValueBinding::ValueBinding(QWidget& widget)
    : m_widget(widget)
{
    values::Tree::Instance()->AddListener(this);
}

ValueBinding::~ValueBinding()
{
    values::Tree::Instance()->RemoveListener(this);
}

void ValueBinding::BindTo(values::ValueBase* value)
{
    m_path.clear();
    Exchange(value != nullptr && Accepts(*value) ? value : nullptr);
}

void ValueBinding::BindToPath(const QString& path)
{
    m_path = path;
    values::ValueBase* const value = values::Tree::Instance()->FindValue(path);
    Exchange(value != nullptr && Accepts(*value) ? value : nullptr);
}

values::ValueBase* ValueBinding::BoundValue() const
{
    return m_observation && !m_observation->IsOver() ? m_value : nullptr;
}

void ValueBinding::Update(Observable* /*source*/, TChangeCode code)
{
    if (code == ChangeState && m_value->GetState() == values::StateRemoved)
        Exchange(nullptr);
    else
        ValueChanged(code);
}

void ValueBinding::ValueInserted(values::ValueBase* /*value*/)
{
    if (!m_path.isEmpty() && BoundValue() == nullptr)
        BindToPath(m_path);
}

void ValueBinding::ValueRemoved(const QString& path)
{
    // An ordinary removal was told by the value itself. What is left are a value that was renamed, one that is in its
    // destructor and must not be touched any more, and a successor that took the path while the removal was being told.
    if (!m_path.isEmpty() && m_observation && path == m_boundPath)
        BindToPath(m_path);
}

void ValueBinding::Exchange(values::ValueBase* value)
{
    m_observation.reset();
    m_value = value;
    if (m_value != nullptr) {
        m_boundPath = m_value->GetPathName();
        m_observation.emplace(*m_value, *this);
    }
    ValueExchanged();
}

void ValueBinding::ShowAvailability(bool usableWhenUnused)
{
    const QString reason = WhyUnavailable(usableWhenUnused);
    if (m_reason.isEmpty())
        m_ownStatusTip = m_widget.statusTip();
    m_reason = reason;
    m_widget.setStatusTip(m_reason.isEmpty() ? m_ownStatusTip : m_reason);
    m_widget.setEnabled(m_reason.isEmpty());
}

QString ValueBinding::WhyUnavailable(bool usableWhenUnused) const
{
    const char* const context = "ValueBinding";
    const values::ValueBase* const value = BoundValue();
    if (value == nullptr && m_path.isEmpty())
        return QCoreApplication::translate(context, "No value to show");
    if (value == nullptr)
        return QCoreApplication::translate(context, "No suitable value at %1").arg(m_path);
    if (value->GetState() == values::StateUnused && !usableWhenUnused)
        return QCoreApplication::translate(context, "Not in use");
    return QString();
}
