#pragma once

#include "drivers/dfresult.h"
#include "drivers/dfsettings.h"
#include "drivers/historyfix.h"

#include <QObject>
#include <QString>

#include <memory>

namespace workbench {

class DfSource;
class LocateHistory;

/// The driver-side partner of the component: creates the values the component shows, obeys its commands and writes the
/// results of a DfSource.
///
/// Acts on ChangeContent of "Values/Commands": 9 starts a single measurement, 10 and 11 start and stop cyclic
/// measuring; all other commands are left to others. It never selects another command. While a measurement is under way
/// 9 changes nothing and 10 goes on with it; 11 leaves a single measurement alone.
///
/// All values are written on the GUI thread, in one fixed order per result; when results come faster than once a frame
/// the latest wins. The next cyclic measurement starts when the last result is written, so that none is lost of a
/// source that answers as soon as it can. A failure of the source ends cyclic measuring. Values that vanish, or whose
/// place is taken by a value of another kind, are left out. Observers may delete the driver at any time.
///
/// **Fix.** With activity "DF and locate", as it is when a measurement is complete, a position is computed with the
/// quality threshold in use: with locate type "Online" from the bearings of the result itself (drivers/onlinefix.h),
/// with "History" from those that the history finds. The history takes its time: until it answers, the measurement is
/// still under way, and 11 drops it. Without a fix the average position goes out of use; its content stays.
/// "Values/Status/LocateHRIRunning" tells which it is: true with "History", from the start of a measurement on.
///
/// **Remote service.** Its status text tells of the source's stations. A history is one more of them, "Stored results",
/// for every frequency and available while it is usable: that is how components learn whether locate type "History" can
/// be served.
///
/// **Settings.** The latest word counts: at first the Config values, then whichever comes last of
/// - a settings text set in "DFLOCATE/ToDriver", also when it is the same text as before. It speaks for all settings
///   that it names, and for both thresholds;
/// - a change of a Config value, for this setting. A threshold is in use while its value is in the ordinary state; a
///   change of its content in another state says nothing;
/// - a selection in one of the device lists "DeviceDfBandwidth", "DeviceDfAveraging" and "DeviceDfMode", for this
///   setting.
///
/// So a component with a settings panel, which turns every change into a text, and one without are served alike. Each
/// word is corrected to what the device can do (DfDevice::corrected()) and counts from then on, at once. From the event
/// loop the driver answers: a settings text, with all settings as they are in force, in "DF_Settings" (announced also
/// when it is the same as before: whoever sent another one learns what holds), and in the device lists what is selected
/// now. A text that is no settings text is refused, and "DF_Settings" stays as it is.
class DfDriver : public QObject
{
    Q_OBJECT
public:
    /// Creates all driver values below @p handlerRoot, the parameter values below @p parameterRoot (both end in "/"),
    /// the global values and the status texts. A value that is there already is used and set up anew. @p source must
    /// not be null.
    DfDriver(std::unique_ptr<DfSource> source, const QString& handlerRoot, const QString& parameterRoot,
             QObject* parent = nullptr);
    /// Deletes the values it created; a "DfDeviceReady" of somebody else becomes false.
    ~DfDriver() override;

    /// The one it was made with.
    [[nodiscard]] DfSource& source() const;
    [[nodiscard]] bool isRunning() const; ///< a measurement is under way or cyclic measuring is on
    [[nodiscard]] bool isCyclic() const;  ///< measures again and again until it is stopped

    /// What the next measurement is made with.
    [[nodiscard]] const DfSettings& settings() const;
    /// What the result published last was measured with; nothing before the first.
    [[nodiscard]] const std::optional<DfRequest>& publishedRequest() const;

    /// The fix of the result published last; nothing before the first.
    [[nodiscard]] const std::optional<LocateResult>& publishedFix() const;
    /// What the history gave for the result published last; nothing when its fix is not from there.
    [[nodiscard]] const std::optional<HistoryFix>& publishedHistory() const;

    /// Asks @p history, which the driver does not own, for fixes with locate type "History"; null: there is none, as at
    /// first. What is asked of another one meanwhile is dropped, and this one is asked.
    void setHistory(LocateHistory* history);

    /// Position in the source's list of devices.
    [[nodiscard]] int currentDevice() const;
    /// Goes on with another device of the source: corrects the settings to what it can do, publishes its lists (with
    /// ChangeItems only) and announces "DfDeviceReady" again. @p index lies within the source's list.
    void selectDevice(int index);

signals:
    /// A measurement is complete. Its values are written after this, unless it is dropped while the history looks for a
    /// fix.
    void measured(const workbench::DfResult& result);
    /// All values of @p result are written.
    void resultPublished(const workbench::DfResult& result);
    /// The measurement was given up, and cyclic measuring with it; @p reason is a sentence for people.
    void measurementFailed(const QString& reason);
    /// The text in "DFLOCATE/ToDriver" is refused; @p reason is a sentence for people. It is traced as well.
    void settingsRefused(const QString& reason);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace workbench
