#pragma once

#include "faultplan.h"
#include "hostbench.h"
#include "support/traces.h"

#include <QtTest>

#include <set>
#include <vector>

namespace testsupport {

/// One thing that host, operator or driver do.
struct Step
{
    const char* name;
    void (HostBench::*act)();
};

/// Up to where the component is ready for work.
inline constexpr Step setUpSteps[] = {
    {"create", &HostBench::create},
    {"make widgets", &HostBench::makeWidgets},
    {"connect services", &HostBench::connectServices},
    {"announce the tree", &HostBench::announceTree},
};

/// What a component at work goes through.
inline constexpr Step workSteps[] = {
    {"announce that DF is enabled", &HostBench::announceEnabled},
    {"measure", &HostBench::measure},
    {"open the detailed results", &HostBench::openDetailedResults},
    {"measure with open results", &HostBench::measure},
    {"report the status", &HostBench::reportStatus},
    {"change the station list", &HostBench::changeStationList},
    {"change a setting", &HostBench::changeSetting},
    {"change the span", &HostBench::changeSpan},
    {"change the workflow", &HostBench::changeWorkflow},
    {"exchange the device", &HostBench::exchangeDevice},
    {"hand a parameter set in", &HostBench::handParameterSetIn},
    {"take the parameter set out", &HostBench::takeParameterSetOut},
    {"report the driver's settings", &HostBench::reportDriverSettings},
    {"switch the user input", &HostBench::switchUserInput},
    {"change the properties", &HostBench::changeProperties},
};

/// Makes host operations fail in single steps, and keeps count. The component library is loaded, and traces are on.
class FaultWalk
{
public:
    FaultWalk();
    /// Prints the count.
    ~FaultWalk();
    FaultWalk(const FaultWalk&) = delete;
    FaultWalk& operator=(const FaultWalk&) = delete;

    /// What a step with a failure came to.
    struct Outcome
    {
        const char* operation = nullptr; ///< the one that failed; null when there was no such call
        QString out;                     ///< what the component let out; empty: nothing
    };

    /// The calls of @p step that can fail by @p fault, when none does.
    [[nodiscard]] static std::vector<const char*> callsOf(HostBench& host, const Step& step, Fault fault);

    /// Has the @p failing-th call (from 1) of @p step fail. @p calls are those of the step when none fails; needed for
    /// a step that puts values into the tree.
    [[nodiscard]] Outcome fail(HostBench& host, const Step& step, Fault fault, int failing,
                               const std::vector<const char*>& calls = {});

    static void setUp(HostBench& host);
    /// What is wrong with the component; empty: nothing.
    [[nodiscard]] static QString whatIsWrong(HostBench& host);

    /// A row for each fault that is one exception or a result.
    static void addRows(const char* modeName, Mode mode);

    [[nodiscard]] const ComponentLibrary& library() const { return m_library; }

private:
    ComponentLibrary m_library;
    const Traces m_traces;
    int m_injected = 0;
    std::set<QByteArray> m_operations;
};

} // namespace testsupport

Q_DECLARE_METATYPE(testsupport::Fault)
Q_DECLARE_METATYPE(testsupport::Mode)
