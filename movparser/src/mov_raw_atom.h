// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The base of the maker's atoms whose payload is kept as bytes.

#include "movparser/src/mov_atom.h"

#include <vector>

namespace Tavro::MovParserLib {

class MovRawAtom : public MovAtom
{
public:
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    using MovAtom::Read;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    uint64_t GetSize() const override;

    std::vector<uint8_t> data;

protected:
    /// What is written when there are no data.
    enum class EmptyForm {
        kPreambleOnly,
        kZeroByte, ///< A single 0 byte, so that a reader of the text finds its end.
        kRefused ///< Write() fails.
    };

    MovRawAtom(uint32_t type_, EmptyForm emptyForm)
        : MovAtom(type_)
        , m_ownType(type_)
        , m_emptyForm(emptyForm)
    { }

    /// An indented line of a label and the bytes.
    void PrintBytes(std::string *out, uint32_t depth, const char *label) const;

private:
    uint32_t m_ownType; ///< What Read() insists on; a refused atom leaves its type in `type`.
    EmptyForm m_emptyForm;
};

} // namespace Tavro::MovParserLib
