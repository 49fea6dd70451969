#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Fails when a source file includes a header of a layer that its own layer may not use."""
import pathlib, re, sys
LAYER = {  # first match wins
    'app/VxContext.h': 'context', 'app/main': 'shell', 'app/Application': 'shell', 'app/HugePages': 'shell', 'app/': 'core',
    'render/VistrelView': 'view', 'render/': 'shader', 'settings/': 'settings', 'support/': 'support',
    'gl/': 'gl', 'movparser/': 'movparser', 'image/': 'image', 'video/': 'video', 'devices/': 'devices', 'telemetry/': 'telemetry',
}
MAY = {
    'context': '', 'settings': '', 'support': '', 'movparser': '', 'gl': '',
    'image': 'settings support', 'video': 'gl settings', 'telemetry': 'settings support',
    'shader': 'context gl settings', 'core': 'context shader image movparser settings support telemetry',
    'devices': 'context core shader image settings', 'view': 'context core devices gl shader settings',
    'shell': 'context core devices gl view shader video image movparser settings support telemetry',
}
def layer(path):
    return next((l for p, l in LAYER.items() if path.startswith(p)), None)
bad = 0
root = pathlib.Path(sys.argv[1])
for f in sorted(root.rglob('*.[ch]*')):
    mine = layer(str(f.relative_to(root)))
    if not mine:
        continue
    for n, line in enumerate(f.read_text().splitlines(), 1):
        m = re.match(r'\s*#\s*include\s+"([^"]+)"', line)
        other = m and layer(m.group(1))
        if other and other != mine and other not in MAY[mine].split():
            print(f'{f}:{n}: {mine} may not include {other}'); bad += 1
sys.exit(bool(bad))
