// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once
// An atom as editable bytes. The atom classes of the library keep what the player models; a copy of
// somebody's film must keep everything, so the tagger splices into the bytes instead of rewriting
// them.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <vector>

/// Big-endian numbers at `at`, which must have `bytes` (1 to 8) bytes.
uint64_t readBigEndian(const uint8_t *at, size_t bytes);
void writeBigEndian(uint8_t *at, size_t bytes, uint64_t value);

/// Takes an atom's fields one behind the other; behind the last byte they are 0.
class FieldReader
{
public:
    explicit FieldReader(const std::vector<uint8_t> &fields)
        : m_fields(fields)
    { }

    /// A number of up to 8 bytes.
    uint64_t take(size_t bytes);

    size_t position() const { return m_position; }

    size_t left() const { return m_fields.size() - m_position; }

    /// Whether more was taken than there is.
    bool isCut() const { return m_isCut; }

private:
    const std::vector<uint8_t> &m_fields;
    size_t m_position = 0;
    bool m_isCut = false;
};

/// The preamble of an atom.
struct AtomHeader
{
    uint32_t type = 0;
    uint64_t headerSize = 0; ///< 8, or 16 with a 64-bit size.
    uint64_t size = 0; ///< Preamble included; 0 where the atom runs to the end of what holds it.

    /// Parses the first bytes of an atom; false with fewer bytes than the preamble has, or a size
    /// below the preamble's.
    bool parse(const uint8_t *at, uint64_t available);
};

/// Thrown where a film consists of more atoms than one that anybody made.
class TooManyAtoms : public std::exception
{
public:
    const char *what() const noexcept override { return "has too many atoms"; }
};

/// A node of the tree: a leaf until `split` makes a container of it.
struct RawAtom
{
    /// As many atoms as one tree, its copies included, may be taken apart into: each costs a
    /// multiple of the eight bytes that it takes in a file.
    static constexpr size_t kMaxAtoms = 1000000;

    uint32_t type = 0;
    std::vector<uint8_t> fields; ///< A leaf's payload, or what precedes a container's first child.
    std::vector<RawAtom> children;
    std::vector<uint8_t> tail; ///< What follows the last child and is no atom.
    uint64_t origin = 0; ///< Where `fields` stood in a file; 0 for what is new.

    /// Takes the payload apart into children that begin behind `fieldBytes` bytes. A second call
    /// changes nothing. False where the payload is shorter than that. Throws TooManyAtoms.
    bool split(size_t fieldBytes);

    /// The first child of a type, or null.
    RawAtom *child(uint32_t childType);
    const RawAtom *child(uint32_t childType) const;

    uint64_t size() const;
    uint64_t headerSize() const;
    void appendTo(std::vector<uint8_t> *out) const;

private:
    uint64_t payloadSize() const;

    bool m_isContainer = false;
    std::shared_ptr<size_t> m_atomsLeft; ///< Of the whole tree; made by the first split.
};
