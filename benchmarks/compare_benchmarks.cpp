// Compares what the benchmark programs have measured with the goals, and prints the table of both.
//
//   compare-benchmarks <goals> <folder> <subject>...
//
// The folder holds the outputs of the programs, <subject>.<run>.json. Ends with 1 when a goal is missed, and with 2
// when a file cannot be read.

#include "comparison.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstdio>
#include <exception>
#include <stdexcept>

namespace {

QByteArray contentOf(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("it cannot be opened");
    return file.readAll();
}

/// Calls @p read with the content of a file, and says which file it was when that fails.
template <typename Read>
auto readFile(const QString& fileName, Read read)
{
    try {
        return read(contentOf(fileName));
    } catch (const std::exception& failure) {
        throw std::runtime_error(fileName.toStdString() + ": " + failure.what());
    }
}

std::vector<benchmarks::Run> runsOf(const QString& subject, const QDir& folder)
{
    std::vector<benchmarks::Run> runs;
    const QStringList names = folder.entryList({subject + QLatin1String(".*.json")}, QDir::Files);
    for (const QString& name : names)
        runs.push_back(readFile(folder.filePath(name), [](const QByteArray& json) { return benchmarks::Run(json); }));
    return runs;
}

int compare(const QStringList& arguments)
{
    const auto goals =
        readFile(arguments[1], [](const QByteArray& text) { return benchmarks::readGoals(QString::fromUtf8(text)); });
    const QDir folder(arguments[2]);
    std::vector<benchmarks::Outcome> outcomes;
    bool allMet = true;
    const QStringList subjects = arguments.mid(3);
    for (const QString& subject : subjects) {
        const std::vector<benchmarks::Run> runs = runsOf(subject, folder);
        for (const benchmarks::Goal& goal : goals) {
            if (goal.subject != subject)
                continue;
            outcomes.push_back(benchmarks::outcome(goal, runs));
            allMet = allMet && outcomes.back().isMet();
        }
    }
    std::fputs(qPrintable(benchmarks::toTable(outcomes)), stdout);
    return allMet ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 4) {
        std::fputs("usage: compare-benchmarks <goals> <folder> <subject>...\n", stderr);
        return 2;
    }
    try {
        return compare(arguments);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 2;
    }
}
