// SPDX-License-Identifier: GPL-3.0-or-later
#include "movparser/src/atom_uuid.h"

#include "movparser/src/atom_io.h"
#include "movparser/src/atom_printer.h"

#include <QString>

#include <algorithm>
#include <cinttypes>
#include <climits>
#include <cmath>
#include <cstdio>

namespace Tavro::MovParserLib {

namespace {

constexpr std::array<uint8_t, 16> kIdentifier = {0xff, 0xcc, 0x82, 0x63, 0xf8, 0x55, 0x4a, 0x93,
                                                 0x88, 0x14, 0x58, 0x7a, 0x02, 0x52, 0x1f, 0xdd};

constexpr std::string_view kDocumentBegin =
    "<?xml version=\"1.0\"?>"
    "<rdf:SphericalVideo xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\""
    " xmlns:GSpherical=\"http://ns.google.com/videos/1.0/spherical/\">";
constexpr std::string_view kDocumentEnd = "</rdf:SphericalVideo>";
constexpr char kMono[] = "mono";

std::string OpeningTag(const char *name)
{
    return std::string("<GSpherical:") + name + ">";
}

std::string ClosingTag(const char *name)
{
    return std::string("</GSpherical:") + name + ">";
}

/// The text between the last opening and the last closing tag, if there is one. A tag at the very
/// beginning of the document does not count.
bool FindElement(std::string_view document, const char *name, std::string_view *value)
{
    const std::string opening = OpeningTag(name);
    const size_t begin = document.rfind(opening);
    const size_t end = document.rfind(ClosingTag(name));
    if (begin == std::string_view::npos || begin < 1 || end == std::string_view::npos
        || end < begin + opening.size())
        return false;
    *value = document.substr(begin + opening.size(), end - begin - opening.size());
    return true;
}

QString Latin1(std::string_view text)
{
    return QString::fromLatin1(text.data(),
                               static_cast<int>(std::min<size_t>(text.size(), INT_MAX)));
}

int32_t WholeDegrees(float degrees)
{
    return std::abs(degrees) < 2147483648.0f ? static_cast<int32_t>(degrees) : 0;
}

} // namespace

MovAtom::Error sphericalVideoLegacyAtom::Read(FileBuffer &buffer)
{
    const ReadScope scope(buffer);
    std::array<uint8_t, 16> identifier;
    *this = sphericalVideoLegacyAtom();
    MOV_READ(scope, MovAtom::Read(buffer, kType));
    MOV_READ(scope, ReadFields(buffer, std::tie(identifier)));
    hasOwnIdentifier = identifier == kIdentifier;
    // Preamble and identifier are taken to be 24 bytes, also behind a preamble of 16: such an atom
    // reads on into what follows it.
    constexpr uint64_t kHead = 24;
    if (size < kHead)
        return scope.Fail();
    const uint8_t *bytes = buffer.ReadInPlace(size - kHead);
    if (!bytes)
        return scope.Fail();
    const std::string_view payload(reinterpret_cast<const char *>(bytes), size - kHead);
    // What is kept are parts of the document; a character of Latin-1 can take two bytes.
    MOV_READ(scope, MakeRoom(buffer, 2 * payload.size(), [&] {
                 TakeElements(payload.substr(0, payload.find('\0')));
             }));
    return scope.Finish(size);
}

void sphericalVideoLegacyAtom::TakeElements(std::string_view document)
{
    std::string_view value;
    // Each byte is taken as a character of Latin-1, whatever the document's encoding.
    if (FindElement(document, "StitchingSoftware", &value))
        StitchingSoftware = Latin1(value).toStdString();
    if (FindElement(document, "StereoMode", &value))
        StereoMode = value;
    if (FindElement(document, "SourceCount", &value))
        SourceCount = Latin1(value).toUInt(); // 0 if it is no number
}

template <class Visit> void sphericalVideoLegacyAtom::ForEachPart(Visit &&visit) const
{
    const auto element = [&visit](std::string_view name, std::string_view value) {
        for (const std::string_view part :
             {std::string_view("<GSpherical:"), name, std::string_view(">"), value,
              std::string_view("</GSpherical:"), name, std::string_view(">")})
            visit(part);
    };
    const auto number = [&element](std::string_view name, int64_t value) {
        char digits[24];
        const int length = std::snprintf(digits, sizeof digits, "%" PRId64, value);
        element(name, {digits, static_cast<size_t>(length)});
    };
    visit(kDocumentBegin);
    element("Spherical", "true");
    element("Stitched", "true");
    element("StitchingSoftware", StitchingSoftware);
    element("ProjectionType", "equirectangular");
    if (SourceCount != 0)
        number("SourceCount", SourceCount);
    if (StereoMode != kMono)
        element("StereoMode", StereoMode);
    if (pose_yaw_degrees != 0 || pose_pitch_degrees != 0 || pose_roll_degrees != 0) {
        number("InitialViewHeadingDegrees", pose_yaw_degrees);
        number("InitialViewPitchDegrees", pose_pitch_degrees);
        number("InitialViewRollDegrees", pose_roll_degrees);
    }
    visit(kDocumentEnd);
}

MovAtom::Error sphericalVideoLegacyAtom::Write(FileBuffer &buffer)
{
    MOV_WRITE(MovAtom::Write(buffer));
    MOV_WRITE(WriteFields(buffer, std::tie(kIdentifier)));
    Error error = ERROR_OKAY;
    ForEachPart([&](std::string_view part) {
        if (error == ERROR_OKAY)
            error = WriteBytes(buffer, part.data(), part.size());
    });
    return error;
}

void sphericalVideoLegacyAtom::PrintToString(std::string *out, uint32_t depth) const
{
    const PrintBlock block(out, depth, "sphericalVideoLegacyAtom");
    MovAtom::PrintToString(out, block.Depth());
    PrintLine(out, block.Depth(), "StitchingSoftware: '%s'", StitchingSoftware.c_str());
    PrintLine(out, block.Depth(), "StereoMode: '%s'", StereoMode.c_str());
    PrintLine(out, block.Depth(), "SourceCount: %u", SourceCount);
    PrintLine(out, block.Depth(), "pose_yaw_degrees: %i", pose_yaw_degrees);
    PrintLine(out, block.Depth(), "pose_pitch_degrees: %i", pose_pitch_degrees);
    PrintLine(out, block.Depth(), "pose_roll_degrees: %i", pose_roll_degrees);
}

uint64_t sphericalVideoLegacyAtom::GetSize() const
{
    uint64_t bytes = MovAtom::GetSize() + kIdentifier.size();
    ForEachPart([&bytes](std::string_view part) { bytes += part.size(); });
    return bytes;
}

uint32_t sphericalVideoLegacyAtom::GetStereoMode() const
{
    return StereoMode == "left-right" ? 1 : StereoMode == "top-bottom" ? 2 : 0;
}

void sphericalVideoLegacyAtom::SetStereoMode(uint32_t mode)
{
    StereoMode = mode == 1 ? "left-right" : mode == 2 ? "top-bottom" : kMono;
}

void sphericalVideoLegacyAtom::GetPose(float *yaw, float *pitch, float *roll) const
{
    if (yaw)
        *yaw = static_cast<float>(pose_yaw_degrees);
    if (pitch)
        *pitch = static_cast<float>(pose_pitch_degrees);
    if (roll)
        *roll = static_cast<float>(pose_roll_degrees);
}

void sphericalVideoLegacyAtom::SetPose(float yaw, float pitch, float roll)
{
    pose_yaw_degrees = WholeDegrees(yaw);
    pose_pitch_degrees = WholeDegrees(pitch);
    pose_roll_degrees = WholeDegrees(roll);
}

} // namespace Tavro::MovParserLib
