#include "faultplan.h"

#include "ztbase/exceptions.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdint>
#include <iterator>
#include <stdexcept>

namespace testsupport {

namespace {

struct Module
{
    const void* base = nullptr; // of the module looked for
    std::uintptr_t begin = 0;   // of its code
    std::uintptr_t end = 0;
};

Module watched;

int findCode(dl_phdr_info* info, std::size_t /*size*/, void* data)
{
    auto* const module = static_cast<Module*>(data);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = info->dlpi_phdr[i];
        const std::uintptr_t begin = info->dlpi_addr + segment.p_vaddr;
        const auto base = reinterpret_cast<std::uintptr_t>(module->base);
        if (segment.p_type == PT_LOAD && (segment.p_flags & PF_X) != 0 && info->dlpi_addr == base) {
            module->begin = begin;
            module->end = begin + segment.p_memsz;
            return 1;
        }
    }
    return 0;
}

[[noreturn]] void raise(Fault fault, const char* operation)
{
    const QString place = QString::fromLatin1(operation);
    const QString message = QStringLiteral("injected");
    switch (fault) {
    case Fault::HostException:
        throw ZTException(place, message);
    case Fault::ReportGeneratorException:
        throw RGException(place, message);
    case Fault::ReportException:
        throw ::ReportException(place, message);
    case Fault::StandardException:
        throw std::runtime_error(operation);
    case Fault::Anything:
    case Fault::InTurn:
    case Fault::Result:
        break;
    }
    throw 42;
}

/// The exception whose turn it is at that call.
Fault inTurn(std::size_t call)
{
    constexpr Fault exceptions[] = {Fault::HostException, Fault::ReportGeneratorException, Fault::ReportException,
                                    Fault::StandardException, Fault::Anything};
    return exceptions[call % std::size(exceptions)];
}

} // namespace

FaultPlan* FaultPlan::s_current = nullptr;

void FaultPlan::watchModuleOf(const void* address)
{
    Dl_info info{};
    watched = {};
    if (dladdr(address, &info) != 0) {
        watched.base = info.dli_fbase;
        dl_iterate_phdr(findCode, &watched);
    }
    if (watched.end == 0)
        qFatal("The module's code cannot be found");
}

FaultPlan::FaultPlan(Fault fault, int failing)
    : m_fault(fault)
    , m_failing(static_cast<std::size_t>(failing))
{
    s_current = this;
    faults::hook = &decide;
}

FaultPlan::~FaultPlan()
{
    faults::hook = nullptr;
    s_current = nullptr;
}

bool FaultPlan::decide(const char* operation, faults::Ways ways, const void* caller)
{
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    if (address < watched.begin || address >= watched.end)
        return false;
    if (s_current->m_fault == Fault::Result && ways != faults::Ways::RaiseOrResult)
        return false;
    return s_current->decideCall(operation);
}

bool FaultPlan::decideCall(const char* operation)
{
    m_operations.push_back(operation);
    if (m_hasFailed || m_operations.size() != m_failing)
        return false;
    m_hasFailed = true;
    if (m_fault != Fault::Result)
        raise(m_fault == Fault::InTurn ? inTurn(m_failing) : m_fault, operation);
    return true;
}

} // namespace testsupport
