#include "filework/filework.h"

#include <QCoreApplication>
#include <QThreadPool>

#include <memory>

namespace workbench {

namespace {

// As long as there is an application object: empty before, and again before the statics go.
std::unique_ptr<QThreadPool> thePool; // clazy:exclude=non-pod-global-static

} // namespace

QThreadPool* FileWork::pool()
{
    if (!thePool) {
        thePool = std::make_unique<QThreadPool>();
        thePool->setMaxThreadCount(1);
        // Waits for what is still to be done.
        qAddPostRoutine([] { thePool.reset(); });
    }
    return thePool.get();
}

} // namespace workbench
