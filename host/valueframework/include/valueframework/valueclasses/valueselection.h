#pragma once

#include "valueframework/detail/flattable.h"
#include "valueframework/valuebase.h"

#include <QStringList>

#include <vector>

namespace values {

/// One choice of a selection.
class VALUEFRAMEWORK_EXPORT SelectionItem
{
public:
    SelectionItem(QString name, double value, int key);

    /// The raw, untranslated text.
    [[nodiscard]] const QString& GetName() const { return m_name; }
    [[nodiscard]] double GetValue() const { return m_value; }
    [[nodiscard]] int GetKey() const { return m_key; }

    friend bool operator==(const SelectionItem& a, const SelectionItem& b)
    {
        return a.m_key == b.m_key && a.m_value == b.m_value && a.m_name == b.m_name;
    }

private:
    QString m_name;
    double m_value;
    int m_key;
};

/// A list of items, each with a text, a number and a key of its own, one of which may be current.
///
/// The content is the key of the current item. Item operations send ChangeItems when they change the list and never
/// select; an item operation that takes the current item away sends ChangeContent after it.
class VALUEFRAMEWORK_EXPORT ValueSelection : public ValueBase
{
public:
    /// Key of no item.
    static constexpr int NoKey = -1;

    ValueSelection();
    ~ValueSelection() override;

    /// @name Items
    /// @{

    /// Appends an item, or replaces the one with the same key at its place. False, with nothing changed, for the key
    /// NoKey and a number that is NaN.
    bool AddItem(const QString& name, double value, int key, IObserver* observer = nullptr);
    /// Appends items with number 0 whose keys are their positions in the list.
    void AddItems(const QStringList& names, IObserver* observer = nullptr);
    /// Adds all items of @p other, with their keys and numbers.
    void AddItemsFrom(const ValueSelection& other, IObserver* observer = nullptr);
    /// False when there is no item with @p key.
    bool DeleteItem(int key, IObserver* observer = nullptr);
    void DeleteItems(IObserver* observer = nullptr);

    [[nodiscard]] int GetItemCount() const { return static_cast<int>(m_items.size()); }
    /// The item at @p index, null outside the list. Valid until the list changes.
    [[nodiscard]] const SelectionItem* GetItem(int index) const;
    /// Position of the item with @p key, -1 when there is none. Does not depend on the number of items.
    [[nodiscard]] int GetItemIndex(int key) const { return m_indexByKey.Find(KeySlot::HashOf(key), HasKey{key}).index; }
    /// Text of the item with @p key, empty when there is none.
    [[nodiscard]] QString GetItemNameForKey(int key) const;
    /// Key of the first item with that text, NoKey when there is none.
    [[nodiscard]] int GetKeyForItemName(const QString& name) const;
    /// @}

    /// @name Current item
    /// Selecting is false, with nothing changed or sent, when no item matches.
    /// @{
    bool Select(const QString& name, IObserver* observer = nullptr);
    bool Select(const wchar_t* name, IObserver* observer = nullptr);
    bool Select(int key, IObserver* observer = nullptr);
    /// By number: the item with exactly this number when @p exact, else the closest.
    bool Select(double value, IObserver* observer, bool exact);
    bool SelectIndex(int index, IObserver* observer = nullptr);
    /// The item whose number is closest; of two equally close ones the first in the list.
    bool SelectClosestValue(double value, IObserver* observer = nullptr);

    /// NoKey when no item is current.
    [[nodiscard]] int GetCurrentKey() const;
    /// 0 when no item is current.
    [[nodiscard]] double GetCurrentValue() const;
    /// Null when no item is current. Valid until the list changes.
    [[nodiscard]] const SelectionItem* GetCurrentItem() const { return GetItem(m_current); }
    /// @}

    [[nodiscard]] TValueType GetType() const override;
    [[nodiscard]] QString GetTypeName() const override;
    /// Text of the current item, empty when there is none.
    [[nodiscard]] QString GetStringValue() const override;
    /// As Select() by text.
    bool SetStringValue(const QString& text, IObserver* observer) override;
    /// Takes items and current item over.
    bool Assign(const ValueBase& other, IObserver* observer) override;
    /// True when items and current item are the same.
    [[nodiscard]] bool Compare(const ValueBase& other) const override;

protected:
    [[nodiscard]] QString GetRecordingText() const override;

private:
    struct KeySlot
    {
        int key = NoKey;
        int index = -1;

        [[nodiscard]] bool IsFree() const { return key == NoKey; }
        [[nodiscard]] uint GetHash() const { return HashOf(key); }
        // Keys are mostly numbers in equal steps, positions or bandwidths: the golden ratio spreads them evenly.
        static uint HashOf(int key) { return static_cast<uint>(key) * 0x9E3779B9U; }
    };
    struct HasKey
    {
        int key;
        bool operator()(const KeySlot& slot) const { return slot.key == key; }
    };

    bool PutItem(SelectionItem item);
    template <typename Match>
    bool SelectFirst(Match match, IObserver* observer);

    std::vector<SelectionItem> m_items;
    detail::FlatTable<KeySlot> m_indexByKey;
    int m_current = -1; // index
};

} // namespace values
