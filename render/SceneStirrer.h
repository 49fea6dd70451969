// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Keeps Qt's rendering thread awake between an item's wish for a frame and its picture.

#include <QQuickItem>

class QSGTransformNode;

/// Makes each synchronisation of a window's scene one that has changed something. After one that
/// changed nothing, as for an image that only began to load, Qt's rendering thread sleeps until the
/// next refresh of the screen, and the next synchronisation, which may bring the picture, waits for
/// it together with the main thread.
class SceneStirrer : public QQuickItem
{
    Q_OBJECT

public:
    /// \a window owns it.
    explicit SceneStirrer(QQuickWindow *window);

protected:
    QSGNode *updatePaintNode(QSGNode *node, UpdatePaintNodeData *data) override;

private:
    QSGTransformNode *m_node = nullptr; // the scene graph's; of the rendering thread
};
