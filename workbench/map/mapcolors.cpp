#include "map/mapcolors.h"

#include <algorithm>

namespace workbench {

MapColors MapColors::fitting(const QPalette& palette)
{
    MapColors colors;
    const bool isDark = palette.color(QPalette::Window).lightness() < 128;
    colors.ground = isDark ? QColor(0x1d2329) : QColor(0xf7f8f6);
    colors.graticule = isDark ? QColor(0x3a444d) : QColor(0xd5dadc);
    colors.land = isDark ? QColor(0x8f, 0xa8, 0x8c, 34) : QColor(0x7c, 0x8f, 0x62, 38);
    colors.coast = isDark ? QColor(0x5c6a75) : QColor(0xa9b4ba);
    colors.place = isDark ? QColor(0x9aa5ad) : QColor(0x6a747b);
    colors.text = isDark ? QColor(0xe4e8eb) : QColor(0x20272c);
    colors.station = isDark ? QColor(0x7cb8ff) : QColor(0x1d4f91);
    colors.fix = isDark ? QColor(0xff6fae) : QColor(0xb3125f);
    colors.poorest = isDark ? QColor(0xffb74d) : QColor(0xc77700);
    colors.best = isDark ? QColor(0x5fd38a) : QColor(0x18794e);
    colors.unrated = isDark ? QColor(0x7cb8ff) : QColor(0x2a66b0);
    colors.unused = isDark ? QColor(0x7d878f) : QColor(0x9aa1a6);
    return colors;
}

QColor MapColors::ofQuality(const std::optional<double>& quality, std::optional<int> threshold) const
{
    if (!quality)
        return unrated;
    const double least = threshold.value_or(0);
    const double share = least < 100.0 ? std::clamp((*quality - least) / (100.0 - least), 0.0, 1.0) : 1.0;
    const auto mixed = [share](int a, int b) { return a + static_cast<int>((b - a) * share); };
    return {mixed(poorest.red(), best.red()), mixed(poorest.green(), best.green()), mixed(poorest.blue(), best.blue())};
}

} // namespace workbench
