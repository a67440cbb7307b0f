#pragma once

#include "ztbase/observable.h"

#include <vector>

/// Tells all observers, without any safety. A library of its own, as the one of the observables: calls into a program
/// that lies far away in memory take the processor longer than calls within it.
[[gnu::visibility("default")]] void tellAll(const std::vector<IObserver*>& observers, Observable* source,
                                            TChangeCode code);
