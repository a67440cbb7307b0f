#include "guicomponentbase/guicomponentcommon.h"

#include "faultpoints/faultpoint.h"
#include "guicomponentcommonprivate.h"
#include "valueframework/valueclasses/value.h"

#include <QMetaType>

namespace VelmarGui {

namespace {

template <typename Map>
void eraseOwnedBy(const GuiComponentTools* owner, Map& map)
{
    for (auto entry = map.begin(); entry != map.end();)
        entry = entry->second.owner == owner ? map.erase(entry) : std::next(entry);
}

} // namespace

void GuiComponentCommon::Private::SetLink(const Key& key, const GuiComponentTools* owner,
                                          std::unique_ptr<ValueLink> link)
{
    m_links.insert_or_assign(key, Link{owner, std::move(link)});
}

ValueLink* GuiComponentCommon::Private::FindLink(const Key& key) const
{
    const auto found = m_links.find(key);
    return found != m_links.end() ? found->second.link.get() : nullptr;
}

void GuiComponentCommon::Private::SetParameterSet(const Key& key, const GuiComponentTools* owner,
                                                  std::unique_ptr<SlotCaller> caller)
{
    m_parameterSets.insert_or_assign(key, ParameterSet{owner, std::move(caller)});
}

const GuiComponentCommon::Private::ParameterSet* GuiComponentCommon::Private::FindParameterSet(const Key& key) const
{
    const auto found = m_parameterSets.find(key);
    if (found == m_parameterSets.end())
        return nullptr;
    const ParameterSet& set = found->second;
    return set.caller != nullptr && set.caller->HasNoReceiver() ? nullptr : &set;
}

void GuiComponentCommon::Private::SetGlobalValue(const QString& name, values::ValueBase* value)
{
    m_globalValues.insert_or_assign(name, GlobalValue{value, value->GetLife()});
}

values::ValueBase* GuiComponentCommon::Private::FindGlobalValue(const QString& name) const
{
    const auto found = m_globalValues.find(name);
    if (found == m_globalValues.end() || found->second.life.IsOver() ||
        found->second.value->GetState() == values::StateRemoved)
        return nullptr;
    return found->second.value;
}

void GuiComponentCommon::Private::Forget(const GuiComponentTools* owner)
{
    eraseOwnedBy(owner, m_links);
    eraseOwnedBy(owner, m_parameterSets);
}

GuiComponentCommon::GuiComponentCommon()
    : d(std::make_unique<Private>())
{
    // Values travel through signals, also queued and recorded ones.
    qRegisterMetaType<values::ValueBase*>("values::ValueBase*");
}

GuiComponentCommon::~GuiComponentCommon() = default;

const std::shared_ptr<GuiComponentCommon::Services>& GuiComponentCommon::getServiceRegistry() const
{
    faults::mayRaise("GuiComponentCommon::getServiceRegistry");
    return d->services;
}

bool GuiComponentCommon::SetParameterSet(const QString& component, const QString& name, const QString& xml)
{
    const Private::Key key(component, name);
    const Private::ParameterSet* const set = d->FindParameterSet(key);
    if (set == nullptr)
        return false;
    d->parameterContents[key] = xml;
    if (set->caller != nullptr) {
        values::StringValue content(xml);
        content.SetName(name, nullptr);
        emit set->caller->changed(&content); // nothing of this may be used after it: the slot may delete what it likes
    }
    return true;
}

QString GuiComponentCommon::GetParameterSet(const QString& component, const QString& name) const
{
    const auto found = d->parameterContents.find(Private::Key(component, name));
    return found != d->parameterContents.end() ? found->second : QString();
}

void GuiComponentCommon::SetFormFolder(const QString& folder)
{
    d->formFolder = folder;
}

} // namespace VelmarGui
