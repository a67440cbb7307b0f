#include "ztbase/errorhandler.h"

#include "faultpoints/faultpoint.h"

#include <QLoggingCategory>

namespace {
Q_LOGGING_CATEGORY(traceLog, "zt.trace")
}

ErrorHandler::ErrorHandler() = default;
ErrorHandler::~ErrorHandler() = default;

ErrorHandler* ErrorHandler::Instance()
{
    faults::mayRaise("ErrorHandler::Instance");
    // Lives for the whole process: traces are written until the last static object is gone.
    static ErrorHandler* const instance = new ErrorHandler;
    return instance;
}

int ErrorHandler::GetTraceMask() const
{
    faults::mayRaise("ErrorHandler::GetTraceMask");
    return m_traceMask;
}

void ErrorHandler::SetTraceMask(int mask)
{
    m_traceMask = mask;
}

void ErrorHandler::SetTraceSink(TraceSink sink)
{
    m_sink = std::move(sink);
}

void ErrorHandler::Trace(const TraceRecord& record)
{
    if (m_sink) {
        // The sink may replace itself from inside the call.
        const TraceSink sink = m_sink;
        sink(record);
    } else {
        qCInfo(traceLog).noquote() << record.sourceFile << record.line << record.text;
    }
}

void _Q_Trace(const QString& text, const QString& sourceFile, unsigned short line)
{
    faults::mayRaise("_Q_Trace");
    ErrorHandler::Instance()->Trace({text, sourceFile, line});
}
