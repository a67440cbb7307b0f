#include "app/valuetreemodel.h"

#include "app/displaytext.h"

#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"

#include <QFont>
#include <QGuiApplication>
#include <QPalette>

#include <algorithm>

namespace workbench {

namespace {

constexpr QLatin1Char separator('/');

QString stateText(values::TValueState state)
{
    switch (state) {
    case values::StateOrdinary:
        return ValueTreeModel::tr("0 in use");
    case values::StateRemoved:
        return ValueTreeModel::tr("1 being removed");
    case values::StateUnused:
        return ValueTreeModel::tr("2 not in use");
    }
    return QString::number(state);
}

/// The limits of a number as they stand in a sentence; empty for other kinds.
QString rangeText(const values::ValueBase& value)
{
    const auto range = [](const auto& number) {
        using Numeric = std::decay_t<decltype(number)>;
        using Number = decltype(number.GetValue());
        if (number.GetMin() == std::numeric_limits<Number>::lowest() &&
            number.GetMax() == std::numeric_limits<Number>::max())
            return QString();
        // A number writes itself best.
        Numeric bound;
        bound.SetValue(number.GetMin(), nullptr);
        const QString low = bound.GetStringValue();
        bound.SetValue(number.GetMax(), nullptr);
        return ValueTreeModel::tr(" from %1 to %2").arg(low, bound.GetStringValue());
    };
    if (const auto* const integer = dynamic_cast<const values::IntValue*>(&value))
        return range(*integer);
    if (const auto* const real = dynamic_cast<const values::DoubleValue*>(&value))
        return range(*real);
    return {};
}

} // namespace

/// A row: a folder, a value, or both at once. Observes its value.
class ValueTreeModel::Node final : public IObserver
{
public:
    Node(ValueTreeModel& owner, Node* parentNode, QString nodeName)
        : parent(parentNode)
        , name(std::move(nodeName))
        , m_model(owner)
    {
    }
    ~Node() override { letGo(); }

    void observe(values::ValueBase* newValue)
    {
        letGo();
        m_value = newValue;
        m_life = newValue->GetLife();
        newValue->AddObserver(this);
    }

    /// A value may have gone without a word, or have left its place and live on.
    void letGo()
    {
        if (values::ValueBase* const old = std::exchange(m_value, nullptr); old != nullptr && !m_life.IsOver())
            old->RemoveObserver(this);
    }

    [[nodiscard]] values::ValueBase* value() const { return m_value; }

    void Update(Observable* /*source*/, TChangeCode /*code*/) override
    {
        if (m_value != nullptr && m_value->GetState() == values::StateRemoved)
            letGo();
        m_model.markChanged(*this);
    }

    [[nodiscard]] QString path() const { return parent == nullptr ? QString() : parent->path() + separator + name; }

    [[nodiscard]] auto place(const QString& childName) const
    {
        return std::lower_bound(children.begin(), children.end(), childName,
                                [](const auto& child, const QString& wanted) { return child->name < wanted; });
    }

    [[nodiscard]] int row() const
    {
        return parent == nullptr ? 0 : static_cast<int>(parent->place(name) - parent->children.begin());
    }

    Node* const parent;
    const QString name;
    std::vector<std::unique_ptr<Node>> children; // by name

private:
    ValueTreeModel& m_model;
    values::ValueBase* m_value = nullptr;
    Observable::Life m_life;
};

ValueTreeModel::ValueTreeModel(QObject* parent)
    : QAbstractItemModel(parent)
    , m_root(std::make_unique<Node>(*this, nullptr, QString()))
{
    m_frame.setSingleShot(true);
    m_frame.setInterval(FrameTime);
    connect(&m_frame, &QTimer::timeout, this, &ValueTreeModel::showChanges);

    values::Tree* const tree = values::Tree::Instance();
    for (values::ValueBase* const value : tree->ValuesBelow(QString()))
        ValueTreeModel::ValueInserted(value);
    tree->AddListener(this);
}

ValueTreeModel::~ValueTreeModel()
{
    values::Tree::Instance()->RemoveListener(this);
}

void ValueTreeModel::ValueInserted(values::ValueBase* value)
{
    const QString path = value->GetPathName();
    Node* const folder = m_nodes.value(path);
    nodeAt(path).observe(value);
    if (folder != nullptr)
        markChanged(*folder);
}

void ValueTreeModel::ValueRemoved(const QString& path)
{
    Node* const node = m_nodes.value(path);
    if (node == nullptr)
        return;
    node->letGo();
    markChanged(*node); // the row may stay as a folder
    removeEmptyNodes(*node);
}

ValueTreeModel::Node& ValueTreeModel::nodeAt(const QString& path)
{
    if (path.isEmpty())
        return *m_root;
    if (Node* const node = m_nodes.value(path))
        return *node;
    const int last = path.lastIndexOf(separator);
    return insertChild(nodeAt(path.left(last)), path.mid(last + 1));
}

ValueTreeModel::Node& ValueTreeModel::insertChild(Node& parent, const QString& name)
{
    const auto place = parent.place(name);
    const int row = static_cast<int>(place - parent.children.begin());
    beginInsertRows(indexOfNode(parent, NameColumn), row, row);
    Node& node = **parent.children.insert(place, std::make_unique<Node>(*this, &parent, name));
    m_nodes.insert(node.path(), &node);
    endInsertRows();
    return node;
}

void ValueTreeModel::removeEmptyNodes(Node& leaf)
{
    Node* highest = nullptr;
    for (Node* node = &leaf; node->parent != nullptr && node->value() == nullptr && node->children.size() <= 1;
         node = node->parent) {
        if (highest == nullptr && !node->children.empty())
            return;
        highest = node;
    }
    if (highest == nullptr)
        return;

    Node& parent = *highest->parent;
    const int row = highest->row();
    beginRemoveRows(indexOfNode(parent, NameColumn), row, row);
    for (Node* node = highest; node != nullptr;
         node = node->children.empty() ? nullptr : node->children.front().get()) {
        m_nodes.remove(node->path());
        m_changed.remove(node);
    }
    parent.children.erase(parent.children.begin() + row);
    endRemoveRows();
}

void ValueTreeModel::markChanged(Node& node)
{
    m_changed.insert(&node);
    if (!m_frame.isActive())
        m_frame.start();
}

void ValueTreeModel::showChanges()
{
    const QSet<Node*> changed = std::exchange(m_changed, {});
    for (const Node* const node : changed)
        emit dataChanged(indexOfNode(*node, NameColumn), indexOfNode(*node, KindColumn));
}

ValueTreeModel::Node& ValueTreeModel::nodeOf(const QModelIndex& index) const
{
    return index.isValid() ? *static_cast<Node*>(index.internalPointer()) : *m_root;
}

QModelIndex ValueTreeModel::indexOfNode(const Node& node, int column) const
{
    return node.parent == nullptr ? QModelIndex() : createIndex(node.row(), column, const_cast<Node*>(&node));
}

QModelIndex ValueTreeModel::indexOf(const QString& path, int column) const
{
    const Node* const node = m_nodes.value(path);
    return node == nullptr ? QModelIndex() : indexOfNode(*node, column);
}

QModelIndex ValueTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, nodeOf(parent).children[static_cast<std::size_t>(row)].get());
}

QModelIndex ValueTreeModel::parent(const QModelIndex& index) const
{
    return index.isValid() ? indexOfNode(*nodeOf(index).parent, NameColumn) : QModelIndex();
}

int ValueTreeModel::rowCount(const QModelIndex& parent) const
{
    return parent.column() > NameColumn ? 0 : static_cast<int>(nodeOf(parent).children.size());
}

int ValueTreeModel::columnCount(const QModelIndex& /*parent*/) const
{
    return ColumnCount;
}

QVariant ValueTreeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const Node& node = nodeOf(index);
    if (role == PathRole)
        return node.path();
    if (index.column() == NameColumn && role == Qt::DisplayRole)
        return beginningOf(node.name);
    if (node.value() == nullptr)
        return role == Qt::ToolTipRole ? QVariant(asToolTip(node.path())) : QVariant();
    return valueData(*node.value(), index.column(), role);
}

QVariant ValueTreeModel::valueData(const values::ValueBase& value, int column, int role) const
{
    const bool isValueColumn = column == ValueColumn;
    switch (role) {
    case Qt::DisplayRole:
        switch (column) {
        case ValueColumn:
            return beginningOf(value.GetStringValue());
        case StateColumn:
            return stateText(value.GetState());
        case KindColumn:
            return value.GetTypeName();
        default:
            return {};
        }
    case Qt::EditRole:
        return isValueColumn ? QVariant(value.GetStringValue()) : QVariant();
    case Qt::CheckStateRole:
        if (const auto* const truth = dynamic_cast<const values::BoolValue*>(&value); truth != nullptr && isValueColumn)
            return truth->GetValue() ? Qt::Checked : Qt::Unchecked;
        return {};
    case Qt::ToolTipRole:
        return asToolTip(value.GetPathName() + QLatin1Char('\n') + value.GetTypeName() + rangeText(value));
    case Qt::ForegroundRole:
        if (value.GetState() != values::StateOrdinary)
            return QGuiApplication::palette().brush(QPalette::PlaceholderText); // paler, and readable still
        return {};
    case TypeRole:
        return static_cast<int>(value.GetType());
    default:
        break;
    }

    const auto* const selection = dynamic_cast<const values::ValueSelection*>(&value);
    if (selection == nullptr)
        return {};
    if (role == CurrentKeyRole)
        return selection->GetCurrentKey();
    QStringList names;
    QVariantList keys;
    for (int i = 0; i < selection->GetItemCount() && (role == ItemNamesRole || role == ItemKeysRole); ++i) {
        names += selection->GetItem(i)->GetName();
        keys += selection->GetItem(i)->GetKey();
    }
    if (role == ItemNamesRole)
        return names;
    return role == ItemKeysRole ? QVariant(keys) : QVariant();
}

QVariant ValueTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case NameColumn:
        return tr("Name");
    case ValueColumn:
        return tr("Value");
    case StateColumn:
        return tr("State");
    case KindColumn:
        return tr("Kind");
    default:
        return {};
    }
}

Qt::ItemFlags ValueTreeModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags flags = QAbstractItemModel::flags(index);
    if (!index.isValid() || index.column() != ValueColumn)
        return flags;
    const values::ValueBase* const value = nodeOf(index).value();
    if (value == nullptr)
        return flags;
    // The check mark is the editor of a truth value.
    return flags | (value->GetType() == values::TypeBool ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable);
}

bool ValueTreeModel::setData(const QModelIndex& index, const QVariant& newValue, int role)
{
    const bool isEdit = role == Qt::EditRole || role == Qt::CheckStateRole;
    if (!index.isValid() || index.column() != ValueColumn || !isEdit)
        return false;
    values::ValueBase* const value = nodeOf(index).value();
    if (value == nullptr) {
        emit editRefused(tr("%1 is no longer there.").arg(index.data(PathRole).toString()));
        return false;
    }

    auto* const selection = dynamic_cast<values::ValueSelection*>(value);
    const bool isKey = selection != nullptr && newValue.userType() == QMetaType::Int;
    const QString text = role == Qt::CheckStateRole
                             ? (newValue.toInt() == Qt::Checked ? QStringLiteral("true") : QStringLiteral("false"))
                             : newValue.toString();
    const QString reason =
        isKey ? tr("%1 has no item with the key %2.").arg(value->GetPathName(), QString::number(newValue.toInt()))
              : refusal(*value, text);
    const bool done = isKey ? selection->Select(newValue.toInt(), nullptr) : value->SetStringValue(text, nullptr);
    if (!done)
        emit editRefused(reason);
    return done;
}

QString ValueTreeModel::refusal(const values::ValueBase& value, const QString& text)
{
    const QString path = value.GetPathName();
    switch (value.GetType()) {
    case values::TypeBool:
        return tr("%1 takes \"true\" or \"false\", not \"%2\".").arg(path, text);
    case values::TypeInt:
        return tr("%1 takes a whole number%2, not \"%3\".").arg(path, rangeText(value), text);
    case values::TypeDouble:
        return tr("%1 takes a number%2, not \"%3\".").arg(path, rangeText(value), text);
    case values::TypeSelection:
        return tr("%1 has no item \"%2\".").arg(path, text);
    case values::TypeString:
        break;
    }
    return tr("%1 does not take \"%2\".").arg(path, text);
}

} // namespace workbench
