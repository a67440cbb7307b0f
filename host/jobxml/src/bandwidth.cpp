#include "jobxml/bandwidth.h"

#include "numbers.h"

namespace JobXml {

void Bandwidth::SetValue(double hertz)
{
    m_value = finite(hertz, "Bandwidth::SetValue");
}

double Bandwidth::GetValue() const
{
    return m_value.value_or(0.0);
}

bool Bandwidth::IsValueSet() const
{
    return m_value.has_value();
}

} // namespace JobXml
