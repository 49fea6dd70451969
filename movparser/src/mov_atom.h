// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The base of every atom: the preamble of size and type, and the operations that each atom class
// answers in the same order.
//
// How a derived `Read` behaves: it reads the preamble with its own type, then its fields, and
// moves the cursor to the end that the preamble declares, which skips what the class does not
// model. On any failure the cursor is back at the atom's first byte and the code is
// ERROR_ATOM_READ_FAILED. A declared end behind the buffer's end is no failure by itself.
// Numbers are big-endian in the file and in host order in the members.

#include "movparser/src/file_buffer.h"

#include <cstdint>
#include <string>

namespace Tavro::MovParserLib {

/// The number of four characters as it stands in a file: the first one in the highest byte.
constexpr uint32_t FourCC(const char (&text)[5])
{
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | static_cast<uint8_t>(text[i]);
    return value;
}

class MovAtom
{
public:
    enum Error : uint32_t {
        ERROR_OKAY,
        ERROR_INVALID_ARG,
        ERROR_INVALID_RET_VAL,
        ERROR_ATOM_NOT_FOUND,
        ERROR_ATOM_READ_FAILED,
        ERROR_ATOM_WRITE_FAILED,
        ERROR_WRONG_ATOM_TYPE,
        ERROR_MEM_ALLOC,
        ERROR_INVALID_OP,
        ERROR_UNIMPLEMENTED_FUNCTION,
        ERROR_MALFORMED_ATOM,
        ERROR_ZERO_SIZE_ATOM
    };

    MovAtom() = default;
    MovAtom(const MovAtom &other) = default;
    virtual ~MovAtom() = default;

    /// Reads the atom at the cursor, whatever its type. A 32-bit size of 0 gives
    /// ERROR_ZERO_SIZE_ATOM.
    [[nodiscard]] virtual Error Read(FileBuffer &buffer);

    /// Reads the preamble only and insists on the type (ERROR_WRONG_ATOM_TYPE). A size of 0 is
    /// accepted here.
    [[nodiscard]] virtual Error Read(FileBuffer &buffer, uint32_t expectedType);

    /// Writes the atom with the size that GetSize() gives.
    [[nodiscard]] virtual Error Write(FileBuffer &buffer);

    virtual MovAtom &operator=(const MovAtom &other);

    /// Dumps to standard output what PrintToString() appends.
    virtual void Print(uint32_t depth) const;
    virtual void PrintToString(std::string *out, uint32_t depth) const;

    /// Bytes that the atom occupies when written.
    virtual uint64_t GetSize() const;

    virtual uint32_t GetType() const { return type; }

    uint64_t size = 0; ///< Bytes with the preamble, as read or as last written.
    uint32_t type = 0;

protected:
    explicit MovAtom(uint32_t type_)
        : type(type_)
    { }

    /// 16 when the stored size needs 64 bits, else 8. An atom that outgrows 32 bits in the very
    /// write that asks is therefore counted short once.
    uint64_t GetHeaderSize() const { return size > UINT32_MAX ? 16 : 8; }
};

/// Finds a sibling by type, from the cursor on and within `limit` bytes; on success the cursor is
/// at its first byte. An atom that ends the buffer and is not the one sought ends the search.
[[nodiscard]] MovAtom::Error FindAtom(FileBuffer &buffer, uint32_t type, uint64_t limit);

/// The type of the next atom, or 0 at a zero size or a short read; the cursor stays.
uint32_t PeekAtomType(FileBuffer &buffer);

} // namespace Tavro::MovParserLib
