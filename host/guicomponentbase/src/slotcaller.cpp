#include "slotcaller.h"

namespace VelmarGui {

SlotCaller::~SlotCaller() = default;

bool SlotCaller::Calls(const QObject* receiver, const char* slot) const
{
    return m_receiver == receiver && m_slot == QMetaObject::normalizedSignature(slot);
}

bool SlotCaller::Connect(QObject* receiver, const char* slot)
{
    m_receiver = receiver;
    m_slot = QMetaObject::normalizedSignature(slot);
    return connect(this, SIGNAL(changed(values::ValueBase*)), receiver, m_slot.constData());
}

} // namespace VelmarGui
