// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Keeps an item's loop of frames going: each swap asks for the next frame. What changes asks for a
// frame of its own, so between changes the loop only has to go on: every frame that shows nothing
// new still costs a composition of the whole window, which a video's next picture may need.

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class QQuickItem;
class QQuickWindow;

/// Asks an item for its frames: at once when something changes, and otherwise some refreshes of the
/// screen after the last one. Lives on the main thread.
class FramePacer : public QObject
{
    Q_OBJECT

public:
    explicit FramePacer(QQuickItem *item);

    /// Begins the loop; \a window shows the item.
    void start(QQuickWindow *window);

    /// Says whether the item may change without asking for a frame, which then follows each swap at
    /// once. On the rendering thread, while the main thread is held.
    void setRestless(bool restless) { m_restless = restless; }

public Q_SLOTS:
    /// Something that the picture depends on has changed.
    void requestFrame();

private Q_SLOTS:
    void onFrameSwapped();

private:
    int intervalMs() const;

    QQuickItem *m_item; // not owned
    QTimer m_timer;
    QElapsedTimer m_sinceRequest;
    bool m_restless = false;
};
