#include "filework/filework.h"

#include <QCoreApplication>
#include <QThreadPool>

#include <memory>

namespace workbench {

namespace {

std::unique_ptr<QThreadPool> thePool; // as long as there is an application object

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
