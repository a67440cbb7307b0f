#include "valueframework/valueclasses/valueselection.h"

#include "faultpoints/faultpoint.h"
#include "valueframework/valueclasses/formats.h"

#include <algorithm>
#include <cmath>

namespace values {

SelectionItem::SelectionItem(QString name, double value, int key)
    : m_name(std::move(name))
    , m_value(value)
    , m_key(key)
{
}

ValueSelection::ValueSelection() = default;
ValueSelection::~ValueSelection() = default;

/// True when the list is another one afterwards.
bool ValueSelection::PutItem(SelectionItem item)
{
    const int index = GetItemIndex(item.GetKey());
    if (index < 0) {
        m_indexByKey.Insert({item.GetKey(), GetItemCount()});
        m_items.push_back(std::move(item));
        return true;
    }
    SelectionItem& old = m_items[static_cast<std::size_t>(index)];
    if (old == item)
        return false;
    old = std::move(item);
    return true;
}

bool ValueSelection::AddItem(const QString& name, double value, int key, IObserver* observer)
{
    if (faults::failsByResult("ValueSelection::AddItem"))
        return false;
    if (key == NoKey || std::isnan(value))
        return false;
    if (PutItem({name, value, key}))
        HasChanged(ChangeItems, observer);
    return true;
}

void ValueSelection::AddItems(const QStringList& names, IObserver* observer)
{
    faults::mayRaise("ValueSelection::AddItems");
    bool changed = false;
    for (const QString& name : names)
        changed |= PutItem({name, 0.0, GetItemCount()});
    if (changed)
        HasChanged(ChangeItems, observer);
}

void ValueSelection::AddItemsFrom(const ValueSelection& other, IObserver* observer)
{
    faults::mayRaise("ValueSelection::AddItemsFrom");
    bool changed = false;
    if (&other != this) {
        for (const SelectionItem& item : other.m_items)
            changed |= PutItem(item);
    }
    if (changed)
        HasChanged(ChangeItems, observer);
}

bool ValueSelection::DeleteItem(int key, IObserver* observer)
{
    const int index = GetItemIndex(key);
    if (index < 0)
        return false;
    m_items.erase(m_items.begin() + index);
    m_indexByKey.Take(KeySlot::HashOf(key), HasKey{key});
    for (int i = index; i < GetItemCount(); ++i) {
        const int moved = m_items[static_cast<std::size_t>(i)].GetKey();
        m_indexByKey.Find(KeySlot::HashOf(moved), HasKey{moved}).index = i;
    }
    const bool wasCurrent = index == m_current;
    if (wasCurrent)
        m_current = -1;
    else if (index < m_current)
        --m_current;
    Use use(*this);
    HasChanged(ChangeItems, observer);
    if (wasCurrent && !use.IsOver())
        HasChanged(ChangeContent, observer);
    return true;
}

void ValueSelection::DeleteItems(IObserver* observer)
{
    faults::mayRaise("ValueSelection::DeleteItems");
    if (m_items.empty())
        return;
    const bool hadCurrent = m_current >= 0;
    m_items.clear();
    m_indexByKey.Clear();
    m_current = -1;
    Use use(*this);
    HasChanged(ChangeItems, observer);
    if (hadCurrent && !use.IsOver())
        HasChanged(ChangeContent, observer);
}

const SelectionItem* ValueSelection::GetItem(int index) const
{
    if (faults::failsByResult("ValueSelection::GetItem"))
        return nullptr;
    return index >= 0 && index < GetItemCount() ? &m_items[static_cast<std::size_t>(index)] : nullptr;
}

QString ValueSelection::GetItemNameForKey(int key) const
{
    const SelectionItem* item = GetItem(GetItemIndex(key));
    return item != nullptr ? item->GetName() : QString();
}

int ValueSelection::GetKeyForItemName(const QString& name) const
{
    const auto found = std::find_if(m_items.begin(), m_items.end(),
                                    [&name](const SelectionItem& item) { return item.GetName() == name; });
    return found != m_items.end() ? found->GetKey() : NoKey;
}

template <typename Match>
bool ValueSelection::SelectFirst(Match match, IObserver* observer)
{
    const auto found = std::find_if(m_items.begin(), m_items.end(), match);
    return found != m_items.end() && SelectIndex(static_cast<int>(found - m_items.begin()), observer);
}

bool ValueSelection::Select(const QString& name, IObserver* observer)
{
    if (faults::failsByResult("ValueSelection::Select"))
        return false;
    return SelectFirst([&name](const SelectionItem& item) { return item.GetName() == name; }, observer);
}

bool ValueSelection::Select(const wchar_t* name, IObserver* observer)
{
    return name != nullptr && Select(QString::fromWCharArray(name), observer);
}

bool ValueSelection::Select(int key, IObserver* observer)
{
    if (faults::failsByResult("ValueSelection::Select"))
        return false;
    return SelectIndex(GetItemIndex(key), observer);
}

bool ValueSelection::Select(double value, IObserver* observer, bool exact)
{
    if (faults::failsByResult("ValueSelection::Select"))
        return false;
    if (!exact)
        return SelectClosestValue(value, observer);
    return SelectFirst([value](const SelectionItem& item) { return item.GetValue() == value; }, observer);
}

bool ValueSelection::SelectIndex(int index, IObserver* observer)
{
    if (faults::failsByResult("ValueSelection::SelectIndex"))
        return false;
    if (index < 0 || index >= GetItemCount())
        return false;
    const bool changed = index != m_current;
    m_current = index;
    AnnounceContentSet(changed, observer);
    return true;
}

bool ValueSelection::SelectClosestValue(double value, IObserver* observer)
{
    if (faults::failsByResult("ValueSelection::SelectClosestValue"))
        return false;
    if (m_items.empty() || std::isnan(value))
        return false;
    const auto closest =
        std::min_element(m_items.begin(), m_items.end(), [value](const SelectionItem& a, const SelectionItem& b) {
            return std::abs(a.GetValue() - value) < std::abs(b.GetValue() - value);
        });
    return SelectIndex(static_cast<int>(closest - m_items.begin()), observer);
}

int ValueSelection::GetCurrentKey() const
{
    if (faults::failsByResult("ValueSelection::GetCurrentKey"))
        return NoKey;
    const SelectionItem* item = GetCurrentItem();
    return item != nullptr ? item->GetKey() : NoKey;
}

double ValueSelection::GetCurrentValue() const
{
    if (faults::failsByResult("ValueSelection::GetCurrentValue"))
        return 0.0;
    const SelectionItem* item = GetCurrentItem();
    return item != nullptr ? item->GetValue() : 0.0;
}

TValueType ValueSelection::GetType() const
{
    return TypeSelection;
}

QString ValueSelection::GetTypeName() const
{
    return QStringLiteral("selection");
}

QString ValueSelection::GetStringValue() const
{
    const SelectionItem* item = GetCurrentItem();
    return item != nullptr ? item->GetName() : QString();
}

bool ValueSelection::SetStringValue(const QString& text, IObserver* observer)
{
    return Select(text, observer);
}

bool ValueSelection::Assign(const ValueBase& other, IObserver* observer)
{
    const auto* same = dynamic_cast<const ValueSelection*>(&other);
    if (same == nullptr)
        return false;
    if (same == this)
        return true;
    const int oldKey = GetCurrentKey();
    const bool itemsChanged = m_items != same->m_items;
    m_items = same->m_items;
    m_indexByKey = same->m_indexByKey;
    m_current = same->m_current;
    Use use(*this);
    if (itemsChanged)
        HasChanged(ChangeItems, observer);
    if (!use.IsOver())
        AnnounceContentSet(GetCurrentKey() != oldKey, observer);
    return true;
}

bool ValueSelection::Compare(const ValueBase& other) const
{
    const auto* same = dynamic_cast<const ValueSelection*>(&other);
    return same != nullptr && same->m_items == m_items && same->m_current == m_current;
}

QString ValueSelection::GetRecordingText() const
{
    return StreamFormat<QString>::ToText(GetStringValue());
}

} // namespace values
