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

    const char *name = nullptr;
    QByteArray expected; ///< What makeFilled() is written as.
    int traits = None;
    std::function<std::unique_ptr<Atom>()> make; ///< As constructed.
    std::function<std::unique_ptr<Atom>()> makeFilled;
    std::function<std::unique_ptr<Atom>(const Atom &)> copy; ///< By the copy constructor.
    std::function<void(Atom &, const Atom &)> assign;

    bool has(Trait trait) const { return (traits & trait) != 0; }
};

using AtomRows = std::vector<AtomRow>;

/// Reads what a test starts from.
inline void readInto(AtomRow::Atom &atom, const QByteArray &bytes)
{
    ExactBuffer buffer(bytes);
    if (atom.Read(*buffer) != AtomRow::Atom::ERROR_OKAY)
        qFatal("the atom to start from cannot be read");
}

/// For what the code itself makes: `fill(T &)` sets an atom's fields. `prepare(T &)` is what an
/// owner sets before reading.
template <class T, class Fill>
void addMadeRow(AtomRows *rows, const char *name, Fill fill, const Box &expected,
                int traits = AtomRow::None, std::function<void(T &)> prepare = nullptr)
{
    using Atom = AtomRow::Atom;
    AtomRow row{name, expected.bytes(), traits, {}, {}, {}, {}};
    const auto make = [prepare] {
        auto atom = std::make_unique<T>();
        if (prepare)
            prepare(*atom);
        return atom;
    };
    row.make = make;
    row.makeFilled = [make, fill]() -> std::unique_ptr<Atom> {
        auto atom = make();
        fill(*atom);
        return atom;
    };
    row.copy = [](const Atom &atom) -> std::unique_ptr<Atom> {
        return std::make_unique<T>(static_cast<const T &>(atom));
    };
    row.assign = [](Atom &to, const Atom &from) {
        static_cast<T &>(to) = static_cast<const T &>(from);
    };
    rows->push_back(row);
}

/// For what comes from files.
template <class T>
void addRow(AtomRows *rows, const char *name, const Box &box, int traits = AtomRow::None,
            std::function<void(T &)> prepare = nullptr)
{
    const auto read = [bytes = box.bytes()](T &atom) { readInto(atom, bytes); };
    addMadeRow<T>(rows, name, read, box, traits, prepare);
}

// One function for each family of atoms.
void addStructureRows(AtomRows *rows);
void addSampleTableRows(AtomRows *rows);
void addDescriptionRows(AtomRows *rows);
void addMetadataRows(AtomRows *rows);
