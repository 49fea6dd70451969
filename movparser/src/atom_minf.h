// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `minf`: the sample layers of a track, in one class for each kind of media.

#include "movparser/src/atom_dinf.h"
#include "movparser/src/atom_gmhd.h"
#include "movparser/src/atom_hdlr.h"
#include "movparser/src/atom_smhd.h"
#include "movparser/src/atom_stbl.h"
#include "movparser/src/atom_vmhd.h"

namespace Tavro::MovParserLib {

/// The table of operations through which a track reaches its samples. The base class itself has
/// no samples and stands in where a track has no `minf`: its getters give ERROR_INVALID_RET_VAL
/// and its questions false. The kinds answer from their `stbl`, and like the base without one.
class MediaInformationAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("minf");

    MediaInformationAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;

    // Sample count, sample info, sample position.
    [[nodiscard]] virtual Error GetSampleCount(uint32_t *count) const;
    [[nodiscard]] virtual Error GetSampleInfo(uint32_t index, SampleInfo *info) const;
    [[nodiscard]] virtual Error GetSampleSize(uint32_t index, uint32_t *bytes) const;
    [[nodiscard]] virtual Error GetSampleTime(uint32_t index, uint64_t *time,
                                              uint32_t *duration) const;
    [[nodiscard]] virtual Error GetDisplayTime(uint32_t index, int64_t *time) const;
    [[nodiscard]] virtual Error GetSampleIndexForTime(uint64_t time, uint32_t *index) const;
    virtual bool IsSyncSample(uint32_t index) const;
    [[nodiscard]] virtual Error GetSamplePosition(uint32_t index, uint64_t *position) const;

    // Stream data.
    virtual bool HasSamples() const;
    [[nodiscard]] virtual Error SetHandlerType(uint32_t handler);

    virtual uint32_t GetHandlerType() const { return handlerType; }

    /// Null without samples.
    virtual SampleTableAtom *GetSampleTable() const { return nullptr; }

    /// Makes the header, a reference to the file itself and empty tables, for writing a track.
    [[nodiscard]] virtual Error CreateSampleTable();

    // Codec data, by the first sample description; see SampleDescriptionAtom.
    /// Null without samples.
    virtual SampleDescriptionAtom *GetSampleDescriptions() const { return nullptr; }

    [[nodiscard]] virtual Error GetCodec(uint32_t *format) const;
    [[nodiscard]] virtual Error GetPixelAspect(const PixelAspectAtom **atom) const;
    [[nodiscard]] virtual Error GetColorParameters(const ColorAtom **atom) const;
    [[nodiscard]] virtual Error GetFields(const FieldsAtom **atom) const;
    [[nodiscard]] virtual Error GetAvcConfiguration(const AVCCAtom **atom) const;
    [[nodiscard]] virtual Error GetHevcConfiguration(const HVCCAtom **atom) const;
    [[nodiscard]] virtual Error GetStereoMode(uint32_t *mode) const;
    [[nodiscard]] virtual Error GetProjection(uint32_t *projection) const;
    [[nodiscard]] virtual Error GetInitialPose(float *yaw, float *pitch, float *roll) const;
    [[nodiscard]] virtual Error GetWritingTool(std::string *tool) const;
    [[nodiscard]] virtual Error GetSoundDescription(const SoundSampleDescription **sound) const;
    [[nodiscard]] virtual Error GetChannelCount(uint32_t *channels) const;
    [[nodiscard]] virtual Error GetSampleBits(uint32_t *bits) const;
    [[nodiscard]] virtual Error GetSampleRate(double *rate) const;
    [[nodiscard]] virtual Error GetCompressionId(int32_t *id) const;
    [[nodiscard]] virtual Error GetBytesPerPacket(uint32_t *bytes) const;
    [[nodiscard]] virtual Error GetEsds(const EsdsAtom **atom) const;
    [[nodiscard]] virtual Error
    GetTimeCodeDescription(const TimeCodeSampleDescription **timeCode) const;
    [[nodiscard]] virtual Error AddVideoDescription(uint32_t format, uint16_t width,
                                                    uint16_t height);
    [[nodiscard]] virtual Error AddSoundDescription(uint32_t format, uint32_t channels,
                                                    double rate);

    // Chunk data, and what fills the tables.
    [[nodiscard]] virtual Error GetChunk(uint32_t index, SampleChunk *chunk) const;
    [[nodiscard]] virtual Error GetChunkOffset(uint32_t chunkNumber, uint64_t *position) const;
    [[nodiscard]] virtual Error GetChunkCount(uint32_t *count) const;
    [[nodiscard]] virtual Error AddSample(uint32_t bytes);
    [[nodiscard]] virtual Error AddSampleTime(uint32_t count, uint32_t duration);
    [[nodiscard]] virtual Error AddCompositionOffset(uint32_t count, int32_t delta);
    [[nodiscard]] virtual Error AddSyncSample(uint32_t number);
    [[nodiscard]] virtual Error AddSampleDependency(uint8_t dependency);
    [[nodiscard]] virtual Error AddChunk(uint64_t position, uint32_t sampleCount,
                                         uint32_t sampleDescriptionId);

    // Frame size and frame rate.
    [[nodiscard]] virtual Error GetFrameSize(uint32_t *width, uint32_t *height) const;
    [[nodiscard]] virtual Error GetDurationRange(uint32_t *shortest, uint32_t *longest) const;

    /// A copy of the kind that this is.
    virtual std::unique_ptr<MediaInformationAtom> Clone() const;

    uint32_t handlerType = 0; ///< Set by the owner before Read(), handed on to `stbl`.
};

/// What the kinds share: a header of their own, `hdlr`, `dinf` and `stbl`, each of which may be
/// absent in the file.
template <class Header> class KindOfMediaInformationAtom : public MediaInformationAtom
{
public:
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Read(FileBuffer &buffer, uint32_t expectedType) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    SampleTableAtom *GetSampleTable() const override { return sampleTable.get(); }

    [[nodiscard]] Error CreateSampleTable() override;

    SampleDescriptionAtom *GetSampleDescriptions() const override
    {
        return sampleTable ? &sampleTable->sampleDescriptions : nullptr;
    }

    AtomPtr<Header> header;
    AtomPtr<HandlerReferenceAtom> dataHandler;
    AtomPtr<DataInformationAtom> dataInformation;
    AtomPtr<SampleTableAtom> sampleTable;

protected:
    virtual const char *Name() const = 0; ///< In the dump.
};

class VideoMediaInformationAtom final
    : public KindOfMediaInformationAtom<VideoMediaInformationHeaderAtom>
{
public:
    using MovAtom::operator=;
    std::unique_ptr<MediaInformationAtom> Clone() const override;

protected:
    const char *Name() const override { return "VideoMediaInformationAtom"; }
};

class SoundMediaInformationAtom final
    : public KindOfMediaInformationAtom<SoundMediaInformationHeaderAtom>
{
public:
    using MovAtom::operator=;
    std::unique_ptr<MediaInformationAtom> Clone() const override;

protected:
    const char *Name() const override { return "SoundMediaInformationAtom"; }
};

/// Timecode, text and metadata.
class BaseMediaInformationAtom final
    : public KindOfMediaInformationAtom<BaseMediaInformationHeaderAtom>
{
public:
    using MovAtom::operator=;
    std::unique_ptr<MediaInformationAtom> Clone() const override;

protected:
    const char *Name() const override { return "BaseMediaInformationAtom"; }
};

/// The kind for a handler type, or null for a handler that has none here.
std::unique_ptr<MediaInformationAtom> MakeMediaInformation(uint32_t handlerType);

} // namespace Tavro::MovParserLib
