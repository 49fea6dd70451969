// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The converter's arithmetic on the processor, for one pixel.

#include <algorithm>
#include <array>
#include <cmath>

enum class Range {
    Full,
    Studio,
    Tessarel
};

/// The levels of red, green and blue as they lie in the texture, red and blue exchanged; y, u and v
/// from 0 to 1.
inline std::array<int, 3> yuvReference(double y, double u, double v, Range range)
{
    const auto level = [](double value) {
        return int(std::lround(std::min(std::max(value, 0.0), 1.0) * 255));
    };
    if (range != Range::Studio) {
        y = (16 + y * 219) / 255;
        u = (16 + u * 224) / 255;
        v = (16 + v * 224) / 255;
    }
    if (range == Range::Tessarel) {
        // Whole steps towards zero, as the shader's int().
        const double luma = std::trunc(y * 19077);
        const double cb = v - 128.0 / 255;
        const double cr = u - 128.0 / 255;
        const double bias = 297012.0 / 255;
        const auto step = [&](double value) {
            return level(std::trunc(std::trunc(value) / 64) / 256);
        };
        return {step(luma + cr * 29369 - bias), step(luma - cr * 8734 - cb * 3493 - bias),
                step(luma + cb * 34610 - bias)};
    }
    const double luma = 1.1643 * (y - 0.0625);
    return {level(luma + 1.793 * (u - 0.5)), level(luma - 0.2126 * (v - 0.5) - 0.534 * (u - 0.5)),
            level(luma + 2.115 * (v - 0.5))};
}
