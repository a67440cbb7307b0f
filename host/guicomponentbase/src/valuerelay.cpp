#include "valuerelay.h"

namespace VelmarGui {

ValueRelay::ValueRelay(values::ValueBase& value)
    : m_value(&value)
    , m_observation(value, *this)
{
}

void ValueRelay::Update(Observable* /*source*/, TChangeCode code)
{
    if (code == ChangeContent)
        emit changed(m_value); // nothing may follow: the slot may have ended this relay
    else if (code == ChangeState && m_value->GetState() == values::StateRemoved)
        delete this;
}

} // namespace VelmarGui
