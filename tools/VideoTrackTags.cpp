// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/VideoTrackTags.h"

#include "movparser/src/atom_moov.h"
#include "movparser/src/video_sample_description.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Tavro::MovParserLib;

namespace {
// The identifier of a `uuid` that holds spherical metadata; others are somebody else's.
constexpr std::array<uint8_t, 16> kSphericalIdentifier = {
    0xff, 0xcc, 0x82, 0x63, 0xf8, 0x55, 0x4a, 0x93, 0x88, 0x14, 0x58, 0x7a, 0x02, 0x52, 0x1f, 0xdd};

bool isSphericalDocument(const RawAtom &atom)
{
    return atom.type == sphericalVideoLegacyAtom::kType
        && atom.fields.size() >= kSphericalIdentifier.size()
        && std::equal(kSphericalIdentifier.begin(), kSphericalIdentifier.end(),
                      atom.fields.begin());
}

bool isStereoAtom(const RawAtom &atom)
{
    return atom.type == stereoVideoAtom::kType;
}

bool isSphericalAtom(const RawAtom &atom)
{
    return atom.type == sphericalVideoAtom::kType;
}

/// Reads an atom's bytes into an object of the library.
bool parse(const RawAtom &raw, MovAtom *atom)
{
    std::vector<uint8_t> bytes;
    raw.appendTo(&bytes);
    FileBuffer buffer;
    return buffer.Alloc(bytes.size(), bytes.data()) == FileBuffer::ERROR_OKAY
        && atom->Read(buffer) == MovAtom::ERROR_OKAY;
}

/// Takes the matching children out of a container.
template <class Predicate> void removeChildren(RawAtom *from, Predicate predicate)
{
    auto &children = from->children;
    children.erase(std::remove_if(children.begin(), children.end(), predicate), children.end());
}

/// The library leaves the cursor behind the last field of these, wherever the atom ends: what
/// stands behind an odd one is misread.
bool misleadsReaders(const RawAtom &atom)
{
    return atom.type == PixelAspectAtom::kType || atom.type == ColorAtom::kType
        || atom.type == FieldsAtom::kType;
}

/// Adds an object of the library, which may be absent, to a container.
template <class Atom> bool addChild(RawAtom *to, const AtomPtr<Atom> &atom)
{
    if (!atom)
        return true;
    FileBuffer buffer;
    const uint64_t size = atom->GetSize();
    if (buffer.Alloc(size) != FileBuffer::ERROR_OKAY || atom->Write(buffer) != MovAtom::ERROR_OKAY)
        return false;
    RawAtom raw;
    raw.type = atom->GetType();
    constexpr uint64_t kPreamble = 8; // no atom of this kind is large
    raw.fields.assign(buffer.GetData() + kPreamble, buffer.GetData() + size);
    auto &children = to->children;
    children.insert(std::find_if(children.begin(), children.end(), misleadsReaders),
                    std::move(raw));
    return true;
}

bool applyTags(TrackAtom *track, const MovieTags &tags, QString *why)
{
    const auto check = [why](MovAtom::Error error) {
        if (error != MovAtom::ERROR_OKAY)
            *why = QStringLiteral("cannot be tagged (error %1)").arg(error);
        return error == MovAtom::ERROR_OKAY;
    };
    return (!tags.pose
            || check(track->SetInitialPose((*tags.pose)[0], (*tags.pose)[1], (*tags.pose)[2])))
        && (!tags.tool
            || check(track->SetWritingTool(*tags.tool,
                                           track->spherical ? track->spherical->SourceCount : 0)))
        && (tags.projection != kProjectionEquirectangular
            || check(track->SetEquirectangular(0, 0, 0, 0)))
        && (tags.projection != kProjectionCubemap || check(track->SetCubemap(0, 0)))
        // Last: the layout goes into a document that is there, and the others may make one.
        && (!tags.stereoMode || check(track->SetStereoMode(*tags.stereoMode)));
}

/// A document that the film did not have begins with what the newer atoms say.
void beginDocument(sphericalVideoLegacyAtom *document, const VideoSampleDescription &description)
{
    if (description.stereo)
        document->SetStereoMode(description.stereo->GetStereoMode());
    if (description.spherical)
        document->SetStitchingSoftware(description.spherical->GetMetadataSource());
}

/// The names of the elements in the older form's document.
QStringList elementNames(const std::vector<uint8_t> &fields)
{
    const QString text = QString::fromLatin1(reinterpret_cast<const char *>(fields.data()),
                                             static_cast<int>(fields.size()));
    static const QRegularExpression opening(QStringLiteral("<GSpherical:(\\w+)>"));
    QStringList names;
    for (auto match = opening.globalMatch(text); match.hasNext();)
        names.append(match.next().captured(1));
    return names;
}

/// The types of the atoms in `sv3d` and its `proj`.
QStringList atomNames(RawAtom spherical)
{
    QStringList names;
    spherical.split(0);
    for (RawAtom &child : spherical.children) {
        if (child.type != sphericalProjectionAtom::kType)
            continue;
        child.split(0);
        for (const RawAtom &part : child.children) {
            uint8_t type[4];
            writeBigEndian(type, sizeof type, part.type);
            std::replace_if(
                std::begin(type), std::end(type), [](uint8_t c) { return c < 0x20 || c > 0x7E; },
                uint8_t{'?'}); // the names are printed
            names.append(QString::fromLatin1(reinterpret_cast<const char *>(type), sizeof type));
        }
    }
    return names;
}

/// Puts `atom`, which may be absent, in the place of the children that `isOld` matches, and adds
/// what they named with `namesOf` and it does not to `lost`.
template <class Atom, class Predicate, class NamesOf>
bool replaceChildren(RawAtom *in, const AtomPtr<Atom> &atom, Predicate isOld, NamesOf namesOf,
                     QStringList *lost)
{
    QStringList before;
    for (const RawAtom &child : in->children) {
        if (isOld(child))
            before += namesOf(child);
    }
    removeChildren(in, isOld);
    if (!addChild(in, atom))
        return false;
    QStringList after;
    for (const RawAtom &child : in->children) {
        if (isOld(child))
            after += namesOf(child);
    }
    for (const QString &name : before) {
        if (!after.contains(name) && !lost->contains(name))
            lost->append(name);
    }
    return true;
}

/// The raw atoms that the tags of a track lie in.
struct TrackNodes
{
    RawAtom *track = nullptr;
    RawAtom *description = nullptr;
};

/// Takes a container apart and gives its first child of a type.
RawAtom *splitAndFind(RawAtom *container, size_t fieldBytes, uint32_t type)
{
    return container && container->split(fieldBytes) ? container->child(type) : nullptr;
}

bool findNodes(RawAtom *movie, size_t trackIndex, TrackNodes *nodes)
{
    constexpr size_t kTableHead = 8; // version, flags and the count
    constexpr size_t kVideoFields = 78; // of a description, behind size and format
    for (RawAtom &child : movie->children) {
        if (child.type == TrackAtom::kType && trackIndex-- == 0)
            nodes->track = &child;
    }
    RawAtom *media = splitAndFind(nodes->track, 0, MediaAtom::kType);
    RawAtom *information = splitAndFind(media, 0, MediaInformationAtom::kType);
    RawAtom *samples = splitAndFind(information, 0, SampleTableAtom::kType);
    RawAtom *descriptions = splitAndFind(samples, 0, SampleDescriptionAtom::kType);
    if (!descriptions || !descriptions->split(kTableHead) || descriptions->children.empty())
        return false;
    nodes->description = &descriptions->children.front();
    return nodes->description->split(kVideoFields);
}
} // namespace

bool tagFirstVideoTrack(RawAtom *movie, const MovieTags &tags, QString *why, QStringList *lost)
{
    // Before it is taken apart: what the library refuses is not worth the memory.
    MovieAtom parsed;
    if (!parse(*movie, &parsed)) {
        *why = QStringLiteral("has a movie atom that cannot be read");
        return false;
    }
    movie->split(0);
    TrackAtom *track = parsed.FindTrack(FourCC("vide"));
    TrackNodes nodes;
    if (!track || !findNodes(movie, static_cast<size_t>(track - parsed.tracks.data()), &nodes)) {
        *why = QStringLiteral("has no video track with a description of its samples");
        return false;
    }

    // The library takes the first `uuid` whatever it is; here only spherical metadata may be
    // replaced.
    track->spherical.reset();
    const auto document = std::find_if(nodes.track->children.cbegin(), nodes.track->children.cend(),
                                       isSphericalDocument);
    if (document != nodes.track->children.cend() && !parse(*document, &track->spherical.Ensure()))
        track->spherical.reset();

    // An atom that no option speaks of stays as its bytes are: the library keeps less of it.
    const bool changesSpherical = tags.projection || tags.pose || tags.tool;
    const bool changesDocument = changesSpherical || (tags.stereoMode && track->spherical);
    const VideoSampleDescription *description = track->SampleDescriptions()->Video();
    if (changesDocument && !track->spherical && description)
        beginDocument(&track->spherical.Ensure(), *description);
    if (changesDocument && !tags.pose && description && description->spherical) {
        // The document's own angles are not read.
        std::array<float, 3> pose = {};
        description->spherical->GetPose(&pose[0], &pose[1], &pose[2]);
        track->spherical.Ensure().SetPose(pose[0], pose[1], pose[2]);
    }
    if (!applyTags(track, tags, why))
        return false;
    uint32_t projection = kProjectionUnknown;
    if (track->GetProjection(&projection) == MovAtom::ERROR_OKAY
        && projection == kProjectionCubemap)
        track->spherical.reset(); // it would contradict: the older form knows no cube map

    description = track->SampleDescriptions()->Video();
    const auto noNames = [](const RawAtom &) { return QStringList(); };
    const auto documentNames = [](const RawAtom &atom) { return elementNames(atom.fields); };
    if ((!tags.stereoMode
         || replaceChildren(nodes.description, description->stereo, isStereoAtom, noNames, lost))
        && (!changesSpherical
            || replaceChildren(nodes.description, description->spherical, isSphericalAtom,
                               atomNames, lost))
        && (!changesDocument
            || replaceChildren(nodes.track, track->spherical, isSphericalDocument, documentNames,
                               lost)))
        return true;
    *why = QStringLiteral("cannot be tagged");
    return false;
}
