// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/RawAtom.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {
uint64_t headerSizeFor(uint64_t payload)
{
    return payload + 8 > std::numeric_limits<uint32_t>::max() ? 16 : 8;
}
} // namespace

uint64_t readBigEndian(const uint8_t *at, size_t bytes)
{
    uint64_t value = 0;
    for (size_t i = 0; i < bytes; ++i)
        value = value << 8 | at[i];
    return value;
}

void writeBigEndian(uint8_t *at, size_t bytes, uint64_t value)
{
    for (size_t i = bytes; i-- > 0; value >>= 8)
        at[i] = static_cast<uint8_t>(value);
}

uint64_t FieldReader::take(size_t bytes)
{
    m_isCut = m_isCut || bytes > 8 || bytes > left();
    if (m_isCut)
        return 0;
    m_position += bytes;
    return readBigEndian(m_fields.data() + m_position - bytes, bytes);
}

bool AtomHeader::parse(const uint8_t *at, uint64_t available)
{
    if (available < 8)
        return false;
    headerSize = 8;
    size = readBigEndian(at, 4);
    type = static_cast<uint32_t>(readBigEndian(at + 4, 4));
    if (size == 1) {
        if (available < 16)
            return false;
        headerSize = 16;
        size = readBigEndian(at + 8, 8);
    }
    return size == 0 || size >= headerSize;
}

bool RawAtom::split(size_t fieldBytes)
{
    if (m_isContainer)
        return true;
    if (fields.size() < fieldBytes)
        return false;
    if (!m_atomsLeft)
        m_atomsLeft = std::make_shared<size_t>(kMaxAtoms);
    size_t at = fieldBytes;
    AtomHeader header;
    while (header.parse(fields.data() + at, fields.size() - at) && header.size != 0
           && header.size <= fields.size() - at) {
        if ((*m_atomsLeft)-- == 0)
            throw TooManyAtoms();
        const auto begin = fields.cbegin() + static_cast<ptrdiff_t>(at);
        RawAtom atom;
        atom.type = header.type;
        atom.m_atomsLeft = m_atomsLeft;
        atom.origin = origin == 0 ? 0 : origin + at + header.headerSize;
        atom.fields.assign(begin + static_cast<ptrdiff_t>(header.headerSize),
                           begin + static_cast<ptrdiff_t>(header.size));
        children.push_back(std::move(atom));
        at += header.size;
    }
    tail.assign(fields.cbegin() + static_cast<ptrdiff_t>(at), fields.cend());
    fields.resize(fieldBytes);
    m_isContainer = true;
    return true;
}

RawAtom *RawAtom::child(uint32_t childType)
{
    return const_cast<RawAtom *>(std::as_const(*this).child(childType));
}

const RawAtom *RawAtom::child(uint32_t childType) const
{
    const auto found = std::find_if(children.begin(), children.end(),
                                    [childType](const RawAtom &a) { return a.type == childType; });
    return found == children.end() ? nullptr : &*found;
}

uint64_t RawAtom::payloadSize() const
{
    uint64_t payload = fields.size() + tail.size();
    for (const RawAtom &atom : children)
        payload += atom.size();
    return payload;
}

uint64_t RawAtom::headerSize() const
{
    return headerSizeFor(payloadSize());
}

uint64_t RawAtom::size() const
{
    const uint64_t payload = payloadSize();
    return payload + headerSizeFor(payload);
}

void RawAtom::appendTo(std::vector<uint8_t> *out) const
{
    const uint64_t total = size();
    const bool wide = total > std::numeric_limits<uint32_t>::max();
    uint8_t header[16];
    writeBigEndian(header, 4, wide ? 1 : total);
    writeBigEndian(header + 4, 4, type);
    writeBigEndian(header + 8, 8, total);
    out->insert(out->end(), header, header + (wide ? 16 : 8));
    out->insert(out->end(), fields.cbegin(), fields.cend());
    for (const RawAtom &atom : children)
        atom.appendTo(out);
    out->insert(out->end(), tail.cbegin(), tail.cend());
}
