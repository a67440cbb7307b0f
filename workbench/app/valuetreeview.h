#pragma once

#include <QSortFilterProxyModel>
#include <QStyledItemDelegate>
#include <QWidget>

class QLineEdit;
class QTreeView;

namespace workbench {

class ValueTreeModel;

/// Shows the rows of a ValueTreeModel whose path contains a text, whatever its case, and the folders above them.
class ValueTreeFilter : public QSortFilterProxyModel
{
    Q_OBJECT
public:
    explicit ValueTreeFilter(QObject* parent = nullptr);
    void setText(const QString& text);

protected:
    [[nodiscard]] bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private:
    QString m_text;
};

/// Edits selections by a list of their items, everything else as text.
class ValueDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
};

/// The live value tree with a filter; the value column can be edited.
class ValueTreeView : public QWidget
{
    Q_OBJECT
public:
    explicit ValueTreeView(QWidget* parent = nullptr);

    [[nodiscard]] QLineEdit* filterEdit() const { return m_filterEdit; }
    [[nodiscard]] QTreeView* tree() const { return m_tree; }
    [[nodiscard]] ValueTreeModel* model() const { return m_model; }
    /// The row of the value at @p path in tree(); invalid when there is none or the filter hides it.
    [[nodiscard]] QModelIndex indexOf(const QString& path, int column) const;

signals:
    /// @p reason is a full sentence.
    void editRefused(const QString& reason);

private:
    void setFilter(const QString& text);

    ValueTreeModel* m_model;
    ValueTreeFilter* m_filter;
    QLineEdit* m_filterEdit;
    QTreeView* m_tree;
};

} // namespace workbench
