// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The rows of the table that all atom classes go through (tst_atoms): an atom's bytes, whose values
// differ from those of a new atom. What each field must have come to stands in atom_dumps.txt.

#include "box.h"
#include "movparser/src/mov_atom.h"

#include <functional>
#include <memory>
#include <vector>

struct AtomRow
{
    /// What the class does beyond the common contract.
    enum Trait {
        None = 0,
        PreambleOnly = 1, ///< Reading stops behind the preamble and brings no fields.
        FillsAtom = 2, ///< Whatever is left of the atom is data: no trailing bytes to skip.
        StopsBehindFields = 4, ///< The cursor is behind the last field and not at the atom's end.
        SearchesChildren = 8, ///< A child that is cut off may count as absent.
        AnyType = 16, ///< Takes every fourcc.
        UnreadTail = 32 ///< Writes bytes at its end that it does not read.
    };

    using Atom = Tavro::MovParserLib::MovAtom;
    using Pointer = std::unique_ptr<Atom>;

    const char *name = nullptr;
    QByteArray expected; ///< What makeFilled() is written as.
    int traits = None;
    std::function<Pointer()> make; ///< As constructed.
    std::function<Pointer()> makeFilled;
    /// What was constructed from an atom and what it was assigned to, when the atom itself is gone.
    std::function<std::pair<Pointer, Pointer>(Pointer)> copies;

    bool has(int trait) const { return (traits & trait) != 0; }
};

/// Reads what a test starts from.
inline void readInto(AtomRow::Atom &atom, const Box &box)
{
    if (atom.Read(*ExactBuffer(box)) != AtomRow::Atom::ERROR_OKAY)
        qFatal("the atom to start from cannot be read");
}

class AtomRows : public std::vector<AtomRow>
{
public:
    /// For what comes from files.
    template <class T> void add(const char *name, const Box &box, int traits = AtomRow::None)
    {
        addMade<T>(
            name, [box](T &atom) { readInto(atom, box); }, box, traits);
    }

    /// For what the code itself makes: `fill(T &)` sets an atom's fields.
    template <class T, class Fill>
    void addMade(const char *name, Fill fill, const Box &expected, int traits = AtomRow::None)
    {
        const auto make = [] { return std::make_unique<T>(); };
        const auto makeFilled = [make, fill] {
            auto atom = make();
            fill(*atom);
            return atom;
        };
        const auto copies = [make](AtomRow::Pointer original) {
            auto &source = static_cast<T &>(*original);
            auto copy = std::make_unique<T>(source);
            auto assigned = make();
            *assigned = source;
            const T &itself = *assigned;
            *assigned = itself;
            source = *make();
            return std::pair<AtomRow::Pointer, AtomRow::Pointer>(std::move(copy),
                                                                 std::move(assigned));
        };
        push_back({name, expected, traits, make, makeFilled, copies});
    }
};

// One function for each family of atoms.
void addStructureRows(AtomRows *rows);
void addSampleTableRows(AtomRows *rows);
void addDescriptionRows(AtomRows *rows);
void addMetadataRows(AtomRows *rows);
