#include "app/traceview.h"

#include "app/tracemodel.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <numeric>

namespace workbench {

TraceView::TraceView(QWidget* parent)
    : QWidget(parent)
    , m_model(new TraceModel(this))
    , m_table(new QTableView)
    , m_heldBack(new QLabel)
{
    m_table->setObjectName(QStringLiteral("Traces"));
    m_table->setModel(m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setWordWrap(false);
    m_table->setTextElideMode(Qt::ElideLeft); // a source's own name stands at its end
    m_table->setTabKeyNavigation(false);
    m_table->setAlternatingRowColors(true);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() * 3 / 2);
    m_table->horizontalHeader()->setHighlightSections(false);
    m_table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_table->horizontalHeader()->setSectionResizeMode(TraceModel::TextColumn, QHeaderView::Stretch);
    const int letter = m_table->fontMetrics().averageCharWidth();
    m_table->setColumnWidth(TraceModel::TimeColumn, 16 * letter);
    m_table->setColumnWidth(TraceModel::SourceColumn, 44 * letter);
    m_table->setColumnWidth(TraceModel::LineColumn, 8 * letter);

    m_heldBack->setObjectName(QStringLiteral("HeldBack"));

    auto* const componentTraces = new QCheckBox(tr("Component &traces"));
    componentTraces->setObjectName(QStringLiteral("ComponentTraces"));
    componentTraces->setToolTip(tr("Whether components write traces"));
    componentTraces->setChecked((ErrorHandler::Instance()->GetTraceMask() & ErrorHandler::ComponentTraces) != 0);
    connect(componentTraces, &QCheckBox::toggled, this, &TraceView::setComponentTraces);

    auto* const pause = new QCheckBox(tr("&Pause"));
    pause->setObjectName(QStringLiteral("PauseTraces"));
    pause->setToolTip(tr("Hold new traces back until the end of the pause"));
    connect(pause, &QCheckBox::toggled, m_model, &TraceModel::setPaused);

    auto* const copyButton = new QPushButton(tr("&Copy"));
    copyButton->setObjectName(QStringLiteral("CopyTraces"));
    copyButton->setToolTip(tr("Copy the selected traces, or all when none is selected"));
    connect(copyButton, &QPushButton::clicked, this, &TraceView::copy);
    auto* const clearButton = new QPushButton(tr("C&lear"));
    clearButton->setObjectName(QStringLiteral("ClearTraces"));
    connect(clearButton, &QPushButton::clicked, m_model, &TraceModel::clear);

    auto* const copyKeys = new QAction(this);
    copyKeys->setShortcut(QKeySequence::Copy);
    copyKeys->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(copyKeys, &QAction::triggered, this, &TraceView::copy);
    m_table->addAction(copyKeys);

    connect(m_model, &TraceModel::heldBackCountChanged, this, &TraceView::showHeldBackCount);
    connect(m_model, &QAbstractItemModel::rowsAboutToBeInserted, this, &TraceView::followEnd);

    auto* const controls = new QHBoxLayout;
    controls->addWidget(componentTraces);
    controls->addWidget(pause);
    controls->addWidget(m_heldBack, 1);
    controls->addWidget(copyButton);
    controls->addWidget(clearButton);
    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(controls);
    layout->addWidget(m_table);
}

void TraceView::append(const TraceRecord& record)
{
    m_model->append(record, QDateTime::currentDateTime());
}

void TraceView::copy()
{
    QList<int> rows;
    const QModelIndexList selected = m_table->selectionModel()->selectedRows();
    for (const QModelIndex& index : selected)
        rows += index.row();
    std::sort(rows.begin(), rows.end());
    if (rows.isEmpty()) {
        for (int row = 0; row < m_model->rowCount(); ++row)
            rows += row;
    }
    QApplication::clipboard()->setText(m_model->textOf(rows));
}

void TraceView::setComponentTraces(bool on)
{
    ErrorHandler* const handler = ErrorHandler::Instance();
    const int others = handler->GetTraceMask() & ~ErrorHandler::ComponentTraces;
    handler->SetTraceMask(on ? others | ErrorHandler::ComponentTraces : others);
}

void TraceView::showHeldBackCount(int count)
{
    m_heldBack->setText(count == 0 ? QString() : tr("%n held back", nullptr, count));
}

void TraceView::followEnd()
{
    // Who has scrolled back reads something there.
    const QScrollBar* const bar = m_table->verticalScrollBar();
    if (bar->value() == bar->maximum())
        QMetaObject::invokeMethod(m_table, &QTableView::scrollToBottom, Qt::QueuedConnection);
}

} // namespace workbench
