#include "comparison.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace benchmarks {

namespace {

const QString timeFigure = QStringLiteral("time");
const QString growthFigure = QStringLiteral("growth");

[[noreturn]] void fail(const QString& message)
{
    throw std::runtime_error(message.toStdString());
}

QString relationText(Goal::Relation relation)
{
    return relation == Goal::Relation::AtMost ? QStringLiteral("at most") : QStringLiteral("at least");
}

Goal toGoal(const QString& line, int lineNumber)
{
    QStringList columns = line.split(QLatin1Char(';'));
    if (columns.size() != 7)
        fail(QStringLiteral("Line %1: 7 columns expected, %2 found").arg(lineNumber).arg(columns.size()));
    for (QString& column : columns) {
        column = column.trimmed();
        if (column.isEmpty())
            fail(QStringLiteral("Line %1: an empty column").arg(lineNumber));
    }

    Goal goal{columns[0], columns[1], columns[2], columns[3], columns[4]};
    if (goal.reference == QLatin1String("-"))
        goal.reference.clear();
    if (goal.figure == growthFigure && goal.reference.isEmpty())
        fail(QStringLiteral("Line %1: growth needs a reference").arg(lineNumber));
    if (columns[5] == relationText(Goal::Relation::AtLeast))
        goal.relation = Goal::Relation::AtLeast;
    else if (columns[5] != relationText(Goal::Relation::AtMost))
        fail(QStringLiteral("Line %1: neither \"at most\" nor \"at least\": %2").arg(lineNumber).arg(columns[5]));
    bool isNumber = false;
    goal.limit = columns[6].toDouble(&isNumber);
    if (!isNumber)
        fail(QStringLiteral("Line %1: not a number: %2").arg(lineNumber).arg(columns[6]));
    return goal;
}

double nanoseconds(const QString& unit)
{
    static const QMap<QString, double> units{
        {QStringLiteral("ns"), 1.0},
        {QStringLiteral("us"), 1e3},
        {QStringLiteral("ms"), 1e6},
        {QStringLiteral("s"), 1e9},
    };
    return units.value(unit, std::nan(""));
}

bool measuresRealTime(const QString& benchmark)
{
    return benchmark.endsWith(QLatin1String("/real_time")) || benchmark.endsWith(QLatin1String("/manual_time"));
}

/// The number that ends a benchmark's name: 1000 for "Fill/rows:1000" and "Fill/1000/real_time"; NaN when there is
/// none.
double argumentOf(const QString& benchmark)
{
    QStringList parts = benchmark.split(QLatin1Char('/'));
    if (parts.last().endsWith(QLatin1String("_time")))
        parts.removeLast();
    bool isNumber = false;
    const double argument = parts.isEmpty() ? 0.0 : parts.last().section(QLatin1Char(':'), -1).toDouble(&isNumber);
    return isNumber ? argument : std::nan("");
}

std::optional<double> ifNumber(double value)
{
    return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

QString toText(double value)
{
    return QString::number(value, 'g', std::abs(value) < 1000.0 ? 3 : 6);
}

} // namespace

bool Goal::isMetBy(double value) const
{
    return relation == Relation::AtMost ? value <= limit : value >= limit;
}

std::vector<Goal> readGoals(const QString& text)
{
    std::vector<Goal> goals;
    int lineNumber = 0;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        ++lineNumber;
        const QString content = line.trimmed();
        if (!content.isEmpty() && !content.startsWith(QLatin1Char('#')))
            goals.push_back(toGoal(content, lineNumber));
    }
    return goals;
}

Run::Run(const QByteArray& json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    const QJsonValue entries = document.object().value(QLatin1String("benchmarks"));
    if (!entries.isArray())
        fail(QStringLiteral("Not the output of a benchmark program"));
    const QJsonArray array = entries.toArray();
    for (const QJsonValue& entry : array) {
        const QJsonObject repetition = entry.toObject();
        const bool isAggregate = repetition.value(QLatin1String("run_type")) != QLatin1String("iteration");
        if (!isAggregate && !repetition.value(QLatin1String("error_occurred")).toBool())
            m_repetitions[repetition.value(QLatin1String("run_name")).toString()].push_back(repetition);
    }
}

std::optional<double> Run::time(const QString& benchmark) const
{
    const QLatin1String field(measuresRealTime(benchmark) ? "real_time" : "cpu_time");
    std::vector<double> times;
    for (const QJsonObject& repetition : m_repetitions.value(benchmark))
        times.push_back(repetition.value(field).toDouble(std::nan("")) *
                        nanoseconds(repetition.value(QLatin1String("time_unit")).toString()));
    return times.empty() ? std::nullopt : ifNumber(*std::min_element(times.begin(), times.end()));
}

std::optional<double> Run::counter(const QString& benchmark, const QString& name) const
{
    std::vector<double> values;
    for (const QJsonObject& repetition : m_repetitions.value(benchmark)) {
        if (!repetition.value(name).isDouble())
            return std::nullopt;
        values.push_back(repetition.value(name).toDouble());
    }
    return median(std::move(values));
}

std::optional<double> Run::figure(const Goal& goal, const QString& benchmark) const
{
    const bool isTime = goal.figure == timeFigure || goal.figure == growthFigure;
    return isTime ? time(benchmark) : counter(benchmark, goal.figure);
}

std::optional<double> Run::valueFor(const Goal& goal) const
{
    const std::optional<double> measured = figure(goal, goal.measured);
    if (!measured || goal.reference.isEmpty())
        return measured;
    const std::optional<double> reference = figure(goal, goal.reference);
    if (!reference)
        return std::nullopt;
    const double ratio = *measured / *reference;
    if (goal.figure != growthFigure)
        return ifNumber(ratio);
    return ifNumber(std::log(ratio) / std::log(argumentOf(goal.measured) / argumentOf(goal.reference)));
}

std::optional<double> Outcome::median() const
{
    return benchmarks::median(values);
}

bool Outcome::isMet() const
{
    const std::optional<double> value = median();
    return value && goal.isMetBy(*value);
}

Outcome outcome(const Goal& goal, const std::vector<Run>& runs)
{
    Outcome result{goal, {}};
    for (const Run& run : runs) {
        const std::optional<double> value = run.valueFor(goal);
        if (!value)
            return {goal, {}};
        result.values.push_back(*value);
    }
    std::sort(result.values.begin(), result.values.end());
    return result;
}

std::optional<double> median(std::vector<double> values)
{
    if (values.empty())
        return std::nullopt;
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2.0;
}

QString toTable(const std::vector<Outcome>& outcomes)
{
    const QString row = QStringLiteral("%1 %2 %3 %4 %5  %6\n");
    QString table = row.arg(QStringLiteral("subject"), -20)
                        .arg(QStringLiteral("what"), -66)
                        .arg(QStringLiteral("goal"), -14)
                        .arg(QStringLiteral("measured"), 9)
                        .arg(QStringLiteral("least to greatest"), 19)
                        .arg(QStringLiteral("result"));
    int met = 0;
    for (const Outcome& result : outcomes) {
        const Goal& goal = result.goal;
        const auto value = result.median();
        table +=
            row.arg(goal.subject, -20)
                .arg(goal.what, -66)
                .arg(relationText(goal.relation) + QLatin1Char(' ') + toText(goal.limit), -14)
                .arg(value ? toText(*value) : QStringLiteral("missing"), 9)
                .arg(value ? QStringLiteral("%1 to %2").arg(toText(result.values.front()), toText(result.values.back()))
                           : QString(),
                     19)
                .arg(result.isMet() ? QStringLiteral("pass") : QStringLiteral("FAIL"));
        met += result.isMet() ? 1 : 0;
    }
    return table + QStringLiteral("%1 of %2 goals met\n").arg(met).arg(outcomes.size());
}

} // namespace benchmarks
