#pragma once

#include "drivers/recordingwriter.h"

#include <QObject>

#include <optional>

namespace workbench {

class DfDriver;

/// Records all results of a driver in one file, which is there when all of them are. GUI thread only.
class Recorder : public QObject
{
    Q_OBJECT
public:
    /// Why no recording can be written to @p file, as a full sentence; nothing when it can. Leaves no file behind.
    [[nodiscard]] static std::optional<QString> obstacle(const QString& file);

    Recorder(const DfDriver& driver, const QString& file, QObject* parent = nullptr);

    /// Writes the file, as a whole or, after a failure, not at all. The reason as a full sentence when there is no
    /// file. To be called once.
    [[nodiscard]] std::optional<QString> finish();

private:
    void append(const DfResult& result);

    RecordingWriter m_writer;
    bool m_isEmpty = true;
    std::optional<QString> m_failure; // the first one
};

} // namespace workbench
