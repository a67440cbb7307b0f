#include "filework/filework.h"

#include <QCoreApplication>
#include <QThreadPool>

#include <memory>

namespace workbench {

namespace {

std::unique_ptr<QThreadPool> theThread; // as long as there is an application object

} // namespace

QThreadPool* FileWork::thread()
{
    if (!theThread) {
        theThread = std::make_unique<QThreadPool>();
        theThread->setMaxThreadCount(1);
        // Waits for what is still to be done.
        qAddPostRoutine([] { theThread.reset(); });
    }
    return theThread.get();
}

} // namespace workbench
