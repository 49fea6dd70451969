// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/video_sample_description.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <algorithm>

namespace Tavro::MovParserLib {

uint64_t VideoSampleDescription::GetSize() const
{
    return SampleDescription::GetSize() + SizeOfFields(Fields(*this)) + SizeOfChild(color)
        + SizeOfChild(fields) + SizeOfChild(pixelAspect) + SizeOfChild(avcc) + SizeOfChild(hvcc)
        + SizeOfChild(stereo) + SizeOfChild(spherical) + SizeOfUnparsed(unparsed);
}

MovAtom::Error VideoSampleDescription::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    *this = VideoSampleDescription();
    MOV_READ(scope, SampleDescription::Read(buffer));
    MOV_READ(scope, ReadFields(buffer, Fields(*this)));
    MOV_READ(scope, ReadChildren(scope, size, [&](uint32_t child) {
                 switch (child) {
                 case AVCCAtom::kType:
                     return ReadChild(buffer, &avcc);
                 case HVCCAtom::kType:
                     return ReadChild(buffer, &hvcc);
                 case PixelAspectAtom::kType:
                     return ReadChild(buffer, &pixelAspect);
                 case ColorAtom::kType:
                     return ReadChild(buffer, &color);
                 case FieldsAtom::kType:
                     return ReadChild(buffer, &fields);
                 case stereoVideoAtom::kType:
                     return ReadChild(buffer, &stereo);
                 case sphericalVideoAtom::kType:
                     return ReadChild(buffer, &spherical);
                 default:
                     return ReadUnparsed(buffer, &unparsed);
                 }
             }));
    return scope.Finish(size);
}

MovAtom::Error VideoSampleDescription::Write(FileBuffer &buffer)
{
    MOV_WRITE(SampleDescription::Write(buffer));
    MOV_WRITE(WriteFields(buffer, Fields(*this)));
    MOV_WRITE(WriteChild(buffer, color));
    MOV_WRITE(WriteChild(buffer, fields));
    MOV_WRITE(WriteChild(buffer, pixelAspect));
    MOV_WRITE(WriteChild(buffer, avcc));
    MOV_WRITE(WriteChild(buffer, hvcc));
    MOV_WRITE(WriteChild(buffer, stereo));
    MOV_WRITE(WriteChild(buffer, spherical));
    return WriteUnparsed(buffer, &unparsed);
}

void VideoSampleDescription::PrintToString(std::string *out, uint32_t indent) const
{
    const PrintBlock block(out, indent, "VideoSampleDescription");
    const uint32_t d = block.Depth();
    // The first byte counts the characters, as far as there is room for them.
    const auto *name = reinterpret_cast<const char *>(compressorName.data()) + 1;
    const int nameLength = std::min<int>(compressorName[0], compressorName.size() - 1);
    SampleDescription::PrintToString(out, d);
    PrintLine(out, d, "Version: %d", version);
    PrintLine(out, d, "RevisionLevel: %d", revisionLevel);
    PrintFourCC(out, d, "Vendor: ", vendor);
    PrintLine(out, d, "TemporalQuality: %d", temporalQuality);
    PrintLine(out, d, "SpatialQuality: %d", spatialQuality);
    PrintLine(out, d, "Width: %d", width);
    PrintLine(out, d, "Height: %d", height);
    PrintLine(out, d, "HorizontalResolution: %f", horizontalResolution / 65536.0);
    PrintLine(out, d, "VerticalResolution: %f", verticalResolution / 65536.0);
    PrintLine(out, d, "DataSize: %d", dataSize);
    PrintLine(out, d, "FrameCount: %d", frameCount);
    PrintLine(out, d, "CompressorName: %.*s", nameLength, name);
    PrintLine(out, d, "Depth: %d", depth);
    PrintLine(out, d, "ColorTableID: %d", colorTableId);
    block.Child(color);
    block.Child(fields);
    block.Child(pixelAspect);
    block.Child(avcc);
    block.Child(hvcc);
    block.Child(stereo);
    block.Child(spherical);
    PrintUnparsed(out, d, unparsed);
}

std::unique_ptr<SampleDescription> VideoSampleDescription::Clone() const
{
    return std::make_unique<VideoSampleDescription>(*this);
}

} // namespace Tavro::MovParserLib
