// SPDX-License-Identifier: GPL-3.0-or-later
// What libvlc reports, as it arrives on the main thread and is passed on to the interface.
#include "video/VlcSession.h"
#include "video/VxVlcPlayerQml.h"

#include <vlc/vlc.h>

#include <algorithm>
#include <limits>

namespace {

constexpr int kFewPictures = 8;
constexpr int kBriefMs = 1000;

int toInt(qint64 milliseconds)
{
    return static_cast<int>(
        std::min<qint64>(std::max<qint64>(milliseconds, 0), std::numeric_limits<int>::max()));
}

} // namespace

void VxVlcPlayerQml::handleState(int generation, int state, const QString &error)
{
    // libvlc tells the end twice, and ends again what has failed: that would start the next medium.
    if (generation != m_generation || state == m_state || (state == Ended && m_state == Error))
        return;
    if (state == Ended && endedUnseen()) {
        if (hasTrack(libvlc_track_video) && !m_hasFewPictures.exchange(true)) {
            open(true);
            return;
        }
        // A file that is no medium at all "ends" as soon as it was opened, without an error of
        // libvlc's.
        if (m_displays == 0) {
            handleError(generation, error);
            state = Error;
        }
    }
    if (state == Error)
        handleError(generation, error);
    if (state == Playing) {
        applyVolume();
        if (m_pausePending)
            pause();
    }
    m_state = state;
    if (m_session)
        m_session->setStill(state == Paused || state == Ended);
    Q_EMIT vlcStateChanged(state);
}

// Once for each opening; libvlc reports a failure by its state and by an event of its own.
void VxVlcPlayerQml::handleError(int generation, const QString &error)
{
    if (generation != m_generation || m_errorTold)
        return;
    m_errorTold = true;
    Q_EMIT errorStringChanged(error);
}

void VxVlcPlayerQml::handleVolume(int generation)
{
    if (generation != m_generation)
        return;
    applyVolume();
    Q_EMIT volumeChanged();
}

// A volume that is set before there is an audio output does not reach it, and one that is just
// opening may still put its own in its place: until sound runs, the wanted one is set again.
void VxVlcPlayerQml::applyVolume()
{
    if (m_volumePending && player() && libvlc_audio_get_volume(player()) != m_volumePercent)
        libvlc_audio_set_volume(player(), m_volumePercent);
}

void VxVlcPlayerQml::handleTime(int generation, qint64 time)
{
    if (generation != m_generation)
        return;
    applyVolume();
    m_volumePending = false;
    // Some containers do not tell their length at first.
    if (m_durationTold <= 0 && player())
        handleDuration(generation, libvlc_media_player_get_length(player()));
    Q_EMIT positionChanged(toInt(time));
}

void VxVlcPlayerQml::handleDuration(int generation, qint64 duration)
{
    if (generation != m_generation || toInt(duration) == m_durationTold)
        return;
    m_durationTold = toInt(duration);
    Q_EMIT durationChanged(m_durationTold);
}

// Without a picture on the screen, and without a sound that anybody heard.
bool VxVlcPlayerQml::endedUnseen() const
{
    const int shown = m_hasFewPictures ? 1 : kSkippedDisplays + 1;
    return m_displays < shown && (!hasTrack(libvlc_track_audio) || m_durationTold <= kBriefMs);
}

bool VxVlcPlayerQml::hasTrack(int type) const
{
    if (!m_media)
        return false;
    libvlc_media_track_t **tracks = nullptr;
    const unsigned count = libvlc_media_tracks_get(m_media, &tracks);
    const bool has = std::any_of(tracks, tracks + count, [type](const libvlc_media_track_t *track) {
        return track->i_type == type;
    });
    if (tracks)
        libvlc_media_tracks_release(tracks, count);
    return has;
}

bool VxVlcPlayerQml::wasBrief() const
{
    return m_state == Ended && m_displays > 0 && m_displays <= kFewPictures
        && (m_hasFewPictures || m_durationTold <= kBriefMs);
}
