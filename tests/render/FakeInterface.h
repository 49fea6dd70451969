// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Stands in for the interface that a view shows before its panorama.

#include "devices/VxHmdUIManager.h"

#include <QImage>
#include <QPainter>

/// An interface of plain pictures.
class FakeInterface : public VxHmdUIManager
{
public:
    bool isActivated() const override { return activated; }

    QMatrix4x4 uiMatrixCopy() const override { return matrix; }

    int textureId(int layer) const override { return layer == 0 ? wall : foreground; }

    QSize textureSize(int) const override { return {256, 128}; }

    /// A layer: transparent, or with a green square in the middle.
    static QImage layer(bool marked)
    {
        QImage image(256, 128, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        if (marked)
            QPainter(&image).fillRect(118, 54, 20, 20, Qt::green);
        return image;
    }

    /// Where the square's pixels lie on average, 0 at the left edge to 1; -1 without any.
    static double markIn(const QImage &image)
    {
        qint64 sum = 0;
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QRgb pixel = image.pixel(x, y);
                if (qRed(pixel) < 60 && qGreen(pixel) > 200 && qBlue(pixel) < 60) {
                    sum += x;
                    ++count;
                }
            }
        }
        return count == 0 ? -1 : double(sum) / count / image.width();
    }

    bool activated = true;
    QMatrix4x4 matrix;
    int wall = 0;
    int foreground = 0;
};
