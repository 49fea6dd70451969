// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_tref.h"

#include "movparser/src/atom_children.h"
#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

TrackReferenceTypeAtom::TrackReferenceTypeAtom(uint32_t kind, std::vector<uint32_t> tracks)
    : MovAtom(kind)
    , trackIds(std::move(tracks))
{ }

MovAtom::Error TrackReferenceTypeAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    const Error error = MovAtom::Read(buffer);
    if (error != ERROR_OKAY)
        return error;
    MOV_READ(scope, ReadTable(buffer, scope.Remaining(size) / sizeof(uint32_t), &trackIds));
    return scope.Finish(size);
}

MovAtom::Error TrackReferenceTypeAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    return WriteTable(buffer, trackIds);
}

void TrackReferenceTypeAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "TrackReferenceTypeAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintTable(out, block.Depth(), "TrackIDs: ", trackIds,
               [out](uint32_t id) { PrintText(out, "%d  ", id); });
}

uint64_t TrackReferenceTypeAtom::GetSize() const
{
    return MovAtom::GetSize() + trackIds.size() * sizeof(uint32_t);
}

MovAtom::Error TrackReferenceAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    references.clear();
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadChildren(scope, size, [&](uint32_t) {
                 TrackReferenceTypeAtom reference;
                 const Error error = reference.Read(buffer);
                 return error != ERROR_OKAY ? error : MakeRoom(buffer, sizeof reference, [&] {
                     references.push_back(std::move(reference));
                 });
             }));
    return scope.Finish(size);
}

MovAtom::Error TrackReferenceAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    for (TrackReferenceTypeAtom &reference : references)
        MOV_WRITE(reference.Write(buffer));
    return ERROR_OKAY;
}

void TrackReferenceAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "TrackReferenceAtom");
    MovAtom::PrintToString(out, block.Depth());
    for (const TrackReferenceTypeAtom &reference : references)
        reference.PrintToString(out, block.Depth());
}

uint64_t TrackReferenceAtom::GetSize() const
{
    uint64_t bytes = MovAtom::GetSize();
    for (const TrackReferenceTypeAtom &reference : references)
        bytes += reference.GetSize();
    return bytes;
}

const TrackReferenceTypeAtom *TrackReferenceAtom::Find(uint32_t kind) const
{
    for (const TrackReferenceTypeAtom &reference : references) {
        if (reference.GetType() == kind)
            return &reference;
    }
    return nullptr;
}

} // namespace Tavro::MovParserLib
