#pragma once

#include "history/resultfile.h"
#include "history/resultquery.h"

#include <QHash>
#include <QObject>
#include <QThread>

#include <atomic>
#include <memory>

namespace workbench {

class StoreWorker;

/// Keeps DF results in a file and finds them again, on a thread of its own: no operation but close() and the
/// destructor waits for the disk.
///
/// What is asked for is done in that order. A result that cannot be stored at the moment, because the file is locked,
/// the disk full, or for any other reason, waits, and is tried again twice a second; the results behind it wait too.
/// For use on one thread, that of the store itself, which needs an event loop.
class ResultStore : public QObject
{
    Q_OBJECT
public:
    /// How many results may wait. What comes when that many wait is refused; nothing that waits is dropped for it.
    static constexpr int maxWaiting = 1000;

    /// Opens @p file, or creates it in an existing folder: opened() or failed() tell of it.
    explicit ResultStore(QString file, const HistoryLimits& limits = {}, QObject* parent = nullptr);
    /// Closes the store.
    ~ResultStore() override;

    /// Has a result stored, as stored() tells. False when it is refused, for a reason that errorString() tells: there
    /// is an objection to it, too many results wait, or the store can never be opened or is closed.
    bool store(const DfResult& result);
    /// Asks for results: answered by exactly one answered() or queryFailed() with the number that is returned, never
    /// before it is returned, unless it is cancelled first.
    quint64 query(const ResultQuery& query);
    /// Neither answered() nor queryFailed() will be emitted for @p request. Nothing happens when it is unknown or
    /// answered already.
    void cancel(quint64 request);
    /// Cancels all queries, stores what waits and closes the file; waits until that is done, a locked file about a
    /// second. False when results are lost, as errorString() tells. Once closed a store stays closed.
    bool close();

    /// False once nothing can be stored and found any more: the file can never be opened, or the store is closed.
    [[nodiscard]] bool isUsable() const { return m_unusable.isEmpty(); }

    /// Why the last store() or close() was not successful: a sentence with file and reason. Empty when it was.
    [[nodiscard]] QString errorString() const { return m_error; }

signals:
    /// The file is open.
    void opened();
    /// One more result is in the file, in the order in which they were handed over.
    void stored();
    /// The file cannot be opened or written to; @p reason is a sentence with file and reason. Emitted once for each
    /// new reason, not for each attempt. A file that cannot be opened for another reason than a lock is not tried
    /// again: results that wait for it are lost, and store() refuses all others.
    void failed(const QString& reason);
    /// The answer to a query.
    void answered(quint64 request, const workbench::ResultAnswer& answer);
    /// There is none and there will be none; @p reason is a sentence with file and reason.
    void queryFailed(quint64 request, const QString& reason);

private:
    using Flag = std::shared_ptr<std::atomic<bool>>;

    bool refuse(const QString& reason);
    void onAnswered(quint64 request, const ResultAnswer& answer);
    void onQueryFailed(quint64 request, const QString& reason);

    QString m_file;
    QString m_error;
    QString m_unusable; // why nothing can be stored any more; empty while it can
    std::shared_ptr<std::atomic<int>> m_waiting = std::make_shared<std::atomic<int>>(0);
    quint64 m_lastRequest = 0;
    QHash<quint64, Flag> m_requests; // that are not answered, with what cancels them
    QThread m_thread;
    std::unique_ptr<StoreWorker> m_worker;
};

} // namespace workbench
