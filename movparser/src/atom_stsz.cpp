// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_stsz.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error SampleSizeAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    sizes.clear();
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, std::tie(uniformSize, sampleCount)));
    if (uniformSize == 0)
        MOV_READ(scope, sizes.Read(buffer, sampleCount));
    return scope.Finish(size);
}

MovAtom::Error SampleSizeAtom::Write(FileBuffer &buffer)
{
    if (!sizes.empty() && sizes.size() != sampleCount)
        return ERROR_ATOM_WRITE_FAILED;
    MOV_WRITE(MovFullAtom::Write(buffer));
    MOV_WRITE(WriteFields(buffer, std::tie(uniformSize, sampleCount)));
    return sizes.Write(buffer);
}

void SampleSizeAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "SampleSizeAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "SampleSize: %d", uniformSize);
    PrintLine(out, block.Depth(), "NumberOfEntries: %d", sampleCount);
    PrintTable(out, block.Depth(), "SampleSizeTable: ", sizes,
               [out](uint32_t bytes) { PrintText(out, "%010d  ", bytes); });
}

uint64_t SampleSizeAtom::GetSize() const
{
    return MovFullAtom::GetSize() + SizeOfFields(std::tie(uniformSize, sampleCount))
        + sizes.SizeInFile();
}

MovAtom::Error SampleSizeAtom::AddSample(uint32_t bytes)
{
    if (bytes == 0)
        return ERROR_INVALID_ARG;
    if (sampleCount == 0) {
        uniformSize = bytes;
    } else if (uniformSize == 0) {
        if (!sizes.push_back(bytes))
            return ERROR_MEM_ALLOC;
    } else if (uniformSize != bytes) {
        if (!sizes.assign(sampleCount, uniformSize) || !sizes.push_back(bytes)) {
            sizes.clear(); // one size for all is still the truth
            return ERROR_MEM_ALLOC;
        }
        uniformSize = 0;
    }
    ++sampleCount;
    return ERROR_OKAY;
}

MovAtom::Error SampleSizeAtom::GetSampleSize(uint32_t index, uint32_t *bytes, bool *constant) const
{
    if (!bytes || (uniformSize == 0 && index >= sizes.size()))
        return ERROR_INVALID_ARG;
    *bytes = uniformSize != 0 ? uniformSize : sizes[index];
    if (constant)
        *constant = uniformSize != 0;
    return ERROR_OKAY;
}

} // namespace Tavro::MovParserLib
