#include "dfdetailedresults.h"

#include "columnfitter.h"
#include "entryguard.h"
#include "errortext.h"
#include "hostcodes.h"
#include "resultcell.h"
#include "resultcells.h"
#include "resultformats.h"
#include "resultnames.h"
#include "valuetools.h"

#include "ztbase/brix/datetime.h"
#include "ztbase/brix/numbers.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QKeySequence>
#include <QScopeGuard>
#include <QStyledItemDelegate>
#include <QTableWidget>

#include <algorithm>

namespace VelmarGui {

namespace {

constexpr int nameColumnWidth = 80;

// Not a literal QString: the host may keep traces for longer than this library is loaded.
const QLatin1String sourceFile("userinterface/guicomponents/dflocatecomponent/dfdetailedresults");

/// The status values have a folder of the same form as the results; only that word is another.
QString statusFolderOf(QString resultPrefix)
{
    return resultPrefix.replace(QLatin1String("Result"), QLatin1String("Status"));
}

/// The item of the station with @p key; null without a selection or such an item. It most often stands at the same
/// @p index as the station itself.
const values::SelectionItem* itemOf(const values::ValueSelection* selection, int key, int index)
{
    if (selection == nullptr)
        return nullptr;
    const values::SelectionItem* const item = selection->GetItem(index);
    if (item != nullptr && item->GetKey() == key)
        return item;
    const int otherIndex = selection->GetItemIndex(key);
    return otherIndex >= 0 ? selection->GetItem(otherIndex) : nullptr;
}

/// The whole number that an item's text is; 0 without an item and for any other text.
int numberOf(const values::SelectionItem* item)
{
    if (item == nullptr)
        return 0;
    const QString& text = item->GetName();
    // Percent and most error codes are a few digits, and those are read here: there are two of them in every row.
    constexpr int fewDigits = 3;
    int number = 0;
    for (const QChar character : text) {
        if (text.size() > fewDigits || character < QLatin1Char('0') || character > QLatin1Char('9'))
            return text.toInt();
        number = 10 * number + (character.unicode() - u'0');
    }
    return number;
}

/// Shows the beginning of a text that is longer than any result or name: laying it out would take its time at every
/// paint. The cell keeps all of it.
class BeginningDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    [[nodiscard]] QString displayText(const QVariant& value, const QLocale& locale) const override
    {
        constexpr int mostCharacters = 200;
        const QString text = QStyledItemDelegate::displayText(value, locale);
        return text.size() > mostCharacters ? text.left(mostCharacters) + QChar(0x2026) : text;
    }
};

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
    , m_fromHistoryPath(statusFolderOf(resultPrefix) + QLatin1String("LocateHRIRunning"))
{
    setupUi(this);
    setObjectName(QStringLiteral("DetailedResults"));
    // A window beside the main window: it must not keep the application running when that one is closed.
    setAttribute(Qt::WA_QuitOnClose, false);
    m_table = m_pTable;
    m_fitter = new ColumnFitter(*m_pTable);
    m_cells = new ResultCells(*m_pTable);
    m_table->setItemDelegate(new BeginningDelegate(m_table));
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
    // The table is filled anew for other reasons, too.
    if (m_shownTime == time)
        return;
    m_pDateTimeLabel->setText(time.isEmpty()
                                  ? QString(nothingToShow)
                                  : Brix::DateTime::fromString(time).toString(Brix::DateTime::Local_TimeZone));
    m_shownTime = time;
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
    const auto* const fromHistory = findValue<values::BoolValue>(m_fromHistoryPath);
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
    CellRange changed;
    // Also of what was done before a translator has thrown.
    const auto tell = qScopeGuard([&] {
        if (m_table != nullptr)
            m_cells->Tell(changed);
    });
    for (int row = 0; row < rows; ++row)
        FillRow(row, common, changed);
}

DFDetailedResults::Common DFDetailedResults::ReadCommon()
{
    const auto* const threshold = FindResult<values::IntValue>(qualityThresholdName);
    return {nothingToShow, ShownFrequency(), threshold != nullptr ? threshold->GetValue() : 0,
            FindResult<values::ValueSelection>(longitudeName), FindResult<values::ValueSelection>(latitudeName)};
}

/// Empty when it is unknown.
QString DFDetailedResults::ShownFrequency()
{
    const QString written = m_frequency ? m_frequency->GetValue() : QString();
    if (written != m_writtenFrequency) {
        const double frequency = Brix::toDoubleEx(written);
        m_shownFrequency = frequency != 0.0 ? frequencyText(frequency) : QString();
        m_writtenFrequency = written;
    }
    return m_shownFrequency;
}

/// Cells whose text stays are not touched: most texts of a result are those of the one before. Nobody is told of the
/// others, which @p changed takes.
void DFDetailedResults::FillRow(int row, const Common& common, CellRange& changed)
{
    const values::SelectionItem* const station = m_selectedDf->GetItem(row);
    if (station == nullptr)
        return;
    const int key = station->GetKey();
    const auto item = [row, key](const values::ValueSelection* selection) { return itemOf(selection, key, row); };
    const values::SelectionItem* const quality = item(m_quality.get());
    const bool goodEnough = numberOf(quality) >= common.qualityThreshold;
    // A level was measured whenever there is a frequency, however bad the bearing.
    const bool hasFrequency = !common.frequency.isEmpty();

    const auto replace = [&](Column column, auto replaceTextOf) {
        ResultCell* const cell = m_cells->At(row, column);
        if (cell == nullptr || !replaceTextOf(*cell))
            return;
        changed.Add(row, column);
        if (column != NameColumn) // names may be long, their column keeps its width
            m_fitter->Fit(row, column, cell->Text());
    };
    const auto show = [&](Column column, const QString& text) {
        replace(column, [&](ResultCell& cell) { return cell.Replace(text); });
    };
    const auto showWithUnit = [&](Column column, const values::SelectionItem* shown, const QString& unit) {
        replace(column, [&](ResultCell& cell) {
            return shown != nullptr ? cell.Replace(shown->GetName(), unit) : cell.Replace(common.nothing);
        });
    };
    const auto showCoordinate = [&](Column column, const values::SelectionItem* shown) {
        replace(column, [&](ResultCell& cell) {
            return shown != nullptr ? cell.ReplaceByCoordinate(shown->GetName()) : cell.Replace(common.nothing);
        });
    };
    show(NameColumn, station->GetName());
    show(FrequencyColumn, hasFrequency ? common.frequency : common.nothing);
    showWithUnit(AzimuthColumn, goodEnough ? item(m_azimuth.get()) : nullptr, QStringLiteral("°"));
    showWithUnit(LevelColumn, hasFrequency ? item(m_level.get()) : nullptr, QStringLiteral(" dBµV"));
    showWithUnit(QualityColumn, goodEnough ? quality : nullptr, QStringLiteral("%"));
    showCoordinate(LongitudeColumn, item(common.longitude));
    showCoordinate(LatitudeColumn, item(common.latitude));
    if (const int error = numberOf(item(m_errors.get())); error != 0)
        show(ErrorColumn, errorText(error));
    else
        show(ErrorColumn, common.nothing);
}

} // namespace VelmarGui
