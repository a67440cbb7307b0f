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
/// measuring; all other commands are left to others. It never selects another command. All values are written on the
/// GUI thread, in one fixed order per result; when results come faster than once a frame the latest wins.
class DfDriver : public QObject
{
    Q_OBJECT
public:
    /// Creates all driver values below @p handlerRoot (ends in "/"), the parameter values below @p parameterRoot (ends
    /// in
    /// "/"), the global values and the status texts. @p source must not be null.
    DfDriver(std::unique_ptr<DfSource> source, const QString& handlerRoot, const QString& parameterRoot,
             QObject* parent = nullptr);
    /// Deletes the values it created.
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
