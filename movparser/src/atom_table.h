// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A counted table of an atom, kept as its bytes stand in the file. Long movies have tables of tens
// of megabytes of which a player asks for a handful of entries: an entry is decoded when it is
// asked for, and reading a table is one copy, or none when its bytes can be kept where they are.

#include "movparser/src/atom_io.h"

#include <atomic>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <new>

namespace Tavro::MovParserLib {

/// A number that no table has had yet.
inline uint64_t NewTableVersion()
{
    static std::atomic<uint64_t> last{0};
    return ++last;
}

/// Entries are numbers, or records with a list of fields; they come and go by value.
template <class T> class AtomTable
{
public:
    class const_iterator
    {
    public:
        // Entries are made when they are asked for: there is none to refer to, which all but the
        // simplest category promises.
        using iterator_category = std::input_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = T;

        const_iterator() = default;

        const_iterator(const AtomTable *table, size_t index)
            : m_table(table)
            , m_index(index)
        { }

        T operator*() const { return (*m_table)[m_index]; }

        const_iterator &operator++()
        {
            ++m_index;
            return *this;
        }

        const_iterator operator++(int) { return {m_table, m_index++}; }

        bool operator==(const const_iterator &other) const { return m_index == other.m_index; }

        bool operator!=(const const_iterator &other) const { return m_index != other.m_index; }

    private:
        const AtomTable *m_table = nullptr;
        size_t m_index = 0;
    };

    AtomTable() = default;

    // A constructor has no code to return: without memory these throw std::bad_alloc.

    AtomTable(std::initializer_list<T> entries)
    {
        for (const T &entry : entries) {
            if (!push_back(entry))
                throw std::bad_alloc();
        }
    }

    AtomTable(const AtomTable &other)
    {
        if (other.m_size == 0)
            return;
        if (!Reserve(other.m_size))
            throw std::bad_alloc();
        m_size = other.m_size;
        std::memcpy(m_bytes.get(), other.Bytes(), SizeInFile());
    }

    AtomTable(AtomTable &&other) noexcept { Swap(other); }

    AtomTable &operator=(AtomTable other) noexcept
    {
        Swap(other);
        return *this;
    }

    size_t size() const { return m_size; }

    bool empty() const { return m_size == 0; }

    /// Tells whether a place that was kept in a table still stands for what it did. Tables of one
    /// version have the same entries but for such as were appended; no two tables share one.
    uint64_t Version() const { return m_version; }

    const_iterator begin() const { return {this, 0}; }

    const_iterator end() const { return {this, m_size}; }

    T front() const { return (*this)[0]; }

    T back() const { return (*this)[m_size - 1]; }

    T operator[](size_t index) const
    {
        const uint8_t *bytes = Bytes() + index * Width();
        T entry = {};
        if constexpr (std::is_integral_v<T>)
            DecodeField(bytes, entry);
        else
            std::apply([&](auto &...field) { (DecodeField(bytes, field), ...); }, T::Fields(entry));
        return entry;
    }

    // Without memory these return false.

    /// Takes memory when the bytes are shared; without it the table stays as it is.
    [[nodiscard]] bool Set(size_t index, const T &entry)
    {
        if (!Reserve(m_size))
            return false;
        m_version = NewTableVersion();
        Encode(index, entry);
        return true;
    }

    /// Appends; without memory the table stays as it is.
    [[nodiscard]] bool push_back(const T &entry)
    {
        if ((m_owner || m_size == m_capacity) && !Reserve(m_size < 8 ? 16 : m_size * 2))
            return false;
        Encode(m_size++, entry);
        return true;
    }

    /// Without memory the table is empty.
    [[nodiscard]] bool assign(size_t count, const T &entry)
    {
        clear();
        if (!Reserve(count))
            return false;
        while (m_size < count)
            Encode(m_size++, entry);
        return true;
    }

    void clear()
    {
        m_size = 0;
        m_owner.reset();
        m_version = NewTableVersion();
    }

    /// The bytes of all entries in the file.
    uint64_t SizeInFile() const { return m_size * Width(); }

    /// The count is held against the bytes left before memory is taken for it. Bytes that stay
    /// where they are count as taken too: of tables that overlap, each is walked, printed and
    /// copied whole.
    [[nodiscard]] MovAtom::Error Read(FileBuffer &buffer, uint64_t count)
    {
        clear();
        if (count == 0)
            return MovAtom::ERROR_OKAY;
        if (count > buffer.BytesLeft() / Width())
            return MovAtom::ERROR_ATOM_READ_FAILED;
        const uint8_t *bytes = buffer.ReadInPlace(count * Width());
        if (!bytes || !buffer.TakeMemory(count * Width()))
            return MovAtom::ERROR_ATOM_READ_FAILED;
        m_owner = buffer.GetOwner();
        if (m_owner) {
            m_shared = bytes;
        } else {
            if (!Reserve(count))
                return MovAtom::ERROR_ATOM_READ_FAILED;
            std::memcpy(m_bytes.get(), bytes, count * Width());
        }
        m_size = count;
        return MovAtom::ERROR_OKAY;
    }

    /// The same for entries that stand in the file as narrower numbers.
    template <class Stored> [[nodiscard]] MovAtom::Error ReadAs(FileBuffer &buffer, uint64_t count)
    {
        static_assert(std::is_integral_v<T> && sizeof(Stored) < sizeof(T));
        clear();
        const uint8_t *bytes = count <= buffer.BytesLeft() / sizeof(Stored)
            ? buffer.ReadInPlace(count * sizeof(Stored))
            : nullptr;
        if (!bytes || !buffer.TakeMemory(count * sizeof(T)) || !Reserve(count))
            return MovAtom::ERROR_ATOM_READ_FAILED;
        for (; m_size < count; bytes += sizeof(Stored))
            Encode(m_size++, DecodeNumber<Stored>(bytes));
        return MovAtom::ERROR_OKAY;
    }

    [[nodiscard]] MovAtom::Error Write(FileBuffer &buffer) const
    {
        return WriteBytes(buffer, Bytes(), SizeInFile());
    }

private:
    static constexpr size_t Width()
    {
        if constexpr (std::is_integral_v<T>)
            return sizeof(T);
        else
            return WidthOf(static_cast<decltype(T::Fields(std::declval<T &>())) *>(nullptr));
    }

    template <class... Field> static constexpr size_t WidthOf(const std::tuple<Field &...> *)
    {
        return (size_t(0) + ... + sizeof(Field));
    }

    // Into bytes of this table's own.
    void Encode(size_t index, const T &entry)
    {
        uint8_t *bytes = m_bytes.get() + index * Width();
        if constexpr (std::is_integral_v<T>)
            EncodeField(bytes, entry);
        else
            std::apply([&](const auto &...field) { (EncodeField(bytes, field), ...); },
                       T::Fields(entry));
    }

    const uint8_t *Bytes() const { return m_owner ? m_shared : m_bytes.get(); }

    void Swap(AtomTable &other) noexcept
    {
        std::swap(m_bytes, other.m_bytes);
        std::swap(m_size, other.m_size);
        std::swap(m_capacity, other.m_capacity);
        std::swap(m_owner, other.m_owner);
        std::swap(m_shared, other.m_shared);
        std::swap(m_version, other.m_version);
    }

    // Makes the bytes this table's own, with room for as many entries.
    bool Reserve(size_t capacity)
    {
        if (!m_owner && capacity <= m_capacity)
            return true;
        std::unique_ptr<uint8_t[]> bytes(new (std::nothrow) uint8_t[capacity * Width()]);
        if (!bytes)
            return false;
        if (m_size != 0)
            std::memcpy(bytes.get(), Bytes(), SizeInFile());
        m_bytes = std::move(bytes);
        m_capacity = capacity;
        m_owner.reset();
        return true;
    }

    std::unique_ptr<uint8_t[]> m_bytes;
    size_t m_size = 0;
    size_t m_capacity = 0; ///< Of m_bytes.
    std::shared_ptr<const void> m_owner; ///< Of m_shared; null when the bytes are m_bytes.
    const uint8_t *m_shared = nullptr;
    uint64_t m_version = NewTableVersion();
};

} // namespace Tavro::MovParserLib
