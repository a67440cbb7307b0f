#pragma once

#include "drivers/dfresult.h"

#include <QObject>
#include <QString>

#include <memory>

namespace workbench {

class DfSource;

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

    [[nodiscard]] DfSource& source() const;
    [[nodiscard]] bool isRunning() const; ///< a measurement is under way or cyclic measuring is on
    [[nodiscard]] bool isCyclic() const;

signals:
    /// All values of @p result are written.
    void resultPublished(const workbench::DfResult& result);
    /// The measurement was given up, and cyclic measuring with it; @p reason is a sentence for people.
    void measurementFailed(const QString& reason);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace workbench
