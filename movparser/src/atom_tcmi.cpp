// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_tcmi.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <cassert>
#include <cstring>

namespace Tavro::MovParserLib {

TimeCodeMediaInformationAtom::TimeCodeMediaInformationAtom(const char *name_)
    : TimeCodeMediaInformationAtom()
{
    const size_t length = std::strlen(name_);
    assert(length <= 127);
    name.assign(name_, length);
}

MovAtom::Error TimeCodeMediaInformationAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, MovFullAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    MOV_READ(scope, ReadCountedString(buffer, &name));
    return scope.Finish(size);
}

MovAtom::Error TimeCodeMediaInformationAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovFullAtom::Write(buffer));
    MOV_WRITE(WriteFields(buffer, Fields(*this)));
    return WriteCountedString(buffer, name);
}

void TimeCodeMediaInformationAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "TimeCodeMediaInformationAtom");
    MovFullAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "TextFont: %d", textFont);
    PrintLine(out, block.Depth(), "TextFace: %d", textFace);
    PrintLine(out, block.Depth(), "TextSize: %d", textSize);
    PrintLine(out, block.Depth(), "TextColor: %d %d %d", textColor[0], textColor[1], textColor[2]);
    PrintLine(out, block.Depth(), "BackgroundColor: %d %d %d", backgroundColor[0],
              backgroundColor[1], backgroundColor[2]);
    PrintLine(out, block.Depth(), "Name: %s", name.c_str());
    // Spelled so, and printed last, in every dump there is; programs that compare them rely on it.
    PrintLine(out, block.Depth(), "resered: %d", reserved);
}

uint64_t TimeCodeMediaInformationAtom::GetSize() const
{
    return MovFullAtom::GetSize() + SizeOfFields(Fields(*this)) + 1 + name.size();
}

} // namespace Tavro::MovParserLib
