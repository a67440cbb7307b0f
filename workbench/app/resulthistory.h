#pragma once

#include "drivers/locatehistory.h"
#include "history/resultstore.h"

#include <QSet>
#include <QThreadPool>

namespace workbench {

/// Of which stored bearings a position is computed.
struct HistoryChoice
{
    static constexpr double defaultTolerance = 1000.0;

    QDateTime from;                      ///< UTC, belongs to the span; invalid: from the oldest result on
    QDateTime to;                        ///< UTC, belongs to the span; invalid: up to the newest result
    std::optional<double> frequency;     ///< Hz; absent: that of the result which is located
    double tolerance = defaultTolerance; ///< Hz to either side

    friend bool operator==(const HistoryChoice& a, const HistoryChoice& b)
    {
        return a.from == b.from && a.to == b.to && a.frequency == b.frequency && a.tolerance == b.tolerance;
    }
    friend bool operator!=(const HistoryChoice& a, const HistoryChoice& b) { return !(a == b); }
};

/// Keeps the results of a driver in a store, and computes positions from those that are chosen. GUI thread only;
/// nothing but close() and the destructor waits, for what is on its way to the file and for a computation under way.
class ResultHistory final : public LocateHistory
{
    Q_OBJECT
public:
    /// @p file and @p limits as for a ResultStore. @p limit is how many results a position is computed from at most.
    explicit ResultHistory(const QString& file, QObject* parent = nullptr, int limit = ResultQuery().limit,
                           const HistoryLimits& limits = {});
    ~ResultHistory() override;

    [[nodiscard]] const QString& file() const { return m_file; }

    /// Has @p result stored. What becomes of it is told by stateChanged() and, when it cannot be stored, by message().
    void keep(const DfResult& result);

    [[nodiscard]] const HistoryChoice& choice() const { return m_choice; }
    /// For all locates from now on, one that is under way included.
    void setChoice(const HistoryChoice& choice);

    [[nodiscard]] bool isUsable() const override;
    void locate(const DfResult& latest, int qualityThreshold) override;
    void cancel() override;

    /// How many results have been stored.
    [[nodiscard]] int storedCount() const { return m_storedCount; }
    /// Why results are not stored at the moment: a sentence with file and reason; empty when they are.
    [[nodiscard]] QString trouble() const { return m_trouble; }
    /// What was found last, until another choice is made.
    [[nodiscard]] const std::optional<HistoryFix>& lastFix() const { return m_lastFix; }

    /// Writes what waits, and ends; nothing can be kept or located any more. False when some of what was to be kept is
    /// not in the store, as message() has told.
    [[nodiscard]] bool close();

signals:
    /// storedCount(), trouble(), lastFix() or choice() has changed.
    void stateChanged();
    /// A sentence for the operator: why a result is not stored, or that there are too many; once for each reason.
    void message(const QString& sentence);

private:
    /// What is asked for, until it is answered.
    struct Locate
    {
        std::optional<double> frequency; // of the latest result, Hz
        int qualityThreshold = 0;
        quint64 number = 0;  // tells it from those before
        quint64 request = 0; // to the store
    };

    void ask();
    [[nodiscard]] QString obstacle() const;
    void compute(const ResultAnswer& answer);
    void answerLater(const HistoryFix& fix);
    void answer(quint64 number, const HistoryFix& fix);
    void onFailed(const QString& reason);
    void onRefused(const QString& reason);
    void tell(const QString& sentence);
    void tellOnce(const QString& sentence);

    QString m_file;
    int m_limit;
    HistoryChoice m_choice;
    std::optional<Locate> m_locate;
    std::optional<HistoryFix> m_lastFix;
    int m_storedCount = 0;
    QString m_trouble;
    bool m_isAnyLost = false;
    quint64 m_lastNumber = 0;
    QSet<QString> m_told;
    QThreadPool m_computations;
    ResultStore m_store; // last: ends before what its signals reach
};

} // namespace workbench
