// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a renderer needs of the interface inside the view: whether it is open, where it stands, and
// the textures of its layers.

#include <QMatrix4x4>
#include <QObject>
#include <QSize>

/// The interface as a wall before the viewer. Layer 0 is the wall, which stays where it is in the
/// world; layer 1 is the foreground, which stays fixed to the view. All functions are safe on any
/// thread.
class VxHmdUIManager : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual bool isActivated() const = 0;
    /// Turns the wall to where the user looked when it opened.
    virtual QMatrix4x4 uiMatrixCopy() const = 0;
    /// 0 for an unknown layer, or while the layer has not been drawn.
    virtual int textureId(int layer) const = 0;
    virtual QSize textureSize(int layer) const = 0;
};
