# SPDX-License-Identifier: GPL-3.0-or-later
"""What the benches of films share: clips, and the player with settings of its own."""
import contextlib
import os
import pathlib
import subprocess
import tempfile

SECONDS = 14

H264 = ['-c:v', 'libx264', '-preset', 'veryfast', '-b:v', '20M']
HEVC = ['-c:v', 'libx265', '-preset', 'ultrafast', '-b:v', '15M', '-x265-params',
        'log-level=error', '-tag:v', 'hvc1']

# bench/screen_watch.cpp reads the number that these boxes show.
BLOCK = 32
BITS = 10


def number():
    """Boxes in the middle of 3840x1920 that show a picture's number in Gray code, most significant
    bit first: white for 1, black for 0, between two bars of magenta on black."""
    middle = {'x': 1920, 'y': 960}
    left = middle['x'] - (BITS + 2) * BLOCK // 2

    def box(x, blocks, color, enable='1'):
        return (f"drawbox=x={x}:y={middle['y'] - 2 * BLOCK}:w={blocks * BLOCK}:h={4 * BLOCK}"
                f":color={color}:t=fill:enable='{enable}'")

    boxes = [box(left - BLOCK, BITS + 4, 'black'), box(left, 1, 'magenta'),
             box(left + (BITS + 1) * BLOCK, 1, 'magenta')]
    for i in range(BITS):
        weight = 1 << (BITS - 1 - i)
        boxes.append(box(left + (i + 1) * BLOCK, 1, 'white',
                         f'mod(floor((n+{weight})/{2 * weight}),2)'))
    return ',' + ','.join(boxes)


CLIPS = {
    '4k-h264.mp4': ('3840x1920', H264, ''),
    '4k-hevc.mp4': ('3840x1920', HEVC, ''),
    '8k-h264.mp4': ('7680x3840', ['-c:v', 'libx264', '-preset', 'ultrafast', '-b:v', '60M'], ''),
    'numbered-h264.mp4': ('3840x1920', H264, number()),
    'numbered-hevc.mp4': ('3840x1920', HEVC, number()),
}


def make(folder, name):
    """A moving picture with detail and noise, tagged as a full sphere."""
    path = folder / name
    if path.exists():
        return path
    size, codec, drawn = CLIPS[name]
    source = (f'testsrc2=s=1920x960:r=30:d={SECONDS},noise=alls=8:allf=t,'
              f'scale={size.replace("x", ":")}{drawn}')
    plain = path.with_suffix('.plain.mp4')
    subprocess.run(['ffmpeg', '-loglevel', 'error', '-y', '-f', 'lavfi', '-i', source,
                    '-pix_fmt', 'yuv420p', *codec, '-movflags', '+faststart', plain], check=True)
    tag = folder.parent / 'bin' / 'tavro-mp4tag'
    if tag.exists():
        subprocess.run([tag, plain, path, '--projection', 'equirectangular'], check=True)
        plain.unlink()
    else:
        plain.rename(path)
    return path


@contextlib.contextmanager
def settings(*vlc):
    """An environment in which the player's window has 1280x720, plays nothing again and makes no
    sound; `vlc` are further lines of that section of its settings."""
    with tempfile.TemporaryDirectory() as scratch:
        file = pathlib.Path(scratch, 'Tavro', 'Tavro VR Player 2.3.conf')
        file.parent.mkdir()
        file.write_text('\n'.join(['[application]', 'window\\width=1280', 'window\\height=720',
                                   'general\\loopMode=0', '[vlc]', 'disableAudio=true', *vlc, '']))
        yield dict(os.environ, XDG_CONFIG_HOME=scratch)
