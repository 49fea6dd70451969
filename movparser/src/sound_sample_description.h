// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The entry of a sound track, in the three versions of its layout.

#include "movparser/src/atom_children.h"
#include "movparser/src/atom_esds.h"
#include "movparser/src/atom_sa3d.h"
#include "movparser/src/atom_wave.h"
#include "movparser/src/sample_description.h"

namespace Tavro::MovParserLib {

class SoundSampleDescription : public SampleDescription
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
    uint32_t vendor = 0;
    uint16_t numberOfChannels = 0;
    uint16_t sampleSize = 0; ///< In bits.
    int16_t compressionId = 0; ///< 0 for uncompressed sound, -2 for compressed sound with tables.
    uint16_t packetSize = 0;
    uint32_t sampleRate = 0; ///< In Hz, 16.16.

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.version, self.revisionLevel, self.vendor, self.numberOfChannels,
                        self.sampleSize, self.compressionId, self.packetSize, self.sampleRate);
    }

    // In the file with version 1.
    uint32_t samplesPerPacket = 0;
    uint32_t bytesPerPacket = 0;
    uint32_t bytesPerFrame = 0;
    uint32_t bytesPerSample = 0;

    template <class Self> static auto Version1Fields(Self &self)
    {
        return std::tie(self.samplesPerPacket, self.bytesPerPacket, self.bytesPerFrame,
                        self.bytesPerSample);
    }

    // In the file with version 2.
    uint32_t sizeOfStructure = 72; ///< Bytes of the entry up to its children.
    double audioSampleRate = 0; ///< In Hz.
    uint32_t channelCount = 0;
    uint32_t constant = 0x7f000000;
    uint32_t bitsPerChannel = 0;
    uint32_t formatFlags = 0;
    uint32_t bytesPerAudioPacket = 0;
    uint32_t lpcmFramesPerAudioPacket = 0;

    template <class Self> static auto Version2Fields(Self &self)
    {
        return std::tie(self.sizeOfStructure, self.audioSampleRate, self.channelCount,
                        self.constant, self.bitsPerChannel, self.formatFlags,
                        self.bytesPerAudioPacket, self.lpcmFramesPerAudioPacket);
    }

    AtomPtr<WaveAtom> wave;
    AtomPtr<EsdsAtom> esds;
    AtomPtr<spatialAudioAtom> spatialAudio;
    UnparsedMap unparsed;

    /// Makes the entry describe sound of a format, in version 2. Formats of uncompressed sound and
    /// `mp4a` are known; ERROR_INVALID_ARG for others.
    [[nodiscard]] MovAtom::Error SetFormat(uint32_t format, uint32_t channels, double rate);
};

} // namespace Tavro::MovParserLib
