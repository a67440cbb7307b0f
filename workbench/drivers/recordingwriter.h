#pragma once

#include "drivers/dfresult.h"

#include <QSaveFile>

namespace workbench {

/// Writes results as a recording that loadRecording() reads (docs/recording-format.md).
///
/// Nothing is at the file's place before commit(), and an earlier file stays there until then. The format holds
/// bearings only: a station without one gets no line, and a result without any leaves a gap in the shot numbers.
/// Frequency, time of day, level and quality are not part of it.
class RecordingWriter
{
public:
    /// Makes ready to write; errorString() tells at once when the place cannot be written to.
    explicit RecordingWriter(const QString& file);

    /// Adds a result as the next shot, counted from 1. False, with nothing of it added and no shot counted, when it
    /// cannot be written: a bearing in a result without date or of a station without name or position. Where the disk
    /// fails, the whole recording is given up: nothing can be added and commit() fails, for the same reason.
    bool append(const DfResult& result);
    /// Puts the file in its place. False when that fails; to be called once.
    bool commit();
    /// Why the last operation failed: file and reason. Empty when it succeeded.
    [[nodiscard]] QString errorString() const { return m_error; }

private:
    bool fail(const QString& reason);
    bool write(const QByteArray& text);

    QSaveFile m_file;
    QString m_error;
    int m_shots = 0;
};

} // namespace workbench
