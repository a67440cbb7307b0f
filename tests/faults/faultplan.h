#pragma once

#include "faultpoints/faultpoint.h"

#include <vector>

namespace testsupport {

/// What a failing host operation does.
enum class Fault
{
    HostException,            ///< raises ZTException
    ReportGeneratorException, ///< raises RGException
    ReportException,          ///< raises ReportException
    StandardException,        ///< raises a std::exception
    Anything,                 ///< raises something that is no exception class
    InTurn,                   ///< raises one of these, another one from call to call
    Result,                   ///< returns null or false, where it may
};

/// While it lives, counts the calls of host operations from one module and makes one of them fail. Calls from
/// elsewhere, the host's own and the test's, never fail. Only one at a time.
class FaultPlan
{
public:
    /// Calls from the library or program that contains @p address count from now on.
    static void watchModuleOf(const void* address);

    /// The @p failing-th call (from 1) that can fail by @p fault does; 0: none.
    FaultPlan(Fault fault, int failing);
    ~FaultPlan();
    FaultPlan(const FaultPlan&) = delete;
    FaultPlan& operator=(const FaultPlan&) = delete;

    /// The operations called so far that can fail in this way, in the order of their calls.
    [[nodiscard]] const std::vector<const char*>& operations() const { return m_operations; }
    [[nodiscard]] bool hasFailed() const { return m_hasFailed; }

private:
    static bool decide(const char* operation, faults::Ways ways, const void* caller);
    bool decideCall(const char* operation);

    static FaultPlan* s_current;

    Fault m_fault;
    std::size_t m_failing;
    bool m_hasFailed = false;
    std::vector<const char*> m_operations;
};

} // namespace testsupport
