// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/time_code_sample_description.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

uint64_t TimeCodeSampleDescription::GetSize() const
{
    return SampleDescription::GetSize() + SizeOfFields(Fields(*this)) + SizeOfChild(name);
}

MovAtom::Error TimeCodeSampleDescription::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    name.reset();
    MOV_READ(scope, SampleDescription::Read(buffer));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    MOV_READ(scope, ReadChildren(scope, size, [&](uint32_t child) {
                 return child == NameAtom::kType ? ReadChild(buffer, &name) : SkipUnparsed(buffer);
             }));
    return scope.Finish(size);
}

MovAtom::Error TimeCodeSampleDescription::Write(FileBuffer &buffer)
{
    MOV_WRITE(SampleDescription::Write(buffer));
    MOV_WRITE(WriteFields(buffer, Fields(*this)));
    return WriteChild(buffer, name);
}

void TimeCodeSampleDescription::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "TimeCodeSampleDescription");
    SampleDescription::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "Flags: %u", flags);
    PrintLine(out, block.Depth(), "TimeScale: %d", timeScale);
    PrintLine(out, block.Depth(), "FrameDuration: %d", frameDuration);
    PrintLine(out, block.Depth(), "NumberOfFrames: %d", numberOfFrames);
    block.Child(name);
    if (!name)
        PrintLine(out, block.Depth(), "No Name Supplied");
}

std::unique_ptr<SampleDescription> TimeCodeSampleDescription::Clone() const
{
    return std::make_unique<TimeCodeSampleDescription>(*this);
}

} // namespace Tavro::MovParserLib
