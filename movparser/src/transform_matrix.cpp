// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/transform_matrix.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

void PrintMatrix(std::string *out, uint32_t depth, const TransformMatrix &matrix)
{
    double value[9];
    for (int i = 0; i < 9; ++i)
        value[i] = static_cast<int32_t>(matrix[i]) / (i % 3 == 2 ? 1073741824.0 : 65536.0);
    PrintLine(out, depth, "Matrix: %f %f %f %f %f %f %f %f %f", value[0], value[1], value[2],
              value[3], value[4], value[5], value[6], value[7], value[8]);
}

} // namespace Tavro::MovParserLib
