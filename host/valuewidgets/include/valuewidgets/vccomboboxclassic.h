#pragma once

#include "valuewidgets/undorecordingcontrolbase.h"

#include <QComboBox>

#include <memory>

namespace values {
class ValueSelection;
}

/// A combo box that shows and edits a selection value.
///
/// Shows the items in their order, with their texts translated in the value's translation namespace, and the current
/// item; of a text that no list has room for only the beginning. The operator's choice is written by key, with this
/// widget as the causing observer; choosing the current item again writes nothing. A choice can be undone, except the
/// first one of a selection that had no current item. Following the value writes nothing. Disabled while it has no
/// value and while the value is in state "not in use"; the status tip then says why.
class VALUEWIDGETS_EXPORT VCComboBoxClassic : public QComboBox, public UndoRecordingControlBase
{
    Q_OBJECT
public:
    static constexpr int LongestText = 500; ///< characters of an item's text that are shown

    explicit VCComboBoxClassic(QWidget* parent = nullptr);
    ~VCComboBoxClassic() override;

    /// Shows @p selection, or nothing for null. Ends a binding by path.
    void SetValueSelection(values::ValueSelection* selection);
    /// Shows the selection at @p path: as soon as it comes into the tree, until it goes, and again when it comes back.
    void SetValueSelection_ValuePath(const QString& path);

    /// The value shown; null when there is none.
    [[nodiscard]] values::ValueSelection* GetValueSelection() const;

protected:
    void changeEvent(QEvent* event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};
