#include "formfield.h"

#include "valuewidgets/vccomboboxclassic.h"
#include "valuewidgets/vcnumericfloatspin.h"

using values::DoubleValue;
using values::IntValue;
using values::ValueBase;
using values::ValueSelection;

namespace KT270 {

namespace {

/// By so many characters an item's text is recognised: settings abbreviate.
constexpr int significantCharacters = 4;

std::unique_ptr<ValueBase> createContent(FieldType type)
{
    switch (type) {
    case FieldType::Integer:
        return std::make_unique<IntValue>();
    case FieldType::Number:
        return std::make_unique<DoubleValue>();
    case FieldType::Enumeration:
        break;
    }
    return std::make_unique<ValueSelection>();
}

/// False when the two are not both of kind Numeric.
template <typename Numeric>
bool takeNumber(ValueBase& to, const ValueBase& from, bool withContent, IObserver* causer)
{
    auto* const target = dynamic_cast<Numeric*>(&to);
    const auto* const source = dynamic_cast<const Numeric*>(&from);
    if (target == nullptr || source == nullptr)
        return false;
    target->SetMinMax(source->GetMin(), source->GetMax(), source->GetStep(), causer);
    if (withContent)
        target->SetValue(source->GetValue(), causer);
    return true;
}

} // namespace

FormField::FormField(const FieldDescription& description, const QString& name, IObserver& form)
    : m_description(description)
    , m_form(form)
    , m_content(createContent(description.type))
{
    m_content->SetName(name, nullptr);
    m_content->SetState(description.Group().isEmpty() ? values::StateOrdinary : values::StateUnused, nullptr);
    m_content->AddObserver(&m_form);
}

FormField::~FormField() = default;

bool FormField::Bind(ValueBase* value)
{
    if (value != nullptr && value->GetType() != m_content->GetType())
        return false;
    m_bound.Assign(value);
    TakeOver(true);
    return true;
}

void FormField::TakeOver(bool withContent)
{
    const ValueBase* const value = m_bound.get();
    if (value == nullptr || takeNumber<IntValue>(*m_content, *value, withContent, &m_form) ||
        takeNumber<DoubleValue>(*m_content, *value, withContent, &m_form))
        return;
    const auto* const selection = dynamic_cast<const ValueSelection*>(value);
    if (selection != nullptr && withContent)
        Selection()->Select(selection->GetCurrentKey(), &m_form);
}

void FormField::SetItems(const ValueSelection& items, const QStringList& texts)
{
    ValueSelection* const selection = Selection();
    const QString before = selection->GetStringValue();
    m_texts = texts;
    selection->SetTranslationNamespace(items.GetTranslationNamespace());
    {
        const values::ValueTransaction transaction = selection->CreateTransaction({ChangeItems}, &m_form);
        selection->DeleteItems(&m_form);
        selection->AddItemsFrom(items, &m_form);
    }
    selection->Select(before, &m_form);
    TakeOver(true);
}

std::optional<QString> FormField::GetText() const
{
    const ValueSelection* const selection = Selection();
    if (selection == nullptr)
        return m_content->GetStringValue();
    const values::SelectionItem* const item = selection->GetCurrentItem();
    if (item == nullptr)
        return std::nullopt;
    if (m_texts.isEmpty())
        return values::FormatFloat<double>::ToText(item->GetValue());
    return ItemText(*selection, selection->GetItemIndex(item->GetKey()));
}

void FormField::SetText(const QString& text)
{
    ValueSelection* const selection = Selection();
    double number = 0.0;
    if (selection == nullptr)
        m_content->SetStringValue(text, &m_form);
    else if (!m_texts.isEmpty())
        SelectText(*selection, text);
    else if (values::FormatFloat<double>::FromText(text, number))
        selection->Select(number, &m_form, true);
}

QString FormField::ItemText(const ValueSelection& items, int index) const
{
    return index < m_texts.size() ? m_texts.at(index) : items.GetItem(index)->GetName();
}

void FormField::SelectText(ValueSelection& items, const QString& text)
{
    int match = -1;
    for (int i = items.GetItemCount() - 1; i >= 0; --i) { // backwards: the first of several wins
        const QString itemText = ItemText(items, i).trimmed();
        if (itemText == text) {
            items.SelectIndex(i, &m_form);
            return;
        }
        if (itemText.left(significantCharacters) == text.left(significantCharacters))
            match = i;
    }
    items.SelectIndex(match, &m_form);
}

bool FormField::IsEnabled() const
{
    return m_content->GetState() == values::StateOrdinary;
}

void FormField::SetEnabled(bool enabled)
{
    const values::TValueState state = enabled ? values::StateOrdinary : values::StateUnused;
    m_content->SetState(state, &m_form);
    if (m_bound)
        m_bound->SetState(state, &m_bound); // last: whoever hears of it may end the form
}

QWidget* FormField::CreateWidget() const
{
    if (ValueSelection* const selection = Selection()) {
        auto* const comboBox = new VCComboBoxClassic;
        // Long items must not widen the form: it stands in narrow docks.
        comboBox->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        comboBox->setMinimumContentsLength(significantCharacters);
        comboBox->SetValueSelection(selection);
        return comboBox;
    }
    auto* const spin = new VCNumericFloatSpin;
    spin->SetNumeric(m_content.get());
    return spin;
}

ValueSelection* FormField::Selection() const
{
    return dynamic_cast<ValueSelection*>(m_content.get());
}

} // namespace KT270
