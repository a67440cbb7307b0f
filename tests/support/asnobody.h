#pragma once

#include <QtGlobal>

#include <unistd.h>

namespace testsupport {

/// File permissions mean nothing to root: while this lives the process is somebody who owns nothing.
class AsNobody
{
public:
    AsNobody()
    {
        if (m_isRoot && setresuid(65534, 65534, 0) != 0)
            qFatal("The process cannot become nobody");
    }
    ~AsNobody()
    {
        if (m_isRoot && setresuid(0, 0, 0) != 0)
            qFatal("The process cannot become root again");
    }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

private:
    bool m_isRoot = geteuid() == 0;
};

} // namespace testsupport
