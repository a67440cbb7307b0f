#include "servicemanagement/serviceregistry.h"
#include "support/testmain.h"

#include <memory>
#include <type_traits>

using ServiceManagement::Registration;
using ServiceManagement::ServiceRegistry;

namespace {

struct Service
{
    virtual ~Service() = default;
};

struct Padding
{
    virtual ~Padding() = default;
    int room[4] = {};
};

struct Clock : virtual Service
{
    virtual int hour() const = 0;
};

struct Lamp : virtual Service
{
    virtual int brightness() const = 0;
};

/// Both interfaces lie at an offset of their own within the object.
struct ClockWithLamp final : Padding, Clock, Lamp
{
    explicit ClockWithLamp(int theHour)
        : m_hour(theHour)
    {
    }
    int hour() const override { return m_hour; }
    int brightness() const override { return 80; }

private:
    int m_hour;
};

std::shared_ptr<Clock> clockOf(const Registration& registration)
{
    return std::static_pointer_cast<Clock>(registration.get(typeid(Clock)));
}

} // namespace

class TestServiceRegistry : public QObject
{
    Q_OBJECT
private slots:
    void anEmptyRegistryFindsNothing();
    void servicesAreFoundInTheOrderOfTheirRegistration();
    void onlyTheAskedInterfaceIsFound();
    void aFilterChoosesAmongTheServices();
    void aServiceIsGivenAsAPointerToItsInterface();
    void anotherInterfaceThanTheRegisteredOneGivesNothing();
    void anEmptyPointerIsIgnored();
    void theRegistryKeepsItsServicesAlive();
    void foundRegistrationsStayValidWhenMoreAreAdded();
};

void TestServiceRegistry::anEmptyRegistryFindsNothing()
{
    const ServiceRegistry<Service> registry;
    QVERIFY(registry.findServiceRegistrationsImpl(typeid(Clock), nullptr).empty());
}

void TestServiceRegistry::servicesAreFoundInTheOrderOfTheirRegistration()
{
    ServiceRegistry<Service> registry;
    for (int hour : {3, 1, 2})
        registry.registerService<Clock>(std::make_shared<ClockWithLamp>(hour));
    const auto found = registry.findServiceRegistrationsImpl(typeid(Clock), nullptr);
    QCOMPARE(found.size(), std::size_t(3));
    QCOMPARE(clockOf(*found[0])->hour(), 3);
    QCOMPARE(clockOf(*found[1])->hour(), 1);
    QCOMPARE(clockOf(*found[2])->hour(), 2);
}

void TestServiceRegistry::onlyTheAskedInterfaceIsFound()
{
    ServiceRegistry<Service> registry;
    const auto service = std::make_shared<ClockWithLamp>(5);
    registry.registerService<Clock>(service);
    QVERIFY(registry.findServiceRegistrationsImpl(typeid(Lamp), nullptr).empty());
    QVERIFY(registry.findServiceRegistrationsImpl(typeid(ClockWithLamp), nullptr).empty());
    registry.registerService<Lamp>(service);
    QCOMPARE(registry.findServiceRegistrationsImpl(typeid(Lamp), nullptr).size(), std::size_t(1));
    QCOMPARE(registry.findServiceRegistrationsImpl(typeid(Clock), nullptr).size(), std::size_t(1));
}

void TestServiceRegistry::aFilterChoosesAmongTheServices()
{
    ServiceRegistry<Service> registry;
    for (int hour : {4, 9, 6})
        registry.registerService<Clock>(std::make_shared<ClockWithLamp>(hour));
    registry.registerService<Lamp>(std::make_shared<ClockWithLamp>(0));
    int asked = 0;
    const auto found = registry.findServiceRegistrationsImpl(typeid(Clock), [&asked](const Registration& registration) {
        ++asked;
        return clockOf(registration)->hour() > 5;
    });
    QCOMPARE(asked, 3); // the lamp is no candidate
    QCOMPARE(found.size(), std::size_t(2));
    QCOMPARE(clockOf(*found[0])->hour(), 9);
    QCOMPARE(clockOf(*found[1])->hour(), 6);
}

void TestServiceRegistry::aServiceIsGivenAsAPointerToItsInterface()
{
    ServiceRegistry<Service> registry;
    const auto service = std::make_shared<ClockWithLamp>(7);
    registry.registerService<Clock>(service);
    registry.registerService<Lamp>(service);
    QVERIFY(static_cast<void*>(static_cast<Lamp*>(service.get())) != static_cast<void*>(service.get()));

    const Registration* const lamp = registry.findServiceRegistrationsImpl(typeid(Lamp), nullptr).front();
    QCOMPARE(lamp->get(typeid(Lamp)).get(), static_cast<void*>(static_cast<Lamp*>(service.get())));
    QCOMPARE(std::static_pointer_cast<Lamp>(lamp->get(typeid(Lamp)))->brightness(), 80);
    const Registration* const clock = registry.findServiceRegistrationsImpl(typeid(Clock), nullptr).front();
    QCOMPARE(clockOf(*clock)->hour(), 7);
}

void TestServiceRegistry::anotherInterfaceThanTheRegisteredOneGivesNothing()
{
    ServiceRegistry<Service> registry;
    registry.registerService<Clock>(std::make_shared<ClockWithLamp>(7));
    const Registration* const clock = registry.findServiceRegistrationsImpl(typeid(Clock), nullptr).front();
    QCOMPARE(clock->get(typeid(Lamp)), std::shared_ptr<void>());
    QVERIFY(clock->interfaceType() == typeid(Clock));
}

void TestServiceRegistry::anEmptyPointerIsIgnored()
{
    ServiceRegistry<Service> registry;
    registry.registerService<Clock>(nullptr);
    QVERIFY(registry.findServiceRegistrationsImpl(typeid(Clock), nullptr).empty());
}

void TestServiceRegistry::theRegistryKeepsItsServicesAlive()
{
    std::weak_ptr<Clock> watched;
    std::shared_ptr<void> taken;
    {
        ServiceRegistry<Service> registry;
        auto service = std::make_shared<ClockWithLamp>(1);
        watched = service;
        registry.registerService<Clock>(std::move(service));
        QVERIFY(!watched.expired());
        taken = registry.findServiceRegistrationsImpl(typeid(Clock), nullptr).front()->get(typeid(Clock));
    }
    QVERIFY(!watched.expired()); // whoever took it keeps it
    taken.reset();
    QVERIFY(watched.expired());
}

void TestServiceRegistry::foundRegistrationsStayValidWhenMoreAreAdded()
{
    ServiceRegistry<Service> registry;
    registry.registerService<Clock>(std::make_shared<ClockWithLamp>(11));
    const Registration* const first = registry.findServiceRegistrationsImpl(typeid(Clock), nullptr).front();
    for (int hour = 0; hour < 100; ++hour)
        registry.registerService<Clock>(std::make_shared<ClockWithLamp>(hour));
    QCOMPARE(clockOf(*first)->hour(), 11);
    QCOMPARE(registry.findServiceRegistrationsImpl(typeid(Clock), nullptr).front(), first);
}

DFL_TEST_MAIN_WITH(TestServiceRegistry, QCoreApplication)
#include "tst_serviceregistry.moc"
