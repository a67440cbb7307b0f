#include "valueframework/valueclasses/valuenumeric.h"

#include "faultpoints/faultpoint.h"

#include <algorithm>
#include <cmath>

namespace values {

namespace {

template <typename T>
struct Kind;

template <>
struct Kind<int>
{
    static constexpr TValueType type = TypeInt;
    static QString name() { return QStringLiteral("int"); }
    static bool isNumber(int) { return true; }
};

template <>
struct Kind<double>
{
    static constexpr TValueType type = TypeDouble;
    static QString name() { return QStringLiteral("double"); }
    static bool isNumber(double value) { return std::isfinite(value); }
};

} // namespace

template <typename T, typename Format, typename Stream>
ValueNumeric<T, Format, Stream>::ValueNumeric(T value)
    : m_value(Kind<T>::isNumber(value) ? value : T{})
{
}

template <typename T, typename Format, typename Stream>
ValueNumeric<T, Format, Stream>::~ValueNumeric() = default;

template <typename T, typename Format, typename Stream>
bool ValueNumeric<T, Format, Stream>::SetValue(T value, IObserver* observer)
{
    if (faults::failsByResult("ValueNumeric::SetValue"))
        return false;
    // Refused, not clamped: a device setting nobody asked for would be worse than none.
    if (!Kind<T>::isNumber(value) || value < m_min || value > m_max)
        return false;
    const bool changed = m_value != value;
    m_value = value;
    AnnounceContentSet(changed, observer);
    return true;
}

template <typename T, typename Format, typename Stream>
bool ValueNumeric<T, Format, Stream>::SetMinMax(T min, T max, T step, IObserver* observer)
{
    if (faults::failsByResult("ValueNumeric::SetMinMax"))
        return false;
    if (!Kind<T>::isNumber(min) || !Kind<T>::isNumber(max) || !Kind<T>::isNumber(step) || min > max || step < 0)
        return false;
    if (min == m_min && max == m_max && step == m_step)
        return true;
    m_min = min;
    m_max = max;
    m_step = step;
    const T inside = std::clamp(m_value, m_min, m_max);
    const bool moved = inside != m_value;
    m_value = inside;
    Use use(*this);
    HasChanged(ChangeLimits, observer);
    if (moved && !use.IsOver())
        HasChanged(ChangeContent, observer);
    return true;
}

template <typename T, typename Format, typename Stream>
TValueType ValueNumeric<T, Format, Stream>::GetType() const
{
    return Kind<T>::type;
}

template <typename T, typename Format, typename Stream>
QString ValueNumeric<T, Format, Stream>::GetTypeName() const
{
    return Kind<T>::name();
}

template <typename T, typename Format, typename Stream>
QString ValueNumeric<T, Format, Stream>::GetStringValue() const
{
    return Format::ToText(m_value);
}

template <typename T, typename Format, typename Stream>
bool ValueNumeric<T, Format, Stream>::SetStringValue(const QString& text, IObserver* observer)
{
    T value{};
    return Format::FromText(text, value) && SetValue(value, observer);
}

template <typename T, typename Format, typename Stream>
bool ValueNumeric<T, Format, Stream>::Assign(const ValueBase& other, IObserver* observer)
{
    const auto* same = dynamic_cast<const ValueNumeric*>(&other);
    return same != nullptr && SetValue(same->m_value, observer);
}

template <typename T, typename Format, typename Stream>
bool ValueNumeric<T, Format, Stream>::Compare(const ValueBase& other) const
{
    const auto* same = dynamic_cast<const ValueNumeric*>(&other);
    return same != nullptr && same->m_value == m_value;
}

template <typename T, typename Format, typename Stream>
QString ValueNumeric<T, Format, Stream>::GetRecordingText() const
{
    return Stream::ToText(m_value);
}

template class ValueNumeric<int, FormatInt<int>, StreamFormat<int>>;
template class ValueNumeric<double, FormatFloat<double>, StreamFormat<double>>;

} // namespace values
