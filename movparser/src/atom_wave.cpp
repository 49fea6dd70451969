// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_wave.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

MovAtom::Error WaveAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    *this = WaveAtom();
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadChildren(scope, size, [&](uint32_t child) {
                 switch (child) {
                 case FormatAtom::kType:
                     return ReadChild(buffer, &format);
                 case EndianAtom::kType:
                     return ReadChild(buffer, &endian);
                 default: {
                     GenericSoundCompressionAtom atom;
                     const Error error = atom.Read(buffer);
                     return error != ERROR_OKAY ? error : MakeRoom(buffer, sizeof atom, [&] {
                         settings.push_back(std::move(atom));
                     });
                 }
                 }
             }));
    return scope.Finish(size);
}

MovAtom::Error WaveAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(WriteChild(buffer, format));
    MOV_WRITE(WriteChild(buffer, endian));
    for (GenericSoundCompressionAtom &atom : settings)
        MOV_WRITE(atom.Write(buffer));
    return ERROR_OKAY;
}

void WaveAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "WaveAtom");
    MovAtom::PrintToString(out, block.Depth());
    block.Child(format);
    block.Child(endian);
    for (const GenericSoundCompressionAtom &atom : settings)
        atom.PrintToString(out, block.Depth());
}

uint64_t WaveAtom::GetSize() const
{
    uint64_t bytes = MovAtom::GetSize() + SizeOfChild(format) + SizeOfChild(endian);
    for (const GenericSoundCompressionAtom &atom : settings)
        bytes += atom.GetSize();
    return bytes;
}

} // namespace Tavro::MovParserLib
