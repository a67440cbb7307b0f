#pragma once

#include "ztbase/iobserver.h"

/// Hears everything and does nothing. With it in the gaps of a list a round need not look for gaps.
extern IObserver* const nobody;
