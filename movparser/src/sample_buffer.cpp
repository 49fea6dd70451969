// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/sample_buffer.h"

#include <cstdio>

namespace Tavro::MovParserLib {

void SampleBuffer::printInfos() const
{
    std::printf("SampleBuffer datas @ %p\n", static_cast<const void *>(GetBytes()));
    std::printf("SampleBuffer datas (size : %zu  /  offset : %zu)\n",
                static_cast<size_t>(logical_size), static_cast<size_t>(offset));
}

void SampleBuffer::printDatas() const
{
    if (logical_size == 0) {
        std::printf("printDatas() ERROR > SampleBuffer is empty, no datas to print...");
        return;
    }
    for (uint64_t i = 0; i < logical_size; ++i)
        std::printf("%02X ", GetData()[i]);
}

} // namespace Tavro::MovParserLib
