#include "servicemanagement/serviceregistry.h"

#include "faultpoints/faultpoint.h"

#include <utility>

namespace ServiceManagement {

ServiceRegistryBase::ServiceRegistryBase() = default;
ServiceRegistryBase::~ServiceRegistryBase() = default;

std::vector<const Registration*> ServiceRegistryBase::findServiceRegistrationsImpl(const std::type_index& interfaceType,
                                                                                   const Filter& filter) const
{
    if (faults::failsByResult("ServiceRegistryBase::findServiceRegistrationsImpl"))
        return {};
    std::vector<const Registration*> found;
    for (const auto& registration : m_registrations) {
        if (registration->interfaceType() == interfaceType && (!filter || filter(*registration)))
            found.push_back(registration.get());
    }
    return found;
}

void ServiceRegistryBase::addRegistration(Registration registration)
{
    m_registrations.push_back(std::make_unique<const Registration>(std::move(registration)));
}

} // namespace ServiceManagement
