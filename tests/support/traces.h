#pragma once

#include "ztbase/errorhandler.h"

#include <vector>

namespace testsupport {

/// Collects the host's traces while it lives, with the traces of components switched on.
class Traces
{
public:
    explicit Traces(int mask = ErrorHandler::ComponentTraces)
    {
        ErrorHandler::Instance()->SetTraceMask(mask);
        ErrorHandler::Instance()->SetTraceSink([this](const TraceRecord& record) { records.push_back(record); });
    }
    ~Traces()
    {
        ErrorHandler::Instance()->SetTraceMask(0);
        ErrorHandler::Instance()->SetTraceSink(nullptr);
    }
    Traces(const Traces&) = delete;
    Traces& operator=(const Traces&) = delete;

    std::vector<TraceRecord> records;
};

} // namespace testsupport
