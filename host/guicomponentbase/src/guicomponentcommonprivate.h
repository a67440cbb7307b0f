#pragma once

#include "guicomponentbase/guicomponentcommon.h"
#include "slotcaller.h"
#include "valuelink.h"

#include <map>
#include <memory>
#include <utility>

namespace VelmarGui {

/// What all components share. Everything of one component is found by the component's name, so that its objects, each
/// with tools of its own, work on the same links and parameter sets.
class GuiComponentCommon::Private
{
public:
    /// Component and name within it.
    using Key = std::pair<QString, QString>;

    struct Link
    {
        const GuiComponentTools* owner;
        std::unique_ptr<ValueLink> link;
    };

    struct ParameterSet
    {
        const GuiComponentTools* owner;
        std::unique_ptr<SlotCaller> caller; // empty: nobody wants to be called
    };

    struct GlobalValue
    {
        values::ValueBase* value;
        Observable::Life life;
    };

    void SetLink(const Key& key, const GuiComponentTools* owner, std::unique_ptr<ValueLink> link);
    /// Null when there is none.
    [[nodiscard]] ValueLink* FindLink(const Key& key) const;

    void SetParameterSet(const Key& key, const GuiComponentTools* owner, std::unique_ptr<SlotCaller> caller);
    /// Null when there is none, or when its receiver has gone.
    [[nodiscard]] const ParameterSet* FindParameterSet(const Key& key) const;

    void SetGlobalValue(const QString& name, values::ValueBase* value);
    /// Null when no living value has that name.
    [[nodiscard]] values::ValueBase* FindGlobalValue(const QString& name) const;

    /// Ends the links and parameter sets that @p owner made.
    void Forget(const GuiComponentTools* owner);

    std::map<Key, QString> parameterContents;
    QString formFolder;
    const std::shared_ptr<Services> services = std::make_shared<Services>();

private:
    std::map<Key, Link> m_links;
    std::map<Key, ParameterSet> m_parameterSets;
    std::map<QString, GlobalValue> m_globalValues;
};

} // namespace VelmarGui
