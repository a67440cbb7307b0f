#include "frequencyranges.h"

#include <algorithm>

namespace VelmarGui {

FrequencyRanges::FrequencyRanges(std::vector<Range> ranges)
{
    std::sort(ranges.begin(), ranges.end(), [](const Range& a, const Range& b) { return a.low < b.low; });
    for (const Range& range : ranges) {
        if (range.low > range.high)
            continue;
        if (m_ranges.empty() || m_ranges.back().high < range.low)
            m_ranges.push_back(range);
        else
            m_ranges.back().high = std::max(m_ranges.back().high, range.high);
    }
}

bool FrequencyRanges::Hold(double frequency) const
{
    // Of those that begin at or below it, only the last can reach up to it.
    const auto above = std::upper_bound(m_ranges.begin(), m_ranges.end(), frequency,
                                        [](double value, const Range& range) { return value < range.low; });
    return above != m_ranges.begin() && frequency <= std::prev(above)->high;
}

} // namespace VelmarGui
