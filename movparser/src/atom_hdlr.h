// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `hdlr`: what kind of media a track holds, and its name.

#include "movparser/src/mov_full_atom.h"

#include <tuple>

namespace Tavro::MovParserLib {

class HandlerReferenceAtom : public MovFullAtom
{
public:
    static constexpr uint32_t kType = FourCC("hdlr");

    HandlerReferenceAtom()
        : MovFullAtom(kType)
    { }

    static constexpr uint32_t kMediaHandler = FourCC("mhlr");
    static constexpr uint32_t kDataHandler = FourCC("dhlr");
    static constexpr uint32_t kAliasSubtype = FourCC("alis");

    /// The name is written as a counted string when the component type is one of the two above,
    /// else as a terminated text.
    HandlerReferenceAtom(uint32_t type_, uint32_t subtype, const std::string &name_);

    using MovFullAtom::Read;
    using MovFullAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// The name up to its first 0 byte.
    std::string_view GetName() const;

    /// Keeps the form; a counted name is cut to the 254 bytes that can be told from a text.
    void SetName(const std::string &name_);

    uint32_t componentType = 0;
    uint32_t componentSubtype = 0; ///< The track's handler type.
    uint32_t componentManufacturer = 0;
    uint32_t componentFlags = 0;
    uint32_t componentFlagsMask = 0;

    /// The name's bytes as they stand in the file, without the length byte of the counted form
    /// and with the terminator of the text form, so that they are written back unchanged.
    std::string nameBytes;
    bool hasCountedName = false;

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.componentType, self.componentSubtype, self.componentManufacturer,
                        self.componentFlags, self.componentFlagsMask);
    }

private:
    [[nodiscard]] Error ReadName(FileBuffer &buffer, uint64_t rest);
};

} // namespace Tavro::MovParserLib
