#pragma once

#include "ztbase/ztbaseglobal.h"

class QByteArray;
class QFileDevice;

namespace Brix {

/// Writes all of @p bytes to @p file, which has to be open, through all buffers of the process. False when that fails:
/// the file's errorString() tells why, and nobody knows how much of it has been written.
///
/// To be called for everything that a QSaveFile is to hold: on a full disk its commit() leaves out what is still in the
/// buffer and puts the rest in place of the file. And a disk that becomes full takes part of the bytes first without a
/// word: only the next attempt is told why.
[[nodiscard]] ZTBASE_EXPORT bool WriteWhole(QFileDevice& file, const QByteArray& bytes);

} // namespace Brix
