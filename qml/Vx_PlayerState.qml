// SPDX-License-Identifier: GPL-3.0-or-later
// The states and statuses that all players share, with the numbers of Qt's own media player, so
// that its values pass through as they are. A picture needs no multimedia module to be shown.
import QtQuick 2.15

QtObject {
    enum Playback {
        StoppedState,
        PlayingState,
        PausedState
    }

    enum Status {
        UnknownStatus,
        NoMedia,
        Loading,
        Loaded,
        Stalled,
        Buffering,
        Buffered,
        EndOfMedia,
        InvalidMedia
    }
}
