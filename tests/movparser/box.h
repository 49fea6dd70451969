// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Builds atoms byte by byte for tests, without the library that is tested. Sizes come out right by
// themselves; a test that wants a wrong one says so.

#include "movparser/src/file_buffer.h"

#include <QtCore/QByteArray>

#include <cstdint>
#include <initializer_list>
#include <memory>

class Box
{
public:
    /// An atom with this type, four characters (a 0 byte may be among them).
    explicit Box(const QByteArray &type)
        : m_type(type)
    { }

    /// Version 0 and flags 0 in front of the payload.
    static Box full(const QByteArray &type) { return Box(type).u32(0); }

    /// The same with the numbers of a test.
    static Box full(const QByteArray &type, uint8_t version, uint32_t flags)
    {
        return Box(type).u32(uint32_t(version) << 24 | flags);
    }

    Box &&u8(uint64_t value) && { return std::move(number(value, 1)); }

    Box &&u16(uint64_t value) && { return std::move(number(value, 2)); }

    Box &&u32(uint64_t value) && { return std::move(number(value, 4)); }

    Box &&u64(uint64_t value) && { return std::move(number(value, 8)); }

    /// Numbers of 16 bits, one behind the other.
    Box &&shorts(std::initializer_list<uint16_t> values) &&
    {
        for (const uint16_t value : values)
            number(value, 2);
        return std::move(*this);
    }

    /// Numbers of 32 bits.
    Box &&words(std::initializer_list<uint32_t> values) &&
    {
        for (const uint32_t value : values)
            number(value, 4);
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
    Box &&claims(uint32_t size) &&
    {
        m_claimed = size;
        m_lies = true;
        return std::move(*this);
    }

    /// Writes a 64-bit size: the true one, or this.
    Box &&wide() &&
    {
        m_wide = true;
        return std::move(*this);
    }

    Box &&claimsWide(uint64_t size) &&
    {
        m_claimed = size;
        m_lies = true;
        return std::move(*this).wide();
    }

    const QByteArray &type() const { return m_type; }

    QByteArray bytes() const
    {
        const int preamble = m_wide ? 16 : 8;
        const uint64_t size = m_lies ? m_claimed : uint64_t(preamble + m_payload.size());
        QByteArray all = encode(m_wide ? 1 : size, 4);
        all.append(m_type);
        if (m_wide)
            all.append(encode(size, 8));
        all.append(m_payload);
        return all;
    }

    static QByteArray encode(uint64_t value, int width)
    {
        QByteArray bytes;
        while (width-- > 0)
            bytes += char(value >> (8 * width));
        return bytes;
    }

private:
    Box &number(uint64_t value, int width)
    {
        m_payload += encode(value, width);
        return *this;
    }

    QByteArray m_type;
    QByteArray m_payload;
    uint64_t m_claimed = 0;
    bool m_lies = false;
    bool m_wide = false;
};

/// A buffer over a copy of bytes whose block ends where they end, so that the address sanitizer
/// sees a read behind them.
class ExactBuffer
{
public:
    explicit ExactBuffer(const QByteArray &bytes)
        : m_block(new uint8_t[bytes.isEmpty() ? 1 : size_t(bytes.size())])
    {
        std::memcpy(m_block.get(), bytes.constData(), size_t(bytes.size()));
        static_cast<void>(
            m_buffer.Alloc(size_t(bytes.isEmpty() ? 1 : bytes.size()), m_block.get()));
        if (bytes.isEmpty()) {
            m_buffer.SetLogicalSize(0);
            m_buffer.SetBytesLeft(0);
        }
    }

    Tavro::MovParserLib::FileBuffer &operator*() { return m_buffer; }

    Tavro::MovParserLib::FileBuffer *operator->() { return &m_buffer; }

    QByteArray bytes() const
    {
        uint64_t size = 0;
        m_buffer.GetLogicalSize(&size);
        return QByteArray(reinterpret_cast<const char *>(m_buffer.GetData()), int(size));
    }

private:
    std::unique_ptr<uint8_t[]> m_block;
    Tavro::MovParserLib::FileBuffer m_buffer;
};
