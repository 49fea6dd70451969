// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The 3 x 3 matrix of the movie and track headers, row by row: 16.16 in the first two columns and
// 2.30 in the third.

#include <array>
#include <cstdint>
#include <string>

namespace Tavro::MovParserLib {

using TransformMatrix = std::array<uint32_t, 9>;

inline constexpr TransformMatrix kIdentityMatrix = {0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000};

void PrintMatrix(std::string *out, uint32_t depth, const TransformMatrix &matrix);

} // namespace Tavro::MovParserLib
