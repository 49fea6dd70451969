// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Opens a movie file, reads its `moov` without touching the media data, and answers questions
// about it. The one class that an application needs.

#include "movparser/src/mov_file.h"
#include "movparser/src/sample_buffer.h"
#include "movparser/src/sync_file_reader_qt.h"

#include <string>

namespace Tavro::MovParserLib {

class AVCCAtom;
class ColorAtom;
class EsdsAtom;
class FieldsAtom;
class HVCCAtom;
class PixelAspectAtom;
class SoundSampleDescription;
class TimeCodeSampleDescription;

/// Which of a movie's tracks: the n-th with a handler, from 0 in file order. Of the tracks with the
/// handler `meta` only the maker's telemetry counts.
struct TrackRef
{
    uint32_t handlerType = FourCC("vide");
    uint32_t n = 0;
};

/// Every operation that returns a number returns 0 on success and domain | code otherwise; the
/// failure is also a line on standard error, where nothing else is told. A null output pointer
/// returns 5. Outputs of a failed operation are not to be used. Nothing throws; want of memory is a
/// failure like others. A reader belongs to one thread.
class MovFileReader : public MovFile
{
public:
    /// Bytes of the largest `moov` that is opened: weeks of media. A file with a hole in it may
    /// claim any size; more than this is ERROR_BUFFER_ALLOC as if there were no such memory.
    static constexpr uint64_t kMaxMovieSize = uint64_t{256} << 20;

    MovFileReader() = default;
    virtual ~MovFileReader();
    MovFileReader(const MovFileReader &) = delete;
    MovFileReader &operator=(const MovFileReader &) = delete;

    /// True for the atoms that a file of the family begins with. Others are refused, with a line,
    /// by that alone: who asks first spares a file of another family the line.
    static bool IsFirstAtom(uint32_t type);

    /// Opens and parses. Forgets an earlier file. The file stays open for reading samples.
    [[nodiscard]] uint32_t Open(const QString &path);
    /// The same with a name in UTF-8.
    [[nodiscard]] uint32_t Open(const char *path);

    [[nodiscard]] uint32_t Open(const std::string &path) { return Open(path.c_str()); }

    /// True when a video track has samples.
    bool HasVideo() const;

    /// The size in pixels by the first description of the first video track.
    [[nodiscard]] uint32_t GetFrameSize(uint32_t *width, uint32_t *height) const;

    /// Frames a second to three decimals. 0x10000, without a line, when the track does not say.
    [[nodiscard]] uint32_t GetFrameRate(double *rate) const;

    /// Whether a camera of the maker recorded the file.
    [[nodiscard]] uint32_t IsTavroFile(bool *result) const;

    /// In whole degrees.
    [[nodiscard]] uint32_t GetInitialPose(float *yaw, float *pitch, float *roll) const;

    /// 0 unknown, 1 equirectangular, 256 cube map.
    [[nodiscard]] uint32_t GetProjection(uint32_t *projection) const;

    /// 0 none, 1 left-right, 2 top-bottom.
    [[nodiscard]] uint32_t GetStereoMode(uint32_t *mode) const;

    [[nodiscard]] uint32_t GetWritingTool(std::string *tool) const;

    /// Tracks of a kind that have samples, told as by a TrackRef.
    uint32_t GetTrackCount(uint32_t handlerType) const;
    bool HasTimeCode() const; ///< The video track refers to a timecode track.
    bool HasText() const;
    bool HasMetadata() const; ///< A telemetry track of the maker.

    // Per track.
    [[nodiscard]] uint32_t GetTimeScale(uint32_t *timeScale, TrackRef track = {}) const;
    [[nodiscard]] uint32_t GetMovieTimeScale(uint32_t *timeScale) const;
    /// In units of the media.
    [[nodiscard]] uint32_t GetTrackDuration(uint32_t *duration, TrackRef track = {}) const;
    /// In seconds; 0 without a time scale.
    [[nodiscard]] uint32_t GetTrackSeconds(double *seconds, TrackRef track = {}) const;
    [[nodiscard]] uint32_t GetSampleCount(uint32_t *count, TrackRef track = {}) const;
    /// The shortest and longest duration of a sample, in units of the media.
    [[nodiscard]] uint32_t GetDurationRange(uint32_t *shortest, uint32_t *longest,
                                            TrackRef track = {}) const;
    /// Units a frame, and units a second by which it counts.
    [[nodiscard]] uint32_t GetFrameDuration(uint64_t *frameDuration, uint64_t *timeScale) const;

    // What the samples are, by the first description of a track: the first video track, the n-th
    // sound track, or the timecode track that the video refers to. What is handed out stays the
    // reader's, until it opens another file. 0x40003 where the description has no such atom.
    /// The fourcc of the data's format.
    [[nodiscard]] uint32_t GetCodec(uint32_t *format, TrackRef track = {}) const;
    [[nodiscard]] uint32_t GetPixelAspect(const PixelAspectAtom **atom) const;
    [[nodiscard]] uint32_t GetColorParameters(const ColorAtom **atom) const;
    [[nodiscard]] uint32_t GetFields(const FieldsAtom **atom) const;
    [[nodiscard]] uint32_t GetAvcConfiguration(const AVCCAtom **atom) const;
    [[nodiscard]] uint32_t GetHevcConfiguration(const HVCCAtom **atom) const;
    /// Channels, sample size and rate, compression, packets.
    [[nodiscard]] uint32_t GetSoundDescription(const SoundSampleDescription **description,
                                               uint32_t n = 0) const;
    [[nodiscard]] uint32_t GetChannelCount(uint32_t *channels, uint32_t n = 0) const;
    [[nodiscard]] uint32_t GetSampleBits(uint32_t *bits, uint32_t n = 0) const;
    [[nodiscard]] uint32_t GetSampleRate(double *rate, uint32_t n = 0) const; ///< In hertz.
    [[nodiscard]] uint32_t GetCompressionId(int32_t *id, uint32_t n = 0) const;
    /// 0 where the description's version does not say.
    [[nodiscard]] uint32_t GetBytesPerPacket(uint32_t *bytes, uint32_t n = 0) const;
    [[nodiscard]] uint32_t GetEsds(const EsdsAtom **atom, uint32_t n = 0) const;
    /// Frame duration, time scale, frames a second, flags and name.
    [[nodiscard]] uint32_t
    GetTimeCodeDescription(const TimeCodeSampleDescription **description) const;

    /// What the camera says; 0x40003 without any.
    [[nodiscard]] uint32_t GetUserData(const UserDataAtom **userData) const;

    // Per sample. Indices count from 0 in decoding order, times are microseconds.
    [[nodiscard]] uint32_t GetSampleInfo(uint32_t index, SampleInfo *info,
                                         TrackRef track = {}) const;
    /// The sample whose time of decoding and duration hold `time`; GetSampleInfo() tells times of
    /// display, which differ where a `ctts` shifts them.
    [[nodiscard]] uint32_t GetSampleIndexForTime(uint64_t time, uint32_t *index,
                                                 TrackRef track = {}) const;
    [[nodiscard]] uint32_t ReadSample(uint32_t index, SampleBuffer *sample, TrackRef track = {});
    /// Into a caller's memory; `size` becomes the bytes written.
    [[nodiscard]] uint32_t ReadSample(uint32_t index, void *memory, uint64_t capacity,
                                      uint64_t *size, TrackRef track = {});

    /// The frame number in the first sample of the timecode track.
    [[nodiscard]] uint32_t GetTimeCodeStart(uint32_t *frame);

    /// Position in the file and size of the first `mdat`.
    [[nodiscard]] uint32_t LocateMediaData(uint64_t *position, uint64_t *size);

    /// Where the `moov` lies in the file; 0 until a file has been parsed.
    uint64_t GetMoviePosition() const { return moov_position; }

    /// Debugging: writes the movie to memory, reads it back and prints what came of it. Refuses a
    /// movie that would be larger than one that is opened.
    [[nodiscard]] uint32_t PrintRewritten();

private:
    struct AtomHeader
    {
        uint64_t size = 0;
        uint32_t type = 0;
        uint64_t end = 0; ///< Position behind the atom.
    };

    // What operations return, reported at this boundary of the library: a code of the atoms, a null
    // output pointer, a track that is not there.
    static uint32_t Report(MovAtom::Error error);
    static uint32_t InvalidArgument();
    static uint32_t NoTrack();

    /// What an operation returns; want of memory in it is reported and returned like a failure.
    template <class Act> static uint32_t Guarded(Act &&act);

    template <class T> static bool IsNull(T *pointer) { return !pointer; }

    template <class T> static bool IsNull(T) { return false; }

    /// Passes a question on to the sample layers of a track, which may be null.
    template <class... Parameter, class... Argument>
    static uint32_t Ask(const TrackAtom *track,
                        MovAtom::Error (MediaInformationAtom::*question)(Parameter...) const,
                        Argument... argument)
    {
        if ((IsNull(argument) || ...))
            return InvalidArgument();
        return track ? Report((track->Information().*question)(argument...)) : NoTrack();
    }

    [[nodiscard]] uint32_t Parse(const QString &path);
    [[nodiscard]] uint32_t Rewrite(MovieAtom *copy);
    /// Through a buffer that may be used for the next header again.
    [[nodiscard]] uint32_t ReadAtomHeaderAt(uint64_t position, FileBuffer *buffer,
                                            AtomHeader *header);
    [[nodiscard]] uint32_t Locate(uint32_t type, uint64_t *position, uint64_t *size);
    [[nodiscard]] uint32_t LocateMovieAtom(uint64_t *position, uint64_t *size);
    const TrackAtom *Find(TrackRef track) const;
    const TrackAtom *FindTimeCodeTrack() const;
    [[nodiscard]] uint32_t GetInfo(const TrackAtom *track, uint32_t index, SampleInfo *info) const;

    SyncFileReaderQt reader;
    uint64_t moov_position = 0;
};

} // namespace Tavro::MovParserLib
