#pragma once

#include <QFutureWatcher>
#include <QObject>
#include <QtConcurrentRun>

#include <type_traits>
#include <utility>

class QThreadPool;

namespace workbench {

/// Does what waits for files, so that the GUI thread need not: one thing after the other, in the order in which they
/// were asked for, whoever asked. So a list that is read after a file was written has the file in it.
///
/// Whoever asks may go before the work is done: it is done all the same, at the latest while the application object
/// goes, and nobody is told. GUI thread only.
class FileWork : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// Calls @p work on another thread. When it has returned, and this object is still there, calls @p answer with what
    /// it returned, from the event loop. @p work holds copies of all it needs.
    template <typename Work, typename Answer>
    void run(Work work, Answer answer)
    {
        using Result = std::invoke_result_t<Work>;
        auto* const watcher = new QFutureWatcher<Result>(this);
        connect(watcher, &QFutureWatcherBase::finished, this, [watcher, answer = std::move(answer)]() mutable {
            watcher->deleteLater();
            answer(watcher->result());
        });
        watcher->setFuture(QtConcurrent::run(pool(), std::move(work)));
    }

private:
    /// Of one thread.
    [[nodiscard]] static QThreadPool* pool();
};

} // namespace workbench
