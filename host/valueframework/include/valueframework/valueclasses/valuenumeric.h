#pragma once

#include "valueframework/valuebase.h"
#include "valueframework/valueclasses/formats.h"

#include <limits>

namespace values {

/// A number with limits. At first the limits are those of the type and the step is 1. Never NaN or infinite.
template <typename T, typename Format, typename Stream = StreamFormat<T>>
class VALUEFRAMEWORK_EXPORT ValueNumeric : public ValueBase
{
public:
    ValueNumeric() = default;
    explicit ValueNumeric(T value);
    ~ValueNumeric() override;

    [[nodiscard]] T GetValue() const { return m_value; }
    /// Sets the content. False, with nothing changed or sent, for a number outside the limits, NaN and infinities.
    bool SetValue(T value, IObserver* observer);

    [[nodiscard]] T GetMin() const { return m_min; }
    [[nodiscard]] T GetMax() const { return m_max; }
    /// By how much an arrow or the wheel changes the value; 0: as the widget likes.
    [[nodiscard]] T GetStep() const { return m_step; }
    /// @name Limits
    /// Send ChangeLimits when something changed. A content outside new limits moves to the nearer bound, which sends
    /// ChangeContent after it. False, with nothing changed, for min > max, a negative step, NaN and infinities.
    /// @{
    bool SetMin(T min, IObserver* observer) { return SetMinMax(min, m_max, m_step, observer); }
    bool SetMax(T max, IObserver* observer) { return SetMinMax(m_min, max, m_step, observer); }
    bool SetStep(T step, IObserver* observer) { return SetMinMax(m_min, m_max, step, observer); }
    bool SetMinMax(T min, T max, T step, IObserver* observer);
    /// @}

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
    T m_min = std::numeric_limits<T>::lowest();
    T m_max = std::numeric_limits<T>::max();
    T m_step = 1;
};

using IntValue = ValueNumeric<int, FormatInt<int>, StreamFormat<int>>;
using DoubleValue = ValueNumeric<double, FormatFloat<double>, StreamFormat<double>>;

extern template class ValueNumeric<int, FormatInt<int>, StreamFormat<int>>;
extern template class ValueNumeric<double, FormatFloat<double>, StreamFormat<double>>;

} // namespace values
