// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_sdtp.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error SampleDependenciesAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadBytes(buffer, scope.Remaining(size), &dependencies));
    return scope.Finish(size);
}

MovAtom::Error SampleDependenciesAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    return WriteBytes(buffer, dependencies.data(), dependencies.size());
}

void SampleDependenciesAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "SampleDependenciesAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "SampleDependenciesTable: (Dependency)");
    PrintTable(out, block.Depth(), "", dependencies,
               [out](uint8_t dependency) { PrintText(out, "%d, ", dependency); });
}

uint64_t SampleDependenciesAtom::GetSize() const
{
    return MovFullAtom::GetSize() + dependencies.size();
}

MovAtom::Error SampleDependenciesAtom::AddSample(uint8_t dependency)
{
    return OrNoMemory([&] {
        dependencies.push_back(dependency);
        return ERROR_OKAY;
    });
}

} // namespace Tavro::MovParserLib
