#pragma once

#include "jobxml/jobxmlglobal.h"

#include <optional>

namespace JobXml {

/// A bandwidth in Hz, or none.
class JOBXML_EXPORT Bandwidth
{
public:
    /// Raises ReportException when @p hertz is not a finite number; the bandwidth stays as it was.
    void SetValue(double hertz);
    /// In Hz; 0 when there is none.
    [[nodiscard]] double GetValue() const;
    [[nodiscard]] bool IsValueSet() const;

private:
    friend class DF_Settings;

    std::optional<double> m_value;
};

} // namespace JobXml
