#pragma once

#include "formdescription.h"
#include "formfield.h"
#include "formscript.h"

#include "guicomponentbase/guicomponentcommon.h"
#include "kt270/pgxmlformular.h"
#include "kt270/pgxmlsheet.h"

#include <QCheckBox>
#include <QPointer>
#include <QScrollArea>

#include <map>

namespace KT270 {

class PgXmlFormular::Private final : public IObserver
{
public:
    /// @p start: what the script asked for when it was run for the first time.
    Private(FormDescription description, std::unique_ptr<FormScript> script, std::vector<EnableRequest> start);
    ~Private() override;

    /// The operator has changed a content.
    void Update(Observable* source, TChangeCode code) override;

    void CreateFields();
    [[nodiscard]] FormField* FindField(const QString& name) const;

    /// @name Enabling
    /// Observers of the bound values may end the form in it: false then.
    /// @{
    bool Enable(const std::vector<EnableRequest>& requests);
    void EnableGroupByOperator(const QString& group, bool enable);
    [[nodiscard]] bool IsGroupEnabled(const QString& group) const;
    void ShowGroups();
    /// @}

    void InsertField(const FormField& field);
    void InsertGroup(const GroupDescription& group);
    [[nodiscard]] QString Translated(const QString& text) const;

    void KeepConfiguration() const;
    void RestoreConfiguration() const;

    PgXmlFormular* q = nullptr;
    const FormDescription description;
    const std::unique_ptr<FormScript> script;
    const std::vector<EnableRequest> start;
    std::vector<std::unique_ptr<FormField>> fields;
    bool hasFields = false;
    bool hasGui = false;
    bool isOnline = false;

    QPointer<QScrollArea> widget;
    QPointer<PgXmlSheet> sheet;
    std::map<QString, QPointer<QCheckBox>> groupBoxes;
    QPointer<VelmarGui::GuiComponentCommon> common;
    QByteArray configurationName;
};

} // namespace KT270
