#pragma once

#include "drivers/dfsource.h"

namespace chaos {

/// A network that measures only when it is told to, and then whatever it is told.
class ScriptedSource final : public workbench::DfSource
{
public:
    explicit ScriptedSource(std::vector<workbench::StationInfo> stations)
        : m_stations(std::move(stations))
    {
    }

    [[nodiscard]] QString name() const override { return QStringLiteral("Chaos"); }
    [[nodiscard]] std::vector<workbench::StationInfo> stations() const override { return m_stations; }
    [[nodiscard]] std::vector<workbench::StationInfo> hriStations() const override { return m_stations; }
    [[nodiscard]] std::vector<workbench::DfDevice> devices() const override
    {
        workbench::DfDevice other{QStringLiteral("Other"),
                                  {{QStringLiteral("1 kHz"), 1000.0}, {QStringLiteral("25 kHz"), 25000.0}},
                                  {{QStringLiteral("none"), 0.0}, {QStringLiteral("1.5 s"), 1500.0}},
                                  {{QStringLiteral("NORMAL"), workbench::DfMode::Normal}}};
        return {workbench::standardDevice(), std::move(other)};
    }
    [[nodiscard]] std::optional<double> initialFrequency() const override { return 155'500'000.0; }
    [[nodiscard]] std::optional<int> measurementsLeft() const override { return std::nullopt; }

    void measure(const workbench::DfRequest& /*request*/) override { m_isAsked = true; }
    void cancel() override { m_isAsked = false; }

    [[nodiscard]] bool isAsked() const { return m_isAsked; }
    void setStations(std::vector<workbench::StationInfo> stations) { m_stations = std::move(stations); }

    /// Both end as the answer does: the driver, and with it this, may be gone afterwards.
    void answer(const workbench::DfResult& result)
    {
        m_isAsked = false;
        emit measured(result);
    }
    void fail(const QString& reason)
    {
        m_isAsked = false;
        emit failed(reason);
    }

private:
    std::vector<workbench::StationInfo> m_stations;
    bool m_isAsked = false;
};

} // namespace chaos
