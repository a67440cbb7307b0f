#include "valuewidgets/vccomboboxclassic.h"

#include "faultpoints/faultpoint.h"
#include "valuebinding.h"
#include "valueedit.h"
#include "valueframework/valueclasses/valueselection.h"
#include "ztbase/brix/texts.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>

namespace {

struct SelectedKey
{
    int key;
};

bool Write(const ValueReference& value, const SelectedKey& content, IObserver* causer)
{
    auto* const selection = dynamic_cast<values::ValueSelection*>(value.Find());
    return selection != nullptr && selection->Select(content.key, causer);
}

QString translated(const values::ValueSelection& selection, const values::SelectionItem& item)
{
    const QString& translationNamespace = selection.GetTranslationNamespace();
    if (translationNamespace.isEmpty())
        return item.GetName();
    return QCoreApplication::translate(translationNamespace.toUtf8().constData(), item.GetName().toUtf8().constData());
}

QString shownText(const values::ValueSelection& selection, const values::SelectionItem& item)
{
    return Brix::Beginning(translated(selection, item), VCComboBoxClassic::LongestText);
}

} // namespace

class VCComboBoxClassic::Private final : public ValueBinding
{
public:
    explicit Private(VCComboBoxClassic& comboBox)
        : ValueBinding(comboBox)
        , m_comboBox(comboBox)
    {
    }

    [[nodiscard]] values::ValueSelection* Selection() const
    {
        return static_cast<values::ValueSelection*>(BoundValue()); // Accepts() has seen to the kind
    }

    void ShowEverything();
    /// The operator has chosen the item at @p index.
    void Choose(int index);

protected:
    bool Accepts(const values::ValueBase& value) const override
    {
        return dynamic_cast<const values::ValueSelection*>(&value) != nullptr;
    }
    void ValueExchanged() override { ShowEverything(); }
    void ValueChanged(TChangeCode code) override;

private:
    void ShowItems();
    [[nodiscard]] bool ShowsItems() const;
    void ShowCurrent();

    VCComboBoxClassic& m_comboBox;
};

void VCComboBoxClassic::Private::ValueChanged(TChangeCode code)
{
    if (code == ChangeItems)
        ShowItems();
    else if (code == ChangeContent)
        ShowCurrent();
    else if (code == ChangeState)
        ShowAvailability();
}

void VCComboBoxClassic::Private::ShowEverything()
{
    ShowItems();
    ShowAvailability();
}

void VCComboBoxClassic::Private::ShowItems()
{
    if (!ShowsItems()) {
        m_comboBox.clear();
        if (const values::ValueSelection* const selection = Selection()) {
            for (int i = 0; i < selection->GetItemCount(); ++i) {
                const values::SelectionItem* const item = selection->GetItem(i);
                m_comboBox.addItem(shownText(*selection, *item), item->GetKey());
            }
        }
    }
    ShowCurrent();
}

/// Most lists that are announced are those of before: drivers write them anew with every result, and a list that is
/// filled has to be laid out again.
bool VCComboBoxClassic::Private::ShowsItems() const
{
    const values::ValueSelection* const selection = Selection();
    const int count = selection != nullptr ? selection->GetItemCount() : 0;
    if (m_comboBox.count() != count)
        return false;
    for (int i = 0; i < count; ++i) {
        const values::SelectionItem* const item = selection->GetItem(i);
        if (m_comboBox.itemData(i) != QVariant(item->GetKey()) ||
            m_comboBox.itemText(i) != shownText(*selection, *item))
            return false;
    }
    return true;
}

void VCComboBoxClassic::Private::ShowCurrent()
{
    const values::ValueSelection* const selection = Selection();
    const int key = selection != nullptr ? selection->GetCurrentKey() : values::ValueSelection::NoKey;
    const int index = selection != nullptr ? selection->GetItemIndex(key) : -1;
    // Inside a transaction the list shown may be older than the current item.
    const bool isShown = index >= 0 && m_comboBox.itemData(index) == QVariant(key);
    m_comboBox.setCurrentIndex(isShown ? index : -1);
}

void VCComboBoxClassic::Private::Choose(int index)
{
    values::ValueSelection* const selection = Selection();
    if (selection == nullptr) {
        ShowEverything(); // the value was deleted without a word
        return;
    }
    const int before = selection->GetCurrentKey();
    const int after = m_comboBox.itemData(index).toInt();
    if (after == before)
        return;
    auto edit = std::make_unique<ValueEdit<SelectedKey>>(
        *selection, SelectedKey{before}, SelectedKey{after}, this,
        VCComboBoxClassic::tr("%1: %2").arg(selection->GetName(), m_comboBox.itemText(index)));
    const QPointer<VCComboBoxClassic> comboBox(&m_comboBox);
    if (before == values::ValueSelection::NoKey)
        edit->redo(); // there is nothing to go back to
    else
        CarryOut(std::move(edit));
    if (comboBox)
        ShowCurrent();
}

VCComboBoxClassic::VCComboBoxClassic(QWidget* parent)
    : QComboBox(parent)
    , d(std::make_unique<Private>(*this))
{
    faults::mayRaise("VCComboBoxClassic::VCComboBoxClassic");
    d->ShowEverything();
    connect(this, QOverload<int>::of(&QComboBox::activated), this, [this](int index) { d->Choose(index); });
}

VCComboBoxClassic::~VCComboBoxClassic() = default;

void VCComboBoxClassic::SetValueSelection(values::ValueSelection* selection)
{
    faults::mayRaise("VCComboBoxClassic::SetValueSelection");
    d->BindTo(selection);
}

void VCComboBoxClassic::SetValueSelection_ValuePath(const QString& path)
{
    faults::mayRaise("VCComboBoxClassic::SetValueSelection_ValuePath");
    d->BindToPath(path);
}

values::ValueSelection* VCComboBoxClassic::GetValueSelection() const
{
    return d->Selection();
}

void VCComboBoxClassic::changeEvent(QEvent* event)
{
    QComboBox::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        d->ShowEverything();
}
