#include "kt270/pgxmlsheet.h"

#include "faultpoints/faultpoint.h"
#include "shortcut.h"

#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace KT270 {

namespace {

constexpr int labelColumn = 0;
constexpr int widgetColumn = 1;
constexpr int columnCount = 2;

QToolButton* createTitle(const QString& title, QWidget* parent)
{
    auto* const button = new QToolButton(parent);
    button->setObjectName(QStringLiteral("title"));
    button->setText(title);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setArrowType(Qt::DownArrow);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    QFont font = button->font();
    font.setBold(true);
    button->setFont(font);
    return button;
}

QLabel* createMark(const QString& text, QWidget* parent)
{
    auto* const mark = new QLabel(QChar(0x25CF) + QLatin1Char(' ') + text, parent);
    mark->setObjectName(QStringLiteral("modifiedMark"));
    mark->setAccessibleName(text);
    QSizePolicy policy = mark->sizePolicy();
    policy.setRetainSizeWhenHidden(true); // the rows stay where they are
    mark->setSizePolicy(policy);
    mark->hide();
    return mark;
}

} // namespace

PgXmlSheet::PgXmlSheet(const QString& title, QWidget* parent)
    : QWidget(parent)
    , m_title(createTitle(title, this))
    , m_mark(createMark(tr("Modified"), this))
    , m_body(new QWidget(this))
    , m_layout(new QGridLayout(m_body))
{
    m_title->setToolTip(tr("Shows or hides the settings"));
    m_mark->setToolTip(tr("There are edits that have not been confirmed yet"));
    m_layout->setColumnStretch(labelColumn, 1);
    m_layout->setColumnStretch(widgetColumn, 1);
    auto* const header = new QHBoxLayout;
    header->addWidget(m_title);
    header->addStretch();
    header->addWidget(m_mark);
    auto* const all = new QVBoxLayout(this);
    all->addLayout(header);
    all->addWidget(m_body);
    all->addStretch();
    connect(m_title, &QToolButton::clicked, this, [this] { setCollapsed(!isCollapsed()); });
}

PgXmlSheet::~PgXmlSheet() = default;

void PgXmlSheet::InsertWidget(const QString& label, const QString& fieldName, QWidget* widget, int row)
{
    faults::mayRaise("PgXmlSheet::InsertWidget");
    if (widget == nullptr)
        return;
    m_rows.erase(std::remove_if(m_rows.begin(), m_rows.end(), [](const Row& entry) { return !entry.widget; }),
                 m_rows.end());
    Row entry{row, fieldName, nullptr, widget, new QWidget(m_body)};
    auto* const boxLayout = new QHBoxLayout(entry.box);
    boxLayout->setContentsMargins(0, 0, 0, 0);
    boxLayout->addWidget(widget);
    if (!label.isEmpty()) {
        entry.label = new QLabel(label, m_body);
        entry.label->setBuddy(widget);
        entry.label->setWordWrap(true);
        entry.label->setEnabled(widget->isEnabled());
        widget->setAccessibleName(withoutShortCut(label));
        connect(widget, &QObject::destroyed, entry.label, &QObject::deleteLater);
    }
    connect(widget, &QObject::destroyed, entry.box, &QObject::deleteLater);
    widget->installEventFilter(this);
    if (widget->focusPolicy() == Qt::WheelFocus)
        widget->setFocusPolicy(Qt::StrongFocus); // the wheel would take the focus first and then change the content

    const auto isBefore = [](int number, const Row& other) { return number < other.number; };
    m_rows.insert(std::upper_bound(m_rows.begin(), m_rows.end(), row, isBefore), entry);
    LayOutRows();
    OrderKeyboard();
}

void PgXmlSheet::LayOutRows()
{
    int line = 0;
    for (const Row& row : m_rows) {
        m_layout->removeWidget(row.box);
        if (row.label) {
            m_layout->removeWidget(row.label);
            m_layout->addWidget(row.label, line, labelColumn);
            m_layout->addWidget(row.box, line, widgetColumn);
        } else {
            m_layout->addWidget(row.box, line, labelColumn, 1, columnCount);
        }
        ++line;
    }
}

void PgXmlSheet::OrderKeyboard()
{
    QWidget* before = m_title;
    for (const Row& row : m_rows) {
        setTabOrder(before, row.widget);
        before = row.widget;
    }
}

QWidget* PgXmlSheet::GetFieldWidget(const QString& fieldName) const
{
    for (const Row& row : m_rows) {
        if (row.widget && row.fieldName == fieldName)
            return row.widget;
    }
    return nullptr;
}

void PgXmlSheet::setModified(bool modified)
{
    faults::mayRaise("PgXmlSheet::setModified");
    m_modified = modified;
    m_mark->setVisible(modified);
    if (modified)
        emit si_modified();
}

void PgXmlSheet::EnableInput(bool enable, int row)
{
    faults::mayRaise("PgXmlSheet::EnableInput");
    if (row == 0)
        m_body->setEnabled(enable);
    for (const Row& entry : m_rows) {
        if (entry.number == row && entry.box)
            entry.box->setEnabled(enable);
    }
}

void PgXmlSheet::setCollapsed(bool collapsed)
{
    if (collapsed == isCollapsed())
        return;
    m_title->setArrowType(collapsed ? Qt::RightArrow : Qt::DownArrow);
    m_body->setHidden(collapsed);
    emit si_collapsedChanged(collapsed);
}

bool PgXmlSheet::isCollapsed() const
{
    return m_body->isHidden();
}

bool PgXmlSheet::eventFilter(QObject* watched, QEvent* event)
{
    const Row* const row = RowOf(watched);
    if (row != nullptr && event->type() == QEvent::EnabledChange && row->label)
        row->label->setEnabled(row->widget->isEnabled());
    if (row != nullptr && event->type() == QEvent::Wheel && !row->widget->hasFocus()) {
        event->ignore(); // goes on to the scroll area
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

const PgXmlSheet::Row* PgXmlSheet::RowOf(const QObject* widget) const
{
    const auto row =
        std::find_if(m_rows.begin(), m_rows.end(), [widget](const Row& entry) { return entry.widget == widget; });
    return row != m_rows.end() ? &*row : nullptr;
}

} // namespace KT270
