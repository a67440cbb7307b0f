#include "faultwalk.h"

#include <memory>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace testsupport {

namespace {

/// A value that the tree refuses belongs to nobody: that is the contract of those who create it, and no finding.
class LeaksByContract
{
public:
    explicit LeaksByContract([[maybe_unused]] bool expected)
#ifdef __SANITIZE_ADDRESS__
        : m_disabler(expected ? new __lsan::ScopedDisabler : nullptr)
#endif
    {
    }

#ifdef __SANITIZE_ADDRESS__
private:
    std::unique_ptr<__lsan::ScopedDisabler> m_disabler;
#endif
};

/// The tree refuses the value by its result or by ZTException, on the way to its insertion or there; or the value has
/// no name to be inserted under.
bool leavesAValueBehind(Fault fault, const char* operation)
{
    const bool isHostException = fault == Fault::HostException || fault == Fault::InTurn;
    if (qstrcmp(operation, "Tree::InsertValue") == 0)
        return isHostException || fault == Fault::Result;
    return (isHostException && qstrcmp(operation, "Tree::Instance") == 0) ||
           (fault == Fault::Result && qstrcmp(operation, "ValueBase::SetName") == 0);
}

template <typename Call>
QString escaped(Call call)
{
    try {
        call();
    } catch (const std::exception& exception) {
        return QString::fromUtf8(exception.what());
    } catch (...) {
        return QStringLiteral("something that is no exception class");
    }
    return {};
}

} // namespace

FaultWalk::FaultWalk()
{
    FaultPlan::watchModuleOf(reinterpret_cast<const void*>(m_library.create));
}

FaultWalk::~FaultWalk()
{
    qInfo("Faults injected: %d, into %d different operations", m_injected, static_cast<int>(m_operations.size()));
}

std::vector<const char*> FaultWalk::callsOf(HostBench& host, const Step& step, Fault fault)
{
    const FaultPlan plan(fault, 0);
    (host.*step.act)();
    return plan.operations();
}

FaultWalk::Outcome FaultWalk::fail(HostBench& host, const Step& step, Fault fault, int failing,
                                   const std::vector<const char*>& calls)
{
    const auto index = static_cast<std::size_t>(failing) - 1;
    const LeaksByContract leaks(index < calls.size() && leavesAValueBehind(fault, calls[index]));
    const FaultPlan plan(fault, failing);
    Outcome outcome;
    outcome.out = escaped([&] { (host.*step.act)(); });
    if (plan.hasFailed()) {
        outcome.operation = plan.operations()[index];
        ++m_injected;
        m_operations.insert(outcome.operation);
    }
    return outcome;
}

void FaultWalk::addRows(const char* modeName, Mode mode)
{
    const std::pair<const char*, Fault> faults[] = {
        {"host exception", Fault::HostException},
        {"report generator exception", Fault::ReportGeneratorException},
        {"report exception", Fault::ReportException},
        {"standard exception", Fault::StandardException},
        {"anything", Fault::Anything},
        {"null or false", Fault::Result},
    };
    for (const auto& [faultName, fault] : faults)
        QTest::addRow("%s, %s", modeName, faultName) << mode << fault;
}

void FaultWalk::setUp(HostBench& host)
{
    for (const Step& step : setUpSteps)
        (host.*step.act)();
}

QString FaultWalk::whatIsWrong(HostBench& host)
{
    if (!host.isComplete())
        return QStringLiteral("no toolbar or no panel");
    const QString wrong = host.whatIsWrongWithSettings();
    return wrong.isEmpty() && host.mode() == Mode::Online ? host.whatIsWrongWithMeasuring() : wrong;
}

} // namespace testsupport
