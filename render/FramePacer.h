// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Keeps an item's loop of frames going: each swap asks for the next frame. Where swaps do not wait
// for the screen, a picture that stands still would otherwise be composed as often as the machine
// can.

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class QQuickPaintedItem;
class QQuickWindow;

/// Asks an item for its frames: at once after a frame that differed from the one before, at the
/// screen's refresh rate after one that did not, and at once when something changes meanwhile.
/// Lives on the main thread.
class FramePacer : public QObject
{
    Q_OBJECT

public:
    explicit FramePacer(QQuickPaintedItem *item);

    /// Begins the loop; \a window shows the item.
    void start(QQuickWindow *window);

    /// Says whether the frame that is being synchronised differs from the one before. On the
    /// rendering thread, while the main thread is held.
    void setChanged(bool changed) { m_changed = changed; }

public Q_SLOTS:
    /// Something that the picture depends on has changed.
    void requestFrame();

private Q_SLOTS:
    void onFrameSwapped();

private:
    int refreshIntervalMs() const;

    QQuickPaintedItem *m_item; // not owned
    QTimer m_timer;
    QElapsedTimer m_sinceRequest;
    bool m_changed = true;
};
