// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Builds atoms byte by byte for tests, without the library that is tested. Sizes come out right by
// themselves; a test that wants a wrong one says so.

#include "movparser/src/mov_atom.h"

#include <QtCore/QByteArray>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>

class Box
{
public:
    /// An atom with this type, four characters (a 0 byte may be among them).
    explicit Box(const QByteArray &type)
        : m_type(type)
    { }

    /// With version and flags in front of the payload.
    static Box full(const QByteArray &type, uint32_t version = 0, uint32_t flags = 0)
    {
        return Box(type).u32(version << 24 | flags);
    }

    Box &&u8(uint64_t value) && { return std::move(*this).raw(encode(value, 1)); }

    Box &&u16(uint64_t value) && { return std::move(*this).raw(encode(value, 2)); }

    Box &&u32(uint64_t value) && { return std::move(*this).raw(encode(value, 4)); }

    Box &&u64(uint64_t value) && { return std::move(*this).raw(encode(value, 8)); }

    /// Numbers of 16 bits, one behind the other.
    Box &&shorts(std::initializer_list<uint16_t> values) &&
    {
        for (const uint16_t value : values)
            m_payload += encode(value, 2);
        return std::move(*this);
    }

    /// Numbers of 32 bits.
    Box &&words(std::initializer_list<uint32_t> values) &&
    {
        for (const uint32_t value : values)
            m_payload += encode(value, 4);
        return std::move(*this);
    }

    /// Bytes in hexadecimal; blanks do not count.
    Box &&hex(const char *text) && { return std::move(*this).raw(QByteArray::fromHex(text)); }

    Box &&raw(const QByteArray &bytes) &&
    {
        m_payload += bytes;
        return std::move(*this);
    }

    Box &&child(const Box &box) && { return std::move(*this).raw(box.bytes()); }

    Box &&zeros(int count) && { return std::move(*this).raw(QByteArray(count, '\0')); }

    /// Declares this size instead of the true one.
    Box &&claims(uint64_t size) &&
    {
        m_claimed = size;
        return std::move(*this);
    }

    /// Writes a 64-bit size.
    Box &&wide() &&
    {
        m_wide = true;
        return std::move(*this);
    }

    Box &&claimsWide(uint64_t size) && { return std::move(*this).claims(size).wide(); }

    const QByteArray &type() const { return m_type; }

    QByteArray bytes() const
    {
        const uint64_t size = m_claimed.value_or(uint64_t(m_payload.size()) + (m_wide ? 16 : 8));
        QByteArray all = encode(m_wide ? 1 : size, 4).append(m_type);
        if (m_wide)
            all.append(encode(size, 8));
        return all.append(m_payload);
    }

    operator QByteArray() const { return bytes(); }

    static QByteArray encode(uint64_t value, int width)
    {
        QByteArray bytes;
        while (width-- > 0)
            bytes += char(value >> (8 * width));
        return bytes;
    }

private:
    QByteArray m_type;
    QByteArray m_payload;
    std::optional<uint64_t> m_claimed;
    bool m_wide = false;
};

/// A buffer over a copy of bytes whose block ends where they end, so that the address sanitizer
/// sees a read behind them.
template <class Buffer = Tavro::MovParserLib::FileBuffer> class ExactBuffer
{
public:
    ExactBuffer(const void *bytes, size_t size)
        : m_block(new uint8_t[std::max<size_t>(size, 1)])
    {
        std::memcpy(m_block.get(), bytes, size);
        static_cast<void>(m_buffer.Alloc(std::max<size_t>(size, 1), m_block.get()));
        m_buffer.SetLogicalSize(size);
        m_buffer.SetBytesLeft(size);
    }

    explicit ExactBuffer(const QByteArray &bytes)
        : ExactBuffer(bytes.constData(), size_t(bytes.size()))
    { }

    Buffer &operator*() { return m_buffer; }

    Buffer *operator->() { return &m_buffer; }

    QByteArray bytes() const
    {
        uint64_t size = 0;
        m_buffer.GetLogicalSize(&size);
        return QByteArray(reinterpret_cast<const char *>(m_buffer.GetData()), int(size));
    }

private:
    std::unique_ptr<uint8_t[]> m_block;
    Buffer m_buffer;
};

/// What an atom is written as; empty when it cannot be, or when its size is not that of its bytes.
template <class Atom> QByteArray written(Atom &&atom)
{
    ExactBuffer buffer(QByteArray(int(atom.GetSize()), '\x55'));
    const bool isRight =
        atom.Write(*buffer) == std::decay_t<Atom>::ERROR_OKAY && buffer->BytesLeft() == 0;
    return isRight ? buffer.bytes() : QByteArray();
}
