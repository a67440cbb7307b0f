#pragma once

#include "drivers/dfsource.h"

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>

namespace soak {

/// A network of a hundred stations that measures fifty times a second. From every other result its last station is
/// missing.
///
/// A result is due every 20 ms, whoever asks for it when. One that is asked for too late comes at once, and those
/// behind it are due as before: there are fifty a second as long as whoever asks can do with that many in the long run.
class SteadySource final : public workbench::DfSource
{
    Q_OBJECT
public:
    static constexpr int stationCount = 100;
    static constexpr int resultsPerSecond = 50;

    SteadySource()
    {
        for (int id = 1; id <= stationCount; ++id) {
            workbench::StationInfo station;
            station.id = id;
            station.name = QStringLiteral("Station %1").arg(id);
            station.position = workbench::GeoPosition{49.0 + 0.02 * (id % 10), 11.0 + 0.02 * (id / 10)};
            station.range = workbench::FrequencyRange{20e6, 3000e6};
            station.scan = true;
            m_stations.push_back(station);
        }
        m_wait.setTimerType(Qt::PreciseTimer);
        m_wait.setSingleShot(true);
        connect(&m_wait, &QTimer::timeout, this, &SteadySource::answer);
        m_clock.start();
    }

    [[nodiscard]] QString name() const override { return QStringLiteral("Soak"); }
    [[nodiscard]] std::vector<workbench::StationInfo> stations() const override { return m_stations; }
    [[nodiscard]] std::vector<workbench::StationInfo> hriStations() const override { return m_stations; }
    [[nodiscard]] std::optional<double> initialFrequency() const override { return 155'500'000.0; }
    [[nodiscard]] std::optional<int> measurementsLeft() const override { return std::nullopt; }

    void measure(const workbench::DfRequest& request) override
    {
        m_request = request;
        m_due = std::max(m_due, m_clock.elapsed() - longestDelay);
        m_wait.start(static_cast<int>(std::max(0LL, m_due - m_clock.elapsed())));
    }
    void cancel() override { m_wait.stop(); }

    [[nodiscard]] int answers() const { return m_answers; }

private:
    static constexpr qint64 period = 1000 / resultsPerSecond; // ms
    static constexpr qint64 longestDelay = 1000;              // ms; what is due for longer never comes

    void answer()
    {
        m_due += period;
        ++m_answers;
        workbench::DfResult result;
        result.frequency = m_request.frequency;
        const QDateTime time = QDateTime(QDate(2026, 5, 14), QTime(9, 30), Qt::UTC).addMSecs(20LL * m_answers);
        result.date = time.date();
        result.time = time.time();
        const bool lastIsAway = m_answers % 2 == 1;
        for (const workbench::StationInfo& info : m_stations) {
            if (lastIsAway && info.id == stationCount)
                continue;
            workbench::StationResult& station = result.stations.emplace_back();
            station.stationId = info.id;
            station.stationName = info.name;
            station.position = info.position;
            station.azimuth = (7 * info.id + m_answers) % 3600 * 0.1;
            station.sigma = 1.5;
            station.quality = 40.0 + (info.id + m_answers) % 60;
            station.level = 20.0 + (info.id + m_answers) % 40;
        }
        emit measured(result);
    }

    std::vector<workbench::StationInfo> m_stations;
    workbench::DfRequest m_request;
    QTimer m_wait{this}; // runs from being asked until the answer
    QElapsedTimer m_clock;
    qint64 m_due = 0; // ms, by the clock
    int m_answers = 0;
};

} // namespace soak
