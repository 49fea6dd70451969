// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `mdia`: the media of a track.

#include "movparser/src/atom_mdhd.h"
#include "movparser/src/atom_minf.h"

namespace Tavro::MovParserLib {

/// `mdhd` is mandatory. A handler that this library does not know, or none, gives no `minf`: the
/// track then reads well and has no samples.
class MediaAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("mdia");

    MediaAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// The subtype of the `hdlr`; without one 0 and ERROR_MALFORMED_ATOM.
    [[nodiscard]] Error GetHandlerType(uint32_t *handlerType) const;

    /// Copies up to 254 bytes and a terminator; without an `hdlr` ERROR_MALFORMED_ATOM.
    [[nodiscard]] Error GetName(char *buffer) const;

    /// The `minf`, or one that has no samples.
    const MediaInformationAtom &Information() const;

    MediaHeaderAtom header;
    AtomPtr<HandlerReferenceAtom> handler;
    AtomPtr<MediaInformationAtom> information;
};

} // namespace Tavro::MovParserLib
