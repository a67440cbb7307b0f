#include "room.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <limits>

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr qint64 unlimited = std::numeric_limits<qint64>::max();
std::atomic<qint64> room{unlimited};

bool isRegularFile(int descriptor)
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

/// Has @p writeSome write as many of @p size bytes as there is room for.
template <typename WriteSome>
ssize_t limited(int descriptor, std::size_t size, WriteSome writeSome)
{
    if (size == 0 || room == unlimited || !isRegularFile(descriptor))
        return writeSome(size);
    const auto fitting = static_cast<std::size_t>(std::clamp<qint64>(room, 0, static_cast<qint64>(size)));
    if (fitting == 0) {
        errno = ENOSPC;
        return -1;
    }
    const ssize_t written = writeSome(fitting);
    room -= std::max<ssize_t>(written, 0);
    return written;
}

template <typename Function>
Function next(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

// In place of the C library's, for every library of the process.

extern "C" __attribute__((visibility("default"))) ssize_t write(int descriptor, const void* data, std::size_t size)
{
    static const auto real = next<decltype(&write)>("write");
    return limited(descriptor, size, [=](std::size_t count) { return real(descriptor, data, count); });
}

extern "C" __attribute__((visibility("default"))) ssize_t pwrite64(int descriptor, const void* data, std::size_t size,
                                                                   off64_t offset)
{
    static const auto real = next<decltype(&pwrite64)>("pwrite64");
    return limited(descriptor, size, [=](std::size_t count) { return real(descriptor, data, count, offset); });
}

namespace testsupport {

Room::Room(qint64 bytes)
{
    room = bytes;
}

Room::~Room()
{
    room = unlimited;
}

qint64 Room::left()
{
    return room;
}

} // namespace testsupport
