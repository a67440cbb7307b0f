#include "app/historyview.h"

#include "app/displaytext.h"

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace workbench {

namespace {

constexpr double highestFrequency = 1e12; // Hz

QDateTimeEdit* newTimeEdit(const char* name)
{
    auto* const edit = new QDateTimeEdit;
    edit->setObjectName(QLatin1String(name));
    edit->setTimeSpec(Qt::UTC);
    edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    edit->setKeyboardTracking(false);
    return edit;
}

QDoubleSpinBox* newFrequencyEdit(const char* name)
{
    auto* const edit = new QDoubleSpinBox;
    edit->setObjectName(QLatin1String(name));
    edit->setDecimals(0);
    edit->setRange(0.0, highestFrequency);
    edit->setSingleStep(1000.0);
    edit->setSuffix(QStringLiteral(" Hz"));
    edit->setKeyboardTracking(false);
    return edit;
}

QCheckBox* newCheckBox(const char* name, const QString& text)
{
    auto* const box = new QCheckBox(text);
    box->setObjectName(QLatin1String(name));
    return box;
}

QLabel* newText(const char* name)
{
    auto* const text = new QLabel;
    text->setObjectName(QLatin1String(name));
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return text;
}

QString foundText(const HistoryFix& fix)
{
    if (const auto* const reason = std::get_if<QString>(&fix.located))
        return *reason;
    const QString text = HistoryView::tr("Position computed. Stored results: %1, usable bearings: %2.")
                             .arg(fix.results)
                             .arg(fix.bearings);
    return fix.isComplete ? text : text + HistoryView::tr(" There are more results; these are the newest.");
}

} // namespace

HistoryView::HistoryView(ResultHistory& history, QWidget* parent)
    : QWidget(parent)
    , m_history(&history)
{
    addFields(history.choice());
    m_found = newText("HistoryFound");
    m_state = newText("HistoryState");
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(m_fields);
    layout->addWidget(m_found);
    layout->addWidget(m_state);
    layout->addStretch();
    showState();
    connect(&history, &ResultHistory::stateChanged, this, &HistoryView::showState);
    connect(&history, &ResultHistory::usableChanged, this, &HistoryView::showState);
    connect(&history, &QObject::destroyed, this, &HistoryView::showState);
}

void HistoryView::addFields(const HistoryChoice& choice)
{
    m_hasFrom = newCheckBox("HistoryHasFrom", tr("Fr&om (UTC)"));
    m_hasFrom->setToolTip(tr("Unchecked: from the oldest stored result on"));
    m_from = newTimeEdit("HistoryFrom");
    m_hasTo = newCheckBox("HistoryHasTo", tr("&Up to (UTC)"));
    m_hasTo->setToolTip(tr("Unchecked: up to the newest stored result"));
    m_to = newTimeEdit("HistoryTo");
    m_hasFrequency = newCheckBox("HistoryHasFrequency", tr("Frequenc&y"));
    m_hasFrequency->setToolTip(tr("Unchecked: the frequency of the latest result"));
    m_frequency = newFrequencyEdit("HistoryFrequency");
    auto* const toleranceLabel = new QLabel(tr("W&ithin"));
    m_tolerance = newFrequencyEdit("HistoryTolerance");
    m_tolerance->setToolTip(tr("How far a stored result may be off the frequency, to either side"));
    toleranceLabel->setBuddy(m_tolerance);

    m_fields = new QWidget;
    auto* const form = new QFormLayout(m_fields);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(m_hasFrom, m_from);
    form->addRow(m_hasTo, m_to);
    form->addRow(m_hasFrequency, m_frequency);
    form->addRow(toleranceLabel, m_tolerance);

    m_hasFrom->setChecked(choice.from.isValid());
    m_from->setDateTime(choice.from.isValid() ? choice.from : QDateTime::currentDateTimeUtc());
    m_hasTo->setChecked(choice.to.isValid());
    m_to->setDateTime(choice.to.isValid() ? choice.to : QDateTime::currentDateTimeUtc());
    m_hasFrequency->setChecked(choice.frequency.has_value());
    m_frequency->setValue(choice.frequency.value_or(0.0));
    m_tolerance->setValue(choice.tolerance);

    for (const auto& [box, edit] : checkedEdits()) {
        edit->setEnabled(box->isChecked());
        connect(box, &QCheckBox::toggled, edit, &QWidget::setEnabled);
        connect(box, &QCheckBox::toggled, this, &HistoryView::choose);
    }
    for (QDateTimeEdit* const edit : {m_from, m_to})
        connect(edit, &QDateTimeEdit::dateTimeChanged, this, &HistoryView::choose);
    for (QDoubleSpinBox* const edit : {m_frequency, m_tolerance})
        connect(edit, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, &HistoryView::choose);
}

std::array<std::pair<QCheckBox*, QWidget*>, 3> HistoryView::checkedEdits() const
{
    return {{{m_hasFrom, m_from}, {m_hasTo, m_to}, {m_hasFrequency, m_frequency}}};
}

void HistoryView::follow(const DfResult& result)
{
    const bool hasTime = result.date.isValid() && result.time.isValid();
    const QDateTime time(result.date, result.time, Qt::UTC);
    if (!m_hasFrom->isChecked() && hasTime)
        m_from->setDateTime(time);
    if (!m_hasTo->isChecked() && hasTime)
        m_to->setDateTime(time);
    if (!m_hasFrequency->isChecked() && result.frequency)
        m_frequency->setValue(*result.frequency);
}

/// What is not checked is no part of the choice, whatever it shows.
void HistoryView::choose()
{
    if (!m_history)
        return;
    HistoryChoice choice;
    if (m_hasFrom->isChecked())
        choice.from = m_from->dateTime();
    if (m_hasTo->isChecked())
        choice.to = m_to->dateTime();
    if (m_hasFrequency->isChecked())
        choice.frequency = m_frequency->value();
    choice.tolerance = m_tolerance->value();
    m_history->setChoice(choice);
}

void HistoryView::showState()
{
    const bool isUsable = m_history && m_history->isUsable();
    m_fields->setEnabled(isUsable);
    if (!m_history) {
        m_found->hide();
        m_state->setText(tr("Results are not stored any more."));
        return;
    }
    const std::optional<HistoryFix>& found = m_history->lastFix();
    m_found->setText(found ? foundText(*found) : tr("No position has been computed from stored results yet."));
    const QString trouble = m_history->trouble();
    m_state->setText(trouble.isEmpty() ? tr("%1: results stored since the start: %2")
                                             .arg(m_history->file(), QString::number(m_history->storedCount()))
                                       : trouble);
    m_fields->setToolTip(isUsable ? QString() : asToolTip(trouble));
}

} // namespace workbench
