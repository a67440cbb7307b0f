#include "jobxml/bandwidth.h"

#include "faultpoints/faultpoint.h"
#include "numbers.h"

namespace JobXml {

void Bandwidth::SetValue(double hertz)
{
    faults::mayRaise("Bandwidth::SetValue");
    m_value = finite(hertz, "Bandwidth::SetValue");
}

double Bandwidth::GetValue() const
{
    faults::mayRaise("Bandwidth::GetValue");
    return m_value.value_or(0.0);
}

bool Bandwidth::IsValueSet() const
{
    return m_value.has_value();
}

} // namespace JobXml
