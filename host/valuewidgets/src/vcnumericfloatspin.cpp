#include "valuewidgets/vcnumericfloatspin.h"

#include "faultpoints/faultpoint.h"
#include "valuebinding.h"
#include "valueedit.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "ztbase/brix/numbers.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QRegularExpression>
#include <QScopedValueRollback>

#include <algorithm>
#include <cfloat>
#include <exception>
#include <optional>
#include <utility>

using values::DoubleValue;
using values::IntValue;
using values::ValueBase;

namespace {

struct Limits
{
    double min = 0.0;
    double max = 0.0;
    double step = 0.0;
};

template <typename Numeric>
Limits limitsOf(const Numeric& value)
{
    return {static_cast<double>(value.GetMin()), static_cast<double>(value.GetMax()),
            static_cast<double>(value.GetStep())};
}

bool isInteger(const ValueBase& value)
{
    return dynamic_cast<const IntValue*>(&value) != nullptr;
}

Limits limitsOf(const ValueBase& value)
{
    if (const auto* integer = dynamic_cast<const IntValue*>(&value))
        return limitsOf(*integer);
    return limitsOf(dynamic_cast<const DoubleValue&>(value));
}

double numberOf(const ValueBase& value)
{
    if (const auto* integer = dynamic_cast<const IntValue*>(&value))
        return integer->GetValue();
    return dynamic_cast<const DoubleValue&>(value).GetValue();
}

/// What an edit exchanges: the number and, when the edit brings the value into use, its state.
struct NumericContent
{
    double number;
    std::optional<values::TValueState> state;
};

bool setNumber(ValueBase* value, double number, IObserver* causer)
{
    if (auto* integer = dynamic_cast<IntValue*>(value))
        return integer->SetValue(static_cast<int>(number), causer);
    auto* const real = dynamic_cast<DoubleValue*>(value);
    return real != nullptr && real->SetValue(number, causer);
}

bool Write(const ValueReference& reference, const NumericContent& content, IObserver* causer)
{
    std::exception_ptr failure;
    ValueBase* const value = reference.Find();
    if (value != nullptr && content.state) {
        try {
            value->SetState(*content.state, causer);
        } catch (...) { // an observer; the number is written all the same
            failure = std::current_exception();
        }
    }
    // Found anew: the change of state may have ended it.
    const bool isWritten = setNumber(reference.Find(), content.number, causer);
    if (failure)
        std::rethrow_exception(failure);
    return isWritten;
}

QString textOf(double number)
{
    return values::FormatFloat<double>::ToText(number);
}

int decimalsOf(double number)
{
    const QString text = textOf(number);
    const int point = text.indexOf(QLatin1Char('.'));
    return point < 0 ? 0 : text.size() - point - 1;
}

/// @p from, @p steps steps further. 0.1 and 0.2 make 0.3 here: an operator counts in decimal digits.
double stepped(double from, int steps, const Limits& limits)
{
    const double step = limits.step > 0.0 ? limits.step : 1.0;
    const int decimals = std::max(decimalsOf(from), decimalsOf(step));
    const double target = QString::number(from + steps * step, 'f', decimals).toDouble();
    return std::clamp(target, limits.min, limits.max);
}

} // namespace

class VCNumericFloatSpin::Private final : public ValueBinding
{
public:
    Private(VCNumericFloatSpin& spin, bool editableWhenUnused)
        : ValueBinding(spin)
        , m_spin(spin)
        , m_editableWhenUnused(editableWhenUnused)
    {
    }

    /// @name Showing
    /// @{
    void ShowValue();
    void ShowEverything();
    /// @}

    /// @name Editing
    /// @{
    [[nodiscard]] bool IsBeingEdited() const { return m_spin.lineEdit()->isModified(); }
    /// The number typed, or the one shown when the text is none.
    [[nodiscard]] double EditedNumber() const;
    void FinishEditing();
    void Step(int steps);
    /// Lets the base class handle an event. The steps that it asks for are made when it is done with the event: whoever
    /// hears of a step may delete the widget, and the base class would work on with it.
    template <typename Handler>
    void StepAfter(Handler handler);
    /// True when a step is left for later.
    [[nodiscard]] bool Postpone(int steps);
    /// The base class has changed its number.
    void NumberChanged(double number);
    /// @}

    [[nodiscard]] QString Stripped(const QString& text) const;

protected:
    bool Accepts(const ValueBase& value) const override
    {
        return isInteger(value) || dynamic_cast<const DoubleValue*>(&value) != nullptr;
    }
    void ValueExchanged() override { ShowEverything(); }
    void ValueChanged(TChangeCode code) override;

private:
    void Edit(double number);
    void Adopt(double number);
    void WriteNumber(ValueBase& value, double number);

    VCNumericFloatSpin& m_spin;
    const bool m_editableWhenUnused;
    std::optional<int> m_postponedSteps; // empty: steps are made at once
    bool m_isShowing = false;            // the base class is given the value's number: what it emits now is no edit
};

void VCNumericFloatSpin::Private::ValueChanged(TChangeCode code)
{
    if (code == ChangeState) {
        // Disabling the field makes the operator leave it, which must not write to a value just put out of use.
        if (BoundValue()->GetState() == values::StateUnused && !m_editableWhenUnused)
            ShowValue();
        ShowAvailability(m_editableWhenUnused);
    } else if ((code == ChangeContent || code == ChangeLimits) && !IsBeingEdited()) {
        ShowValue();
    }
}

void VCNumericFloatSpin::Private::ShowEverything()
{
    ShowValue();
    ShowAvailability(m_editableWhenUnused);
}

/// Shows the value's number, or nothing without a value. Ends an edit under way.
void VCNumericFloatSpin::Private::ShowValue()
{
    // As many decimals as there are: the base class must not round what it only shows.
    constexpr int allDecimals = DBL_MAX_10_EXP + DBL_DIG;
    const ValueBase* const value = BoundValue();
    const Limits limits = value != nullptr ? limitsOf(*value) : Limits();
    const double number = value != nullptr ? numberOf(*value) : 0.0;
    const int decimals = value != nullptr && !isInteger(*value) ? allDecimals : 0;

    const QScopedValueRollback<bool> showing(m_isShowing, true);
    m_spin.lineEdit()->setModified(false);
    if (m_spin.decimals() != decimals)
        m_spin.setDecimals(decimals);
    if (m_spin.minimum() != limits.min || m_spin.maximum() != limits.max)
        m_spin.setRange(limits.min, limits.max);
    if (m_spin.singleStep() != limits.step)
        m_spin.setSingleStep(limits.step);
    m_spin.setValue(number);
}

double VCNumericFloatSpin::Private::EditedNumber() const
{
    QString text = m_spin.lineEdit()->text();
    int position = 0;
    return m_spin.validate(text, position) == QValidator::Acceptable ? m_spin.valueFromText(text) : m_spin.value();
}

void VCNumericFloatSpin::Private::FinishEditing()
{
    if (!IsBeingEdited())
        return;
    const double number = EditedNumber();
    if (number != m_spin.value())
        Edit(number);
    else
        ShowValue();
}

void VCNumericFloatSpin::Private::Step(int steps)
{
    const ValueBase* const value = BoundValue();
    if (value == nullptr)
        return;
    const double from = IsBeingEdited() ? EditedNumber() : numberOf(*value);
    Edit(stepped(from, steps, limitsOf(*value)));
}

template <typename Handler>
void VCNumericFloatSpin::Private::StepAfter(Handler handler)
{
    m_postponedSteps = 0;
    const QPointer<VCNumericFloatSpin> spin(&m_spin);
    handler();
    if (!spin)
        return;
    const int steps = std::exchange(m_postponedSteps, std::nullopt).value_or(0);
    if (steps != 0)
        m_spin.stepBy(steps);
}

bool VCNumericFloatSpin::Private::Postpone(int steps)
{
    if (m_postponedSteps)
        *m_postponedSteps += steps;
    return m_postponedSteps.has_value();
}

void VCNumericFloatSpin::Private::NumberChanged(double number)
{
    if (!m_isShowing)
        Edit(number);
}

/// The operator has finished an edit with @p number.
void VCNumericFloatSpin::Private::Edit(double number)
{
    const QPointer<VCNumericFloatSpin> spin(&m_spin);
    Adopt(number);
    if (spin && BoundValue() != nullptr)
        WriteNumber(*BoundValue(), number);
    // What the value became in the course of it; nothing for a value that was deleted without a word.
    if (spin)
        ShowEverything();
}

/// Takes the typed text for finished. The base class must do so too: the write may make the operator leave the field,
/// by a message box for one, and an edit that is still pending would be written a second time.
void VCNumericFloatSpin::Private::Adopt(double number)
{
    const QScopedValueRollback<bool> showing(m_isShowing, true);
    m_spin.lineEdit()->setModified(false);
    m_spin.setValue(number);
}

void VCNumericFloatSpin::Private::WriteNumber(ValueBase& value, double number)
{
    NumericContent before{numberOf(value), std::nullopt};
    NumericContent after{number, std::nullopt};
    if (m_editableWhenUnused && value.GetState() == values::StateUnused) {
        before.state = values::StateUnused;
        after.state = values::StateOrdinary;
    }
    if (after.number == before.number && !after.state)
        return;
    CarryOut(std::make_unique<ValueEdit<NumericContent>>(
        value, before, after, this, VCNumericFloatSpin::tr("%1: %2").arg(value.GetName(), textOf(number))));
}

QString VCNumericFloatSpin::Private::Stripped(const QString& text) const
{
    QString number = text;
    if (number.startsWith(m_spin.prefix()))
        number.remove(0, m_spin.prefix().size());
    if (number.endsWith(m_spin.suffix()))
        number.chop(m_spin.suffix().size());
    return number.trimmed();
}

VCNumericFloatSpin::VCNumericFloatSpin(QWidget* parent, bool editableWhenUnused)
    : QDoubleSpinBox(parent)
    , d(std::make_unique<Private>(*this, editableWhenUnused))
{
    faults::mayRaise("VCNumericFloatSpin::VCNumericFloatSpin");
    setKeyboardTracking(false);
    d->ShowEverything();
    connect(this, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            [this](double number) { d->NumberChanged(number); });
}

VCNumericFloatSpin::~VCNumericFloatSpin() = default;

void VCNumericFloatSpin::SetNumeric(ValueBase* numeric)
{
    d->BindTo(numeric);
}

void VCNumericFloatSpin::SetNumeric_ValuePath(const QString& path)
{
    faults::mayRaise("VCNumericFloatSpin::SetNumeric_ValuePath");
    d->BindToPath(path);
}

ValueBase* VCNumericFloatSpin::GetNumeric() const
{
    return d->BoundValue();
}

QString VCNumericFloatSpin::textFromValue(double value) const
{
    return d->BoundValue() != nullptr ? textOf(value) : QString();
}

double VCNumericFloatSpin::valueFromText(const QString& text) const
{
    bool ok = false;
    const double number = Brix::toDoubleEx(d->Stripped(text), &ok);
    return ok ? number : value();
}

QValidator::State VCNumericFloatSpin::validate(QString& text, int& /*position*/) const
{
    const ValueBase* const value = d->BoundValue();
    if (value == nullptr)
        return QValidator::Invalid;
    static const QRegularExpression integer(QStringLiteral("^-?\\d*$"));
    static const QRegularExpression real(QStringLiteral("^-?\\d*[.,]?\\d*$"));
    const Limits limits = limitsOf(*value);
    const QString typed = d->Stripped(text);
    const bool isWellFormed = (isInteger(*value) ? integer : real).match(typed).hasMatch();
    if (!isWellFormed || (typed.startsWith(QLatin1Char('-')) && limits.min >= 0.0))
        return QValidator::Invalid;
    bool ok = false;
    const double number = Brix::toDoubleEx(typed, &ok);
    if (!ok) // so far there is no digit, or there are more than any number has
        return typed.size() <= 2 ? QValidator::Intermediate : QValidator::Invalid;
    if (number >= limits.min && number <= limits.max)
        return QValidator::Acceptable;
    // More digits only lead further away from zero.
    const bool isTooFar = number < 0.0 ? number < limits.min : number > limits.max;
    return isTooFar ? QValidator::Invalid : QValidator::Intermediate;
}

void VCNumericFloatSpin::stepBy(int steps)
{
    if (d->Postpone(steps))
        return;
    const QPointer<VCNumericFloatSpin> self(this);
    d->Step(steps);
    if (self)
        selectAll();
}

void VCNumericFloatSpin::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && d->IsBeingEdited()) {
        d->ShowValue();
        event->accept();
        return;
    }
    const QPointer<VCNumericFloatSpin> self(this);
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        d->FinishEditing();
    if (self)
        d->StepAfter([&] { QDoubleSpinBox::keyPressEvent(event); });
}

void VCNumericFloatSpin::mousePressEvent(QMouseEvent* event)
{
    d->StepAfter([&] { QDoubleSpinBox::mousePressEvent(event); });
}

void VCNumericFloatSpin::wheelEvent(QWheelEvent* event)
{
    d->StepAfter([&] { QDoubleSpinBox::wheelEvent(event); });
}

/// A button held down.
void VCNumericFloatSpin::timerEvent(QTimerEvent* event)
{
    d->StepAfter([&] { QDoubleSpinBox::timerEvent(event); });
}

void VCNumericFloatSpin::focusOutEvent(QFocusEvent* event)
{
    const QPointer<VCNumericFloatSpin> self(this);
    d->FinishEditing();
    if (self)
        QDoubleSpinBox::focusOutEvent(event);
}

void VCNumericFloatSpin::hideEvent(QHideEvent* event)
{
    // The base class ends an edit, too, but shows the number of before it, which may not be the value's any more.
    const QPointer<VCNumericFloatSpin> self(this);
    d->FinishEditing();
    if (self)
        QDoubleSpinBox::hideEvent(event);
}
