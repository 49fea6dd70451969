// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The entry of a text track.

#include "movparser/src/sample_description.h"

#include <string>

namespace Tavro::MovParserLib {

class TextSampleDescription : public SampleDescription
{
public:
    using SampleDescription::operator=;
    uint64_t GetSize() const override;
    [[nodiscard]] MovAtom::Error Read(FileBuffer &buffer) override;
    [[nodiscard]] MovAtom::Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    std::unique_ptr<SampleDescription> Clone() const override;

    uint32_t displayFlags = 0;
    uint32_t textJustification = 0;
    std::array<uint16_t, 3> backgroundColor = {};
    std::array<uint16_t, 4> defaultTextBox = {}; ///< Top, left, bottom, right.
    uint64_t textReserved = 0;
    uint16_t fontNumber = 0;
    uint16_t fontFace = 0;
    std::array<uint8_t, 3> fontReserved = {};
    std::array<uint16_t, 3> foregroundColor = {};

    template <class Self> static auto Fields(Self &self)
    {
        return std::tie(self.displayFlags, self.textJustification, self.backgroundColor,
                        self.defaultTextBox, self.textReserved, self.fontNumber, self.fontFace,
                        self.fontReserved, self.foregroundColor);
    }

    /// The name of the font; empty when the entry has none.
    const std::string &GetTextName() const { return m_textName; }

    /// At most 127 bytes, which is asserted.
    void SetTextName(const char *textName);

private:
    uint64_t CountedNameSize() const;

    std::string m_textName; ///< At most 255 bytes, as read.
};

} // namespace Tavro::MovParserLib
