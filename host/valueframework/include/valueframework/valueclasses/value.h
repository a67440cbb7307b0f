#pragma once

#include "valueframework/valuebase.h"
#include "valueframework/valueclasses/formats.h"

namespace values {

/// A value whose content is any @p T: a truth value or a text.
template <typename T, typename Format, typename Stream = StreamFormat<T>>
class VALUEFRAMEWORK_EXPORT Value : public ValueBase
{
public:
    Value() = default;
    explicit Value(const T& value);
    ~Value() override;

    [[nodiscard]] const T& GetValue() const { return m_value; }
    /// Sets the content. Always succeeds; the result is there for symmetry with the numeric kinds.
    bool SetValue(const T& value, IObserver* observer);

    [[nodiscard]] TValueType GetType() const override;
    [[nodiscard]] QString GetTypeName() const override;
    [[nodiscard]] QString GetStringValue() const override;
    bool SetStringValue(const QString& text, IObserver* observer) override;
    bool Assign(const ValueBase& other, IObserver* observer) override;
    [[nodiscard]] bool Compare(const ValueBase& other) const override;

protected:
    [[nodiscard]] QString GetRecordingText() const override;

private:
    T m_value{};
};

using BoolValue = Value<bool, FormatBool<bool>, StreamFormat<bool>>;
using StringValue = Value<QString, FormatString<QString>, StreamFormat<QString>>;

extern template class Value<bool, FormatBool<bool>, StreamFormat<bool>>;
extern template class Value<QString, FormatString<QString>, StreamFormat<QString>>;

} // namespace values
