#pragma once

#include "jobxml/bandwidth.h"
#include "jobxml/df_settingsdetail.h"
#include "jobxml/jobxmlglobal.h"
#include "reportgenerator/irgobject.h"

#include <QStringList>

#include <optional>

namespace JobXml {

/// The DF and locate settings of a job, a parameter set or a driver: a value type in which each field may be missing.
///
/// The XML text is one element "DF_Settings" without prolog, attributes or blanks between elements. Its children, in
/// this order and each only when set, are "Bandwidth", "Averaging", "DFMode", "Detail" (with "QualityThreshold" and
/// "LevelThreshold"), "FrequencyOffset", "Workflow", "LocateType", "Activity" and "ActivityTrigger". Numbers are
/// written in fixed notation, never with an exponent, in the fewest digits that read back exactly; choices are written
/// by name.
///
/// Each choice is an enumeration whose numbers are the positions in the list of its names. Its member "Unset", also the
/// number -1, says that nothing was chosen. Setting it, or a number outside the list, takes the field away.
///
/// The number setters raise ReportException when the number is not finite; the field stays as it was.
class JOBXML_EXPORT DF_Settings final : public REPORTGENERATOR::IRGObject
{
public:
    enum TDFMode : int
    {
        DFModeUnset = -1,
        DFModeNorm,
        DFModeCont,
        DFModeGate,
    };
    /// When the driver takes bearings.
    enum TWorkflow : int
    {
        WorkflowUnset = -1,
        WorkflowOnRequest,
        WorkflowContinuous,
        WorkflowOnTrigger,
    };
    /// Which service computes a position from the bearings.
    enum TLocateType : int
    {
        LocateTypeUnset = -1,
        LocateTypeNone,
        LocateTypeOnline,
        LocateTypeHistory,
    };
    /// What a job does with a signal.
    enum TActivity : int
    {
        ActivityUnset = -1,
        ActivityNone,
        ActivityDF,
        ActivityDFAndLocate,
    };
    /// What starts the activity.
    enum TActivityTrigger : int
    {
        ActivityTriggerUnset = -1,
        ActivityTriggerManual,
        ActivityTriggerSignal,
        ActivityTriggerSchedule,
    };

    /// The longest text that is read, in UTF-16 units: a hundred times what settings need, and short enough that the
    /// worst of texts holds up the GUI thread for a fraction of a second only.
    static constexpr int MaxXmlLength = 65536;
    /// The deepest nesting of elements that is read, the root included.
    static constexpr int MaxXmlDepth = 64;

    [[nodiscard]] QString GetXmlString() const override;

    /// Reads the elements above in any order, with any prolog, comments, attributes, blanks around the contents, and
    /// elements of other names, which are skipped; such an addition by others does no harm and is not kept. A name that
    /// is not in its list leaves the choice "Unset" although the field counts as set: somebody chose, but nothing known
    /// here. Such a field is not written.
    ///
    /// Refused as a whole, with the result false and an empty object: a text that is not well-formed XML to its end,
    /// has another root or a document type declaration, is longer than MaxXmlLength or nested deeper than MaxXmlDepth;
    /// one of the elements above given twice, for nobody could tell which was meant; one of the single fields with an
    /// element inside; a number that is empty, has an exponent, is not finite or does not fit its type.
    bool SetXmlString(const QString& xml) override;

    /// A bandwidth without a value takes the field away.
    void SetBandwidth(const Bandwidth& bandwidth);
    [[nodiscard]] const Bandwidth& GetBandwidth() const;
    [[nodiscard]] bool IsBandwidthSet() const;

    /// @p milliseconds is the averaging time; 0 is no averaging.
    void SetAveraging(double milliseconds);
    /// In ms; 0 when not set.
    [[nodiscard]] double GetAveraging() const;
    [[nodiscard]] bool IsAveragingSet() const;

    void SetDFMode(TDFMode mode);
    [[nodiscard]] TDFMode GetDFMode() const;
    [[nodiscard]] bool IsDFModeSet() const;

    /// The thresholds; a reference into this object, which is written when it has data.
    [[nodiscard]] DF_SettingsDetail& GetDetail();
    [[nodiscard]] const DF_SettingsDetail& GetDetail() const;

    /// @p hertz is where bearings are taken, relative to the receiver's frequency.
    void SetFrequencyOffset(double hertz);
    /// In Hz; 0 when not set.
    [[nodiscard]] double GetFrequencyOffset() const;
    [[nodiscard]] bool IsFrequencyOffsetSet() const;

    void SetWorkflow(TWorkflow workflow);
    [[nodiscard]] TWorkflow GetWorkflow() const;
    [[nodiscard]] bool IsWorkflowSet() const;

    void SetLocateType(TLocateType type);
    [[nodiscard]] TLocateType GetLocateType() const;
    [[nodiscard]] bool IsLocateTypeSet() const;

    /// The one choice without conversions to and from names: callers carry it by number, which is the key of the item
    /// in a selection filled with GetActivitys().
    void SetActivity(TActivity activity);
    [[nodiscard]] TActivity GetActivity() const;
    [[nodiscard]] bool IsActivitySet() const;

    void SetActivityTrigger(TActivityTrigger trigger);
    [[nodiscard]] TActivityTrigger GetActivityTrigger() const;
    [[nodiscard]] bool IsActivityTriggerSet() const;

    /// @name Names of the choices
    /// The names are those in the XML text, untranslated. The name of "Unset" is empty; a name that is not in the list
    /// is "Unset". Lower and upper case differ.
    /// @{

    /// "Norm", "Cont" or "Gate".
    static QString DFModeToName(TDFMode mode);
    /// Only the first four characters count: "Normal" is "Norm".
    static TDFMode NameToDFMode(const QString& name);

    static QString WorkflowToName(TWorkflow workflow);
    static TWorkflow NameToWorkflow(const QString& name);
    static QString LocateTypeToName(TLocateType type);
    static TLocateType NameToLocateType(const QString& name);
    static QString ActivityTriggerToName(TActivityTrigger trigger);
    static TActivityTrigger NameToActivityTrigger(const QString& name);

    /// The names in the order of their numbers, which start at 0.
    static QStringList GetWorkflows();
    static QStringList GetLocateTypes();
    static QStringList GetActivitys();
    static QStringList GetActivityTriggers();
    /// @}

private:
    void ReadChildren(SettingsReader& reader);

    Bandwidth m_bandwidth;
    std::optional<double> m_averaging;
    std::optional<TDFMode> m_dfMode;
    DF_SettingsDetail m_detail;
    std::optional<double> m_frequencyOffset;
    std::optional<TWorkflow> m_workflow;
    std::optional<TLocateType> m_locateType;
    std::optional<TActivity> m_activity;
    std::optional<TActivityTrigger> m_activityTrigger;
};

} // namespace JobXml
