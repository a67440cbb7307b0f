#pragma once

#include "ztbase/ztbaseglobal.h"

#include <QDateTime>
#include <QString>

namespace Brix {

/// In which zone a time is written.
enum TimeZone
{
    Utc_TimeZone,
    Local_TimeZone,
};

/// An instant, or none. Kept in UTC with a resolution of one millisecond.
class ZTBASE_EXPORT DateTime
{
public:
    using TimeZone = Brix::TimeZone;
    static constexpr TimeZone Utc_TimeZone = Brix::Utc_TimeZone;
    static constexpr TimeZone Local_TimeZone = Brix::Local_TimeZone;

    /// No instant.
    DateTime() = default;

    /// Reads an ISO 8601 text "yyyy-MM-ddThh:mm:ss": "T" or one blank between date and time, an optional fraction of a
    /// second, an optional zone ("Z" or "+hh:mm"). Without a zone the text counts as UTC. A text of another form, a
    /// date without a time of day included, gives an invalid DateTime.
    static DateTime fromString(const QString& text);

    [[nodiscard]] bool isValid() const { return m_utc.isValid(); }

    /// "yyyy-MM-dd hh:mm:ss" in the given zone; empty for an invalid DateTime.
    [[nodiscard]] QString toString(TimeZone zone) const;

private:
    explicit DateTime(QDateTime utc);

    QDateTime m_utc;
};

} // namespace Brix
