#pragma once

#include "servicemanagement/servicemanagementglobal.h"

#include <memory>
#include <typeindex>

namespace ServiceManagement {

/// One service in a registry: an object and the interface under which it was registered.
class SERVICEMANAGEMENT_EXPORT Registration
{
public:
    /// @p service points to the subobject of the type that @p interfaceType names.
    Registration(std::type_index interfaceType, std::shared_ptr<void> service);

    [[nodiscard]] std::type_index interfaceType() const { return m_interfaceType; }

    /// The service as a pointer to its interface (cast it back with std::static_pointer_cast); empty when
    /// @p interfaceType is not the one it was registered under.
    [[nodiscard]] std::shared_ptr<void> get(const std::type_index& interfaceType) const;

private:
    std::type_index m_interfaceType;
    std::shared_ptr<void> m_service;
};

} // namespace ServiceManagement
