// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/sample_description.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <cstdio>

namespace Tavro::MovParserLib {

SampleDescription &SampleDescription::operator=(const SampleDescription &other)
{
    size = other.size;
    data_format = other.data_format;
    reserved = other.reserved;
    data_reference_index = other.data_reference_index;
    return *this;
}

uint64_t SampleDescription::GetSize() const
{
    return SizeOfFields(SampleDescription::Fields(*this));
}

MovAtom::Error SampleDescription::Read(FileBuffer &buffer)
{
    return ReadFields(buffer, SampleDescription::Fields(*this));
}

MovAtom::Error SampleDescription::Write(FileBuffer &buffer)
{
    const uint64_t bytes = GetSize();
    if (bytes > UINT32_MAX)
        return MovAtom::ERROR_ATOM_WRITE_FAILED; // an entry has no form for larger sizes
    size = static_cast<uint32_t>(bytes);
    return WriteFields(buffer, SampleDescription::Fields(*this));
}

void SampleDescription::Print(uint32_t depth) const
{
    std::string text;
    PrintToString(&text, depth);
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void SampleDescription::PrintToString(std::string *out, uint32_t depth) const
{
    PrintFourCC(out, depth, "DataFormat: ", data_format);
    PrintLine(out, depth, "DataReferenceIndex: %d", data_reference_index);
}

std::unique_ptr<SampleDescription> SampleDescription::Clone() const
{
    return std::make_unique<SampleDescription>(*this);
}

} // namespace Tavro::MovParserLib
