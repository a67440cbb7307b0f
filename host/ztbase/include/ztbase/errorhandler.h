#pragma once

#include "ztbase/ztbaseglobal.h"

#include <QString>

#include <functional>

/// One line of the host's trace.
struct TraceRecord
{
    QString text;
    QString sourceFile;      ///< path of the source unit that writes the trace
    unsigned short line = 0; ///< line within that unit
};

/// The host's trace switchboard. GUI thread only.
class ZTBASE_EXPORT ErrorHandler
{
public:
    using TraceSink = std::function<void(const TraceRecord&)>;

    /// Bit of the trace mask that switches on the traces of GUI components.
    static constexpr int ComponentTraces = 0x20;

    /// The one error handler, never null.
    static ErrorHandler* Instance();

    virtual ~ErrorHandler();
    ErrorHandler(const ErrorHandler&) = delete;
    ErrorHandler& operator=(const ErrorHandler&) = delete;

    /// Bit mask of the kinds of trace that are wanted; 0 at first. Who writes a trace asks first.
    [[nodiscard]] virtual int GetTraceMask() const;
    void SetTraceMask(int mask);

    /// Where traces go. Without a sink they go to the Qt message log.
    void SetTraceSink(TraceSink sink);

    /// Hands @p record to the sink.
    void Trace(const TraceRecord& record);

private:
    ErrorHandler();

    int m_traceMask = 0;
    TraceSink m_sink;
};

/// Writes one trace. Does not look at the trace mask: the caller has done so.
ZTBASE_EXPORT void _Q_Trace(const QString& text, const QString& sourceFile, unsigned short line);
