#pragma once

#include "valueframework/valueclasses/valueobservermacros.h"

#include <QString>

#include <list>

namespace workbench {

/// The values that a driver provides. Those that it created it owns: they go with it.
class ProvidedValues
{
public:
    ProvidedValues() = default;
    ~ProvidedValues() { release(); }
    ProvidedValues(const ProvidedValues&) = delete;
    ProvidedValues& operator=(const ProvidedValues&) = delete;

    /// The value at @p path, made when there is none. Null when a value of another kind is there; the driver goes
    /// without.
    template <typename T>
    T* provide(const QString& path)
    {
        if (values::ValueBase* const there = values::Tree::Instance()->FindValue(path))
            return dynamic_cast<T*>(there);
        T* const value = values::CreateOrLink<T>(path);
        value->SetTranslationNamespace(QStringLiteral("DFLocateHandler"));
        m_created.emplace_back().Assign(value);
        return value;
    }

    /// Deletes what was created, the latest first.
    void release()
    {
        while (!m_created.empty()) {
            m_created.back().Release();
            m_created.pop_back();
        }
    }

private:
    std::list<values::ValuePtr<values::ValueBase>> m_created;
};

} // namespace workbench
