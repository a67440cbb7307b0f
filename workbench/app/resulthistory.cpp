#include "app/resulthistory.h"

#include "ztbase/errorhandler.h"

#include <QPointer>

namespace workbench {

ResultHistory::ResultHistory(const QString& file, QObject* parent, int limit, const HistoryLimits& limits)
    : m_file(file)
    , m_limit(limit)
    , m_store(file, limits)
{
    setParent(parent);
    // One after the other: the latest is waited for, and those before it are dropped.
    m_computations.setMaxThreadCount(1);
    connect(&m_store, &ResultStore::opened, this, [this] {
        m_trouble.clear();
        emit stateChanged();
    });
    connect(&m_store, &ResultStore::stored, this, [this] {
        ++m_storedCount;
        m_trouble.clear();
        emit stateChanged();
    });
    connect(&m_store, &ResultStore::failed, this, &ResultHistory::onFailed);
    connect(&m_store, &ResultStore::answered, this, [this](quint64 request, const ResultAnswer& found) {
        if (m_locate && m_locate->request == request)
            compute(found);
    });
    connect(&m_store, &ResultStore::queryFailed, this, [this](quint64 request, const QString& reason) {
        if (m_locate && m_locate->request == request)
            answer(m_locate->number, {tr("No fix: %1").arg(reason)});
    });
}

ResultHistory::~ResultHistory()
{
    m_computations.clear();
    m_computations.waitForDone();
}

void ResultHistory::keep(const DfResult& result)
{
    if (!m_store.store(result))
        onRefused(m_store.errorString());
}

void ResultHistory::setChoice(const HistoryChoice& choice)
{
    if (choice == m_choice)
        return;
    m_choice = choice;
    m_lastFix.reset();
    if (m_locate) {
        m_store.cancel(m_locate->request);
        m_computations.clear();
        ask();
    }
    emit stateChanged();
}

bool ResultHistory::isUsable() const
{
    return m_store.isUsable();
}

void ResultHistory::locate(const DfResult& latest, int qualityThreshold)
{
    cancel();
    m_locate = Locate{latest.frequency, qualityThreshold};
    ask();
}

void ResultHistory::cancel()
{
    if (!m_locate)
        return;
    m_store.cancel(m_locate->request);
    m_computations.clear();
    m_locate.reset();
}

bool ResultHistory::close()
{
    cancel();
    if (!m_store.close()) {
        m_isAnyLost = true;
        tell(m_store.errorString());
    }
    return !m_isAnyLost;
}

/// Asks the store for what is chosen now.
void ResultHistory::ask()
{
    m_locate->number = ++m_lastNumber;
    m_locate->request = 0;
    const QString reason = obstacle();
    if (!reason.isEmpty()) {
        answerLater({reason});
        return;
    }
    ResultQuery query;
    query.from = m_choice.from;
    query.to = m_choice.to;
    query.frequency =
        FrequencyMatch{m_choice.frequency ? *m_choice.frequency : *m_locate->frequency, m_choice.tolerance};
    query.limit = m_limit;
    m_locate->request = m_store.query(query);
}

/// Why nothing can be asked for; empty when it can.
QString ResultHistory::obstacle() const
{
    if (m_choice.from.isValid() && m_choice.to.isValid() && m_choice.to < m_choice.from)
        return tr("No fix: the chosen time span ends before it begins.");
    if (!m_choice.frequency && !m_locate->frequency)
        return tr("No fix: the frequency of the result is not known, and no other is chosen.");
    return {};
}

/// On a thread of its own: thousands of bearings take longer than an operator may notice.
void ResultHistory::compute(const ResultAnswer& found)
{
    m_computations.start([this, found, locate = *m_locate] {
        HistoryFix fix = historyFix(found.results, locate.qualityThreshold);
        fix.isComplete = found.isComplete;
        QMetaObject::invokeMethod(
            this, [this, number = locate.number, fix] { answer(number, fix); }, Qt::QueuedConnection);
    });
}

void ResultHistory::answerLater(const HistoryFix& fix)
{
    QMetaObject::invokeMethod(
        this, [this, number = m_locate->number, fix] { answer(number, fix); }, Qt::QueuedConnection);
}

/// Unless it has been dropped meanwhile.
void ResultHistory::answer(quint64 number, const HistoryFix& fix)
{
    if (!m_locate || m_locate->number != number)
        return;
    m_locate.reset();
    m_lastFix = fix;
    const QPointer<ResultHistory> alive(this);
    if (!fix.isComplete) {
        tellOnce(tr("%1: more than %2 results are chosen; the position is computed from the newest of them.")
                     .arg(m_file, QString::number(m_limit)));
    }
    emit stateChanged();
    if (alive)
        emit located(fix);
}

void ResultHistory::onFailed(const QString& reason)
{
    const QPointer<ResultHistory> alive(this);
    m_trouble = reason;
    m_told.insert(reason);
    tell(reason);
    emit stateChanged();
    if (alive && !m_store.isUsable())
        emit usableChanged();
}

void ResultHistory::onRefused(const QString& reason)
{
    m_isAnyLost = true;
    m_trouble = reason;
    tellOnce(reason);
    emit stateChanged();
}

void ResultHistory::tellOnce(const QString& sentence)
{
    if (m_told.contains(sentence))
        return;
    m_told.insert(sentence);
    // When the result that this is about has been shown: its time and bearings take the place of what was said before.
    QMetaObject::invokeMethod(
        this, [this, sentence] { tell(sentence); }, Qt::QueuedConnection);
}

void ResultHistory::tell(const QString& sentence)
{
    if ((ErrorHandler::Instance()->GetTraceMask() & ErrorHandler::ComponentTraces) != 0)
        _Q_Trace(sentence, QStringLiteral("workbench/app/resulthistory"), __LINE__);
    emit message(sentence);
}

} // namespace workbench
