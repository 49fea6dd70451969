// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The entry of a video track: where the size of the frame comes from, and where the spherical
// metadata hang.

#include "movparser/src/atom_avcc.h"
#include "movparser/src/atom_children.h"
#include "movparser/src/atom_colr.h"
#include "movparser/src/atom_fiel.h"
#include "movparser/src/atom_hvcc.h"
#include "movparser/src/atom_pasp.h"
#include "movparser/src/atom_st3d.h"
#include "movparser/src/atom_sv3d.h"
#include "movparser/src/sample_description.h"

namespace Tavro::MovParserLib {

class VideoSampleDescription : public SampleDescription
{
public:
    using SampleDescription::operator=;
    uint64_t GetSize() const override;
    [[nodiscard]] MovAtom::Error Read(FileBuffer &buffer) override;
    [[nodiscard]] MovAtom::Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    std::unique_ptr<SampleDescription> Clone() const override;

    uint16_t version = 0;
    uint16_t revisionLevel = 0;
    uint32_t vendor = FourCC("    ");
    uint32_t temporalQuality = 0;
    uint32_t spatialQuality = 1023;
    uint16_t width = 0; ///< In pixels.
    uint16_t height = 0;
    uint32_t horizontalResolution = 0x480000; ///< 16.16, pixels per inch.
    uint32_t verticalResolution = 0x480000;
    uint32_t dataSize = 0;
    uint16_t frameCount = 1; ///< Frames in a sample.
    std::array<uint8_t, 32> compressorName = {}; ///< A length and that many characters.
    uint16_t depth = 24; ///< Bits per pixel.
    int16_t colorTableId = -1;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.version, self.revisionLevel, self.vendor, self.temporalQuality,
                        self.spatialQuality, self.width, self.height, self.horizontalResolution,
                        self.verticalResolution, self.dataSize, self.frameCount,
                        self.compressorName, self.depth, self.colorTableId);
    }

    AtomPtr<ColorAtom> color;
    AtomPtr<FieldsAtom> fields;
    AtomPtr<PixelAspectAtom> pixelAspect;
    AtomPtr<AVCCAtom> avcc;
    AtomPtr<HVCCAtom> hvcc;
    AtomPtr<stereoVideoAtom> stereo;
    AtomPtr<sphericalVideoAtom> spherical;
    UnparsedMap unparsed;
};

} // namespace Tavro::MovParserLib
