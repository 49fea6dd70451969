// SPDX-License-Identifier: GPL-3.0-or-later
#include "tools/MovieReport.h"

#include "movparser/src/report_error.h"
#include "movparser/src/sound_sample_description.h"
#include "movparser/src/video_sample_description.h"
#include "tools/Printable.h"

#include <QJsonArray>

#include <cstring>

using namespace Tavro::MovParserLib;

namespace {
QString errorText(uint32_t error)
{
    constexpr uint32_t kCodeBits = 0xffff;
    return QStringLiteral("0x%1 %2")
        .arg(error, 0, 16)
        .arg(QString::fromStdString(ErrorText(error & ~kCodeBits, error & kCodeBits)));
}

/// The value as `toValue` makes it, or the failure.
template <class T, class ToValue> QJsonValue jsonOf(const Answer<T> &answer, ToValue &&toValue)
{
    if (answer.error != 0)
        return QJsonObject{{QStringLiteral("error"), static_cast<qint64>(answer.error)}};
    return toValue(answer.value);
}

/// A line: the label, the value as `toText` makes it or the failure, and where it comes from.
template <class T, class ToText>
QString line(const char *label, const Answer<T> &answer, ToText &&toText, const QString &reason)
{
    const QString value = answer.error != 0 ? errorText(answer.error) : toText(answer.value);
    return QStringLiteral("  %1 %2%3\n")
        .arg(QLatin1String(label), -13)
        .arg(value, reason.isEmpty() ? QString() : QStringLiteral("  (%1)").arg(reason));
}

QString projectionName(uint32_t projection)
{
    return projection == kProjectionEquirectangular ? QStringLiteral("equirectangular")
        : projection == kProjectionCubemap          ? QStringLiteral("cubemap")
                                                    : QStringLiteral("none");
}

QString stereoModeName(uint32_t mode)
{
    return mode == 1 ? QStringLiteral("left-right")
        : mode == 2  ? QStringLiteral("top-bottom")
                     : QStringLiteral("mono");
}

/// What a video description holds that the answers do not use.
void listUnusedOfDescription(const VideoSampleDescription &description, bool isConsulted,
                             const QString &place, QStringList *list)
{
    if (!isConsulted && description.stereo)
        list->append(QStringLiteral("st3d (%1) in %2: only the first description of the first "
                                    "video track counts")
                         .arg(stereoModeName(description.stereo->GetStereoMode()), place));
    if (!isConsulted && description.spherical)
        list->append(QStringLiteral("sv3d (%1) in %2: only the first description of the first "
                                    "video track counts")
                         .arg(projectionName(description.spherical->GetProjection()), place));
    if (isConsulted && description.spherical && description.spherical->projection.equi
        && description.spherical->projection.cube)
        list->append(QStringLiteral("cbmp in %1: an equi stands beside it").arg(place));
}

void listUnusedOfTrack(const TrackAtom &track, bool isFirstVideo, const QString &place,
                       QStringList *list)
{
    const SampleDescriptionAtom *descriptions = track.SampleDescriptions();
    const bool readable = descriptions && descriptions->Video();
    if (track.spherical && track.spherical->hasOwnIdentifier && (readable || !isFirstVideo)) {
        list->append(QStringLiteral("spherical document (V1, %1, stitched by '%2') in %3: %4")
                         .arg(stereoModeName(track.spherical->GetStereoMode()),
                              printable(QString::fromStdString(track.spherical->StitchingSoftware)),
                              place,
                              readable ? QStringLiteral("the sample description answers alone")
                                       : QStringLiteral("not the first video track")));
    }
    if (!descriptions)
        return;
    for (size_t i = 0; i < descriptions->entries.size(); ++i) {
        const SampleDescription *entry = descriptions->entries[i].get();
        const QString where = QStringLiteral("description %1 of %2").arg(i + 1).arg(place);
        if (const auto *video = dynamic_cast<const VideoSampleDescription *>(entry))
            listUnusedOfDescription(*video, isFirstVideo && i == 0, where, list);
        const auto *sound = dynamic_cast<const SoundSampleDescription *>(entry);
        if (sound && sound->spatialAudio)
            list->append(QStringLiteral("SA3D (order %1) in %2: sound is played as it is")
                             .arg(sound->spatialAudio->ambisonic_order)
                             .arg(where));
    }
}

/// The maker's atoms besides the one that marks a file of the maker.
void listUnusedOfUserData(const UserDataAtom &userData, QStringList *list)
{
    QStringList names;
    const auto name = [&names](bool present, const char *atom) {
        if (present)
            names.append(QLatin1String(atom));
    };
    name(static_cast<bool>(userData.cameraId), "CAME");
    name(static_cast<bool>(userData.settings), "SETT");
    name(static_cast<bool>(userData.lens), "LENS");
    name(static_cast<bool>(userData.fov), "FOV");
    name(static_cast<bool>(userData.rigIdentity), "TURI");
    name(static_cast<bool>(userData.rigShot), "TUSI");
    name(static_cast<bool>(userData.tags), "HMMT");
    name(static_cast<bool>(userData.mediaUniqueId), "MUID");
    if (!names.isEmpty())
        list->append(names.join(QLatin1Char(' '))
                     + QStringLiteral(" in the user data: only FIRM is looked at"));
}
} // namespace

MovieReport::MovieReport(const QString &path)
    : m_path(path)
    , m_open(m_reader.Open(path))
{
    if (!opened())
        return;
    m_hasVideo = m_reader.HasVideo();
    m_frameSize.error = m_reader.GetFrameSize(&m_frameSize.value[0], &m_frameSize.value[1]);
    m_frameRate.error = m_reader.GetFrameRate(&m_frameRate.value);
    m_isMakerFile.error = m_reader.IsTavroFile(&m_isMakerFile.value);
    m_pose.error = m_reader.GetInitialPose(&m_pose.value[0], &m_pose.value[1], &m_pose.value[2]);
    m_projection.error = m_reader.GetProjection(&m_projection.value);
    m_stereoMode.error = m_reader.GetStereoMode(&m_stereoMode.value);
    m_writingTool.error = m_reader.GetWritingTool(&m_writingTool.value);
}

QJsonObject MovieReport::toJson() const
{
    QJsonObject json;
    json[QStringLiteral("file")] = m_path;
    json[QStringLiteral("open")] = static_cast<qint64>(m_open);
    if (!opened())
        return json;
    const auto number = [](uint32_t value) { return QJsonValue(static_cast<qint64>(value)); };
    json[QStringLiteral("has_video")] = m_hasVideo;
    json[QStringLiteral("tracks")] = static_cast<qint64>(m_reader.Movie().tracks.size());
    json[QStringLiteral("frame_size")] = jsonOf(m_frameSize, [&number](const auto &size) {
        return QJsonArray{number(size[0]), number(size[1])};
    });
    json[QStringLiteral("frame_rate")] =
        jsonOf(m_frameRate, [](double rate) { return QJsonValue(rate); });
    json[QStringLiteral("is_maker_file")] =
        jsonOf(m_isMakerFile, [](bool is) { return QJsonValue(is); });
    json[QStringLiteral("pose")] = jsonOf(m_pose, [](const auto &pose) {
        return QJsonArray{double(pose[0]), double(pose[1]), double(pose[2])};
    });
    json[QStringLiteral("projection")] = jsonOf(m_projection, number);
    json[QStringLiteral("stereo_mode")] = jsonOf(m_stereoMode, number);
    json[QStringLiteral("writing_tool")] = jsonOf(m_writingTool, [](const std::string &tool) {
        return QJsonValue(QString::fromStdString(tool));
    });
    return json;
}

QString MovieReport::toText() const
{
    QString text = printable(m_path) + QLatin1Char('\n');
    const auto stringOf = [](const QString &value) {
        return [value](const auto &) { return value; };
    };
    text +=
        line("opened", Answer<bool>{m_open, true}, stringOf(QStringLiteral("yes")),
             opened() ? QStringLiteral("moov at %1").arg(m_reader.GetMoviePosition()) : QString());
    if (!opened())
        return text;
    const size_t tracks = m_reader.Movie().tracks.size();
    text += line("tracks", Answer<size_t>{0, tracks}, stringOf(QString::number(tracks)),
                 m_hasVideo ? QStringLiteral("a video track has samples")
                            : QStringLiteral("no video track has samples: nothing below is asked"));
    text += line(
        "frame size", m_frameSize,
        [](const auto &size) { return QStringLiteral("%1 x %2").arg(size[0]).arg(size[1]); },
        QStringLiteral("first description of the first video track"));
    text += line(
        "frame rate", m_frameRate, [](double rate) { return QString::number(rate); },
        QStringLiteral("duration over samples, rounded up to whole ticks"));
    text += line("projection", m_projection, projectionName, sphericalReason("sv3d"));
    text += line("stereo mode", m_stereoMode, stereoModeName, sphericalReason("st3d"));
    text += line(
        "pose", m_pose,
        [](const auto &pose) {
            return QStringLiteral("yaw %1, pitch %2, roll %3")
                .arg(pose[0])
                .arg(pose[1])
                .arg(pose[2]);
        },
        QStringLiteral("whole degrees; %1").arg(sphericalReason("sv3d")));
    text += line(
        "writing tool", m_writingTool,
        [](const std::string &tool) {
            return QStringLiteral("'%1'").arg(printable(QString::fromStdString(tool)));
        },
        sphericalReason("sv3d"));
    text += line(
        "maker's file", m_isMakerFile,
        [](bool is) { return is ? QStringLiteral("yes") : QStringLiteral("no"); }, makerReason());
    for (const QString &entry : notConsulted())
        text += QStringLiteral("  not used:     ") + entry + QLatin1Char('\n');
    return text;
}

std::string MovieReport::treeToText() const
{
    std::string tree;
    m_reader.Movie().PrintToString(&tree, 0);
    return printableLines(tree);
}

QString MovieReport::makerReason() const
{
    const char *firmware = nullptr;
    const UserDataAtom *userData = m_reader.Movie().user_data.get();
    if (m_isMakerFile.error != 0)
        return QStringLiteral("the first track's handler has no name");
    // As the reader looks: the handler's name comes first.
    char name[256] = {};
    if (m_reader.Movie().tracks.front().GetName(name) == MovAtom::ERROR_OKAY
        && std::strstr(name, "Tavro"))
        return QStringLiteral("named as handler");
    if (userData && userData->GetFirmware(&firmware) == MovAtom::ERROR_OKAY && firmware)
        return QStringLiteral("firmware '%1'").arg(printable(QString::fromUtf8(firmware)));
    return m_isMakerFile.value ? QStringLiteral("named as encoding tool")
                               : QStringLiteral("no sign in handler, firmware or encoding tool");
}

QString MovieReport::sphericalReason(const char *atom) const
{
    const TrackAtom *track = m_reader.Movie().FindTrack(FourCC("vide"));
    if (!track)
        return QString();
    const SampleDescriptionAtom *descriptions = track->SampleDescriptions();
    const VideoSampleDescription *description = descriptions ? descriptions->Video() : nullptr;
    if (!description)
        return track->spherical ? QStringLiteral("spherical document, for want of a description")
                                : QStringLiteral("neither a description nor a spherical document");
    const bool present = QLatin1String(atom) == QLatin1String("st3d")
        ? static_cast<bool>(description->stereo)
        : static_cast<bool>(description->spherical);
    return QStringLiteral("%1 %2 the first description")
        .arg(QLatin1String(atom), present ? QStringLiteral("of") : QStringLiteral("missing in"));
}

QStringList MovieReport::notConsulted() const
{
    QStringList list;
    const MovieAtom &movie = m_reader.Movie();
    const TrackAtom *firstVideo = movie.FindTrack(FourCC("vide"));
    for (size_t i = 0; i < movie.tracks.size(); ++i)
        listUnusedOfTrack(movie.tracks[i], &movie.tracks[i] == firstVideo,
                          QStringLiteral("track %1").arg(i + 1), &list);
    if (movie.user_data)
        listUnusedOfUserData(*movie.user_data, &list);
    return list;
}
