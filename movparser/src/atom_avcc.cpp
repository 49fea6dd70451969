// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_avcc.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <tuple>

namespace Tavro::MovParserLib {

namespace {

/// Reads `count` counted byte strings and keeps the first.
MovAtom::Error ReadParameterSets(FileBuffer &buffer, uint8_t count, std::vector<uint8_t> *first)
{
    for (uint8_t i = 0; i < count; ++i) {
        uint16_t length = 0;
        if (ReadNumber(buffer, &length) != MovAtom::ERROR_OKAY)
            return MovAtom::ERROR_ATOM_READ_FAILED;
        const uint8_t *bytes = buffer.ReadInPlace(length);
        if (!bytes)
            return MovAtom::ERROR_ATOM_READ_FAILED;
        if (i == 0
            && MakeRoom(buffer, length, [&] { first->assign(bytes, bytes + length); })
                != MovAtom::ERROR_OKAY)
            return MovAtom::ERROR_ATOM_READ_FAILED;
    }
    return MovAtom::ERROR_OKAY;
}

MovAtom::Error WriteParameterSet(FileBuffer &buffer, const std::vector<uint8_t> &set)
{
    if (set.empty())
        return MovAtom::ERROR_OKAY;
    MOV_WRITE(set.size() > UINT16_MAX ? MovAtom::ERROR_ATOM_WRITE_FAILED : MovAtom::ERROR_OKAY);
    MOV_WRITE(WriteNumber(buffer, static_cast<uint16_t>(set.size())));
    return WriteBytes(buffer, set.data(), set.size());
}

uint64_t SizeOfParameterSet(const std::vector<uint8_t> &set)
{
    return set.empty() ? 0 : sizeof(uint16_t) + set.size();
}

} // namespace

MovAtom::Error AVCCAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    uint8_t lengthSize = 0;
    uint8_t count = 0;
    sequenceParameterSet.clear();
    pictureParameterSet.clear();
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope,
             ReadFields(buffer,
                        std::tie(configurationVersion, AVCProfileIndication, profile_compatibility,
                                 AVCLevelIndication, lengthSize, count)));
    lengthSizeMinusOne = lengthSize & 3;
    numOfSequenceParameterSets = count & 31;
    MOV_READ(scope, ReadParameterSets(buffer, numOfSequenceParameterSets, &sequenceParameterSet));
    MOV_READ(scope, ReadNumber(buffer, &numOfPictureParameterSets));
    MOV_READ(scope, ReadParameterSets(buffer, numOfPictureParameterSets, &pictureParameterSet));
    return scope.Finish(size);
}

MovAtom::Error AVCCAtom::Write(FileBuffer &buffer)
{
    numOfSequenceParameterSets = sequenceParameterSet.empty() ? 0 : 1;
    numOfPictureParameterSets = pictureParameterSet.empty() ? 0 : 1;
    // The bits beside the two small numbers are reserved and 1.
    const uint8_t lengthSize = static_cast<uint8_t>(0xfc | (lengthSizeMinusOne & 3));
    const uint8_t count = static_cast<uint8_t>(0xe0 | numOfSequenceParameterSets);
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(WriteFields(buffer,
                          std::tie(configurationVersion, AVCProfileIndication,
                                   profile_compatibility, AVCLevelIndication, lengthSize, count)));
    MOV_WRITE(WriteParameterSet(buffer, sequenceParameterSet));
    MOV_WRITE(WriteNumber(buffer, numOfPictureParameterSets));
    return WriteParameterSet(buffer, pictureParameterSet);
}

void AVCCAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "AVCCAtom");
    const auto printByte = [out](uint8_t byte) { PrintText(out, "%02x ", byte); };
    MovAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "configurationVersion: %d", configurationVersion);
    PrintLine(out, block.Depth(), "AVCProfileIndication: %d", AVCProfileIndication);
    PrintLine(out, block.Depth(), "profile_compatibility: %d", profile_compatibility);
    PrintLine(out, block.Depth(), "AVCLevelIndication: %d", AVCLevelIndication);
    PrintLine(out, block.Depth(), "lengthSizeMinusOne: %d", lengthSizeMinusOne);
    PrintLine(out, block.Depth(), "numOfSequenceParameterSets: %d", numOfSequenceParameterSets);
    PrintLine(out, block.Depth(), "sequenceParameterSetLength: %d",
              GetSequenceParameterSetLength());
    PrintTable(out, block.Depth(), "sequenceParameterSet: ", sequenceParameterSet, printByte);
    PrintLine(out, block.Depth(), "numOfPictureParameterSets: %d", numOfPictureParameterSets);
    PrintLine(out, block.Depth(), "pictureParameterSetLength: %d", GetPictureParameterSetLength());
    PrintTable(out, block.Depth(), "pictureParameterSet: ", pictureParameterSet, printByte);
}

uint64_t AVCCAtom::GetSize() const
{
    constexpr uint64_t kFixedFields = 7;
    return MovAtom::GetSize() + kFixedFields + SizeOfParameterSet(sequenceParameterSet)
        + SizeOfParameterSet(pictureParameterSet);
}

} // namespace Tavro::MovParserLib
