#include "interrupter.h"

namespace chaos {

Interrupter::Interrupter(Place place, int at, Action action)
    : m_place(place)
    , m_at(at)
    , m_action(std::move(action))
{
    values::Tree* const tree = values::Tree::Instance();
    for (values::ValueBase* const value : tree->ValuesBelow(QString()))
        ValueInserted(value);
    tree->AddListener(this);
}

Interrupter::~Interrupter()
{
    values::Tree* const tree = values::Tree::Instance();
    tree->RemoveListener(this);
    for (values::ValueBase* const value : tree->ValuesBelow(QString()))
        value->RemoveObserver(this);
}

void Interrupter::Update(Observable* source, TChangeCode /*code*/)
{
    if (++m_count == m_at)
        m_action(dynamic_cast<values::ValueBase&>(*source));
}

void Interrupter::ValueInserted(values::ValueBase* value)
{
    value->AddObserver(this);
    if (m_place == Place::First)
        value->MakeFirstObserver(this);
}

} // namespace chaos
