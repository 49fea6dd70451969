// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_udta.h"

#include "movparser/src/atom_printer.h"

namespace Tavro::MovParserLib {

namespace {

// The maker's other spelling of `LENS`.
constexpr uint32_t kLensMixedCase = FourCC("Lens");

MovAtom::Error GetBytes(const AtomPtr<TavroCameraSettingsAtom> &atom, uint8_t **bytes,
                        uint32_t *length)
{
    *bytes = atom ? atom->GetData() : nullptr;
    *length = atom ? atom->GetLength() : 0;
    return MovAtom::ERROR_OKAY;
}

template <class Atom>
MovAtom::Error GetBytes(const AtomPtr<Atom> &atom, uint8_t **bytes, uint32_t *length)
{
    *bytes = atom && !atom->data.empty() ? atom->data.data() : nullptr;
    *length = atom ? static_cast<uint32_t>(atom->data.size()) : 0;
    return MovAtom::ERROR_OKAY;
}

template <class Atom>
MovAtom::Error GetBytesChecked(const Atom &atom, uint8_t **bytes, uint32_t *length)
{
    return bytes && length ? GetBytes(atom, bytes, length) : MovAtom::ERROR_INVALID_ARG;
}

/// Copies `member` of a child that may be absent.
template <class Atom, class Record>
MovAtom::Error GetRecord(const AtomPtr<Atom> &atom, Record Atom::*member, Record *target)
{
    if (!target)
        return MovAtom::ERROR_INVALID_ARG;
    if (!atom)
        return MovAtom::ERROR_ATOM_NOT_FOUND;
    *target = (*atom).*member;
    return MovAtom::ERROR_OKAY;
}

} // namespace

template <class Visit> MovAtom::Error UserDataAtom::ForEachChild(Visit &&visit) const
{
    Error error = ERROR_OKAY;
    const auto visitOne = [&](const auto &child) {
        if (error == ERROR_OKAY && child)
            error = visit(*child);
    };
    visitOne(firmware);
    visitOne(cameraId);
    visitOne(settings);
    visitOne(lens);
    visitOne(fov);
    visitOne(rigIdentity);
    visitOne(rigShot);
    visitOne(tags);
    visitOne(mediaUniqueId);
    return error;
}

MovAtom::Error UserDataAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    *this = UserDataAtom();
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadChildren(scope, size, [&](uint32_t child) {
                 switch (child) {
                 case TavroCameraFirmwareAtom::kType:
                     return ReadChild(buffer, &firmware);
                 case TavroCameraIDAtom::kType:
                     return ReadChild(buffer, &cameraId);
                 case TavroCameraSettingsAtom::kType:
                     return ReadChild(buffer, &settings);
                 case TavroCameraLENSAtom::kType:
                 case kLensMixedCase: // refused by the class: such a file cannot be opened
                     return ReadChild(buffer, &lens);
                 case TavroCameraFOVAtom::kType:
                     return ReadChild(buffer, &fov);
                 case TavroCameraTURIAtom::kType:
                     return ReadChild(buffer, &rigIdentity);
                 case TavroCameraTUSIAtom::kType:
                     return ReadChild(buffer, &rigShot);
                 case TavroKeymarkTagAtom::kType:
                     return ReadChild(buffer, &tags);
                 case TavroMediaUniqueIdAtom::kType:
                     return ReadChild(buffer, &mediaUniqueId);
                 default:
                     return ReadUnparsed(buffer, &unparsed);
                 }
             }));
    return scope.Finish(size);
}

MovAtom::Error UserDataAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(ForEachChild([&buffer](auto &child) { return child.Write(buffer); }));
    return WriteUnparsed(buffer, &unparsed);
}

void UserDataAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "UserData");
    MovAtom::PrintToString(out, block.Depth());
    static_cast<void>(ForEachChild([&](const auto &child) {
        child.PrintToString(out, block.Depth());
        return ERROR_OKAY;
    }));
    PrintUnparsed(out, block.Depth(), unparsed);
}

uint64_t UserDataAtom::GetSize() const
{
    uint64_t bytes = MovAtom::GetSize() + SizeOfUnparsed(unparsed);
    static_cast<void>(ForEachChild([&bytes](const auto &child) {
        bytes += child.GetSize();
        return ERROR_OKAY;
    }));
    return bytes;
}

MovAtom::Error UserDataAtom::GetFirmware(const char **text) const
{
    if (!text)
        return ERROR_INVALID_ARG;
    *text = firmware ? firmware->GetVersion() : nullptr;
    return ERROR_OKAY;
}

MovAtom::Error UserDataAtom::GetCameraId(uint8_t **bytes, uint32_t *length) const
{
    return GetBytesChecked(cameraId, bytes, length);
}

MovAtom::Error UserDataAtom::GetLens(uint8_t **bytes, uint32_t *length) const
{
    return GetBytesChecked(lens, bytes, length);
}

MovAtom::Error UserDataAtom::GetFov(uint8_t **bytes, uint32_t *length) const
{
    return GetBytesChecked(fov, bytes, length);
}

MovAtom::Error UserDataAtom::GetMediaUniqueId(uint8_t **bytes, uint32_t *length) const
{
    return GetBytesChecked(mediaUniqueId, bytes, length);
}

MovAtom::Error UserDataAtom::GetSettings(uint8_t **bytes, uint32_t *length) const
{
    return GetBytesChecked(settings, bytes, length);
}

MovAtom::Error UserDataAtom::GetSettingsFields(TavroCameraSettings *fields) const
{
    return GetRecord(settings, &TavroCameraSettingsAtom::settings, fields);
}

MovAtom::Error UserDataAtom::GetRigIdentity(TavroRigIdentity *record) const
{
    return GetRecord(rigIdentity, &TavroCameraTURIAtom::record, record);
}

MovAtom::Error UserDataAtom::GetRigShot(TavroRigShot *record) const
{
    return GetRecord(rigShot, &TavroCameraTUSIAtom::record, record);
}

MovAtom::Error UserDataAtom::GetTagCount(uint32_t *count) const
{
    if (!count)
        return ERROR_INVALID_ARG;
    if (!tags)
        return ERROR_ATOM_NOT_FOUND;
    *count = tags->GetCount();
    return ERROR_OKAY;
}

MovAtom::Error UserDataAtom::GetTag(uint32_t index, uint32_t *milliseconds) const
{
    return tags ? tags->GetTag(index, milliseconds) : ERROR_ATOM_NOT_FOUND;
}

MovAtom::Error UserDataAtom::SetTags(int count, const uint32_t *milliseconds)
{
    return tags ? tags->SetTags(count, milliseconds) : ERROR_ATOM_NOT_FOUND;
}

MovAtom::Error UserDataAtom::GetUnparsedChild(uint32_t childType, uint8_t *dst, uint64_t capacity,
                                              uint64_t *outSize) const
{
    const auto found = unparsed.find(childType);
    return found == unparsed.end() ? ERROR_INVALID_ARG
                                   : found->second.GetData(dst, capacity, outSize);
}

} // namespace Tavro::MovParserLib
