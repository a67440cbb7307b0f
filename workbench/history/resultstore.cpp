#include "history/resultstore.h"

#include "history/storeworker.h"

namespace workbench {

ResultStore::ResultStore(QString file, const HistoryLimits& limits, QObject* parent)
    : QObject(parent)
    , m_file(std::move(file))
    , m_worker(std::make_unique<StoreWorker>(m_file, limits, m_waiting))
{
    qRegisterMetaType<workbench::ResultAnswer>();
    m_thread.setObjectName(QStringLiteral("ResultStore"));
    m_worker->moveToThread(&m_thread);
    connect(m_worker.get(), &StoreWorker::opened, this, &ResultStore::opened);
    connect(m_worker.get(), &StoreWorker::stored, this, &ResultStore::stored);
    connect(m_worker.get(), &StoreWorker::failed, this, &ResultStore::failed);
    connect(m_worker.get(), &StoreWorker::unusable, this, [this](const QString& reason) { m_unusable = reason; });
    connect(m_worker.get(), &StoreWorker::answered, this, &ResultStore::onAnswered);
    connect(m_worker.get(), &StoreWorker::queryFailed, this, &ResultStore::onQueryFailed);
    m_thread.start();
    QMetaObject::invokeMethod(m_worker.get(), &StoreWorker::work, Qt::QueuedConnection);
}

ResultStore::~ResultStore()
{
    close();
}

bool ResultStore::store(const DfResult& result)
{
    const QString objection = ResultFile::objection(result);
    if (!objection.isEmpty())
        return refuse(m_file + QLatin1String(": cannot be written: ") + objection);
    if (!m_unusable.isEmpty())
        return refuse(m_unusable);
    if (*m_waiting >= maxWaiting) {
        return refuse(m_file + QLatin1String(": cannot be written: ") +
                      QStringLiteral("%1 results wait already").arg(maxWaiting));
    }
    ++*m_waiting;
    QMetaObject::invokeMethod(
        m_worker.get(), [worker = m_worker.get(), result] { worker->store(result); }, Qt::QueuedConnection);
    m_error.clear();
    return true;
}

quint64 ResultStore::query(const ResultQuery& query)
{
    const quint64 request = ++m_lastRequest;
    const auto isCancelled = std::make_shared<std::atomic<bool>>(false);
    m_requests.insert(request, isCancelled);
    if (!m_thread.isRunning()) {
        QMetaObject::invokeMethod(
            this, [this, request] { onQueryFailed(request, m_unusable); }, Qt::QueuedConnection);
        return request;
    }
    QMetaObject::invokeMethod(
        m_worker.get(),
        [worker = m_worker.get(), request, query, isCancelled] { worker->find(request, query, isCancelled); },
        Qt::QueuedConnection);
    return request;
}

void ResultStore::cancel(quint64 request)
{
    if (const Flag isCancelled = m_requests.take(request))
        *isCancelled = true;
}

bool ResultStore::close()
{
    if (!m_thread.isRunning())
        return *m_waiting == 0;
    for (const Flag& isCancelled : qAsConst(m_requests))
        *isCancelled = true;
    m_requests.clear();
    QMetaObject::invokeMethod(m_worker.get(), &StoreWorker::finish, Qt::QueuedConnection);
    m_thread.wait();
    m_unusable = m_file + QLatin1String(": cannot be used: it is closed");
    m_error.clear();
    const int lost = *m_waiting;
    if (lost == 0)
        return true;
    return refuse(m_worker->reasonOfLoss() + (lost == 1 ? QStringLiteral(" (1 result is lost)")
                                                        : QStringLiteral(" (%1 results are lost)").arg(lost)));
}

bool ResultStore::refuse(const QString& reason)
{
    m_error = reason;
    return false;
}

void ResultStore::onAnswered(quint64 request, const ResultAnswer& answer)
{
    if (m_requests.remove(request) > 0)
        emit answered(request, answer);
}

void ResultStore::onQueryFailed(quint64 request, const QString& reason)
{
    if (m_requests.remove(request) > 0)
        emit queryFailed(request, reason);
}

} // namespace workbench
