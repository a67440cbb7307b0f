#pragma once

#include "drivers/dfresult.h"
#include "drivers/historyfix.h"

#include <QObject>
#include <QTimer>

#include <optional>
#include <vector>

namespace workbench {

class DfDriver;

/// Results that are shown together.
struct ResultBatch
{
    std::vector<DfResult> results;       ///< at least one, in the order in which they were published
    std::optional<HistoryFix> history;   ///< what the history gave for the last one
    std::optional<int> qualityThreshold; ///< percent, in use when the last one was published
};

/// Hands the results of a driver on to what people look at: each at once while they come slowly, together while they
/// come faster than anybody can see. None is left out.
class ResultFeed final : public QObject
{
    Q_OBJECT
public:
    /// ms between two batches.
    static constexpr int frameTime = 40;

    explicit ResultFeed(const DfDriver& driver, QObject* parent = nullptr);

    /// Hands on what still waits, so that all that is published is shown.
    void flush();

signals:
    void arrived(const workbench::ResultBatch& batch);

private:
    ResultBatch m_waiting;
    QTimer m_frame{this}; // runs for a frame after each batch
};

} // namespace workbench
