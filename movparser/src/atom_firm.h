// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `FIRM`: the version of the camera's firmware. Its presence marks a file of the maker.

#include "movparser/src/mov_atom.h"

#include <string>
#include <vector>

namespace Tavro::MovParserLib {

class TavroCameraFirmwareAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("FIRM");

    TavroCameraFirmwareAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// The text, or null when the atom has no payload. It ends at its first 0 byte.
    const char *GetVersion() const { return m_version.empty() ? nullptr : m_version.data(); }

    /// An empty text leaves an atom without payload.
    void SetVersion(const std::string &text);

private:
    std::vector<char> m_version; ///< The payload and a 0 byte, or nothing.
};

} // namespace Tavro::MovParserLib
