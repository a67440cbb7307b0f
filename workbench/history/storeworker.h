#pragma once

#include "history/resultfile.h"

#include <QObject>
#include <QTimer>

#include <atomic>
#include <deque>
#include <memory>
#include <optional>

namespace workbench {

/// Works for a ResultStore on a thread of its own: owns the file and does what is asked for, in that order.
///
/// All operations belong to that thread, except construction and destruction, which need it not to run.
class StoreWorker final : public QObject
{
    Q_OBJECT
public:
    using Flag = std::shared_ptr<std::atomic<bool>>;

    /// @p waiting counts the results that were handed over and are not stored; the worker takes the stored ones off.
    StoreWorker(QString file, const HistoryLimits& limits, std::shared_ptr<std::atomic<int>> waiting);

    /// Opens the file if it is not open yet, and stores what waits; tries again later by itself when that fails.
    void work();
    /// Has @p result wait behind those that do, and works, unless a failure lasts.
    void store(const DfResult& result);
    /// Answers by answered() or queryFailed(), or not at all when @p isCancelled is set by then.
    void find(quint64 request, const ResultQuery& query, const Flag& isCancelled);
    /// Stores what waits, if that is possible now, closes the file, and ends the thread.
    void finish();
    /// Why there are results that are not stored; empty when there are none. For use after finish().
    [[nodiscard]] QString reasonOfLoss() const { return m_reason; }

signals:
    void opened();
    void stored();
    /// Once for each new reason.
    void failed(const QString& reason);
    /// The file can never be opened.
    void unusable(const QString& reason);
    void answered(quint64 request, const workbench::ResultAnswer& answer);
    void queryFailed(quint64 request, const QString& reason);

private:
    void open();
    void storeWaiting();
    void report(const QString& reason);

    QString m_path;
    HistoryLimits m_limits;
    std::shared_ptr<std::atomic<int>> m_waitingCount;
    std::deque<DfResult> m_waiting;
    QString m_reason; // of the failure that lasts; empty when there is none
    bool m_isUnusable = false;
    QTimer m_retry;
    std::unique_ptr<ResultFile> m_file;
};

} // namespace workbench
