#pragma once

#include "app/operatorsettings.h"
#include "app/resulthistory.h"
#include "drivers/recording.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace workbench {

/// What the caller of the program asked for, checked for conflicts. Files are not looked at.
struct Options
{
    bool headless = false;          ///< no window: do the job and print what it shows
    bool allowUnsafeFolder = false; ///< load a component from where everybody can write
    bool offline = false;           ///< no driver
    bool trace = false;             ///< traces go to the standard error stream
    bool json = false;              ///< results as one JSON document

    std::optional<int> shots;            ///< single measurements, at least 1
    std::optional<double> cyclicSeconds; ///< time of cyclic measuring in s, above 0, one day at most
    quint64 seed = 1;                    ///< of the simulation

    QString scenarioFile;       ///< empty: the scenario that comes with the program
    QString recordingFile;      ///< empty: the network is simulated
    QString componentFile;      ///< empty: the component that comes with the program
    QString screenshotFile;     ///< empty: none
    QString recordFile;         ///< empty: results are not recorded
    QString backgroundFile;     ///< GeoJSON behind the map; empty: none
    QString parameterSetFolder; ///< empty: the folder for the program's data
    QString historyFile;        ///< empty: the one in the folder for the program's data; without a window none

    HistoryChoice historyChoice; ///< of the stored bearings that make positions

    std::vector<SettingAssignment> settings; ///< to be made before anything is measured, in this order

    RecordedDefaults recordedDefaults; ///< what to assume where the recording says nothing
};

/// The command line as it was understood: options to work with, or a text to print instead.
struct CommandLine
{
    Options options;
    QStringList errors;      ///< full sentences, one for everything that is wrong; empty: the options are good
    QString informationText; ///< help or version, when asked for; nothing else is to be done then
};

/// Reads @p arguments, the program's name first. Needs no application object.
[[nodiscard]] CommandLine readCommandLine(const QStringList& arguments);

} // namespace workbench
