#include "history/storeworker.h"

#include <QThread>

namespace workbench {

namespace {

constexpr int retryInterval = 500; // ms

} // namespace

StoreWorker::StoreWorker(QString file, const HistoryLimits& limits, std::shared_ptr<std::atomic<int>> waiting)
    : m_path(std::move(file))
    , m_limits(limits)
    , m_waitingCount(std::move(waiting))
    , m_retry(this)
{
    m_retry.setSingleShot(true);
    m_retry.setInterval(retryInterval);
    connect(&m_retry, &QTimer::timeout, this, &StoreWorker::work);
}

void StoreWorker::work()
{
    if (m_isUnusable)
        return;
    try {
        if (!m_file)
            open();
        storeWaiting();
        m_reason.clear();
        m_retry.stop();
    } catch (const ResultFileError& error) {
        m_isUnusable = !m_file && error.kind() != ResultFileError::Kind::Locked;
        // Before the failure is told: who is told of it must not have further results accepted.
        if (m_isUnusable)
            emit unusable(error.sentence());
        else
            m_retry.start();
        report(error.sentence());
    }
}

void StoreWorker::store(const DfResult& result)
{
    m_waiting.push_back(result);
    // While a failure lasts the timer sets the pace: each attempt may wait for a lock.
    if (!m_retry.isActive())
        work();
}

void StoreWorker::find(quint64 request, const ResultQuery& query, const Flag& isCancelled)
{
    if (*isCancelled)
        return;
    if (!m_file) {
        emit queryFailed(request, m_reason);
        return;
    }
    try {
        emit answered(request, m_file->find(query, *isCancelled));
    } catch (const ResultFileError& error) {
        emit queryFailed(request, error.sentence());
    }
}

void StoreWorker::finish()
{
    work();
    m_retry.stop();
    m_file.reset();
    thread()->quit();
}

void StoreWorker::open()
{
    m_file = std::make_unique<ResultFile>(m_path, m_limits);
    emit opened();
}

void StoreWorker::storeWaiting()
{
    while (!m_waiting.empty()) {
        m_file->append(m_waiting.front());
        m_waiting.pop_front();
        --*m_waitingCount;
        emit stored();
    }
}

void StoreWorker::report(const QString& reason)
{
    if (m_reason == reason)
        return;
    m_reason = reason;
    emit failed(reason);
}

} // namespace workbench
