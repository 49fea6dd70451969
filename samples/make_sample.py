#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes the labelled test sphere: a landscape seen all around with a graticule in degrees, the
horizon and the points of the compass; in other layouts on request.

The middle of an equirectangular picture looks north, which is the player's yaw 0; east is to the
right. See README.md beside this file.
"""
import argparse
import io
import pathlib

import numpy as np
from PIL import Image, ImageDraw, ImageFont

import landscape

HERE = pathlib.Path(__file__).resolve().parent
FONT = 'DejaVuSans-Bold.ttf'
WHITE, AMBER, RED = (1.0, 1.0, 1.0), (1.0, 0.78, 0.25), (1.0, 0.30, 0.22)
COMPASS = ['N', 'NE', 'E', 'SE', 'S', 'SW', 'W', 'NW']


def blend(picture, where, cover, colour):
    picture[where] += (np.array(colour, np.float32) - picture[where]) * cover[..., None]


# Drawing on the sphere --------------------------------------------------------------------------

def graticule(picture):
    """Meridians and parallels every 15 degrees, each 45th and the horizon stronger. Widths are
    angles, so that a line looks the same wherever it runs."""
    height, width = picture.shape[:2]
    longitude = (np.arange(width) + 0.5) / width * 360 - 180
    latitude = 90 - (np.arange(height) + 0.5) / height * 180
    pixel = 180 / height

    def line(distance, half):
        return np.clip((half - distance) / pixel + 0.5, 0, 1).astype(np.float32)

    def nearest(angle, step):
        return np.abs((angle + step / 2) % step - step / 2)

    shrink = np.cos(np.radians(latitude))[:, None]
    open_sky = (np.abs(latitude) < 75)[:, None]  # only the strong meridians go on to the poles
    fine = np.maximum(line(nearest(longitude, 15) * shrink, 0.05) * open_sky,
                      line(nearest(latitude, 15), 0.05)[:, None] * (np.abs(latitude) < 80)[:, None])
    strong = np.maximum(line(nearest(longitude, 45) * shrink, 0.085),
                        line(nearest(latitude, 45), 0.085)[:, None])
    tick = np.maximum(line(nearest(longitude, 5), 0.05) * line(np.abs(latitude), 0.5)[:, None],
                      line(nearest(latitude, 5), 0.05)[:, None]
                      * line(nearest(longitude, 90) * shrink, 0.5))
    halo = np.maximum(line(nearest(longitude, 45) * shrink, 0.17),
                      line(nearest(latitude, 45), 0.17)[:, None])
    everywhere = slice(None)
    blend(picture, everywhere, 0.16 * halo, (0, 0, 0))
    blend(picture, everywhere, 0.34 * fine, WHITE)
    blend(picture, everywhere, 0.62 * np.maximum(strong, tick), WHITE)
    horizon = np.broadcast_to(line(np.abs(latitude), 0.11)[:, None], (height, width))
    blend(picture, everywhere, 0.85 * horizon, AMBER)


def label(picture, text, longitude, latitude, size, colour, strength=1.0):
    """Writes text upright around a point of the sphere, `size` degrees tall, on the plane that
    touches the sphere there, so that it looks undistorted when the view turns to it."""
    em = 96
    font = ImageFont.truetype(FONT, em)
    box = font.getbbox(text, stroke_width=9)
    pad = 12
    extent = (box[2] - box[0] + 2 * pad, box[3] - box[1] + 2 * pad)
    at = (pad - box[0], pad - box[1])
    edge, face = Image.new('L', extent), Image.new('L', extent)
    ImageDraw.Draw(edge).text(at, text, 255, font, stroke_width=9, stroke_fill=255)
    ImageDraw.Draw(face).text(at, text, 255, font)

    height, width = picture.shape[:2]
    scale = np.radians(size) / em  # of one texel on the plane
    reach = np.hypot(*extent) / 2 * scale
    rows = np.arange(height)
    lat = np.pi / 2 - (rows + 0.5) / height * np.pi
    rows = rows[np.abs(lat - np.radians(latitude)) < reach][:, None]
    lat = np.pi / 2 - (rows + 0.5) / height * np.pi
    lon = (np.arange(width) + 0.5) / width * 2 * np.pi - np.pi - np.radians(longitude)
    sine, cosine = np.sin(np.radians(latitude)), np.cos(np.radians(latitude))
    depth = sine * np.sin(lat) + cosine * np.cos(lat) * np.cos(lon)
    with np.errstate(divide='ignore', invalid='ignore'):
        x = np.cos(lat) * np.sin(lon) / depth / scale + extent[0] / 2
        y = cosine * np.sin(lat) - sine * np.cos(lat) * np.cos(lon)
        y = extent[1] / 2 - y / depth / scale
    inside = (depth > 0) & (x >= 0) & (x < extent[0]) & (y >= 0) & (y < extent[1])
    row, column = np.nonzero(inside)
    # Averages as many texels as a pixel covers.
    texels = max(1, round(np.pi / height / scale))
    filtered = [np.asarray(layer.resize((max(1, extent[0] // texels), max(1, extent[1] // texels)),
                                        Image.BOX), np.float32) / 255 for layer in (edge, face)]
    where = (rows[row, 0], column)
    for layer, tint, cover in ((filtered[0], (0.04, 0.06, 0.09), 0.62), (filtered[1], colour, 1.0)):
        blend(picture, where, cover * strength * sample(layer, x[inside] / texels - 0.5,
                                                        y[inside] / texels - 0.5), tint)


def sample(layer, x, y):
    """Bilinear, clamped at the edges; x and y count from the centre of the first texel."""
    height, width = layer.shape[:2]
    x, y = np.clip(x, 0, width - 1), np.clip(y, 0, height - 1)
    i, j = x.astype(int), y.astype(int)
    s, t = (x - i).astype(np.float32), (y - j).astype(np.float32)
    if layer.ndim == 3:
        s, t = s[..., None], t[..., None]
    k, m = np.minimum(i + 1, width - 1), np.minimum(j + 1, height - 1)
    return (layer[j, i] * (1 - s) + layer[j, k] * s) * (1 - t) \
        + (layer[m, i] * (1 - s) + layer[m, k] * s) * t


def degrees(value, sign='-'):
    return f'{value:{sign}d}°'.replace('-', '\N{MINUS SIGN}')


def annotate(picture):
    graticule(picture)
    for k, name in enumerate(COMPASS):
        azimuth = (k * 45 + 180) % 360 - 180
        main = k % 2 == 0
        label(picture, name, azimuth, 5.6 if main else 4.6, 5.6 if main else 3.4,
              RED if name == 'N' else WHITE)
    for azimuth in range(-180, 180, 15):
        label(picture, degrees(azimuth), azimuth, -2.1, 1.5,
              AMBER if azimuth % 45 == 0 else WHITE, 0.92)
    for latitude in (-75, -60, -45, -30, -15, 15, 30, 45, 60, 75):
        for azimuth in (-180, -90, 0, 90):
            aside = 2.3 / np.cos(np.radians(latitude))
            label(picture, degrees(latitude, '+'), azimuth + aside, latitude + 1.1, 1.5,
                  AMBER if latitude % 45 == 0 else WHITE, 0.92)
    label(picture, 'ZENITH', 0, 87.5, 2.4, WHITE)
    label(picture, 'NADIR', 0, -87.5, 2.4, WHITE)


# Other layouts, each the inverse of the way in which the player samples them ---------------------

def look(sphere, x, y, z):
    """Colours of an equirectangular picture in given directions: x right, y up, -z ahead."""
    height, width = sphere.shape[:2]
    column = (np.arctan2(x, -z) / (2 * np.pi) + 0.5) * width - 0.5
    row = np.arccos(np.clip(y / np.sqrt(x * x + y * y + z * z), -1, 1)) / np.pi * height - 0.5
    wrapped = np.concatenate([sphere, sphere[:, :1]], axis=1)  # the seam has neighbours too
    return sample(wrapped, column % width, row)


def cubemap(sphere, width):
    """Six faces in three columns and two rows, each drawn in by half a percent at its rim."""
    size = width // 3
    inset = (((np.arange(size) + 0.5) / size - 0.005) * 1.01) * 2 - 1
    u, v = np.meshgrid(inset, inset)  # to the right and downwards in the face
    one = np.ones_like(u)
    top = [(one, -v, u), (-one, -v, -u), (u, one, -v)]  # right, left, up
    bottom = [(u, -one, v), (u, -v, -one), (-u, -v, one)]  # down, front, back
    return np.concatenate([np.concatenate([look(sphere, *face) for face in row], axis=1)
                           for row in (top, bottom)])


def fisheye(sphere, width):
    """One circle around the vertical axis that reaches 0.665 pi from it."""
    place = (np.arange(width) + 0.5) / width - 0.5
    dx, dy = np.meshgrid(place, place)
    radius, turn = np.hypot(dx, dy), np.arctan2(dy, dx)
    polar = radius * np.pi * 1.33
    picture = look(sphere, np.sin(turn) * np.sin(polar), np.cos(polar),
                   np.cos(turn) * np.sin(polar))
    picture[radius > 0.5] = 0
    return picture


def flat(sphere, width):
    """What an ordinary camera sees: 90 degrees wide, 16:9."""
    x, y = np.meshgrid((np.arange(width) + 0.5) / width * 2 - 1,
                       (1 - (np.arange(width * 9 // 16) + 0.5) / (width * 9 // 16) * 2) * 9 / 16)
    return look(sphere, x, y, -np.ones_like(x))


def stereo(sphere, layout, direction):
    """Two eyes in one picture, left first, told apart by a label in each."""
    eyes = []
    for name, colour in (('LEFT EYE', (0.3, 0.7, 1.0)), ('RIGHT EYE', (1.0, 0.4, 0.4))):
        eye = sphere.copy()
        for azimuth in (-180, -90, 0, 90):
            label(eye, name, azimuth, 19.5, 4.0, colour)
        eyes.append(layout(eye))
    return np.concatenate(eyes, axis=0 if direction == 'over-under' else 1)


def encode(picture, limit):
    """JPEG of the best quality that stays below `limit` bytes."""
    image = Image.fromarray((np.clip(picture, 0, 1) * 255 + 0.5).astype(np.uint8))
    for quality in range(92, 40, -1):
        out = io.BytesIO()
        image.save(out, 'JPEG', quality=quality, optimize=True, progressive=True, subsampling=2)
        if not limit or out.tell() < limit:
            break
    return out.getvalue()


# How to convert, and how much wider than the result the sphere has to be for the same detail.
LAYOUTS = {'equirectangular': (lambda sphere, width: sphere, 1), 'cubemap': (cubemap, 4 / 3),
           'fisheye': (fisheye, 3 / 2), 'flat': (flat, 3)}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument('out', nargs='?', type=pathlib.Path, default=HERE / 'sphere.jpg')
    parser.add_argument('--width', type=int, default=4096, help='of one eye, in pixels')
    parser.add_argument('--layout', choices=LAYOUTS, default='equirectangular')
    parser.add_argument('--stereo', choices=['over-under', 'side-by-side'])
    parser.add_argument('--plain', action='store_true', help='no lines and labels')
    parser.add_argument('--limit', type=int, default=1_450_000,
                        help='bytes of a JPEG; 0: none (other formats: by the suffix, lossless)')
    arguments = parser.parse_args()

    convert, finer = LAYOUTS[arguments.layout]
    height = int(arguments.width * finer) // 2
    sphere = landscape.render(2 * height, height)
    if not arguments.plain:
        annotate(sphere)

    def layout(eye):
        return convert(eye, arguments.width)

    picture = stereo(sphere, layout, arguments.stereo) if arguments.stereo else layout(sphere)
    if arguments.out.suffix in ('.jpg', '.jpeg'):
        arguments.out.write_bytes(encode(picture, arguments.limit))
    else:
        Image.fromarray((np.clip(picture, 0, 1) * 255 + 0.5).astype(np.uint8)).save(arguments.out)


if __name__ == '__main__':
    main()
