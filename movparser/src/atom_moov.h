// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `moov`: a movie, all of its tracks and what is said about it.

#include "movparser/src/atom_mvhd.h"
#include "movparser/src/atom_trak.h"
#include "movparser/src/atom_udta.h"

#include <vector>

namespace Tavro::MovParserLib {

struct VideoTrackFormat
{
    uint32_t codec = 0; ///< The fourcc of the sample description.
    uint16_t width = 0; ///< In pixels.
    uint16_t height = 0;
    uint32_t timeScale = 0;
    uint32_t aspectNumerator = 1; ///< Of a pixel: width over height.
    uint32_t aspectDenominator = 1;
};

struct SoundTrackFormat
{
    uint32_t codec = 0;
    uint32_t channels = 0;
    double sampleRate = 0; ///< In hertz.
    uint32_t timeScale = 0;
};

/// Fails to read without a `trak`; `mvhd` may be absent. Children that are not modelled are kept.
class MovieAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("moov");

    MovieAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// The first track with this handler, or null.
    const TrackAtom *FindTrack(uint32_t handlerType) const;
    TrackAtom *FindTrack(uint32_t handlerType);

    /// The n-th one, from 0 in file order.
    const TrackAtom *FindTrack(uint32_t handlerType, uint32_t n) const;

    const TrackAtom *FindTrackById(uint32_t trackId) const;

    /// Appends a track with empty sample tables, with the number that the header says is next.
    /// `track` (may be null) is valid until another one is added. ERROR_INVALID_ARG for a picture
    /// without width or height and for sound of no known format; nothing is added then.
    [[nodiscard]] Error AddVideoTrack(const VideoTrackFormat &format, TrackAtom **track = nullptr);
    [[nodiscard]] Error AddSoundTrack(const SoundTrackFormat &format, TrackAtom **track = nullptr);

    MovieHeaderAtom header;
    std::vector<TrackAtom> tracks; ///< In file order.
    UnparsedMap unparsed;
    AtomPtr<UserDataAtom> user_data;

private:
    [[nodiscard]] Error ReadMovie(const ReadScope &scope);
    void Append(TrackAtom track, TrackAtom **added);
};

} // namespace Tavro::MovParserLib
