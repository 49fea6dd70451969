// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `udta`: what the camera says about a movie. The maker's atoms have classes of their own; all
// others are kept as bytes.

#include "movparser/src/atom_came.h"
#include "movparser/src/atom_children.h"
#include "movparser/src/atom_firm.h"
#include "movparser/src/atom_fov.h"
#include "movparser/src/atom_hmmt.h"
#include "movparser/src/atom_lens.h"
#include "movparser/src/atom_muid.h"
#include "movparser/src/atom_sett.h"
#include "movparser/src/atom_turi.h"
#include "movparser/src/atom_tusi.h"

namespace Tavro::MovParserLib {

class UserDataAtom : public MovAtom
{
public:
    static constexpr uint32_t kType = FourCC("udta");

    UserDataAtom()
        : MovAtom(kType)
    { }

    using MovAtom::Read;
    using MovAtom::operator=;
    [[nodiscard]] Error Read(FileBuffer &buffer) override;
    [[nodiscard]] Error Write(FileBuffer &buffer) override;
    void PrintToString(std::string *out, uint32_t depth) const override;
    uint64_t GetSize() const override;

    /// The firmware's version, or null without the atom or without a payload in it.
    [[nodiscard]] Error GetFirmware(const char **text) const;

    // The payload and its length, or null and 0 when the atom is absent. The bytes stay this
    // object's. A null pointer as argument is ERROR_INVALID_ARG.
    [[nodiscard]] Error GetCameraId(uint8_t **bytes, uint32_t *length) const;
    [[nodiscard]] Error GetLens(uint8_t **bytes, uint32_t *length) const;
    [[nodiscard]] Error GetFov(uint8_t **bytes, uint32_t *length) const;
    [[nodiscard]] Error GetMediaUniqueId(uint8_t **bytes, uint32_t *length) const;
    /// The payload as words in host order.
    [[nodiscard]] Error GetSettings(uint8_t **bytes, uint32_t *length) const;

    // ERROR_ATOM_NOT_FOUND when the atom is absent, ERROR_INVALID_ARG for a null target.
    [[nodiscard]] Error GetSettingsFields(TavroCameraSettings *fields) const;
    [[nodiscard]] Error GetRigIdentity(TavroRigIdentity *record) const;
    [[nodiscard]] Error GetRigShot(TavroRigShot *record) const;

    // The marked moments; see TavroKeymarkTagAtom. ERROR_ATOM_NOT_FOUND when there is no `HMMT`.
    [[nodiscard]] Error GetTagCount(uint32_t *count) const;
    [[nodiscard]] Error GetTag(uint32_t index, uint32_t *milliseconds) const;
    [[nodiscard]] Error SetTags(int count, const uint32_t *milliseconds);

    /// The payload of a child without a class; see UnparsedAtom::GetData. ERROR_INVALID_ARG when
    /// there is no such child.
    [[nodiscard]] Error GetUnparsedChild(uint32_t childType, uint8_t *dst, uint64_t capacity,
                                         uint64_t *outSize) const;

    AtomPtr<TavroCameraFirmwareAtom> firmware;
    AtomPtr<TavroCameraIDAtom> cameraId;
    AtomPtr<TavroCameraSettingsAtom> settings;
    AtomPtr<TavroCameraLENSAtom> lens;
    AtomPtr<TavroCameraFOVAtom> fov;
    AtomPtr<TavroCameraTURIAtom> rigIdentity;
    AtomPtr<TavroCameraTUSIAtom> rigShot;
    AtomPtr<TavroKeymarkTagAtom> tags;
    AtomPtr<TavroMediaUniqueIdAtom> mediaUniqueId;
    UnparsedMap unparsed;

private:
    /// Calls `visit` with each child's pointer in the order of writing, until one does not return
    /// ERROR_OKAY.
    template <class Visit> Error ForEachChild(Visit &&visit) const;
};

} // namespace Tavro::MovParserLib
