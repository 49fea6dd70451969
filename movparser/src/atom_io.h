// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How atoms read and write their fields. A class lists its fields once, in file order, as a tuple
// of references (`Fields(*this)`); the same list is read, written, measured and compared. The
// width in the file is the member's own width; arrays stand for repeated fields.

#include "movparser/src/mov_atom.h"

#include <QtCore/QtEndian>

#include <array>
#include <new>
#include <tuple>
#include <type_traits>
#include <vector>

namespace Tavro::MovParserLib {

/// Remembers an atom's first byte for the two ways in which a `Read` ends.
class ReadScope
{
public:
    explicit ReadScope(FileBuffer &buffer)
        : m_buffer(buffer)
        , m_start(buffer.Tell())
    { }

    /// Back to the first byte.
    MovAtom::Error Fail() const
    {
        static_cast<void>(m_buffer.Seek(static_cast<int64_t>(m_start), 0));
        return MovAtom::ERROR_ATOM_READ_FAILED;
    }

    /// On to the declared end. When that lies behind the buffer, the cursor stays behind the last
    /// field: the size is only believed as far as bytes are there.
    MovAtom::Error Finish(uint64_t size) const
    {
        if (size <= static_cast<uint64_t>(INT64_MAX) - m_start)
            static_cast<void>(m_buffer.Seek(static_cast<int64_t>(m_start + size), 0));
        return MovAtom::ERROR_OKAY;
    }

    /// Bytes between the first byte and the cursor.
    uint64_t Consumed() const { return m_buffer.Tell() - m_start; }

    /// Bytes between the cursor and the declared end, 0 when the cursor is past it.
    uint64_t Remaining(uint64_t size) const { return size > Consumed() ? size - Consumed() : 0; }

    FileBuffer &Buffer() const { return m_buffer; }

private:
    FileBuffer &m_buffer;
    uint64_t m_start;
};

/// Leaves a `Read` with the cursor at the first byte when `call` fails.
#define MOV_READ(scope, call)                                                                      \
    do {                                                                                           \
        if ((call) != MovAtom::ERROR_OKAY)                                                         \
            return (scope).Fail();                                                                 \
    } while (false)

/// Leaves a `Write` when `call` fails.
#define MOV_WRITE(call)                                                                            \
    do {                                                                                           \
        if ((call) != MovAtom::ERROR_OKAY)                                                         \
            return MovAtom::ERROR_ATOM_WRITE_FAILED;                                               \
    } while (false)

/// Calls `change`, which returns a code; what it cannot get memory for is ERROR_MEM_ALLOC.
template <class Change> [[nodiscard]] MovAtom::Error OrNoMemory(Change &&change)
{
    try {
        return change();
    } catch (const std::bad_alloc &) {
        return MovAtom::ERROR_MEM_ALLOC;
    }
}

/// Calls `make`, which takes about `bytes` of memory for what a `Read` keeps. More than there is,
/// or than the buffer allows, fails the read.
template <class Make>
[[nodiscard]] MovAtom::Error MakeRoom(FileBuffer &buffer, uint64_t bytes, Make &&make)
{
    if (!buffer.TakeMemory(bytes))
        return MovAtom::ERROR_ATOM_READ_FAILED;
    try {
        make();
    } catch (const std::bad_alloc &) {
        return MovAtom::ERROR_ATOM_READ_FAILED;
    }
    return MovAtom::ERROR_OKAY;
}

template <class T> T DecodeNumber(const uint8_t *bytes)
{
    if constexpr (std::is_same_v<T, double>) {
        const uint64_t bits = DecodeNumber<uint64_t>(bytes);
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    } else {
        static_assert(std::is_integral_v<T>);
        return static_cast<T>(qFromBigEndian<typename QIntegerForSizeof<T>::Unsigned>(bytes));
    }
}

template <class T> void EncodeNumber(T value, uint8_t *bytes)
{
    if constexpr (std::is_same_v<T, double>) {
        uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof value);
        EncodeNumber(bits, bytes);
    } else {
        static_assert(std::is_integral_v<T>);
        qToBigEndian(static_cast<typename QIntegerForSizeof<T>::Unsigned>(value), bytes);
    }
}

template <class T> [[nodiscard]] MovAtom::Error ReadNumber(FileBuffer &buffer, T *value)
{
    const uint8_t *bytes = buffer.ReadInPlace(sizeof(T));
    if (!bytes)
        return MovAtom::ERROR_ATOM_READ_FAILED;
    *value = DecodeNumber<T>(bytes);
    return MovAtom::ERROR_OKAY;
}

template <class T> [[nodiscard]] MovAtom::Error WriteNumber(FileBuffer &buffer, T value)
{
    uint8_t bytes[sizeof(T)];
    EncodeNumber(value, bytes);
    return buffer.Write(bytes, sizeof bytes) == FileBuffer::ERROR_OKAY
        ? MovAtom::ERROR_OKAY
        : MovAtom::ERROR_ATOM_WRITE_FAILED;
}

template <class T> void DecodeField(const uint8_t *&bytes, T &field)
{
    field = DecodeNumber<T>(bytes);
    bytes += sizeof(T);
}

template <class T, size_t N> void DecodeField(const uint8_t *&bytes, std::array<T, N> &field)
{
    for (T &element : field)
        DecodeField(bytes, element);
}

template <class T> void EncodeField(uint8_t *&bytes, const T &field)
{
    EncodeNumber(field, bytes);
    bytes += sizeof(T);
}

template <class T, size_t N> void EncodeField(uint8_t *&bytes, const std::array<T, N> &field)
{
    for (const T &element : field)
        EncodeField(bytes, element);
}

/// Bytes of a list of fields in the file.
template <class... T> constexpr uint64_t SizeOfFields(const std::tuple<T &...> &)
{
    return (uint64_t(0) + ... + sizeof(T));
}

/// Reads a list of fields; when bytes are missing, none is changed.
template <class... T>
[[nodiscard]] MovAtom::Error ReadFields(FileBuffer &buffer, std::tuple<T &...> fields)
{
    const uint8_t *bytes = buffer.ReadInPlace(SizeOfFields(fields));
    if (!bytes)
        return MovAtom::ERROR_ATOM_READ_FAILED;
    std::apply([&](auto &...field) { (DecodeField(bytes, field), ...); }, fields);
    return MovAtom::ERROR_OKAY;
}

template <class... T>
[[nodiscard]] MovAtom::Error WriteFields(FileBuffer &buffer, const std::tuple<T &...> &fields)
{
    uint8_t bytes[(size_t(0) + ... + sizeof(T))];
    uint8_t *end = bytes;
    std::apply([&](const auto &...field) { (EncodeField(end, field), ...); }, fields);
    return buffer.Write(bytes, sizeof bytes) == FileBuffer::ERROR_OKAY
        ? MovAtom::ERROR_OKAY
        : MovAtom::ERROR_ATOM_WRITE_FAILED;
}

/// A counted table's element in the file: a number, or a record with its own list of fields.
template <class T> uint64_t SizeOfEntry()
{
    if constexpr (std::is_integral_v<T>) {
        return sizeof(T);
    } else {
        const T entry;
        return SizeOfFields(T::Fields(entry));
    }
}

/// Reads `count` entries that stand in the file as `Stored`, which is the table's own type unless
/// told. The count is held against the bytes left before memory is taken for it.
template <class Stored, class T>
[[nodiscard]] MovAtom::Error ReadTableAs(FileBuffer &buffer, uint64_t count, std::vector<T> *table)
{
    table->clear();
    const uint64_t width = SizeOfEntry<Stored>();
    if (count > buffer.BytesLeft() / width)
        return MovAtom::ERROR_ATOM_READ_FAILED;
    const uint8_t *bytes = buffer.ReadInPlace(count * width);
    if (!bytes)
        return MovAtom::ERROR_ATOM_READ_FAILED;
    if (MakeRoom(buffer, count * sizeof(T), [&] { table->resize(count); }) != MovAtom::ERROR_OKAY)
        return MovAtom::ERROR_ATOM_READ_FAILED;
    for (T &entry : *table) {
        if constexpr (std::is_integral_v<T>) {
            entry = DecodeNumber<Stored>(bytes);
            bytes += sizeof(Stored);
        } else {
            std::apply([&](auto &...field) { (DecodeField(bytes, field), ...); }, T::Fields(entry));
        }
    }
    return MovAtom::ERROR_OKAY;
}

template <class T>
[[nodiscard]] MovAtom::Error ReadTable(FileBuffer &buffer, uint64_t count, std::vector<T> *table)
{
    return ReadTableAs<T>(buffer, count, table);
}

template <class T>
[[nodiscard]] MovAtom::Error WriteTable(FileBuffer &buffer, const std::vector<T> &table)
{
    for (const T &entry : table) {
        if constexpr (std::is_integral_v<T>)
            MOV_WRITE(WriteNumber(buffer, entry));
        else
            MOV_WRITE(WriteFields(buffer, T::Fields(entry)));
    }
    return MovAtom::ERROR_OKAY;
}

/// Reads `length` raw bytes; the length is held against the bytes left first.
[[nodiscard]] inline MovAtom::Error ReadBytes(FileBuffer &buffer, uint64_t length,
                                              std::vector<uint8_t> *bytes)
{
    return ReadTable(buffer, length, bytes);
}

[[nodiscard]] inline MovAtom::Error WriteBytes(FileBuffer &buffer, const void *bytes,
                                               uint64_t length)
{
    return buffer.Write(bytes, static_cast<int64_t>(length)) == FileBuffer::ERROR_OKAY
        ? MovAtom::ERROR_OKAY
        : MovAtom::ERROR_ATOM_WRITE_FAILED;
}

/// Reads `length` bytes of text without a terminator.
[[nodiscard]] MovAtom::Error ReadText(FileBuffer &buffer, uint64_t length, std::string *text);

/// A string behind one byte of length.
[[nodiscard]] MovAtom::Error ReadCountedString(FileBuffer &buffer, std::string *text);
[[nodiscard]] MovAtom::Error WriteCountedString(FileBuffer &buffer, const std::string &text);

} // namespace Tavro::MovParserLib
