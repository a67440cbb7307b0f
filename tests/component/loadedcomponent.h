#pragma once

#include "guicomponentbase/iguicomponent.h"

#include <QLibrary>

#include <utility>

namespace testsupport {

/// The component library as a host has it: loaded at run time, known by its two factory functions only.
class ComponentLibrary
{
public:
    ComponentLibrary()
        : m_library(QStringLiteral(COMPONENT_LIBRARY))
    {
        // What it leaves behind at the end of the process must still have names in a leak report.
        m_library.setLoadHints(QLibrary::PreventUnloadHint);
        create = reinterpret_cast<ZTCreateFunction>(m_library.resolve("ZTCreate"));
        destroy = reinterpret_cast<ZTDestroyFunction>(m_library.resolve("ZTDestroy"));
        if (create == nullptr || destroy == nullptr)
            qFatal("%s", qPrintable(m_library.errorString()));
    }

    ZTCreateFunction create = nullptr;
    ZTDestroyFunction destroy = nullptr;

    /// A component that goes back to its library at the end.
    class Component
    {
    public:
        Component(const ComponentLibrary& library, const wchar_t* name)
            : m_library(library)
            , m_instance(library.create(name))
        {
        }
        ~Component() { Destroy(); }
        Component(const Component&) = delete;
        Component& operator=(const Component&) = delete;

        /// The component as the host drives it; null when it could not be made.
        [[nodiscard]] VelmarGui::IGuiComponent* get() const
        {
            return dynamic_cast<VelmarGui::IGuiComponent*>(m_instance);
        }
        VelmarGui::IGuiComponent* operator->() const { return get(); }

        void Destroy()
        {
            if (IDllInstance* const instance = std::exchange(m_instance, nullptr))
                m_library.destroy(instance);
        }

    private:
        const ComponentLibrary& m_library;
        IDllInstance* m_instance;
    };

private:
    QLibrary m_library;
};

} // namespace testsupport
