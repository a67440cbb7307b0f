#pragma once

#include "drivers/scenario.h"
#include "drivers/simulatednetwork.h"

/// The simulated network that comes with the workbench. It measures the same in every run, and at once.
inline std::unique_ptr<workbench::DfSource> shippedNetwork()
{
    using namespace workbench;
    Loaded<Scenario> scenario = loadScenario(QStringLiteral(WORKBENCH_FOLDER "/scenarios/five-stations.json"));
    if (!scenario)
        qFatal("%s", qPrintable(scenario.errors.join('\n')));
    return std::make_unique<SimulatedNetwork>(std::move(*scenario.value), 1, Pacing::Immediate);
}
