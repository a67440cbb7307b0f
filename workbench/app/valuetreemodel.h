#pragma once

#include "valueframework/tree.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QSet>
#include <QTimer>

#include <memory>

namespace workbench {

/// The live value tree: folders and values as rows with the columns name, value, state and kind.
///
/// Rows come and go with the values. A value that changes is drawn anew, at most once a frame however often it changes;
/// nothing is polled and nothing of a value is copied. Editing the value column sets the value as an outside party
/// does, naming no observer. GUI thread only.
class ValueTreeModel : public QAbstractItemModel, private values::ITreeListener
{
    Q_OBJECT
public:
    enum Column
    {
        NameColumn,
        ValueColumn,
        StateColumn,
        KindColumn,
        ColumnCount
    };
    enum Role
    {
        PathRole = Qt::UserRole, ///< QString: the row's path in the tree
        TypeRole,                ///< int: values::TValueType; invalid for folders
        ItemNamesRole,           ///< QStringList: of a selection, in order
        ItemKeysRole,            ///< QVariantList of int: the same items' keys
        CurrentKeyRole,          ///< int: of a selection
    };
    /// Changes are shown together once in this time (ms).
    static constexpr int FrameTime = 16;

    explicit ValueTreeModel(QObject* parent = nullptr);
    ~ValueTreeModel() override;

    /// The row of the value or folder at @p path (as GetPathName() gives it); invalid when there is none.
    [[nodiscard]] QModelIndex indexOf(const QString& path, int column = NameColumn) const;

    [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex& index) const override;
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// Of the value column: Qt::EditRole takes a text, and for a selection an item's key as an int as well;
    /// Qt::CheckStateRole sets a truth value.
    bool setData(const QModelIndex& index, const QVariant& newValue, int role = Qt::EditRole) override;

signals:
    /// An edit changed nothing; @p reason is a full sentence.
    void editRefused(const QString& reason);

private:
    class Node;

    void ValueInserted(values::ValueBase* value) override;
    void ValueRemoved(const QString& path) override;

    [[nodiscard]] Node& nodeOf(const QModelIndex& index) const;
    [[nodiscard]] QModelIndex indexOfNode(const Node& node, int column) const;
    Node& nodeAt(const QString& path);
    Node& insertChild(Node& parent, const QString& name);
    void removeEmptyNodes(Node& leaf);
    void markChanged(Node& node);
    void showChanges();
    [[nodiscard]] QVariant valueData(const values::ValueBase& value, int column, int role) const;
    [[nodiscard]] static QString refusal(const values::ValueBase& value, const QString& text);

    std::unique_ptr<Node> m_root;
    QHash<QString, Node*> m_nodes; // by path
    QSet<Node*> m_changed;
    QTimer m_frame;
};

} // namespace workbench
