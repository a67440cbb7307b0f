#include "settingstable.h"

#include "valuetools.h"

#include "jobxml/df_settings.h"

#include <QStringList>

namespace VelmarGui {

namespace {

struct NamedNumber
{
    const char* name;
    double number;
};

template <std::size_t count>
void addNamedNumbers(values::ValueSelection& selection, const NamedNumber (&items)[count])
{
    int key = 0;
    for (const NamedNumber& item : items)
        selection.AddItem(QString::fromLatin1(item.name), item.number, key++);
}

/// The averaging time in ms that @p text stands for.
double averagingMilliseconds(const QString& text)
{
    QString time = text.toLower().remove(QLatin1Char(' '));
    if (time == QLatin1String("off"))
        return 0.0;
    const QChar unit = time.isEmpty() ? QChar() : time.back();
    if (!time.isEmpty() && !unit.isDigit())
        time.chop(1);
    const int number = time.toInt();
    return unit == QLatin1Char('m') ? number : number * 1000.0;
}

/// Gives a value its limits, items and initial content, by kind. Whoever is told of one of them may delete the value:
/// the rest is not done then.
class Initialiser
{
public:
    explicit Initialiser(const ConfigEntry& entry)
        : m_entry(entry)
    {
    }

    void operator()(const values::ValuePtr<values::BoolValue>& value) const
    {
        value->SetValue(m_entry.initial != 0, nullptr);
    }

    void operator()(const values::ValuePtr<values::IntValue>& value) const
    {
        value->SetMinMax(static_cast<int>(m_entry.range.min), static_cast<int>(m_entry.range.max),
                         static_cast<int>(m_entry.range.step), nullptr);
        if (value)
            value->SetValue(m_entry.initial, nullptr);
    }

    void operator()(const values::ValuePtr<values::DoubleValue>& value) const
    {
        value->SetMinMax(m_entry.range.min, m_entry.range.max, m_entry.range.step, nullptr);
        if (value)
            value->SetValue(m_entry.initial, nullptr);
    }

    void operator()(const values::ValuePtr<values::ValueSelection>& value) const
    {
        exchangeItems(*value.get(), [this](values::ValueSelection& items) {
            items.DeleteItems();
            m_entry.addItems(items);
        });
        if (value)
            value->SelectIndex(m_entry.initial);
    }

private:
    const ConfigEntry& m_entry;
};

template <typename T>
void createAs(values::ValuePtr<T> ConfigValues::*, const ConfigEntry& entry, const QString& path)
{
    values::ValuePtr<T> value;
    value.Assign(values::CreateOrLink<T>(path));
    Initialiser{entry}(value);
    if (value && entry.initialState)
        value->SetState(*entry.initialState, nullptr);
}

QString pathOf(const ConfigEntry& entry, const QString& handlerRoot)
{
    return handlerRoot + QString::fromLatin1(entry.path);
}

} // namespace

namespace config {

void addWorkflows(values::ValueSelection& selection)
{
    selection.AddItems(JobXml::DF_Settings::GetWorkflows());
}

void addLocateTypes(values::ValueSelection& selection)
{
    selection.AddItems(JobXml::DF_Settings::GetLocateTypes());
}

void addActivities(values::ValueSelection& selection)
{
    selection.AddItems(JobXml::DF_Settings::GetActivitys());
}

void addActivityTriggers(values::ValueSelection& selection)
{
    selection.AddItems(JobXml::DF_Settings::GetActivityTriggers());
}

void addModes(values::ValueSelection& selection)
{
    addNamedNumbers(selection, {{"Normal", 0.0}, {"Cont", 0.0}, {"Gate", 0.0}});
}

void addBandwidths(values::ValueSelection& selection)
{
    addNamedNumbers(selection, {{"120 Hz", 120.0},
                                {"300 Hz", 300.0},
                                {"600 Hz", 600.0},
                                {"1.2 kHz", 1200.0},
                                {"3.0 kHz", 3000.0},
                                {"5.0 kHz", 5000.0},
                                {"7.5 kHz", 7500.0},
                                {"12.0 kHz", 12000.0},
                                {"15.0 kHz", 15000.0},
                                {"30.0 kHz", 30000.0},
                                {"60.0 kHz", 60000.0},
                                {"100.0 kHz", 100000.0},
                                {"150.0 kHz", 150000.0},
                                {"200.0 kHz", 200000.0}});
}

void addAverageTimes(values::ValueSelection& selection)
{
    addAveragingItems(selection, QStringLiteral("Off,200m,500m,1s,2s,5s,10s"));
}

} // namespace config

void createConfigValue(const ConfigEntry& entry, const QString& handlerRoot)
{
    const QString path = pathOf(entry, handlerRoot);
    std::visit([&](auto member) { createAs(member, entry, path); }, entry.member);
}

values::ValueBase* bindConfigValue(const ConfigEntry& entry, ConfigValues& values, const QString& handlerRoot)
{
    const QString path = pathOf(entry, handlerRoot);
    return std::visit(
        [&](auto member) -> values::ValueBase* {
            values::LinkByPath(values.*member, path);
            return (values.*member).get();
        },
        entry.member);
}

void addAveragingItems(values::ValueSelection& selection, const QString& list)
{
    int key = 0;
    const QStringList texts = list.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& text : texts)
        selection.AddItem(text, averagingMilliseconds(text), key++);
}

} // namespace VelmarGui
