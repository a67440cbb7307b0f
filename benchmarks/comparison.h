#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QMap>
#include <QString>

#include <optional>
#include <vector>

namespace benchmarks {

/// One row of the table of goals: how a measured benchmark has to stand to a reference benchmark of the same program.
struct Goal
{
    enum class Relation
    {
        AtMost,
        AtLeast
    };

    QString subject;   ///< which program measures it: bench_<subject>
    QString what;      ///< for people
    QString figure;    ///< "time", "growth" or the name of a counter
    QString measured;  ///< name of a benchmark
    QString reference; ///< name of a benchmark; empty: the figure itself is compared
    Relation relation = Relation::AtMost;
    double limit = 0.0;

    /// A comparison with NaN is never met.
    [[nodiscard]] bool isMetBy(double value) const;
};

/// Reads the table of goals: one goal a line, its columns in the order above separated by ";", "-" for no reference,
/// "at most" or "at least"; empty lines and those beginning with "#" are skipped. Raises std::runtime_error, which
/// names the line, for anything else.
[[nodiscard]] std::vector<Goal> readGoals(const QString& text);

/// What one run of a program has measured.
class Run
{
public:
    /// @p json is the program's output with --benchmark_format=json. Raises std::runtime_error when it is not.
    explicit Run(const QByteArray& json);

    /// Time of one iteration in ns: the least of the repetitions, because whatever disturbs a repetition adds to it.
    /// Processor time, or real time for a benchmark that says in its name that it measures that. Nothing for an unknown
    /// benchmark and one that failed.
    [[nodiscard]] std::optional<double> time(const QString& benchmark) const;
    /// Median of the repetitions. Nothing for an unknown benchmark or counter.
    [[nodiscard]] std::optional<double> counter(const QString& benchmark, const QString& name) const;

    /// The value to hold against the goal's limit:
    /// - time, counter: that of the measured benchmark divided by that of the reference, or itself without a reference;
    /// - growth: the exponent with which the time grows from the number that ends the reference's name to the number
    ///   that ends the measured benchmark's name.
    /// Nothing when a part of it is missing or the result is not a number.
    [[nodiscard]] std::optional<double> valueFor(const Goal& goal) const;

private:
    [[nodiscard]] std::optional<double> figure(const Goal& goal, const QString& benchmark) const;

    QMap<QString, std::vector<QJsonObject>> m_repetitions; // by benchmark
};

/// How a goal stands after all runs.
struct Outcome
{
    Goal goal;
    std::vector<double> values; ///< one a run, ascending; empty when a run lacks it
    [[nodiscard]] std::optional<double> median() const;
    [[nodiscard]] bool isMet() const;
};

/// Without runs no goal is met, nor is one whose value is missing in a run.
[[nodiscard]] Outcome outcome(const Goal& goal, const std::vector<Run>& runs);

/// The middle one of @p values, or the mean of the two in the middle; nothing when there are none.
[[nodiscard]] std::optional<double> median(std::vector<double> values);

/// The outcomes as a table for people, with a line at the end that says how many goals are met.
[[nodiscard]] QString toTable(const std::vector<Outcome>& outcomes);

} // namespace benchmarks
