// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What containers share: children held by pointer and copied deeply, the loop over a container's
// children, and the map of children that the container does not model.

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_unparsed.h"

#include <map>
#include <memory>
#include <utility>

namespace Tavro::MovParserLib {

/// Owns a child that may be absent; copying copies the child. A class with `Clone()` is copied
/// by it, others by their copy constructor.
template <class T> class AtomPtr
{
public:
    AtomPtr() = default;

    AtomPtr(std::unique_ptr<T> atom)
        : m_atom(std::move(atom))
    { }

    AtomPtr(const AtomPtr &other)
        : m_atom(other ? Copy(*other, 0) : nullptr)
    { }

    AtomPtr(AtomPtr &&other) noexcept = default;

    AtomPtr &operator=(AtomPtr other) noexcept
    {
        m_atom = std::move(other.m_atom);
        return *this;
    }

    T *get() const { return m_atom.get(); }

    T *operator->() const { return m_atom.get(); }

    T &operator*() const { return *m_atom; }

    explicit operator bool() const { return m_atom != nullptr; }

    void reset() { m_atom.reset(); }

    /// The child, made anew when absent.
    T &Ensure()
    {
        if (!m_atom)
            m_atom = std::make_unique<T>();
        return *m_atom;
    }

private:
    template <class U> static auto Copy(const U &atom, int) -> decltype(atom.Clone())
    {
        return atom.Clone();
    }

    template <class U> static std::unique_ptr<U> Copy(const U &atom, long)
    {
        return std::make_unique<U>(atom);
    }

    std::unique_ptr<T> m_atom;
};

/// Destroys an earlier child and reads a new one; a child that fails is destroyed too.
template <class T> [[nodiscard]] MovAtom::Error ReadChild(FileBuffer &buffer, AtomPtr<T> *child)
{
    child->reset();
    MovAtom::Error error = MakeRoom(buffer, sizeof(T), [child] { child->Ensure(); });
    if (error == MovAtom::ERROR_OKAY)
        error = (*child)->Read(buffer);
    if (error != MovAtom::ERROR_OKAY)
        child->reset();
    return error;
}

/// Writes a child that may be absent.
template <class T>
[[nodiscard]] MovAtom::Error WriteChild(FileBuffer &buffer, const AtomPtr<T> &child)
{
    return child ? child->Write(buffer) : MovAtom::ERROR_OKAY;
}

template <class T> uint64_t SizeOfChild(const AtomPtr<T> &child)
{
    return child ? child->GetSize() : 0;
}

/// Unknown children by type; of several with one type only the first is kept.
using UnparsedMap = std::map<uint32_t, UnparsedAtom>;

[[nodiscard]] MovAtom::Error ReadUnparsed(FileBuffer &buffer, UnparsedMap *unparsed);
[[nodiscard]] MovAtom::Error SkipUnparsed(FileBuffer &buffer);
[[nodiscard]] MovAtom::Error WriteUnparsed(FileBuffer &buffer, UnparsedMap *unparsed);
uint64_t SizeOfUnparsed(const UnparsedMap &unparsed);
void PrintUnparsed(std::string *out, uint32_t depth, const UnparsedMap &unparsed);

/// Reads the children of a container of `size` bytes whose own fields are read already.
///
/// `dispatch(type)` reads the child at the cursor and returns its code: ERROR_ZERO_SIZE_ATOM ends
/// the container as complete, any other failure fails it. The caller seeks on a failure.
template <class Dispatch>
[[nodiscard]] MovAtom::Error ReadChildren(const ReadScope &scope, uint64_t size,
                                          Dispatch &&dispatch)
{
    while (size > scope.Consumed()) {
        const uint64_t before = scope.Consumed();
        const MovAtom::Error error = dispatch(PeekAtomType(scope.Buffer()));
        if (error == MovAtom::ERROR_ZERO_SIZE_ATOM)
            break;
        // A known child with a 64-bit size of 0 ends where it began and would be read for ever.
        if (error != MovAtom::ERROR_OKAY || scope.Consumed() <= before)
            return MovAtom::ERROR_ATOM_READ_FAILED;
    }
    return MovAtom::ERROR_OKAY;
}

/// The children of a container that is read by search and not by a loop: from the first child,
/// where the cursor stands, to the container's end. Each search begins at the first child, so the
/// order of the children does not matter and the first of several counts.
class ChildRange
{
public:
    /// `size` is the container's own, as its preamble declares.
    ChildRange(const ReadScope &scope, uint64_t size);

    /// Puts the cursor on the child; false when there is none.
    bool Find(uint32_t type) const;

    FileBuffer &Buffer() const { return m_buffer; }

private:
    FileBuffer &m_buffer;
    uint64_t m_first;
    uint64_t m_length;
};

/// Searches and reads a child by its class's type. An absent child is no failure.
template <class T>
[[nodiscard]] MovAtom::Error ReadOptionalChild(const ChildRange &range, AtomPtr<T> *child)
{
    child->reset();
    return range.Find(T::kType) ? ReadChild(range.Buffer(), child) : MovAtom::ERROR_OKAY;
}

} // namespace Tavro::MovParserLib
