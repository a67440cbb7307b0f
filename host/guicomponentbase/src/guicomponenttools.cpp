#include "guicomponentbase/guicomponenttools.h"

#include "faultpoints/faultpoint.h"
#include "guicomponentcommonprivate.h"
#include "valueframework/tree.h"
#include "valuerelay.h"

#include <QDir>
#include <QPointer>

namespace VelmarGui {

class GuiComponentTools::Private
{
public:
    Private(GuiComponentCommon* sharedObject, const QString& name)
        : common(sharedObject)
        , componentName(name)
    {
    }

    void MakeRelay(values::ValueBase* value, QObject* receiver, const char* slot);
    [[nodiscard]] GuiComponentCommon::Private::Key Key(const QString& localName) const
    {
        return {componentName, localName};
    }

    /// Ends with the tools object.
    [[nodiscard]] const QObject* LifeSign() const { return &m_relayOwner; }

    QPointer<GuiComponentCommon> common;
    QString componentName;
    bool offline = false;

private:
    [[nodiscard]] QList<ValueRelay*> Relays() const
    {
        return m_relayOwner.findChildren<ValueRelay*>(QString(), Qt::FindDirectChildrenOnly);
    }

    QObject m_relayOwner;
};

void GuiComponentTools::Private::MakeRelay(values::ValueBase* value, QObject* receiver, const char* slot)
{
    if (value == nullptr || slot == nullptr)
        return;
    const QList<ValueRelay*> relays = Relays();
    for (ValueRelay* relay : relays) {
        if (relay->IsOver())
            delete relay; // its value's address may be in use again
        else if (relay->Observes(value) && relay->Calls(receiver, slot))
            return;
    }
    std::unique_ptr<ValueRelay> relay = SlotCaller::Make<ValueRelay>(receiver, slot, *value);
    if (relay == nullptr)
        return;
    relay->setParent(&m_relayOwner);
    QObject::connect(receiver, &QObject::destroyed, relay.get(), [ended = relay.get()] { delete ended; });
    static_cast<void>(relay.release()); // the parent owns it now
}

GuiComponentTools::GuiComponentTools(GuiComponentCommon* common, const QString& componentName)
    : d(std::make_unique<Private>(common, componentName))
{
    faults::mayRaise("GuiComponentTools::GuiComponentTools");
}

GuiComponentTools::~GuiComponentTools()
{
    if (d->common)
        d->common->d->Forget(this);
}

void GuiComponentTools::SetParams(const QString& /*params*/) {}

void GuiComponentTools::OnReloadedValues() {}

GuiComponentCommon* GuiComponentTools::GetCommon() const
{
    if (faults::failsByResult("GuiComponentTools::GetCommon"))
        return nullptr;
    return d->common;
}

QString GuiComponentTools::GetComponentPath() const
{
    faults::mayRaise("GuiComponentTools::GetComponentPath");
    return d->componentName;
}

QString GuiComponentTools::GetParameterPath() const
{
    faults::mayRaise("GuiComponentTools::GetParameterPath");
    return d->componentName + QLatin1String("Parameters/");
}

QString GuiComponentTools::GetGlobalPath() const
{
    faults::mayRaise("GuiComponentTools::GetGlobalPath");
    return QStringLiteral("/GLOBAL/");
}

void GuiComponentTools::SetOffline(bool offline)
{
    faults::mayRaise("GuiComponentTools::SetOffline");
    d->offline = offline;
}

bool GuiComponentTools::IsOffline() const
{
    faults::mayRaise("GuiComponentTools::IsOffline");
    return d->offline;
}

void GuiComponentTools::AddValue(values::ValueBase* value, QObject* receiver, const char* slot)
{
    faults::mayRaise("GuiComponentTools::AddValue");
    d->MakeRelay(value, receiver, slot);
}

values::ValueBase* GuiComponentTools::LinkValue(const QString& localName, const QString& path, QObject* receiver,
                                                const char* slot)
{
    if (faults::failsByResult("GuiComponentTools::LinkValue"))
        return nullptr;
    values::Tree* const tree = values::Tree::Instance();
    values::ValueBase* const target = tree->FindValue(path);
    values::ValueBase* const interfaceValue = tree->FindValue(GetComponentPath() + localName);
    const bool possible =
        target != nullptr && interfaceValue != nullptr && target->GetType() == interfaceValue->GetType() && d->common;
    if (d->common)
        d->common->d->SetLink(d->Key(localName), this, nullptr);
    if (!possible)
        return nullptr;
    const QPointer<const QObject> alive(d->LifeSign());
    auto link = std::make_unique<ValueLink>(*target, *interfaceValue);
    // Taking the content over tells the interface value's observers, who may do anything.
    if (alive.isNull() || link->IsOver() || !d->common)
        return nullptr;
    d->common->d->SetLink(d->Key(localName), this, std::move(link));
    d->MakeRelay(interfaceValue, receiver, slot);
    return interfaceValue;
}

void GuiComponentTools::WritebackValue(const QString& localName)
{
    faults::mayRaise("GuiComponentTools::WritebackValue");
    if (!d->common)
        return;
    if (ValueLink* const link = d->common->d->FindLink(d->Key(localName)))
        link->Writeback();
}

void GuiComponentTools::AddGlobalValue(values::ValueBase* value, const QString& name, QObject* receiver,
                                       const char* slot)
{
    faults::mayRaise("GuiComponentTools::AddGlobalValue");
    if (value == nullptr)
        return;
    if (d->common)
        d->common->d->SetGlobalValue(name, value);
    d->MakeRelay(value, receiver, slot);
}

values::ValueBase* GuiComponentTools::ConnectGlobalValue(const QString& name, QObject* receiver, const char* slot)
{
    if (faults::failsByResult("GuiComponentTools::ConnectGlobalValue"))
        return nullptr;
    values::ValueBase* const value = GetGlobalValue(name);
    d->MakeRelay(value, receiver, slot);
    return value;
}

values::ValueBase* GuiComponentTools::GetGlobalValue(const QString& name) const
{
    if (faults::failsByResult("GuiComponentTools::GetGlobalValue"))
        return nullptr;
    values::ValueBase* const published = d->common ? d->common->d->FindGlobalValue(name) : nullptr;
    return published != nullptr ? published : values::Tree::Instance()->FindValue(GetGlobalPath() + name);
}

void GuiComponentTools::AddParameterSet(const QString& name, QObject* receiver, const char* slot)
{
    faults::mayRaise("GuiComponentTools::AddParameterSet");
    if (d->common)
        d->common->d->SetParameterSet(d->Key(name), this, SlotCaller::Make<SlotCaller>(receiver, slot));
}

void GuiComponentTools::UpdateParameterSet(const QString& name, const QString& xml)
{
    faults::mayRaise("GuiComponentTools::UpdateParameterSet");
    GuiComponentCommon* const common = d->common;
    if (common == nullptr)
        return;
    const auto key = d->Key(name);
    common->d->parameterContents[key] = xml;
    emit common->si_parameterSetUpdated(key.first, key.second); // last: whoever is told may delete what he likes
}

QString GuiComponentTools::GetPGXMLFilename(const QString& name, const QString& kind) const
{
    faults::mayRaise("GuiComponentTools::GetPGXMLFilename");
    const QString file = QStringLiteral("%1_%2.xml").arg(name, kind);
    const QString folder = d->common ? d->common->d->formFolder : QString();
    return folder.isEmpty() ? file : QDir(folder).filePath(file);
}

} // namespace VelmarGui
