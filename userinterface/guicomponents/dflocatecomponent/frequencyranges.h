#pragma once

#include <vector>

namespace VelmarGui {

/// Frequency ranges of which only one thing is asked: whether any of them holds a frequency. However many there are,
/// the answer takes no longer than the logarithm of the number of gaps between them.
class FrequencyRanges
{
public:
    /// In Hz, both ends included. One whose lower end is above the upper one holds nothing.
    struct Range
    {
        double low;
        double high;
    };

    FrequencyRanges() = default;
    explicit FrequencyRanges(std::vector<Range> ranges);

    /// @p frequency in Hz.
    [[nodiscard]] bool Hold(double frequency) const;

private:
    std::vector<Range> m_ranges; ///< ascending and apart from one another
};

} // namespace VelmarGui
