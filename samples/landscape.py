# SPDX-License-Identifier: GPL-3.0-or-later
"""A procedural landscape seen all around: sky, clouds, mountains, a lake, forest and meadow.

Axes: x east, z north, y up, metres; the eye stands above the origin. Pictures are
equirectangular arrays (rows, columns, 3) of linear light, north in the middle column.
"""
import numpy as np

EYE = 1.9  # above the ground on which the viewer stands
REACH = 26000.0
SUN_AZIMUTH, SUN_ELEVATION = np.radians(64.0), np.radians(21.0)
SUN = np.array([np.sin(SUN_AZIMUTH) * np.cos(SUN_ELEVATION), np.sin(SUN_ELEVATION),
                np.cos(SUN_AZIMUTH) * np.cos(SUN_ELEVATION)], np.float32)
SUNLIGHT = np.array([1.0, 0.86, 0.66], np.float32) * 3.1
SKYLIGHT = np.array([0.36, 0.52, 0.86], np.float32) * 0.72


class Noise:
    """Gradient noise, in [-1, 1], periodic in 256 cells."""

    def __init__(self, seed):
        rng = np.random.RandomState(seed)
        self.table = np.concatenate([rng.permutation(256)] * 2).astype(np.int32)
        turn = rng.uniform(0, 2 * np.pi, 256)
        self.gx, self.gy = np.cos(turn).astype(np.float32), np.sin(turn).astype(np.float32)

    def hash(self, i, j):
        return self.table[self.table[i & 255] + (j & 255)]

    def __call__(self, x, y):
        i, j = np.floor(x), np.floor(y)
        u, v = (x - i).astype(np.float32), (y - j).astype(np.float32)
        i, j = i.astype(np.int32), j.astype(np.int32)

        def corner(a, b):
            h = self.hash(i + a, j + b)
            return self.gx[h] * (u - a) + self.gy[h] * (v - b)

        s, t = u * u * u * (u * (u * 6 - 15) + 10), v * v * v * (v * (v * 6 - 15) + 10)
        low = corner(0, 0) * (1 - s) + corner(1, 0) * s
        high = corner(0, 1) * (1 - s) + corner(1, 1) * s
        return (low * (1 - t) + high * t) * 1.5

    def octaves(self, x, y, count, gain=0.5, ridged=False):
        """Noise on ever finer scales, each turned against the one before to hide the lattice."""
        total, weight, norm = np.zeros(np.shape(x), np.float32), 1.0, 0.0
        for _ in range(count):
            n = self(x, y)
            total += weight * ((1 - 2 * np.abs(n)) if ridged else n)
            norm += weight
            weight *= gain
            x, y = 1.62 * x + 1.21 * y + 17.3, -1.21 * x + 1.62 * y + 5.9
        return total / norm


SHAPE, DETAIL, FOREST, CLOUD = Noise(11), Noise(23), Noise(37), Noise(58)


def smoothstep(low, high, x):
    t = np.clip((x - low) / (high - low), 0, 1)
    return t * t * (3 - 2 * t)


def mix(a, b, t):
    return a + (b - a) * t


# Terrain ----------------------------------------------------------------------------------------

def lake(x, z):
    """How deep in the lake's bed a place lies: above 0 inside the shore."""
    shore = 55 * SHAPE.octaves(x / 190 + 3.1, z / 190 - 8.7, 3)
    ellipse = 1 - np.hypot((x + 190) / 560, (z - 520) / 360)
    return ellipse * 300 + shore


def ground(x, z, octaves):
    """Height of the bare ground; the lake's surface is at 0."""
    r = np.hypot(x, z)
    meadow = 5.5 + 2.4 * SHAPE.octaves(x / 74 + 0.4, z / 74 + 0.9, min(octaves, 4))
    meadow = meadow + 34 * np.exp(-((x - 14) ** 2 + (z + 22) ** 2) / 125.0 ** 2)  # the lookout
    meadow = meadow + 26 * smoothstep(300, 1500, r) * SHAPE.octaves(x / 420, z / 420, 3)
    ridges = SHAPE.octaves(x / 5200 + 1.7, z / 5200 + 4.2, octaves, 0.45, ridged=True)
    turn = np.arctan2(x, z)
    open_valley = 0.50 + 0.30 * np.cos(turn - 0.25) + 0.20 * np.cos(2 * turn + 1.1)
    rise = smoothstep(900, 8000, r) * np.clip(open_valley, 0.14, 1)
    mountains = rise * (640 + 2500 * np.abs(ridges + 0.1) ** 1.7 * np.sign(ridges + 0.1))
    bed = np.clip(lake(x, z) / 40, -1, 1)
    shore = np.minimum(meadow, 1.2)
    return np.where(bed > 0, mix(shore, -6, smoothstep(0, 0.4, bed)),
                    mix(shore, meadow, smoothstep(0, 1, -bed))) + mountains


def canopy(x, z, height):
    """Height of the trees above the ground: cones on a jittered grid, where forest grows."""
    r = np.hypot(x, z)
    wood = FOREST.octaves(x / 330 + 9.3, z / 330 + 2.8, 3) + 0.55 * smoothstep(150, 1300, r) - 0.06
    wood = np.where((lake(x, z) > -14) | (r < 38) | (height > 900), -1, wood)
    top = np.zeros_like(r)
    cell = 6.5
    i, j = np.floor(x / cell).astype(np.int32), np.floor(z / cell).astype(np.int32)
    for a in (-1, 0, 1):
        for b in (-1, 0, 1):
            h = FOREST.hash(i + a, j + b)
            cx = (i + a + 0.15 + 0.7 * ((h * 57) % 256) / 256) * cell
            cz = (j + b + 0.15 + 0.7 * ((h * 149) % 256) / 256) * cell
            size = (9 + 11 * ((h * 91) % 256) / 256) * (h % 256 < 700 * wood + 20 * (wood > -0.1))
            turn = np.arctan2(x - cx, z - cz)
            branches = 4.4 + 1.3 * np.sin(5 * turn + h) + 0.9 * np.sin(11 * turn + 3 * h)
            top = np.maximum(top, size - np.hypot(x - cx, z - cz) * branches)
    return top


def visible(azimuths, elevations, octaves):
    """For each pixel the distance of the terrain that it shows (inf: sky), whether it is a tree,
    and how high in it. Goes outwards in each column and keeps the steepest sight so far."""
    steps = np.geomspace(0.02, REACH, 3000)
    shape = (len(elevations), len(azimuths))
    distance = np.full(shape, np.inf, np.float32)
    tree = np.zeros(shape, np.float32)
    eye = EYE + float(ground(np.zeros(1), np.zeros(1), octaves)[0])
    for begin in range(0, len(azimuths), 256):
        part = slice(begin, begin + 256)
        a = azimuths[part, None]
        x, z = np.sin(a) * steps, np.cos(a) * steps
        height = np.maximum(ground(x, z, octaves), 0)
        inside = slice(np.searchsorted(steps, 36), np.searchsorted(steps, 6500))
        trees = np.zeros_like(height)
        trees[:, inside] = canopy(x[:, inside], z[:, inside], height[:, inside])
        sight = np.maximum.accumulate(np.arctan2(height + trees - eye, steps), axis=1)
        for column in range(sight.shape[0]):
            k = np.searchsorted(sight[column], elevations)
            seen = k < len(steps)
            k = np.clip(k, 1, len(steps) - 1)
            low, high = sight[column][k - 1], sight[column][k]
            t = np.clip((elevations - low) / np.maximum(high - low, 1e-9), 0, 1)
            distance[seen, begin + column] = (steps[k - 1] * (steps[k] / steps[k - 1]) ** t)[seen]
            tree[seen, begin + column] = trees[column][k][seen]
    return distance, tree, eye


def shadows(azimuths, octaves):
    """Light of the sun, 0 to 1, on a coarse polar grid (columns, distances)."""
    steps = np.geomspace(2, REACH, 500)
    a = azimuths[:, None]
    x, z = np.sin(a) * steps, np.cos(a) * steps
    height = np.maximum(ground(x, z, octaves), 0)
    light = np.ones(x.shape, np.float32)
    for d in np.geomspace(25, 6000, 22):
        blocker = ground(x + SUN[0] / SUN[1] * d * 0.38, z + SUN[2] / SUN[1] * d * 0.38, octaves)
        light = np.minimum(light, smoothstep(-0.1 * d, 0.02 * d, height + d * 0.38 - blocker))
    return steps, light


# Sky --------------------------------------------------------------------------------------------

def sky(direction):
    """Clear sky: blue that pales towards the horizon, warm around the sun."""
    up = np.clip(direction[..., 1], 0, 1)[..., None]
    cosine = np.clip(direction @ SUN, -1, 1)[..., None]
    zenith = np.array([0.075, 0.20, 0.52], np.float32)
    middle = np.array([0.25, 0.47, 0.83], np.float32)
    horizon = np.array([0.76, 0.84, 0.92], np.float32)
    colour = mix(horizon, middle, 1 - np.exp(-up * 5.5))
    colour = mix(colour, zenith, smoothstep(0.05, 0.95, up))
    near = np.exp(-up * 4.0)
    warm = np.array([1.0, 0.74, 0.42], np.float32)
    colour = colour + warm * (0.30 * near * np.clip(cosine, 0, 1) ** 5
                              + 0.22 * np.clip(cosine, 0, 1) ** 22
                              + 0.5 * np.clip(cosine, 0, 1) ** 180)
    angle = np.degrees(np.arccos(cosine))
    glow = 2.4 * np.exp(-(angle / 1.9) ** 1.1) + 12 * smoothstep(0.62, 0.36, angle)
    return colour + np.array([1.0, 0.93, 0.78], np.float32) * glow


def clouds(direction):
    """Colour and cover of two layers: heaps that shade themselves, and high streaks."""
    up = np.maximum(direction[..., 1], 0.012)
    reach = 1.0 / (up + 0.035)
    x, z = direction[..., 0] * reach, direction[..., 2] * reach
    wx = x + 0.22 * CLOUD.octaves(x * 0.9 + 4, z * 0.9, 2)
    wz = z + 0.22 * CLOUD.octaves(x * 0.9, z * 0.9 + 9, 2)

    def density(px, pz, octaves):
        large = CLOUD(px * 0.31 + 5.1, pz * 0.31 + 2.2)
        return CLOUD.octaves(px * 1.15, pz * 1.15, octaves, 0.52) + 0.30 * large

    thick = density(wx, wz, 7)
    towards = density(wx + 0.10 * SUN[0], wz + 0.10 * SUN[2], 5)
    cover = smoothstep(0.09, 0.30, thick) * 0.96
    shade = np.clip(0.66 + 2.6 * (thick - towards) - 0.95 * smoothstep(0.18, 0.62, thick), 0, 1)
    silver = np.clip(direction @ SUN, 0, 1) ** 8 * (1 - cover) * 0.7
    lit = np.array([1.42, 1.32, 1.18], np.float32)
    dark = np.array([0.42, 0.48, 0.60], np.float32)
    colour = mix(dark, lit, (shade + silver)[..., None])

    streak = CLOUD.octaves(x * 0.14 + 0.35 * z + 31, z * 0.55 - 0.06 * x, 6, 0.58)
    high = 0.42 * smoothstep(0.02, 0.55, streak) * (1 - cover)
    colour = (colour * cover[..., None] + 1.08 * high[..., None]) \
        / np.maximum(cover + high, 1e-4)[..., None]
    far = smoothstep(0.0, 0.10, direction[..., 1])
    return colour, (cover + high) * far


def heavens(direction):
    colour, cover = clouds(direction)
    return mix(sky(direction), colour, cover[..., None])


# Ground's colours -------------------------------------------------------------------------------

def rgb(*values):
    return np.array(values, np.float32)


def terrain_colour(x, z, r, tree, eye, light, octaves):
    """Linear light of terrain pixels, given as flat arrays."""
    step = np.maximum(0.02, r * 0.004)
    height = ground(x, z, octaves)
    nx = (height - ground(x + step, z, octaves)) / step
    nz = (height - ground(x, z + step, octaves)) / step
    near = 1 - smoothstep(4, 60, r)
    bump = DETAIL.octaves(x * 2.3, z * 2.3, 4, 0.6)
    fine = DETAIL.octaves(x * 9.0, z * 9.0, 5, 0.8)
    blades = DETAIL.octaves(x * 31.0 + 3 * bump, z * 31.0, 3, 0.9) * (1 - smoothstep(2, 14, r))
    norm = 1 / np.sqrt(nx * nx + nz * nz + 1)
    steep = 1 - norm
    sunny = np.clip((nx * SUN[0] + SUN[1] + nz * SUN[2]) * norm, 0, 1)

    patch = DETAIL.octaves(x / 21, z / 21, 4)
    wide = DETAIL.octaves(x / 130 + 7, z / 130, 4)
    grass = mix(rgb(0.070, 0.108, 0.026), rgb(0.165, 0.160, 0.058),
                smoothstep(-0.45, 0.5, patch + 0.5 * wide)[:, None])
    grass = grass * (1 + (0.12 * bump + 0.34 * fine + 0.62 * blades) * (0.35 + 0.65 * near))[:, None]
    bloom = smoothstep(0.45, 0.55, DETAIL(x * 11.0, z * 11.0)) * smoothstep(0.0, 0.5, patch) \
        * (1 - smoothstep(8, 40, r)) * smoothstep(1.2, 2.5, r)
    kind = (DETAIL(x * 1.3, z * 1.3) > 0)[:, None]
    grass = mix(grass, np.where(kind, rgb(0.62, 0.52, 0.06), rgb(0.60, 0.58, 0.55)),
                (0.75 * bloom)[:, None])

    # A footpath that winds past the viewer.
    off = np.abs(x * 0.94 + z * 0.34 - 2.6 - 2.2 * np.sin(z / 9.5) - 1.4 * np.sin(x / 7 + 1))
    path = smoothstep(0.85, 0.35, off + 0.30 * bump) * (1 - smoothstep(120, 240, r))
    soil = rgb(0.30, 0.235, 0.155) * (1 + 0.30 * bump + 0.35 * fine * near)[:, None]
    colour = mix(grass, soil, (0.9 * path)[:, None])

    sand = smoothstep(-9, -2, lake(x, z) + 3 * bump) * (r < 1500)
    colour = mix(colour, rgb(0.36, 0.31, 0.235) * (1 + 0.2 * fine)[:, None], sand[:, None])

    crag = DETAIL.octaves(x / 55, (z + height * 2.2) / 55, 5, 0.6)
    rock = rgb(0.235, 0.215, 0.20) * (1 + 0.55 * crag)[:, None]
    alpine = smoothstep(0.05, 0.17, steep + 0.05 * crag) * smoothstep(150, 700, height) \
        + smoothstep(850, 1300, height + 200 * crag)
    colour = mix(colour, rock, np.clip(alpine, 0, 1)[:, None])
    distant_wood = smoothstep(-0.15, 0.22, FOREST.octaves(x / 330 + 9.3, z / 330 + 2.8, 4) + 0.12) \
        * smoothstep(2500, 5500, r) * (1 - smoothstep(700, 1000, height + 150 * crag))
    colour = mix(colour, rgb(0.036, 0.062, 0.026) * (1 + 0.5 * crag)[:, None],
                 (0.9 * distant_wood)[:, None])
    snow = smoothstep(1150, 1500, height + 330 * crag - 1900 * np.clip(steep - 0.28, 0, 1))
    colour = mix(colour, rgb(0.86, 0.88, 0.92) * (1 + 0.06 * crag)[:, None], snow[:, None])

    clump = DETAIL.octaves(x / 3, z / 3 + tree, 3)
    needle = rgb(0.030, 0.055, 0.020) * (1 + 0.5 * clump)[:, None]
    tuft = DETAIL.octaves(x * 1.7 + tree, z * 1.7 - 2.3 * tree, 3, 0.7)
    needle = needle * (1 + 0.8 * tuft)[:, None] \
        + rgb(0.022, 0.026, 0.007) * smoothstep(3, 16, tree)[:, None]
    wooded = smoothstep(0.2, 1.0, tree)
    colour = mix(colour, needle, wooded[:, None])
    sunny = mix(sunny, 0.12 + 0.50 * smoothstep(1, 17, tree), wooded)

    wood = (r > 15) & (r < 1800) & (tree < 1)
    for d in (5.0, 10.0, 17.0, 26.0, 38.0):
        blocker = canopy(x[wood] + SUN[0] * d, z[wood] + SUN[2] * d, height[wood])
        sunny[wood] *= smoothstep(1.5, -1.5, blocker - d * SUN[1])

    # Clouds pass over the land.
    cloud = smoothstep(0.0, 0.45, CLOUD.octaves(x / 2600 + 3.3, z / 2600 + 8.1, 3))
    sunny = sunny * light * (1 - 0.62 * cloud * smoothstep(400, 1800, r))
    occluded = 1 - 0.22 * near * smoothstep(0.1, -0.5, fine)
    return colour * (SUNLIGHT * sunny[:, None] + SKYLIGHT * (0.75 + 0.25 * norm)[:, None]) \
        * occluded[:, None]


def haze(colour, direction, r):
    """Air between the eye and a place: blue scattered in, warmer against the sun."""
    thickness = 1 - np.exp(-np.maximum(r - 250, 0) / rgb(15500, 12500, 9500)[:, None]).T
    air = mix(rgb(0.50, 0.63, 0.80), rgb(0.98, 0.85, 0.66),
              (np.clip(direction @ SUN, 0, 1) ** 4 * 0.75)[:, None])
    return mix(colour, air, thickness)


def render(width, height):
    """The landscape, display-referred RGB in 0..1, before any drawing on top."""
    octaves = 9
    azimuths = (np.arange(width) + 0.5) / width * 2 * np.pi - np.pi
    elevations = np.pi / 2 - (np.arange(height) + 0.5) / height * np.pi
    c = np.cos(elevations)[:, None]
    direction = np.stack([np.sin(azimuths) * c, np.sin(elevations)[:, None] + 0 * azimuths,
                          np.cos(azimuths) * c], -1).astype(np.float32)

    distance, tree, eye = visible(azimuths, elevations, octaves)
    rows = slice(0, height // 2 + height // 64)
    picture = np.zeros((height, width, 3), np.float32)
    picture[rows] = heavens(direction[rows])

    grid, light = shadows(azimuths[::8], 5)
    rows_of_light = np.clip(np.searchsorted(grid, np.minimum(distance, REACH)), 0, len(grid) - 1)
    columns = np.broadcast_to(np.arange(width) // 8, distance.shape)

    solid = np.isfinite(distance)
    for begin in range(0, height, 128):  # in bands, to bound the memory
        band = np.zeros_like(solid)
        band[begin:begin + 128] = solid[begin:begin + 128]
        if not band.any():
            continue
        r = distance[band].astype(np.float64)
        a = np.broadcast_to(azimuths, distance.shape)[band]
        x, z = np.sin(a) * r, np.cos(a) * r
        sunlit = light[columns[band], rows_of_light[band]]
        colour = terrain_colour(x, z, r, tree[band], eye, sunlit, octaves)
        picture[band] = haze(colour, direction[band], r)

    mirror(picture, distance, tree, azimuths, direction)
    return tone(picture)


def mirror(picture, distance, tree, azimuths, direction):
    """Turns the lake's surface into water: what stands above it, mirrored and rippled."""
    height, width = distance.shape
    r = np.where(np.isfinite(distance), distance, 1e9)
    x, z = np.sin(azimuths) * r, np.cos(azimuths) * r
    water = (lake(x, z) > 0) & (r < 2500) & (tree < 0.2)
    row, column = np.nonzero(water)
    wx, wz, wr = x[water], z[water], r[water]
    ripple = DETAIL.octaves(wx / 3.1, wz / 3.1, 4, 0.6)
    calm = smoothstep(-0.25, 0.35, DETAIL.octaves(wx / 60, wz / 60, 3))
    scale = height / 2048
    shift = ripple * mix(2.0, 9.0, calm) * scale
    above = np.clip(height - 1 - row + shift, 0, height // 2 - 1).astype(int)
    aside = (column + (ripple * 2 * scale).astype(int)) % width
    grazing = np.clip(-direction[..., 1][water], 0, 1)
    fresnel = 0.04 + 0.96 * (1 - grazing) ** 5
    deep = rgb(0.022, 0.066, 0.072) * (1 + 0.4 * ripple)[:, None]
    shown = mix(deep, picture[above, aside] * 0.94, np.clip(fresnel * 1.05, 0, 1)[:, None])
    edge = smoothstep(0, 6, lake(wx, wz))[:, None]
    picture[water] = mix(picture[water], shown, edge)


def tone(linear):
    """Filmic curve and the transfer function of sRGB."""
    x = np.maximum(linear * 0.80, 0)
    x = np.clip(x * (2.51 * x + 0.03) / (x * (2.43 * x + 0.59) + 0.14), 0, 1)
    return np.where(x < 0.0031308, 12.92 * x, 1.055 * x ** (1 / 2.4) - 0.055).astype(np.float32)
