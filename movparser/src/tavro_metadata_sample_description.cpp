// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/tavro_metadata_sample_description.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

uint64_t TavroMetadataSampleDescription::GetSize() const
{
    return SampleDescription::GetSize() + sizeof value;
}

MovAtom::Error TavroMetadataSampleDescription::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    MOV_READ(scope, SampleDescription::Read(buffer));
    MOV_READ(scope, ReadNumber(buffer, &value));
    return scope.Finish(size);
}

MovAtom::Error TavroMetadataSampleDescription::Write(FileBuffer &buffer)
{
    MOV_WRITE(SampleDescription::Write(buffer));
    return WriteNumber(buffer, value);
}

void TavroMetadataSampleDescription::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "TavroMetadataSampleDescription");
    SampleDescription::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "Value: %u", value);
}

std::unique_ptr<SampleDescription> TavroMetadataSampleDescription::Clone() const
{
    return std::make_unique<TavroMetadataSampleDescription>(*this);
}

} // namespace Tavro::MovParserLib
