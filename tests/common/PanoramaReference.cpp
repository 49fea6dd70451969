// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/common/PanoramaReference.h"

#include <QPainter>

#include <algorithm>
#include <array>
#include <optional>

namespace {

using Builder = VxShaderCodeBuilder;
using Colour = std::array<double, 3>; // 0 to 1

const Colour kBackground{0.1333333, 0.1333333, 0.1333333};

struct Point // of the source or the screen
{
    double x;
    double y;
};

struct Vector // x to the right, y up, z backwards
{
    double x;
    double y;
    double z;
};

/// Half the S-curve of a sine from 60 to 180 degrees: how far the adaptive projection's eye point
/// has moved from the sphere's centre to the sphere.
double eyeDistance(double fov)
{
    const double t = std::clamp((fov - 60) / 120, 0.0, 1.0);
    return (1 - std::cos(M_PI * t)) / 2;
}

/// The angle off the view axis at which the projection shows a point of the screen, whose distance
/// from the centre is 1 at half the shorter side; nothing where it shows none.
std::optional<double> angleOffAxis(const PanoramaScene &scene, double radius)
{
    const double half = scene.fov * M_PI / 360;
    switch (scene.projection) {
    case Builder::RECTILINEAR:
        return std::atan(radius * std::tan(half));
    case Builder::LITTLE_PLANET:
        return 2 * std::atan(radius * 2 * half / 1.25);
    case Builder::FISHEYE:
        if (radius * half > M_PI)
            return std::nullopt;
        return radius * half;
    }
    // Seen from the eye point behind the centre the screen's point lies at the angle `seen`; the
    // sine rule in the triangle of eye, centre and sphere gives the angle at the centre.
    const double distance = eyeDistance(scene.fov);
    const double edge = (1 + distance) * std::sin(half) / (distance + std::cos(half));
    const double seen = std::atan(radius * edge / (1 + distance));
    return seen + std::asin(distance * std::sin(seen));
}

/// The camera's turn: roll about the view axis, then pitch (growing downwards), then yaw (growing
/// to the right).
Vector turned(const PanoramaScene &scene, Vector v)
{
    const auto turn = [](double &a, double &b, double angle) {
        const double turnedA = a * std::cos(angle) - b * std::sin(angle);
        b = a * std::sin(angle) + b * std::cos(angle);
        a = turnedA;
    };
    turn(v.x, v.y, scene.roll);
    turn(v.y, v.z, -scene.pitch);
    turn(v.z, v.x, -scene.yaw);
    return v;
}

/// Where a direction lies on the cube's picture: right, left, up above down, front, back.
Point onCubemap(Vector v)
{
    const double ax = std::abs(v.x);
    const double ay = std::abs(v.y);
    const double az = std::abs(v.z);
    const double largest = std::max({ax, ay, az});
    // Position on the face as one looks at it from inside: to the right and down, -1 to 1.
    int column = 0;
    int row = 0;
    Point face{};
    if (ax == largest) {
        column = v.x > 0 ? 0 : 1;
        face = {v.x > 0 ? v.z : -v.z, -v.y};
    } else if (ay == largest) {
        column = v.y > 0 ? 2 : 0;
        row = v.y > 0 ? 0 : 1;
        face = {v.x, v.y > 0 ? -v.z : v.z};
    } else {
        column = v.z > 0 ? 2 : 1;
        row = 1;
        face = {v.z > 0 ? -v.x : v.x, -v.y};
    }
    // A face's picture is a hundredth smaller than its cell, about a middle half a percent of a
    // hundredth off.
    const auto within = [largest](double value, bool mirrored) {
        const double place = (mirrored ? -value : value) / largest;
        const double shrunk = (place + 1) / 2 / 1.01 + 0.005;
        return mirrored ? 1 - shrunk : shrunk;
    };
    // Coordinates that run against an axis are mirrored before they are shrunk.
    const bool mirrorX = (row == 0 && column == 1) || (row == 1 && column == 2);
    const bool mirrorY = !(row == 1 && column == 0);
    return {(column + within(face.x, mirrorX)) / 3, (row + within(face.y, mirrorY)) / 2};
}

/// Where the source shows a screen point, 0 to 1 from its upper left corner; outside of that, or
/// nothing, where it does not.
std::optional<Point> sourcePoint(const PanoramaScene &scene, Point screen)
{
    const double half = scene.fov * M_PI / 360;
    if (scene.projectionSource == Builder::STANDARD) {
        const double x = 0.5 + (scene.yaw + screen.x * half) / (2 * M_PI);
        const double y = 0.5 + (scene.limitedPitch() - screen.y * half) / M_PI;
        return Point{x - std::floor(x), y};
    }

    const double radius = std::hypot(screen.x, screen.y);
    const std::optional<double> angle = angleOffAxis(scene, radius);
    if (!angle)
        return std::nullopt;
    const double across = radius > 0 ? std::sin(*angle) / radius : 0;
    const Vector v = turned(scene, {screen.x * across, screen.y * across, -std::cos(*angle)});

    // The interface's plane stands at unit distance, 2:1; 81 degrees to a side would fill a plane
    // four times as high and twice as wide. Its first row is the upper one.
    if (scene.overlay) {
        if (v.z >= 0)
            return std::nullopt;
        const double halfWidth = std::tan(81 * M_PI / 180) / 2;
        return Point{0.5 + v.x / -v.z / halfWidth / 2, 0.5 - v.y / -v.z / halfWidth};
    }

    switch (scene.projectionSource) {
    case Builder::CUBEMAP:
        return onCubemap(v);
    case Builder::FISHEYE_CIRCLE: {
        const Vector lens = scene.rotationSource == 2 ? Vector{v.y, -v.x, v.z} : v;
        const double reach = std::acos(std::clamp(lens.y, -1.0, 1.0)) / (2 * 0.665 * M_PI);
        const double flat = std::hypot(lens.x, lens.z);
        return Point{0.5 + reach * lens.z / flat, 0.5 + reach * lens.x / flat};
    }
    }
    const double longitude = std::atan2(v.x, -v.z);
    const double latitude = std::asin(std::clamp(v.y, -1.0, 1.0));
    return Point{(longitude - scene.yawMin) / (scene.yawMax - scene.yawMin),
                 (scene.pitchMax - latitude) / (scene.pitchMax - scene.pitchMin)};
}

/// One eye's half of a stereo frame.
Point stereoPoint(int stereoMode, int eye, Point point)
{
    const bool inverted = stereoMode == Builder::STEREO_3D_OVERUNDER_INVERTED
        || stereoMode == Builder::STEREO_3D_SIDEBYSIDE_INVERTED;
    const double second = (eye == 1) != inverted ? 0.5 : 0;
    switch (stereoMode) {
    case Builder::STEREO_3D_OVERUNDER:
    case Builder::STEREO_3D_OVERUNDER_INVERTED:
        return {point.x, point.y / 2 + second};
    case Builder::STEREO_3D_SIDEBYSIDE:
    case Builder::STEREO_3D_SIDEBYSIDE_INVERTED:
        return {point.x / 2 + second, point.y};
    }
    return point;
}

Colour bilinear(const QImage &source, Point point)
{
    const double x = std::clamp(point.x * source.width() - 0.5, 0.0, source.width() - 1.0);
    const double y = std::clamp(point.y * source.height() - 0.5, 0.0, source.height() - 1.0);
    const int left = int(x);
    const int top = int(y);
    const int right = std::min(left + 1, source.width() - 1);
    const int bottom = std::min(top + 1, source.height() - 1);
    const auto mix = [&](int (*channel)(QRgb)) {
        const auto at = [&](int column, int row) {
            return channel(reinterpret_cast<const QRgb *>(source.constScanLine(row))[column]);
        };
        const double above = at(left, top) * (left + 1 - x) + at(right, top) * (x - left);
        const double below = at(left, bottom) * (left + 1 - x) + at(right, bottom) * (x - left);
        return (above * (top + 1 - y) + below * (y - top)) / 255;
    };
    return {mix(qRed), mix(qGreen), mix(qBlue)};
}

/// Shows only pure colours whose channels marked here are strong and whose others are weak; all
/// else turns grey.
Colour singleColour(Colour c, const std::array<bool, 3> &kept)
{
    double purity = 1;
    for (size_t i = 0; i < 3; ++i) {
        if (kept[i]) {
            c[i] = std::min(1.5 * c[i], 1.0);
            const double t = std::clamp((c[i] - 0.2) / 0.6, 0.0, 1.0);
            purity *= t * t * (3 - 2 * t);
        } else if (c[i] >= 0.1) {
            purity = 0;
        }
    }
    const double grey = (c[0] + c[1] + c[2]) / 3;
    for (size_t i = 0; i < 3; ++i)
        c[i] = kept[i] ? std::max(grey, purity) : grey * (1 - purity);
    return c;
}

/// `height` is the eye's area in item units and `up` the place in it, 0 at the bottom to 1.
Colour withEffect(int effect, Colour c, double height, double up)
{
    const double luma = 0.3 * c[0] + 0.59 * c[1] + 0.11 * c[2];
    switch (effect) {
    case Builder::SEPIA:
        return {luma + 0.15, luma + 0.07, luma - 0.12};
    case Builder::BLACK_AND_WHITE:
        return luma < 0.5 ? Colour{0, 0, 0} : Colour{1, 1, 1};
    case Builder::TV: {
        // The time stands at 0: a fixed pattern of lines, compressed about the middle.
        const double line = 0.5 + (up - 0.5) * 0.9;
        const double gain = (0.92 + 0.08 * std::sin(1.5 * height * line)) * (1.3 + 0.04 * 1.9);
        const Colour tint{0.95, 1.05, 0.95};
        for (size_t i = 0; i < 3; ++i)
            c[i] = std::min(1.4 * c[i] * c[i], 1.0) * gain * tint[i];
        return c;
    }
    case Builder::INVERT:
        return {1 - c[0], 1 - c[1], 1 - c[2]};
    case Builder::RED_ONLY:
        return singleColour(c, {true, false, false});
    case Builder::YELLOW_ONLY:
        return singleColour(c, {true, true, false});
    case Builder::BLUE_ONLY:
        return singleColour(c, {false, false, true});
    }
    return c;
}

Colour fragment(const PanoramaScene &scene, const QImage &source, int eye, Point screen, double up)
{
    std::optional<Point> point = sourcePoint(scene, screen);
    if (!point)
        return kBackground;
    if (scene.flipY && !scene.overlay)
        point->y = 1 - point->y;
    if (point->x < 0 || point->x > 1 || point->y < 0 || point->y > 1)
        return kBackground;

    Colour c = bilinear(source, stereoPoint(scene.stereoMode, eye, *point));
    if (scene.invertedColors)
        std::swap(c[0], c[2]);
    // The look takes a thousandth of the saturation away.
    const double grey = (c[0] + c[1] + c[2]) / 3;
    for (double &channel : c)
        channel += (grey - channel) * (1 - 1 / 1.001);
    return withEffect(scene.effect, c, scene.eyeSize().height(), up);
}

QRgb quantised(const Colour &c)
{
    const auto level = [](double value) {
        return int(std::lround(std::clamp(value, 0.0, 1.0) * 255));
    };
    return qRgb(level(c[0]), level(c[1]), level(c[2]));
}

} // namespace

double PanoramaScene::limitedPitch() const
{
    const double half = fov * M_PI / 360;
    const double upper = -pitchMin - half;
    return pitch > upper ? upper : std::max(-pitchMax + half, pitch);
}

QSize PanoramaScene::eyeSize() const
{
    return {splitView && !tv3dView ? item.width() / 2 : item.width(), item.height()};
}

QSize PanoramaScene::eyePixels() const
{
    return {int((splitView ? item.width() / 2 : item.width()) * devicePixelRatio),
            int(item.height() * devicePixelRatio)};
}

QImage PanoramaReference::render(const PanoramaScene &scene, const QImage &source)
{
    const QImage texels = source.convertToFormat(QImage::Format_RGB32);
    QImage picture(scene.item * scene.devicePixelRatio, QImage::Format_RGB32);
    picture.fill(quantised(kBackground));

    const QSize area = scene.eyeSize();
    const QSize pixels = scene.eyePixels();
    const double shorter = std::min(area.width(), area.height());
    for (int eye = 0; eye < (scene.splitView ? 2 : 1); ++eye) {
        for (int y = 0; y < pixels.height(); ++y) {
            // The viewport stands on the picture's lower left corner.
            auto *row =
                reinterpret_cast<QRgb *>(picture.scanLine(picture.height() - pixels.height() + y));
            const double up = 1 - (y + 0.5) / pixels.height();
            for (int x = 0; x < pixels.width(); ++x) {
                const double along = (x + 0.5) / pixels.width();
                const Point screen{(2 * along - 1) * area.width() / shorter,
                                   (2 * up - 1) * area.height() / shorter};
                row[eye * pixels.width() + x] = quantised(fragment(scene, texels, eye, screen, up));
            }
        }
    }
    return picture;
}

QImage PanoramaReference::testPanorama(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        const double v = (y + 0.5) / size.height();
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const double u = (x + 0.5) / size.width();
            row[x] = quantised({0.5 + 0.4 * std::sin(2 * M_PI * u + 1), 0.15 + 0.7 * v,
                                0.5 + 0.35 * std::cos(4 * M_PI * u + 3 * v)});
        }
    }
    const auto patch = [&](double x, double y, double width, double height, QRgb colour) {
        const QPoint first(int(x * size.width()), int(y * size.height()));
        const QPoint end(int((x + width) * size.width()), int((y + height) * size.height()));
        QPainter(&image).fillRect(QRect(first, end - QPoint(1, 1)), QColor(colour));
    };
    patch(0.30, 0.22, 0.14, 0.16, qRgb(230, 10, 10));
    patch(0.58, 0.36, 0.16, 0.08, qRgb(220, 220, 12));
    patch(0.36, 0.56, 0.10, 0.20, qRgb(12, 14, 200));
    patch(0.60, 0.62, 0.20, 0.14, qRgb(20, 180, 30));
    return image;
}

QByteArray PanoramaReference::Comparison::text() const
{
    return QStringLiteral("%1 of the pixels are near; off by %2 at %3, %4")
        .arg(share)
        .arg(worst)
        .arg(worstAt.x())
        .arg(worstAt.y())
        .toLatin1();
}

PanoramaReference::Comparison PanoramaReference::compare(const QImage &actual,
                                                         const QImage &expected, int tolerance)
{
    Comparison result;
    if (actual.size() != expected.size() || actual.isNull()) {
        result.worst = 255;
        return result;
    }
    qint64 near = 0;
    for (int y = 0; y < actual.height(); ++y) {
        for (int x = 0; x < actual.width(); ++x) {
            const QRgb p = actual.pixel(x, y);
            const QRgb q = expected.pixel(x, y);
            const int largest =
                std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                          std::abs(qBlue(p) - qBlue(q))});
            near += largest <= tolerance;
            if (largest > result.worst) {
                result.worst = largest;
                result.worstAt = {x, y};
            }
        }
    }
    result.share = double(near) / (double(actual.width()) * actual.height());
    return result;
}
