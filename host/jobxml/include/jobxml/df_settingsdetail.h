#pragma once

#include "jobxml/jobxmlglobal.h"

#include <optional>

class QXmlStreamWriter;

namespace JobXml {

class SettingsReader;

/// The thresholds below which a bearing is not taken. Each may be missing: the device's own threshold holds then.
class JOBXML_EXPORT DF_SettingsDetail
{
public:
    /// True when at least one threshold is set. A detail without data is not written.
    [[nodiscard]] bool HasData() const;

    /// @p percent is the lowest quality of a bearing that is taken. Any number is kept; the range is the device's.
    void SetQualityThreshold(int percent);
    /// In percent; 0 when not set.
    [[nodiscard]] int GetQualityThreshold() const;
    [[nodiscard]] bool IsQualityThresholdSet() const;

    /// @p level is the lowest level in dBµV at which a bearing is taken. Raises ReportException when it is not a finite
    /// number; the threshold stays as it was.
    void SetLevelThreshold(double level);
    /// In dBµV; 0 when not set.
    [[nodiscard]] double GetLevelThreshold() const;
    [[nodiscard]] bool IsLevelThresholdSet() const;

private:
    friend class DF_Settings;

    void ReadChildren(SettingsReader& reader);
    void WriteTo(QXmlStreamWriter& xml) const;

    std::optional<int> m_qualityThreshold;
    std::optional<double> m_levelThreshold;
};

} // namespace JobXml
