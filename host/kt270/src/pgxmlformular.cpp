#include "kt270/pgxmlformular.h"

#include "faultpoints/faultpoint.h"
#include "formtext.h"
#include "pgxmlformularprivate.h"
#include "shortcut.h"

#include "ztbase/errorhandler.h"

#include <QCoreApplication>
#include <QVariantMap>
#include <QXmlStreamWriter>

#include <exception>

namespace KT270 {

namespace {

QString collapsedKey()
{
    return QStringLiteral("collapsed");
}

void traceIfWanted(const QString& text, unsigned short line)
{
    if ((ErrorHandler::Instance()->GetTraceMask() & ErrorHandler::ComponentTraces) != 0)
        _Q_Trace(text, QStringLiteral("kt270/pgxmlformular"), line);
}

void traceScriptError(const ScriptOutcome& outcome)
{
    traceIfWanted(QStringLiteral("Form script, line %1: %2").arg(QString::number(outcome.line), outcome.error),
                  __LINE__);
}

} // namespace

PgXmlFormular::Private::Private(FormDescription formDescription, std::unique_ptr<FormScript> formScript,
                                std::vector<EnableRequest> startRequests)
    : description(std::move(formDescription))
    , script(std::move(formScript))
    , start(std::move(startRequests))
    , widget(new QScrollArea)
    , sheet(new PgXmlSheet(Translated(description.title)))
{
    widget->setWidget(sheet);
    widget->setWidgetResizable(true);
    widget->setFrameShape(QFrame::NoFrame);
}

PgXmlFormular::Private::~Private()
{
    delete widget.data(); // before the contents that its widgets show
}

void PgXmlFormular::Private::Update(Observable* /*source*/, TChangeCode code)
{
    if (code == ChangeContent && sheet)
        sheet->setModified(true);
}

void PgXmlFormular::Private::CreateFields()
{
    for (const FieldDescription& field : description.fields) {
        const QString name = withoutShortCut(Translated(field.label));
        fields.push_back(std::make_unique<FormField>(field, name, *this));
    }
    hasFields = true;
    Enable(start);
}

FormField* PgXmlFormular::Private::FindField(const QString& name) const
{
    for (const auto& field : fields) {
        if (field->GetDescription().name == name)
            return field.get();
    }
    return nullptr;
}

bool PgXmlFormular::Private::Enable(const std::vector<EnableRequest>& requests)
{
    const QPointer<PgXmlFormular> form(q);
    std::exception_ptr firstFailure;
    for (const EnableRequest& request : requests) {
        try {
            FindField(request.field)->SetEnabled(request.enable);
        } catch (...) { // an observer of the bound value; the fields of a group change together all the same
            if (!firstFailure)
                firstFailure = std::current_exception();
        }
        if (!form)
            break;
    }
    if (form)
        ShowGroups();
    if (firstFailure)
        std::rethrow_exception(firstFailure);
    return !form.isNull();
}

void PgXmlFormular::Private::EnableGroupByOperator(const QString& group, bool enable)
{
    std::vector<EnableRequest> requests;
    for (const auto& field : fields) {
        if (field->GetDescription().Group() == group)
            requests.push_back({field->GetDescription().name, enable});
    }
    const QPointer<PgXmlFormular> form(q);
    try {
        Enable(requests);
    } catch (...) {
        // Goes no further: the check box knows nothing of it.
        traceIfWanted(QStringLiteral("Exception in an observer of a value that the form has enabled or disabled"),
                      __LINE__);
    }
    if (form && sheet)
        sheet->setModified(true);
}

bool PgXmlFormular::Private::IsGroupEnabled(const QString& group) const
{
    return std::any_of(fields.begin(), fields.end(), [&group](const auto& field) {
        return field->GetDescription().Group() == group && field->IsEnabled();
    });
}

void PgXmlFormular::Private::ShowGroups()
{
    for (const auto& [group, box] : groupBoxes) {
        if (box)
            box->setChecked(IsGroupEnabled(group));
    }
}

void PgXmlFormular::Private::InsertField(const FormField& field)
{
    const FieldDescription& described = field.GetDescription();
    QString label = Translated(described.label);
    if (!described.unit.isEmpty())
        label = QStringLiteral("%1 [%2]").arg(label, described.unit);
    QWidget* const fieldWidget = field.CreateWidget();
    fieldWidget->setObjectName(described.name);
    sheet->InsertWidget(label, described.name, fieldWidget, described.row);
}

void PgXmlFormular::Private::InsertGroup(const GroupDescription& group)
{
    auto* const box = new QCheckBox(Translated(group.label));
    box->setObjectName(group.name);
    const QString name = group.name;
    connect(box, &QCheckBox::clicked, q, [this, name](bool checked) { EnableGroupByOperator(name, checked); });
    groupBoxes[name] = box;
    sheet->InsertWidget(QString(), name, box, group.row);
}

QString PgXmlFormular::Private::Translated(const QString& text) const
{
    return QCoreApplication::translate(description.context.toUtf8().constData(), text.toUtf8().constData());
}

void PgXmlFormular::Private::KeepConfiguration() const
{
    if (common && sheet && !configurationName.isEmpty())
        common->setProperty(configurationName.constData(), QVariantMap{{collapsedKey(), sheet->isCollapsed()}});
}

void PgXmlFormular::Private::RestoreConfiguration() const
{
    if (!common || !sheet || configurationName.isEmpty())
        return;
    const QVariantMap kept = common->property(configurationName.constData()).toMap();
    if (kept.contains(collapsedKey()))
        sheet->setCollapsed(kept.value(collapsedKey()).toBool());
}

PgXmlFormular::PgXmlFormular(std::unique_ptr<Private> contents)
    : d(std::move(contents))
{
    d->q = this;
    connect(d->sheet, &PgXmlSheet::si_modified, this, &PgXmlFormular::si_parametersModified);
    connect(d->sheet, &PgXmlSheet::si_collapsedChanged, this, [this] { d->KeepConfiguration(); });
}

PgXmlFormular::~PgXmlFormular() = default;

void PgXmlFormular::CreateValueTree()
{
    faults::mayRaise("PgXmlFormular::CreateValueTree");
    if (!d->hasFields)
        d->CreateFields();
}

bool PgXmlFormular::InitVTValue(const QString& field, values::ValueBase* value)
{
    if (faults::failsByResult("PgXmlFormular::InitVTValue"))
        return false;
    FormField* const found = d->FindField(field);
    return found != nullptr && found->Bind(value);
}

bool PgXmlFormular::InitEnumeration(const QString& enumeration, values::ValueSelection* items, const QStringList& texts)
{
    if (faults::failsByResult("PgXmlFormular::InitEnumeration"))
        return false;
    if (items == nullptr || !d->hasFields || !d->description.enumerations.contains(enumeration))
        return false;
    for (const auto& field : d->fields) {
        if (field->GetDescription().enumeration == enumeration)
            field->SetItems(*items, texts);
    }
    return true;
}

void PgXmlFormular::CreateGUI(bool online)
{
    faults::mayRaise("PgXmlFormular::CreateGUI");
    d->isOnline = online;
    if (!d->hasFields || !d->sheet || std::exchange(d->hasGui, true))
        return;
    for (const auto& field : d->fields)
        d->InsertField(*field);
    for (const GroupDescription& group : d->description.groups)
        d->InsertGroup(group);
    d->ShowGroups();
}

bool PgXmlFormular::SetXmlString(const QString& xml)
{
    if (faults::failsByResult("PgXmlFormular::SetXmlString"))
        return false;
    QSet<QString> names;
    for (const auto& field : d->fields)
        names.insert(field->GetDescription().name);
    const std::optional<FormText> text = readFormText(xml, d->description.name, names);
    if (!d->hasFields || !text)
        return false;
    for (const auto& field : d->fields) {
        const auto content = text->constFind(field->GetDescription().name);
        if (content != text->constEnd())
            field->SetText(*content);
    }
    if (d->sheet)
        d->sheet->setModified(false);
    return true;
}

QString PgXmlFormular::GetXmlString()
{
    faults::mayRaise("PgXmlFormular::GetXmlString");
    QString xml;
    if (!d->hasFields)
        return xml;
    QXmlStreamWriter writer(&xml);
    writer.writeStartElement(d->description.name);
    QString group;
    for (const auto& field : d->fields) {
        const FieldDescription& described = field->GetDescription();
        if (described.Group() != group) {
            if (!group.isEmpty())
                writer.writeEndElement();
            group = described.Group();
            if (!group.isEmpty())
                writer.writeStartElement(group);
        }
        const std::optional<QString> text = field->GetText();
        if (field->IsEnabled() && text)
            writer.writeTextElement(described.ElementName(), *text);
    }
    if (!group.isEmpty())
        writer.writeEndElement();
    writer.writeEndElement();
    if (!d->isOnline && d->sheet)
        d->sheet->setModified(false);
    return xml;
}

bool PgXmlFormular::EvaluateScript(const QString& code)
{
    if (faults::failsByResult("PgXmlFormular::EvaluateScript"))
        return false;
    if (!d->hasFields)
        return false;
    const ScriptOutcome outcome = d->script->Run(code);
    if (!outcome.error.isEmpty()) {
        traceScriptError(outcome);
        return false;
    }
    d->Enable(outcome.requests);
    return true;
}

void PgXmlFormular::SetVTValue(values::ValueBase* value, IObserver* /*observer*/, bool refresh)
{
    faults::mayRaise("PgXmlFormular::SetVTValue");
    for (const auto& field : d->fields) {
        if (field->GetBound() == value)
            field->TakeOver(refresh);
    }
}

PgXmlSheet* PgXmlFormular::GetSheet() const
{
    if (faults::failsByResult("PgXmlFormular::GetSheet"))
        return nullptr;
    return d->sheet;
}

QWidget* PgXmlFormular::GetWidget() const
{
    if (faults::failsByResult("PgXmlFormular::GetWidget"))
        return nullptr;
    return d->widget;
}

void PgXmlFormular::Show()
{
    faults::mayRaise("PgXmlFormular::Show");
    if (d->widget)
        d->widget->show();
}

void PgXmlFormular::SetConfigObject(VelmarGui::GuiComponentCommon* common, const QString& name)
{
    faults::mayRaise("PgXmlFormular::SetConfigObject");
    d->common = common;
    d->configurationName = name.toUtf8();
    d->RestoreConfiguration();
}

void PgXmlFormular::RestoreConfiguration()
{
    faults::mayRaise("PgXmlFormular::RestoreConfiguration");
    d->RestoreConfiguration();
}

} // namespace KT270
