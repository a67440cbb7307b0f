#include "app/operatorsettings.h"

#include "app/session.h"

#include "valueframework/tree.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>

namespace workbench {

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("workbench", text);
}

struct Setting
{
    const char* name;
    const char* path; ///< below the handler's folder; from the root of the tree when it begins with "/"
};

constexpr Setting settings[] = {
    {"Frequency", "/GLOBAL/Frequency"},
    {"Bandwidth", "Config/Bandwidth"},
    {"Averaging", "Config/AverageTime"},
    {"Mode", "Config/Mode"},
    {"Quality", "Config/Quality"},
    {"Threshold", "Config/Threshold"},
    {"FrequencyOffset", "Config/DFFrequencyOffset"},
    {"Span", "Config/DFSpan"},
    {"Workflow", "Config/DFLocateWorkflow"},
    {"Type", "Config/DFLocateType"},
    {"Activity", "Config/DFLocateActivity"},
    {"Trigger", "Config/DFLocateActivityTrigger"},
};

QString pathOf(const QString& name)
{
    const auto* const setting =
        std::find_if(std::begin(settings), std::end(settings),
                     [&name](const Setting& candidate) { return name == QLatin1String(candidate.name); });
    if (setting == std::end(settings))
        return {};
    const QString path = QString::fromLatin1(setting->path);
    return path.startsWith(QLatin1Char('/')) ? path : handlerRoot() + path;
}

/// Some lists are of texts only: their numbers are all 0 and stand for nothing.
bool hasNumbers(const values::ValueSelection& selection)
{
    for (int i = 0; i < selection.GetItemCount(); ++i) {
        if (selection.GetItem(i)->GetValue() != 0.0)
            return true;
    }
    return false;
}

QString allowedItems(const values::ValueSelection& selection)
{
    const bool withNumbers = hasNumbers(selection);
    QStringList allowed;
    for (int i = 0; i < selection.GetItemCount(); ++i) {
        const values::SelectionItem& item = *selection.GetItem(i);
        const QString number = QString::number(item.GetValue(), 'f', QLocale::FloatingPointShortest);
        allowed += withNumbers ? QStringLiteral("\"%1\" (%2)").arg(item.GetName(), number)
                               : QStringLiteral("\"%1\"").arg(item.GetName());
    }
    return tr("one of %1").arg(allowed.join(QStringLiteral(", ")));
}

bool selectByNumber(values::ValueSelection& selection, const QString& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber && hasNumbers(selection) && selection.Select(number, nullptr, true);
}

/// Sets @p value from @p text; else what would have been allowed.
std::optional<QString> set(values::ValueSelection& value, const QString& text)
{
    if (value.Select(text, nullptr) || selectByNumber(value, text))
        return std::nullopt;
    return allowedItems(value);
}

template <typename NumericValue>
std::optional<QString> setNumber(NumericValue& value, const QString& text, const char* allowed)
{
    // First into use, then the number: so do the spin boxes.
    NumericValue trial;
    trial.SetMinMax(value.GetMin(), value.GetMax(), value.GetStep(), nullptr);
    if (trial.SetStringValue(text, nullptr)) {
        value.SetState(values::StateOrdinary, nullptr);
        value.SetStringValue(text, nullptr);
        return std::nullopt;
    }
    const auto shown = [](double number) { return QString::number(number, 'g', 10); };
    return tr(allowed).arg(shown(value.GetMin()), shown(value.GetMax()));
}

std::optional<QString> set(values::ValueBase& value, const QString& text)
{
    if (auto* const selection = dynamic_cast<values::ValueSelection*>(&value))
        return set(*selection, text);
    if (auto* const whole = dynamic_cast<values::IntValue*>(&value))
        return setNumber(*whole, text, "a whole number from %1 to %2");
    if (auto* const number = dynamic_cast<values::DoubleValue*>(&value))
        return setNumber(*number, text, "a number from %1 to %2");
    return tr("a value of another kind in this place");
}

} // namespace

QStringList settingNames()
{
    QStringList names;
    for (const Setting& setting : settings)
        names += QString::fromLatin1(setting.name);
    return names;
}

std::optional<QString> applySetting(const SettingAssignment& setting)
{
    values::ValueBase* const value = values::Tree::Instance()->FindValue(pathOf(setting.name));
    if (value == nullptr)
        return tr("Option --set %1: there is no such setting here.").arg(setting.name);
    const auto allowed = set(*value, setting.value);
    if (!allowed)
        return std::nullopt;
    return tr("Option --set %1: \"%2\" was given, but %3 was expected.").arg(setting.name, setting.value, *allowed);
}

} // namespace workbench
