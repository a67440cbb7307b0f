#include "app/valuetreeview.h"

#include "app/displaytext.h"
#include "app/valuetreemodel.h"

#include "valueframework/valuebase.h"

#include <QComboBox>
#include <QEvent>
#include <QHeaderView>
#include <QLineEdit>
#include <QTreeView>
#include <QVBoxLayout>

namespace workbench {

namespace {

/// Keys edit the value of the current row, whichever column is current: rows are selected, not cells.
class RowEditingTree final : public QTreeView
{
protected:
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override
    {
        const bool isKey = event != nullptr && event->type() == QEvent::KeyPress;
        return QTreeView::edit(isKey ? index.siblingAtColumn(ValueTreeModel::ValueColumn) : index, trigger, event);
    }
};

} // namespace

ValueTreeFilter::ValueTreeFilter(QObject* parent)
    : QSortFilterProxyModel(parent)
{
    setRecursiveFilteringEnabled(true);
}

void ValueTreeFilter::setText(const QString& text)
{
    m_text = text;
    invalidateFilter();
}

bool ValueTreeFilter::filterAcceptsRow(int row, const QModelIndex& parent) const
{
    if (m_text.isEmpty())
        return true;
    const QModelIndex index = sourceModel()->index(row, ValueTreeModel::NameColumn, parent);
    return index.data(ValueTreeModel::PathRole).toString().contains(m_text, Qt::CaseInsensitive);
}

QWidget* ValueDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                     const QModelIndex& index) const
{
    if (index.data(ValueTreeModel::TypeRole) != QVariant(static_cast<int>(values::TypeSelection)))
        return QStyledItemDelegate::createEditor(parent, option, index);
    auto* const items = new QComboBox(parent);
    const QStringList names = index.data(ValueTreeModel::ItemNamesRole).toStringList();
    const QVariantList keys = index.data(ValueTreeModel::ItemKeysRole).toList();
    for (int i = 0; i < names.size(); ++i)
        items->addItem(beginningOf(names[i]), keys[i]);
    // The choice is the edit; no further key stroke is needed.
    connect(items, QOverload<int>::of(&QComboBox::activated), this, [this, items] {
        auto* const self = const_cast<ValueDelegate*>(this);
        emit self->commitData(items);
        emit self->closeEditor(items);
    });
    return items;
}

void ValueDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    auto* const items = qobject_cast<QComboBox*>(editor);
    if (items == nullptr) {
        // What is being typed is not overwritten when the value changes meanwhile.
        if (auto* const edit = qobject_cast<QLineEdit*>(editor); edit == nullptr || !edit->isModified())
            QStyledItemDelegate::setEditorData(editor, index);
        return;
    }
    if (!items->view()->isVisible())
        items->setCurrentIndex(items->findData(index.data(ValueTreeModel::CurrentKeyRole)));
}

void ValueDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    if (auto* const items = qobject_cast<QComboBox*>(editor)) {
        if (items->currentIndex() >= 0)
            model->setData(index, items->currentData(), Qt::EditRole);
        return;
    }
    // Leaving a field without having changed it is no edit.
    if (const auto* const edit = qobject_cast<QLineEdit*>(editor); edit == nullptr || edit->isModified())
        QStyledItemDelegate::setModelData(editor, model, index);
}

ValueTreeView::ValueTreeView(QWidget* parent)
    : QWidget(parent)
    , m_model(new ValueTreeModel(this))
    , m_filter(new ValueTreeFilter(this))
    , m_filterEdit(new QLineEdit)
    , m_tree(new RowEditingTree)
{
    m_filter->setSourceModel(m_model);
    m_filterEdit->setObjectName(QStringLiteral("ValueFilter"));
    m_filterEdit->setPlaceholderText(tr("Show paths that contain …"));
    m_filterEdit->setToolTip(tr("Shows only values and folders whose path contains this text"));
    m_filterEdit->setClearButtonEnabled(true);
    connect(m_filterEdit, &QLineEdit::textChanged, this, &ValueTreeView::setFilter);

    m_tree->setObjectName(QStringLiteral("ValueTree"));
    m_tree->setModel(m_filter);
    m_tree->setItemDelegate(new ValueDelegate(m_tree));
    m_tree->setUniformRowHeights(true);
    m_tree->setAlternatingRowColors(true);
    m_tree->setTabKeyNavigation(false);
    m_tree->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(ValueTreeModel::ValueColumn, QHeaderView::Stretch);
    const int letter = m_tree->fontMetrics().averageCharWidth();
    m_tree->setColumnWidth(ValueTreeModel::NameColumn, 44 * letter);
    m_tree->setColumnWidth(ValueTreeModel::StateColumn, 14 * letter);
    m_tree->setColumnWidth(ValueTreeModel::KindColumn, 11 * letter);
    // New folders open by themselves: what happens in the tree is to be seen.
    connect(m_filter, &QAbstractItemModel::rowsInserted, this,
            [this](const QModelIndex& parentRow) { m_tree->expand(parentRow); });
    m_tree->expandAll();
    connect(m_model, &ValueTreeModel::editRefused, this, &ValueTreeView::editRefused);

    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(m_filterEdit);
    layout->addWidget(m_tree);
}

QModelIndex ValueTreeView::indexOf(const QString& path, int column) const
{
    return m_filter->mapFromSource(m_model->indexOf(path, column));
}

void ValueTreeView::setFilter(const QString& text)
{
    m_filter->setText(text);
    if (!text.isEmpty())
        m_tree->expandAll();
}

} // namespace workbench
