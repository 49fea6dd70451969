// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/SceneStirrer.h"

#include <QQuickWindow>
#include <QSGTransformNode>

SceneStirrer::SceneStirrer(QQuickWindow *window)
    : QQuickItem(window->contentItem())
{
    setFlag(ItemHasContents);
    connect(
        window, &QQuickWindow::beforeSynchronizing, this,
        [this] {
            if (m_node)
                m_node->markDirty(QSGNode::DirtyMatrix);
        },
        Qt::DirectConnection);
    connect(
        window, &QQuickWindow::sceneGraphInvalidated, this, [this] { m_node = nullptr; },
        Qt::DirectConnection);
}

QSGNode *SceneStirrer::updatePaintNode(QSGNode *node, UpdatePaintNodeData *)
{
    if (!node)
        node = m_node = new QSGTransformNode;
    return node;
}
