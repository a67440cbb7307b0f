#include "locatestatushandler.h"

#include "clicklabel.h"
#include "devicecontrol/guicentral.h"
#include "entryguard.h"
#include "hostcodes.h"
#include "reportpictures.h"
#include "valuetools.h"
#include "whilealive.h"

#include <QMessageBox>
#include <QPixmap>

namespace VelmarGui {

namespace {

// The blank at the end is part of the name under which hosts filter these traces.
const QLatin1String sourceFile("userinterface/guicomponents/dflocatecomponent/locatestatushandler ");

const QLatin1String onIcon(":/icons/On");
const QLatin1String offIcon(":/icons/Off");

constexpr int lampSize = 20; // pixels

void traceMissing(const char* name, unsigned short line)
{
    traceIfEnabled(QStringLiteral("Missing DF Value %1").arg(QLatin1String(name)), sourceFile, line);
}

QPixmap lampPixmap(QLatin1String icon)
{
    return QPixmap(icon).scaled(lampSize, lampSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

bool hasText(const values::ValuePtr<values::StringValue>& value)
{
    return value && !value->GetValue().isEmpty();
}

bool reads(const values::ValuePtr<values::BoolValue>& value)
{
    return value && value->GetValue();
}

void set(values::ValuePtr<values::BoolValue>& value, bool content, IObserver* originator)
{
    if (value)
        value->SetValue(content, originator);
}

} // namespace

LocateStatusHandler::LocateStatusHandler(QWidget* parent, GuiComponentCommon* common, const QString& componentName,
                                         const QString& pathPrefix)
    : GuiComponentTools(common, componentName)
    , m_pLamp(new ClickLabel(QStringLiteral("Led"), parent))
    , m_lampOn(lampPixmap(onIcon))
    , m_lampOff(lampPixmap(offIcon))
    , m_pathPrefix(pathPrefix)
{
    connect(m_pLamp, SIGNAL(signal_open()), this, SLOT(slot_open()));
    ShowLamp(false);
    m_pLamp->setToolTip(tr("Locate states"));
}

LocateStatusHandler::~LocateStatusHandler() = default;

void LocateStatusHandler::SetUpValues()
{
    if (!values::LinkByPath(m_locateStatus, m_pathPrefix + QStringLiteral("Values/Status/LocateStatus")))
        traceMissing("LocateStatus", __LINE__);
    if (!values::LinkByPath(m_locateHriStatus, QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus")))
        traceMissing("LocateHRIStatus", __LINE__);
    LinkFrequency();
    CreateIndicator(m_dfConnected, QLatin1String("LocateDFConnectedIndicator"));
    CreateIndicator(m_hriConnected, QLatin1String("LocateHRIConnectedIndicator"));
    CreateIndicator(m_dfUsable, QLatin1String("LocateDFUsableIndicator"));
    CreateIndicator(m_hriUsable, QLatin1String("LocateHRIUsableIndicator"));
    Evaluate();
}

QWidget* LocateStatusHandler::GetLamp() const
{
    return m_pLamp;
}

void LocateStatusHandler::Update(Observable* source, TChangeCode code)
{
    if (code != ValueChanged)
        return;
    if (isBoundTo(m_locateStatus, source) || isBoundTo(m_locateHriStatus, source) || isBoundTo(m_frequency, source))
        runEntry("LocateStatusHandler::Update", sourceFile, __LINE__, [this] { Evaluate(); });
}

void LocateStatusHandler::LinkFrequency()
{
    values::ValueBase* const global = GetGlobalValue(QStringLiteral("Frequency"));
    // Through its path, so that a value that is not in the tree counts as missing.
    if (!values::LinkByPath(m_frequency, global != nullptr ? global->GetPathName() : QString()))
        traceMissing("Frequency", __LINE__);
}

void LocateStatusHandler::CreateIndicator(BoolPtr& indicator, QLatin1String name)
{
    values::LinkOrCreate(indicator, GetComponentPath() + name);
    // The name is handed over as a copy: the host keeps it for longer than this library may be loaded.
    AddGlobalValue(indicator.get(), name, nullptr, nullptr);
}

void LocateStatusHandler::Evaluate()
{
    // An observer of an indicator may delete the toolbar, and this with it.
    whileAlive(
        this, [this] { set(m_dfConnected, hasText(m_locateStatus), this); },
        [this] { set(m_hriConnected, hasText(m_locateHriStatus), this); }, [this] { EvaluateUsability(); });
}

void LocateStatusHandler::EvaluateUsability()
{
    if (!m_locateStatus || !m_locateHriStatus)
        return;
    applyStatusText(m_dfStatus, m_locateStatus->GetValue());
    if (applyStatusText(m_hriStatus, m_locateHriStatus->GetValue()))
        m_hriRanges = rangesOf(m_hriStatus);
    // An observer of one indicator may change a status text and so evaluate anew: each indicator is computed when its
    // turn has come, and what is shown and told at the end is read back.
    whileAlive(
        this, [this] { set(m_hriUsable, CanLocateHri(), this); },
        [this] { set(m_dfUsable, m_dfStatus.anyAvailable, this); },
        [this] {
            ShowLamp(IsAnyUsable());
            emit si_locateUsable(reads(m_hriUsable), reads(m_dfUsable));
        });
}

/// Most evaluations leave the lamp as it is, and a picture that is set is drawn anew.
void LocateStatusHandler::ShowLamp(bool on)
{
    const QPixmap& picture = on ? m_lampOn : m_lampOff;
    if (m_pLamp && m_pLamp->pixmap(Qt::ReturnByValue).cacheKey() != picture.cacheKey())
        m_pLamp->setPixmap(picture);
}

bool LocateStatusHandler::CanLocateHri() const
{
    return m_hriStatus.anyAvailable && m_frequency && m_hriRanges.Hold(m_frequency->GetValue());
}

bool LocateStatusHandler::IsAnyUsable() const
{
    return reads(m_hriUsable) || reads(m_dfUsable);
}

/// The box is a child of the main window: it goes with the window when that is deleted while the box is open.
void LocateStatusHandler::TellNotYetConnected()
{
    const QPointer<QMessageBox> box(new QMessageBox(QMessageBox::Information, tr("Locate states"),
                                                    tr("Not yet connected"), QMessageBox::Ok,
                                                    GuiCentral::Instance()->GetMainWidget()));
    box->exec();
    delete box;
}

void LocateStatusHandler::slot_open()
{
    runEntry("LocateStatusHandler::slot_open", sourceFile, __LINE__, [this] {
        if (!m_frequency) {
            TellNotYetConnected();
            return;
        }
        QMessageBox box;
        box.setWindowTitle(tr("Locate states"));
        ReportPictures::limit(box);
        box.setText(buildReport(m_dfStatus, m_hriStatus, m_frequency->GetValue()));
        ReportPictures::shorten(box);
        if (m_hriUsable && m_dfUsable)
            box.setIconPixmap(QPixmap(IsAnyUsable() ? onIcon : offIcon));
        // This object may be gone when the box is closed: nothing may follow.
        box.exec();
    });
}

} // namespace VelmarGui
