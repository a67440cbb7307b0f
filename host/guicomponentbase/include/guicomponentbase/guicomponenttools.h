#pragma once

#include "guicomponentbase/guicomponentbaseglobal.h"

#include <QString>

#include <memory>

class QObject;

namespace values {
class ValueBase;
}

namespace VelmarGui {

class GuiComponentCommon;

/// Base of every object of a component that uses values: its paths, and its ways of publishing, linking and observing.
///
/// A *relay* calls a slot of the form "1Slot(values::ValueBase*)", as SLOT() writes it, whenever a value sends
/// ChangeContent, and for no other code; making one calls nothing. The same (value, receiver, slot) is relayed once
/// however often it is asked for. A null value, receiver or slot makes no relay. A relay ends by itself when the value,
/// the receiver or this object goes.
///
/// Links, global names and parameter sets are kept by the shared object: without one, and after it has gone, nothing is
/// linked, published or reported. Relays and look-ups in the tree work all the same.
///
/// GUI thread only.
class GUICOMPONENTBASE_EXPORT GuiComponentTools
{
public:
    /// @p componentName is the component's folder in the value tree and ends in "/".
    GuiComponentTools(GuiComponentCommon* common, const QString& componentName);
    // Not virtual: nobody deletes through this class.
    ~GuiComponentTools();
    GuiComponentTools(const GuiComponentTools&) = delete;
    GuiComponentTools& operator=(const GuiComponentTools&) = delete;

    /// Takes over parameters of the host. Default: nothing.
    virtual void SetParams(const QString& params);

    /// The shared object given at construction, null when it has gone.
    [[nodiscard]] GuiComponentCommon* GetCommon() const;

    /// @name Folders in the value tree, each ending in "/"
    /// @{
    [[nodiscard]] QString GetComponentPath() const; ///< the component's own values
    [[nodiscard]] QString GetParameterPath() const; ///< the component's parameter sets
    [[nodiscard]] QString GetGlobalPath() const;    ///< values that all components share
    /// @}

    /// Whether the component works without a driver; false at first.
    void SetOffline(bool offline);
    [[nodiscard]] bool IsOffline() const;

    /// Relays @p value. Never takes ownership.
    void AddValue(values::ValueBase* value, QObject* receiver, const char* slot);

    /// Makes the value at component folder + @p localName the interface to the value at @p path and returns it; null,
    /// with nothing linked, when either is missing. Both are of one kind. The interface value takes over the target's
    /// content (of a selection: the items, then the current item) and follows it from then on; the other way needs
    /// WritebackValue(). A relay is made for the interface value. A second call for the same name replaces the first.
    /// The link ends when either value or this object goes.
    values::ValueBase* LinkValue(const QString& localName, const QString& path, QObject* receiver, const char* slot);

    /// Writes the interface value's content (of a selection: the current item, by key) to the value it is linked to.
    /// Does nothing without a link.
    void WritebackValue(const QString& localName);

    /// Publishes @p value under a global name and relays it. The same value again only adds the relay; another value
    /// takes the name over. The name is free again when the value goes. Null is ignored.
    void AddGlobalValue(values::ValueBase* value, const QString& name, QObject* receiver, const char* slot);
    /// GetGlobalValue() and a relay for it. An unknown name is null and is not remembered.
    values::ValueBase* ConnectGlobalValue(const QString& name, QObject* receiver, const char* slot);
    /// The value published under @p name, else the one at global folder + @p name, else null.
    [[nodiscard]] values::ValueBase* GetGlobalValue(const QString& name) const;

    /// Registers a parameter set; @p slot is called with a text value when the host hands in new content. A second call
    /// for the same name replaces the first. Ends when the receiver or this object goes; the content stays with the
    /// host.
    void AddParameterSet(const QString& name, QObject* receiver, const char* slot);
    /// Reports the current content of a parameter set to the host. Calls no slot of this component.
    void UpdateParameterSet(const QString& name, const QString& xml);

    /// Path of the form description of a parameter set: "<name>_<kind>.xml" in the host's form folder.
    [[nodiscard]] QString GetPGXMLFilename(const QString& name, const QString& kind) const;

protected:
    /// The host has reloaded the values. Default: nothing.
    virtual void OnReloadedValues();

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace VelmarGui
