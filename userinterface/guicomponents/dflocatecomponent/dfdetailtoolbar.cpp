#include "dfdetailtoolbar.h"

#include "dfdetailedresults.h"
#include "entryguard.h"
#include "errortext.h"
#include "fittedtext.h"
#include "hostcodes.h"
#include "icons/magnifier.xpm"
#include "resultformats.h"
#include "resultnames.h"
#include "resulttime.h"
#include "valuetools.h"

#include "ztbase/brix/numbers.h"

#include <QIcon>
#include <QLabel>
#include <QPalette>
#include <QPixmap>
#include <QPointer>
#include <QToolBar>
#include <QToolButton>

#include <cmath>

namespace VelmarGui {

namespace {

constexpr int stationComboMaximumWidth = 120;
constexpr int numberLabelWidth = 36;
constexpr int timeLabelWidth = 60;

// Not a literal QString: the host may keep traces for longer than this library is loaded.
const QLatin1String sourceFile("userinterface/guicomponents/dflocatecomponent/dfdetailtoolbar");

/// The text of the current item followed directly by @p unit; "---" without selection or item.
QString currentTextWithUnit(const values::ValueSelection* selection, const QString& unit)
{
    return textWithUnit(selection != nullptr ? selection->GetCurrentItem() : nullptr, unit);
}

/// The quality in whole percent; 0 when there is none that can be read.
double wholePercent(const values::ValueSelection& quality)
{
    bool readable = false;
    const double percent = Brix::toDoubleEx(currentItemText(quality), &readable);
    return readable ? std::trunc(percent) : 0.0;
}

} // namespace

DFDetailToolbar::DFDetailToolbar(QToolBar* toolbar, const QString& toolbarPath)
    : QObject(toolbar)
    , m_pToolBar(toolbar)
    , m_resultPath(toolbarPath + QLatin1String("Values/Result/"))
{
    m_pToolBar->addSeparator();
    m_pLeadingLabel = new QLabel(m_pToolBar);
    m_pToolBar->addWidget(m_pLeadingLabel);

    Link(m_selectedDf, selectedDfName);
    AddStationCombo();

    m_pBearingLabel =
        AddResultLabel(QStringLiteral("average bearing"), tr("result azimuth"), numberLabelWidth, Qt::AlignRight);
    Link(m_azimuth, azimuthName);

    m_pQualityLabel =
        AddResultLabel(QStringLiteral("average quality"), tr("result quality"), numberLabelWidth, Qt::AlignRight);
    Link(m_quality, qualityName);
    Link(m_latitude, latitudeName);
    Link(m_longitude, longitudeName);

    m_pTimeLabel = AddResultLabel(QStringLiteral("LocationFindingTime"),
                                  tr("time of location finding resp. error text"), timeLabelWidth, Qt::AlignHCenter);
    if (Link(m_resultTime, resultTimeName))
        UpdateTime();

    AddDetailedResultsButton();

    Link(m_qualityThreshold, qualityThresholdName);
    UpdateLabels();
    Link(m_errors, errorsName);
    Link(m_frequency, frequencyName);
}

DFDetailToolbar::~DFDetailToolbar()
{
    delete m_pWindow;
}

template <typename T>
bool DFDetailToolbar::Link(values::ValueObservingPtr<T>& pointer, QLatin1String name)
{
    return values::LinkByPath(pointer, m_resultPath + name);
}

/// True when the pointer was unbound and is bound now.
template <typename T>
bool DFDetailToolbar::LinkMissing(values::ValueObservingPtr<T>& pointer, QLatin1String name)
{
    return !pointer && Link(pointer, name);
}

void DFDetailToolbar::AddStationCombo()
{
    m_pStationCombo = new FittedComboBox(m_pToolBar);
    m_pStationCombo->setObjectName(QStringLiteral("direction finder name"));
    m_pStationCombo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_pStationCombo->setMaximumWidth(stationComboMaximumWidth);
    m_pStationCombo->setToolTip(tr("direction finder name"));
    m_pStationCombo->SetValueSelection(m_selectedDf.get());
    m_pToolBar->addWidget(m_pStationCombo);
}

QLabel* DFDetailToolbar::AddResultLabel(const QString& objectName, const QString& toolTip, int width,
                                        Qt::Alignment horizontal)
{
    auto* const label = new FittedLabel(nothingToShow, m_pToolBar);
    label->setObjectName(objectName);
    label->setToolTip(toolTip);
    label->setFixedWidth(width);
    label->setAlignment(horizontal | Qt::AlignVCenter);
    m_pToolBar->addWidget(label);
    return label;
}

void DFDetailToolbar::AddDetailedResultsButton()
{
    m_pDetailedResultsButton = new QToolButton(m_pToolBar);
    m_pDetailedResultsButton->setIcon(QIcon(QPixmap(magnifier_xpm)));
    m_pDetailedResultsButton->setText(tr("Detailed results"));
    m_pDetailedResultsButton->setObjectName(QStringLiteral("DetailedResults"));
    m_pDetailedResultsButton->setToolTip(tr("Detailed results"));
    // A tool button in a toolbar paints no ground, and that of another role: without this nobody would see its colour.
    m_pDetailedResultsButton->setBackgroundRole(QPalette::Window);
    m_pDetailedResultsButton->setAutoFillBackground(true);
    connect(m_pDetailedResultsButton, SIGNAL(pressed()), this, SLOT(SlotDetailedResults()));
    m_savedButtonColour = m_pDetailedResultsButton->palette().color(QPalette::Window);
    ColourButton();
    m_pToolBar->addWidget(m_pDetailedResultsButton);
}

void DFDetailToolbar::Update(Observable* source, TChangeCode code)
{
    runEntry("DFDetailToolbar::Update", sourceFile, __LINE__, [this, source, code] {
        if (code == ItemsChanged) {
            if (isBoundTo(m_selectedDf, source))
                ShowSelectedStation(StationList::Changed);
        } else if (code == ValueChanged) {
            HandleContentChange(source);
        }
    });
}

void DFDetailToolbar::HandleContentChange(const Observable* source)
{
    if (isBoundTo(m_selectedDf, source))
        ShowSelectedStation(StationList::Unchanged);
    else if (isBoundTo(m_resultTime, source))
        ShowNewResult();
    else if (isBoundTo(m_quality, source))
        UpdateLabels();
    else if (isBoundTo(m_errors, source))
        UpdateError();
}

void DFDetailToolbar::ShowSelectedStation(StationList list)
{
    const QPointer<DFDetailToolbar> alive(this);
    CopySelectedKey();
    if (alive == nullptr)
        return;
    if (list == StationList::Changed && m_pWindow != nullptr)
        m_pWindow->Refresh();
    UpdateLabels();
    UpdateError();
}

void DFDetailToolbar::ShowNewResult()
{
    UpdateTime();
    ColourButton();
    emit LocateResultArrived(m_selectedDf.get(), m_azimuth.get(), m_quality.get(), m_pTimeLabel->text(),
                             m_longitude.get(), m_latitude.get());
}

/// Puts the selections beside "SelectedDF" to its current key. Whoever is told of that may choose another station,
/// delete values and delete the toolbar.
void DFDetailToolbar::CopySelectedKey()
{
    const QPointer<DFDetailToolbar> alive(this);
    const auto copyTo = [alive](auto selection, IObserver* originator) {
        DFDetailToolbar* const toolbar = alive;
        if (toolbar != nullptr && toolbar->m_selectedDf && toolbar->*selection)
            (toolbar->*selection)->Select(toolbar->m_selectedDf->GetCurrentKey(), originator);
    };
    copyTo(&DFDetailToolbar::m_azimuth, nullptr);
    copyTo(&DFDetailToolbar::m_quality, nullptr);
    // The error is shown by the caller, after the labels.
    copyTo(&DFDetailToolbar::m_errors, this);
}

void DFDetailToolbar::UpdateLabels()
{
    if (!m_quality || !m_qualityThreshold)
        return;
    const bool goodEnough = m_qualityThreshold->GetValue() <= wholePercent(*m_quality.get());
    m_pBearingLabel->setText(goodEnough ? currentTextWithUnit(m_azimuth.get(), QStringLiteral("°"))
                                        : QString(nothingToShow));
    m_pQualityLabel->setText(goodEnough ? currentTextWithUnit(m_quality.get(), QStringLiteral("%"))
                                        : QString(nothingToShow));
}

void DFDetailToolbar::UpdateTime()
{
    if (const std::optional<QString> time = localTimeOfDay(m_resultTime->GetValue()))
        m_pTimeLabel->setText(*time);
}

void DFDetailToolbar::UpdateError()
{
    if (!m_errors || !m_frequency)
        return;
    const QString code = currentItemText(*m_errors.get());
    if (!code.isEmpty())
        m_pTimeLabel->setText(errorText(code.toInt()));
}

/// Green when there is more than one station's result to look at.
void DFDetailToolbar::ColourButton()
{
    if (!m_selectedDf)
        return;
    const QColor colour = m_selectedDf->GetItemCount() < 2 ? m_savedButtonColour : QColor(Qt::green);
    QPalette palette = m_pDetailedResultsButton->palette();
    palette.setBrush(QPalette::Window, QBrush(colour));
    m_pDetailedResultsButton->setPalette(palette);
}

void DFDetailToolbar::SlotDetailedResults()
{
    runEntry("DFDetailToolbar::SlotDetailedResults", sourceFile, __LINE__, [this] {
        if (m_pWindow != nullptr) {
            m_pWindow->show();
            m_pWindow->activateWindow();
        } else {
            OpenWindow();
        }
    });
}

/// The driver may have created its result values after this toolbar was made: what was missing then is bound now.
void DFDetailToolbar::OpenWindow()
{
    LinkMissingValues();
    if (!m_selectedDf || !m_azimuth || !m_quality)
        return;
    m_pWindow = new DFDetailedResults(m_resultPath);
    m_pWindow->show();
}

void DFDetailToolbar::LinkMissingValues()
{
    if (LinkMissing(m_selectedDf, selectedDfName)) {
        m_pStationCombo->SetValueSelection(m_selectedDf.get());
        ColourButton();
    }
    bool newNumbers = LinkMissing(m_azimuth, azimuthName);
    newNumbers |= LinkMissing(m_quality, qualityName);
    newNumbers |= LinkMissing(m_qualityThreshold, qualityThresholdName);
    if (newNumbers)
        UpdateLabels();
    LinkMissing(m_latitude, latitudeName);
    LinkMissing(m_longitude, longitudeName);
    if (LinkMissing(m_resultTime, resultTimeName))
        UpdateTime();
    bool newErrors = LinkMissing(m_errors, errorsName);
    newErrors |= LinkMissing(m_frequency, frequencyName);
    if (newErrors)
        UpdateError();
}

} // namespace VelmarGui
