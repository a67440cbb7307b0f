#pragma once

#include "filework/filework.h"
#include "support/testmain.h"

#include <QSemaphore>

#include <memory>

namespace testsupport {

/// Keeps the thread that works on files from doing anything else until it is let go.
class BusyDisk
{
public:
    BusyDisk()
    {
        m_work.run([isFree = m_isFree] { return isFree->tryAcquire(1, longest); }, [](bool) {});
    }
    ~BusyDisk() { release(); }
    BusyDisk(const BusyDisk&) = delete;
    BusyDisk& operator=(const BusyDisk&) = delete;

    void release() { m_isFree->release(); }

private:
    static constexpr int longest = 60000; // ms

    std::shared_ptr<QSemaphore> m_isFree = std::make_shared<QSemaphore>();
    workbench::FileWork m_work;
};

/// Waits for all that has been asked for so far, and for its answers.
inline void settleFileWork()
{
    workbench::FileWork work;
    bool isDone = false;
    work.run([] { return true; }, [&](bool done) { isDone = done; });
    QTRY_VERIFY(isDone);
}

} // namespace testsupport
