#pragma once

#include "drivers/fileerrors.h"

namespace fuzzing {

/// The errors of a file that name a place: without the count of the rest.
inline QStringList placed(const QStringList& errors)
{
    return errors.mid(0, static_cast<int>(workbench::FileErrors::mostKept));
}

} // namespace fuzzing
