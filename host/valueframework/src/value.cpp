#include "valueframework/valueclasses/value.h"

#include "faultpoints/faultpoint.h"

namespace values {

namespace {

template <typename T>
struct Kind;

template <>
struct Kind<bool>
{
    static constexpr TValueType type = TypeBool;
    static QString name() { return QStringLiteral("bool"); }
};

template <>
struct Kind<QString>
{
    static constexpr TValueType type = TypeString;
    static QString name() { return QStringLiteral("string"); }
};

} // namespace

template <typename T, typename Format, typename Stream>
Value<T, Format, Stream>::Value(const T& value)
    : m_value(value)
{
}

template <typename T, typename Format, typename Stream>
Value<T, Format, Stream>::~Value() = default;

template <typename T, typename Format, typename Stream>
bool Value<T, Format, Stream>::SetValue(const T& value, IObserver* observer)
{
    if (faults::failsByResult("Value::SetValue"))
        return false;
    const bool changed = m_value != value;
    if (changed)
        m_value = value;
    AnnounceContentSet(changed, observer);
    return true;
}

template <typename T, typename Format, typename Stream>
TValueType Value<T, Format, Stream>::GetType() const
{
    return Kind<T>::type;
}

template <typename T, typename Format, typename Stream>
QString Value<T, Format, Stream>::GetTypeName() const
{
    return Kind<T>::name();
}

template <typename T, typename Format, typename Stream>
QString Value<T, Format, Stream>::GetStringValue() const
{
    faults::mayRaise("Value::GetStringValue");
    return Format::ToText(m_value);
}

template <typename T, typename Format, typename Stream>
bool Value<T, Format, Stream>::SetStringValue(const QString& text, IObserver* observer)
{
    T value{};
    return Format::FromText(text, value) && SetValue(value, observer);
}

template <typename T, typename Format, typename Stream>
bool Value<T, Format, Stream>::Assign(const ValueBase& other, IObserver* observer)
{
    const auto* same = dynamic_cast<const Value*>(&other);
    return same != nullptr && SetValue(same->m_value, observer);
}

template <typename T, typename Format, typename Stream>
bool Value<T, Format, Stream>::Compare(const ValueBase& other) const
{
    const auto* same = dynamic_cast<const Value*>(&other);
    return same != nullptr && same->m_value == m_value;
}

template <typename T, typename Format, typename Stream>
QString Value<T, Format, Stream>::GetRecordingText() const
{
    return Stream::ToText(m_value);
}

template class Value<bool, FormatBool<bool>, StreamFormat<bool>>;
template class Value<QString, FormatString<QString>, StreamFormat<QString>>;

} // namespace values
