#pragma once

#include "servicemanagement/registration.h"

#include <functional>
#include <type_traits>
#include <vector>

namespace ServiceManagement {

/// The untyped part of a service registry. GUI thread only.
class SERVICEMANAGEMENT_EXPORT ServiceRegistryBase
{
public:
    using Filter = std::function<bool(const Registration&)>;

    ServiceRegistryBase();
    ~ServiceRegistryBase();
    ServiceRegistryBase(const ServiceRegistryBase&) = delete;
    ServiceRegistryBase& operator=(const ServiceRegistryBase&) = delete;

    /// The registrations under @p interfaceType that @p filter accepts, in the order of registration; an empty filter
    /// accepts all. The pointers stay valid as long as the registry.
    [[nodiscard]] std::vector<const Registration*> findServiceRegistrationsImpl(const std::type_index& interfaceType,
                                                                                const Filter& filter) const;

protected:
    void addRegistration(Registration registration);

private:
    std::vector<std::unique_ptr<const Registration>> m_registrations;
};

/// A registry of services that share the base interface @p Base.
template <typename Base>
class ServiceRegistry : public ServiceRegistryBase
{
public:
    /// Registers @p service under the interface @p T. An empty pointer is ignored. The same object may be registered
    /// under several interfaces.
    template <typename T>
    void registerService(std::shared_ptr<T> service)
    {
        static_assert(std::is_base_of_v<Base, T>, "a service implements the registry's base interface");
        if (service)
            addRegistration(Registration(typeid(T), std::move(service)));
    }
};

} // namespace ServiceManagement
