#include "dfdetailedresults.h"

#include "entryguard.h"
#include "errortext.h"
#include "hostcodes.h"
#include "resultformats.h"
#include "resultnames.h"
#include "valuetools.h"

#include "ztbase/brix/datetime.h"
#include "ztbase/brix/numbers.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QKeySequence>
#include <QTableWidget>

#include <algorithm>

namespace VelmarGui {

namespace {

constexpr int nameColumnWidth = 80;

// Not a literal QString: the host may keep traces for longer than this library is loaded.
const QLatin1String sourceFile("userinterface/guicomponents/dflocatecomponent/dfdetailedresults");

/// The item of the station with @p key; null without a selection or such an item.
const values::SelectionItem* itemOf(const values::ValueSelection* selection, int key)
{
    const int index = selection != nullptr ? selection->GetItemIndex(key) : -1;
    return index >= 0 ? selection->GetItem(index) : nullptr;
}

/// The whole number that an item's text is; 0 without an item and for any other text.
int numberOf(const values::SelectionItem* item)
{
    return item != nullptr ? item->GetName().toInt() : 0;
}

QString coordinateOf(const values::SelectionItem* item)
{
    return item != nullptr ? coordinateText(item->GetName()) : QString(nothingToShow);
}

/// The selected cells, row by row, for pasting into a spreadsheet.
QString selectedText(const QTableWidget& table)
{
    QModelIndexList cells = table.selectionModel()->selectedIndexes();
    std::sort(cells.begin(), cells.end());
    QString text;
    int row = -1;
    for (const QModelIndex& cell : cells) {
        if (row >= 0)
            text += cell.row() == row ? QLatin1Char('\t') : QLatin1Char('\n');
        row = cell.row();
        // A tab or a line break inside a text would begin another cell.
        text += cell.data().toString().simplified();
    }
    return text;
}

} // namespace

DFDetailedResults::DFDetailedResults(const QString& resultPrefix)
    : m_resultPrefix(resultPrefix)
{
    setupUi(this);
    setObjectName(QStringLiteral("DetailedResults"));
    // A window beside the main window: it must not keep the application running when that one is closed.
    setAttribute(Qt::WA_QuitOnClose, false);
    m_table = m_pTable;
    AddCopyAction();

    values::LinkByPath(m_frequency, m_resultPrefix + frequencyName);
    values::LinkByPath(m_selectedDf, m_resultPrefix + selectedDfName);
    values::LinkByPath(m_azimuth, m_resultPrefix + azimuthName);
    values::LinkByPath(m_quality, m_resultPrefix + qualityName);
    values::LinkByPath(m_level, m_resultPrefix + levelName);
    values::LinkByPath(m_resultTime, m_resultPrefix + resultTimeName);
    values::LinkByPath(m_errors, m_resultPrefix + errorsName);

    Refresh();
    m_table->resizeColumnsToContents();
    m_table->setColumnWidth(NameColumn, nameColumnWidth);
}

void DFDetailedResults::AddCopyAction()
{
    auto* const copy = new QAction(tr("Copy"), m_table);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, m_table, [table = m_pTable] {
        if (table->selectionModel()->hasSelection())
            QGuiApplication::clipboard()->setText(selectedText(*table));
    });
    m_table->addAction(copy);
    m_table->setContextMenuPolicy(Qt::ActionsContextMenu);
}

void DFDetailedResults::Refresh()
{
    if (m_table == nullptr)
        return;
    m_table->setRowCount(m_selectedDf ? m_selectedDf->GetItemCount() : 0);
    Fill();
}

void DFDetailedResults::Update(Observable* source, TChangeCode code)
{
    if (code != ValueChanged || !isBoundTo(m_resultTime, source))
        return;
    runEntry("DFDetailedResults::Update", sourceFile, __LINE__, [this] { Fill(); });
}

/// The result value with that name, null when there is none of kind @p T.
template <typename T>
T* DFDetailedResults::FindResult(QLatin1String name) const
{
    return findValue<T>(m_resultPrefix + name);
}

void DFDetailedResults::Fill()
{
    const QString time = m_resultTime ? m_resultTime->GetValue() : QString();
    ShowTime(time);
    ShowLocation();
    ShowLocateType(!time.isEmpty());
    FillTable();
}

void DFDetailedResults::ShowTime(const QString& time)
{
    m_pDateTimeLabel->setText(time.isEmpty()
                                  ? QString(nothingToShow)
                                  : Brix::DateTime::fromString(time).toString(Brix::DateTime::Local_TimeZone));
}

/// A location that has become unknown stays: it is the latest one there was.
void DFDetailedResults::ShowLocation()
{
    const auto* const longitude = FindResult<values::DoubleValue>(averageLongitudeName);
    const auto* const latitude = FindResult<values::DoubleValue>(averageLatitudeName);
    const auto isValid = [](const values::DoubleValue* value) {
        return value != nullptr && value->GetState() == OrdinaryState;
    };
    if (isValid(longitude) && isValid(latitude)) {
        m_pCoordinateLabel->setText(coordinateText(longitude->GetValue()) + QLatin1Char(' ') +
                                    coordinateText(latitude->GetValue()));
    }
}

void DFDetailedResults::ShowLocateType(bool hasTime)
{
    // The status values have a folder of the same form as the results; only that word is another.
    QString statusPrefix = m_resultPrefix;
    statusPrefix.replace(QLatin1String("Result"), QLatin1String("Status"));
    const auto* const fromHistory = findValue<values::BoolValue>(statusPrefix + QLatin1String("LocateHRIRunning"));
    if (hasTime && fromHistory != nullptr)
        m_pLocateTypeLabel->setText(fromHistory->GetValue() ? tr("History") : tr("Online"));
    else
        m_pLocateTypeLabel->setText(nothingToShow);
}

void DFDetailedResults::FillTable()
{
    if (m_table == nullptr || !m_selectedDf)
        return;
    const Common common = ReadCommon();
    // The list may have grown since Refresh(): the table does not take cells of rows that it does not have.
    const int rows = std::min(m_selectedDf->GetItemCount(), m_table->rowCount());
    for (int row = 0; row < rows; ++row)
        WriteRow(row, TextsOf(*m_selectedDf->GetItem(row), common));
}

DFDetailedResults::Common DFDetailedResults::ReadCommon() const
{
    const auto* const threshold = FindResult<values::IntValue>(qualityThresholdName);
    return {m_frequency ? Brix::toDoubleEx(m_frequency->GetValue()) : 0.0,
            threshold != nullptr ? threshold->GetValue() : 0, FindResult<values::ValueSelection>(longitudeName),
            FindResult<values::ValueSelection>(latitudeName)};
}

DFDetailedResults::RowTexts DFDetailedResults::TextsOf(const values::SelectionItem& station, const Common& common) const
{
    const int key = station.GetKey();
    const values::SelectionItem* const quality = itemOf(m_quality.get(), key);
    const bool goodEnough = numberOf(quality) >= common.qualityThreshold;
    const bool hasFrequency = common.frequency != 0.0;
    const int error = numberOf(itemOf(m_errors.get(), key));

    RowTexts texts;
    texts.fill(nothingToShow);
    texts[NameColumn] = station.GetName();
    // A level was measured whenever there is a frequency, however bad the bearing.
    if (hasFrequency) {
        texts[FrequencyColumn] = frequencyText(common.frequency);
        texts[LevelColumn] = textWithUnit(itemOf(m_level.get(), key), QStringLiteral(" dBµV"));
    }
    if (goodEnough) {
        texts[AzimuthColumn] = textWithUnit(itemOf(m_azimuth.get(), key), QStringLiteral("°"));
        texts[QualityColumn] = textWithUnit(quality, QStringLiteral("%"));
    }
    texts[LongitudeColumn] = coordinateOf(itemOf(common.longitude, key));
    texts[LatitudeColumn] = coordinateOf(itemOf(common.latitude, key));
    if (error != 0)
        texts[ErrorColumn] = errorText(error);
    return texts;
}

/// Cells whose text stays are not written: most texts of a result are those of the one before.
void DFDetailedResults::WriteRow(int row, const RowTexts& texts)
{
    for (int column = 0; column < ColumnCount; ++column) {
        const QString& text = texts[static_cast<std::size_t>(column)];
        QTableWidgetItem* const cell = m_table->item(row, column);
        if (cell != nullptr && cell->text() == text)
            continue;
        if (cell != nullptr)
            cell->setText(text);
        else
            m_table->setItem(row, column, new QTableWidgetItem(text));
        WidenColumn(row, column);
    }
}

/// A number must be seen whole: 12.5 is not 312.5. Names may be long, their column keeps its width.
void DFDetailedResults::WidenColumn(int row, int column)
{
    constexpr int gridLine = 1;
    const int needed = m_table->sizeHintForIndex(m_table->model()->index(row, column)).width() + gridLine;
    if (column != NameColumn && needed > m_table->columnWidth(column))
        m_table->setColumnWidth(column, needed);
}

} // namespace VelmarGui
