#include "servicemanagement/registration.h"

#include "faultpoints/faultpoint.h"

#include <utility>

namespace ServiceManagement {

Registration::Registration(std::type_index interfaceType, std::shared_ptr<void> service)
    : m_interfaceType(interfaceType)
    , m_service(std::move(service))
{
}

std::shared_ptr<void> Registration::get(const std::type_index& interfaceType) const
{
    if (faults::failsByResult("Registration::get"))
        return nullptr;
    return interfaceType == m_interfaceType ? m_service : nullptr;
}

} // namespace ServiceManagement
