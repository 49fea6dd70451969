// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `esds`: the elementary stream descriptor of MPEG-4 sound, in the layout of ISO/IEC 14496-1, with
// the decoder's own settings in the layout of ISO/IEC 14496-3.

#include "movparser/src/mov_full_atom.h"

#include <vector>

namespace Tavro::MovParserLib {

class EsdsAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("esds");

    EsdsAtom()
        : MovFullAtom(kType)
    { }

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// Makes the atom describe sound of that rate in Hz and that many channels.
    void SetAudio(uint32_t sampleRate, uint32_t channels);

    struct
    {
        uint16_t esId = 0;
        bool streamDependenceFlag = false;
        bool URLFlag = false;
        bool oCRstreamFlag = false;
        uint8_t streamPriority = 0; ///< 5 bits.
        uint16_t dependsOnEsId = 0;
        std::vector<uint8_t> URLString; ///< At most 255 bytes.
        uint16_t oCREsId = 0;
    } ES_Descriptor;

    struct
    {
        uint8_t objectTypeIndication = 0x40;
        uint8_t streamType = 5; ///< 6 bits.
        bool upStream = false;
        uint32_t bufferSizeDB = 8192; ///< 24 bits.
        uint32_t maxBitRate = 256000;
        uint32_t avgBitRate = 0;
    } decoderConfigDescriptor;

    /// The decoder's settings as bytes: what is written. The two records below are decoded from
    /// them and follow them in Read() and SetAudio().
    std::vector<uint8_t> decoderSpecificInfo;

    struct
    {
        uint8_t audioObjectType = 2;
        uint8_t samplingFrequencyIndex = 15;
        uint32_t samplingFrequency = 0; ///< In Hz; in the file with the index 15 only.
        uint8_t channelConfiguration = 0;
    } AudioSpecificConfig;

    struct
    {
        bool frameLengthFlag = false;
        bool dependsOnCoreCoder = false;
        uint16_t coreCoderDelay = 0;
        bool extensionFlag = false;
        uint8_t layerNr = 0;
        uint8_t numOfSubFrame = 0;
        uint16_t layer_length = 0;
        bool aacSectionDataResilienceFlag = false;
        bool aacScalefactorDataResilienceFlag = false;
        bool aacSpectralDataResilienceFlag = false;
    } GASpecificConfig;

    struct
    {
        uint8_t predefined = 2;
    } SLConfigDescriptor;

private:
    [[nodiscard]] Error ReadStreamFields(FileBuffer &buffer);
    [[nodiscard]] Error ReadDecoderConfig(FileBuffer &buffer);
    void DecodeSpecificInfo();
    uint64_t StreamLength() const; ///< Of the stream descriptor, without its head.
    uint64_t DecoderConfigLength() const; ///< The same of the decoder's.
};

} // namespace Tavro::MovParserLib
