#pragma once

#include "formdescription.h"

#include "valueframework/valueclasses/valueobservermacros.h"

#include <memory>
#include <optional>

class QWidget;

namespace KT270 {

/// One field of a form: its content, and the value it is bound to.
class FormField
{
public:
    /// @p form hears of what the operator does to the content, not of what these operations do. It outlives the field.
    FormField(const FieldDescription& description, const QString& name, IObserver& form);
    ~FormField();
    FormField(const FormField&) = delete;
    FormField& operator=(const FormField&) = delete;

    [[nodiscard]] const FieldDescription& GetDescription() const { return m_description; }

    /// @name Binding
    /// @{

    /// False, with nothing changed, when the kind of @p value does not suit. Null: to none.
    bool Bind(values::ValueBase* value);
    [[nodiscard]] const values::ValueBase* GetBound() const { return m_bound.get(); }
    /// Takes limits and step of the bound value over, and its content when @p withContent.
    void TakeOver(bool withContent);
    /// New items for an enumeration field, with the texts for the form's text (none: numbers).
    void SetItems(const values::ValueSelection& items, const QStringList& texts);
    /// @}

    /// @name The content in the form's text
    /// @{

    /// Nothing when no item is current.
    [[nodiscard]] std::optional<QString> GetText() const;
    /// What does not fit changes nothing.
    void SetText(const QString& text);
    /// @}

    [[nodiscard]] bool IsEnabled() const;
    /// The bound value's state follows.
    void SetEnabled(bool enabled);

    /// A new widget that shows and edits the content.
    [[nodiscard]] QWidget* CreateWidget() const;

private:
    [[nodiscard]] values::ValueSelection* Selection() const;
    [[nodiscard]] QString ItemText(const values::ValueSelection& items, int index) const;
    void SelectText(values::ValueSelection& items, const QString& text);

    const FieldDescription m_description;
    IObserver& m_form;
    std::unique_ptr<values::ValueBase> m_content;
    values::ValuePtr<values::ValueBase> m_bound;
    QStringList m_texts;
};

} // namespace KT270
