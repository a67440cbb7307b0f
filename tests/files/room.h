#pragma once

#include <QtGlobal>

namespace testsupport {

/// How much room the disk has for this process while this lives. Bytes of regular files that are written beyond it are
/// not taken, as by a disk that is full; everything else works as ever. One at a time.
class Room
{
public:
    explicit Room(qint64 bytes);
    ~Room();
    Room(const Room&) = delete;
    Room& operator=(const Room&) = delete;

    /// Bytes that still fit.
    [[nodiscard]] static qint64 left();
};

} // namespace testsupport
