#pragma once

#include <QColor>
#include <QPalette>

#include <optional>

namespace workbench {

/// The colours of the map on a light or dark desktop.
struct MapColors
{
    QColor ground;
    QColor graticule;
    QColor land;  ///< an area of the background; lets the graticule through
    QColor coast; ///< lines and points of the background
    QColor place; ///< names on the background
    QColor text;
    QColor station;
    QColor fix;
    QColor poorest; ///< a bearing that just reaches the threshold
    QColor best;    ///< a bearing of 100 percent
    QColor unrated; ///< a bearing without quality
    QColor unused;  ///< a bearing that is no part of the fix

    [[nodiscard]] static MapColors fitting(const QPalette& palette);

    /// From poorest to best between @p threshold, 0 without one, and 100 percent.
    [[nodiscard]] QColor ofQuality(const std::optional<double>& quality, std::optional<int> threshold) const;
};

} // namespace workbench
